// SPDX-License-Identifier: MIT
#include "TestRecords.h"

#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <QTemporaryDir>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Snippets = std::vector<std::shared_ptr<_LTSnippet>>;

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

std::vector<std::string> namesOf(const LTSnippetArray& list) {
    std::vector<std::string> names;
    for (const auto& snippet : list) {
        names.push_back(snippet->title().toStdString());
    }
    return names;
}

class Merge : public testing::Test {
protected:
    Merge() {
        NSUserDefaults::standardUserDefaults().setBool(true, "VXDBAutomaticSavingDisabled");
        store = LTDatabase::alloc<NotesDatabase>();
        store->initWithFile(folder.filePath(QStringLiteral("DB.plist")));
    }

    ~Merge() override { store->_dirty = false; }

    template <class Record = Note>
    static std::shared_ptr<Record> note(double identity, const char* name = "") {
        return std::make_shared<Record>(identity, QString::fromUtf8(name));
    }

    template <class Record = Note>
    std::shared_ptr<Record> added(double identity, const char* name = "") {
        const auto snippet = note<Record>(identity, name);
        store->addSnippet(snippet);
        return snippet;
    }

    void beginSync() { application.syncManager.syncing = true; }

    void endSync() {
        application.syncManager.syncing = false;
        NSNotificationCenter::defaultCenter().postNotificationName(LTSyncManagerHasEndedSyncing, nullptr);
    }

    [[nodiscard]] std::vector<std::string> names() const { return namesOf(store->snippets()); }

    TestApplication application;
    QTemporaryDir folder;
    std::shared_ptr<NotesDatabase> store;
};

double stampOf(const Note& note) {
    return note.modified()->timeIntervalSince1970();
}

} // namespace

TEST_F(Merge, StampsAdditionsThenEditsExactlyOneSecondApartFromTheMomentItBegins) {
    const auto firstEdited = added(1.0);
    const auto secondEdited = added(2.0);
    beginSync();
    store->notifyOfModificationForSnippet(secondEdited);
    const auto firstAdded = added(3.0);
    store->notifyOfModificationForSnippet(firstEdited);
    const auto secondAdded = added(4.0);
    const double before = NSDate::date().timeIntervalSince1970();
    endSync();
    const double after = NSDate::date().timeIntervalSince1970();
    const double stamp = stampOf(*firstAdded);
    EXPECT_GE(stamp, before);
    EXPECT_LE(stamp, after);
    EXPECT_EQ(secondAdded->modified(), at(stamp + 1.0));
    EXPECT_EQ(secondEdited->modified(), at(stamp + 1.0 + 1.0));
    EXPECT_EQ(firstEdited->modified(), at(stamp + 1.0 + 1.0 + 1.0));
}

TEST_F(Merge, PutsAdditionsAfterAllThatIsThereInTheirOrder) {
    added(1.0, "there");
    beginSync();
    added(2.0, "first");
    added(3.0, "second");
    endSync();
    EXPECT_THAT(names(), ElementsAre("there", "first", "second"));
}

TEST_F(Merge, AddsARecordWhoseIDIsTakenWithoutACheck) {
    const auto twice = added(1.0, "twice");
    beginSync();
    store->addSnippet(twice);
    added(1.0, "namesake");
    endSync();
    EXPECT_THAT(names(), ElementsAre("twice", "twice", "namesake"));
}

TEST_F(Merge, MovesAnEditedRecordToTheEnd) {
    const auto edited = added(1.0, "edited");
    added(2.0, "other");
    beginSync();
    store->notifyOfModificationForSnippet(edited);
    endSync();
    EXPECT_THAT(names(), ElementsAre("other", "edited"));
}

TEST_F(Merge, KeepsARecordThatWasEditedTwiceOnceWithTheLaterStamp) {
    const auto edited = added(1.0, "edited");
    const auto other = added(2.0, "other");
    beginSync();
    store->notifyOfModificationForSnippet(edited);
    store->notifyOfModificationForSnippet(other);
    store->notifyOfModificationForSnippet(edited);
    endSync();
    EXPECT_THAT(names(), ElementsAre("other", "edited"));
    EXPECT_EQ(stampOf(*edited), stampOf(*other) + 1.0);
}

TEST_F(Merge, AddsARecordBackThatWasEditedAndIsNotThere) {
    const auto gone = added(1.0, "gone");
    store->removeSnippet(gone);
    beginSync();
    store->notifyOfModificationForSnippet(gone);
    endSync();
    EXPECT_THAT(names(), ElementsAre("gone"));
    EXPECT_TRUE(store->existsItemWithID(at(1.0)));
}

TEST_F(Merge, FindsWhatWasEditedByItsIDAndNotByTheObject) {
    added(1.0, "old");
    added(2.0, "other");
    beginSync();
    store->notifyOfModificationForSnippet(note(1.0, "new"));
    endSync();
    EXPECT_THAT(names(), ElementsAre("other", "new"));
}

TEST_F(Merge, ReplacesOnlyTheFirstOfSeveralRecordsOfAnID) {
    added(1.0, "first");
    added(2.0, "other");
    added(1.0, "second");
    beginSync();
    store->notifyOfModificationForSnippet(note(1.0, "edited"));
    endSync();
    EXPECT_THAT(names(), ElementsAre("other", "second", "edited"));
}

TEST_F(Merge, RemovesOnlyTheFirstOfSeveralRecordsOfAnID) {
    const auto last = note(1.0, "last");
    added(1.0, "first");
    added(2.0, "other");
    store->addSnippet(last);
    beginSync();
    store->removeSnippet(last);
    EXPECT_THAT(names(), ElementsAre("first", "other", "last"));
    endSync();
    EXPECT_THAT(names(), ElementsAre("other", "last"));
}

TEST_F(Merge, LeavesOutARecordThatWasAddedAndThenRemoved) {
    beginSync();
    store->removeSnippet(added(1.0));
    endSync();
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(Merge, LeavesOutARecordThatWasEditedAndThenRemovedOrRemovedAndThenEdited) {
    const auto first = added(1.0);
    const auto second = added(2.0);
    beginSync();
    store->notifyOfModificationForSnippet(first);
    store->removeSnippet(first);
    store->removeSnippet(second);
    store->notifyOfModificationForSnippet(second);
    endSync();
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(Merge, FollowsAnIDThatChangesWhileItsRecordIsHeldBack) {
    const auto edited = added(1.0, "edited");
    added(2.0, "meant");
    const auto removed = added(3.0, "removed");
    beginSync();
    store->notifyOfModificationForSnippet(edited);
    store->removeSnippet(removed);
    edited->setSnippetID(at(2.0));
    removed->setSnippetID(at(4.0));
    added(4.0, "added");
    endSync();
    // The first of ID 2 is now the edited record itself.
    EXPECT_THAT(names(), ElementsAre("meant", "added", "edited"));
}

TEST_F(Merge, LetsARecordWithoutAnIDReplaceAndRemoveNothing) {
    const auto nameless = added(1.0, "nameless");
    nameless->setSnippetID(std::nullopt);
    const auto other = added(2.0, "other");
    other->setSnippetID(std::nullopt);
    beginSync();
    store->notifyOfModificationForSnippet(nameless);
    store->removeSnippet(other);
    endSync();
    EXPECT_THAT(names(), ElementsAre("nameless", "other", "nameless"));
}

TEST_F(Merge, AnnouncesItsEndOnceAlsoWhenThereWasNothingToDo) {
    store->saveDB();
    int posts = 0;
    const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
        LTSnippetDBWasModifiedNotification, store.get(), [&](const NSNotification&) { ++posts; });
    endSync();
    EXPECT_EQ(posts, 1);
    EXPECT_FALSE(store->_dirty);
    added(1.0);
    beginSync();
    added(2.0);
    added(3.0);
    posts = 0;
    endSync();
    EXPECT_EQ(posts, 1);
}

TEST_F(Merge, MarksTheStoreForAnAdditionAndForAnEditWhoeverItReplaces) {
    store->saveDB();
    beginSync();
    added(1.0);
    endSync();
    EXPECT_TRUE(store->_dirty);
    store->saveDB();
    beginSync();
    store->notifyOfModificationForSnippet(note(2.0));
    endSync();
    EXPECT_TRUE(store->_dirty);
}

TEST_F(Merge, MarksTheStoreForARemovalOnlyWhereItFindsSomething) {
    const auto there = added(1.0);
    beginSync();
    store->removeSnippet(note(9.0));
    store->saveDB();
    endSync();
    EXPECT_FALSE(store->_dirty);
    beginSync();
    store->removeSnippet(there);
    EXPECT_FALSE(store->_dirty);
    endSync();
    EXPECT_TRUE(store->_dirty);
}

TEST_F(Merge, RemovesARecordMadeAnewUnderAnOldIDAtEveryLaterEnd) {
    const auto removed = added(1.0);
    beginSync();
    store->removeSnippet(removed);
    endSync();
    for (int round = 0; round < 3; ++round) {
        added(1.0, "anew");
        added(1.0, "and again");
        endSync();
        EXPECT_THAT(names(), ElementsAre("and again"));
        endSync();
        EXPECT_THAT(names(), IsEmpty());
    }
    EXPECT_EQ(store->_layawayRemovals.size(), 1U);
}

TEST_F(Merge, TakesAsManyOfAnIDAsItWasRemovedTimes) {
    const auto removed = added(1.0);
    beginSync();
    store->removeSnippet(removed);
    store->removeSnippet(removed);
    endSync();
    added(1.0, "a");
    added(1.0, "b");
    added(1.0, "c");
    endSync();
    EXPECT_THAT(names(), ElementsAre("c"));
}

TEST_F(Merge, RecordsARemovalInTheDefaultsInAndOutOfASyncEachTimeItIsMade) {
    NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
    defaults.setBool(true, "ShouldAutoSyncWithMobileMe");
    const auto outside = added(1000000.0);
    const auto inside = added(2000000.25);
    store->removeSnippet(outside);
    beginSync();
    store->removeSnippet(inside);
    store->removeSnippet(inside);
    EXPECT_EQ(defaults.arrayForKey("SyncingData"), (NSArray{1000000.0, 2000000.25, 2000000.25}));
    endSync();
    endSync();
    EXPECT_EQ(defaults.arrayForKey("SyncingData"), (NSArray{1000000.0, 2000000.25, 2000000.25}));
}

TEST_F(Merge, HoldsNothingBackWhereThereIsNoSyncManager) {
    beginSync();
    application.hasSyncManager = false;
    const auto snippet = added(1.0, "at once");
    EXPECT_THAT(names(), ElementsAre("at once"));
    store->saveDB();
    store->notifyOfModificationForSnippet(snippet);
    EXPECT_TRUE(store->_dirty);
    store->removeSnippet(snippet);
    EXPECT_THAT(names(), IsEmpty());
    EXPECT_TRUE(store->_layaway.empty() && store->_layawayEdits.empty() && store->_layawayRemovals.empty());
}

TEST_F(Merge, AsksAnewAtEveryCallWhetherASyncRuns) {
    beginSync();
    added(1.0, "held back");
    application.syncManager.syncing = false;
    added(2.0, "at once");
    EXPECT_THAT(names(), ElementsAre("at once"));
    endSync();
    EXPECT_THAT(names(), ElementsAre("at once", "held back"));
}

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

namespace {

/// The store as its behaviour reads: every search a scan from index 0.
class PlainStore {
public:
    void addSnippet(const std::shared_ptr<_LTSnippet>& snippet) { (syncing ? layaway : list).push_back(snippet); }

    void removeSnippet(const std::shared_ptr<_LTSnippet>& snippet) {
        if (syncing) {
            removals.push_back(snippet);
        } else {
            std::erase_if(list, [&](const auto& candidate) { return candidate->isEqual(*snippet); });
        }
    }

    void notifyOfModificationForSnippet(const std::shared_ptr<_LTSnippet>& snippet) {
        if (syncing) {
            edits.push_back(snippet);
        }
    }

    /// Answers who was stamped, in order.
    Snippets syncingHasEnded() {
        Snippets stamped;
        const auto append = [&](const std::shared_ptr<_LTSnippet>& snippet) {
            list.push_back(snippet);
            stamped.push_back(snippet);
        };
        for (const auto& snippet : layaway) {
            append(snippet);
        }
        layaway.clear();
        for (const auto& snippet : edits) {
            removeFirstWithIDOf(*snippet);
            append(snippet);
        }
        edits.clear();
        for (const auto& snippet : removals) {
            removeFirstWithIDOf(*snippet);
        }
        return stamped;
    }

    bool syncing = false;
    Snippets list;

private:
    void removeFirstWithIDOf(const _LTSnippet& snippet) {
        for (std::size_t index = 0; index < list.size(); ++index) {
            if (snippet.snippetID() && list[index]->snippetID() == snippet.snippetID()) {
                list.erase(list.begin() + static_cast<std::ptrdiff_t>(index));
                return;
            }
        }
    }

    Snippets layaway;
    Snippets edits;
    Snippets removals;
};

} // namespace

/// The share of records of an overriding class, in tenths.
class MergeOfMixedRecords : public Merge, public testing::WithParamInterface<int> {};

/// Thousands of random operations; after each the list is the same, object by object, as that of the plain store.
TEST_P(MergeOfMixedRecords, LeavesTheListAsThePlainAlgorithmDoes) {
    std::mt19937 random(20261121U + static_cast<unsigned>(GetParam()));
    const auto pick = [&](std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
    };
    const auto identity = [&] { return double(pick(60)); };
    const auto make = [&]() -> std::shared_ptr<Note> {
        if (pick(10) < std::size_t(GetParam())) {
            const auto shifted = note<ShiftedNote>(identity());
            shifted->shift = double(pick(3));
            return shifted;
        }
        return note(identity());
    };
    PlainStore plain;
    std::vector<std::shared_ptr<Note>> pool;
    std::size_t merges = 0;
    for (int step = 0; step < 12000; ++step) {
        const std::size_t operation = pick(20);
        const auto any = [&] { return pool[pick(pool.size())]; };
        if (pool.empty() || operation < 4) {
            pool.push_back(make());
            store->addSnippet(pool.back());
            plain.addSnippet(pool.back());
        } else if (operation < 5) {
            const auto snippet = any();
            store->addSnippet(snippet);
            plain.addSnippet(snippet);
        } else if (operation < 11) {
            const std::shared_ptr<Note> edited = pick(3) ? any() : make();
            store->notifyOfModificationForSnippet(edited);
            plain.notifyOfModificationForSnippet(edited);
        } else if (operation < 14) {
            // Mostly outside a sync: a removal during one holds for all syncs to come.
            if (!plain.syncing || pick(20) == 0) {
                const auto removed = any();
                store->removeSnippet(removed);
                plain.removeSnippet(removed);
            }
        } else if (operation < 16) {
            const auto changed = any();
            if (auto* shifted = dynamic_cast<ShiftedNote*>(changed.get())) {
                shifted->shift = double(pick(3));
            }
            changed->setSnippetID(pick(15) ? std::optional(at(identity())) : std::nullopt);
        } else if (operation < 18) {
            plain.syncing = application.syncManager.syncing = true;
        } else if (operation == 18 && pick(3) == 0) {
            plain.syncing = false;
            const double before = NSDate::date().timeIntervalSince1970();
            endSync();
            ++merges;
            const Snippets stamped = plain.syncingHasEnded();
            // Of a record that was stamped several times, the last stamp is the one to see.
            double first = 0.0;
            for (std::size_t index = 0; index < stamped.size(); ++index) {
                const auto& snippet = stamped[index];
                if (std::find(stamped.begin() + static_cast<std::ptrdiff_t>(index) + 1, stamped.end(), snippet) !=
                    stamped.end()) {
                    continue;
                }
                const double stamp = stampOf(static_cast<const Note&>(*snippet)) - double(index);
                ASSERT_GE(stamp, before - 0.001);
                first = first == 0.0 ? stamp : first;
                ASSERT_NEAR(stamp, first, 0.001);
            }
        } else if (pick(60) == 0) {
            pool.erase(pool.begin(), pool.begin() + static_cast<std::ptrdiff_t>(pool.size() / 2));
        }
        ASSERT_EQ(Snippets(store->snippets().begin(), store->snippets().end()), plain.list) << "step " << step;
        const double asked = identity();
        ASSERT_EQ(store->existsItemWithID(at(asked)),
                  std::any_of(plain.list.begin(), plain.list.end(),
                              [&](const auto& snippet) { return snippet->snippetID() == at(asked); }))
            << "step " << step;
    }
    EXPECT_GT(merges, 100U);
}

INSTANTIATE_TEST_SUITE_P(Database, MergeOfMixedRecords, testing::Values(0, 1, 10));
