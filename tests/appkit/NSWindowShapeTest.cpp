// SPDX-License-Identifier: MIT
#include "AppKitHost.h"

#include <VXKit/platform/appkit/Backdrop.h>
#include <VXKit/platform/desktop/WindowEffects.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSImage.h>

#include <QPainter>

#include <map>
#include <optional>

#include <gmock/gmock.h>

namespace {

/// A desktop with or without a compositing manager.
class FakeDesktop : public WindowEffects {
public:
    bool isAvailable(Effect effect) const override {
        return effect == Effect::Translucency ? isCompositing : WindowEffects::isAvailable(effect);
    }
    void setInputRegion(QWidget& window, const std::optional<QRegion>& region) override {
        inputRegions[&window] = region;
    }
    void setShadowShape(QWidget& window, const QImage& coverage) override { shadowShapes[&window] = coverage; }
    void setBlur(QWidget& /*window*/, double radius, const QRegion& region) override {
        blurRadius = radius;
        blurRegion = region;
    }

    void setCompositing(bool flag) {
        isCompositing = flag;
        Q_EMIT compositingChanged();
    }

    bool isCompositing = true;
    std::map<const QWidget*, std::optional<QRegion>> inputRegions;
    std::map<const QWidget*, QImage> shadowShapes;
    double blurRadius = -1;
    QRegion blurRegion;
};

class WindowShape : public AppKitHost {
protected:
    explicit WindowShape(bool isCompositing = true) {
        auto fake = std::make_unique<FakeDesktop>();
        desktop = fake.get();
        desktop->isCompositing = isCompositing;
        WindowEffects::setSharedEffects(std::move(fake));
        window = std::make_unique<HostWindow>(NSMakeRect(0, 0, 100, 80));
        window->setOpaque(false);
    }
    ~WindowShape() override {
        window.reset();
        WindowEffects::setSharedEffects(nullptr);
    }

    /// A look of the size of a window that is transparent but for `solid`, which is of `colour`.
    static NSColor look(const QSize& size, const QRect& solid, const QColor& colour) {
        QImage image(size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.fillRect(solid, colour);
        painter.end();
        return NSColor::colorWithPatternImage(NSImage::initWithQImage(image));
    }

    QImage picture() const {
        QImage image(window->QWidget::size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        window->render(&image, QPoint(), QRegion(), QWidget::DrawChildren | QWidget::IgnoreMask);
        return image;
    }

    FakeDesktop* desktop;
    std::unique_ptr<HostWindow> window;
};

class WindowShapeWithoutCompositing : public WindowShape {
protected:
    WindowShapeWithoutCompositing() : WindowShape(false) {}
};

constexpr QRect solid(10, 20, 50, 40);
const QColor translucent(255, 0, 0, 200);
const QColor faint(255, 0, 0, 20);

} // namespace

TEST_F(WindowShape, TakesClicksWhereItsPatternIs) {
    window->setBackgroundColor(look(QSize(100, 80), solid, faint));
    show(*window);
    EXPECT_EQ(desktop->inputRegions[window.get()], QRegion(solid));
    EXPECT_TRUE(window->mask().isEmpty()) << "what is seen is not cut";
}

class WindowShapeAtTwoPixels : public TwoPixelsAPoint, public WindowShape {};

TEST_F(WindowShapeAtTwoPixels, TakesClicksWhereItsPatternIs) {
    QImage image(200, 160, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(2);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.fillRect(solid, faint);
    painter.end();
    window->setBackgroundColor(NSColor::colorWithPatternImage(NSImage::initWithQImage(image)));
    show(*window);
    EXPECT_EQ(desktop->inputRegions[window.get()], QRegion(solid)) << "in points";
    EXPECT_EQ(desktop->shadowShapes[window.get()].size(), QSize(200, 160));
}

TEST_F(WindowShape, FollowsItsPattern) {
    window->setBackgroundColor(look(QSize(100, 80), solid, faint));
    show(*window);
    window->setBackgroundColor(look(QSize(100, 80), QRect(0, 0, 10, 10), faint));
    settle();
    EXPECT_EQ(desktop->inputRegions[window.get()], QRegion(0, 0, 10, 10));
    window->setFrame(NSMakeRect(0, 0, 100, 90), true);
    settle();
    EXPECT_EQ(desktop->inputRegions[window.get()], QRegion(0, 10, 10, 10) | QRegion(0, 0, 10, 0))
        << "a pattern begins at the bottom";
}

TEST_F(WindowShape, TakesClicksEverywhereWithoutABackground) {
    window->setBackgroundColor(NSColor::clearColor());
    show(*window);
    ASSERT_TRUE(desktop->inputRegions.contains(window.get()));
    EXPECT_EQ(desktop->inputRegions[window.get()], std::nullopt);
}

TEST_F(WindowShape, ShinesThroughAsItsPatternDoes) {
    window->setBackgroundColor(look(QSize(100, 80), solid, translucent));
    show(*window);
    const QImage image = picture();
    EXPECT_EQ(qAlpha(image.pixel(30, 40)), 200);
    EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0);
}

TEST_F(WindowShape, ThrowsTheShadowOfItsPattern) {
    window->setBackgroundColor(look(QSize(100, 80), solid, translucent));
    show(*window);
    const QImage shape = desktop->shadowShapes[window.get()];
    EXPECT_EQ(shape.size(), QSize(100, 80));
    EXPECT_EQ(qAlpha(shape.pixel(30, 40)), 200);
    EXPECT_EQ(qAlpha(shape.pixel(0, 0)), 0);
}

TEST_F(WindowShape, BlursBehindItsPatternOnly) {
    window->setBackgroundColor(look(QSize(100, 80), solid, translucent));
    window->setBackgroundBlurRadius(3);
    show(*window);
    EXPECT_EQ(desktop->blurRadius, 3);
    EXPECT_EQ(desktop->blurRegion, QRegion(solid));
}

TEST_F(WindowShape, IsAllOfAnOpaqueWindow) {
    HostWindow opaque(NSMakeRect(0, 0, 100, 80));
    opaque.setBackgroundColor(look(QSize(100, 80), solid, translucent));
    show(opaque);
    EXPECT_TRUE(opaque.mask().isEmpty());
    EXPECT_FALSE(desktop->inputRegions.contains(&opaque));
}

TEST_F(WindowShapeWithoutCompositing, IsCutToItsPatternAndOpaque) {
    window->setBackgroundColor(look(QSize(100, 80), solid, translucent));
    show(*window);
    EXPECT_EQ(window->mask(), QRegion(solid));
    EXPECT_EQ(picture().pixel(30, 40), qRgba(255, 0, 0, 255)) << "the colour without its transparency";
}

TEST_F(WindowShapeWithoutCompositing, LeavesOutWhatIsMostlyTransparent) {
    window->setBackgroundColor(look(QSize(100, 80), solid, QColor(255, 0, 0, 127)));
    show(*window);
    EXPECT_TRUE(window->mask().isEmpty()) << "a window without a solid pixel is not cut at all";
    window->setBackgroundColor(look(QSize(100, 80), solid, QColor(255, 0, 0, 128)));
    settle();
    EXPECT_EQ(window->mask(), QRegion(solid));
}

TEST_F(WindowShapeWithoutCompositing, ShowsItsNewPatternAtOnceWhenItIsDisplayed) {
    window->setBackgroundColor(look(QSize(100, 80), QRect(0, 0, 100, 80), translucent));
    show(*window);
    window->setBackgroundColor(look(QSize(120, 90), QRect(0, 0, 120, 90), QColor(0, 0, 255, 200)));
    window->setFrame(NSMakeRect(0, 0, 120, 90), true);
    EXPECT_EQ(picture().pixel(30, 40), qRgba(0, 0, 255, 255));
    EXPECT_EQ(picture().pixel(119, 0), qRgba(0, 0, 255, 255)) << "all over its new size";
    EXPECT_EQ(window->mask(), QRegion(0, 0, 120, 90));
}

TEST_F(WindowShapeWithoutCompositing, GoesWhenItsAlphaIsNothingAndIsThereOtherwise) {
    HostWindow opaque(NSMakeRect(0, 0, 100, 80));
    show(*window);
    show(opaque);
    for (HostWindow* each : {window.get(), &opaque}) {
        each->setAlphaValue(0);
        settle();
        EXPECT_FALSE(each->mask().isEmpty());
        EXPECT_FALSE(each->mask().intersects(each->rect())) << "nothing of it is left";
        each->setAlphaValue(0.3);
        settle();
        EXPECT_TRUE(each->mask().isEmpty() || each->mask() == QRegion(each->rect())) << "all of it is there";
        EXPECT_EQ(each->windowOpacity(), 1);
    }
}

TEST_F(WindowShapeWithoutCompositing, FollowsTheComingAndGoingOfACompositingManager) {
    window->setBackgroundColor(look(QSize(100, 80), solid, translucent));
    show(*window);
    ASSERT_EQ(window->mask(), QRegion(solid));
    desktop->setCompositing(true);
    settle();
    EXPECT_TRUE(window->mask().isEmpty());
    EXPECT_EQ(desktop->inputRegions[window.get()], QRegion(solid));
    EXPECT_EQ(qAlpha(picture().pixel(30, 40)), 200);
    desktop->setCompositing(false);
    settle();
    EXPECT_EQ(window->mask(), QRegion(solid));
    EXPECT_EQ(picture().pixel(30, 40), qRgba(255, 0, 0, 255));
}

TEST_F(WindowShapeWithoutCompositing, IsThatOfAWindowThatWasHiddenWhenTheManagerWent) {
    desktop->setCompositing(true);
    window->setBackgroundColor(look(QSize(100, 80), solid, translucent));
    show(*window);
    window->orderOut(nullptr);
    desktop->setCompositing(false);
    settle();
    window->orderFront(nullptr);
    EXPECT_EQ(window->mask(), QRegion(solid));
}

TEST_F(AppKitHost, TheBlurBehindASheetCoversItsParentAtEveryPixelRatio) {
    class HalfRed : public NSView {
    public:
        void drawRect(const NSRect& /*dirtyRect*/) override {
            NSColor::colorWithCalibratedRed(0, 0, 1, 1).set();
            NSRectFill(NSMakeRect(0, 0, 100, 100));
            NSColor::colorWithCalibratedRed(1, 0, 0, 1).set();
            NSRectFill(NSMakeRect(0, 0, 50, 100));
        }
    };
    HostWindow below(NSMakeRect(100, 100, 100, 100));
    below.setContentView(new HalfRed);
    below.makeKeyAndOrderFront(nullptr);
    for (const int ratio : {1, 2}) {
        QImage coverage(QSize(100, 100) * ratio, QImage::Format_ARGB32_Premultiplied);
        coverage.fill(Qt::black);
        coverage.setDevicePixelRatio(ratio);
        const QImage backdrop = blurredBackdrop(below, below.frame(), 1, coverage);
        ASSERT_EQ(backdrop.size(), coverage.size());
        EXPECT_EQ(backdrop.pixelColor(30 * ratio, 50 * ratio), QColor(Qt::red)) << ratio;
        EXPECT_EQ(backdrop.pixelColor(70 * ratio, 50 * ratio), QColor(Qt::blue)) << ratio;
        EXPECT_EQ(backdrop.pixelColor(70 * ratio, 90 * ratio), QColor(Qt::blue)) << ratio;
    }
}
