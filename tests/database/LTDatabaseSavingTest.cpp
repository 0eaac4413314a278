// SPDX-License-Identifier: MIT
#include "DatabaseHost.h"

#include <VXKit/platform/foundation/NSException.h>
#include <VXKit/platform/foundation/NSPropertyListSerialization.h>
#include <VXKit/platform/foundation/NSTimer.h>

#include <QDir>
#include <QFileInfo>

#include <csignal>
#include <random>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

/// A store that writes down on which occasion it was saved.
class Watched : public NotesDatabase {
public:
    void saveDB() override {
        saves.emplace_back(weak_from_this().expired() ? "destruction" : "termination");
        NotesDatabase::saveDB();
    }
    static inline std::vector<std::string> saves;
};

} // namespace

TEST_F(Database, SavesOnDestruction) {
    open()->addSnippet(note(1.0));
    EXPECT_EQ(recordsInFile(), 1U);
}

TEST_F(Database, SavesAtTerminationWithAutomaticSavingOff) {
    const auto store = open();
    store->addSnippet(note(1.0));
    terminate();
    EXPECT_EQ(recordsInFile(), 1U);
    EXPECT_FALSE(store->_dirty);
}

TEST_F(Database, SchedulesNoTimerWithAutomaticSavingOff) {
    TestApplication application;
    std::vector<double> intervals;
    const NSTimer::IntervalsForTesting record([&](double seconds) {
        intervals.push_back(seconds);
        return seconds;
    });
    const auto store = open();
    EXPECT_THAT(intervals, IsEmpty());
    EXPECT_EQ(store.use_count(), 1);
}

TEST_F(Database, SavesEvery300SecondsWithAutomaticSavingOn) {
    setAutomaticSaving(true);
    TestApplication application;
    std::vector<double> intervals;
    const NSTimer::IntervalsForTesting shorten([&](double seconds) {
        intervals.push_back(seconds);
        return 0.001;
    });
    const auto store = open();
    EXPECT_THAT(intervals, ElementsAre(300.0));
    for (std::size_t records = 1; records <= 2; ++records) {
        store->addSnippet(note(double(records)));
        while (store->_dirty) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        EXPECT_EQ(recordsInFile(), records);
    }
}

TEST_F(Database, LivesByItsTimerUntilTheApplicationGoesAndSavesThen) {
    setAutomaticSaving(true);
    std::weak_ptr<NotesDatabase> watcher;
    {
        TestApplication application;
        auto store = open();
        watcher = store;
        store.reset();
        ASSERT_FALSE(watcher.expired());
        watcher.lock()->addSnippet(note(1.0));
    }
    EXPECT_TRUE(watcher.expired());
    EXPECT_EQ(recordsInFile(), 1U);
}

TEST_F(Database, LogsAFailureOfAPeriodicSaveAndGoesOn) {
    setAutomaticSaving(true);
    TestApplication application;
    const NSTimer::IntervalsForTesting shorten([](double) { return 0.001; });
    class Counting : public NotesDatabase {
    public:
        void saveDB() override {
            ++triedSaves;
            NotesDatabase::saveDB();
        }
        int triedSaves = 0;
    };
    const auto store = open<Counting>();
    const auto unfit = std::make_shared<_LTSnippet>();
    store->addSnippet(unfit);
    testing::internal::CaptureStderr();
    const int savesBefore = store->triedSaves;
    while (store->triedSaves < savesBefore + 2) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr(NSInvalidArgumentException));
    store->removeSnippet(unfit);
    while (store->_dirty) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    EXPECT_EQ(recordsInFile(), 0U);
}

TEST_F(Database, GivesUpTheSharedReferenceBeforeItSavesAtTermination) {
    const std::weak_ptr<LTDatabase> store = LTDatabase::sharedDB<Watched>();
    terminate();
    EXPECT_TRUE(store.expired());
    EXPECT_THAT(Watched::saves, ElementsAre("destruction"));
    EXPECT_TRUE(QFileInfo::exists(QDir::homePath() + QStringLiteral("/Library/Preferences/DB.plist")));
    terminate();
    EXPECT_THAT(Watched::saves, ElementsAre("destruction"));
}

TEST_F(Database, SharedStoreLivesOnAfterTerminationWithAutomaticSavingOn) {
    setAutomaticSaving(true);
    TestApplication application;
    const std::weak_ptr<LTDatabase> store = LTDatabase::sharedDB<Watched>();
    application.terminate(nullptr);
    EXPECT_THAT(Watched::saves, ElementsAre("termination"));
    ASSERT_FALSE(store.expired());
    EXPECT_EQ(LTDatabase::sharedDB(), store.lock());
}

TEST_F(Database, SharedStoreLiesInTheUsersPreferencesUnderTheNameThatItsClassGives) {
    class NamedDatabase : public NotesDatabase {
    protected:
        QString databaseFileName() const override { return QStringLiteral("Named.plist"); }
    };
    EXPECT_FALSE(LTDatabase::isLoading());
    const auto store = LTDatabase::sharedDB<NamedDatabase>();
    EXPECT_FALSE(LTDatabase::isLoading());
    EXPECT_TRUE(LTDatabase::isDirty());
    store->saveDB();
    EXPECT_FALSE(LTDatabase::isDirty());
    EXPECT_TRUE(QFileInfo::exists(QDir::homePath() + QStringLiteral("/Library/Preferences/Named.plist")));
    EXPECT_EQ(LTDatabase::sharedDB<NotesDatabase>(), store);
}

TEST_F(Database, IsLoadingWhileTheSharedStoreIsBeingMade) {
    class Asking : public NotesDatabase {
    protected:
        QString databaseVersion() const override {
            wasLoading = LTDatabase::isLoading();
            return NotesDatabase::databaseVersion();
        }

    public:
        mutable bool wasLoading = false;
    };
    EXPECT_TRUE(std::static_pointer_cast<Asking>(LTDatabase::sharedDB<Asking>())->wasLoading);
}

TEST_F(Database, ForgetsAFailedWriteAndKeepsTheOldFile) {
    {
        const auto store = open();
        store->addSnippet(note(1.0, "old"));
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{2000, 2000};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        const auto store = open();
        for (int count = 0; count < 1000; ++count) {
            store->addSnippet(note(count, "new"));
        }
        store->saveDB();
        ::_exit(store->_dirty ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_THAT(titles(*open()), ElementsAre(QStringLiteral("old")));
}

TEST_F(Database, LoadsAsOldOrNewAfterAKillAtARandomMomentOfASave) {
    const auto fill = [](LTDatabase& store, std::size_t count) {
        while (store.snippets().count() < count) {
            store.addSnippet(note(double(store.snippets().count()), "a name of some length, to make the file longer"));
        }
    };
    fill(*open(), 300);
    std::mt19937 random(20261121);
    std::uniform_int_distribution<useconds_t> moment(0, 6000);
    for (int round = 0; round < 200; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            const auto store = open();
            for (std::size_t count = 300;; count = count == 300 ? 600 : 300) {
                while (store->snippets().count() > count) {
                    store->removeSnippet(store->snippets().objectAtIndex(store->snippets().count() - 1));
                }
                fill(*store, count);
                store->saveDB();
            }
        }
        ::usleep(moment(random));
        ASSERT_EQ(::kill(child, SIGKILL), 0);
        ASSERT_EQ(::waitpid(child, nullptr, 0), child);
        NSError error;
        const auto value = NSPropertyListSerialization::propertyListWithContentsOfFile(path(), nullptr, &error);
        ASSERT_TRUE(value) << "round " << round << ": " << error.localizedDescription.toStdString();
        const std::size_t records = value->as<NSDictionary>()->objectOfType<NSArray>("contents")->size();
        ASSERT_TRUE(records == 300 || records == 600) << "round " << round << ": " << records;
    }
}
