// SPDX-License-Identifier: MIT
#include "AppKitHost.h"

#include <VXKit/platform/appkit/NSProgressIndicator.h>
#include <VXKit/platform/desktop/MotionPreference.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <tests/graphics/GraphicsTestSupport.h>

#include <QAccessible>
#include <QAccessibleInterface>
#include <QAccessibleValueInterface>

#include <limits>

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

class NSProgressIndicatorTest : public AppKitHost {
protected:
    static QImage look(NSProgressIndicator& indicator, double ratio = 1) {
        QImage image(indicator.size() * ratio, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        image.fill(Qt::white);
        indicator.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        image.setDevicePixelRatio(1);
        return image;
    }

    /// How much of a bar of 102 points looks done.
    static int donePixels(NSProgressIndicator& bar) {
        const QColor done = bar.palette().color(QPalette::Highlight);
        const QImage image = look(bar);
        int count = 0;
        for (int x = 0; x < image.width(); ++x) {
            const QColor color = image.pixelColor(x, image.height() / 2);
            count += std::abs(color.red() - done.red()) + std::abs(color.blue() - done.blue()) < 12 ? 1 : 0;
        }
        return count;
    }

    static std::unique_ptr<NSProgressIndicator> makeBar() {
        auto bar = std::make_unique<NSProgressIndicator>(NSMakeRect(0, 0, 101, 16));
        bar->setIndeterminate(false);
        QPalette palette;
        palette.setColor(QPalette::WindowText, Qt::black);
        palette.setColor(QPalette::Highlight, QColor(0, 0, 255));
        bar->setPalette(palette);
        return bar;
    }

    NSProgressIndicator& addWheel() {
        auto wheel = std::make_unique<NSProgressIndicator>(NSMakeRect(10, 10, 32, 32));
        wheel->setIndicatorStyle(NSProgressIndicatorSpinningStyle);
        window.content().addSubview(wheel.get());
        return *wheel.release();
    }

    static QAccessibleValueInterface& accessibleValue(NSProgressIndicator& indicator) {
        return *QAccessible::queryAccessibleInterface(&indicator)->valueInterface();
    }

    HostWindow window{NSMakeRect(100, 100, 300, 200)};
};

} // namespace

TEST_F(NSProgressIndicatorTest, IsAnIndeterminateBarFromZeroToHundredAtFirst) {
    NSProgressIndicator indicator;
    EXPECT_EQ(indicator.indicatorStyle(), NSProgressIndicatorBarStyle);
    EXPECT_TRUE(indicator.isIndeterminate());
    EXPECT_TRUE(indicator.isDisplayedWhenStopped());
    EXPECT_EQ(indicator.minValue(), 0);
    EXPECT_EQ(indicator.maxValue(), 100);
    EXPECT_EQ(indicator.doubleValue(), 0);
    EXPECT_FALSE(indicator.isMoving());
}

TEST_F(NSProgressIndicatorTest, IsFilledAsFarAsItIs) {
    const auto bar = makeBar();
    EXPECT_EQ(donePixels(*bar), 0);
    bar->setDoubleValue(50);
    EXPECT_NEAR(donePixels(*bar), 50, 1);
    bar->incrementBy(25);
    EXPECT_NEAR(donePixels(*bar), 75, 1);
    bar->setDoubleValue(100);
    EXPECT_NEAR(donePixels(*bar), 99, 2);
    bar->setMinValue(-300);
    bar->setMaxValue(-100);
    bar->setDoubleValue(-250);
    EXPECT_NEAR(donePixels(*bar), 25, 1);
}

TEST_F(NSProgressIndicatorTest, ShowsAValueBeyondItsRangeAsTheNearestOfIt) {
    const auto bar = makeBar();
    bar->setDoubleValue(1e300);
    EXPECT_NEAR(donePixels(*bar), 99, 2);
    EXPECT_EQ(bar->doubleValue(), 1e300);
    bar->setDoubleValue(-infinity);
    EXPECT_EQ(donePixels(*bar), 0);
    bar->setDoubleValue(infinity);
    EXPECT_NEAR(donePixels(*bar), 99, 2);
}

TEST_F(NSProgressIndicatorTest, OutlastsNumbersThatMakeNoSense) {
    const auto bar = makeBar();
    bar->setDoubleValue(50);
    bar->setDoubleValue(notANumber);
    bar->setMinValue(notANumber);
    bar->setMaxValue(notANumber);
    EXPECT_EQ(bar->doubleValue(), 50);
    EXPECT_EQ(bar->minValue(), 0);
    EXPECT_EQ(bar->maxValue(), 100);
    bar->setMinValue(100);
    EXPECT_EQ(donePixels(*bar), 0) << "nothing to do";
    bar->setMinValue(500);
    EXPECT_EQ(donePixels(*bar), 0) << "less than nothing";
    bar->setMinValue(-std::numeric_limits<double>::max());
    bar->setMaxValue(std::numeric_limits<double>::max());
    bar->setDoubleValue(0);
    EXPECT_NEAR(donePixels(*bar), 50, 1);
    bar->setMinValue(-infinity);
    bar->setMaxValue(infinity);
    EXPECT_FALSE(look(*bar).isNull());
}

TEST_F(NSProgressIndicatorTest, IsFilledFromTheRightWhereOneReadsFromThere) {
    const auto bar = makeBar();
    bar->setDoubleValue(30);
    const QImage leftToRight = look(*bar);
    bar->setLayoutDirection(Qt::RightToLeft);
    EXPECT_EQ(look(*bar).pixelColor(90, 8), QColor(0, 0, 255));
    EXPECT_NE(look(*bar).pixelColor(10, 8), QColor(0, 0, 255));
    EXPECT_LE(difference(look(*bar), leftToRight.mirrored(true, false)), 4);
}

TEST_F(NSProgressIndicatorTest, TellsAScreenReaderHowFarItIs) {
    const auto bar = makeBar();
    EXPECT_EQ(QAccessible::queryAccessibleInterface(bar.get())->role(), QAccessible::ProgressBar);
    bar->setDoubleValue(42);
    EXPECT_EQ(accessibleValue(*bar).currentValue().toInt(), 42);
    EXPECT_EQ(accessibleValue(*bar).maximumValue().toInt(), 100);
    bar->setMaxValue(1);
    bar->setDoubleValue(0.25);
    EXPECT_EQ(accessibleValue(*bar).currentValue().toInt() * 4, accessibleValue(*bar).maximumValue().toInt());
    bar->setIndeterminate(true);
    EXPECT_EQ(accessibleValue(*bar).maximumValue().toInt(), 0);
}

TEST_F(NSProgressIndicatorTest, TurnsOnlyBetweenStartAndStop) {
    NSProgressIndicator& wheel = addWheel();
    show(window);
    EXPECT_FALSE(wheel.isMoving());
    const QImage first = look(wheel);
    wheel.startAnimation(nullptr);
    EXPECT_TRUE(wheel.isMoving());
    EXPECT_TRUE(QTest::qWaitFor([&] { return difference(look(wheel), first) > 20; }));
    wheel.stopAnimation(nullptr);
    EXPECT_FALSE(wheel.isMoving());
}

TEST_F(NSProgressIndicatorTest, RestsWhileNobodyCanSeeIt) {
    NSProgressIndicator& wheel = addWheel();
    wheel.startAnimation(nullptr);
    EXPECT_FALSE(wheel.isMoving()) << "its window is out";
    show(window);
    EXPECT_TRUE(wheel.isMoving());
    wheel.hide();
    EXPECT_FALSE(wheel.isMoving());
    wheel.show();
    EXPECT_TRUE(wheel.isMoving());
    window.orderOut(nullptr);
    EXPECT_FALSE(wheel.isMoving());
}

TEST_F(NSProgressIndicatorTest, StandsStillWhenItBecomesDeterminate) {
    NSProgressIndicator& wheel = addWheel();
    show(window);
    wheel.startAnimation(nullptr);
    wheel.setIndeterminate(false);
    EXPECT_FALSE(wheel.isMoving());
    wheel.setIndeterminate(true);
    EXPECT_TRUE(wheel.isMoving());
}

TEST_F(NSProgressIndicatorTest, LetsABarWander) {
    auto& bar = addWheel();
    bar.setIndicatorStyle(NSProgressIndicatorBarStyle);
    bar.setFrame(NSMakeRect(10, 10, 100, 16));
    show(window);
    bar.startAnimation(nullptr);
    const QImage first = look(bar);
    EXPECT_TRUE(QTest::qWaitFor([&] { return difference(look(bar), first) > 20; }));
}

TEST_F(NSProgressIndicatorTest, TurnsSlowlyAndLetsABarStandWhereThePersonWishesLessMotion) {
    NSUserDefaults::standardUserDefaults().setObject(true, VXReduceMotion);
    NSProgressIndicator& wheel = addWheel();
    show(window);
    wheel.startAnimation(nullptr);
    EXPECT_TRUE(wheel.isMoving());
    const auto* const timer = wheel.findChild<QTimer*>();
    ASSERT_NE(timer, nullptr);
    EXPECT_GE(timer->interval(), 400) << "milliseconds from spoke to spoke";
    wheel.setIndicatorStyle(NSProgressIndicatorBarStyle);
    EXPECT_FALSE(wheel.isMoving());
    wheel.setFrame(NSMakeRect(10, 10, 100, 16));
    const QImage standing = look(wheel);
    wheel.stopAnimation(nullptr);
    EXPECT_GT(difference(look(wheel), standing), 20) << "and can still be told from one that is stopped";
    NSUserDefaults::standardUserDefaults().removeObjectForKey(VXReduceMotion);
}

TEST_F(NSProgressIndicatorTest, IsNotSeenWhenStoppedIfItIsNotToBe) {
    NSProgressIndicator indicator(NSMakeRect(0, 0, 32, 32));
    indicator.setIndicatorStyle(NSProgressIndicatorSpinningStyle);
    EXPECT_FALSE(plain({32, 32}, {}, Qt::white, Qt::white) == look(indicator));
    indicator.setDisplayedWhenStopped(false);
    const QImage empty = plain({32, 32}, {}, Qt::white, Qt::white);
    EXPECT_EQ(difference(look(indicator), empty), 0);
    indicator.startAnimation(nullptr);
    EXPECT_GT(difference(look(indicator), empty), 60);
    indicator.stopAnimation(nullptr);
    indicator.setIndeterminate(false);
    EXPECT_GT(difference(look(indicator), empty), 10) << "how far it is can be seen all the same";
}

TEST_F(NSProgressIndicatorTest, IsAPieWhenItIsARoundOneThatKnowsHowFarItIs) {
    const auto pie = makeBar();
    pie->setFrame(NSMakeRect(0, 0, 32, 32));
    pie->setIndicatorStyle(NSProgressIndicatorSpinningStyle);
    pie->setDoubleValue(25);
    for (const double ratio : {1.0, 2.0}) {
        const QImage image = look(*pie, ratio);
        const auto at = [&](double x, double y) {
            return image.pixelColor(static_cast<int>(x * ratio), static_cast<int>(y * ratio));
        };
        EXPECT_EQ(at(21, 10), QColor(0, 0, 255)) << "the first quarter, at the top right";
        EXPECT_NE(at(21, 21), QColor(0, 0, 255));
        EXPECT_NE(at(10, 10), QColor(0, 0, 255));
        EXPECT_NE(at(10, 21), QColor(0, 0, 255));
    }
}

TEST_F(NSProgressIndicatorTest, TakesOverTheRangeOfANib) {
    NSProgressIndicator indicator;
    indicator.QProgressBar::setRange(10, 210);
    indicator.QProgressBar::setValue(60);
    indicator.awakeFromNib();
    EXPECT_FALSE(indicator.isIndeterminate());
    EXPECT_EQ(indicator.minValue(), 10);
    EXPECT_EQ(indicator.maxValue(), 210);
    EXPECT_EQ(indicator.doubleValue(), 60);
    NSProgressIndicator untouched;
    untouched.awakeFromNib();
    EXPECT_TRUE(untouched.isIndeterminate());
}

TEST_F(NSProgressIndicatorTest, HasTheSizeOfItsStyle) {
    NSProgressIndicator indicator;
    EXPECT_EQ(indicator.sizeHint(), QSize(100, 16));
    indicator.setIndicatorStyle(NSProgressIndicatorSpinningStyle);
    EXPECT_EQ(indicator.sizeHint(), QSize(32, 32));
    indicator.setControlSize(NSSmallControlSize);
    EXPECT_EQ(indicator.sizeHint(), QSize(16, 16));
}
