// SPDX-License-Identifier: MIT
#include "DatabaseLocationHost.h"

#include <VXKit/platform/foundation/NSException.h>
#include <VXKit/platform/foundation/NSTimer.h>

#include <QFile>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

TEST_F(DatabaseLocation, IsTheDefaultFileAndLeavesSyncingAloneWhereNothingWasChosen) {
    EXPECT_FALSE(LTDatabase::isLoading());
    const auto store = LTDatabase::sharedDB<Diary>();
    EXPECT_FALSE(LTDatabase::isLoading());
    EXPECT_EQ(path(), defaultPath());
    EXPECT_EQ(choice(), "nothing, ");
    EXPECT_THAT(log(), ElementsAre("load DB.plist (nothing, no path)"));
    EXPECT_TRUE(QFileInfo(QFileInfo(defaultPath()).path()).isDir());
}

TEST_F(DatabaseLocation, IsTheDefaultFileWhereAChoiceWasTakenBack) {
    defaults.setBool(false, "UsesCustomDB");
    defaults.setObject(makeFile(QStringLiteral("own.plist")), "CustomDBFilePath");
    LTDatabase::sharedDB<Diary>();
    EXPECT_EQ(path(), defaultPath());
}

TEST_F(DatabaseLocation, IsTheFileChosenBeforeWithSyncingTurnedOffOnce) {
    const QString own = makeFile(QStringLiteral("own.plist"));
    chooseBefore(own);
    application.syncManager.asksForTheStore = true;
    const auto store = LTDatabase::sharedDB<Diary>();
    EXPECT_EQ(path(), own);
    EXPECT_EQ(store->snippets()[0]->title(), QStringLiteral("own.plist"));
    EXPECT_THAT(log(), ElementsAre("load own.plist (custom, own.plist)", "disable syncing while loading"));
    EXPECT_EQ(application.syncManager.found, store) << "the sync manager may ask for it";
    EXPECT_FALSE(LTDatabase::isLoading());
    EXPECT_FALSE(QFileInfo::exists(defaultPath()));
}

TEST_F(DatabaseLocation, TakesAChosenFileThatCannotBeReadForAnEmptyDatabase) {
    const QString own = folder.filePath(QStringLiteral("own.plist"));
    QFile file(own);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("no property list");
    file.close();
    chooseBefore(own);
    const auto store = LTDatabase::sharedDB<Diary>();
    EXPECT_EQ(path(), own);
    EXPECT_TRUE(store->snippets().isEmpty());
    EXPECT_THAT(log(), ElementsAre("disable syncing while loading"));
}

TEST_F(DatabaseLocation, TellsOfAChosenFileThatIsGoneAndTakesTheDefaultThisTime) {
    const QString gone = folder.filePath(QStringLiteral("gone.plist"));
    chooseBefore(gone);
    whenAlertAsks([](LTHUDWindow& window) {
        EXPECT_TRUE(LTDatabase::isLoading());
        QTest::keyClick(window.windowHandle(), Qt::Key_Return);
    });
    LTDatabase::sharedDB<Diary>();
    EXPECT_EQ(path(), defaultPath());
    EXPECT_EQ(choice(), "custom, " + gone.toStdString());
    EXPECT_THAT(log(), ElementsAre(missingAlert, "load DB.plist (custom, gone.plist)"));
    EXPECT_FALSE(LTDatabase::isLoading());
    EXPECT_FALSE(QFileInfo::exists(gone));
}

TEST_F(DatabaseLocation, TellsOfAChoiceWithoutAPath) {
    defaults.setBool(true, "UsesCustomDB");
    answerAlert(QStringLiteral("OK"));
    LTDatabase::sharedDB<Diary>();
    EXPECT_EQ(path(), defaultPath());
    EXPECT_EQ(choice(), "custom, ");
    EXPECT_EQ(log().front(), missingAlert);
    EXPECT_THAT(log(), Not(testing::Contains(HasSubstr("syncing while"))));
}

TEST_F(DatabaseLocation, TellsOfAChosenFileThatGivesNoDatabaseAndLeavesItAsItIs) {
    for (const bool anything : {false, true}) {
        const QString own = makeFile(QStringLiteral("own.plist"));
        QFile file(own);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray before = file.readAll();
        file.close();
        chooseBefore(own);
        Diary::broken = {"own.plist"};
        Diary::throwsAnything = anything;
        answerAlert(Qt::Key_Return);
        testing::internal::CaptureStderr();
        LTDatabase::sharedDB<Diary>();
        const std::string written = testing::internal::GetCapturedStderr();
        EXPECT_THAT(written, HasSubstr(own.toStdString()));
        EXPECT_EQ(written.find("a torn page") == std::string::npos, anything);
        EXPECT_EQ(path(), defaultPath());
        EXPECT_EQ(choice(), "custom, " + own.toStdString());
        EXPECT_THAT(
            log(), ElementsAre("load own.plist (custom, own.plist)", missingAlert, "load DB.plist (custom, own.plist)"))
            << "and nothing saves the half of it";
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(file.readAll(), before);
        file.close();
        // It is another launch, as far as this goes.
        NSNotificationCenter::defaultCenter().postNotificationName(NSApplicationWillTerminateNotification, nullptr);
        log().clear();
    }
}

TEST_F(DatabaseLocation, ADiscardedStoreHearsNoMoreOfTheApplication) {
    chooseBefore(makeFile(QStringLiteral("own.plist")));
    Diary::broken = {"own.plist"};
    answerAlert(Qt::Key_Return);
    const auto store = LTDatabase::sharedDB<Diary>();
    log().clear();
    NSNotificationCenter::defaultCenter().postNotificationName(NSApplicationWillTerminateNotification, nullptr);
    EXPECT_THAT(log(), ElementsAre("save DB.plist"));
}

TEST_F(DatabaseLocation, IsSettledOnceWhateverKeysAreHeldLater) {
    const auto store = LTDatabase::sharedDB<Diary>();
    defaults.setBool(true, "UsesCustomDB");
    holdOption();
    log().clear();
    EXPECT_EQ(LTDatabase::sharedDB<Diary>(), store);
    EXPECT_EQ(LTDatabase::sharedDB(), store);
    EXPECT_THAT(log(), IsEmpty());
}

TEST_F(DatabaseLocation, IsLoadingWhileTheStoreIsLoadedAndNotAfter) {
    bool wasLoading = false;
    Diary::whenLoading = [&] { wasLoading = LTDatabase::isLoading(); };
    LTDatabase::sharedDB<Diary>();
    EXPECT_TRUE(wasLoading);
    EXPECT_FALSE(LTDatabase::isLoading());
}

TEST_F(DatabaseLocation, RefusesToBeAskedForByWhatRunsWhileADialogIsOpen) {
    const QString own = makeFile(QStringLiteral("own.plist"));
    holdOption();
    int refused = 0;
    const auto ask = [&refused] {
        const std::vector<std::function<void()>> calls = {[] { LTDatabase::sharedDB<Diary>(); },
                                                          [] { LTDatabase::reloadFromDefaultDB<Diary>(); }};
        for (const auto& call : calls) {
            try {
                call();
            } catch (const NSException& exception) {
                EXPECT_EQ(exception.name(), QString::fromUtf8(NSInternalInconsistencyException));
                ++refused;
            }
        }
    };
    whenAlertAsks([&](LTHUDWindow& window) {
        ask();
        EXPECT_TRUE(LTDatabase::isLoading());
        EXPECT_EQ(application.modalWindow(), &window) << "there is no second one";
        QTest::keyClick(window.windowHandle(), Qt::Key_Return);
    });
    steps.addForFileDialog([&](QFileDialog& dialog) {
        ask();
        EXPECT_TRUE(LTDatabase::isLoading());
        enterName(dialog, own);
    });
    Diary::whenLoading = ask;
    LTDatabase::sharedDB<Diary>();
    EXPECT_EQ(refused, 6);
    EXPECT_EQ(path(), own);
    EXPECT_THAT(log(), ElementsAre(chooseAlert, "load own.plist (custom, own.plist)", "disable syncing while loading"));
}

TEST_F(DatabaseLocation, SurvivesATimerThatAsksForItWhileADialogIsOpen) {
    chooseBefore(folder.filePath(QStringLiteral("gone.plist")));
    int asked = 0;
    const auto timer = NSTimer::scheduledTimerWithTimeInterval(0.001, NSTimerRepeats::Yes, [&](NSTimer&) {
        ++asked;
        LTDatabase::sharedDB<Diary>();
    });
    whenAlertAsks([&](LTHUDWindow& window) {
        const int before = asked;
        EXPECT_TRUE(QTest::qWaitFor([&] { return asked > before + 2; }));
        QTest::keyClick(window.windowHandle(), Qt::Key_Return);
    });
    testing::internal::CaptureStderr();
    LTDatabase::sharedDB<Diary>();
    timer->invalidate();
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr(NSInternalInconsistencyException));
    EXPECT_EQ(path(), defaultPath());
    EXPECT_THAT(log(), ElementsAre(missingAlert, "load DB.plist (custom, gone.plist)"));
}

TEST_F(DatabaseLocation, ReturnsToTheDefaultFileAndTurnsSyncingOn) {
    const QString own = makeFile(QStringLiteral("own.plist"));
    chooseBefore(own);
    std::weak_ptr<LTDatabase> before = LTDatabase::sharedDB<Diary>();
    before.lock()->addSnippet(std::make_shared<Note>(1.0, QStringLiteral("added")));
    log().clear();
    LTDatabase::reloadFromDefaultDB<Diary>();
    EXPECT_THAT(log(), ElementsAre("save own.plist", "save own.plist", "enable syncing: default, own.plist",
                                   "load DB.plist (default, own.plist)"))
        << "the second save is that of its destruction, which finds nothing to write";
    EXPECT_TRUE(before.expired());
    EXPECT_EQ(path(), defaultPath());
    EXPECT_EQ(choice(), "default, " + own.toStdString());
    EXPECT_FALSE(LTDatabase::isLoading());
    EXPECT_EQ(NSDictionary::dictionaryWithContentsOfFile(own)->objectOfType<NSArray>("contents")->size(), 2U);
}

TEST_F(DatabaseLocation, ReturnsWithAStoreOfTheClassThatWasNamed) {
    LTDatabase::sharedDB<NotesDatabase>();
    LTDatabase::reloadFromDefaultDB<Diary>();
    EXPECT_TRUE(std::dynamic_pointer_cast<Diary>(LTDatabase::sharedDB()));
}

TEST_F(DatabaseLocation, ReturnsWithoutAStoreBefore) {
    LTDatabase::reloadFromDefaultDB<Diary>();
    EXPECT_THAT(log(), ElementsAre("enable syncing: default, no path", "load DB.plist (default, no path)"));
}

TEST_F(DatabaseLocation, AsksOnTheWayBackWhereTheOptionKeyHappensToBeHeld) {
    const QString own = makeFile(QStringLiteral("own.plist"));
    LTDatabase::sharedDB<Diary>();
    holdOption();
    answerAlert(Qt::Key_Return);
    answerPanel(own);
    LTDatabase::reloadFromDefaultDB<Diary>();
    EXPECT_EQ(path(), own);
    EXPECT_EQ(choice(), "custom, " + own.toStdString());
}

TEST_F(DatabaseLocation, StaysWhereItIsWhenTheStoreCannotBeSavedBeforeTheReturn) {
    const QString own = makeFile(QStringLiteral("own.plist"));
    chooseBefore(own);
    const auto store = LTDatabase::sharedDB<Diary>();
    const auto unfit = std::make_shared<_LTSnippet>();
    store->addSnippet(unfit);
    EXPECT_THROW(LTDatabase::reloadFromDefaultDB<Diary>(), NSException);
    EXPECT_EQ(LTDatabase::sharedDB(), store);
    EXPECT_EQ(choice(), "custom, " + own.toStdString());
    store->removeSnippet(unfit);
}

TEST_F(DatabaseLocation, TheStoreBeforeLivesOnByItsTimerAndKeepsItsFileAndSubscriptions) {
    defaults.setBool(false, "VXDBAutomaticSavingDisabled");
    const NSTimer::IntervalsForTesting shorten([](double seconds) { return seconds == 300.0 ? 0.001 : seconds; });
    const QString own = makeFile(QStringLiteral("own.plist"));
    chooseBefore(own);
    std::weak_ptr<LTDatabase> before = LTDatabase::sharedDB<Diary>();
    LTDatabase::reloadFromDefaultDB<Diary>();
    ASSERT_FALSE(before.expired());
    EXPECT_NE(LTDatabase::sharedDB(), before.lock());
    EXPECT_EQ(path(), defaultPath());

    const auto recordsIn = [](const QString& file) -> std::size_t {
        const auto dictionary = NSDictionary::dictionaryWithContentsOfFile(file);
        return dictionary ? dictionary->objectOfType<NSArray>("contents")->size() : 0;
    };
    before.lock()->addSnippet(std::make_shared<Note>(1.0, QStringLiteral("late")));
    EXPECT_TRUE(QTest::qWaitFor([&] { return recordsIn(own) == 2; })) << "it is saved by its timer";
    EXPECT_EQ(recordsIn(defaultPath()), 0U);

    application.syncManager.syncing = true;
    before.lock()->addSnippet(std::make_shared<Note>(2.0, QStringLiteral("held back")));
    application.syncManager.syncing = false;
    EXPECT_EQ(before.lock()->snippets().count(), 2U);
    NSNotificationCenter::defaultCenter().postNotificationName(LTSyncManagerHasEndedSyncing, nullptr);
    EXPECT_EQ(before.lock()->snippets().count(), 3U) << "it hears of the end of a sync";

    application.terminate(nullptr);
    EXPECT_EQ(recordsIn(own), 3U) << "and of that of the application";
    EXPECT_FALSE(before.expired());
}

TEST_F(DatabaseLocation, IsDirtyAsTheSharedStoreIs) {
    chooseBefore(makeFile(QStringLiteral("own.plist")));
    const auto before = LTDatabase::sharedDB<Diary>();
    LTDatabase::reloadFromDefaultDB<Diary>();
    EXPECT_TRUE(LTDatabase::isDirty());
    LTDatabase::sharedDB()->saveDB();
    EXPECT_FALSE(LTDatabase::isDirty());
    before->addSnippet(std::make_shared<Note>(1.0));
    EXPECT_FALSE(LTDatabase::isDirty()) << "it is not the shared one";
}
