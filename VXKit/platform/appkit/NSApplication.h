// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QApplication>
#include <QTimer>

#include <functional>
#include <vector>

class QWindow;

/// Posted with the application object as sender, as are those below, by NSApplication::run when the application is
/// awake and before it counts as launched.
inline constexpr const char* NSApplicationWillFinishLaunchingNotification =
    "NSApplicationWillFinishLaunchingNotification";
/// Posted by NSApplication::run before the event loop begins.
inline constexpr const char* NSApplicationDidFinishLaunchingNotification =
    "NSApplicationDidFinishLaunchingNotification";
/// Posted before NSApplication::isActive begins to say yes.
inline constexpr const char* NSApplicationWillBecomeActiveNotification = "NSApplicationWillBecomeActiveNotification";
/// Posted when the application is active.
inline constexpr const char* NSApplicationDidBecomeActiveNotification = "NSApplicationDidBecomeActiveNotification";
/// Posted before NSApplication::isActive begins to say no.
inline constexpr const char* NSApplicationWillResignActiveNotification = "NSApplicationWillResignActiveNotification";
/// Posted when the application is active no more.
inline constexpr const char* NSApplicationDidResignActiveNotification = "NSApplicationDidResignActiveNotification";
/// Posted once, before the application ends by terminate, by Qt's quit, or by a signal that asks it to end (SIGTERM,
/// SIGINT, SIGHUP); not before the C library's exit.
inline constexpr const char* NSApplicationWillTerminateNotification = "NSApplicationWillTerminateNotification";

/// Answer of a modal run that was stopped without a code (NSApplication::stopModal).
inline constexpr int NSRunStoppedResponse = -1000;
/// Answer of a modal run that was aborted, or whose window died.
inline constexpr int NSRunAbortedResponse = -1001;

class NSWindow;

class NSException;

/// What takes the exceptions that nobody caught; see NSSetUncaughtExceptionHandler.
using NSUncaughtExceptionHandler = std::function<void(const NSException& exception)>;
/// Makes `handler` what gets the exceptions that leave the handling of an event, on the main thread; the event counts
/// as handled, and the application goes on. One that is thrown in another thread's event loop comes some time later.
/// Exceptions that are none of std::exception's are told by the name of their class alone, without a reason.
///
/// Without a handler, at first and after a null one, nothing is caught, and such an exception ends the process, as with
/// any QApplication. Needs an NSApplication. To be set before another thread has an event loop. AppKit: the function of
/// the same name.
VXKIT_EXPORT void NSSetUncaughtExceptionHandler(NSUncaughtExceptionHandler handler);

/// Sounds the application's bell, or the desktop's where the application is another kind of QApplication.
/// AppKit: the function of the same name.
VXKIT_EXPORT void NSBeep();

/// The application object: a QApplication that speaks AppKit's terms. One for the process, made in main before anything
/// that needs it. Stands for the AppKit class of the same name.
class VXKIT_EXPORT NSApplication : public QApplication {
public:
    /// `argc` and `argv` must live as long as the application, as for any QApplication. The end of the last window does
    /// not end the application: a menu-bar application has none most of the time. Asks for the X11 platform in a
    /// Wayland session (preferX11InWaylandSession).
    NSApplication(int& argc, char** argv);
    ~NSApplication() override;

    /// The application object, or null where the process has none or another kind of QApplication.
    /// AppKit: `+sharedApplication`.
    [[nodiscard]] static NSApplication* sharedApplication();

    /// Awakes the application (awakeFromNib), announces that it has launched, and runs the event loop until the
    /// application terminates. Answers the exit status for main. AppKit: `-run`.
    int run();

    /// Called once by run, before anything else. Does nothing here. AppKit: `-awakeFromNib`.
    virtual void awakeFromNib();

    /// Brings the application's topmost visible window to the front with the keyboard. With `flag` false, only where
    /// the workspace tells of no other active application. AppKit: `-activateIgnoringOtherApps:`.
    virtual void activateIgnoringOtherApps(bool flag);

    /// Resigns active, as if another application had been activated, though no other may want the keyboard.
    /// AppKit: `-deactivate`.
    void deactivate();

    /// Whether a window of the application has the keyboard, as the window server sees it. AppKit: `-isActive`.
    [[nodiscard]] virtual bool isActive() const { return m_hasKeyboard; }

    /// Shows `window` and runs the event loop until the run is stopped; the other windows take no input meanwhile. The
    /// window stays on the screen. Answers the code given to stopModalWithCode, NSRunStoppedResponse after stopModal,
    /// NSRunAbortedResponse when it was aborted, or the window died. Runs nest. AppKit: `-runModalForWindow:`.
    int runModalForWindow(NSWindow& window);
    /// Ends the innermost run that has not been ended yet, when control returns to it, with NSRunStoppedResponse;
    /// nothing where there is none. AppKit: `-stopModal`.
    void stopModal();
    /// The same with `code` for an answer. AppKit: `-stopModalWithCode:`.
    void stopModalWithCode(int code);
    /// The same with NSRunAbortedResponse. AppKit: `-abortModal`.
    void abortModal();
    /// Ends the run of `window`, whichever others run within it, as an aborted one; nothing where there is none. Runs
    /// within it go on until they are ended themselves. AppKit has none.
    void abortModalForWindow(const NSWindow& window);
    /// Shows `sheet` over `docWindow`: slides it down, in the middle across, from the top of that window's content,
    /// and returns when it is out. The sheet moves with the window, and takes its input away from it and from the
    /// windows that it belongs to, until it is ordered out. It stays at least at the level of the outermost of them.
    /// AppKit: `-beginSheet:modalForWindow:modalDelegate:didEndSelector:contextInfo:`, without a delegate.
    void beginSheet(NSWindow& sheet, NSWindow& docWindow);
    /// The window of the innermost run, or null. AppKit: `-modalWindow`.
    [[nodiscard]] NSWindow* modalWindow() const;

    /// Sounds the desktop's bell; what NSBeep calls, so that an application can sound its own.
    virtual void soundBell();

    /// Chooses the X11 platform, by Qt's environment variable, where the session is a Wayland one that has an X server
    /// too: a Wayland client cannot place its windows, and the kit's hang where they belong. A choice made already
    /// stands, and so does one on the command line. To be called before there is an application object.
    static void preferX11InWaylandSession();

    /// Announces the end (NSApplicationWillTerminateNotification) and ends the event loop with status 0, so that run
    /// returns. An exception that an observer throws is logged and ends nothing. `sender` is not looked at.
    /// AppKit: `-terminate:`.
    void terminate(QObject* sender);

    /// Hands exceptions that leave the event's handling to the handler for them, where there is one.
    bool notify(QObject* receiver, QEvent* event) override;

private:
    class SignalWatcher;

    struct ModalRun;

    void handleUncaught(const NSException& exception);

    void platformStateHasChanged(Qt::ApplicationState state);
    void applicationStateHasChanged(Qt::ApplicationState state);
    void announceActivationChange();
    void handBackFocus(const QWindow* focused);
    static void stop(ModalRun& run, int code);
    void announceTermination();

    bool m_hasKeyboard = false;
    bool m_changesActivation = false; // between the two notifications of a change
    QTimer m_keyboardCheck;
    std::vector<ModalRun*> m_modalRuns;
    bool m_terminationIsAnnounced = false;
    SignalWatcher* m_signalWatcher;
};
