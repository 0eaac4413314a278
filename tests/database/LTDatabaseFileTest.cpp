// SPDX-License-Identifier: MIT
#include "TestRecords.h"

#include <VXKit/platform/foundation/AtomicFile.h>
#include <VXKit/platform/foundation/NSPropertyListSerialization.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <random>
#include <set>
#include <sys/stat.h>
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

namespace {

constexpr const char* foreign = "{ DBVersion = \"0.1\"; contents = ( { name = foreign; } ); }";

class DatabaseFile : public testing::Test {
protected:
    DatabaseFile() { NSUserDefaults::standardUserDefaults().setBool(true, "VXDBAutomaticSavingDisabled"); }

    [[nodiscard]] QString path(const QString& name) const { return folder.filePath(name); }
    [[nodiscard]] QString path() const { return path(QStringLiteral("Notes.plist")); }

    template <class Store = NotesDatabase>
    [[nodiscard]] static std::shared_ptr<Store> open(const QString& path) {
        auto store = LTDatabase::alloc<Store>();
        store->initWithFile(path);
        return store;
    }
    [[nodiscard]] std::shared_ptr<NotesDatabase> open() const { return open(path()); }

    /// A store that has read its file and written it once.
    [[nodiscard]] std::shared_ptr<NotesDatabase> saved() const {
        auto store = open();
        store->saveDB();
        return store;
    }

    static void change(LTDatabase& store, const char* name = "own") {
        store.addSnippet(std::make_shared<Note>(1.0, QString::fromUtf8(name)));
    }

    static std::string contentOf(const QString& file) { return VXReadFile(file, nullptr).value_or("<none>"); }

    /// Writes over the file, as many an editor does.
    static void writeInPlace(const QString& file, const std::string& bytes) {
        std::ofstream(QFile::encodeName(file).constData(), std::ios::binary) << bytes;
        ASSERT_EQ(contentOf(file), bytes);
    }
    /// Puts another file in its place, as others do.
    static void replace(const QString& file, const std::string& bytes) {
        ASSERT_TRUE(VXWriteFileAtomically(file, bytes, nullptr));
    }

    [[nodiscard]] static std::vector<std::string> namesIn(const QString& folder) {
        std::vector<std::string> names;
        for (const QString& name : QDir(folder).entryList(
                 QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name)) {
            names.push_back(name.toStdString());
        }
        return names;
    }

    /// What there is beside the file.
    [[nodiscard]] std::vector<std::string> copies() const {
        std::vector<std::string> names = namesIn(folder.path());
        std::erase(names, "Notes.plist");
        return names;
    }

    [[nodiscard]] std::string contentOfOnlyCopy() const {
        const std::vector<std::string> names = copies();
        return names.size() == 1 ? contentOf(path(QString::fromStdString(names.front()))) : "<not one copy>";
    }

    [[nodiscard]] std::vector<std::string> recordsIn(const QString& file) const {
        std::vector<std::string> names;
        const auto dictionary = NSDictionary::dictionaryWithContentsOfFile(file);
        for (const NSPropertyList& element : *dictionary->objectOfType<NSArray>("contents")) {
            names.push_back(*element.as<NSDictionary>()->objectOfType<std::string>("name"));
        }
        return names;
    }

    static void setModified(const QString& file, const timespec& time) {
        const timespec times[] = {{0, UTIME_OMIT}, time};
        ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(file).constData(), times, AT_SYMLINK_NOFOLLOW), 0);
    }

    /// How many bytes this process has read from files so far.
    static long bytesRead() {
        std::ifstream statistics("/proc/self/io");
        std::string name;
        long bytes = 0;
        statistics >> name >> bytes;
        EXPECT_EQ(name, "rchar:");
        return bytes;
    }

    static struct stat statusOf(const QString& file) {
        struct stat status {};
        EXPECT_EQ(::stat(QFile::encodeName(file).constData(), &status), 0);
        return status;
    }

    QTemporaryDir folder;
};

constexpr const char* changedElsewhere =
    R"(Notes \(changed elsewhere [0-9]+-[0-9]+-[0-9]+ [0-9]+\.[0-9]+\.[0-9]+(, [0-9]+)?\)\.plist)";

} // namespace

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
