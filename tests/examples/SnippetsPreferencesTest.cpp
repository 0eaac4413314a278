// SPDX-License-Identifier: MIT
// The preferences window, and the back of the main window.
#include "SnippetsHost.h"

#include <AboutWindow.h>
#include <SnippetQuestions.h>
#include <SnippetsWindow.h>
#include <preferences/LoginItem.h>
#include <preferences/PreferencesWindow.h>
#include <preferences/WindowOpacity.h>

#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/desktop/MotionPreference.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>
#include <VXKit/platform/foundation/NSTimer.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/transitions/LTPreferenceTabs.h>

#include <QAbstractButton>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QSlider>
#include <QTest>
#include <QWindow>

#include <gmock/gmock.h>

namespace {

class SnippetsPreferences : public SnippetsHost {
protected:
    using Page = PreferencesWindow::Page;

    void SetUp() override { ASSERT_TRUE(application.start()); }

    PreferencesWindow& window() { return application.preferences(); }

    QAbstractButton* button(const char* title) {
        for (QAbstractButton* candidate : window().findChildren<QAbstractButton*>()) {
            if (candidate->text().remove(u'&') == QString::fromUtf8(title)) {
                return candidate;
            }
        }
        return nullptr;
    }

    /// As when the person goes on in another program.
    void leave() {
        NSNotificationCenter& centre = NSNotificationCenter::defaultCenter();
        for (const char* change :
             {NSApplicationWillResignActiveNotification, NSApplicationDidResignActiveNotification}) {
            centre.postNotificationName(change, &application);
        }
    }

    const AnimationDurationsForTesting noAnimations{0};
};

} // namespace

TEST_F(SnippetsPreferences, TakesTheSizeOfEachPageAndKeepsItsTop) {
    application.showPreferences(Page::General);
    const NSRect general = window().NSWindow::frame();
    EXPECT_EQ(general.size, NSMakeSize(380, 290));
    application.showPreferences(Page::Sync);
    const NSRect sync = window().NSWindow::frame();
    EXPECT_EQ(sync.size, NSMakeSize(460, 330));
    application.showPreferences(Page::Database);
    const NSRect last = window().NSWindow::frame();
    EXPECT_EQ(last.size, NSMakeSize(420, 240));
    EXPECT_EQ(NSMaxY(sync), NSMaxY(general));
    EXPECT_EQ(NSMaxY(last), NSMaxY(general));
    EXPECT_EQ(NSMidX(sync), NSMidX(general));
    EXPECT_EQ(NSMidX(last), NSMidX(general));
}

TEST_F(SnippetsPreferences, GoesToASmallerPageAfterALargerOneHasSettled) {
    const NSTimer::IntervalsForTesting soon([](double) { return 0.001; });
    application.showPreferences(Page::Sync);
    ASSERT_TRUE(QTest::qWaitFor([this] { return window().minSize() == NSMakeSize(460, 330); }));
    application.showPreferences(Page::General);
    EXPECT_TRUE(QTest::qWaitFor([this] { return window().NSWindow::frame().size == NSMakeSize(380, 290); }));
}

TEST_F(SnippetsPreferences, GoesThroughItsPagesByKeyboard) {
    application.showPreferences(Page::General);
    auto* tabs = window().findChild<LTPreferenceTabs*>();
    tabs->findChild<QAbstractButton*>()->setFocus();
    QTest::keyClick(window().windowHandle(), Qt::Key_Right);
    EXPECT_EQ(tabs->indexOfSelectedTab(), 1);
    QTest::keyClick(window().windowHandle(), Qt::Key_End);
    EXPECT_EQ(tabs->indexOfSelectedTab(), 2);
    QTest::keyClick(window().windowHandle(), Qt::Key_Escape);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !window().isVisible(); }));
}

TEST_F(SnippetsPreferences, SwitchesCountAtOnce) {
    application.showPreferences(Page::General);
    EXPECT_TRUE(asksBeforeRemoving());
    ASSERT_TRUE(button("Ask before a snippet is removed")->isChecked());
    button("Ask before a snippet is removed")->click();
    EXPECT_FALSE(asksBeforeRemoving());
    button("Reduce motion")->click();
    EXPECT_TRUE(prefersReducedMotion());
    button("Reduce motion")->click();
    EXPECT_FALSE(NSUserDefaults::standardUserDefaults().boolForKey(VXReduceMotion));
}

TEST_F(SnippetsPreferences, AWindowThatStaysOpenCanBeSeenThroughAtOnce) {
    application.showPreferences(Page::General);
    application.showMainWindow();
    auto* slider = window().findChild<QSlider*>();
    QAbstractButton* closes = button("Close the window when it is left");
    // Of the window's look itself; what a screen without compositing makes of it is opaque.
    const auto alphaOfBody = [&] {
        const QImage look = application.window().backgroundColor().patternImage()->imageForScale(1);
        return qAlpha(look.pixel(look.width() / 2, look.height() - 6));
    };
    EXPECT_TRUE(closes->isChecked());
    EXPECT_FALSE(slider->isEnabled());
    EXPECT_EQ(application.mainWindowOpacity(), 1.0F);
    EXPECT_EQ(alphaOfBody(), 255);

    closes->click();
    EXPECT_FALSE(application.shouldCloseMainWindowOnDeactivate());
    EXPECT_TRUE(slider->isEnabled());
    slider->setValue(60);
    EXPECT_FLOAT_EQ(application.mainWindowOpacity(), 0.6F);
    EXPECT_NEAR(keptWindowOpacity(), 0.6, 1e-9);
    EXPECT_NEAR(alphaOfBody(), 0.6 * 255, 2);
    slider->setValue(0);
    EXPECT_FLOAT_EQ(application.mainWindowOpacity(), 0.5F);

    closes->click();
    EXPECT_EQ(alphaOfBody(), 255);
    EXPECT_EQ(application.mainWindowOpacity(), 1.0F);
    EXPECT_NEAR(keptWindowOpacity(), 0.5, 1e-9);
}

TEST_F(SnippetsPreferences, ADragIsKeptAtItsEnd) {
    NSUserDefaults::standardUserDefaults().setBool(false, "VXCloseMainWindowOnDeactivate");
    application.showPreferences(Page::General);
    auto* slider = window().findChild<QSlider*>();
    slider->setSliderDown(true);
    slider->setSliderPosition(70);
    EXPECT_FLOAT_EQ(application.mainWindowOpacity(), 0.7F);
    EXPECT_EQ(keptWindowOpacity(), 1.0);
    slider->setSliderDown(false);
    EXPECT_NEAR(keptWindowOpacity(), 0.7, 1e-9);
}

TEST_F(SnippetsPreferences, AnOpacityThatMakesNoSenseIsBroughtIntoItsRange) {
    NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
    EXPECT_EQ(keptWindowOpacity(), 1.0);
    for (const auto& [value, opacity] : {std::pair(-3.0, 0.5), std::pair(0.0, 0.5), std::pair(7.0, 1.0)}) {
        defaults.setDouble(value, "SnippetsWindowOpacity");
        EXPECT_EQ(keptWindowOpacity(), opacity);
    }
    defaults.setObject("much", "SnippetsWindowOpacity");
    EXPECT_EQ(keptWindowOpacity(), 0.5);
}

TEST_F(SnippetsPreferences, WhetherTheWindowClosesWhenItIsLeftCountsAtOnce) {
    application.showPreferences(Page::General);
    button("Close the window when it is left")->click();
    window().orderOut(nullptr);
    application.showMainWindow();
    leave();
    EXPECT_TRUE(application.window().isVisible());

    application.showPreferences(Page::General);
    button("Close the window when it is left")->click();
    window().orderOut(nullptr);
    application.showMainWindow();
    leave();
    EXPECT_FALSE(application.window().isVisible());
}

TEST_F(SnippetsPreferences, TheBoxOfTheLoginItemFollowsTheFile) {
    const LoginItem item = LoginItem::ofThisProgram();
    EXPECT_TRUE(item.path().endsWith(QStringLiteral("/autostart/org.vxkit.Snippets.desktop")));
    application.showPreferences(Page::General);
    QAbstractButton* box = button("Start when a session begins");
    EXPECT_FALSE(box->isChecked());
    box->click();
    EXPECT_TRUE(item.isOn());
    QFile file(item.path());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_THAT(file.readAll().toStdString(),
                testing::HasSubstr(QCoreApplication::applicationFilePath().toStdString() + " --background\n"));

    ASSERT_TRUE(file.remove());
    application.showMainWindow();
    window().becomeKeyWindow();
    EXPECT_FALSE(box->isChecked());
    EXPECT_FALSE(item.isOn()) << "showing the truth must not change it";
    box->click();
    EXPECT_TRUE(item.isOn());
    box->click();
    EXPECT_FALSE(item.isOn());
}

TEST_F(SnippetsPreferences, ABoxThatCannotBeSetGoesBack) {
    const LoginItem item = LoginItem::ofThisProgram();
    ASSERT_TRUE(QDir().mkpath(item.path()));
    application.showPreferences(Page::General);
    button("Start when a session begins")->click();
    EXPECT_FALSE(button("Start when a session begins")->isChecked());
}

TEST_F(SnippetsPreferences, KeepsWhatWasTypedOfTheSyncWhenItIsClosed) {
    application.showPreferences(Page::Sync);
    auto* address = qobject_cast<QLineEdit*>(window().focusWidget());
    ASSERT_TRUE(address);
    address->setText(QStringLiteral("host/folder"));
    QTest::keyClick(window().windowHandle(), Qt::Key_Escape);
    ASSERT_TRUE(QTest::qWaitFor([this] { return !window().isVisible(); }));
    EXPECT_EQ(SyncSettings::load().address, QUrl(QStringLiteral("https://host/folder")));
    EXPECT_FALSE(SyncSettings::load().isOn);
}

TEST_F(SnippetsPreferences, StaysOpenWhileTheSyncMakesNoSense) {
    application.showPreferences(Page::Sync);
    button("Keep the snippets in sync")->click();
    application.showPreferences(Page::Database);
    QTest::keyClick(window().windowHandle(), Qt::Key_Escape);
    auto* tabs = window().findChild<LTPreferenceTabs*>();
    EXPECT_TRUE(QTest::qWaitFor([&] { return tabs->indexOfSelectedTab() == 1; }));
    EXPECT_TRUE(window().isVisible());
    EXPECT_FALSE(SyncSettings::load().isOn);
}

TEST_F(SnippetsPreferences, TellsWhereTheSnippetsAre) {
    application.showPreferences(Page::Database);
    EXPECT_FALSE(button("Use Standard Database")->isEnabled());
}

TEST_F(SnippetsPreferences, TheMainWindowTurnsOverAndBack) {
    application.showMainWindow();
    const NSRect frame = application.window().NSWindow::frame();
    Q_EMIT application.window().asksWhatItIs();
    ASSERT_TRUE(application.about());
    EXPECT_TRUE(application.about()->isVisible());
    EXPECT_FALSE(application.window().isVisible());
    EXPECT_EQ(application.about()->NSWindow::frame(), frame);
    QTest::keyClick(application.about()->windowHandle(), Qt::Key_Escape);
    EXPECT_TRUE(QTest::qWaitFor([this] { return application.window().isVisible(); }));
    EXPECT_FALSE(application.about()->isVisible());
    EXPECT_EQ(application.window().NSWindow::frame(), frame);
}

TEST_F(SnippetsPreferences, TheBackIsClosedAndOpenedAgainAsTheFront) {
    application.showMainWindow();
    application.showAbout();
    application.closeMainWindow();
    EXPECT_FALSE(application.about()->isVisible());
    application.toggleMainWindow();
    EXPECT_TRUE(application.window().isVisible());
    EXPECT_FALSE(application.about()->isVisible());
    application.showAbout();
    application.toggleMainWindow();
    EXPECT_FALSE(application.about()->isVisible());
    EXPECT_FALSE(application.window().isVisible());
}
