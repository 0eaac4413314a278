// SPDX-License-Identifier: MIT
#include "HUDButtonTestSupport.h"

#include <VXKit/controls/LTNameTag.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSFont.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <QAccessible>

namespace {

NSSize sizeAt12(const QString& text) {
    return sizeWithAttributes(text, {.font = NSFont::systemFontOfSize(12)});
}

/// A text whose width at 12 points is just above `width`.
QString textOfWidth(double width) {
    QString text = QStringLiteral("m");
    while (sizeAt12(text + QLatin1Char('m')).width < width) {
        text += QLatin1Char('m');
    }
    while (sizeAt12(text).width < width) {
        text += QLatin1Char('.');
    }
    return text;
}

NSDictionary named(const QString& name) {
    return {{"name", name}, {"count", 3}};
}

/// The pixels that are not the panel's, from the top left.
QRect inkOn(const QImage& picture) {
    QRect ink;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixelColor(x, y) != panelColor) {
                ink |= QRect(x, y, 1, 1);
            }
        }
    }
    return ink;
}

class NameTag : public AppKitHost {};

} // namespace

TEST_F(NameTag, OfANameIsOfItsSizeWithALittleRoom) {
    const QString name = QStringLiteral("Some snippet of Zoë’s");
    const LTNameTag tag(name);
    const NSSize size = sizeAt12(name);
    ASSERT_GT(size.width, 20);
    EXPECT_EQ(tag.frame(), NSMakeRect(0, 0, size.width + 5, size.height + 3));
    EXPECT_FALSE(tag.dictionary());
}

TEST_F(NameTag, OfAShortNameIs20PointsWide) {
    EXPECT_EQ(LTNameTag(QStringLiteral("")).frame(), NSMakeRect(0, 0, 20, sizeAt12({}).height + 3));
    EXPECT_EQ(LTNameTag(QStringLiteral("i")).frame().size.width, 20);
    EXPECT_GT(sizeAt12({}).height, 10);
}

TEST_F(NameTag, OfADictionaryIsThreeLinesHighAnd185PointsWide) {
    const LTNameTag tag(named(QStringLiteral("short")));
    EXPECT_EQ(tag.frame(), NSMakeRect(0, 0, 185, 3 * sizeAt12(QStringLiteral("short")).height + 10));
    ASSERT_TRUE(tag.dictionary());
    EXPECT_EQ(*tag.dictionary(), named(QStringLiteral("short")));
}

TEST_F(NameTag, OfADictionaryIsWiderForANameFrom175PointsUp) {
    const QString wide = textOfWidth(180);
    ASSERT_NEAR(sizeAt12(wide).width, 180, 4);
    EXPECT_EQ(LTNameTag(named(wide)).frame().size.width, sizeAt12(wide).width + 10);
    const QString narrow = textOfWidth(168);
    ASSERT_LT(sizeAt12(narrow).width, 175);
    EXPECT_EQ(LTNameTag(named(narrow)).frame().size.width, 185);
}

TEST_F(NameTag, OfADictionaryWithoutANameHasNone) {
    EXPECT_EQ(LTNameTag(NSDictionary{{"title", "x"}}).frame(), NSMakeRect(0, 0, 185, 10));
    EXPECT_EQ(LTNameTag(NSDictionary{{"name", 5}}).frame(), NSMakeRect(0, 0, 185, 10));
}

TEST_F(NameTag, IsMadeByItsClassAsWell) {
    EXPECT_EQ(LTNameTag::nameTagWithName(QStringLiteral("by name"))->frame(),
              LTNameTag(QStringLiteral("by name")).frame());
    const std::unique_ptr<LTNameTag> tag = LTNameTag::nameTagWithDictionary(named(QStringLiteral("by dictionary")));
    EXPECT_EQ(tag->frame(), LTNameTag(named(QStringLiteral("by dictionary"))).frame());
    EXPECT_TRUE(tag->dictionary());
}

TEST_F(NameTag, DrawsTheNameInSmallWhiteTextInItsMiddle) {
    const QString name = QStringLiteral("Adjective");
    const NSTextAttributes attributes{.font = NSFont::systemFontOfSize(10), .foregroundColor = NSColor::whiteColor()};
    LTNameTag byName(name);
    LTNameTag byDictionary(named(name));
    for (LTNameTag* tag : {&byName, &byDictionary}) {
        for (const double ratio : {1.0, 2.0}) {
            const QImage picture = pictureOf(*tag, ratio);
            QImage expected = emptyPanel(*tag, ratio);
            QPainter painter(&expected);
            {
                // In the exact frame, whose fractions the widget does not have.
                const NSGraphicsContext context(painter, tag->height(), false);
                const NSSize size = sizeWithAttributes(name, attributes);
                const NSSize room = tag->frame().size;
                drawAtPoint(name, {(room.width - size.width) / 2, (room.height - size.height) / 2}, attributes);
            }
            painter.end();
            expected.setDevicePixelRatio(1);
            EXPECT_EQ(picture, expected);
            const QRect ink = inkOn(picture);
            EXPECT_FALSE(ink.isEmpty());
            EXPECT_TRUE(picture.rect().adjusted(1, 1, -1, -1).contains(ink)) << "with a margin";
            EXPECT_NEAR(QRectF(ink).center().x(), picture.width() / 2.0, 1.5 * ratio);
        }
    }
}

TEST_F(NameTag, IsReadOutByItsName) {
    LTNameTag tag(named(QStringLiteral("Grocery list")));
    const QAccessibleInterface* described = QAccessible::queryAccessibleInterface(&tag);
    ASSERT_NE(described, nullptr);
    EXPECT_EQ(described->text(QAccessible::Name), QStringLiteral("Grocery list"));
}
