// SPDX-License-Identifier: MIT
#include "AppKitHost.h"

#include <VXKit/platform/appkit/NSWindow.h>

#include <QAccessible>
#include <QAccessibleInterface>

#include <gtest/gtest.h>

namespace {

class WindowAccessibility : public AppKitHost {
protected:
    QAccessibleInterface& accessible() { return *QAccessible::queryAccessibleInterface(&window); }

    NSWindow window{NSMakeRect(100, 100, 200, 100), NSBorderlessWindowMask, NSBackingStoreBuffered, false};
};

} // namespace

TEST_F(WindowAccessibility, TellsAWindowWithItsTitle) {
    window.setWindowTitle(QStringLiteral("Snippets"));
    EXPECT_EQ(accessible().role(), QAccessible::Window);
    EXPECT_EQ(accessible().text(QAccessible::Name), QStringLiteral("Snippets"));
    EXPECT_FALSE(accessible().state().modal);
}

TEST_F(WindowAccessibility, TellsAModalWindowAsADialogForAsLongAsItIsModal) {
    window.setWindowModality(Qt::ApplicationModal);
    EXPECT_EQ(accessible().role(), QAccessible::Dialog);
    EXPECT_TRUE(accessible().state().modal);
    window.setWindowModality(Qt::NonModal);
    EXPECT_EQ(accessible().role(), QAccessible::Window);
}
