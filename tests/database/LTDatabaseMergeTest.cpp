// SPDX-License-Identifier: MIT
#include "MergeHost.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

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
