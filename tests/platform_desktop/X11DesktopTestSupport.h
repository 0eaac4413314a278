// SPDX-License-Identifier: MIT
// What the tests on a real X server share. They run beside another program, in a session without a compositing manager,
// and without a tray, whose window would come in the midst of a test and change who is active.
#pragma once

#include <VXKit/platform/desktop/NSWorkspace.h>

#include <QApplication>
#include <QProcess>
#include <QTest>
#include <QWidget>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <xcb/xcb.h>

inline constexpr int patience = 20000; ///< milliseconds

/// The application object, one for all tests of the process.
class Application : public testing::Environment {
public:
    void SetUp() override { m_application.emplace(m_argc, m_argv); }
    void TearDown() override { m_application.reset(); }

private:
    int m_argc = 1;
    std::array<char, 8> m_name{"desktop"};
    std::array<char*, 2> m_arguments{m_name.data(), nullptr};
    char** m_argv = m_arguments.data();
    std::optional<QApplication> m_application;
};

inline const testing::Environment* const theApplication =
    testing::AddGlobalTestEnvironment(std::make_unique<Application>().release());

inline bool waitFor(const std::function<bool()>& condition) {
    return QTest::qWaitFor(condition, patience);
}

struct ReplyDeleter {
    void operator()(void* memory) const { std::free(memory); }
};
template <class T>
using Reply = std::unique_ptr<T, ReplyDeleter>;

inline xcb_connection_t* x() {
    return qApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
}

inline xcb_window_t root() {
    return xcb_setup_roots_iterator(xcb_get_setup(x())).data->root;
}

inline xcb_atom_t atom(const std::string& name) {
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        x(), xcb_intern_atom(x(), 0, static_cast<std::uint16_t>(name.size()), name.c_str()), nullptr));
    return reply->atom;
}

inline std::optional<std::vector<std::uint32_t>> property(xcb_window_t window, const std::string& name) {
    const Reply<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(x(), xcb_get_property(x(), 0, window, atom(name), XCB_ATOM_ANY, 0, 1000), nullptr));
    if (!reply || reply->type == XCB_ATOM_NONE) {
        return std::nullopt;
    }
    const auto* words = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return std::vector<std::uint32_t>(words, words + reply->value_len);
}

inline xcb_window_t nativeOf(const QWidget& widget) {
    return static_cast<xcb_window_t>(widget.internalWinId());
}

/// The entry of a process among the launched applications.
inline std::optional<NSDictionary> launched(std::uint32_t process) {
    for (const NSDictionary& application : NSWorkspace::sharedWorkspace().launchedApplications()) {
        if (application.objectForKey(NSApplicationProcessSerialNumberLowKey)->integerValue() == process) {
            return application;
        }
    }
    return std::nullopt;
}

/// Another program with a window at the given place.
class Client {
public:
    explicit Client(const QRect& frame, const QString& program = QStringLiteral(X11_CLIENT)) {
        m_process.start(program, {QString::number(frame.x()), QString::number(frame.y()),
                                  QString::number(frame.width()), QString::number(frame.height())});
        // The window manager writes its lists of windows after it gave a new one the keyboard.
        EXPECT_TRUE(waitFor([&] { return isActive() && launched(process()) && isStacked(); }));
    }
    ~Client() {
        m_process.closeWriteChannel();
        if (!waitFor([&] { return m_process.state() == QProcess::NotRunning; })) {
            m_process.kill();
        }
    }

    [[nodiscard]] std::uint32_t process() const { return static_cast<std::uint32_t>(m_process.processId()); }

    [[nodiscard]] bool isActive() const {
        const auto active = NSWorkspace::sharedWorkspace().activeApplication();
        const NSPropertyList* low = active ? active->objectForKey(NSApplicationProcessSerialNumberLowKey) : nullptr;
        return low && low->integerValue() == m_process.processId();
    }

    [[nodiscard]] static bool isStacked() {
        const auto inOrderOfAge = property(root(), "_NET_CLIENT_LIST");
        const auto inOrderOfStack = property(root(), "_NET_CLIENT_LIST_STACKING");
        return inOrderOfAge && inOrderOfStack && inOrderOfAge->size() == inOrderOfStack->size();
    }

    bool hasTold(const QByteArray& line) {
        m_told += m_process.readAllStandardOutput();
        return m_told.contains(line + '\n');
    }

private:
    QProcess m_process;
    QByteArray m_told;
};

inline constexpr Qt::WindowFlags bypassing = Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint;

inline void show(QWidget& window, const QRect& frame, Qt::WindowFlags flags) {
    window.setWindowFlags(flags);
    window.setGeometry(frame);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
}
