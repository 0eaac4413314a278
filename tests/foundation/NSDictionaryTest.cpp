// SPDX-License-Identifier: MIT
#include "PropertyListTestSupport.h"

#include <QFile>
#include <QTemporaryDir>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>

using testing::HasSubstr;

namespace {

/// A folder of files for one test, and what the log said meanwhile.
class NSDictionaryFile : public testing::Test {
protected:
    QString path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    QString fileWith(std::string_view content, const char* name = "a.plist") const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(content.data(), static_cast<qint64>(content.size())), static_cast<qint64>(content.size()));
        return file.fileName();
    }

    static std::string contentOf(const QString& path) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll().toStdString();
    }

    /// Reads the dictionary at `path`, which must not be one, and answers what was logged.
    static std::string logOfFailedReading(const QString& path) {
        testing::internal::CaptureStderr();
        EXPECT_FALSE(NSDictionary::dictionaryWithContentsOfFile(path).has_value());
        std::string log = testing::internal::GetCapturedStderr();
        EXPECT_THAT(log, HasSubstr(path.toStdString()));
        return log;
    }

    static std::string logOfFailedWriting(const NSDictionary& dictionary, const QString& path, bool atomically) {
        testing::internal::CaptureStderr();
        EXPECT_FALSE(dictionary.writeToFile(path, atomically));
        std::string log = testing::internal::GetCapturedStderr();
        EXPECT_THAT(log, HasSubstr(path.toStdString()));
        return log;
    }

    QTemporaryDir m_folder;
};

} // namespace

TEST(NSDictionary, FindsReplacesAndRemovesObjects) {
    NSDictionary dictionary{{"a", 1}, {"b", "two"}, {"a", 3}};
    EXPECT_EQ(dictionary.count(), 2U);
    ASSERT_TRUE(dictionary.objectForKey("a"));
    EXPECT_EQ(*dictionary.objectForKey("a"), 3);
    EXPECT_FALSE(dictionary.objectForKey("A"));
    EXPECT_FALSE(dictionary.objectForKey(""));
    dictionary.setObject(false, "b");
    EXPECT_EQ(*dictionary.objectForKey("b"), false);
    dictionary.removeObjectForKey("a");
    dictionary.removeObjectForKey("none");
    EXPECT_EQ(dictionary, (NSDictionary{{"b", false}}));
    EXPECT_FALSE(dictionary.isEmpty());
    dictionary.removeObjectForKey("b");
    EXPECT_TRUE(dictionary.isEmpty());
}

TEST(NSDictionary, KeepsTheOrderInWhichKeysWereFirstSet) {
    NSDictionary dictionary{{"b", 1}, {"a", 2}};
    dictionary.setObject(3, "c");
    dictionary.setObject(4, "b");
    std::string keys;
    for (const NSDictionary::Entry& entry : dictionary) {
        keys += entry.key.text();
    }
    EXPECT_EQ(keys, "bac");
}

TEST(NSDictionary, GivesAnObjectOfTheTypeAskedForOnly) {
    const NSDictionary dictionary{{"title", "text"}, {"order", 2}};
    ASSERT_TRUE(dictionary.objectOfType<std::string>("title"));
    EXPECT_EQ(*dictionary.objectOfType<std::string>("title"), "text");
    EXPECT_FALSE(dictionary.objectOfType<std::string>("order"));
    EXPECT_FALSE(dictionary.objectOfType<std::string>("none"));
}

TEST(NSDictionary, EqualityDisregardsOrderButNothingElse) {
    const NSDictionary dictionary{{"a", 1}, {"b", 2}, {"c", 3}};
    EXPECT_EQ(dictionary, (NSDictionary{{"c", 3}, {"a", 1}, {"b", 2}}));
    EXPECT_FALSE(dictionary == (NSDictionary{{"c", 3}, {"a", 1}, {"b", 1}}));
    EXPECT_FALSE(dictionary == (NSDictionary{{"a", 1}, {"b", 2}, {"d", 3}}));
    EXPECT_FALSE(dictionary == (NSDictionary{{"a", 1}, {"b", 2}}));
    EXPECT_EQ(NSDictionary(), NSDictionary());
}

TEST(NSDictionary, CopiesAreIndependentAndMovesLeaveNothing) {
    NSDictionary original{{"a", NSArray{1}}};
    NSDictionary copy = original;
    copy.setObject(2, "a");
    EXPECT_EQ(original, (NSDictionary{{"a", NSArray{1}}}));
    const NSDictionary moved = std::move(original);
    EXPECT_EQ(moved, (NSDictionary{{"a", NSArray{1}}}));
}

TEST_F(NSDictionaryFile, ReadsAndWritesBothWays) {
    const NSDictionary dictionary{{"title", "é"}, {"list", NSArray{1, 2.5, true}}};
    for (const bool atomically : {false, true}) {
        // Longer than what is written over it, so that nothing of it may be left.
        const QString file = fileWith(std::string(10000, 'x'));
        EXPECT_TRUE(dictionary.writeToFile(file, atomically));
        EXPECT_EQ(contentOf(file), xmlOf(dictionary));
        EXPECT_EQ(NSDictionary::dictionaryWithContentsOfFile(file), dictionary);
        EXPECT_TRUE(dictionary.writeToFile(path(atomically ? "new-a" : "new-b"), atomically));
    }
}

TEST_F(NSDictionaryFile, ReadsEveryForm) {
    BinaryFile binary;
    const std::size_t key = binary.add("\x51k");
    const NSDictionary expected{{"k", "k"}};
    EXPECT_EQ(NSDictionary::dictionaryWithContentsOfFile(fileWith(binary.bytes(binary.addContainer('D', {key, key})))),
              expected);
    EXPECT_EQ(NSDictionary::dictionaryWithContentsOfFile(fileWith("{ k; }")), expected);
    EXPECT_EQ(NSDictionary::dictionaryWithContentsOfFile(fileWith(xmlOf(expected))), expected);
}

TEST_F(NSDictionaryFile, LogsWhyAFileCannotBeRead) {
    EXPECT_THAT(logOfFailedReading(path("none.plist")), HasSubstr("No such file"));
    EXPECT_THAT(logOfFailedReading(fileWith("")), HasSubstr("line 1: the text holds no value"));
    EXPECT_THAT(logOfFailedReading(fileWith("{ a = b;\n c")), HasSubstr("line 2"));
    EXPECT_THAT(logOfFailedReading(fileWith("( a )")), HasSubstr("another kind of value"));
    EXPECT_THAT(logOfFailedReading(fileWith(xmlDocument("<string>a</string>"))), HasSubstr("another kind of value"));
    EXPECT_THAT(logOfFailedReading(fileWith("bplist00 and nothing else")), HasSubstr("byte "));
    EXPECT_THAT(logOfFailedReading(m_folder.path()), HasSubstr("Is a directory"));
}

TEST_F(NSDictionaryFile, DoesNotWaitForAPipe) {
    ASSERT_EQ(::mkfifo(QFile::encodeName(path("pipe")).constData(), 0600), 0);
    logOfFailedReading(path("pipe"));
    logOfFailedWriting({{"a", 1}}, path("pipe"), false);
    logOfFailedWriting({{"a", 1}}, path("pipe"), true);
}

TEST_F(NSDictionaryFile, LogsAFileThatMayNotBeRead) {
    if (::geteuid() == 0) {
        // Root may read every file, but not this one: its first page is not mapped.
        logOfFailedReading(QStringLiteral("/proc/self/mem"));
        return;
    }
    const QString file = fileWith("{ a; }");
    ASSERT_EQ(::chmod(QFile::encodeName(file).constData(), 0), 0);
    EXPECT_THAT(logOfFailedReading(file), HasSubstr("Permission denied"));
}

TEST_F(NSDictionaryFile, LeavesTheFileAloneWhenTheDictionaryCannotBeWritten) {
    const QString file = fileWith("old");
    for (const bool atomically : {false, true}) {
        EXPECT_THAT(logOfFailedWriting({{"body", "\x1B"}}, file, atomically), HasSubstr("body: "));
        EXPECT_EQ(contentOf(file), "old");
    }
}

TEST_F(NSDictionaryFile, LogsWhereAFileCannotBeWritten) {
    for (const bool atomically : {false, true}) {
        logOfFailedWriting({{"a", 1}}, path("no/such/folder/a.plist"), atomically);
        logOfFailedWriting({{"a", 1}}, m_folder.path(), atomically);
        testing::internal::CaptureStderr();
        EXPECT_FALSE((NSDictionary{{"a", 1}}).writeToFile(QString(), atomically));
        EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("Cannot write"));
    }
}

TEST_F(NSDictionaryFile, TellsWhenTheDiskIsFull) {
    ASSERT_NE(::signal(SIGXFSZ, SIG_IGN), SIG_ERR);
    const NSDictionary dictionary{{"a", std::string(1000, 'a')}};
    rlimit unlimited{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &unlimited), 0);
    const rlimit limited{100, unlimited.rlim_max};
    // The limit stands in for a full disk; it holds for the captured log too, so only what is returned is looked at.
    testing::internal::CaptureStderr();
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limited), 0);
    const bool inPlace = dictionary.writeToFile(path("a.plist"), false);
    const bool atomic = dictionary.writeToFile(path("b.plist"), true);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &unlimited), 0);
    static_cast<void>(testing::internal::GetCapturedStderr());
    EXPECT_FALSE(inPlace);
    EXPECT_FALSE(atomic);
    EXPECT_FALSE(QFile::exists(path("b.plist")));
}
