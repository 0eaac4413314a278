// SPDX-License-Identifier: MIT
// The pop-up that says that something was copied, on a real X server.
#include "../ServerFocus.h"
#include "../appkit/AppKitHost.h"
#include "Desktop.h"

#include <VXKit/controls/LTCopyPopUp.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/desktop/WindowEffects.h>

#include <QElapsedTimer>
#include <algorithm>
#include <cstdlib>
#include <utility>

namespace {

/// The darkest and the lightest pixel of a part of the screen, by their red: 0 to 255.
struct Shades {
    int darkest = 255;
    int lightest = 0;
};

Shades shadesIn(const QRect& place) {
    const QImage picture = pictureOfScreen().copy(place);
    Shades shades;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const int red = qRed(picture.pixel(x, y));
            shades.darkest = std::min(shades.darkest, red);
            shades.lightest = std::max(shades.lightest, red);
        }
    }
    return shades;
}

NSWindow* popUp() {
    for (NSWindow* window : NSWindow::windows()) {
        if (window->ignoresMouseEvents()) {
            return window;
        }
    }
    return nullptr;
}

class CopyPopUpOnDesktop : public AppKitHost, public testing::WithParamInterface<NSWindowManagement> {
protected:
    CopyPopUpOnDesktop() {
        const QRectF global =
            NSScreenRectToGlobal(NSMakeRect(NSScreen::mainScreen().frame().size.width / 2 - 100, 250, 200, 200));
        square = global.toRect();
        below.setManagement(GetParam());
        below.setBackgroundColor(NSColor::colorWithCalibratedRed(0.9, 0.9, 0.5, 1));
        show(below);
        below.setFrame(frameBelow, true);
        EXPECT_TRUE(waitFor([this] { return below.isKeyWindow() && hasServerFocus(below); }));
        EXPECT_TRUE(waitFor([this] { return shadesIn(around()).darkest > 200; }));
    }

    [[nodiscard]] QRect around() const { return square.adjusted(-40, -40, 40, 40); }
    /// Beside the icon, which begins 36 points within.
    [[nodiscard]] QRect plainPart() const { return {square.left() + 30, square.top() + 4, 140, 20}; }
    /// Where the icon has a sheet of paper.
    [[nodiscard]] QRect iconPart() const { return {square.left() + 36 + 54, square.top() + 36 + 104, 40, 4}; }

    static constexpr NSRect frameBelow{{400, 150}, {480, 420}};
    static constexpr int ground = 230;
    static constexpr int dimmed = 150; // through the square
    const bool isComposited = WindowEffects::sharedEffects().isAvailable(WindowEffects::Effect::Translucency);
    HostWindow below{frameBelow};
    QRect square; // from the top left
};

} // namespace

INSTANTIATE_TEST_SUITE_P(AboveAWindow, CopyPopUpOnDesktop,
                         testing::Values(NSWindowManagement::Bypassing, NSWindowManagement::Managed),
                         [](const testing::TestParamInfo<NSWindowManagement>& tested) {
                             return tested.param == NSWindowManagement::Managed ? "Managed" : "Bypassing";
                         });

TEST_P(CopyPopUpOnDesktop, ShowsSettlesFadesAndIsGone) {
    LTCopyPopUp::pop();
    QElapsedTimer clock;
    clock.start();
    ASSERT_NE(popUp(), nullptr);
    const int plain = isComposited ? dimmed : 0;
    EXPECT_TRUE(waitFor([&] {
        const Shades shades = shadesIn(plainPart());
        return std::abs(shades.darkest - plain) <= 3 && shades.lightest - shades.darkest <= 2;
    })) << shadesIn(plainPart()).darkest;
    const Shades icon = shadesIn(iconPart());
    EXPECT_GT(icon.darkest, plain + 60) << "the icon is lighter than its ground";
    // Rounded, and nothing beside it.
    const QPoint corner = square.topLeft();
    EXPECT_GT(shadesIn({corner, QSize(3, 3)}).darkest, ground - 15);
    for (const QRect& beside : {QRect(around().left(), around().top(), around().width(), 39),
                                QRect(around().left(), around().top(), 39, around().height()),
                                QRect(square.right() + 2, around().top(), 38, around().height()),
                                QRect(around().left(), square.bottom() + 2, around().width(), 38)}) {
        EXPECT_GT(shadesIn(beside).darkest, ground - 5);
    }
    keepPicture("shown");
    EXPECT_EQ(WindowEffects::sharedEffects().serverFrame(*popUp()), square);

    bool isHalfGone = false;
    EXPECT_TRUE(waitFor([&] {
        const int darkest = shadesIn(plainPart()).darkest;
        if (darkest > plain + 15 && darkest < ground - 15 && !std::exchange(isHalfGone, true)) {
            const QString folder = qEnvironmentVariable("VXKIT_PICTURES");
            if (!folder.isEmpty()) {
                pictureOfScreen().save(QDir(folder).filePath(QStringLiteral("fading.png")));
            }
        }
        return darkest > ground - 5;
    }));
    EXPECT_EQ(isHalfGone, isComposited) << "where there is no compositing manager there is no fade to see";
    EXPECT_GE(clock.elapsed(), 1500);
    EXPECT_TRUE(waitFor([] { return popUp() == nullptr; }));
    EXPECT_GT(shadesIn(around()).darkest, ground - 5);
    keepPicture("gone");
}

TEST_P(CopyPopUpOnDesktop, LetsClicksThroughAndTheKeyboardWhereItIs) {
    LTCopyPopUp::pop();
    ASSERT_NE(popUp(), nullptr);
    EXPECT_TRUE(hasServerFocus(below));
    below.sent.clear();
    below.unused.clear();
    click(square.center());
    EXPECT_TRUE(waitFor([this] { return below.unused.size() >= 2; }));
    EXPECT_EQ(below.unused, (std::vector<std::string>{"mouseDown", "mouseUp"}));
    pressKey("a");
    EXPECT_TRUE(waitFor([this] { return !below.unused.empty() && below.unused.back() == "keyDown"; }));
    ASSERT_NE(popUp(), nullptr) << "all this while it is there";
    EXPECT_TRUE(popUp()->isVisible());
    EXPECT_TRUE(below.isKeyWindow());
    EXPECT_TRUE(hasServerFocus(below));
    EXPECT_TRUE(waitFor([] { return popUp() == nullptr; }));
    EXPECT_TRUE(hasServerFocus(below));
    EXPECT_TRUE(below.isKeyWindow());
}
