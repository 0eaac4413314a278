// SPDX-License-Identifier: MIT
#include "DatabaseFileHost.h"

#include <QFileInfo>

#include <set>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;
using testing::SizeIs;

TEST_F(DatabaseFile, CopiesWhereTheSystemDoesNotAllowALink) {
    std::ifstream setting("/proc/sys/fs/protected_hardlinks");
    int isProtected = 0;
    setting >> isProtected;
    if (isProtected != 1 || ::geteuid() != 0) {
        GTEST_SKIP() << "every file may be linked here";
    }
    replace(path(), "{ DBVersion = \"9\"; contents = (); }");
    ASSERT_EQ(::chmod(QFile::encodeName(path()).constData(), 0444), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(folder.path()).constData(), 0777), 0);
    const ino_t inode = statusOf(path()).st_ino;
    const pid_t child = ::fork();
    if (child == 0) {
        if (::seteuid(65534) != 0) {
            ::_exit(2);
        }
        open()->saveDB();
        ::_exit(0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(contentOfOnlyCopy(), "{ DBVersion = \"9\"; contents = (); }");
    EXPECT_THAT(recordsIn(path()), IsEmpty());
    const struct stat copy = statusOf(path(QString::fromStdString(copies().at(0))));
    EXPECT_NE(copy.st_ino, inode);
    EXPECT_EQ(copy.st_mode & 07777, 0444U);
}

TEST_F(DatabaseFile, KeepsTheVeryFileThatItReplacedWithAllThatIsStillWrittenToIt) {
    const auto store = saved();
    const int editor = ::open(QFile::encodeName(path()).constData(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    ASSERT_GE(editor, 0);
    ASSERT_EQ(::write(editor, "first half", 10), 10);
    change(*store);
    store->saveDB();
    ASSERT_EQ(::write(editor, ", second half", 13), 13);
    ASSERT_EQ(::close(editor), 0);
    EXPECT_EQ(contentOfOnlyCopy(), "first half, second half");
    EXPECT_THAT(recordsIn(path()), ElementsAre("own"));
}

TEST_F(DatabaseFile, GivesCopiesOfOneSecondNamesOfTheirOwn) {
    const auto store = saved();
    for (const char* text : {"a", "b", "c", "d"}) {
        replace(path(), text);
        change(*store);
        store->saveDB();
    }
    EXPECT_THAT(copies(), AllOf(SizeIs(4), Each(MatchesRegex(changedElsewhere))));
    std::set<std::string> contents;
    for (const std::string& name : copies()) {
        contents.insert(contentOf(path(QString::fromStdString(name))));
    }
    EXPECT_THAT(contents, ElementsAre("a", "b", "c", "d"));
}

TEST_F(DatabaseFile, KeepsTheTenNewestCopies) {
    const auto store = saved();
    for (int number = 0; number < 25; ++number) {
        replace(path(), std::to_string(number));
        change(*store);
        store->saveDB();
        EXPECT_EQ(copies().size(), std::size_t(std::min(number + 1, 10)));
    }
    std::set<int> contents;
    for (const std::string& name : copies()) {
        contents.insert(std::stoi(contentOf(path(QString::fromStdString(name)))));
    }
    EXPECT_THAT(contents, ElementsAre(15, 16, 17, 18, 19, 20, 21, 22, 23, 24));
}

TEST_F(DatabaseFile, CountsCopiesOfEveryReasonTogetherAndRemovesTheOldestByItsName) {
    for (int day = 10; day < 30; ++day) {
        const QString reason = day % 3 == 0   ? QStringLiteral("changed elsewhere")
                               : day % 3 == 1 ? QStringLiteral("unreadable")
                                              : QStringLiteral("version 0.%1").arg(day);
        replace(path(QStringLiteral("Notes (%1 2001-01-%2 00.00.00).plist").arg(reason).arg(day)), "old");
    }
    replace(path(), "{ DBVersion = \"0.2\"; contents = (); }");
    open()->saveDB();
    EXPECT_THAT(copies(), SizeIs(10));
    EXPECT_THAT(copies(), Contains("Notes (version 0.29 2001-01-29 00.00.00).plist"));
    EXPECT_THAT(copies(), Contains("Notes (changed elsewhere 2001-01-21 00.00.00).plist"));
    EXPECT_THAT(copies(), Not(Contains(HasSubstr("2001-01-20"))));
}

TEST_F(DatabaseFile, KeepsTheCopyThatItJustMadeWhateverTheClockSaysOfTheOthers) {
    for (int day = 10; day < 20; ++day) {
        replace(path(QStringLiteral("Notes (unreadable 2999-01-%1 00.00.00).plist").arg(day)), "later");
    }
    replace(path(), "just now");
    open()->saveDB();
    ASSERT_THAT(copies(), SizeIs(10));
    EXPECT_THAT(copies(), Not(Contains(HasSubstr("2999-01-10"))));
    EXPECT_EQ(contentOf(path(QString::fromStdString(copies().front()))), "just now");
}

TEST_F(DatabaseFile, RemovesNothingThatIsNotExactlyACopyOfItsOwn) {
    const std::vector<std::string> others = {
        "Notes.plist.bak",
        "Notes (changed elsewhere).plist",
        "Notes (changed elsewhere 2001-01-01 00.00.00)",
        "Notes (changed elsewhere 2001-01-01 00.00.00).plist.txt",
        "Notes (changed elsewhere 2001-01-01 00.00.00).txt",
        "Notes (changed elsewhere 2001-01-01 00:00:00).plist",
        "Notes (changed elsewhere 2001-01-01 00.00.00, 0).plist",
        "Notes (changed elsewhere 2001-01-01 00.00.00 2).plist",
        "Notes (changed elsewhere 2001-1-1 00.00.00).plist",
        "Notes (Changed elsewhere 2001-01-01 00.00.00).plist",
        "Notes (changed  elsewhere 2001-01-01 00.00.00).plist",
        "Notes (changed elsewhere 2001-01-01 00.00.00\n).plist",
        "Notes (of mine 2001-01-01 00.00.00).plist",
        "Notes (unreadable 2001-01-01 00.00.00) (unreadable 2001-01-01 00.00.00).plist",
        "Notes (version of mine 2001-01-01 00.00.00).plist",
        "Notes (version 2001-01-01 00.00.00).plist",
        "Notes 2 (unreadable 2001-01-01 00.00.00).plist",
        "My Notes (unreadable 2001-01-01 00.00.00).plist",
        "notes (unreadable 2001-01-01 00.00.00).plist",
        "Notes(unreadable 2001-01-01 00.00.00).plist",
        "(unreadable 2001-01-01 00.00.00).plist",
    };
    for (const std::string& name : others) {
        replace(path(QString::fromStdString(name)), "kept");
    }
    const QString link = path(QStringLiteral("Notes (unreadable 2001-01-02 00.00.00).plist"));
    ASSERT_TRUE(QFile::link(path(QStringLiteral("Notes.plist.bak")), link));
    const QString directory = path(QStringLiteral("Notes (unreadable 2001-01-03 00.00.00).plist"));
    ASSERT_TRUE(QDir().mkdir(directory));
    const auto store = saved();
    for (int number = 0; number < 12; ++number) {
        replace(path(), std::to_string(number));
        change(*store);
        store->saveDB();
    }
    for (const std::string& name : others) {
        EXPECT_EQ(contentOf(path(QString::fromStdString(name))), "kept") << name;
    }
    EXPECT_TRUE(QFileInfo(link).isSymLink());
    EXPECT_TRUE(QFileInfo(directory).isDir());
    EXPECT_EQ(copies().size(), others.size() + 2 + 10);
}

TEST_F(DatabaseFile, SetsAsideBesideWhatALinkLeadsTo) {
    const QString target = path(QStringLiteral("elsewhere/Real.plist"));
    ASSERT_TRUE(QDir(folder.path()).mkpath(QStringLiteral("elsewhere")));
    replace(target, "unreadable {");
    ASSERT_TRUE(QFile::link(QStringLiteral("elsewhere/Real.plist"), path()));
    const auto store = open();
    store->saveDB();
    replace(target, foreign);
    change(*store);
    store->saveDB();
    EXPECT_TRUE(QFileInfo(path()).isSymLink());
    EXPECT_THAT(recordsIn(target), ElementsAre("own"));
    EXPECT_THAT(copies(), ElementsAre("elsewhere"));
    EXPECT_THAT(namesIn(QFileInfo(target).path()),
                ElementsAre(MatchesRegex(R"(Real \(changed elsewhere .*\)\.plist)"),
                            MatchesRegex(R"(Real \(unreadable .*\)\.plist)"), "Real.plist"));
}

TEST_F(DatabaseFile, NoticesALinkThatWasTurnedElsewhere) {
    replace(path(QStringLiteral("a.plist")), "{ DBVersion = \"0.1\"; contents = ( { name = a; } ); }");
    replace(path(QStringLiteral("b.plist")), "{ DBVersion = \"0.1\"; contents = ( { name = b; } ); }");
    ASSERT_TRUE(QFile::link(QStringLiteral("a.plist"), path()));
    const auto store = open();
    store->saveDB();
    ASSERT_TRUE(QFile::remove(path()));
    ASSERT_TRUE(QFile::link(QStringLiteral("b.plist"), path()));
    change(*store);
    store->saveDB();
    EXPECT_THAT(recordsIn(path(QStringLiteral("a.plist"))), ElementsAre("a"));
    EXPECT_THAT(recordsIn(path(QStringLiteral("b.plist"))), ElementsAre("a", "own"));
    EXPECT_THAT(copies(), Contains(HasSubstr("b (changed elsewhere ")));
}

TEST_F(DatabaseFile, FindsNamesOfEveryKindForItsCopies) {
    const QString longName = QString(84, QChar(u'é')) + QString(80, QChar(u'x'));
    const std::vector<std::pair<QString, QString>> names = {
        {QStringLiteral("Schnipsel für 日本.plist"), QStringLiteral("Schnipsel für 日本 (unreadable ")},
        {QStringLiteral("Notes"), QStringLiteral("Notes (unreadable ")},
        {QStringLiteral(".notes"), QStringLiteral(".notes (unreadable ")},
        {QStringLiteral("a.b.plist"), QStringLiteral("a.b (unreadable ")},
        {QStringLiteral("ends."), QStringLiteral("ends (unreadable ")},
        {QStringLiteral("50% [x] (y).plist"), QStringLiteral("50% [x] (y) (unreadable ")},
        {longName + QStringLiteral(".plist"), QString(64, QChar(u'é')) + QStringLiteral(" (unreadable ")},
        {QStringLiteral("x.") + QString(240, QChar(u'y')),
         QStringLiteral("x.") + QString(133, QChar(u'y')) + QLatin1String(" (")},
    };
    for (const auto& [name, beginning] : names) {
        const QTemporaryDir place;
        const QString file = place.filePath(name);
        const auto store = open(file);
        for (int round = 0; round < 12; ++round) {
            replace(file, "{");
            open(file)->saveDB();
        }
        std::vector<std::string> others = namesIn(place.path());
        std::erase(others, name.toStdString());
        EXPECT_THAT(others, AllOf(SizeIs(10), Each(testing::StartsWith(beginning.toStdString()))))
            << name.toStdString();
    }
}

TEST_F(DatabaseFile, SavesAlsoWhereNothingCanBeSetAside) {
    const auto store = saved();
    replace(path(), foreign);
    // Every name that the copy could have in the next minutes is taken, so that none is left for it.
    const QDateTime now = QDateTime::currentDateTime();
    for (int second = 0; second < 20; ++second) {
        const QString time = now.addSecs(second).toString(QStringLiteral("yyyy-MM-dd HH.mm.ss"));
        for (int number = 1; number <= 1000; ++number) {
            const QString name = QStringLiteral("Notes (changed elsewhere %1%2).plist")
                                     .arg(time, number == 1 ? QString() : QStringLiteral(", %1").arg(number));
            ASSERT_EQ(::symlink("nowhere", QFile::encodeName(path(name)).constData()), 0);
        }
    }
    change(*store);
    testing::internal::CaptureStderr();
    store->saveDB();
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("could not be set aside"));
    EXPECT_FALSE(store->_dirty);
    EXPECT_THAT(recordsIn(path()), ElementsAre("own"));
}
