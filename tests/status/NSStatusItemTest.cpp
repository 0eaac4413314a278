// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/appkit/NSStatusBar.h>
#include <VXKit/platform/appkit/NSStatusItem.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/desktop/StatusItemHosts.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>

#include <tests/status/FakeStatusItemHost.h>
#include <tests/status/StatusTest.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QImage>
#include <QMenu>
#include <QPainter>

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace {

class RecordingView final : public NSView {
public:
    void mouseDown(const NSEvent& event) override {
        presses.push_back(event.locationInWindow());
        if (onPress) {
            onPress();
        }
    }
    std::vector<NSPoint> presses;
    std::function<void()> onPress;
};

class NSStatusItemTest : public StatusTest {
protected:
    /// The one host of the items that are made from now on.
    void useFakeHost() {
        m_fakes = std::make_unique<StatusItemHosts::HostsForTesting>([this] {
            auto host =
                std::make_unique<FakeStatusItemHost>(StatusItemHost::Kind::Tray, StatusItemHost::Availability::Present);
            m_host = host.get();
            StatusItemHosts::Hosts hosts;
            hosts.push_back(std::move(host));
            return hosts;
        });
    }

    std::shared_ptr<NSStatusItem> makeItem(double length = 30) {
        auto item = NSStatusBar::systemStatusBar().statusItemWithLength(length);
        auto view = std::make_unique<RecordingView>();
        m_view = view.get();
        m_view->setFrame(NSMakeRect(0, 0, 44, 22));
        item->setView(std::move(view));
        return item;
    }

    std::unique_ptr<StatusItemHosts::HostsForTesting> m_fakes;
    FakeStatusItemHost* m_host = nullptr;
    RecordingView* m_view = nullptr;
};

} // namespace

TEST_F(NSStatusItemTest, IsShownWhenItHasAView) {
    const auto item = NSStatusBar::systemStatusBar().statusItemWithLength(30);
    EXPECT_EQ(item->view(), nullptr);
    auto view = std::make_unique<NSView>();
    NSView* const shown = view.get();
    item->setView(std::move(view));
    EXPECT_EQ(item->view(), shown);
    EXPECT_TRUE(shown->isVisible());
    EXPECT_EQ(shown->frame(), NSMakeRect(0, 0, 30, 22));
}

TEST_F(NSStatusItemTest, ViewFollowsTheLength) {
    const auto item = makeItem(30);
    item->setLength(50.5);
    EXPECT_EQ(item->length(), 50.5);
    EXPECT_EQ(m_view->frame(), NSMakeRect(0, 0, 51, 22));
    item->setLength(NSSquareStatusItemLength);
    EXPECT_EQ(m_view->frame(), NSMakeRect(0, 0, 22, 22));
    item->setLength(NSVariableStatusItemLength);
    EXPECT_EQ(m_view->frame(), NSMakeRect(0, 0, 44, 22));
}

TEST_F(NSStatusItemTest, ItsWindowKnowsItsPlaceFromTheDesktop) {
    useFakeHost();
    const auto item = makeItem();
    NSWindow* const window = m_view->window();
    ASSERT_NE(window, nullptr);
    int moves = 0;
    const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowDidMoveNotification, window, [&](const NSNotification&) { ++moves; });
    const QRect global(100, 4, 30, 20);
    m_host->setItemFrame(global);
    EXPECT_EQ(moves, 1);
    EXPECT_EQ(window->frame(), NSScreenRectFromGlobal(QRectF(global)));
    EXPECT_EQ(NSMinY(window->frame()), NSMaxY(NSScreen::mainScreen().frame()) - 24);
}

TEST_F(NSStatusItemTest, ClickToldByTheDesktopIsAMouseDownInTheMiddleOfTheView) {
    useFakeHost();
    const auto item = makeItem();
    Q_EMIT m_host->activated({500, 10});
    ASSERT_EQ(m_view->presses.size(), 1U);
    EXPECT_EQ(m_view->presses.front(), NSMakePoint(15, 11));
}

TEST_F(NSStatusItemTest, MayBeLetGoOfByItsOwnView) {
    useFakeHost();
    auto item = makeItem();
    m_view->onPress = [&] { item.reset(); };
    Q_EMIT m_host->activated({500, 10});
    EXPECT_EQ(item, nullptr);
}

TEST_F(NSStatusItemTest, ShowsItsMenuBelowTheItem) {
    useFakeHost();
    const auto item = makeItem();
    m_host->setItemFrame({100, 0, 30, 22});
    QMenu menu;
    menu.addAction(QStringLiteral("Entry"));
    item->setMenu(&menu);
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5), QPoint(105, 5));
    QApplication::sendEvent(m_view, &event);
    EXPECT_TRUE(menu.isVisible());
    EXPECT_EQ(menu.geometry().topLeft(), QPoint(100, 22));
}

TEST_F(NSStatusItemTest, ShowsItsMenuWhereThePanelAsksForIt) {
    useFakeHost();
    const auto item = makeItem();
    QMenu menu;
    menu.addAction(QStringLiteral("Entry"));
    Q_EMIT m_host->contextMenuRequested({50, 60});
    item->setMenu(&menu);
    EXPECT_FALSE(menu.isVisible());
    Q_EMIT m_host->contextMenuRequested({50, 60});
    EXPECT_TRUE(menu.isVisible());
    EXPECT_EQ(menu.geometry().left(), 50);
}

TEST_F(NSStatusItemTest, LeavesTheBarWhenItIsRemoved) {
    useFakeHost();
    const auto item = makeItem();
    EXPECT_TRUE(m_host->hasItem());
    NSStatusBar::systemStatusBar().removeStatusItem(*item);
    EXPECT_FALSE(m_host->hasItem());
    EXPECT_EQ(item->view(), m_view);
    item->setView(std::make_unique<NSView>());
    EXPECT_FALSE(m_host->hasItem());
}

TEST_F(NSStatusItemTest, IsFoundByAClickOnIt) {
    useFakeHost();
    auto item = makeItem();
    m_host->setItemFrame({100, 0, 30, 22});
    const NSRect frame = m_view->window()->frame();
    const NSStatusBar& bar = NSStatusBar::systemStatusBar();
    EXPECT_TRUE(bar.hasStatusItemAtPoint(NSMakePoint(NSMidX(frame), NSMidY(frame))));
    EXPECT_FALSE(bar.hasStatusItemAtPoint(NSMakePoint(NSMaxX(frame) + 5, NSMidY(frame))));
    item.reset();
    EXPECT_FALSE(bar.hasStatusItemAtPoint(NSMakePoint(NSMidX(frame), NSMidY(frame))));
}

TEST_F(NSStatusItemTest, HighlightShowsOnDarkAndOnLightBars) {
    const auto item = makeItem();
    for (const QColor& bar : {QColor(20, 20, 20), QColor(235, 235, 235)}) {
        QImage image(30, 22, QImage::Format_ARGB32_Premultiplied);
        image.fill(bar);
        QPainter painter(&image);
        {
            const NSGraphicsContext context(painter, image.height(), false);
            item->drawStatusBarBackgroundInRect(NSMakeRect(0, 0, 30, 22), false);
            EXPECT_EQ(image.pixelColor(15, 11), bar);
            item->drawStatusBarBackgroundInRect(NSMakeRect(0, 0, 30, 22), true);
        }
        painter.end();
        EXPECT_GT(std::abs(image.pixelColor(15, 11).red() - bar.red()), 30);
        EXPECT_EQ(image.pixelColor(0, 0), bar) << "the corners are round";
    }
}

TEST_F(NSStatusItemTest, NamesItselfForScreenReaders) {
    const auto item = makeItem();
    item->setTitle(QStringLiteral("Snippets"));
    EXPECT_EQ(m_view->accessibleName(), QStringLiteral("Snippets"));
    EXPECT_EQ(m_view->window()->windowTitle(), QStringLiteral("Snippets"));
}
