// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/platform/graphics/NSShadow.h>

#include <tests/graphics/GraphicsTestSupport.h>

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QWidget>

#include <array>
#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace {

NSGraphicsContext& current() {
    return *NSGraphicsContext::currentContext();
}

NSShadow offsetShadow() {
    NSShadow shadow;
    shadow.setShadowOffset({0, -3});
    return shadow;
}

void drawWithShadowAndPattern(const NSColor& pattern) {
    pattern.set();
    NSRectFill(NSMakeRect(0, 0, 20, 6));
    NSShadow shadow = offsetShadow();
    shadow.setShadowColor(NSColor::blackColor());
    shadow.setShadowBlurRadius(4);
    shadow.set();
    NSColor::whiteColor().set();
    NSBezierPath::bezierPathWithOvalInRect(NSMakeRect(3, 4, 14, 12)).fill();
}

// Draws by itself, within a window.
class DrawingWidget : public QWidget {
public:
    DrawingWidget(QWidget* parent, NSColor pattern) : QWidget(parent), m_pattern(std::move(pattern)) {}

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        const NSGraphicsContext context(painter, height(), false);
        drawWithShadowAndPattern(m_pattern);
    }

private:
    NSColor m_pattern;
};

// Compares what a child widget of 20 by 20 points at (31, 17) shows with the same drawing in an image.
void expectChildWidgetDrawsAsAnImageDoes(const QByteArray& scaleFactor) {
    qputenv("QT_SCALE_FACTOR", scaleFactor);
    int count = 1;
    std::string name = "test";
    std::array<char*, 2> arguments = {name.data(), nullptr};
    const QApplication application(count, arguments.data());
    const int ratio = scaleFactor.toInt();
    QImage tile(3, 2, QImage::Format_ARGB32_Premultiplied);
    tile.fill(Qt::red);
    tile.setPixelColor(0, 1, Qt::blue);
    tile.setDevicePixelRatio(ratio);
    const NSColor pattern = NSColor::colorWithPatternImage(NSImage::initWithQImage(tile));

    QWidget window;
    window.resize(70, 50);
    window.setPalette(QPalette(Qt::white));
    DrawingWidget child(&window, pattern);
    child.setGeometry(31, 17, 20, 20);
    window.show();
    QImage shown = window.grab().toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
    shown.setDevicePixelRatio(1);
    ASSERT_EQ(shown.size(), QSize(70, 50) * ratio);

    const QImage expected = drawn(
        {20, 20}, ratio, [&] { drawWithShadowAndPattern(pattern); }, Flipped::No, Qt::white);
    EXPECT_EQ(shown.copy(31 * ratio, 17 * ratio, 20 * ratio, 20 * ratio), expected);
    QImage around = shown;
    QPainter(&around).fillRect(31 * ratio, 17 * ratio, 20 * ratio, 20 * ratio, Qt::white);
    EXPECT_EQ(around, plain(around.size(), around.rect(), Qt::white)) << "nothing is drawn beside the child";
}

} // namespace

TEST(NSGraphicsContext, IsTheCurrentOneOnlyWhileItLives) {
    EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
    QImage pixels(4, 4, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&pixels);
    {
        const NSGraphicsContext outer(painter, 4, false);
        EXPECT_EQ(NSGraphicsContext::currentContext(), &outer);
        {
            const NSGraphicsContext inner(painter, 4, true);
            EXPECT_EQ(NSGraphicsContext::currentContext(), &inner);
            EXPECT_TRUE(inner.isFlipped());
        }
        EXPECT_EQ(NSGraphicsContext::currentContext(), &outer);
        EXPECT_FALSE(outer.isFlipped());
    }
    EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
}

TEST(NSGraphicsContext, MayEndBeforeOneThatBeganLater) {
    QImage pixels(4, 4, QImage::Format_ARGB32_Premultiplied);
    QImage otherPixels = pixels.copy();
    QPainter painter(&pixels);
    QPainter otherPainter(&otherPixels);
    auto first = std::make_unique<NSGraphicsContext>(painter, 4, false);
    auto second = std::make_unique<NSGraphicsContext>(otherPainter, 4, false);
    first.reset();
    EXPECT_EQ(NSGraphicsContext::currentContext(), second.get());
    second.reset();
    EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
}

TEST(NSGraphicsContext, LeavesThePainterAsItWasEvenWithStatesLeftSaved) {
    QImage pixels(4, 4, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&pixels);
    painter.translate(1, 2);
    const QTransform transform = painter.transform();
    {
        const NSGraphicsContext context(painter, 2, false);
        NSGraphicsContext::saveGraphicsState();
        NSBezierPath::bezierPathWithRect(NSMakeRect(0, 0, 1, 1)).setClip();
        NSGraphicsContext::saveGraphicsState();
    }
    EXPECT_EQ(painter.transform(), transform);
    EXPECT_FALSE(painter.hasClipping());
}

TEST(NSGraphicsContext, CountsThePixelsOfAPoint) {
    for (const double ratio : {1.0, 1.5, 2.0}) {
        drawn({4, 4}, ratio, [&] { EXPECT_DOUBLE_EQ(current().pixelRatio(), ratio); });
    }
}

TEST(NSGraphicsContext, BeginsWithBlackAndNoShadow) {
    drawn({1, 1}, [] {
        EXPECT_EQ(current().fillColor(), NSColor::blackColor());
        EXPECT_EQ(current().strokeColor(), NSColor::blackColor());
        EXPECT_EQ(current().shadow(), NSShadow());
        EXPECT_EQ(current().compositingOperation(), NSCompositeSourceOver);
    });
}

TEST(NSGraphicsContext, StartsPatternsAtItsBottomLeft) {
    drawn({3, 5}, [] { EXPECT_EQ(current().patternPhase(), NSMakePoint(0, 0)); });
    drawn(
        {3, 5}, 1, [] { EXPECT_EQ(current().patternPhase(), NSMakePoint(0, 5)); }, Flipped::Yes);
}

TEST(NSGraphicsContext, GoesBackToTheStateThatWasSaved) {
    const QImage image = drawn({4, 1}, [] {
        NSColor::whiteColor().set();
        NSGraphicsContext::saveGraphicsState();
        NSColor::blackColor().set();
        offsetShadow().set();
        current().setCompositingOperation(NSCompositeXOR);
        current().setPatternPhase({7, 8});
        NSBezierPath::bezierPathWithRect(NSMakeRect(0, 0, 1, 1)).setClip();
        NSGraphicsContext::restoreGraphicsState();
        EXPECT_EQ(current().fillColor(), NSColor::whiteColor());
        EXPECT_EQ(current().strokeColor(), NSColor::whiteColor());
        EXPECT_EQ(current().shadow(), NSShadow());
        EXPECT_EQ(current().compositingOperation(), NSCompositeSourceOver);
        EXPECT_EQ(current().patternPhase(), NSZeroPoint);
        NSRectFill(NSMakeRect(0, 0, 4, 1));
    });
    EXPECT_EQ(image, plain({4, 1}, {0, 0, 4, 1}, Qt::white));
}

TEST(NSGraphicsContext, KeepsWhatIsSetBetweenASaveAndARestoreToItself) {
    drawn({1, 1}, [] {
        NSGraphicsContext::saveGraphicsState();
        EXPECT_EQ(current().fillColor(), NSColor::blackColor());
        NSColor::whiteColor().set();
        NSGraphicsContext::saveGraphicsState();
        EXPECT_EQ(current().fillColor(), NSColor::whiteColor());
        NSGraphicsContext::restoreGraphicsState();
        NSGraphicsContext::restoreGraphicsState();
        EXPECT_EQ(current().fillColor(), NSColor::blackColor());
    });
}

TEST(NSGraphicsContext, IgnoresARestoreTooMany) {
    const QImage image = drawn({2, 2}, [] {
        NSColor::whiteColor().set();
        NSGraphicsContext::restoreGraphicsState();
        EXPECT_EQ(current().fillColor(), NSColor::whiteColor());
        NSRectFill(NSMakeRect(0, 0, 1, 1));
    });
    EXPECT_EQ(image, plain({2, 2}, {0, 1, 1, 1}, Qt::white));
}

TEST(NSGraphicsContext, IgnoresSavesAndRestoresWithoutAContext) {
    NSGraphicsContext::saveGraphicsState();
    NSGraphicsContext::restoreGraphicsState();
    EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
}

TEST(NSGraphicsContext, DrawsPathsWithItsCompositingOperation) {
    const QImage image = drawn({3, 1}, [] {
        NSRectFill(NSMakeRect(0, 0, 3, 1));
        current().setCompositingOperation(NSCompositeCopy);
        NSColor::colorWithCalibratedRed(1, 0, 0, 0.5).set();
        NSBezierPath::bezierPathWithRect(NSMakeRect(0, 0, 1, 1)).fill();
        NSBezierPath::fillRect(NSMakeRect(2, 0, 1, 1));
    });
    EXPECT_EQ(qAlpha(image.pixel(0, 0)), 128);
    EXPECT_EQ(image.pixelColor(1, 0), QColor(Qt::black));
    EXPECT_EQ(qAlpha(image.pixel(2, 0)), 128);
}

TEST(NSGraphicsContext, DrawsWithinTheOpacityOfItsPainter) {
    QImage pixels(1, 1, QImage::Format_ARGB32_Premultiplied);
    pixels.fill(Qt::transparent);
    QPainter painter(&pixels);
    painter.setOpacity(0.5);
    {
        const NSGraphicsContext context(painter, 1, false);
        NSBezierPath::fillRect(NSMakeRect(0, 0, 1, 1));
    }
    painter.end();
    EXPECT_NEAR(qAlpha(pixels.pixel(0, 0)), 128, 1);
}

TEST(NSGraphicsContextOfAChildWidget, DrawsAsThatOfAnImage) {
    expectChildWidgetDrawsAsAnImageDoes("1");
}

TEST(NSGraphicsContextOfAChildWidget, DrawsAsThatOfAnImageAtTwoPixelsAPoint) {
    expectChildWidgetDrawsAsAnImageDoes("2");
}
