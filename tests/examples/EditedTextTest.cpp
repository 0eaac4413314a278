// SPDX-License-Identifier: MIT
#include <EditedText.h>

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr qsizetype all = std::numeric_limits<qsizetype>::max();

/// What becomes of `text` when `from` is replaced by `to` in an editor that shows it.
QString edited(const QString& text, const QString& from, const QString& to, qsizetype longestShown = all) {
    EditedText edited(text, longestShown);
    QString shown = edited.shown();
    EXPECT_TRUE(shown.contains(from));
    edited.setShown(shown.replace(shown.indexOf(from), from.size(), to));
    // So that what is done next comes to the right place.
    EXPECT_EQ(EditedText(edited.text().chopped(edited.hiddenLength()), all).shown().size(), edited.shown().size());
    return edited.text();
}

QString after(EditedText edited, const QString& shown) {
    edited.setShown(shown);
    return edited.text();
}

TEST(EditedText, KeepsTheLineEndsThatNobodyTouches) {
    EXPECT_EQ(edited(QStringLiteral("a\r\nb\nc\rd"), QStringLiteral("b"), QStringLiteral("B")),
              QStringLiteral("a\r\nB\nc\rd"));
    EXPECT_EQ(edited(QStringLiteral("a\r\nb\r\n"), QStringLiteral("a"), QString()), QStringLiteral("\r\nb\r\n"));
    EXPECT_EQ(EditedText(QStringLiteral("a\r\nb\rc\u2029d"), all).shown(), QStringLiteral("a\nb\nc\nd"));
}

TEST(EditedText, NewLinesEndAsTheTextsOwn) {
    EXPECT_EQ(edited(QStringLiteral("a\r\nb"), QStringLiteral("b"), QStringLiteral("b\nc\n")),
              QStringLiteral("a\r\nb\r\nc\r\n"));
    EXPECT_EQ(edited(QStringLiteral("a\rb"), QStringLiteral("b"), QStringLiteral("b\nc")), QStringLiteral("a\rb\rc"));
    EXPECT_EQ(edited(QStringLiteral("a"), QStringLiteral("a"), QStringLiteral("a\nb\u2028c")),
              QStringLiteral("a\nb\nc"));
}

TEST(EditedText, IsTheSameTextWhereNothingWasChanged) {
    QString hostile = QStringLiteral("\r\n\n\r\u2028\u2029 \u00a0");
    hostile += QChar(u'\0');
    hostile += QChar(0xD800); // half a character
    hostile += QChar(0xFDD0);
    hostile += QStringLiteral("\r\r\n");
    const EditedText edited(hostile, all);
    EXPECT_EQ(after(edited, edited.shown()), hostile);
    EXPECT_EQ(after(edited, edited.shown() + QLatin1Char('x')), hostile + QLatin1Char('x'));
    EXPECT_EQ(after(edited, {}), QString());
}

TEST(EditedText, TwoLineEndsThatComeTogetherStayTwo) {
    EXPECT_EQ(edited(QStringLiteral("a\nb\rc"), QStringLiteral("c"), QStringLiteral("\nc")),
              QStringLiteral("a\nb\r\n\nc"));
    EXPECT_EQ(edited(QStringLiteral("a\rb\nc"), QStringLiteral("b"), QStringLiteral("x\n")),
              QStringLiteral("a\rx\r\n\nc"));
    EXPECT_EQ(edited(QStringLiteral("a\rb\nc"), QStringLiteral("b"), QString()), QStringLiteral("a\r\n\nc"));
}

TEST(EditedText, ManyChangesLeaveWhatIsBetweenThemAlone) {
    EditedText edited(QStringLiteral("a\r\nb\u2028c\nd"), all);
    edited.setShown(QStringLiteral("A\nb\u2028c\nd"));
    edited.setShown(QStringLiteral("A\nb\u2028c\nD"));
    EXPECT_EQ(edited.text(), QStringLiteral("A\r\nb\u2028c\nD"));
}

TEST(EditedText, LeavesWhatIsNotShownAlone) {
    const QString text = QStringLiteral("shown\r\nhidden\r\nend");
    EditedText beginning(text, 6);
    EXPECT_TRUE(beginning.hasHidden());
    EXPECT_EQ(beginning.shown(), QStringLiteral("shown")) << "no half of a line end";
    EXPECT_EQ(beginning.hidden(), QStringLiteral("\nhidden\nend"));
    EXPECT_EQ(after(beginning, QStringLiteral("SHOWN")), QStringLiteral("SHOWN\r\nhidden\r\nend"));
    EXPECT_EQ(after(beginning, {}), QStringLiteral("\r\nhidden\r\nend"));
    beginning.showHidden();
    EXPECT_FALSE(beginning.hasHidden());
    EXPECT_EQ(after(beginning, QStringLiteral("shown\nhidden\nEND")), QStringLiteral("shown\r\nhidden\r\nEND"));
}

TEST(EditedText, CutsNoCharacterInTwo) {
    const EditedText edited(QStringLiteral("a😀b"), 2);
    EXPECT_EQ(edited.shown(), QStringLiteral("a"));
    EXPECT_EQ(after(edited, QStringLiteral("c")), QStringLiteral("c😀b"));
}

} // namespace
