// SPDX-License-Identifier: MIT
#include "PublishedXSettings.h"

#include <VXKit/platform/desktop/XSettings.h>

#include <QByteArray>

#include <optional>

#include <gtest/gtest.h>

namespace {

PublishedXSettings aDesktop(ByteOrder order) {
    return PublishedXSettings(order)
        .integer("Net/DoubleClickTime", 400)
        .string("Net/ThemeName", "Adwaita-dark")
        .color("Net/Colour")
        .string("Gtk/FontName", "")
        .integer("Gtk/EnableAnimations", 0)
        .integer("Xft/DPI", 98304);
}

} // namespace

TEST(XSettings, FindsAWholeNumberInEitherByteOrder) {
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        const QByteArray settings = aDesktop(order).bytes();
        EXPECT_EQ(xSettingsInteger(settings, "Net/DoubleClickTime"), 400);
        EXPECT_EQ(xSettingsInteger(settings, "Gtk/EnableAnimations"), 0);
        EXPECT_EQ(xSettingsInteger(settings, "Xft/DPI"), 98304);
        EXPECT_EQ(xSettingsInteger(PublishedXSettings(order).integer("Negative", -3).bytes(), "Negative"), -3);
    }
}

TEST(XSettings, HasNothingOfAnotherNameOrKind) {
    const QByteArray settings = aDesktop(ByteOrder::Little).bytes();
    for (const char* name : {"Gtk/Enable", "Gtk/EnableAnimationsMore", "", "Net/ThemeName", "Net/Colour"}) {
        EXPECT_EQ(xSettingsInteger(settings, name), std::nullopt) << name;
    }
    EXPECT_EQ(xSettingsInteger(QByteArray(), "Xft/DPI"), std::nullopt);
}

TEST(XSettings, EndsWhereTheBytesBreakOff) {
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        const QByteArray settings = aDesktop(order).bytes();
        for (qsizetype length = 0; length < settings.size(); ++length) {
            // Memory of just this size, so that a checker sees what is read beyond it.
            const QByteArray truncated(settings.constData(), length);
            EXPECT_EQ(xSettingsInteger(truncated, "Xft/DPI"), std::nullopt) << length;
        }
    }
}

TEST(XSettings, OutlastsLengthsBeyondTheEnd) {
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        const QByteArray settings = aDesktop(order).bytes();
        for (qsizetype position = 0; position < settings.size(); ++position) {
            for (const char value : {'\xff', '\x80', '\0', '\x01', '\x7f'}) {
                QByteArray damaged = settings;
                damaged[position] = value;
                const std::optional<int> found = xSettingsInteger(damaged, "No/Such");
                EXPECT_EQ(found, std::nullopt);
            }
        }
    }
}
