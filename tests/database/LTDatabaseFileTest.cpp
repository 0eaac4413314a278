// SPDX-License-Identifier: MIT
#include "DatabaseFileHost.h"

#include <QRegularExpression>

#include <csignal>
#include <random>
#include <set>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;

TEST_F(DatabaseFile, SavesWithoutCopiesWhereNobodyElseWrites) {
    const auto store = saved();
    for (int round = 0; round < 20; ++round) {
        change(*store);
        store->saveDB();
    }
    open()->saveDB();
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(DatabaseFile, SetsAsideWhatAnotherProgramPutInItsPlaceAndSavesOverIt) {
    const auto store = saved();
    replace(path(), foreign);
    change(*store);
    store->saveDB();
    EXPECT_FALSE(store->_dirty);
    EXPECT_THAT(recordsIn(path()), ElementsAre("own"));
    EXPECT_THAT(copies(), ElementsAre(MatchesRegex(changedElsewhere)));
    EXPECT_EQ(contentOfOnlyCopy(), foreign);
}

TEST_F(DatabaseFile, SetsAsideWhatAnotherProgramWroteInPlace) {
    const auto store = saved();
    writeInPlace(path(), foreign);
    change(*store);
    store->saveDB();
    EXPECT_EQ(contentOfOnlyCopy(), foreign);
}

TEST_F(DatabaseFile, NamesTheCopyByTheLocalTimeOfTheSave) {
    const auto store = saved();
    replace(path(), foreign);
    change(*store);
    const QDateTime before = QDateTime::currentDateTime();
    store->saveDB();
    const auto found =
        QRegularExpression(QStringLiteral("elsewhere (.*)\\)")).match(QString::fromStdString(copies()[0]));
    const auto time = QDateTime::fromString(found.captured(1), QStringLiteral("yyyy-MM-dd HH.mm.ss"));
    EXPECT_GE(time, before.addSecs(-1));
    EXPECT_LE(time, QDateTime::currentDateTime());
}

TEST_F(DatabaseFile, LeavesTheChangedFileAloneWhileThereIsNothingToSave) {
    const auto store = saved();
    replace(path(), foreign);
    store->saveDB();
    EXPECT_EQ(contentOf(path()), foreign);
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(DatabaseFile, NoticesAChangeBetweenLoadingAndTheFirstSave) {
    replace(path(), foreign);
    const auto store = open();
    replace(path(), "{ DBVersion = \"0.1\"; contents = ( { name = newer; } ); }");
    store->saveDB();
    EXPECT_THAT(recordsIn(path()), ElementsAre("foreign"));
    EXPECT_THAT(contentOfOnlyCopy(), HasSubstr("newer"));
}

TEST_F(DatabaseFile, NoticesAFileThatAppearsWhereThereWasNone) {
    const auto store = open();
    replace(path(), foreign);
    store->saveDB();
    EXPECT_EQ(contentOfOnlyCopy(), foreign);
}

TEST_F(DatabaseFile, WritesADeletedFileAnewAndSetsNothingAside) {
    const auto store = saved();
    ASSERT_TRUE(QFile::remove(path()));
    change(*store);
    store->saveDB();
    EXPECT_THAT(recordsIn(path()), ElementsAre("own"));
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(DatabaseFile, NoticesAChangeOfTheSameSizeAtOnceAndUnderTheOldTime) {
    const auto store = saved();
    for (const bool restoresTime : {false, true}) {
        change(*store);
        store->saveDB();
        const struct stat before = statusOf(path());
        std::string bytes = contentOf(path());
        bytes.replace(bytes.find("own"), 3, restoresTime ? "two" : "one");
        writeInPlace(path(), bytes);
        if (restoresTime) {
            setModified(path(), before.st_mtim);
        }
        ASSERT_EQ(statusOf(path()).st_size, before.st_size);
        change(*store);
        store->saveDB();
        EXPECT_THAT(copies(), SizeIs(restoresTime ? 2 : 1));
    }
    std::set<std::string> kept;
    for (const std::string& name : copies()) {
        kept.insert(recordsIn(path(QString::fromStdString(name))).front());
    }
    EXPECT_THAT(kept, ElementsAre("one", "two"));
}

TEST_F(DatabaseFile, NoticesAChangeOfTheSameSizeRightAfterLoading) {
    std::string bytes = foreign;
    for (int round = 0; round < 50; ++round) {
        writeInPlace(path(), foreign);
        const auto store = open();
        bytes.replace(bytes.find(" } )") - 8, 7, round % 2 ? "unusual" : "another");
        writeInPlace(path(), bytes);
        store->saveDB();
        ASSERT_THAT(copies(), SizeIs(1)) << "round " << round;
        EXPECT_EQ(contentOfOnlyCopy(), bytes);
        ASSERT_TRUE(QFile::remove(path(QString::fromStdString(copies()[0]))));
    }
}

TEST_F(DatabaseFile, TakesAFileThatWasOnlyTouchedForUnchanged) {
    const auto store = saved();
    const QByteArray name = QFile::encodeName(path());
    const std::vector<std::function<void()>> touches = {
        [&] {
            setModified(path(), {1000000000, 0});
        },
        [&] { ASSERT_EQ(::chmod(name.constData(), 0600), 0); },
        [&] { replace(path(), contentOf(path())); },
        [&] { writeInPlace(path(), contentOf(path())); },
        [&] {
            ASSERT_EQ(::link(name.constData(), (name + "2").constData()), 0);
            ASSERT_EQ(::unlink((name + "2").constData()), 0);
        },
    };
    for (const auto& touch : touches) {
        touch();
        change(*store);
        store->saveDB();
        EXPECT_THAT(copies(), IsEmpty());
    }
}

TEST_F(DatabaseFile, ReadsItsOwnFileAgainOnlyInDoubt) {
    const auto store = saved();
    change(*store, std::string(100000, 'x').c_str());
    store->saveDB();
    for (const bool isTouched : {false, true, false}) {
        if (isTouched) {
            setModified(path(), {1000000000, 0});
        }
        change(*store);
        const long size = statusOf(path()).st_size;
        const long before = bytesRead();
        store->saveDB();
        EXPECT_EQ(bytesRead() - before >= size, isTouched);
    }
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(DatabaseFile, SetsAsideAFileOfAnotherVersionOnceBeforeItOverwritesIt) {
    const std::string bytes = "{ DBVersion = \"0.2\"; contents = ( { name = later; } ); }";
    replace(path(), bytes);
    const auto store = open();
    EXPECT_THAT(copies(), IsEmpty());
    store->saveDB();
    EXPECT_THAT(copies(), ElementsAre(MatchesRegex(R"(Notes \(version 0\.2 [0-9 .-]+\)\.plist)")));
    EXPECT_EQ(contentOfOnlyCopy(), bytes);
    change(*store);
    store->saveDB();
    EXPECT_THAT(copies(), SizeIs(1));
}

TEST_F(DatabaseFile, MakesAFileNameOfAnyVersion) {
    const std::vector<std::pair<const char*, const char*>> versions = {
        {"", "_"},
        {"../../x", ".._.._x"},
        {"2 (beta)", "2__beta_"},
        {"zweite Ausgabe, sehr lang und breit", "zweite_Ausgabe__sehr_lan"},
        {"版本", "版本"},
        {"\xf0\x9f\x92\xa9", "__"},
    };
    for (const auto& [version, remark] : versions) {
        replace(path(), NSPropertyListSerialization::dataWithPropertyList(
                            NSDictionary{{"DBVersion", version}, {"contents", NSArray()}}, nullptr)
                            .value());
        open()->saveDB();
        const std::vector<std::string> names = copies();
        ASSERT_THAT(names, SizeIs(1)) << version;
        EXPECT_TRUE(names[0].starts_with(std::string("Notes (version ") + remark + " 2")) << names[0];
        ASSERT_TRUE(QFile::remove(path(QString::fromStdString(names[0]))));
    }
}

TEST_F(DatabaseFile, SetsAsideWhatItCannotReadWhole) {
    const std::vector<std::string> files = {
        "",
        "no property list {",
        "(an, array)",
        "{ contents = ( { name = lost; } ); }",
        "{ DBVersion = ( 1 ); contents = (); }",
        "{ DBVersion = \"0.1\"; contents = text; }",
        "{ DBVersion = \"0.1\"; contents = ( { name = kept; }, lost ); }",
    };
    for (const std::string& bytes : files) {
        replace(path(), bytes);
        const auto store = open();
        store->saveDB();
        EXPECT_THAT(copies(), ElementsAre(MatchesRegex(R"(Notes \(unreadable [0-9 .-]+\)\.plist)"))) << bytes;
        EXPECT_EQ(contentOfOnlyCopy(), bytes);
        change(*store);
        store->saveDB();
        EXPECT_THAT(copies(), SizeIs(1));
        ASSERT_TRUE(QFile::remove(path(QString::fromStdString(copies()[0]))));
    }
}

TEST_F(DatabaseFile, TakesMissingContentsForNothingToLose) {
    replace(path(), "{ DBVersion = \"0.1\"; }");
    open()->saveDB();
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(DatabaseFile, SetsAsideAFileThatItMayNotRead) {
    replace(path(), foreign);
    ASSERT_EQ(::chmod(QFile::encodeName(folder.path()).constData(), 0777), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(path()).constData(), 0), 0);
    const bool isRoot = ::geteuid() == 0;
    if (isRoot) {
        ASSERT_EQ(::chown(QFile::encodeName(path()).constData(), 65534, 65534), 0);
    }
    const pid_t child = ::fork();
    if (child == 0) {
        if (isRoot && ::seteuid(65534) != 0) {
            ::_exit(2);
        }
        open()->saveDB();
        ::_exit(0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_EQ(WEXITSTATUS(status), 0);
    ASSERT_THAT(copies(), ElementsAre(HasSubstr("unreadable")));
    ASSERT_EQ(::chmod(QFile::encodeName(path(QString::fromStdString(copies()[0]))).constData(), 0600), 0);
    EXPECT_EQ(contentOfOnlyCopy(), foreign);
}

TEST_F(DatabaseFile, LeavesAReadOnlyFolderAsItIs) {
    replace(path(), foreign);
    const auto store = open();
    ASSERT_EQ(::chmod(QFile::encodeName(folder.path()).constData(), 0555), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        if (::geteuid() == 0 && ::seteuid(65534) != 0) {
            ::_exit(2);
        }
        const auto own = open();
        change(*own);
        own->saveDB();
        ::_exit(own->_dirty ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_EQ(::chmod(QFile::encodeName(folder.path()).constData(), 0755), 0);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(contentOf(path()), foreign);
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(DatabaseFile, LosesNoVersionOfTwoStoresThatTakeTurns) {
    const auto first = open();
    const auto second = open();
    std::set<std::string> written;
    for (int turn = 0; turn < 10; ++turn) {
        const auto& store = turn % 2 ? second : first;
        const std::string name = "turn " + std::to_string(turn);
        change(*store, name.c_str());
        store->saveDB();
        written.insert(contentOf(path()));
    }
    ASSERT_EQ(written.size(), 10U);
    std::set<std::string> found = {contentOf(path())};
    for (const std::string& name : copies()) {
        found.insert(contentOf(path(QString::fromStdString(name))));
    }
    EXPECT_EQ(found, written);
}

TEST_F(DatabaseFile, FollowsAStoreWhosePathChanges) {
    const auto store = saved();
    replace(path(QStringLiteral("Other.plist")), foreign);
    store->_path = path(QStringLiteral("Other.plist"));
    change(*store);
    store->saveDB();
    EXPECT_THAT(copies(), ElementsAre(HasSubstr("Other (changed elsewhere "), "Other.plist"));
}

TEST_F(DatabaseFile, HasEveryForeignVersionWholeAfterKillsAtRandomMoments) {
    std::mt19937 random(20261121);
    std::uniform_int_distribution<useconds_t> moment(0, 6000);
    for (int round = 0; round < 150; ++round) {
        const std::string bytes = "foreign version " + std::to_string(round) + std::string(20000, 'x');
        replace(path(), bytes);
        const pid_t child = ::fork();
        if (child == 0) {
            const auto store = open();
            for (int count = 0;; ++count) {
                store->addSnippet(std::make_shared<Note>(count, QStringLiteral("own")));
                store->saveDB();
            }
        }
        ::usleep(moment(random));
        ASSERT_EQ(::kill(child, SIGKILL), 0);
        ASSERT_EQ(::waitpid(child, nullptr, 0), child);
        bool isThere = contentOf(path()) == bytes;
        std::size_t count = 0;
        for (const std::string& name : copies()) {
            if (name.starts_with(".vxkit-")) {
                ASSERT_TRUE(QFile::remove(path(QString::fromStdString(name))));
                continue;
            }
            ++count;
            const std::string content = contentOf(path(QString::fromStdString(name)));
            EXPECT_THAT(content, testing::StartsWith("foreign version ")) << name;
            isThere = isThere || content == bytes;
        }
        ASSERT_TRUE(isThere) << "round " << round;
        ASSERT_LE(count, 10U);
    }
}

TEST_F(DatabaseFile, RemovesWhatKilledSavesLeftLongAgoWhenItOpens) {
    const auto leave = [&](const char* name, int hours) {
        const QString file = path(QString::fromUtf8(name));
        replace(file, "half a fi");
        setModified(file, {::time(nullptr) - hours * 60 * 60, 0});
    };
    leave(".vxkit-aB3xYz", 25);
    leave(".vxkit-000000", 1000);
    leave(".vxkit-today0", 23);
    leave(".vxkit-longer7", 1000);
    leave(".vxkit-sh0rt", 1000);
    leave(".vxkit-a.b(c)", 1000);
    leave("a.vxkit-aB3xYz", 1000);
    leave("vxkit-aB3xYz", 1000);
    ASSERT_EQ(::symlink("nowhere", QFile::encodeName(path(QStringLiteral(".vxkit-a0link"))).constData()), 0);
    setModified(path(QStringLiteral(".vxkit-a0link")), {1000000, 0});
    ASSERT_TRUE(QDir().mkdir(path(QStringLiteral(".vxkit-folder"))));
    setModified(path(QStringLiteral(".vxkit-folder")), {1000000, 0});
    const auto store = open();
    EXPECT_THAT(copies(),
                testing::UnorderedElementsAre(".vxkit-today0", ".vxkit-longer7", ".vxkit-sh0rt", ".vxkit-a.b(c)",
                                              ".vxkit-a0link", ".vxkit-folder", "a.vxkit-aB3xYz", "vxkit-aB3xYz"));
}
