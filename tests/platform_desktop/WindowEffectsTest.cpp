// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/WindowEffects.h>

#include <QApplication>
#include <QSignalSpy>
#include <QWidget>

#include <vector>

#include <gtest/gtest.h>

namespace {

class WindowEffectsTest : public testing::Test {
protected:
    int m_argc = 1;
    char m_name[5] = "test";
    char* m_argv[2] = {m_name, nullptr};
    QApplication m_application{m_argc, m_argv};
};

/// Notes when presses are watched.
class Recorder : public WindowEffects {
public:
    explicit Recorder(std::vector<bool>& changes) : m_changes(changes) {}

protected:
    void setEmitsPresses(bool emits) override { m_changes.push_back(emits); }

private:
    std::vector<bool>& m_changes;
};

} // namespace

TEST_F(WindowEffectsTest, OffersLittleWhereTheDesktopOffersNothing) {
    const WindowEffects& effects = WindowEffects::sharedEffects();
    using Effect = WindowEffects::Effect;
    EXPECT_TRUE(effects.isAvailable(Effect::ColorInversion));
    EXPECT_TRUE(effects.isAvailable(Effect::Translucency));
    for (const Effect effect :
         {Effect::Shadow, Effect::Blur, Effect::AllDesktops, Effect::InputRegion, Effect::PressesElsewhere}) {
        EXPECT_FALSE(effects.isAvailable(effect));
    }
}

TEST_F(WindowEffectsTest, LeavesWindowsWithoutEffects) {
    WindowEffects& effects = WindowEffects::sharedEffects();
    QWidget window;
    QWidget sibling;
    effects.setShadow(window, WindowShadow{.standardDeviation = 72, .density = 0.75, .offsetY = 28});
    effects.setShadowShape(window, QImage(10, 10, QImage::Format_ARGB32_Premultiplied));
    effects.setBlur(window, 3, QRegion(0, 0, 10, 10));
    effects.setOnAllDesktops(window, true);
    effects.setInputRegion(window, QRegion(0, 0, 5, 5));
    window.show();
    sibling.show();
    effects.order(window, WindowEffects::Place::Below, &sibling);
    EXPECT_EQ(effects.serverFrame(window), std::nullopt);
    EXPECT_EQ(QGuiApplication::topLevelWindows().size(), 2);
}

TEST_F(WindowEffectsTest, WatchesPressesWhileAnybodyWantsThem) {
    std::vector<bool> changes;
    WindowEffects::setSharedEffects(std::make_unique<Recorder>(changes));
    WindowEffects& effects = WindowEffects::sharedEffects();
    QObject first;
    auto second = std::make_unique<QObject>();
    effects.setWatchesPresses(first, true);
    effects.setWatchesPresses(first, true);
    effects.setWatchesPresses(*second, true);
    EXPECT_EQ(changes, std::vector<bool>({true}));
    effects.setWatchesPresses(first, false);
    EXPECT_EQ(changes, std::vector<bool>({true}));
    second.reset();
    EXPECT_EQ(changes, std::vector<bool>({true, false}));
    effects.setWatchesPresses(first, false);
    EXPECT_EQ(changes.size(), 2U);
    WindowEffects::setSharedEffects(nullptr);
}

TEST_F(WindowEffectsTest, GoesBackToThePlatformsOwn) {
    WindowEffects& own = WindowEffects::sharedEffects();
    std::vector<bool> changes;
    WindowEffects::setSharedEffects(std::make_unique<Recorder>(changes));
    EXPECT_NE(&WindowEffects::sharedEffects(), &own);
    WindowEffects::setSharedEffects(nullptr);
    EXPECT_EQ(&WindowEffects::sharedEffects(), &own);
}
