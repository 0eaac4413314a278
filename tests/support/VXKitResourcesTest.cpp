// SPDX-License-Identifier: MIT
#include <VXKit/support/VXKitResources.h>

#include <VXKit/platform/foundation/NSBundle.h>
#include <VXKit/platform/foundation/NSException.h>
#include <VXKit/platform/graphics/NSImage.h>

#include <QPainter>

#include <cstdlib>

#include <gtest/gtest.h>

namespace {

struct KitImage {
    const char* name;
    NSSize size;
};

const std::vector<KitImage> kitImages = {
    {"HUDWindowTitleBar", {8, 19}},
    {"HUDButtonLeftCap", {13, 26}},
    {"HUDButtonFill", {8, 26}},
    {"HUDButtonRightCap", {13, 26}},
    {"HUDButtonLeftCapHighlighted", {13, 26}},
    {"HUDButtonFillHighlighted", {8, 26}},
    {"HUDButtonRightCapHighlighted", {13, 26}},
    {"HUDCheckboxNormal", {16, 16}},
    {"HUDCheckboxNormalChecked", {16, 16}},
    {"HUDCheckboxPressed", {16, 16}},
    {"HUDCheckboxPressedChecked", {16, 16}},
    {"AlreadyInstalled", {16, 16}},
    {"HUDRadioNormal", {14, 14}},
    {"HUDRadioPressed", {14, 14}},
    {"HUDRadioSelectedNormal", {14, 14}},
    {"HUDRadioSelectedPressed", {14, 14}},
    {"ResizeCorner", {10, 10}},
    {"LeftResizeCorner", {10, 10}},
    {"CopyIcon", {128, 128}},
};

const std::vector<double> pixelRatios = {1.0, 1.5, 2.0};
const std::vector<const char*> buttonVariants = {"", "Highlighted"};

QImage pixelsOf(const QString& name, double pixelRatio) {
    QImage pixels = VXKitImage(name)->imageForScale(pixelRatio);
    pixels.setDevicePixelRatio(1);
    return pixels;
}

QImage pixelsOfButtonPart(const char* part, const char* variant, double pixelRatio) {
    return pixelsOf(QLatin1String("HUDButton") + QLatin1String(part) + QLatin1String(variant), pixelRatio);
}

// A button of `width` points as it comes to lie on the pixels of a screen: each part from its first whole pixel to the
// first one of its neighbour.
QImage pixelsOfButton(double width, const char* variant, double pixelRatio) {
    const auto edge = [pixelRatio](double point) { return qRound(point * pixelRatio); };
    QImage pixels(edge(width), edge(26), QImage::Format_ARGB32_Premultiplied);
    pixels.fill(Qt::transparent);
    QPainter painter(&pixels);
    const auto draw = [&](const char* part, double from, double to) {
        painter.drawImage(QRect(edge(from), 0, edge(to) - edge(from), pixels.height()),
                          pixelsOfButtonPart(part, variant, pixelRatio));
    };
    draw("LeftCap", 0, 13);
    draw("Fill", 13, width - 13);
    draw("RightCap", width - 13, width);
    return pixels;
}

// The largest difference in one channel.
int difference(QRgb left, QRgb right) {
    return std::max({std::abs(qRed(left) - qRed(right)), std::abs(qGreen(left) - qGreen(right)),
                     std::abs(qBlue(left) - qBlue(right)), std::abs(qAlpha(left) - qAlpha(right))});
}

int alphaAt(const QImage& pixels, int x, int y) {
    return qAlpha(pixels.pixel(x, y));
}

} // namespace

TEST(VXKitBundle, IsTheBundleOfTheKitsIdentifier) {
    NSBundle* bundle = VXKitBundle();
    ASSERT_NE(bundle, nullptr);
    EXPECT_EQ(bundle->bundleIdentifier(), QStringLiteral("org.vxkit.VXKit"));
    EXPECT_EQ(VXKitBundle(), bundle);
}

TEST(VXKitImage, IsTheVerySameObjectOnTheSecondCall) {
    const auto image = VXKitImage(QStringLiteral("CopyIcon"));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(VXKitImage(QStringLiteral("CopyIcon")), image);
}

TEST(VXKitImage, IsOneObjectForTwoNamesOfOneFile) {
    const auto image = VXKitImage(QStringLiteral("CopyIcon"));
    EXPECT_EQ(VXKitImage(QStringLiteral("CopyIcon.svg")), image);
    EXPECT_EQ(VXKitImage(QStringLiteral("images/CopyIcon")), image);
    EXPECT_NE(VXKitImage(QStringLiteral("ResizeCorner")), image);
}

TEST(VXKitImage, RaisesAnInvalidArgumentForANameTheKitDoesNotHold) {
    for (const QString& name : {QStringLiteral("Missing"), QString()}) {
        try {
            static_cast<void>(VXKitImage(name));
            ADD_FAILURE() << "Nothing was thrown for " << qPrintable(name);
        } catch (const NSException& exception) {
            EXPECT_EQ(exception.name(), QString::fromLatin1(NSInvalidArgumentException));
            EXPECT_TRUE(exception.reason().contains(name));
        }
    }
}

TEST(VXKitImage, HoldsEveryImageOfTheKitInItsNaturalSize) {
    for (const KitImage& expected : kitImages) {
        const auto image = VXKitImage(QString::fromLatin1(expected.name));
        EXPECT_TRUE(image->isValid()) << expected.name;
        EXPECT_EQ(image->size(), expected.size) << expected.name;
    }
}

TEST(VXKitImage, ShowsSomethingOfEveryImageAtEveryPixelRatio) {
    for (const KitImage& expected : kitImages) {
        for (const double ratio : pixelRatios) {
            const QImage pixels = VXKitImage(QString::fromLatin1(expected.name))->imageForScale(ratio);
            int strongest = 0;
            for (int y = 0; y < pixels.height(); ++y) {
                for (int x = 0; x < pixels.width(); ++x) {
                    strongest = std::max(strongest, alphaAt(pixels, x, y));
                }
            }
            EXPECT_GT(strongest, 64) << expected.name << " at " << ratio;
        }
    }
}

TEST(VXKitImage, LooksDifferentInEveryState) {
    const std::vector<std::vector<const char*>> states = {
        {"HUDButtonLeftCap", "HUDButtonLeftCapHighlighted"},
        {"HUDButtonFill", "HUDButtonFillHighlighted"},
        {"HUDButtonRightCap", "HUDButtonRightCapHighlighted"},
        {"HUDCheckboxNormal", "HUDCheckboxNormalChecked", "HUDCheckboxPressed", "HUDCheckboxPressedChecked",
         "AlreadyInstalled"},
        {"HUDRadioNormal", "HUDRadioSelectedNormal", "HUDRadioPressed", "HUDRadioSelectedPressed"},
    };
    for (const auto& names : states) {
        for (std::size_t left = 0; left < names.size(); ++left) {
            for (std::size_t right = left + 1; right < names.size(); ++right) {
                EXPECT_NE(pixelsOf(QString::fromLatin1(names[left]), 1), pixelsOf(QString::fromLatin1(names[right]), 1))
                    << names[left] << " and " << names[right];
            }
        }
    }
}

TEST(VXKitImage, JoinsCapsAndFillWithoutASeam) {
    constexpr double roundPart = 6; // points from either end in which the corners are
    for (const char* variant : buttonVariants) {
        for (const double ratio : pixelRatios) {
            for (const double width : {39.0, 96.0, 97.0}) {
                const QImage pixels = pixelsOfButton(width, variant, ratio);
                const int first = qRound(roundPart * ratio);
                const int last = pixels.width() - 1 - first;
                for (int y = 0; y < pixels.height(); ++y) {
                    for (int x = first; x <= last; ++x) {
                        EXPECT_LE(difference(pixels.pixel(x, y), pixels.pixel(first, y)), 1)
                            << width << variant << " at " << ratio << ": " << x << ", " << y;
                    }
                }
            }
        }
    }
}

TEST(VXKitImage, CoversTheEdgesOfTheButtonBodyWhole) {
    constexpr int bodyHeight = 22; // points; the shadow lies below
    for (const char* variant : buttonVariants) {
        const QImage atOne = pixelsOfButton(96, variant, 1);
        const QImage atTwo = pixelsOfButton(96, variant, 2);
        const int middle = bodyHeight / 2;
        for (const int edge : {0, 95}) {
            EXPECT_GT(alphaAt(atOne, edge, middle), 0);
            EXPECT_NEAR(alphaAt(atTwo, 2 * edge, 2 * middle), alphaAt(atOne, edge, middle), 2) << variant;
            EXPECT_NEAR(alphaAt(atTwo, 2 * edge + 1, 2 * middle), alphaAt(atOne, edge, middle), 2) << variant;
        }
        for (const int edge : {0, bodyHeight - 1, bodyHeight}) {
            EXPECT_NEAR(alphaAt(atTwo, 96, 2 * edge), alphaAt(atOne, 48, edge), 3) << variant << edge;
            EXPECT_NEAR(alphaAt(atTwo, 96, 2 * edge + 1), alphaAt(atOne, 48, edge), 3) << variant << edge;
        }
        EXPECT_EQ(alphaAt(atOne, 48, 25), 0) << variant;
    }
}

TEST(VXKitImage, MirrorsTheLeftCapInTheRight) {
    for (const char* variant : buttonVariants) {
        for (const double ratio : pixelRatios) {
            const QImage left = pixelsOfButtonPart("LeftCap", variant, ratio);
            const QImage right = pixelsOfButtonPart("RightCap", variant, ratio).mirrored(true, false);
            for (int y = 0; y < left.height(); ++y) {
                for (int x = 0; x < left.width(); ++x) {
                    EXPECT_LE(difference(left.pixel(x, y), right.pixel(x, y)), 2) << variant << " at " << ratio;
                }
            }
        }
    }
}

TEST(VXKitImage, IsTheSameInEveryColumnWhereItIsStretched) {
    for (const char* name : {"HUDButtonFill", "HUDButtonFillHighlighted", "HUDWindowTitleBar"}) {
        for (const double ratio : pixelRatios) {
            const QImage pixels = pixelsOf(QString::fromLatin1(name), ratio);
            for (int y = 0; y < pixels.height(); ++y) {
                for (int x = 1; x < pixels.width(); ++x) {
                    EXPECT_EQ(pixels.pixel(x, y), pixels.pixel(0, y)) << name << " at " << ratio;
                }
            }
        }
    }
}

TEST(VXKitImage, HasSharpCheckBoxEdgesAtEveryPixelRatio) {
    for (const double ratio : pixelRatios) {
        const QImage pixels = pixelsOf(QStringLiteral("HUDCheckboxNormal"), ratio);
        const int middle = pixels.height() / 2;
        const int left = qRound(2 * ratio);
        EXPECT_EQ(alphaAt(pixels, left - 1, middle), 0) << ratio;
        EXPECT_GT(alphaAt(pixels, left, middle), 128) << ratio;
        const int right = qRound(14 * ratio) - 1;
        EXPECT_EQ(alphaAt(pixels, right + 1, middle), 0) << ratio;
        EXPECT_GT(alphaAt(pixels, right, middle), 128) << ratio;
    }
}
