// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSApplication.h>

#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/appkit/SnapshotWindow.h>
#include <VXKit/platform/appkit/WebViewEngine.h>
#include <VXKit/platform/desktop/MotionPreference.h>
#include <VXKit/platform/desktop/NSWorkspace.h>
#include <VXKit/platform/desktop/WindowEffects.h>
#include <VXKit/platform/foundation/Demangling.h>
#include <VXKit/platform/foundation/NSException.h>
#include <VXKit/platform/foundation/NSLog.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>

#include <QEventLoop>
#include <QOpenGLContext>
#include <QPointer>
#include <QScopeGuard>
#include <QSocketNotifier>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <csignal>
#include <cxxabi.h>
#include <exception>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

QT_BEGIN_NAMESPACE
// Exported by Qt for whoever shares contexts, and declared in none of its public headers.
Q_GUI_EXPORT void qt_gl_set_global_share_context(QOpenGLContext* context);
QT_END_NAMESPACE

namespace {

constexpr int keyboardCheckInterval = 100; // milliseconds

constexpr const char* platformVariable = "QT_QPA_PLATFORM";

/// Keeps Qt from making a context for all windows that draw by OpenGL at the start.
///
/// A web engine wants its contexts shared, which has to be said before there is an application object. Qt then makes
/// the first context at once, which takes a tenth of a second and tens of megabytes of every program, although few ever
/// show a page. It makes none where there is one: this, which is taken back when the application object stands. The
/// plugin with the engine makes the real one.
class SharedContextPlaceholder {
public:
    static void put() {
        if (!QCoreApplication::testAttribute(Qt::AA_ShareOpenGLContexts) && !QOpenGLContext::globalShareContext() &&
            VXHasWebEnginePlugin()) {
            QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
            s_context = std::make_unique<QOpenGLContext>();
            qt_gl_set_global_share_context(s_context.get());
        }
    }
    static void takeBack() {
        if (s_context) {
            qt_gl_set_global_share_context(nullptr);
            s_context.reset();
        }
    }

private:
    static inline std::unique_ptr<QOpenGLContext> s_context;
};

/// What has to be settled before the base class chooses the platform.
int& prepared(int& argc) {
    NSApplication::preferX11InWaylandSession();
    SharedContextPlaceholder::put();
    return argc;
}

bool takesKeyboard(const QWidget* window) {
    if (!window->isVisible() || window->windowType() == Qt::ToolTip || window->windowType() == Qt::Popup ||
        window->windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus)) {
        return false;
    }
    const auto* ours = qobject_cast<const NSWindow*>(window);
    return !ours || (ours->isVisible() && ours->canBecomeKeyWindow());
}

NSUncaughtExceptionHandler& uncaughtExceptionHandler() {
    static NSUncaughtExceptionHandler handler;
    return handler;
}

NSWindow& outermostParent(NSWindow& window) {
    NSWindow* parent = &window;
    while (parent->parentWindow()) {
        parent = parent->parentWindow();
    }
    return *parent;
}

/// The window that is to have the keyboard when the application is brought to the front; null where there is none.
QWidget* windowToActivate() {
    for (QWidget* window : {QApplication::activeModalWidget(), QApplication::activeWindow()}) {
        if (window && takesKeyboard(window)) {
            return window;
        }
    }
    const std::vector<NSWindow*> windows = NSWindow::windows();
    const auto topmost = std::find_if(windows.rbegin(), windows.rend(), takesKeyboard);
    if (topmost != windows.rend()) {
        return *topmost;
    }
    const QWidgetList others = QApplication::topLevelWidgets();
    const auto found = std::find_if(others.rbegin(), others.rend(), takesKeyboard);
    return found == others.rend() ? nullptr : *found;
}

} // namespace

void NSSetUncaughtExceptionHandler(NSUncaughtExceptionHandler handler) {
    uncaughtExceptionHandler() = std::move(handler);
}

void NSBeep() {
    if (NSApplication* application = NSApplication::sharedApplication()) {
        application->soundBell();
    } else {
        QApplication::beep();
    }
}

/// One nested run of the event loop for a window.
struct NSApplication::ModalRun {
    QPointer<NSWindow> window;
    QEventLoop loop;
    int code = NSRunAbortedResponse;
    bool isStopped = false;
};

/// Turns the signals that ask a process to end into a call in the event loop, where everything is allowed.
class NSApplication::SignalWatcher : public QObject {
public:
    explicit SignalWatcher(NSApplication* application) : QObject(application) {
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, s_sockets) != 0) {
            return;
        }
        auto* notifier = new QSocketNotifier(s_sockets[1], QSocketNotifier::Read, this);
        connect(notifier, &QSocketNotifier::activated, application, [application] {
            char byte = 0;
            if (::read(s_sockets[1], &byte, 1) == 1) {
                application->terminate(nullptr);
            }
        });
        for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
            struct sigaction current {};
            // One that is ignored stays so: it is how nohup asks for it.
            if (::sigaction(signal, nullptr, &current) != 0 || current.sa_handler != SIG_DFL) {
                continue;
            }
            struct sigaction action {};
            action.sa_handler = handle;
            // Once only: where the first does not end the process, the second does.
            action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
            ::sigaction(signal, &action, nullptr);
        }
    }

    ~SignalWatcher() override {
        for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
            struct sigaction current {};
            if (::sigaction(signal, nullptr, &current) == 0 && current.sa_handler == handle) {
                ::signal(signal, SIG_DFL);
            }
        }
        for (int& socket : s_sockets) {
            if (socket >= 0) {
                ::close(socket);
                socket = -1;
            }
        }
    }

private:
    static void handle(int /*signal*/) {
        const int error = errno;
        const char byte = 1;
        [[maybe_unused]] const ssize_t written = ::write(s_sockets[0], &byte, 1);
        errno = error;
    }

    static inline int s_sockets[2] = {-1, -1};
};

NSApplication::NSApplication(int& argc, char** argv)
    : QApplication(prepared(argc), argv), m_signalWatcher(new SignalWatcher(this)) {
    SharedContextPlaceholder::takeBack();
    setQuitOnLastWindowClosed(false);
    m_keyboardCheck.setSingleShot(true);
    m_keyboardCheck.setInterval(keyboardCheckInterval);
    connect(&m_keyboardCheck, &QTimer::timeout, this, [this] { platformStateHasChanged(applicationState()); });
    connect(this, &QGuiApplication::applicationStateChanged, this, &NSApplication::platformStateHasChanged);
    connect(this, &QGuiApplication::focusWindowChanged, this, [this](const QWindow* focused) {
        announceActivationChange();
        handBackFocus(focused);
    });
    connect(this, &QCoreApplication::aboutToQuit, this, &NSApplication::announceTermination);
}

NSApplication::~NSApplication() = default;

NSApplication* NSApplication::sharedApplication() {
    return dynamic_cast<NSApplication*>(instance());
}

int NSApplication::run() {
    NSNotificationCenter& centre = NSNotificationCenter::defaultCenter();
    askForMotionPreference();
    awakeFromNib();
    centre.postNotificationName(NSApplicationWillFinishLaunchingNotification, this);
    centre.postNotificationName(NSApplicationDidFinishLaunchingNotification, this);
    return m_terminationIsAnnounced ? 0 : exec();
}

void NSApplication::awakeFromNib() {}

void NSApplication::activateIgnoringOtherApps(bool flag) {
    if (!flag && !m_hasKeyboard && NSWorkspace::sharedWorkspace().activeApplication()) {
        return;
    }
    if (QWidget* window = windowToActivate()) {
        window->raise();
        WindowEffects::sharedEffects().takeKeyboard(*window);
    }
    if (applicationState() == Qt::ApplicationActive) {
        // After deactivate, with the keyboard still here.
        applicationStateHasChanged(Qt::ApplicationActive);
        announceActivationChange();
    }
}

void NSApplication::deactivate() {
    applicationStateHasChanged(Qt::ApplicationInactive);
    announceActivationChange();
}

int NSApplication::runModalForWindow(NSWindow& window) {
    ModalRun run;
    run.window = &window;
    const Qt::WindowModality before = window.windowModality();
    if (before != Qt::ApplicationModal) {
        // Qt looks at it when the window is shown, and only then.
        window.hide();
        window.setWindowModality(Qt::ApplicationModal);
    }
    connect(&window, &QObject::destroyed, &run.loop, [&run] {
        run.isStopped = true;
        run.loop.exit();
    });
    window.makeKeyAndOrderFront(nullptr);
    m_modalRuns.push_back(&run);
    {
        // Also where an exception ends the run.
        const auto end = qScopeGuard([this, &run] { std::erase(m_modalRuns, &run); });
        if (!run.isStopped) {
            run.loop.exec(QEventLoop::DialogExec);
        }
    }
    if (run.window && before != Qt::ApplicationModal) {
        // Qt lets the other windows go when a modal one is hidden, and only then.
        const bool isShown = run.window->isVisible();
        // One that is out has the keyboard no more, whatever is told of that yet.
        const bool isKey = isShown && run.window->isKeyWindow();
        if (isShown) {
            run.window->hide();
        }
        if (run.window) {
            run.window->setWindowModality(before);
        }
        if (run.window && isKey) {
            run.window->makeKeyAndOrderFront(nullptr);
        } else if (run.window && isShown) {
            run.window->orderFront(nullptr);
        }
    }
    return run.code;
}

void NSApplication::stopModal() {
    stopModalWithCode(NSRunStoppedResponse);
}

void NSApplication::abortModal() {
    stopModalWithCode(NSRunAbortedResponse);
}

void NSApplication::stopModalWithCode(int code) {
    const auto running =
        std::find_if(m_modalRuns.rbegin(), m_modalRuns.rend(), [](const ModalRun* run) { return !run->isStopped; });
    if (running != m_modalRuns.rend()) {
        stop(**running, code);
    }
}

void NSApplication::abortModalForWindow(const NSWindow& window) {
    const auto running = std::find_if(m_modalRuns.rbegin(), m_modalRuns.rend(), [&window](const ModalRun* run) {
        return run->window == &window && !run->isStopped;
    });
    if (running != m_modalRuns.rend()) {
        stop(**running, NSRunAbortedResponse);
    }
}

void NSApplication::stop(ModalRun& run, int code) {
    run.isStopped = true;
    run.code = code;
    run.loop.exit();
}

void NSApplication::beginSheet(NSWindow& sheet, NSWindow& docWindow) {
    NSWindow& owner = outermostParent(docWindow);
    // A window manager would keep a sheet of its own below an owner that it does not know.
    sheet.setManagement(owner.management());
    // Below its owner's level, it would go behind the owner each time that it is ordered in front of its own.
    sheet.setLevel(std::max(sheet.level(), owner.level()));
    if (sheet.windowModality() == Qt::NonModal) {
        sheet.setWindowModality(Qt::WindowModal);
    }
    const NSRect content = docWindow.contentRectForFrameRect(docWindow.frame());
    const NSSize size = sheet.frame().size;
    sheet.setFrame({{NSMidX(content) - size.width / 2, NSMaxY(content) - size.height}, size}, true);
    sheet.winId();
    owner.winId();
    sheet.windowHandle()->setTransientParent(owner.windowHandle());

    sheet.blurWindowBelow(owner);

    const NSRect frame = sheet.frame();
    const QPointer<NSWindow> sheetGuard(&sheet);
    const QPointer<NSWindow> docGuard(&docWindow);
    const unsigned orderings = sheet.orderings();
    SnapshotWindow slide(NSOffsetRect(frame, 0, frame.size.height), frame, snapshotOfWindow(sheet));
    slide.setLevel(sheet.level());
    if (docWindow.isVisible() && !blockingAnimationsJump()) {
        slide.orderFront(nullptr);
        slide.setFrame(frame, true, true);
    }
    if (sheetGuard && docGuard && sheet.orderings() == orderings) {
        docWindow.addChildWindow(&sheet, NSWindowAbove);
        sheet.makeKeyWindow();
        waitUntilShown(sheet);
    }
}

NSWindow* NSApplication::modalWindow() const {
    return m_modalRuns.empty() ? nullptr : m_modalRuns.back()->window.data();
}

void NSApplication::soundBell() {
    beep();
}

void NSApplication::preferX11InWaylandSession() {
    const bool isWayland =
        qEnvironmentVariableIsSet("WAYLAND_DISPLAY") || qEnvironmentVariable("XDG_SESSION_TYPE") == u"wayland";
    const bool hasXServer = !qEnvironmentVariableIsEmpty("DISPLAY");
    if (isWayland && hasXServer && qEnvironmentVariableIsEmpty(platformVariable)) {
        qputenv(platformVariable, "xcb");
    }
}

void NSApplication::terminate(QObject* /*sender*/) {
    announceTermination();
    QCoreApplication::exit(0);
}

bool NSApplication::notify(QObject* receiver, QEvent* event) {
    if (!uncaughtExceptionHandler()) {
        return QApplication::notify(receiver, event);
    }
    try {
        return QApplication::notify(receiver, event);
    } catch (const std::exception& exception) {
        handleUncaught(NSException::exceptionWith(exception));
    } catch (abi::__forced_unwind&) {
        throw; // the thread is being cancelled
    } catch (...) {
        handleUncaught(NSException(demangled(abi::__cxa_current_exception_type()->name()).c_str(), QString()));
    }
    return true;
}

void NSApplication::handleUncaught(const NSException& exception) {
    // A copy: a handler may set another.
    QMetaObject::invokeMethod(
        this, [handler = uncaughtExceptionHandler(), exception] { handler(exception); }, Qt::AutoConnection);
}

void NSApplication::platformStateHasChanged(Qt::ApplicationState state) {
    // Qt tells that the keyboard has gone some time after it went, and by then it may have been called back.
    if (state != Qt::ApplicationActive && WindowEffects::sharedEffects().hasKeyboard()) {
        m_keyboardCheck.start();
        return;
    }
    applicationStateHasChanged(state);
}

void NSApplication::applicationStateHasChanged(Qt::ApplicationState state) {
    const bool hasKeyboard = state == Qt::ApplicationActive;
    if (hasKeyboard == m_hasKeyboard) {
        return;
    }
    announceActivationChange();
    NSNotificationCenter::defaultCenter().postNotificationName(
        hasKeyboard ? NSApplicationWillBecomeActiveNotification : NSApplicationWillResignActiveNotification, this);
    m_hasKeyboard = hasKeyboard;
    // The windows tell of their own changes in between, and Qt of the end of them all by the new focus window.
    m_changesActivation = true;
    QMetaObject::invokeMethod(
        this, [this] { announceActivationChange(); }, Qt::QueuedConnection);
}

void NSApplication::announceActivationChange() {
    if (std::exchange(m_changesActivation, false)) {
        NSNotificationCenter::defaultCenter().postNotificationName(
            m_hasKeyboard ? NSApplicationDidBecomeActiveNotification : NSApplicationDidResignActiveNotification, this);
    }
}

/// The window manager may give the keyboard to a window that takes no input while another is modal.
void NSApplication::handBackFocus(const QWindow* focused) {
    const NSWindow* modal = modalWindow();
    QWindow* const handle = modal && modal->isVisible() ? modal->windowHandle() : nullptr;
    if (!focused || !handle || QGuiApplication::modalWindow() != handle) {
        return;
    }
    // Its menus and dialogs take input as it does itself.
    if (focused != handle && !handle->isAncestorOf(focused, QWindow::IncludeTransients)) {
        handle->requestActivate();
    }
}

void NSApplication::announceTermination() {
    if (m_terminationIsAnnounced) {
        return;
    }
    m_terminationIsAnnounced = true;
    try {
        NSNotificationCenter::defaultCenter().postNotificationName(NSApplicationWillTerminateNotification, this);
    } catch (const std::exception& exception) {
        NSLog("An observer of the end of the application failed: %s", exception.what());
    }
}
