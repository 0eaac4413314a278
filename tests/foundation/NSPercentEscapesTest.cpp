// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSPercentEscapes.h>

#include <gtest/gtest.h>

namespace {

QString escaped(const char* text) {
    return NSStringByAddingPercentEscapes(QString::fromUtf8(text));
}

} // namespace

TEST(NSPercentEscapes, LeavesWhatMayStandInAURL) {
    const QString legal =
        QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.!~*'();/?:@&=+$,");
    EXPECT_EQ(NSStringByAddingPercentEscapes(legal), legal);
}

TEST(NSPercentEscapes, EscapesEverythingElseOfASCII) {
    EXPECT_EQ(escaped(" \"<>#%{}|\\^[]`"), QStringLiteral("%20%22%3C%3E%23%25%7B%7D%7C%5C%5E%5B%5D%60"));
    EXPECT_EQ(escaped("\t\n\r\x01\x7f"), QStringLiteral("%09%0A%0D%01%7F"));
    EXPECT_EQ(NSStringByAddingPercentEscapes(QString(1, QChar(0))), QStringLiteral("%00"));
}

TEST(NSPercentEscapes, EscapesTheBytesOfUTF8) {
    EXPECT_EQ(escaped("ä€😀"), QStringLiteral("%C3%A4%E2%82%AC%F0%9F%98%80"));
    EXPECT_EQ(NSStringByAddingPercentEscapes(QString(1, QChar(0xD83D))), QStringLiteral("?"))
        << "half a surrogate pair";
}

TEST(NSPercentEscapes, AnEmptyStringStaysEmptyAndIsNeverNull) {
    EXPECT_EQ(escaped(""), QString());
    EXPECT_FALSE(NSStringByAddingPercentEscapes(QString()).isNull());
}
