// SPDX-License-Identifier: MIT
#include "TestRecords.h"

#include <VXKit/platform/foundation/NSException.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <cmath>
#include <limits>

#include <gmock/gmock.h>

namespace {

class Snippet : public testing::Test {
protected:
    Snippet() { NSUserDefaults::standardUserDefaults().setBool(true, "VXDBAutomaticSavingDisabled"); }

    LTDatabase& database = *LTDatabase::sharedDB<NotesDatabase>();

    void store(double identity) { database.addSnippet(std::make_shared<Note>(identity)); }

    static double uniqueTime(double start) {
        double chosen = 0.0;
        const auto note = _LTSnippet::emptySnippetWithUniqueIDStartingDate<Note>(start, &chosen);
        EXPECT_TRUE(note);
        EXPECT_EQ(note->snippetID(), at(chosen));
        return chosen;
    }
};

} // namespace

TEST_F(Snippet, KeepsTheStartTimeWhereItIsFree) {
    EXPECT_EQ(uniqueTime(1000000.0), 1000000.0);
}

TEST_F(Snippet, GoesBackOneSecondAtATimeWhereTheStartTimeIsTaken) {
    store(1000000.0);
    store(999999.0);
    EXPECT_EQ(uniqueTime(1000000.0), 999998.0);
}

TEST_F(Snippet, NeverSearchesUpward) {
    store(999999.0);
    EXPECT_EQ(uniqueTime(1000000.0), 1000000.0);
}

TEST_F(Snippet, KeepsTheFractionThroughEveryStep) {
    store(1000000.25);
    store(999999.0);
    EXPECT_EQ(uniqueTime(1000000.25), 999999.25);
    store(999999.25);
    EXPECT_EQ(uniqueTime(1000000.25), 999998.25);
}

TEST_F(Snippet, GoesBackBefore1970) {
    store(0.5);
    store(-0.5);
    EXPECT_EQ(uniqueTime(0.5), -1.5);
    store(0.0);
    store(-1.0);
    EXPECT_EQ(uniqueTime(0.0), -2.0);
}

TEST_F(Snippet, FindsAFreeTimeEvenWhereASecondIsTooSmallToTell) {
    for (const double far : {1.0e17, -1.0e17, std::numeric_limits<double>::infinity()}) {
        store(far);
        EXPECT_EQ(uniqueTime(far), std::nextafter(far, -std::numeric_limits<double>::infinity()));
    }
}

TEST_F(Snippet, RefusesAStartTimeThatIsNotANumber) {
    double chosen = 0.0;
    EXPECT_THROW(static_cast<void>(_LTSnippet::emptySnippetWithUniqueIDStartingDate<Note>(std::nan(""), &chosen)),
                 NSException);
}

TEST_F(Snippet, FactoryOfTheBaseClassGivesNilAndStillStoresTheTime) {
    store(5.0);
    double chosen = 0.0;
    EXPECT_EQ(_LTSnippet::emptySnippetWithUniqueIDStartingDate<_LTSnippet>(5.0, &chosen), nullptr);
    EXPECT_EQ(chosen, 4.0);
}

TEST_F(Snippet, FactoryDoesNotLookIntoTheLayaway) {
    TestApplication application;
    application.syncManager.syncing = true;
    store(1000000.0);
    EXPECT_EQ(uniqueTime(1000000.0), 1000000.0);
}

TEST(SnippetWithoutDatabase, FactoryCreatesTheSharedDatabase) {
    NSUserDefaults::standardUserDefaults().setBool(true, "VXDBAutomaticSavingDisabled");
    EXPECT_THROW(static_cast<void>(LTDatabase::isDirty()), NSException);
    double chosen = 0.0;
    static_cast<void>(_LTSnippet::emptySnippetWithUniqueIDStartingDate<Note>(7.0, &chosen));
    EXPECT_TRUE(LTDatabase::isDirty());
}

TEST(SnippetWithoutDatabase, FactoryAsksADatabaseThatAnswersInItsOwnWay) {
    class PickyDatabase : public LTDatabase {
    public:
        bool existsItemWithID(NSDate snippetID) const override {
            asked.push_back(snippetID.timeIntervalSince1970());
            return asked.size() < 3;
        }
        mutable std::vector<double> asked;
    };
    NSUserDefaults::standardUserDefaults().setBool(true, "VXDBAutomaticSavingDisabled");
    const auto database = std::static_pointer_cast<PickyDatabase>(LTDatabase::sharedDB<PickyDatabase>());
    double chosen = 0.0;
    static_cast<void>(_LTSnippet::emptySnippetWithUniqueIDStartingDate<Note>(7.5, &chosen));
    EXPECT_EQ(chosen, 5.5);
    EXPECT_THAT(database->asked, testing::ElementsAre(7.5, 6.5, 5.5));
}

TEST(SnippetRecord, DescriptionOfTheBaseClassDescribesNil) {
    EXPECT_EQ(_LTSnippet().description(), QStringLiteral("(null)"));
}

TEST(SnippetRecord, DescriptionIsThatOfItsDictionary) {
    EXPECT_EQ(Note(1.5, QStringLiteral("two words")).description(),
              QStringLiteral("{\n    id = 1.5;\n    name = \"two words\";\n}"));
}

TEST(SnippetRecord, BaseClassHasNoTitleNoDictionaryAndNoCopy) {
    const _LTSnippet snippet;
    EXPECT_TRUE(snippet.title().isNull());
    EXPECT_EQ(snippet.snippetID(), std::nullopt);
    EXPECT_EQ(snippet.dictionaryRepresentation(), std::nullopt);
    EXPECT_THROW(static_cast<void>(snippet.copy()), NSException);
    EXPECT_EQ(_LTSnippet::emptySnippet(), nullptr);
}

TEST(SnippetRecord, SnippetWithDictionaryIsOfTheClassAsked) {
    const auto snippet = _LTSnippetClass::of<ShiftedNote>().snippetWithDictionary({{"name", "a"}, {"id", 3.0}});
    EXPECT_TRUE(dynamic_cast<ShiftedNote*>(snippet.get()));
    EXPECT_EQ(snippet->title(), QStringLiteral("a"));
    EXPECT_TRUE(dynamic_cast<ShiftedNote*>(_LTSnippet::snippetWithDictionary<ShiftedNote>({}).get()));
}

TEST(SnippetRecord, ClassCallsWhatASubclassPutsInThePlaceOfItsOperations) {
    class Special : public Note {
    public:
        static std::shared_ptr<_LTSnippet> snippetWithDictionary(const NSDictionary&) {
            return std::make_shared<Note>(77.0);
        }
    };
    EXPECT_EQ(_LTSnippetClass::of<Special>().snippetWithDictionary({})->snippetID(), at(77.0));
    EXPECT_EQ(_LTSnippetClass::of<_LTSnippet>().emptySnippet(), nullptr);
    EXPECT_TRUE(_LTSnippetClass::of<Note>().emptySnippet());
}

TEST(SnippetRecord, LeavesWhatADictionaryDoesNotHoldNil) {
    const auto note = _LTSnippet::snippetWithDictionary<Note>({});
    EXPECT_EQ(note->snippetID(), std::nullopt);
    EXPECT_TRUE(note->title().isNull());
    EXPECT_EQ(note->modified(), std::nullopt);
}

TEST(SnippetRecord, ModificationDateIsTheGivenOrTheCurrentInstant) {
    Note note;
    EXPECT_EQ(note.modified(), std::nullopt);
    note.updateModificationDateWithDate(at(12.5));
    EXPECT_EQ(note.modified(), at(12.5));
    const NSDate before = NSDate::date();
    note.updateModificationDate();
    EXPECT_GE(*note.modified(), before);
    EXPECT_LE(*note.modified(), NSDate::date());
}
