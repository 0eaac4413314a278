// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSApplication.h>

#include <VXKit/platform/desktop/NSWorkspace.h>
#include <VXKit/platform/foundation/NSLog.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>

#include <QSocketNotifier>
#include <QWidget>

#include <csignal>
#include <exception>
#include <sys/socket.h>
#include <unistd.h>

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
    : QApplication(argc, argv), m_signalWatcher(new SignalWatcher(this)) {
    setQuitOnLastWindowClosed(false);
    connect(this, &QGuiApplication::applicationStateChanged, this, &NSApplication::applicationStateHasChanged);
    connect(this, &QCoreApplication::aboutToQuit, this, &NSApplication::announceTermination);
}

NSApplication::~NSApplication() = default;

NSApplication* NSApplication::sharedApplication() {
    return dynamic_cast<NSApplication*>(instance());
}

int NSApplication::run() {
    NSNotificationCenter& centre = NSNotificationCenter::defaultCenter();
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
    QWidget* window = activeModalWidget();
    if (!window) {
        window = activeWindow();
    }
    if (!window) {
        const QWidgetList windows = topLevelWidgets();
        const auto takesKeyboard = [](const QWidget* candidate) {
            return candidate->isVisible() && candidate->windowType() != Qt::ToolTip &&
                   candidate->windowType() != Qt::Popup &&
                   !candidate->windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus);
        };
        const auto found = std::find_if(windows.rbegin(), windows.rend(), takesKeyboard);
        window = found == windows.rend() ? nullptr : *found;
    }
    if (window) {
        window->raise();
        window->activateWindow();
    }
}

void NSApplication::terminate(QObject* /*sender*/) {
    announceTermination();
    QCoreApplication::exit(0);
}

void NSApplication::applicationStateHasChanged(Qt::ApplicationState state) {
    const bool hasKeyboard = state == Qt::ApplicationActive;
    if (hasKeyboard == m_hasKeyboard) {
        return;
    }
    NSNotificationCenter& centre = NSNotificationCenter::defaultCenter();
    centre.postNotificationName(
        hasKeyboard ? NSApplicationWillBecomeActiveNotification : NSApplicationWillResignActiveNotification, this);
    m_hasKeyboard = hasKeyboard;
    centre.postNotificationName(
        hasKeyboard ? NSApplicationDidBecomeActiveNotification : NSApplicationDidResignActiveNotification, this);
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
