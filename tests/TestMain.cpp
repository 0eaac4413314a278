// SPDX-License-Identifier: MIT
// The main function of every test executable: an empty home folder that goes away with the process, so that no test
// sees or changes the settings and files of the person who runs it.
#include <QTemporaryDir>
#include <QtGlobal>

#include <deque>
#include <memory>

#include <gtest/gtest.h>
#include <xcb/xcb.h>

namespace {

/// Keeps the windows of one test from having the numbers of those of the test before.
///
/// Each test has an application object of its own and with it a connection to the X server, which gives a new one the
/// numbers of the one that ended last. A window manager that is late then does to a window of this test what was asked
/// for one of the last. So what became free is held for a while.
class FreshWindowNumbers : public testing::EmptyTestEventListener {
public:
    void OnTestStart(const testing::TestInfo& /*test*/) override {
        if (qEnvironmentVariableIsEmpty("DISPLAY") || qEnvironmentVariable("QT_QPA_PLATFORM") == u"offscreen") {
            return;
        }
        m_held.emplace_back(xcb_connect(nullptr, nullptr), xcb_disconnect);
        if (m_held.size() > mostHeld) {
            m_held.pop_front();
        }
    }

private:
    static constexpr std::size_t mostHeld = 32; // of the 256 connections that a server takes

    std::deque<std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)>> m_held;
};

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const QTemporaryDir home;
    if (!home.isValid()) {
        qFatal("No temporary home folder: %s", qPrintable(home.errorString()));
    }
    qputenv("HOME", home.path().toUtf8());
    for (const char* folder : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_DIRS"}) {
        qputenv(folder, (home.path() + QLatin1Char('/') + QString::fromLatin1(folder)).toUtf8());
    }
    testing::UnitTest::GetInstance()->listeners().Append(new FreshWindowNumbers);
    return RUN_ALL_TESTS();
}
