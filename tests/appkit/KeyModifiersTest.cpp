// SPDX-License-Identifier: MIT
#include "AppKitHost.h"

#include <VXKit/platform/appkit/KeyModifiers.h>

namespace {

class KeyModifiers : public AppKitHost {
protected:
    KeyModifiers() { show(window); }

    void hold(Qt::KeyboardModifiers modifiers) { QTest::keyPress(window.windowHandle(), Qt::Key_F5, modifiers); }

    HostWindow window{NSMakeRect(100, 100, 200, 100)};
};

} // namespace

TEST(KeyModifiersWithoutAnApplication, AreNone) {
    EXPECT_EQ(GetCurrentKeyModifiers(), 0U);
}

TEST_F(KeyModifiers, AreThoseHeldAtThisMoment) {
    if (QGuiApplication::platformName() == QStringLiteral("xcb")) {
        GTEST_SKIP() << "an X server knows what is really held";
    }
    EXPECT_EQ(GetCurrentKeyModifiers(), 0U);
    hold(Qt::AltModifier);
    EXPECT_EQ(GetCurrentKeyModifiers(), 0x800U);
    EXPECT_EQ(GetCurrentKeyModifiers(), optionKey);
    hold(Qt::ControlModifier);
    EXPECT_EQ(GetCurrentKeyModifiers(), 0x100U);
    hold(Qt::ShiftModifier);
    EXPECT_EQ(GetCurrentKeyModifiers(), 0x200U);
    hold(Qt::MetaModifier);
    EXPECT_EQ(GetCurrentKeyModifiers(), 0x1000U);
    hold(Qt::AltModifier | Qt::ShiftModifier);
    EXPECT_EQ(GetCurrentKeyModifiers(), optionKey | shiftKey);
    hold({});
    EXPECT_EQ(GetCurrentKeyModifiers(), 0U);
}
