// SPDX-License-Identifier: MIT
#include "MergeHost.h"

#include <functional>
#include <random>

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

/// A record that counts how often records of its class are asked for their IDs.
class CountingNote : public Note {
public:
    using Note::Note;
    std::optional<NSDate> snippetID() const override {
        ++asked;
        return Note::snippetID();
    }
    static inline int asked = 0;
};

/// A record that does something of its own when its modification date is set.
class BusyNote : public Note {
public:
    using Note::Note;
    void updateModificationDateWithDate(std::optional<NSDate> date) override {
        Note::updateModificationDateWithDate(date);
        if (work) {
            work();
        }
    }
    std::function<void()> work;
};

/// A record that says when it goes.
class MortalNote : public Note {
public:
    using Note::Note;
    MortalNote(const MortalNote&) = delete;
    MortalNote& operator=(const MortalNote&) = delete;
    ~MortalNote() override {
        if (lastWords) {
            lastWords();
        }
    }
    std::function<void()> lastWords;
};

} // namespace

TEST_F(Merge, ShowsTheListAsItIsToCodeThatRunsInTheMiddle) {
    const auto first = added<BusyNote>(1.0, "first");
    added(2.0, "between");
    const auto second = added<BusyNote>(3.0, "second");
    std::vector<std::vector<std::string>> seen;
    std::vector<std::size_t> counts;
    const auto look = [&] {
        counts.push_back(store->snippets().count());
        EXPECT_EQ(store->existsItemWithID(at(1.0)), seen.size() == 1);
        seen.push_back(names());
        EXPECT_EQ(store->snippets().objectAtIndex(0)->title().toStdString(), seen.back()[0]);
    };
    beginSync();
    const auto late = added<BusyNote>(4.0, "late");
    for (const auto& busy : {first, second, late}) {
        busy->work = look;
        store->notifyOfModificationForSnippet(busy);
    }
    late->work = nullptr;
    endSync();
    EXPECT_THAT(counts, ElementsAre(3U, 3U));
    EXPECT_THAT(seen, ElementsAre(ElementsAre("between", "second", "late"), ElementsAre("between", "late", "first")));
    EXPECT_THAT(names(), ElementsAre("between", "first", "second", "late"));
}

TEST_F(Merge, GoesOnWithWhatItsOwnCallbacksAddAndRemove) {
    const auto first = added<BusyNote>(1.0, "first");
    const auto second = added(2.0, "second");
    const auto third = added(3.0, "third");
    added(4.0, "fourth");
    beginSync();
    first->work = [&] {
        added(2.0, "anew");
        store->removeSnippet(third);
        store->snippets().insertObject(note(5.0, "inserted"), 0);
        store->_layawayEdits.push_back(note(4.0, "edited meanwhile"));
    };
    store->notifyOfModificationForSnippet(first);
    store->notifyOfModificationForSnippet(note(2.0, "edited"));
    store->notifyOfModificationForSnippet(note(2.0, "edited again"));
    endSync();
    EXPECT_THAT(names(), ElementsAre("inserted", "first", "edited", "edited again", "edited meanwhile"));
}

TEST_F(Merge, StampsWhatIsAddedInTheMiddleOfTheAdditionsToo) {
    beginSync();
    const auto first = added<BusyNote>(1.0, "first");
    const auto late = note(2.0, "late");
    first->work = [&] { store->_layaway.push_back(late); };
    endSync();
    EXPECT_THAT(names(), ElementsAre("first", "late"));
    EXPECT_EQ(stampOf(*late), stampOf(*first) + 1.0);
    EXPECT_TRUE(store->_layaway.empty());
}

TEST_F(Merge, LetsGoOfWhatItReplacedOrRemovedBeforeItsEndIsAnnounced) {
    std::weak_ptr<Note> replaced = added(1.0);
    beginSync();
    store->notifyOfModificationForSnippet(note(1.0));
    bool wasGone = false;
    const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
        LTSnippetDBWasModifiedNotification, store.get(), [&](const NSNotification&) { wasGone = replaced.expired(); });
    endSync();
    EXPECT_TRUE(wasGone);
}

TEST_F(Merge, OutlastsRecordsThatLookAtAndChangeTheListWhenTheyGo) {
    std::vector<std::vector<std::string>> seen;
    for (const double identity : {1.0, 2.0, 3.0}) {
        added<MortalNote>(identity, "mortal")->lastWords = [&, identity] {
            seen.push_back(names());
            added(identity + 10.0, "heir");
            // The notes of the first stage are gone from the list when their lives end; this takes another one.
            store->snippets().removeFirstObjectWithSnippetID(at(identity + 20.0));
        };
    }
    for (const double identity : {21.0, 22.0, 23.0}) {
        added(identity, "victim");
    }
    beginSync();
    for (const double identity : {1.0, 2.0, 3.0}) {
        store->notifyOfModificationForSnippet(note(identity, "new"));
    }
    endSync();
    EXPECT_EQ(seen.size(), 3U);
    EXPECT_THAT(seen[0], ElementsAre("victim", "victim", "victim", "new", "new", "new"));
    EXPECT_THAT(names(), ElementsAre("new", "new", "new", "heir", "heir", "heir"));
}

TEST_F(Merge, AsksEachRecordOfAnOverridingClassOnceAndNotOnceForEveryEdit) {
    constexpr int records = 2000;
    constexpr int edits = 500;
    for (int index = 0; index < records; ++index) {
        added<CountingNote>(index);
    }
    beginSync();
    std::mt19937 random(20261121);
    for (int index = 0; index < edits; ++index) {
        const double identity = std::uniform_int_distribution<int>(0, records - 1)(random);
        store->notifyOfModificationForSnippet(note<CountingNote>(identity));
        store->removeSnippet(note(identity + 0.5));
    }
    CountingNote::asked = 0;
    endSync();
    EXPECT_EQ(store->snippets().count(), std::size_t{records});
    EXPECT_GE(CountingNote::asked, records);
    // Each once for the order; an edit for its own ID, for its place at the end, and to see that it still is the first.
    EXPECT_LE(CountingNote::asked, records + 4 * edits);
}

TEST_F(Merge, AsksEachRecordOnceAlsoWhereAllHaveOneID) {
    constexpr int records = 1000;
    for (int index = 0; index < records; ++index) {
        added<CountingNote>(7.0);
    }
    beginSync();
    for (int index = 0; index < records; ++index) {
        store->notifyOfModificationForSnippet(note<CountingNote>(7.0));
    }
    CountingNote::asked = 0;
    endSync();
    EXPECT_EQ(store->snippets().count(), std::size_t{records});
    EXPECT_LE(CountingNote::asked, 5 * records);
}

TEST_F(Merge, AsksNobodyForTheRemovalsOfFormerSyncs) {
    constexpr int records = 1000;
    beginSync();
    for (int index = 0; index < records; ++index) {
        store->removeSnippet(note(index));
    }
    endSync();
    for (int index = 0; index < records; ++index) {
        added<CountingNote>(index + 0.5);
    }
    CountingNote::asked = 0;
    endSync();
    EXPECT_LE(CountingNote::asked, records);
    EXPECT_EQ(store->snippets().count(), std::size_t{records});
}

TEST_F(Merge, GoesByTheNewAnswerOfARecordThatChangesItWhenItIsStamped) {
    class Restless : public BusyNote {
    public:
        using BusyNote::BusyNote;
        std::optional<NSDate> snippetID() const override { return at(answer); }
        double answer = 0.0;
    };
    const auto restless = std::make_shared<Restless>(0.0, QStringLiteral("restless"));
    restless->answer = 1.0;
    restless->work = [&] { restless->answer += 1.0; };
    store->addSnippet(restless);
    store->addSnippet(restless);
    added(2.0, "two");
    added(3.0, "three");
    beginSync();
    store->notifyOfModificationForSnippet(restless);
    store->notifyOfModificationForSnippet(restless);
    store->notifyOfModificationForSnippet(note(3.0, "new three"));
    endSync();
    // Twice its first occurrence goes to the end; by then it has ID 3 and stands behind "three".
    EXPECT_THAT(names(), ElementsAre("two", "restless", "restless", "new three"));
}
