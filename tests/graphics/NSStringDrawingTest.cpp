// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <tests/graphics/GraphicsTestSupport.h>

#include <QFontMetricsF>
#include <QPainter>

#include <cmath>
#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace {

const QString word = QStringLiteral("Hxg");

using NSStringDrawing = TestWithApplication;

using NSAttributedStringDrawing = TestWithApplication;

NSTextAttributes attributesOf(const NSFont& font) {
    NSTextAttributes attributes;
    attributes.font = font;
    return attributes;
}

NSTextAttributes aligned(NSTextAlignment alignment, NSLineBreakMode lineBreakMode = NSLineBreakByWordWrapping) {
    NSTextAttributes attributes;
    attributes.alignment = alignment;
    attributes.lineBreakMode = lineBreakMode;
    return attributes;
}

double widthOf(const QString& string, const NSTextAttributes& attributes = {}) {
    return sizeWithAttributes(string, attributes).width;
}

double lineHeight() {
    return sizeWithAttributes(word).height;
}

// The text as the platform draws it by itself, with the left end of its baseline at `baseline` from the top left.
QImage plainText(QSize pixels, const QString& string, QPointF baseline,
                 const NSFont& font = NSFont::systemFontOfSize(12), double ratio = 1) {
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    image.setDevicePixelRatio(ratio);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(font.qtFont());
    painter.drawText(baseline, string);
    painter.end();
    image.setDevicePixelRatio(1);
    return image;
}

// The middle of the ink from left to right.
double middleOf(const QImage& image) {
    const QRect ink = inkOf(image);
    return ink.left() + ink.width() / 2.0;
}

} // namespace

TEST_F(NSStringDrawing, MeasuresFractionsThatGrowWithTheFont) {
    const NSSize small = sizeWithAttributes(word, attributesOf(NSFont::systemFontOfSize(10)));
    const NSSize large = sizeWithAttributes(word, attributesOf(NSFont::systemFontOfSize(20)));
    EXPECT_NEAR(large.width, 2 * small.width, 0.1);
    EXPECT_NEAR(large.height, 2 * small.height, 0.1);
    EXPECT_NE(small.width, std::round(small.width));
    // Inter's line is 1.21 em high.
    EXPECT_NEAR(large.height, 24.2, 0.1);
    EXPECT_GT(widthOf(word, attributesOf(NSFont::boldSystemFontOfSize(20))), large.width);
}

TEST_F(NSStringDrawing, MeasuresInTwelvePointsUnlessTold) {
    EXPECT_EQ(sizeWithAttributes(word), sizeWithAttributes(word, attributesOf(NSFont::systemFontOfSize(12))));
}

TEST_F(NSStringDrawing, CountsSpacesAtTheEnd) {
    EXPECT_NEAR(widthOf(QStringLiteral("a  ")) - widthOf(QStringLiteral("a")),
                widthOf(QStringLiteral("a  b")) - widthOf(QStringLiteral("ab")), 0.2);
    EXPECT_GT(widthOf(QStringLiteral("a ")), widthOf(QStringLiteral("a")) + 2);
}

TEST_F(NSStringDrawing, MeasuresAnEmptyStringAsALineWithoutWidth) {
    EXPECT_EQ(sizeWithAttributes(QString()), NSMakeSize(0, lineHeight()));
}

TEST_F(NSStringDrawing, MeasuresTheWidestOfSeveralLines) {
    for (const QString& end : {QStringLiteral("\n"), QStringLiteral("\r\n"), QStringLiteral("\r"),
                               QString(QChar(QChar::ParagraphSeparator)), QString(QChar(QChar::LineSeparator))}) {
        const NSSize size = sizeWithAttributes(QStringLiteral("a") + end + QStringLiteral("wider") + end + word);
        EXPECT_EQ(size.width, widthOf(QStringLiteral("wider")));
        EXPECT_DOUBLE_EQ(size.height, 3 * lineHeight());
    }
}

TEST_F(NSStringDrawing, DoesNotGrowALineForACharacterOfAnotherFont) {
    EXPECT_EQ(sizeWithAttributes(QStringLiteral("a漢")).height, lineHeight());
}

TEST_F(NSStringDrawing, DrawsAsThePlatformDoesWithItsLineOnThePoint) {
    const NSFont font = NSFont::systemFontOfSize(20);
    const NSTextAttributes attributes = attributesOf(font);
    const double height = sizeWithAttributes(word, attributes).height;
    const double descent = QFontMetricsF(font.qtFont()).descent();
    for (const double ratio : {1.0, 2.0}) {
        const QImage image =
            drawn({60, 40}, ratio, [&] { drawAtPoint(word, NSMakePoint(5, 8 - descent), attributes); });
        EXPECT_EQ(image, plainText(image.size(), word, {5, 32}, font, ratio)) << ratio;
        const QImage flipped = drawn(
            {60, 40}, ratio, [&] { drawAtPoint(word, NSMakePoint(5, 32 - (height - descent)), attributes); },
            Flipped::Yes);
        EXPECT_EQ(flipped, image) << "flipped, " << ratio;
    }
}

TEST_F(NSStringDrawing, DrawsInItsColour) {
    NSTextAttributes attributes;
    attributes.foregroundColor = NSColor::colorWithCalibratedRed(1, 0, 0, 1);
    const QImage red = drawn({40, 20}, [&] { drawAtPoint(word, NSMakePoint(2, 2), attributes); });
    const QImage black = drawn({40, 20}, [] {
        NSColor::colorWithCalibratedRed(0, 1, 0, 1).set();
        drawAtPoint(word, NSMakePoint(2, 2));
    });
    EXPECT_EQ(inkOf(red), inkOf(black));
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 40; ++x) {
            EXPECT_EQ(qAlpha(red.pixel(x, y)), qAlpha(black.pixel(x, y)));
            EXPECT_EQ(qGreen(black.pixel(x, y)), 0);
        }
    }
    EXPECT_GT(qRed(red.pixel(inkOf(red).left() + 1, 10)), 200);
}

TEST_F(NSStringDrawing, UnderlinesOneCharacter) {
    constexpr NSSize size{60, 20};
    const QString string = QStringLiteral("HHHH");
    const auto textWithLine = [&](std::optional<int> character) {
        return drawn(size, [&] { drawAtPoint(string, {10, 2}, {.underlinedCharacter = character}); });
    };
    const QImage plainly = textWithLine(std::nullopt);
    const QImage underlined = textWithLine(1);
    const QRect line = [&] {
        QImage added = underlined;
        for (int y = 0; y < added.height(); ++y) {
            for (int x = 0; x < added.width(); ++x) {
                if (plainly.pixel(x, y) == underlined.pixel(x, y)) {
                    added.setPixel(x, y, 0);
                }
            }
        }
        return inkOf(added);
    }();
    const double advance = widthOf(QStringLiteral("H"));
    EXPECT_NEAR(line.left(), 10 + advance, 1);
    EXPECT_NEAR(line.width(), advance, 2);
    EXPECT_GT(line.top(), inkOf(plainly).bottom()) << "below the letters";
    for (const int outside : {-1, 4, 1000}) {
        EXPECT_EQ(textWithLine(outside), plainly) << outside;
    }
}

TEST_F(NSStringDrawing, DrawsInAPatternThatStartsWhereAllPatternsDo) {
    QImage stripes(2, 1, QImage::Format_ARGB32_Premultiplied);
    stripes.setPixelColor(0, 0, Qt::red);
    stripes.setPixelColor(1, 0, Qt::transparent);
    NSTextAttributes attributes = attributesOf(NSFont::boldSystemFontOfSize(30));
    attributes.foregroundColor = NSColor::colorWithPatternImage(NSImage::initWithQImage(stripes));
    const QImage image = drawn({60, 40}, [&] { drawAtPoint(word, NSMakePoint(3.5, 2.5), attributes); });
    EXPECT_FALSE(inkOf(image).isEmpty());
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 1; x < image.width(); x += 2) {
            EXPECT_EQ(qAlpha(image.pixel(x, y)), 0) << x << ", " << y;
        }
    }
}

TEST_F(NSStringDrawing, CastsItsOwnShadowAndLeavesThatOfTheContext) {
    NSTextAttributes attributes;
    NSShadow shadow;
    shadow.setShadowColor(NSColor::colorWithCalibratedRed(0, 0, 1, 1));
    shadow.setShadowOffset({20, 0});
    attributes.shadow = shadow;
    const QImage image = drawn({60, 20}, [&] {
        drawAtPoint(word, NSMakePoint(2, 2), attributes);
        EXPECT_EQ(NSGraphicsContext::currentContext()->shadow(), NSShadow());
    });
    const QImage alone = drawn({60, 20}, [] { drawAtPoint(word, NSMakePoint(2, 2)); });
    EXPECT_EQ(inkOf(image), inkOf(alone) | inkOf(alone).translated(20, 0));
    EXPECT_GT(qBlue(image.pixel(inkOf(alone).left() + 21, 10)), 100);
}

TEST_F(NSStringDrawing, FitsInARectangleOfItsMeasuredWidth) {
    for (const QString& string : {QStringLiteral("two words"), QStringLiteral("Show all of it"), word}) {
        for (int size = 8; size < 20; ++size) {
            const NSTextAttributes attributes = attributesOf(NSFont::systemFontOfSize(size));
            const NSSize measured = sizeWithAttributes(string, attributes);
            const QImage inRect = drawn({200, 40}, [&] {
                drawInRect(string, {NSMakePoint(4.3, 5.6), measured}, attributes);
            });
            const QImage atPoint = drawn({200, 40}, [&] { drawAtPoint(string, NSMakePoint(4.3, 5.6), attributes); });
            EXPECT_EQ(inRect, atPoint) << qPrintable(string) << " at " << size;
        }
    }
}

TEST_F(NSStringDrawing, StartsAtTheTopOfItsRectangle) {
    const QImage image = drawn({60, 60}, [] { drawInRect(word, NSMakeRect(3, 10, 50, 45)); });
    const QImage expected = drawn({60, 60}, [] { drawAtPoint(word, NSMakePoint(3, 55 - lineHeight())); });
    EXPECT_EQ(image, expected);
    const QImage flipped = drawn(
        {60, 60}, 1, [] { drawInRect(word, NSMakeRect(3, 5, 50, 45)); }, Flipped::Yes);
    EXPECT_EQ(flipped, expected);
}

TEST_F(NSStringDrawing, AlignsItsLinesInTheRectangle) {
    const auto inked = [](NSTextAlignment alignment) {
        return drawn({101, 20}, [&] { drawInRect(word, NSMakeRect(0, 2, 101, 16), aligned(alignment)); });
    };
    const QImage left = inked(NSLeftTextAlignment);
    const QImage centre = inked(NSCenterTextAlignment);
    const QImage right = inked(NSRightTextAlignment);
    EXPECT_LE(inkOf(left).left(), 2);
    EXPECT_NEAR(middleOf(centre), 50.5, 1);
    EXPECT_GE(inkOf(right).right(), 98);
    EXPECT_EQ(inked(NSNaturalTextAlignment), left);
}

TEST_F(NSStringDrawing, AlignsTextWrittenFromTheRightAtTheRight) {
    const QString hebrew = QStringLiteral("\u05E9\u05DC\u05D5\u05DD");
    NSTextAttributes attributes;
    const auto inked = [&] { drawInRect(hebrew, NSMakeRect(0, 2, 101, 16), attributes); };
    const QImage natural = drawn({101, 20}, inked);
    attributes.alignment = NSLeftTextAlignment;
    const QImage left = drawn({101, 20}, inked);
    EXPECT_GT(inkOf(natural).left(), 50);
    EXPECT_LT(inkOf(left).right(), 50);
}

TEST_F(NSStringDrawing, WrapsWholeWordsIntoLinesOfTheWidth) {
    const QString string = QStringLiteral("alpha beta");
    const double width = widthOf(QStringLiteral("alpha ")) + 4;
    const double top = 60;
    const QImage image = drawn({80, 60}, [&] { drawInRect(string, NSMakeRect(0, 0, width, top)); });
    const QImage expected = drawn({80, 60}, [&] {
        drawAtPoint(QStringLiteral("alpha"), NSMakePoint(0, top - lineHeight()));
        drawAtPoint(QStringLiteral("beta"), NSMakePoint(0, top - 2 * lineHeight()));
    });
    EXPECT_EQ(image, expected);
}

TEST_F(NSStringDrawing, BreaksAWordThatIsWiderThanTheRectangle) {
    const double width = 40;
    const QImage image =
        drawn({120, 60}, [&] { drawInRect(QStringLiteral("Wwwwwwwwwww"), NSMakeRect(0, 0, width, 60)); });
    EXPECT_LE(inkOf(image).right(), 40);
    EXPECT_GT(inkOf(image).height(), lineHeight());
}

TEST_F(NSStringDrawing, CutsOffWhatDoesNotFit) {
    const QString string = QStringLiteral("Many words that go on and on");
    const NSRect rect = NSMakeRect(5, 10, 40, 16);
    const QImage clipped =
        drawn({200, 60}, [&] { drawInRect(string, rect, aligned(NSLeftTextAlignment, NSLineBreakByClipping)); });
    const QImage whole = drawn({200, 60}, [&] { drawAtPoint(string, NSMakePoint(5, 26 - lineHeight())); });
    EXPECT_EQ(clipped.copy(5, 34, 40, 16), whole.copy(5, 34, 40, 16));
    EXPECT_EQ(inkOf(clipped).right(), 44);
    // A second line would begin within the rectangle and end below it.
    const QImage wrapped = drawn({200, 60}, [&] { drawInRect(string, rect); });
    EXPECT_GE(inkOf(wrapped).top(), 34);
    EXPECT_LE(inkOf(wrapped).bottom(), 49);
}

TEST_F(NSStringDrawing, ShortensALineWithAnEllipsis) {
    const QString string = QStringLiteral("Many words that go on and on");
    const auto attributes = aligned(NSLeftTextAlignment, NSLineBreakByTruncatingTail);
    const auto inked = [&](double width) {
        return drawn({200, 20}, [&] { drawInRect(string, NSMakeRect(0, 2, width, 16), attributes); });
    };
    EXPECT_EQ(inked(widthOf(string)), inked(200)) << "fits, and stays as it is";
    const QImage shortened = inked(80);
    EXPECT_LE(inkOf(shortened).right(), 80);
    EXPECT_GT(inkOf(shortened).right(), 60);
    EXPECT_NE(shortened.copy(0, 0, 78, 20), inked(200).copy(0, 0, 78, 20));
}

TEST_F(NSStringDrawing, DrawsNothingInAnEmptyRectangleOrWithoutAContext) {
    const QImage image = drawn({40, 20}, [] {
        drawInRect(word, NSMakeRect(5, 5, 0, 10));
        drawInRect(QString(), NSMakeRect(5, 5, 10, 10));
        drawAtPoint(QString(), NSMakePoint(5, 5));
    });
    EXPECT_TRUE(inkOf(image).isEmpty());
    drawAtPoint(word, NSMakePoint(0, 0));
    drawInRect(word, NSMakeRect(0, 0, 10, 10));
}

TEST_F(NSAttributedStringDrawing, MeasuresAndDrawsAsItsStringWithItsAttributes) {
    const NSTextAttributes attributes = attributesOf(NSFont::boldSystemFontOfSize(13));
    const NSAttributedString string(word, attributes);
    EXPECT_EQ(string.string(), word);
    EXPECT_EQ(string.attributes(), attributes);
    EXPECT_EQ(string.size(), sizeWithAttributes(word, attributes));
    EXPECT_EQ(drawn({60, 40},
                    [&] {
                        string.drawAtPoint({3, 4});
                    }),
              drawn({60, 40}, [&] { drawAtPoint(word, NSMakePoint(3, 4), attributes); }));
    EXPECT_EQ(drawn({60, 40}, [&] { string.drawInRect(NSMakeRect(3, 4, 50, 30)); }),
              drawn({60, 40}, [&] { drawInRect(word, NSMakeRect(3, 4, 50, 30), attributes); }));
    EXPECT_EQ(string, NSAttributedString(word, attributes));
    EXPECT_FALSE(string == NSAttributedString(word));
}
