// SPDX-License-Identifier: MIT
// What the tests of the help window share.
#pragma once

#include "HelpServer.h"

#include <VXKit/app/LTApplication.h>
#include <VXKit/app/LTHelpLoader.h>
#include <VXKit/platform/appkit/WebView.h>
#include <VXKit/platform/desktop/NSWorkspace.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <QLabel>
#include <QTest>
#include <QTextBrowser>

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

inline constexpr int patience = 30000; // milliseconds

class OpenedAddresses : public NSWorkspace {
public:
    explicit OpenedAddresses(std::vector<QUrl>& opened) : m_opened(opened) {}
    bool openURL(const QUrl& url) override {
        m_opened.push_back(url);
        return true;
    }

private:
    std::vector<QUrl>& m_opened;
};

class HelpedApplication : public LTApplication {
public:
    HelpedApplication() : LTApplication(s_argc, s_argv) {}
    QUrl helpURL() const override { return help; }

    QUrl help;

private:
    static inline char s_name[] = "host";
    static inline char* s_argv[] = {s_name, nullptr};
    static inline int s_argc = 1;
};

/// The kit's window, driven as a person does.
class HelpWindow : public testing::Test {
protected:
    HelpWindow() {
        NSUserDefaults::standardUserDefaults().setBool(true, "VXReduceMotion");
        NSWorkspace::setSharedWorkspace(std::make_unique<OpenedAddresses>(opened));
        LTHelpLoader::loader();
        QObject::connect(&view(), &WebView::loadingStarted, &application, [this] { ++started; });
        QObject::connect(&view(), &WebView::loadingFinished, &application, [this](const QString& reason, const QUrl&) {
            ++finished;
            lastReason = reason;
        });
    }
    ~HelpWindow() override { NSWorkspace::setSharedWorkspace(nullptr); }

    static LTHelpLoader& loader() { return LTHelpLoader::loader(); }
    static WebView& view() { return *loader().textView(); }
    static NSWindow& window() { return *loader().window(); }

    template <class Widget = QWidget>
    static Widget& part(const char* name) {
        return *window().findChild<Widget*>(QString::fromLatin1(name));
    }

    template <class Condition>
    static bool eventually(Condition condition) {
        return QTest::qWaitFor(condition, patience);
    }

    void show(const QUrl& url) {
        application.help = url;
        const int before = finished;
        application.showHelp(nullptr);
        ASSERT_TRUE(eventually([&] { return finished > before; }));
    }
    /// Does what leads to another page, and waits for it.
    template <class Action>
    void loads(Action action) {
        const int before = finished;
        action();
        ASSERT_TRUE(eventually([&] { return finished > before; }));
    }

    static QString text() {
        QString result;
        bool isThere = false;
        view().mainFrame().readText([&](const QString& read) {
            result = read;
            isThere = true;
        });
        EXPECT_TRUE(eventually([&] { return isThere; }));
        return result.trimmed();
    }
    static bool isFailureShown() { return part("errorPane").isVisible(); }
    static std::string reason() { return part<QLabel>("errorReason").text().toStdString(); }
    static std::string address() { return part<QLabel>("errorAddress").text().remove(QChar(0x200b)).toStdString(); }
    static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(window().windowHandle(), key, modifiers);
    }
    /// On the first words of a heading at the top of the page.
    static void clickPage(Qt::MouseButton button = Qt::LeftButton) {
        QTest::mouseClick(window().windowHandle(), button, {}, view().mapTo(&window(), QPoint(60, 40)));
    }
    static bool usesTextBrowser() { return view().findChild<QTextBrowser*>() != nullptr; }

    std::vector<QUrl> opened;
    HelpedApplication application;
    HelpServer server;
    int started = 0;
    int finished = 0;
    QString lastReason;
};
