// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSScreen.h>

#include <QFile>
#include <QTemporaryDir>

#include <array>

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

// The main screen is the one in the middle: Qt's global coordinates begin at the top left of the left one.
constexpr QRectF leftScreen(0, 0, 1920, 1080);
constexpr QRectF mainScreen(1920, 200, 1440, 900);
constexpr QRectF screenBelow(1920, 1100, 800, 600);
constexpr QRectF screenAbove(1920, -1000, 1600, 1200);

static_assert(NSScreenRectFromGlobal(mainScreen, mainScreen) == NSMakeRect(0, 0, 1440, 900));

} // namespace

TEST(NSScreenCoordinates, BeginAtTheBottomLeftOfTheMainScreenWhereverQtBegins) {
    EXPECT_EQ(NSScreenRectFromGlobal(mainScreen, mainScreen), NSMakeRect(0, 0, 1440, 900));
    EXPECT_EQ(NSScreenRectFromGlobal(QRectF(1920, 1090, 20, 10), mainScreen), NSMakeRect(0, 0, 20, 10));
    EXPECT_EQ(NSScreenRectFromGlobal(QRectF(1920, 200, 20, 10), mainScreen), NSMakeRect(0, 890, 20, 10));
}

TEST(NSScreenCoordinates, AreNegativeToTheLeftOfTheMainScreenAndBelow) {
    EXPECT_EQ(NSScreenRectFromGlobal(leftScreen, mainScreen), NSMakeRect(-1920, 20, 1920, 1080));
    EXPECT_EQ(NSScreenRectFromGlobal(screenBelow, mainScreen), NSMakeRect(0, -600, 800, 600));
    EXPECT_EQ(NSScreenRectFromGlobal(screenAbove, mainScreen), NSMakeRect(0, 900, 1600, 1200));
}

TEST(NSScreenCoordinates, PutAPointThatHasNoHeightWhereItIs) {
    EXPECT_EQ(NSScreenRectFromGlobal(QRectF(1910, 1110, 0, 0), mainScreen).origin, NSMakePoint(-10, -10));
}

TEST(NSScreenCoordinates, KeepFractions) {
    EXPECT_EQ(NSScreenRectFromGlobal(QRectF(1920.25, 1089.5, 1.5, 0.25), mainScreen),
              NSMakeRect(0.25, 10.25, 1.5, 0.25));
}

TEST(NSScreenCoordinates, ComeBackFromARoundTrip) {
    for (const QRectF& rect : {leftScreen, mainScreen, screenBelow, screenAbove, QRectF(-3.5, 1234.25, 7.75, 0)}) {
        EXPECT_EQ(NSScreenRectToGlobal(NSScreenRectFromGlobal(rect, mainScreen), mainScreen), rect);
    }
}

namespace {

/// Three screens, as the offscreen platform makes them of a file.
class NSScreenArrangement : public testing::Test {
protected:
    NSScreenArrangement() {
        QFile file(folder.filePath(QStringLiteral("screens.json")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        // The platform sorts the screens by their names; the first is the primary one.
        file.write(R"({"screens": [)"
                   R"({"name": "2", "x": 0, "y": 100, "width": 1000, "height": 600, "dpr": 1},)"
                   R"({"name": "3", "x": 1000, "y": 800, "width": 640, "height": 480, "dpr": 1},)"
                   R"({"name": "1", "x": 1000, "y": 0, "width": 1200, "height": 800, "dpr": 2}]})");
        file.close();
        platform = "offscreen:configfile=" + file.fileName().toUtf8();
        arguments = {name.data(), option.data(), platform.data(), nullptr};
        application = std::make_unique<NSApplication>(argumentCount, arguments.data());
    }

    QTemporaryDir folder;
    QByteArray name = "host";
    QByteArray option = "-platform";
    QByteArray platform;
    std::array<char*, 4> arguments{};
    int argumentCount = 3;
    std::unique_ptr<NSApplication> application;
};

} // namespace

TEST_F(NSScreenArrangement, HasTheMainScreenFirstAndTheOthersAroundIt) {
    std::vector<NSRect> frames;
    for (const NSScreen& screen : NSScreen::screens()) {
        frames.push_back(screen.frame());
    }
    EXPECT_THAT(frames, ElementsAre(NSMakeRect(0, 0, 1200, 800), NSMakeRect(-1000, 100, 1000, 600),
                                    NSMakeRect(0, -480, 640, 480)));
    EXPECT_EQ(NSScreen::mainScreen().frame(), frames.front());
    EXPECT_EQ(NSScreen::mainScreen().visibleFrame(), frames.front()) << "no panel takes any of it";
}

TEST_F(NSScreenArrangement, TellsThePixelsOfAPoint) {
    EXPECT_EQ(NSScreen::screens()[0].backingScaleFactor(), 2);
    EXPECT_EQ(NSScreen::screens()[1].backingScaleFactor(), 1);
}

TEST_F(NSScreenArrangement, ConvertsByTheMainScreenAsItIs) {
    EXPECT_EQ(NSScreenPointFromGlobal(QPointF(1000, 800)), NSMakePoint(0, 0));
    EXPECT_EQ(NSScreenPointFromGlobal(QPointF(990.5, 0)), NSMakePoint(-9.5, 800));
    EXPECT_EQ(NSScreenRectFromGlobal(QRectF(1000, 700, 50, 100)), NSMakeRect(0, 0, 50, 100));
    EXPECT_EQ(NSScreenRectToGlobal(NSMakeRect(0, 0, 50, 100)), QRectF(1000, 700, 50, 100));
}

TEST_F(NSScreenArrangement, HasNothingToTellOfAScreenThatIsGone) {
    const NSScreen screen = NSScreen::mainScreen();
    application.reset();
    EXPECT_EQ(screen.frame(), NSZeroRect);
    EXPECT_EQ(screen.visibleFrame(), NSZeroRect);
    EXPECT_EQ(screen.backingScaleFactor(), 1);
}
