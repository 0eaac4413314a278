// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/CIPerspectiveTransform.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/platform/graphics/NSShadow.h>

#include <tests/graphics/GraphicsTestSupport.h>

#include <QPainter>

#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr NSSize surfaceSize{300, 260};
constexpr NSPoint place{60, 70}; // of the card, on the surface
constexpr int cardWidth = 160;
constexpr int cardHeight = 120;

/// A card whose colours change slowly, so that a warp that is a pixel off is a few levels off.
QImage slopes(double ratio = 1) {
    QImage image((QSizeF(cardWidth, cardHeight) * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            image.setPixelColor(x, y, QColor(x * 255 / image.width(), y * 255 / image.height(), 128));
        }
    }
    image.setDevicePixelRatio(ratio);
    return image;
}

/// The same with round corners and a translucent half.
QImage roundedCard() {
    QImage image(cardWidth, cardHeight, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(200, 220, 250));
    painter.drawRoundedRect(QRectF(0, 0, cardWidth, cardHeight), 20, 20);
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    painter.fillRect(0, 0, cardWidth / 2, cardHeight, QColor(0, 0, 0, 100));
    return image;
}

using Corners = std::array<NSPoint, 4>; // top left, top right, bottom right, bottom left

constexpr Corners rest{{{0, cardHeight}, {cardWidth, cardHeight}, {cardWidth, 0}, {0, 0}}};
constexpr Corners turned{{{25.3, 104.2}, {141.8, 131.6}, {141.8, -11.6}, {25.3, 15.8}}};

CIPerspectiveTransform filterOf(const QImage& image, const Corners& corners) {
    CIPerspectiveTransform filter;
    filter.setInputImage(NSImage::initWithQImage(image));
    filter.setInputTopLeft(corners[0]);
    filter.setInputTopRight(corners[1]);
    filter.setInputBottomRight(corners[2]);
    filter.setInputBottomLeft(corners[3]);
    return filter;
}

void drawOnSurface(const CIPerspectiveTransform& filter, double fraction = 1) {
    filter.drawOutputImageInRect({NSZeroPoint, surfaceSize}, {{-place.x, -place.y}, surfaceSize}, NSCompositeSourceOver,
                                 fraction);
}

/// Where a point of the unit square, y growing upwards, goes when its corners go to `corners`: the lines that were
/// parallel meet in the vanishing points. After the textbook's solution for the eight unknowns.
class Homography {
public:
    explicit Homography(const Corners& corners) {
        const auto [topLeft, topRight, bottomRight, bottomLeft] = corners;
        const double dx1 = bottomRight.x - topRight.x;
        const double dx2 = topLeft.x - topRight.x;
        const double dy1 = bottomRight.y - topRight.y;
        const double dy2 = topLeft.y - topRight.y;
        const double sx = bottomLeft.x - bottomRight.x + topRight.x - topLeft.x;
        const double sy = bottomLeft.y - bottomRight.y + topRight.y - topLeft.y;
        const double det = dx1 * dy2 - dx2 * dy1;
        g = (sx * dy2 - dx2 * sy) / det;
        h = (dx1 * sy - sx * dy1) / det;
        a = bottomRight.x - bottomLeft.x + g * bottomRight.x;
        b = topLeft.x - bottomLeft.x + h * topLeft.x;
        c = bottomLeft.x;
        d = bottomRight.y - bottomLeft.y + g * bottomRight.y;
        e = topLeft.y - bottomLeft.y + h * topLeft.y;
        f = bottomLeft.y;
    }

    /// The point of the square that goes to (x, y).
    [[nodiscard]] NSPoint inverse(double x, double y) const {
        // Cramer's rule for (a - g x) u + (b - h x) v = x - c and the like for y.
        const double a1 = a - g * x;
        const double b1 = b - h * x;
        const double a2 = d - g * y;
        const double b2 = e - h * y;
        const double det = a1 * b2 - a2 * b1;
        return {((x - c) * b2 - (y - f) * b1) / det, (a1 * (y - f) - a2 * (x - c)) / det};
    }

private:
    double a, b, c, d, e, f, g, h;
};

/// The largest difference in a channel between `drawn`, a surface with the card, and what the warp should show, over
/// all pixels but those at the edge of the card; and how many were compared inside of it.
std::pair<int, int> differenceFromWarp(const QImage& drawn, const Corners& corners, double ratio) {
    const Homography homography(corners);
    int largest = 0;
    int inside = 0;
    for (int row = 0; row < drawn.height(); ++row) {
        for (int column = 0; column < drawn.width(); ++column) {
            const NSPoint at = homography.inverse((column + 0.5) / ratio - place.x,
                                                  surfaceSize.height - (row + 0.5) / ratio - place.y);
            const double margin = 2.0 / 100;
            const QColor color = drawn.pixelColor(column, row);
            if (at.x > margin && at.x < 1 - margin && at.y > margin && at.y < 1 - margin) {
                ++inside;
                // slopes(), whose levels are cut to integers, between its pixels
                const double red = at.x * 255 - 0.5 - 0.5 * 255 / (cardWidth * ratio);
                const double green = (1 - at.y) * 255 - 0.5 - 0.5 * 255 / (cardHeight * ratio);
                largest = std::max({largest, static_cast<int>(std::abs(color.red() - red)),
                                    static_cast<int>(std::abs(color.green() - green)), 255 - color.alpha()});
            } else if (at.x < -margin || at.x > 1 + margin || at.y < -margin || at.y > 1 + margin) {
                largest = std::max(largest, color.alpha());
            }
        }
    }
    return {largest, inside};
}

NSShadow shadowOf(double radius, const NSSize& offset) {
    NSShadow shadow;
    shadow.setShadowColor(NSColor::blackColor().colorWithAlphaComponent(0.8));
    shadow.setShadowBlurRadius(radius);
    shadow.setShadowOffset(offset);
    return shadow;
}

/// The card with its shadow as any drawing gets it: at full resolution, in the context's own way.
void drawWithTrueShadow(const QImage& image, const Corners& corners) {
    QPolygonF quad;
    for (const NSPoint& corner : corners) {
        quad << QPointF(corner.x + place.x, corner.y + place.y);
    }
    QTransform warp;
    const double width = image.width();
    const double height = image.height();
    ASSERT_TRUE(QTransform::quadToQuad(QPolygonF(QList<QPointF>{{0, 0}, {width, 0}, {width, height}, {0, height}}),
                                       quad, warp));
    QImage pixels = image;
    pixels.setDevicePixelRatio(1);
    NSGraphicsContext::currentContext()->draw(
        quad.boundingRect() & QRectF(0, 0, surfaceSize.width, surfaceSize.height), [&](QPainter& painter) {
            painter.save();
            painter.setClipRect(QRectF({0, 0}, NSSizeToQSizeF(surfaceSize)), Qt::IntersectClip);
            painter.setTransform(warp, true);
            painter.drawImage(0, 0, pixels);
            painter.restore();
        });
}

} // namespace

TEST(CIPerspectiveTransform, LeavesAPictureAsItIsInItsOwnRectangle) {
    for (const double ratio : {1.0, 2.0}) {
        const QImage card = slopes(ratio);
        const QImage surface = drawn(surfaceSize, ratio, [&] { drawOnSurface(filterOf(card, rest)); });
        QImage expected = plain(surface.size(), QRect(), Qt::transparent);
        QPainter painter(&expected);
        QImage pixels = card;
        pixels.setDevicePixelRatio(1);
        painter.drawImage(QPointF(place.x, surfaceSize.height - place.y - cardHeight) * ratio, pixels);
        painter.end();
        EXPECT_EQ(difference(surface, expected), 0) << ratio;
    }
}

TEST(CIPerspectiveTransform, PutsEachPointWhereTheLinesThroughItMeet) {
    for (const double ratio : {1.0, 2.0}) {
        for (const Corners& corners : {turned, Corners{{{-20, 150}, {150, 100}, {170, -30}, {30, 10}}}}) {
            const QImage surface = drawn(surfaceSize, ratio, [&] { drawOnSurface(filterOf(slopes(ratio), corners)); });
            const auto [largest, inside] = differenceFromWarp(surface, corners, ratio);
            EXPECT_LE(largest, 2) << ratio;
            EXPECT_GT(inside, 10000);
        }
    }
}

TEST(CIPerspectiveTransform, IsUprightInAFlippedContext) {
    const QImage upright = drawn(surfaceSize, [] { drawOnSurface(filterOf(slopes(), turned)); });
    const QImage flipped = drawn(
        surfaceSize, 1, [] { drawOnSurface(filterOf(slopes(), turned)); }, Flipped::Yes);
    EXPECT_LE(difference(upright, flipped), 2);
}

TEST(CIPerspectiveTransform, StretchesThePartToTheRectangle) {
    // Twice as large is the same as with corners twice as far away.
    Corners doubled = turned;
    for (NSPoint& corner : doubled) {
        corner = {2 * corner.x + 2 * 20, 2 * corner.y + 2 * 30};
    }
    const QImage stretched = drawn({500, 400}, [] {
        filterOf(slopes(), turned)
            .drawOutputImageInRect({{0, 0}, {500, 400}}, {{-20, -30}, {250, 200}}, NSCompositeSourceOver, 1);
    });
    const QImage expected = drawn({500, 400}, [&] {
        filterOf(slopes(), doubled)
            .drawOutputImageInRect({{0, 0}, {500, 400}}, {{0, 0}, {500, 400}}, NSCompositeSourceOver, 1);
    });
    EXPECT_LE(difference(stretched, expected), 2);
    EXPECT_FALSE(inkOf(stretched).isEmpty());
}

TEST(CIPerspectiveTransform, DrawsNothingBesideItsRectangle) {
    const NSRect part = NSMakeRect(100, 90, 50, 60);
    const QImage surface = drawn(surfaceSize, [&] {
        filterOf(slopes(), turned)
            .drawOutputImageInRect(part, NSOffsetRect(part, -place.x, -place.y), NSCompositeSourceOver, 1);
    });
    EXPECT_EQ(inkOf(surface), QRect(100, static_cast<int>(surfaceSize.height) - 150, 50, 60));
}

TEST(CIPerspectiveTransform, FadesByItsFraction) {
    const QImage surface = drawn(surfaceSize, [] { drawOnSurface(filterOf(slopes(), turned), 0.5); });
    EXPECT_NEAR(surface.pixelColor(140, 130).alpha(), 128, 1);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double fraction : {0.0, -1.0, nan}) {
        EXPECT_TRUE(inkOf(drawn(surfaceSize, [&] { drawOnSurface(filterOf(slopes(), turned), fraction); })).isEmpty());
    }
}

TEST(CIPerspectiveTransform, DrawsNothingOfWhatIsNoCardBeforeTheEye) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<Corners> none = {
        Corners{{{80, 120}, {80, 120}, {80, 0}, {80, 0}}},                            // on its edge
        Corners{{{80, 120}, {80.000001, 120}, {80.000001, 0}, {80, 0}}},              // nearly
        Corners{{{0, 0}, {0, 0}, {0, 0}, {0, 0}}},                                    // a point
        Corners{{{0, 120}, {160, 0}, {160, 120}, {0, 0}}},                            // crossed
        Corners{{{0, 120}, {40, 30}, {160, 0}, {0, 0}}},                              // dented
        Corners{{{0, 120}, {infinity, 120}, {160, 0}, {0, 0}}},                       //
        Corners{{{0, nan}, {160, 120}, {160, 0}, {0, 0}}},                            //
        Corners{{{-1e300, 1e300}, {1e300, 1e300}, {1e300, -1e300}, {-1e300, -1e300}}} //
    };
    for (const Corners& corners : none) {
        const auto draw = [&] { drawOnSurface(filterOf(slopes(), corners)); };
        EXPECT_TRUE(inkOf(drawn(surfaceSize, draw)).isEmpty()) << corners[1].x;
        const auto drawWithShadow = [&] {
            shadowOf(25, {0, -8}).set();
            draw();
        };
        EXPECT_TRUE(inkOf(drawn(surfaceSize, drawWithShadow)).isEmpty()) << corners[1].x;
    }
}

TEST(CIPerspectiveTransform, ShowsTheBackOfAMirroredCard) {
    const Corners mirrored{{rest[1], rest[0], rest[3], rest[2]}};
    const QImage surface = drawn(surfaceSize, [&] { drawOnSurface(filterOf(slopes(), mirrored)); });
    const int row = static_cast<int>(surfaceSize.height - place.y) - cardHeight / 2;
    EXPECT_GT(surface.pixelColor(static_cast<int>(place.x) + 10, row).red(), 200);
    EXPECT_LT(surface.pixelColor(static_cast<int>(place.x) + cardWidth - 10, row).red(), 50);
}

TEST(CIPerspectiveTransform, OutlastsACardThatNearlyTouchesTheEye) {
    const Corners close{{{-3000, 90000}, {40, 62}, {40, 58}, {-3000, -90000}}};
    const QImage surface = drawn(surfaceSize, [&] {
        shadowOf(25, {0, -8}).set();
        drawOnSurface(filterOf(slopes(), close));
    });
    EXPECT_FALSE(inkOf(surface).isEmpty());
}

TEST(CIPerspectiveTransform, DrawsNothingWithoutAPictureOrAContext) {
    CIPerspectiveTransform filter;
    EXPECT_TRUE(inkOf(drawn(surfaceSize, [&] { drawOnSurface(filter); })).isEmpty());
    filter.setInputImage(NSImage::initWithQImage(QImage()));
    EXPECT_TRUE(inkOf(drawn(surfaceSize, [&] { drawOnSurface(filter); })).isEmpty());
    drawOnSurface(filterOf(slopes(), turned));
}

TEST(CIPerspectiveTransform, DefaultsTakeThePictureOut) {
    CIPerspectiveTransform filter = filterOf(slopes(), turned);
    filter.setDefaults();
    EXPECT_EQ(filter.inputImage(), nullptr);
    EXPECT_EQ(filter.inputTopLeft(), NSMakePoint(118, 484));
    EXPECT_EQ(filter.inputTopRight(), NSMakePoint(646, 507));
    EXPECT_EQ(filter.inputBottomRight(), NSMakePoint(548, 140));
    EXPECT_EQ(filter.inputBottomLeft(), NSMakePoint(155, 153));
}

TEST(CIPerspectiveTransform, CastsTheShadowThatAnyDrawingWould) {
    const std::vector<Corners> all = {
        rest,
        turned,
        Corners{{{70.2, 140}, {92.7, 110}, {92.7, 10}, {70.2, -20}}},   // nearly on its edge
        Corners{{{79.1, 130}, {80.6, 119}, {80.6, 1}, {79.1, -10}}},    // more nearly
        Corners{{{20, 150}, {190, 130}, {260, -60}, {-10, -90}}},       // beyond the surface
        Corners{{{-55, 180}, {230, 180}, {230, -60}, {-55.5, -65.25}}}, // nearly all of it
    };
    for (const double ratio : {1.0, 2.0}) {
        for (const QImage& card : {slopes(), roundedCard()}) {
            for (const Corners& corners : all) {
                if (corners == all[3] && card.pixelColor(0, 0).alpha() == 0) {
                    continue; // of a picture so narrow, which of its columns count is anybody's choice
                }
                const NSShadow shadow = shadowOf(25, {0, -8});
                const QImage fast = drawn(
                    surfaceSize, ratio,
                    [&] {
                        shadow.set();
                        drawOnSurface(filterOf(card, corners));
                        EXPECT_EQ(NSGraphicsContext::currentContext()->shadow(), shadow) << "it stays set";
                    },
                    Flipped::No, Qt::white);
                const QImage slow = drawn(
                    surfaceSize, ratio,
                    [&] {
                        shadow.set();
                        drawWithTrueShadow(NSImage::initWithQImage(card)->imageForScale(ratio), corners);
                    },
                    Flipped::No, Qt::white);
                EXPECT_LE(difference(fast, slow), 2) << corners[0].x << " at " << ratio;
            }
        }
    }
}

TEST(CIPerspectiveTransform, CastsAShadowAsSoftAsItIsSaid) {
    for (const double radius : {4.0, 19.0, 21.0, 60.0}) {
        const auto draw = [&](const std::function<void()>& card) {
            return drawn(
                surfaceSize, 1,
                [&] {
                    shadowOf(radius, {6, -8}).set();
                    card();
                },
                Flipped::No, Qt::white);
        };
        EXPECT_LE(difference(draw([] { drawOnSurface(filterOf(slopes(), turned)); }),
                             draw([] { drawWithTrueShadow(slopes(), turned); })),
                  2)
            << radius;
    }
}

TEST(CIPerspectiveTransform, ItsShadowFadesWithIt) {
    const auto draw = [](double fraction) {
        return drawn(surfaceSize, [&] {
            shadowOf(25, {0, -20}).set();
            drawOnSurface(filterOf(slopes(), rest), fraction);
        });
    };
    const QPoint below(140, static_cast<int>(surfaceSize.height - place.y) + 8);
    EXPECT_GT(draw(1).pixelColor(below).alpha(), 100);
    EXPECT_NEAR(draw(0.5).pixelColor(below).alpha(), draw(1).pixelColor(below).alpha() / 2.0, 1);
}
