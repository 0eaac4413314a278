// SPDX-License-Identifier: MIT
#include "AppKitHost.h"

#include <gmock/gmock.h>

namespace {

class ScreenUpdates : public AppKitHost {
protected:
    ScreenUpdates() {
        NSEnableScreenUpdates(); // one too many
        window.orderFront(nullptr);
        NSDisableScreenUpdates();
    }

    static bool isOnScreen(const NSWindow& window) { return window.QWidget::isVisible() && window.windowOpacity() > 0; }

    HostWindow window{NSMakeRect(0, 0, 100, 80)};
};

} // namespace

TEST_F(ScreenUpdates, KeepAWindowOnTheScreenThatIsOrderedOutMeanwhile) {
    window.orderOut(nullptr);
    EXPECT_FALSE(window.isVisible()) << "it is out as far as it knows";
    EXPECT_TRUE(isOnScreen(window));
    settle();
    EXPECT_TRUE(isOnScreen(window));
    NSEnableScreenUpdates();
    EXPECT_FALSE(isOnScreen(window));
}

TEST_F(ScreenUpdates, Nest) {
    NSDisableScreenUpdates();
    window.orderOut(nullptr);
    NSEnableScreenUpdates();
    EXPECT_TRUE(isOnScreen(window));
    NSEnableScreenUpdates();
    EXPECT_FALSE(isOnScreen(window));
    NSEnableScreenUpdates();
    NSDisableScreenUpdates();
    window.orderFront(nullptr);
    EXPECT_FALSE(isOnScreen(window)) << "what was enabled too often is not owed";
    NSEnableScreenUpdates();
    EXPECT_TRUE(isOnScreen(window));
}

TEST_F(ScreenUpdates, KeepAWindowThatComesBackMeanwhile) {
    window.orderOut(nullptr);
    window.orderFront(nullptr);
    EXPECT_TRUE(window.isVisible());
    NSEnableScreenUpdates();
    EXPECT_TRUE(isOnScreen(window));
}

TEST_F(ScreenUpdates, KeepTheOpacityThatAWindowHad) {
    window.setAlphaValue(0);
    EXPECT_EQ(window.windowOpacity(), 1);
    EXPECT_EQ(window.alphaValue(), 0);
    NSEnableScreenUpdates();
    EXPECT_EQ(window.windowOpacity(), 0);
}

TEST_F(ScreenUpdates, ShowWhatCameMeanwhileBeforeTheyTakeAwayWhatWent) {
    HostWindow next(NSMakeRect(0, 0, 100, 80));
    next.orderFront(nullptr);
    window.orderOut(nullptr);
    EXPECT_TRUE(next.isVisible());
    EXPECT_FALSE(isOnScreen(next));
    bool nextWasThere = false;
    struct Watcher : QObject {
        bool eventFilter(QObject* /*watched*/, QEvent* event) override {
            if (event->type() == QEvent::Hide) {
                whenHidden();
            }
            return false;
        }
        std::function<void()> whenHidden;
    } watcher;
    watcher.whenHidden = [&] { nextWasThere = isOnScreen(next); };
    window.installEventFilter(&watcher);
    NSEnableScreenUpdates();
    EXPECT_TRUE(nextWasThere);
    EXPECT_FALSE(isOnScreen(window));
}

TEST_F(ScreenUpdates, MayEndAWindowWhenTheyGoOn) {
    show(window);
    QPointer<HostWindow> other(new HostWindow(NSMakeRect(0, 0, 100, 80)));
    window.makeKeyWindow();
    settle();
    ASSERT_TRUE(window.isKeyWindow());
    const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowDidResignKeyNotification, &window, [&](const NSNotification&) { delete other; });
    window.orderOut(nullptr);
    NSEnableScreenUpdates();
    EXPECT_FALSE(other);
    EXPECT_FALSE(isOnScreen(window));
}
