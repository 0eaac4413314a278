// SPDX-License-Identifier: MIT
#include <DateText.h>
#include <Snippet.h>

#include <VXKit/platform/foundation/NSPropertyListSerialization.h>

#include <QDateTime>

#include <gtest/gtest.h>

namespace {

NSDate dateAt(double seconds) {
    return NSDate::dateWithTimeIntervalSince1970(seconds);
}

NSDate localDate(int year, int month, int day, int hour, int minute) {
    return dateAt(static_cast<double>(QDateTime({year, month, day}, {hour, minute}).toSecsSinceEpoch()));
}

/// What is read back of `snippet` from an XML property list; nil where it cannot be written.
std::shared_ptr<Snippet> throughXML(const Snippet& snippet) {
    const std::optional<std::string> bytes =
        NSPropertyListSerialization::dataWithPropertyList(*snippet.dictionaryRepresentation(), nullptr);
    if (!bytes) {
        return nullptr;
    }
    const std::optional<NSPropertyList> value =
        NSPropertyListSerialization::propertyListWithData(*bytes, nullptr, nullptr);
    return value ? _LTSnippet::snippetWithDictionary<Snippet>(*value->as<NSDictionary>()) : nullptr;
}

std::shared_ptr<Snippet> loadedFrom(const NSDictionary& dictionary) {
    return _LTSnippet::snippetWithDictionary<Snippet>(dictionary);
}

TEST(Snippet, KeepsEveryFieldExactlyThroughXML) {
    Snippet snippet;
    snippet.setSnippetID(dateAt(1732147200.123456));
    snippet.updateModificationDateWithDate(dateAt(1732147300.654321));
    snippet.setTitle(QStringLiteral("Größe <&>"));
    snippet.setText(QStringLiteral("one\ttwo\r\nthree \"four\" \U0001F600\n"));
    snippet.noteUse(dateAt(1.0));
    snippet.noteUse(dateAt(1732147400.1));

    const std::shared_ptr<Snippet> read = throughXML(snippet);

    ASSERT_TRUE(read);
    EXPECT_EQ(read->snippetID(), dateAt(1732147200.123456));
    EXPECT_EQ(read->dateOfModification(), dateAt(1732147300.654321));
    EXPECT_EQ(read->dateOfLastUse(), dateAt(1732147400.1));
    EXPECT_EQ(read->useCount(), 2);
    EXPECT_EQ(read->title(), QStringLiteral("Größe <&>"));
    EXPECT_EQ(read->text(), QStringLiteral("one\ttwo\r\nthree \"four\" \U0001F600\n"));
}

TEST(Snippet, KeepsTextThatXMLCannotHold) {
    Snippet snippet;
    const QString text =
        QStringLiteral("\x1b[1mbold\x1b[0m") + QChar(QChar::Null) + QChar(0xFFFE) + QStringLiteral("é");
    snippet.setText(text);

    const std::shared_ptr<Snippet> read = throughXML(snippet);

    ASSERT_TRUE(read);
    EXPECT_EQ(read->text(), text);
}

TEST(Snippet, LeavesOutADateThatTheFileCannotHold) {
    Snippet snippet;
    snippet.setSnippetID(dateAt(1e300));
    snippet.setText(QStringLiteral("kept"));

    const std::shared_ptr<Snippet> read = throughXML(snippet);

    ASSERT_TRUE(read);
    EXPECT_EQ(read->snippetID(), std::nullopt);
    EXPECT_EQ(read->text(), QStringLiteral("kept"));
}

TEST(Snippet, ToleratesMissingKeys) {
    const std::shared_ptr<Snippet> snippet = loadedFrom({});

    EXPECT_EQ(snippet->snippetID(), std::nullopt);
    EXPECT_EQ(snippet->dateOfModification(), std::nullopt);
    EXPECT_EQ(snippet->dateOfLastUse(), std::nullopt);
    EXPECT_EQ(snippet->title(), QString());
    EXPECT_EQ(snippet->text(), QString());
    EXPECT_EQ(snippet->useCount(), 0);
}

TEST(Snippet, ToleratesWrongTypes) {
    const std::shared_ptr<Snippet> snippet = loadedFrom({{"id", "yesterday"},
                                                         {"idSeconds", "12"},
                                                         {"modified", 12},
                                                         {"modifiedSeconds", NSArray()},
                                                         {"lastUsed", true},
                                                         {"title", 3.5},
                                                         {"text", NSDictionary()},
                                                         {"useCount", "7"}});

    EXPECT_EQ(snippet->snippetID(), std::nullopt);
    EXPECT_EQ(snippet->dateOfModification(), std::nullopt);
    EXPECT_EQ(snippet->dateOfLastUse(), std::nullopt);
    EXPECT_EQ(snippet->title(), QString());
    EXPECT_EQ(snippet->text(), QString());
    EXPECT_EQ(snippet->useCount(), 0);
}

TEST(Snippet, ToleratesNumbersThatMakeNoSense) {
    const std::shared_ptr<Snippet> snippet = loadedFrom({{"idSeconds", std::numeric_limits<double>::quiet_NaN()},
                                                         {"modifiedSeconds", std::numeric_limits<double>::infinity()},
                                                         {"lastUsedSeconds", -1e300},
                                                         {"useCount", -4}});

    EXPECT_EQ(snippet->snippetID(), std::nullopt);
    EXPECT_EQ(snippet->dateOfModification(), std::nullopt);
    EXPECT_EQ(snippet->dateOfLastUse(), std::nullopt);
    EXPECT_EQ(snippet->useCount(), 0);
}

TEST(Snippet, TakesTheDateWhereThereIsNoRealNumber) {
    EXPECT_EQ(loadedFrom({{"id", dateAt(1732147200.0)}})->snippetID(), dateAt(1732147200.0));
    EXPECT_EQ(loadedFrom({{"id", dateAt(1732147200.0)}, {"idSeconds", "?"}})->snippetID(), dateAt(1732147200.0));
    EXPECT_EQ(loadedFrom({{"idSeconds", 1732147200}})->snippetID(), dateAt(1732147200.0));
}

TEST(Snippet, CopyHasTheSameFieldsAndIsAnotherRecord) {
    Snippet snippet;
    snippet.setSnippetID(dateAt(5.25));
    snippet.setTitle(QStringLiteral("Title"));
    snippet.setText(QStringLiteral("Text"));
    snippet.noteUse(dateAt(6.5));

    const auto copy = std::dynamic_pointer_cast<Snippet>(snippet.copy());
    snippet.setText(QStringLiteral("Other"));

    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->snippetID(), dateAt(5.25));
    EXPECT_EQ(copy->title(), QStringLiteral("Title"));
    EXPECT_EQ(copy->text(), QStringLiteral("Text"));
    EXPECT_EQ(copy->useCount(), 1);
    EXPECT_EQ(copy->dateOfLastUse(), dateAt(6.5));
}

TEST(Snippet, TitleHasNoControlCharacters) {
    Snippet snippet;
    snippet.setTitle(QStringLiteral("one\ntwo\x1bthree"));
    EXPECT_EQ(snippet.title(), QStringLiteral("one two three"));
}

TEST(Snippet, TitleForATextIsItsFirstLineWithWords) {
    EXPECT_EQ(Snippet::titleForText(QStringLiteral("\n  \r\n\t First line \nSecond")), QStringLiteral("First line"));
    EXPECT_EQ(Snippet::titleForText(QStringLiteral(" \n\t\r\n")), QString());
    EXPECT_EQ(Snippet::titleForText({}), QString());
    const QString shortened = Snippet::titleForText(QString(500, u'x'));
    EXPECT_EQ(shortened.size(), 80);
    EXPECT_TRUE(shortened.endsWith(QChar(u'…')));
}

TEST(Snippet, TitleFollowsTheTextItWasMadeOf) {
    Snippet snippet;
    snippet.setText(QStringLiteral("one\ttwo\nthree"));
    snippet.setTitle(Snippet::titleForText(snippet.text()));
    snippet.changeText(QStringLiteral("four"), dateAt(1.0));
    EXPECT_EQ(snippet.title(), QStringLiteral("four"));
    snippet.changeText(QString(), dateAt(2.0));
    EXPECT_EQ(snippet.title(), QStringLiteral("four"));
    snippet.changeText(QStringLiteral("five"), dateAt(3.0));
    EXPECT_EQ(snippet.title(), QStringLiteral("four"));
    snippet.changeText(QStringLiteral("six"), dateAt(4.0), Snippet::TitleFollows::Yes);
    EXPECT_EQ(snippet.title(), QStringLiteral("six"));
    snippet.changeText(QStringLiteral("seven"), dateAt(5.0), Snippet::TitleFollows::No);
    EXPECT_EQ(snippet.title(), QStringLiteral("six"));
}

TEST(Snippet, TitleIsShownUpToALengthThatNoListShows) {
    Snippet snippet;
    snippet.setTitle(QStringLiteral("Title"));
    EXPECT_EQ(snippet.shownTitle(), QStringLiteral("Title"));
    snippet.setTitle(QString(239, u'x') + QStringLiteral("\U0001F600"));
    EXPECT_EQ(snippet.shownTitle(), QString(239, u'x'));
}

TEST(Snippet, FirstLineDoesNotRepeatTheTitle) {
    Snippet snippet;
    snippet.setTitle(QStringLiteral("First"));
    snippet.setText(QStringLiteral("\nFirst\n\n second\nthird"));
    EXPECT_EQ(snippet.firstLine(), QStringLiteral("second"));
    snippet.setTitle(QStringLiteral("file.txt"));
    EXPECT_EQ(snippet.firstLine(), QStringLiteral("First"));
    snippet.setText(QStringLiteral("file.txt"));
    EXPECT_EQ(snippet.firstLine(), QString());
}

TEST(DateText, TellsADateAsSeenFromNow) {
    const NSDate now = localDate(2024, 11, 21, 15, 0);
    const auto before = [&](double seconds) { return dateAt(now.timeIntervalSince1970() - seconds); };

    EXPECT_EQ(relativeDateText(now, now), QStringLiteral("Just now"));
    EXPECT_EQ(relativeDateText(before(59.9), now), QStringLiteral("Just now"));
    EXPECT_EQ(relativeDateText(before(60.0), now), QStringLiteral("1 min ago"));
    EXPECT_EQ(relativeDateText(before(3599.0), now), QStringLiteral("59 min ago"));
    EXPECT_EQ(relativeDateText(before(3600.0), now), QStringLiteral("14:00"));
    EXPECT_EQ(relativeDateText(localDate(2024, 11, 20, 23, 59), now), QStringLiteral("Yesterday"));
    EXPECT_EQ(relativeDateText(localDate(2024, 11, 3, 9, 5), now), QStringLiteral("3 Nov"));
    EXPECT_EQ(relativeDateText(localDate(2023, 11, 3, 9, 5), now), QStringLiteral("3 Nov 2023"));
}

TEST(DateText, TellsADateInTheFutureByItself) {
    const NSDate now = localDate(2024, 11, 21, 15, 0);
    EXPECT_EQ(relativeDateText(localDate(2024, 11, 21, 16, 30), now), QStringLiteral("16:30"));
    EXPECT_EQ(relativeDateText(localDate(2024, 11, 22, 9, 0), now), QStringLiteral("22 Nov"));
}

TEST(DateText, TellsADateInFull) {
    EXPECT_EQ(fullDateText(localDate(2024, 11, 3, 9, 5)), QStringLiteral("3 November 2024, 09:05"));
}

} // namespace
TEST(Snippet, FirstLineIsFoundHoweverLongTheTextAndWhereverItBegins) {
    Snippet snippet;
    snippet.setTitle(QStringLiteral("Title"));
    snippet.setText(QStringLiteral("line\n") + QString(100'000, u'ä'));
    EXPECT_EQ(snippet.firstLine(), QStringLiteral("line"));
    snippet.setText(QString(100'000, u' ') + QStringLiteral("\nlate\n"));
    EXPECT_EQ(snippet.firstLine(), QStringLiteral("late"));
    // The line that is the title, going on beyond what is looked at first.
    snippet.setTitle(QString(200, u'x'));
    snippet.setText(QString(4090, u' ') + QString(200, u'x') + QStringLiteral("\nafter"));
    EXPECT_EQ(snippet.firstLine(), QStringLiteral("after"));
    snippet.setText(QString(100'000, u'ä'));
    EXPECT_EQ(snippet.firstLine(), QString(240, u'ä'));
    // A character of four bytes across the end of what is looked at first.
    snippet.setText(QString(4094, u' ') + QStringLiteral("\U0001F600\nnext"));
    EXPECT_EQ(snippet.firstLine(), QStringLiteral("\U0001F600"));
}
