// SPDX-License-Identifier: MIT
#include "DatabaseHost.h"

#include <VXKit/platform/foundation/NSException.h>
#include <VXKit/platform/foundation/NSPropertyListSerialization.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr const char* validFile = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>DBVersion</key><string>0.1</string>
<key>contents</key><array>
<dict><key>name</key><string>first</string><key>id</key><real>1000.5</real></dict>
<dict><key>name</key><string>second</string></dict>
</array></dict></plist>)";

} // namespace

TEST_F(Database, OpensAPathWithoutAFileAsAnEmptyDirtyStore) {
    const auto store = open();
    EXPECT_TRUE(store->snippets().isEmpty());
    EXPECT_TRUE(store->_dirty);
    EXPECT_FALSE(QFileInfo::exists(path()));
    const NSDate before = NSDate::date();
    store->saveDB();
    const NSDictionary saved = file();
    EXPECT_EQ(*saved.objectOfType<std::string>("DBVersion"), "0.1");
    EXPECT_THAT(*saved.objectOfType<NSArray>("contents"), IsEmpty());
    ASSERT_TRUE(saved.objectOfType<NSDate>("SaveDate"));
    EXPECT_GE(saved.objectOfType<NSDate>("SaveDate")->timeIntervalSince1970(),
              std::floor(before.timeIntervalSince1970()));
    EXPECT_EQ(saved.count(), 3U);
}

TEST_F(Database, LoadsTheRecordsOfAFileInOrder) {
    writeFile(validFile);
    const auto store = open();
    EXPECT_THAT(titles(*store), ElementsAre(QStringLiteral("first"), QStringLiteral("second")));
    EXPECT_TRUE(store->existsItemWithID(at(1000.5)));
    EXPECT_EQ(store->snippets()[1]->snippetID(), std::nullopt);
}

TEST_F(Database, LoadsEveryFormOfPropertyList) {
    writeFile("{ DBVersion = \"0.1\"; contents = ( { name = old; } ); }");
    EXPECT_THAT(titles(*open()), ElementsAre(QStringLiteral("old")));
}

TEST_F(Database, LoadsAFileOfAnotherVersionAsEmptyAndOverwritesIt) {
    writeFile(QString::fromUtf8(validFile).replace(QStringLiteral("0.1<"), QStringLiteral("0.2<")).toStdString());
    const auto store = open();
    EXPECT_TRUE(store->snippets().isEmpty());
    store->saveDB();
    EXPECT_EQ(*file().objectOfType<std::string>("DBVersion"), "0.1");
    EXPECT_EQ(recordsInFile(), 0U);
}

TEST_F(Database, KeepsWhatItHoldsWhenGivenADictionaryOfAnotherVersion) {
    const auto store = open();
    store->addSnippet(note(1.0, "kept"));
    store->saveDB();
    store->_loadWithDictionary(NSDictionary{{"DBVersion", "0.2"}, {"contents", NSArray()}});
    EXPECT_THAT(titles(*store), ElementsAre(QStringLiteral("kept")));
    EXPECT_TRUE(store->_dirty);
    store->_loadWithDictionary(NSDictionary{{"DBVersion", 0.1}});
    EXPECT_EQ(store->snippets().count(), 1U);
    store->_loadWithDictionary(NSDictionary{{"DBVersion", "0.1"}});
    EXPECT_TRUE(store->snippets().isEmpty());
}

TEST_F(Database, RewritesAValidFileOnceAfterLoading) {
    writeFile(validFile);
    const auto store = open();
    ASSERT_TRUE(QFile::remove(path()));
    store->saveDB();
    EXPECT_EQ(recordsInFile(), 2U);
    ASSERT_TRUE(QFile::remove(path()));
    store->saveDB();
    EXPECT_FALSE(QFileInfo::exists(path()));
}

TEST_F(Database, LeavesOutWhatMakesNoRecord) {
    writeFile("{ DBVersion = \"0.1\"; contents = ( text, { name = kept; }, () ); }");
    EXPECT_THAT(titles(*open()), ElementsAre(QStringLiteral("kept")));
}

TEST_F(Database, TakesMissingOrWrongTypedContentsForNone) {
    for (const char* text : {"{ DBVersion = \"0.1\"; }", "{ DBVersion = \"0.1\"; contents = text; }"}) {
        writeFile(text);
        EXPECT_TRUE(open()->snippets().isEmpty());
    }
}

TEST_F(Database, LoadsBadFilesAsEmptySilentlyForItsUserAndLoudlyInTheLog) {
    const std::string valid = validFile;
    const std::vector<std::string> badFiles = {
        "",
        valid.substr(0, valid.size() / 2),
        "<plist><array/></plist>",
        "(an, array)",
        "{ DBVersion = \"0.1\"; contents = ( { name = \"\xff\"; } ); }",
        std::string("bplist00\x5f\x12\x7f\xff\xff\xff", 14),
        "<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY a \"b\">]><plist><dict/></plist>",
        std::string(1000000, '('),
    };
    for (const std::string& bytes : badFiles) {
        writeFile(bytes);
        testing::internal::CaptureStderr();
        const auto store = open();
        EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr(path().toStdString()));
        EXPECT_TRUE(store->snippets().isEmpty());
        EXPECT_TRUE(store->_dirty);
        store->saveDB();
        EXPECT_EQ(recordsInFile(), 0U);
    }
}

TEST_F(Database, OpensAFolderAsEmptyAndLeavesItWhereItIs) {
    ASSERT_TRUE(QDir().mkdir(path()));
    const auto store = open();
    EXPECT_TRUE(store->snippets().isEmpty());
    store->saveDB();
    EXPECT_FALSE(store->_dirty);
    EXPECT_TRUE(QFileInfo(path()).isDir());
}

TEST_F(Database, TakesAFileThatItMayNotReadForAnEmptyOne) {
    writeFile(validFile);
    ASSERT_EQ(::chmod(QFile::encodeName(path()).constData(), 0), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(folder.path()).constData(), 0755), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        // Root may read everything, so it must be nobody who tries.
        if (::geteuid() == 0 && ::seteuid(65534) != 0) {
            ::_exit(2);
        }
        const auto store = open();
        ::_exit(store->snippets().isEmpty() && store->_dirty ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(Database, MarksAndAnnouncesEveryAddition) {
    const auto store = open();
    store->saveDB();
    int posts = 0;
    const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
        LTSnippetDBWasModifiedNotification, store.get(), [&](const NSNotification&) {
            ++posts;
            EXPECT_EQ(store->snippets().count(), 1U);
            EXPECT_TRUE(store->_dirty);
        });
    store->addSnippet(note(1.0));
    EXPECT_EQ(posts, 1);
}

TEST_F(Database, AddsTheSameRecordTwice) {
    const auto store = open();
    const auto same = note(1.0, "same");
    store->addSnippet(same);
    store->addSnippet(same);
    EXPECT_THAT(titles(*store), ElementsAre(QStringLiteral("same"), QStringLiteral("same")));
}

TEST_F(Database, LogsAnAdditionInTwoLinesWhenLoggingIsOn) {
    NSUserDefaults::standardUserDefaults().setBool(true, "VXLoggingEnabled");
    testing::internal::CaptureStderr();
    const auto store = open();
    store->addSnippet(note(1.0, "word"));
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_THAT(log, HasSubstr("] Loading with dictionary\n"));
    EXPECT_THAT(log, HasSubstr("] Adding snippet {\n    id = 1;\n    name = word;\n}\n"));
    EXPECT_THAT(log, HasSubstr("]      right into db\n"));
}

TEST_F(Database, RefusesNil) {
    const auto store = open();
    EXPECT_THROW(store->addSnippet(nullptr), NSException);
    EXPECT_THROW(store->removeSnippet(nullptr), NSException);
    EXPECT_THROW(store->notifyOfModificationForSnippet(nullptr), NSException);
    EXPECT_TRUE(store->snippets().isEmpty());
}

TEST_F(Database, RemovesEveryOccurrenceOfTheObjectAndNotItsNamesakes) {
    const auto store = open();
    const auto removed = note(1.0, "removed");
    for (const auto& snippet : {removed, note(1.0, "same ID"), removed}) {
        store->addSnippet(snippet);
    }
    store->saveDB();
    store->removeSnippet(store->snippets()[0]);
    EXPECT_THAT(titles(*store), ElementsAre(QStringLiteral("same ID")));
    EXPECT_TRUE(store->_dirty);
}

TEST_F(Database, RemovesWhatASubclassCallsEqual) {
    class EqualByName : public Note {
    public:
        using Note::Note;
        bool isEqual(const _LTSnippet& other) const override { return title() == other.title(); }
    };
    const auto store = open();
    store->addSnippet(std::make_shared<EqualByName>(1.0, QStringLiteral("a")));
    store->addSnippet(std::make_shared<EqualByName>(2.0, QStringLiteral("b")));
    store->removeSnippet(std::make_shared<EqualByName>(3.0, QStringLiteral("a")));
    EXPECT_THAT(titles(*store), ElementsAre(QStringLiteral("b")));
}

TEST_F(Database, MarksAndAnnouncesAnEditWithoutTouchingTheRecord) {
    const auto store = open();
    const auto edited = note(1.0);
    store->addSnippet(edited);
    store->saveDB();
    int posts = 0;
    const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
        LTSnippetDBWasModifiedNotification, store.get(), [&](const NSNotification&) { ++posts; });
    store->notifyOfModificationForSnippet(edited);
    EXPECT_TRUE(store->_dirty);
    EXPECT_EQ(posts, 1);
    EXPECT_EQ(edited->modified(), std::nullopt);
}

TEST_F(Database, DeepCopyEqualsTheRepresentationButForItsOwnSaveDate) {
    const auto store = open();
    store->addSnippet(note(1.0, "a"));
    store->addSnippet(note(2.0, "b"));
    const NSDictionary representation = store->dictionaryRepresentation();
    const NSDictionary copy = store->deepCopy();
    EXPECT_EQ(*copy.objectForKey("DBVersion"), *representation.objectForKey("DBVersion"));
    EXPECT_EQ(*copy.objectForKey("contents"), *representation.objectForKey("contents"));
    EXPECT_GT(*copy.objectOfType<NSDate>("SaveDate"), *representation.objectOfType<NSDate>("SaveDate"));
}

TEST_F(Database, DeepCopyRepresentsCopies) {
    class Tagging : public Note {
    public:
        std::shared_ptr<_LTSnippet> copy() const override {
            return std::make_shared<Note>(9.0, QStringLiteral("copy"));
        }
    };
    const auto store = open();
    store->addSnippet(std::make_shared<Tagging>());
    const NSDictionary copy = store->deepCopy();
    EXPECT_EQ(copy.objectOfType<NSArray>("contents")->front(),
              NSPropertyList(NSDictionary{{"name", "copy"}, {"id", 9.0}}));
}

TEST_F(Database, FailsToSaveARecordWithoutADictionaryAndKeepsTheOldFile) {
    const auto store = open();
    store->saveDB();
    const auto unfit = std::make_shared<_LTSnippet>();
    store->addSnippet(unfit);
    EXPECT_THROW(store->saveDB(), NSException);
    EXPECT_TRUE(store->_dirty);
    EXPECT_EQ(recordsInFile(), 0U);
    store->removeSnippet(unfit);
}

TEST_F(Database, SurvivesItsDestructionWithARecordThatCannotBeSaved) {
    testing::internal::CaptureStderr();
    open()->addSnippet(std::make_shared<_LTSnippet>());
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr(NSInvalidArgumentException));
}

TEST_F(Database, HoldsAnAdditionBackDuringASyncAndStillAnnouncesIt) {
    TestApplication application;
    const auto store = open();
    store->saveDB();
    application.syncManager.syncing = true;
    int posts = 0;
    const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
        LTSnippetDBWasModifiedNotification, store.get(), [&](const NSNotification&) { ++posts; });
    store->addSnippet(note(1.0));
    EXPECT_EQ(posts, 1);
    EXPECT_FALSE(store->_dirty);
    EXPECT_TRUE(store->snippets().isEmpty());
    EXPECT_EQ(store->_layaway.size(), 1U);
    EXPECT_FALSE(store->existsItemWithID(at(1.0)));
}

TEST_F(Database, HoldsAnEditBackSilentlyAndARemovalAloudDuringASync) {
    TestApplication application;
    const auto store = open();
    const auto snippet = note(1.0);
    store->addSnippet(snippet);
    store->saveDB();
    application.syncManager.syncing = true;
    int posts = 0;
    const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
        LTSnippetDBWasModifiedNotification, store.get(), [&](const NSNotification&) { ++posts; });
    store->notifyOfModificationForSnippet(snippet);
    EXPECT_EQ(posts, 0);
    store->removeSnippet(snippet);
    EXPECT_EQ(posts, 1);
    EXPECT_FALSE(store->_dirty);
    EXPECT_EQ(store->snippets().count(), 1U);
}

TEST_F(Database, MergesAdditionsThenEditsThenRemovalsAtTheEndOfASync) {
    TestApplication application;
    const auto store = open();
    const auto edited = note(1.0, "edited");
    const auto removed = note(2.0, "removed");
    store->addSnippet(edited);
    store->addSnippet(removed);
    store->addSnippet(note(3.0, "kept"));
    application.syncManager.syncing = true;
    const auto first = note(4.0, "first");
    const auto second = note(5.0, "second");
    const auto passing = note(6.0, "passing");
    store->removeSnippet(removed);
    store->removeSnippet(passing);
    store->notifyOfModificationForSnippet(edited);
    store->addSnippet(first);
    store->addSnippet(second);
    store->addSnippet(passing);
    application.syncManager.syncing = false;
    const double before = NSDate::date().timeIntervalSince1970();
    NSNotificationCenter::defaultCenter().postNotificationName(LTSyncManagerHasEndedSyncing, nullptr);
    EXPECT_THAT(titles(*store), ElementsAre(QStringLiteral("kept"), QStringLiteral("first"), QStringLiteral("second"),
                                            QStringLiteral("edited")));
    const double stamp = first->modified()->timeIntervalSince1970();
    EXPECT_GE(stamp, before);
    EXPECT_EQ(second->modified(), at(stamp + 1.0));
    EXPECT_EQ(passing->modified(), at(stamp + 2.0));
    EXPECT_EQ(edited->modified(), at(stamp + 3.0));
    EXPECT_TRUE(store->_layaway.empty());
    EXPECT_TRUE(store->_layawayEdits.empty());
    EXPECT_EQ(store->_layawayRemovals.size(), 2U);
}

TEST_F(Database, AppliesOldRemovalsAgainAtEveryLaterEndOfASync) {
    TestApplication application;
    const auto store = open();
    const auto removed = note(2.0);
    store->addSnippet(removed);
    application.syncManager.syncing = true;
    store->removeSnippet(removed);
    application.syncManager.syncing = false;
    NSNotificationCenter::defaultCenter().postNotificationName(LTSyncManagerHasEndedSyncing, nullptr);
    store->addSnippet(note(2.0, "made anew"));
    NSNotificationCenter::defaultCenter().postNotificationName(LTSyncManagerHasEndedSyncing, nullptr);
    EXPECT_TRUE(store->snippets().isEmpty());
}

TEST_F(Database, RecordsRemovalsForTheSyncManagerOnlyWhenAutomaticSyncingIsOn) {
    NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
    const auto store = open();
    store->removeSnippet(note(1.0));
    EXPECT_EQ(defaults.objectForKey("SyncingData"), std::nullopt);
    defaults.setBool(true, "ShouldAutoSyncWithMobileMe");
    store->removeSnippet(note(1000000.0));
    store->removeSnippet(note(1000000.0));
    EXPECT_EQ(defaults.arrayForKey("SyncingData"), (NSArray{1000000.0, 1000000.0}));
}

TEST_F(Database, MarksARecordedRemovalInTheLogWithItsMeaninglessNumber) {
    NSUserDefaults::standardUserDefaults().setBool(true, "ShouldAutoSyncWithMobileMe");
    NSUserDefaults::standardUserDefaults().setBool(true, "VXLoggingEnabled");
    const auto store = open();
    testing::internal::CaptureStderr();
    store->removeSnippet(note(1000000.5));
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_THAT(log, testing::ContainsRegex("Removed -?[0-9]+ from DB\n"));
    EXPECT_THAT(log, testing::Not(HasSubstr("Removed 1000000 from DB")));
}

TEST_F(Database, AsksItsOwnClassForVersionAndRecordClass) {
    class NextDatabase : public NotesDatabase {
    protected:
        QString databaseVersion() const override { return QStringLiteral("7"); }
    };
    writeFile("{ DBVersion = \"7\"; contents = ( { name = a; } ); }");
    const auto store = open<NextDatabase>();
    EXPECT_TRUE(dynamic_cast<Note*>(store->snippets()[0].get()));
    EXPECT_EQ(*store->dictionaryRepresentation().objectOfType<std::string>("DBVersion"), "7");
}

TEST_F(Database, SavesWithTheVersionOfItsOwnClassOnItsDestruction) {
    class NextDatabase : public NotesDatabase {
    protected:
        QString databaseVersion() const override { return QStringLiteral("7"); }
    };
    open<NextDatabase>()->addSnippet(note(1.0));
    EXPECT_EQ(*file().objectOfType<std::string>("DBVersion"), "7");
    EXPECT_EQ(recordsInFile(), 1U);
}

TEST_F(Database, HasTheBaseSettings) {
    const auto store = LTDatabase::alloc<NotesDatabase>();
    EXPECT_EQ(store->databaseFileName(), QStringLiteral("DB.plist"));
    EXPECT_EQ(store->databaseName(), QStringLiteral("DB"));
    EXPECT_EQ(store->databaseVersion(), QStringLiteral("0.1"));
}

TEST_F(Database, IsInitialisedOnceAndOnlyAsAllocMadeIt) {
    NotesDatabase bare;
    EXPECT_THROW(bare.initWithFile(path()), NSException);
    const auto store = open();
    EXPECT_THROW(store->initWithFile(path()), NSException);
}
