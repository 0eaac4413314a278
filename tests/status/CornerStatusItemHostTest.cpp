// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/CornerStatusItemHost.h>

#include <tests/status/StatusTest.h>

#include <QApplication>
#include <QImage>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

#include <array>

namespace {

class CornerStatusItemHostTest : public StatusTest {
protected:
    static QRect available() { return QGuiApplication::primaryScreen()->availableGeometry(); }
};

} // namespace

TEST_F(CornerStatusItemHostTest, ShowsTheItemAtTheTopRight) {
    QWidget window;
    CornerStatusItemHost host;
    host.setItemWidth(30);
    host.take(window);
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(host.itemFrame(), QRectF(window.geometry()));
    EXPECT_EQ(window.size(), QSize(30, StatusItemHost::standardThickness));
    EXPECT_TRUE(available().contains(window.geometry()));
    // Room for a window below that keeps 20 points away from the edge and has its arrow on the item.
    EXPECT_EQ(available().right() - host.itemFrame().right() + 1, 32);
    EXPECT_LT(host.itemFrame().top() - available().top(), 10);
}

TEST_F(CornerStatusItemHostTest, NeverTakesTheKeyboard) {
    QWidget window;
    CornerStatusItemHost host;
    host.take(window);
    EXPECT_TRUE(window.windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus));
    EXPECT_TRUE(window.windowFlags().testFlag(Qt::BypassWindowManagerHint));
}

TEST_F(CornerStatusItemHostTest, PutsItemsSideBySideFromTheRight) {
    std::array<QWidget, 3> windows;
    std::array<CornerStatusItemHost, 3> hosts;
    for (std::size_t index = 0; index < hosts.size(); ++index) {
        hosts.at(index).take(windows.at(index));
    }
    EXPECT_LE(hosts[1].itemFrame().right(), hosts[0].itemFrame().left());
    EXPECT_LE(hosts[2].itemFrame().right(), hosts[1].itemFrame().left());
    EXPECT_EQ(hosts[2].itemFrame().top(), hosts[0].itemFrame().top());
}

TEST_F(CornerStatusItemHostTest, ClosesTheGapOfAnItemThatGoes) {
    QWidget first;
    QWidget second;
    CornerStatusItemHost secondHost;
    {
        CornerStatusItemHost firstHost;
        firstHost.take(first);
        const QRectF place = firstHost.itemFrame();
        secondHost.take(second);
        const QSignalSpy moves(&secondHost, &StatusItemHost::frameChanged);
        firstHost.release();
        EXPECT_EQ(secondHost.itemFrame(), place);
        EXPECT_EQ(QRectF(second.geometry()), place);
        EXPECT_TRUE(QTest::qWaitFor([&] { return moves.count() >= 1; }));
    }
    EXPECT_FALSE(first.isVisible());
}

TEST_F(CornerStatusItemHostTest, GrowsToTheLeft) {
    QWidget window;
    CornerStatusItemHost host;
    host.take(window);
    const QRectF before = host.itemFrame();
    host.setItemWidth(window.width() + 40);
    EXPECT_EQ(host.itemFrame().right(), before.right());
    EXPECT_EQ(host.itemFrame().width(), before.width() + 40);
    EXPECT_EQ(window.width(), before.width() + 40);
}

TEST_F(CornerStatusItemHostTest, PaintsADarkRoundedBodyBehindTheView) {
    QWidget window;
    CornerStatusItemHost host;
    host.take(window);
    QImage image(window.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    window.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    const QColor middle = image.pixelColor(image.rect().center());
    EXPECT_LT(middle.red(), 40);
    EXPECT_GT(middle.alpha(), 200);
    EXPECT_LT(image.pixelColor(0, 0).alpha(), 40);
}

TEST_F(CornerStatusItemHostTest, SurvivesTheEndOfItsWindow) {
    CornerStatusItemHost host;
    {
        QWidget window;
        host.take(window);
    }
    EXPECT_EQ(host.window(), nullptr);
    QWidget another;
    host.take(another);
    EXPECT_TRUE(another.isVisible());
}
