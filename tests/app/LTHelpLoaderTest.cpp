// SPDX-License-Identifier: MIT
// The help window, with either engine: VXKIT_TEST_ENGINE=web in the environment says that it is Qt WebEngine, otherwise
// it is the text browser.
#include "HelpHost.h"

#include <VXKit/platform/appkit/NSURLCache.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>

#include <QAbstractButton>
#include <QFile>
#include <QProgressBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QWheelEvent>

#include <unistd.h>

#include <cstring>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

bool testsWebEngine() {
    return qEnvironmentVariable("VXKIT_TEST_ENGINE") == QLatin1String("web");
}

/// Lets the engine that is tested be the one that is found.
class EngineChoice : public testing::Environment {
public:
    void SetUp() override {
        if (testsWebEngine()) {
            // Root and most containers cannot have the sandbox, and few have graphics hardware.
            qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
            qputenv("QTWEBENGINE_CHROMIUM_FLAGS", "--disable-gpu");
        } else {
            qputenv("VXKIT_PLUGIN_PATH", "");
        }
    }
};

[[maybe_unused]] testing::Environment* const engineChoice = testing::AddGlobalTestEnvironment(new EngineChoice);

NSURLRequest requestFor(const QUrl& url, double timeout = 60) {
    NSURLRequest request;
    request.url = url;
    request.timeoutInterval = timeout;
    return request;
}

/// What needs the application object but no window.
class Help : public testing::Test {
protected:
    HelpedApplication application;
};

/// A program's own window for help, of nothing but a page.
class OwnHelpLoader : public LTHelpLoader {
public:
    OwnHelpLoader() {
        _window = &m_helpWindow;
        _textView = new WebView(&m_helpWindow);
    }

private:
    NSWindow m_helpWindow{NSMakeRect(0, 0, 500, 400), NSTitledWindowMask, NSBackingStoreBuffered, false};
};

/// What keeps the browser's engine from being loaded; asked for once in a process.
class TextHelp : public Help {};

} // namespace

TEST_F(TextHelp, IsShownByATextBrowserWhereThePluginIsBroken) {
    const QTemporaryDir folder;
    QFile plugin(folder.filePath(QStringLiteral("libVXKitWebEngine.so")));
    ASSERT_TRUE(plugin.open(QIODevice::WriteOnly));
    plugin.write("no library");
    plugin.close();
    qputenv("VXKIT_PLUGIN_PATH", folder.path().toLocal8Bit());
    qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    const WebView view;
    EXPECT_NE(view.findChild<QTextBrowser*>(), nullptr);
}

TEST_F(TextHelp, IsShownByATextBrowserToRootWhoHasNotSwitchedTheSandboxOff) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "not root";
    }
    qunsetenv("VXKIT_PLUGIN_PATH");
    qunsetenv("QTWEBENGINE_DISABLE_SANDBOX");
    qunsetenv("QTWEBENGINE_CHROMIUM_FLAGS");
    const WebView view;
    EXPECT_NE(view.findChild<QTextBrowser*>(), nullptr);
}

TEST_F(Help, MakesNoWindowWithoutAnAddress) {
    application.showHelp(nullptr);
    EXPECT_FALSE(LTHelpLoader::exists());
    EXPECT_THAT(QApplication::topLevelWidgets(), IsEmpty());
}

TEST_F(Help, OnlyForgetsWhatWasFetchedWhereThereIsNoLoader) {
    int cleared = 0;
    QObject::connect(&NSURLCache::sharedURLCache(), &NSURLCache::removedAllCachedResponses, &application,
                     [&] { ++cleared; });
    LTHelpLoader::pop();
    EXPECT_EQ(cleared, 1);
    EXPECT_FALSE(LTHelpLoader::exists());
    EXPECT_THAT(QApplication::topLevelWidgets(), IsEmpty());
}

TEST_F(Help, DoesNothingWithANibThatHasNoWindow) {
    LTHelpLoader loader;
    loader.awakeFromNib();
    EXPECT_EQ(loader.textView(), nullptr);
}

TEST_F(Help, NeedsNoMoreOfItsNibThanAWindowAndAPage) {
    OwnHelpLoader loader;
    loader.awakeFromNib();
    const QSignalSpy finished(loader.textView(), &WebView::loadingFinished);
    loader.textView()->mainFrame().loadRequest(requestFor(QUrl(QStringLiteral("gopher://127.0.0.1/help"))));
    EXPECT_TRUE(QTest::qWaitFor([&] { return finished.count() == 1; }, patience));
    EXPECT_FALSE(loader.textView()->isLoading());
}

TEST_F(HelpWindow, RunsWithTheEngineThatTheEnvironmentSays) {
    EXPECT_NE(usesTextBrowser(), testsWebEngine());
}

TEST_F(HelpWindow, FloatsAtTheLevelOfModalPanels) {
    EXPECT_EQ(window().level(), 8);
    EXPECT_EQ(&window(), static_cast<QWidget*>(view().window()));
}

TEST_F(HelpWindow, IsOneForAllRequestsAndLoadsThePageAfreshEachTime) {
    server.put("/help", "<title>Manual</title><link rel=stylesheet href=look.css><p>Page</p><img src=dot.png>");
    server.put("/look.css", "p { color: red }", "text/css");
    show(server.url());
    const LTHelpLoader* const first = &loader();
    const QWidget* const firstWindow = &window();
    EXPECT_EQ(server.requestsFor("/help"), 1);
    EXPECT_EQ(server.requestsFor("/look.css"), 1);
    window().close();
    EXPECT_FALSE(window().isVisible());
    show(server.url());
    EXPECT_EQ(&loader(), first);
    EXPECT_EQ(&window(), firstWindow);
    EXPECT_TRUE(window().isVisible());
    EXPECT_EQ(server.requestsFor("/help"), 2);
    EXPECT_EQ(server.requestsFor("/look.css"), 2);
    EXPECT_EQ(text(), QStringLiteral("Page"));
}

TEST_F(HelpWindow, KeepsWhatWasFetchedUntilItIsPoppedAgain) {
    server.put("/help", "<link rel=stylesheet href=look.css><p>Page</p>");
    server.put("/look.css", "p { color: red }", "text/css");
    server.put("/other", "<link rel=stylesheet href=look.css><p>Other</p>");
    show(server.url());
    loads([&] { view().mainFrame().loadRequest(requestFor(server.url(QStringLiteral("/other")))); });
    loads([&] { view().mainFrame().loadRequest(requestFor(server.url())); });
    EXPECT_EQ(text(), QStringLiteral("Page"));
    EXPECT_EQ(server.requestsFor("/help"), 1);
    EXPECT_EQ(server.requestsFor("/look.css"), 1);
}

TEST_F(HelpWindow, ForgetsThenLoadsThenComesIntoPlaceThenIsShown) {
    server.put("/help", "<p>Page</p>");
    application.help = server.url();
    std::vector<std::string> order;
    QObject::connect(&NSURLCache::sharedURLCache(), &NSURLCache::removedAllCachedResponses, &application,
                     [&] { order.emplace_back("forgets"); });
    QObject::connect(&view(), &WebView::loadingStarted, &application, [&] { order.emplace_back("loads"); });
    window().setFrameOrigin({0, 0});
    const NSNotificationObservation moved = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowDidMoveNotification, &window(),
        [&](const NSNotification&) { order.emplace_back(window().isVisible() ? "moves, shown" : "moves, hidden"); });
    const NSNotificationObservation key = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowDidBecomeKeyNotification, &window(), [&](const NSNotification&) { order.emplace_back("is key"); });
    LTHelpLoader::pop();
    EXPECT_TRUE(eventually([&] { return window().isKeyWindow(); }));
    EXPECT_THAT(order, ElementsAre("forgets", "loads", "moves, hidden", "is key"));
}

TEST_F(HelpWindow, IsCalledWhatThePageIsCalled) {
    server.put("/help", "<title>The Manual</title><p>Page</p>");
    server.put("/untitled", "<p>Page</p>");
    show(server.url());
    EXPECT_TRUE(eventually([&] { return window().windowTitle() == QStringLiteral("The Manual"); }));
    show(server.url(QStringLiteral("/untitled")));
    EXPECT_TRUE(eventually([&] { return window().windowTitle() == QStringLiteral("Help"); }));
}

TEST_F(HelpWindow, ShowsPagesOfFilesWithTheFilesBesideThem) {
    const QTemporaryDir folder;
    QFile page(folder.filePath(QStringLiteral("page one.html")));
    ASSERT_TRUE(page.open(QIODevice::WriteOnly));
    page.write("<meta charset=utf-8><title>File</title><p>How to \xE2\x80\xA6</p>");
    page.close();
    show(QUrl::fromLocalFile(page.fileName()));
    EXPECT_EQ(text(), QStringLiteral("How to …"));
    EXPECT_TRUE(part("openInBrowser").isEnabled());
}

TEST_F(HelpWindow, ShowsPagesOfTheProgramsOwnResources) {
    show(QUrl(QStringLiteral("qrc:/page.html")));
    EXPECT_EQ(text(), QStringLiteral("A page of the program"));
    EXPECT_TRUE(eventually([&] { return window().windowTitle() == QStringLiteral("Own Page"); }));
    // Which no browser can show.
    EXPECT_FALSE(part("openInBrowser").isEnabled());
}

TEST_F(HelpWindow, SaysWhyAPageCannotBeShownAndRetries) {
    server.putStatus("/help", "404 Not Found");
    show(server.url());
    EXPECT_TRUE(isFailureShown());
    EXPECT_THAT(reason(), HasSubstr("404"));
    EXPECT_EQ(address(), server.url().toString().toStdString());
    EXPECT_EQ(window().focusWidget(), &part("retry"));
    server.put("/help", "<p>Here again</p>");
    loads([] { part<QAbstractButton>("retry").click(); });
    EXPECT_FALSE(isFailureShown());
    EXPECT_EQ(text(), QStringLiteral("Here again"));
    EXPECT_EQ(server.requestsFor("/help"), 2);
}

TEST_F(HelpWindow, SaysThatNoServerAnswers) {
    const QUrl nobody = server.url();
    server.close();
    show(nobody);
    EXPECT_TRUE(isFailureShown());
    EXPECT_THAT(reason(), HasSubstr("efused"));
    EXPECT_EQ(address(), nobody.toString().toStdString());
}

TEST_F(HelpWindow, SaysThatAFileIsMissing) {
    show(QUrl::fromLocalFile(QStringLiteral("/nowhere/page.html")));
    EXPECT_TRUE(isFailureShown());
    // In the language of the user, but where an engine has none but its own.
    EXPECT_THAT(reason(), testing::AnyOf(HasSubstr(std::strerror(ENOENT)), HasSubstr("No such file")));
}

TEST_F(HelpWindow, SaysThatAResourceOfTheProgramIsMissing) {
    show(QUrl(QStringLiteral("qrc:/missing.html")));
    EXPECT_TRUE(isFailureShown());
    EXPECT_THAT(reason(), testing::AnyOf(HasSubstr(std::strerror(ENOENT)), HasSubstr("No such file")));
}

TEST_F(HelpWindow, SaysThatNoServerHasTheName) {
    // One too long to be looked up.
    show(QUrl(QStringLiteral("http://%1invalid/help").arg(QStringLiteral("a.").repeated(150))));
    EXPECT_TRUE(isFailureShown());
    EXPECT_THAT(reason(), testing::AnyOf(HasSubstr("no server of that name"), HasSubstr("not found")));
}

TEST_F(HelpWindow, SaysThatTheServerHungUp) {
    server.hangUpOn("/help");
    show(server.url());
    EXPECT_TRUE(isFailureShown());
    EXPECT_THAT(reason(), HasSubstr("closed"));
}

TEST_F(HelpWindow, FailsForErrorsOfTheServerWithAPageOfTheirOwn) {
    server.putAnswer("/help", "HTTP/1.1 503 Busy\r\nContent-Type: text/html\r\nConnection: close\r\n\r\n<p>Busy</p>");
    show(server.url());
    EXPECT_TRUE(isFailureShown());
    EXPECT_THAT(reason(), HasSubstr("503"));
}

TEST_F(HelpWindow, GivesUpOnServersThatDoNotAnswer) {
    server.putAnswer("/help", "");
    application.help = server.url();
    application.showHelp(nullptr);
    loads([&] { view().mainFrame().loadRequest(requestFor(server.url(), 0.2)); });
    EXPECT_TRUE(isFailureShown());
    EXPECT_EQ(reason(), "It does not answer.");
    EXPECT_FALSE(view().isLoading());
    server.put("/help", "<p>Awake</p>");
    show(server.url());
    EXPECT_EQ(text(), QStringLiteral("Awake"));
}

TEST_F(HelpWindow, FailsForAnswersThatAreNone) {
    server.putAnswer("/help", "\1\2 nonsense \r\n\r\n");
    show(server.url());
    EXPECT_TRUE(isFailureShown());
    EXPECT_EQ(reason(), testsWebEngine() ? "The server's answer makes no sense." : "Connection closed");
    EXPECT_FALSE(view().isLoading());
    // And the next one is shown as if nothing had been.
    server.put("/help", "<p>Sense</p>");
    show(server.url());
    EXPECT_EQ(text(), QStringLiteral("Sense"));
}

TEST_F(HelpWindow, FailsForAddressesThatLeadInACircle) {
    server.putStatus("/help", "302 Found", "Location: /there\r\n");
    server.putStatus("/there", "302 Found", "Location: /help\r\n");
    show(server.url());
    EXPECT_TRUE(isFailureShown());
    EXPECT_THAT(reason(), Not(IsEmpty()));
    EXPECT_LE(server.requestsFor("/help"), 20);
}

TEST_F(HelpWindow, FollowsAnAddressToWhereThePageIsNow) {
    server.putStatus("/help", "301 Moved Permanently", "Location: /new\r\n");
    server.put("/new", "<p>Moved</p>");
    show(server.url());
    EXPECT_EQ(text(), QStringLiteral("Moved"));
    EXPECT_EQ(view().mainFrameURL(), server.url(QStringLiteral("/new")));
}

TEST_F(HelpWindow, ShowsTheNewestPageWhenAnOlderOneIsStillLoading) {
    server.putAnswer("/slow", "");
    server.put("/help", "<p>Newest</p>");
    application.help = server.url(QStringLiteral("/slow"));
    application.showHelp(nullptr);
    show(server.url());
    EXPECT_EQ(text(), QStringLiteral("Newest"));
    EXPECT_FALSE(isFailureShown());
    EXPECT_EQ(finished, 1);
}

TEST_F(HelpWindow, GoesBackAndForwardByButtonsKeysAndTheMouse) {
    server.put("/help", "<p>First</p>");
    server.put("/second", "<p>Second</p>");
    show(server.url());
    EXPECT_FALSE(part("back").isEnabled());
    loads([&] { view().mainFrame().loadRequest(requestFor(server.url(QStringLiteral("/second")))); });
    EXPECT_TRUE(eventually([] { return part("back").isEnabled(); }));
    EXPECT_FALSE(part("forward").isEnabled());
    loads([] { part<QAbstractButton>("back").click(); });
    EXPECT_EQ(text(), QStringLiteral("First"));
    EXPECT_TRUE(eventually([] { return part("forward").isEnabled() && !part("back").isEnabled(); }));
    loads([] { press(Qt::Key_Right, Qt::AltModifier); });
    EXPECT_EQ(text(), QStringLiteral("Second"));
    loads([] { press(Qt::Key_Left, Qt::AltModifier); });
    EXPECT_EQ(text(), QStringLiteral("First"));
    loads([] { clickPage(Qt::ForwardButton); });
    EXPECT_EQ(text(), QStringLiteral("Second"));
    loads([] { clickPage(Qt::BackButton); });
    EXPECT_EQ(text(), QStringLiteral("First"));
    loads([] { press(Qt::Key_Forward); });
    EXPECT_EQ(text(), QStringLiteral("Second"));
    loads([] { press(Qt::Key_Back); });
    EXPECT_EQ(text(), QStringLiteral("First"));
}

TEST_F(HelpWindow, GoesBackFromAPageThatCannotBeShown) {
    server.put("/help", "<p>First</p>");
    show(server.url());
    loads([&] { view().mainFrame().loadRequest(requestFor(server.url(QStringLiteral("/missing")))); });
    ASSERT_TRUE(isFailureShown());
    EXPECT_TRUE(eventually([] { return part("back").isEnabled(); }));
    press(Qt::Key_Left, Qt::AltModifier);
    EXPECT_TRUE(eventually([] { return !isFailureShown() && !view().isLoading(); }));
    EXPECT_TRUE(eventually([] { return text() == QStringLiteral("First"); }));
}

TEST_F(HelpWindow, MakesThePageLargerAndSmaller) {
    server.put("/help", "<p>Page</p>");
    show(server.url());
    EXPECT_EQ(part<QAbstractButton>("zoom").text(), QStringLiteral("100%"));
    part<QAbstractButton>("zoomIn").click();
    press(Qt::Key_Plus, Qt::ControlModifier);
    EXPECT_EQ(view().pageSizeMultiplier(), 1.25);
    EXPECT_EQ(part<QAbstractButton>("zoom").text(), QStringLiteral("125%"));
    press(Qt::Key_Minus, Qt::ControlModifier);
    EXPECT_EQ(view().pageSizeMultiplier(), 1.1);
    press(Qt::Key_0, Qt::ControlModifier);
    EXPECT_EQ(view().pageSizeMultiplier(), 1);
    press(Qt::Key_Equal, Qt::ControlModifier); // the key with the plus, without Shift
    EXPECT_EQ(view().pageSizeMultiplier(), 1.1);
    for (int turn = 0; turn < 20; ++turn) {
        part<QAbstractButton>("zoomOut").click();
    }
    EXPECT_EQ(view().pageSizeMultiplier(), 0.5);
    EXPECT_FALSE(part("zoomOut").isEnabled());
    EXPECT_EQ(text(), QStringLiteral("Page"));
}

TEST_F(HelpWindow, MakesThePageLargerByTheWheelInWholeNotches) {
    server.put("/help", "<p>Page</p>");
    show(server.url());
    const QPointF centre = view().mapTo(&window(), view().rect().center());
    for (int part = 0; part < 3; ++part) {
        QWheelEvent turn(centre, window().mapToGlobal(centre), {}, {0, 60}, Qt::NoButton, Qt::ControlModifier,
                         Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(window().windowHandle(), &turn);
    }
    EXPECT_EQ(view().pageSizeMultiplier(), 1.1);
}

TEST_F(HelpWindow, ClosesByEscapeAlsoWhileLoadingAndComesAgain) {
    server.putAnswer("/help", "");
    application.help = server.url();
    application.showHelp(nullptr);
    ASSERT_TRUE(window().isVisible());
    EXPECT_TRUE(view().isLoading());
    press(Qt::Key_Escape);
    EXPECT_FALSE(window().isVisible());
    server.put("/help", "<p>Page</p>");
    show(server.url());
    EXPECT_TRUE(window().isVisible());
    EXPECT_EQ(text(), QStringLiteral("Page"));
}

TEST_F(HelpWindow, ClosesAndReloadsByTheKeysOfBrowsers) {
    server.put("/help", "<p>Page</p>");
    show(server.url());
    loads([] { press(Qt::Key_F5); });
    EXPECT_EQ(server.requestsFor("/help"), 2);
    loads([] { press(Qt::Key_R, Qt::ControlModifier); });
    EXPECT_EQ(server.requestsFor("/help"), 3);
    press(Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(window().isVisible());
}

TEST_F(HelpWindow, GivesTheKeyboardToThePage) {
    server.put("/help", "<p>Page</p>");
    show(server.url());
    ASSERT_TRUE(eventually([] { return window().isKeyWindow(); }));
    EXPECT_TRUE(
        eventually([] { return window().focusWidget() == &view() || view().isAncestorOf(window().focusWidget()); }));
}

TEST_F(HelpWindow, StopsAndReloadsByOneButton) {
    server.put("/help", "<p>Page</p>");
    server.putAnswer("/slow", "");
    show(server.url());
    EXPECT_EQ(part("reload").accessibleName(), QStringLiteral("Reload"));
    loads([] { part<QAbstractButton>("reload").click(); });
    EXPECT_EQ(server.requestsFor("/help"), 2);
    view().mainFrame().loadRequest(requestFor(server.url(QStringLiteral("/slow"))));
    EXPECT_TRUE(eventually([&] { return server.requestsFor("/slow") == 1; }));
    EXPECT_EQ(part("reload").accessibleName(), QStringLiteral("Stop"));
    loads([] { part<QAbstractButton>("reload").click(); });
    EXPECT_FALSE(view().isLoading());
    EXPECT_FALSE(isFailureShown());
    EXPECT_EQ(part<QProgressBar>("progress").value(), 0);
    EXPECT_EQ(text(), QStringLiteral("Page"));
}

TEST_F(HelpWindow, OpensTheHelpPageInTheBrowser) {
    server.put("/help", "<p>Page</p>");
    show(server.url());
    part<QAbstractButton>("openInBrowser").click();
    EXPECT_THAT(opened, ElementsAre(server.url()));
    // Whatever page is shown, and whether or not a browser could.
    application.help = QUrl(QStringLiteral("qrc:/page.html"));
    loader().openInBrowser(nullptr);
    EXPECT_THAT(opened, ElementsAre(server.url(), application.help));
}

TEST_F(HelpWindow, RefusesAddressesOfOtherKinds) {
    show(QUrl(QStringLiteral("gopher://127.0.0.1/help")));
    EXPECT_TRUE(isFailureShown());
    EXPECT_THAT(reason(), HasSubstr("gopher"));
    EXPECT_THAT(opened, IsEmpty());
}

TEST_F(HelpWindow, NamesItsPartsForScreenReaders) {
    for (const QAbstractButton* button : window().findChildren<QAbstractButton*>()) {
        if (view().isAncestorOf(button)) {
            continue;
        }
        EXPECT_THAT((button->accessibleName() + button->text()).toStdString(), Not(IsEmpty()))
            << button->objectName().toStdString();
    }
    EXPECT_EQ(view().accessibleName(), QStringLiteral("Help page"));
}

TEST_F(HelpWindow, ComesToTheFrontWithTheKeyboardWhereItIsShownAlready) {
    server.put("/help", "<p>Page</p>");
    show(server.url());
    NSWindow other(NSMakeRect(0, 0, 100, 100), NSTitledWindowMask, NSBackingStoreBuffered, false);
    other.makeKeyAndOrderFront(nullptr);
    ASSERT_TRUE(eventually([&] { return other.isKeyWindow(); }));
    show(server.url());
    EXPECT_TRUE(eventually([] { return window().isKeyWindow(); }));
}
