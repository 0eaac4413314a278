// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSPropertyListSerialization.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <limits>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

class NSUserDefaultsTest : public testing::Test {
protected:
    [[nodiscard]] QString pathOf(const char* name) const { return m_folder.filePath(QString::fromUtf8(name)); }
    [[nodiscard]] QString path() const { return pathOf("settings.plist"); }

    [[nodiscard]] QStringList fileNames() const {
        return QDir(m_folder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

    static QByteArray contentOf(const QString& path) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
        return file.readAll();
    }

    static void write(const QString& path, const QByteArray& content) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(content), content.size());
    }

    static NSDictionary dictionaryIn(const QString& path) {
        NSError error;
        const auto content = NSPropertyListSerialization::propertyListWithContentsOfFile(path, nullptr, &error);
        EXPECT_TRUE(content && content->as<NSDictionary>()) << error.localizedDescription.toStdString();
        return content && content->as<NSDictionary>() ? *content->as<NSDictionary>() : NSDictionary();
    }

    /// Runs `work` in a process of its own, which it ends by its result.
    static pid_t startProcess(const std::function<bool()>& work) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::_exit(work() ? 0 : 1);
        }
        return child;
    }

    static bool succeeded(pid_t child) {
        int status = -1;
        return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

private:
    QTemporaryDir m_folder;
};

} // namespace

TEST_F(NSUserDefaultsTest, AnswersNothingForAbsentKeys) {
    const NSUserDefaults defaults(path());
    EXPECT_FALSE(defaults.objectForKey("absent"));
    EXPECT_FALSE(defaults.boolForKey("absent"));
    EXPECT_EQ(defaults.integerForKey("absent"), 0);
    EXPECT_EQ(defaults.doubleForKey("absent"), 0.0);
    EXPECT_TRUE(defaults.stringForKey("absent").isNull());
    EXPECT_FALSE(defaults.arrayForKey("absent"));
    EXPECT_FALSE(defaults.dictionaryForKey("absent"));
}

TEST_F(NSUserDefaultsTest, KeepsExactTypesInTheFile) {
    const NSArray doubles{0.1, -0.0, 1e300, 1732147200.123456, 3.0};
    const NSDictionary values{
        {"true", true},
        {"false", false},
        {"one", 1},
        {"zero", 0},
        {"real one", 1.0},
        {"tenth", 0.1},
        {"least", std::numeric_limits<std::int64_t>::min()},
        {"greatest", std::numeric_limits<std::uint64_t>::max()},
        {"string", "Grüße"},
        {"empty", ""},
        {"date", NSDate::dateWithTimeIntervalSince1970(1795176000)},
        {"data", NSData{0, 255, 1}},
        {"doubles", doubles},
        {"nothing", NSArray()},
        {"nested", NSDictionary{{"a/b", NSArray{true, 1, 1.0}}}},
    };
    {
        NSUserDefaults defaults(path());
        for (const NSDictionary::Entry& entry : values) {
            defaults.setObject(entry.object, entry.key.text());
        }
        ASSERT_TRUE(defaults.synchronize());
    }
    EXPECT_EQ(dictionaryIn(path()), values);

    // Another process starts without what this one has in memory.
    EXPECT_TRUE(succeeded(startProcess([&] {
        QFile::copy(path(), pathOf("copy.plist"));
        const NSUserDefaults defaults(pathOf("copy.plist"));
        return std::all_of(values.begin(), values.end(), [&](const NSDictionary::Entry& entry) {
            return defaults.objectForKey(entry.key.text()) == std::optional(entry.object);
        });
    })));
}

TEST_F(NSUserDefaultsTest, ReadsValuesByType) {
    NSUserDefaults defaults(path());
    defaults.setBool(true, "bool");
    defaults.setInteger(-7, "integer");
    defaults.setDouble(2.75, "double");
    defaults.setObject("YES", "string");
    defaults.setObject("", "empty");
    defaults.setObject(NSArray{1, 2}, "array");
    defaults.setObject(NSDictionary{{"a", 1}}, "dictionary");

    EXPECT_EQ(defaults.objectForKey("bool"), NSPropertyList(true));
    EXPECT_TRUE(defaults.boolForKey("bool"));
    EXPECT_EQ(defaults.integerForKey("bool"), 1);
    EXPECT_EQ(defaults.integerForKey("integer"), -7);
    EXPECT_EQ(defaults.stringForKey("integer"), QStringLiteral("-7"));
    EXPECT_EQ(defaults.doubleForKey("double"), 2.75);
    EXPECT_EQ(defaults.integerForKey("double"), 2);
    EXPECT_TRUE(defaults.boolForKey("string"));
    EXPECT_EQ(defaults.stringForKey("string"), QStringLiteral("YES"));
    EXPECT_FALSE(defaults.stringForKey("empty").isNull());
    EXPECT_TRUE(defaults.stringForKey("empty").isEmpty());
    EXPECT_EQ(defaults.arrayForKey("array"), (NSArray{1, 2}));
    EXPECT_TRUE(defaults.stringForKey("array").isNull());
    EXPECT_FALSE(defaults.arrayForKey("dictionary"));
    EXPECT_EQ(defaults.dictionaryForKey("dictionary"), (NSDictionary{{"a", 1}}));
    EXPECT_FALSE(defaults.boolForKey("dictionary"));
}

TEST_F(NSUserDefaultsTest, KeepsEveryKeyAsItIs) {
    const std::vector<std::string> keys{"",    "/",    "//",  "a/b",  "a//b",        "/a",  "a/",   "a",
                                        "A",   "ä",    "%",   "%2F",  "%252F",       "a%b", "100%", "General",
                                        "a b", "a\\b", "a=b", "a\tb", "Schlüssel 😀", "..",  "[x]",  "@Size()"};
    {
        NSUserDefaults defaults(path());
        for (std::size_t index = 0; index < keys.size(); ++index) {
            defaults.setInteger(static_cast<std::int64_t>(index), keys[index]);
        }
        ASSERT_TRUE(defaults.synchronize());
    }
    const NSDictionary stored = dictionaryIn(path());
    EXPECT_EQ(stored.count(), keys.size());
    QFile::rename(path(), pathOf("renamed.plist"));
    const NSUserDefaults defaults(pathOf("renamed.plist"));
    for (std::size_t index = 0; index < keys.size(); ++index) {
        const auto* number = stored.objectOfType<std::int64_t>(keys[index]);
        ASSERT_TRUE(number) << keys[index];
        EXPECT_EQ(*number, static_cast<std::int64_t>(index)) << keys[index];
        EXPECT_EQ(defaults.integerForKey(keys[index]), static_cast<std::int64_t>(index)) << keys[index];
    }
}

TEST_F(NSUserDefaultsTest, RemovingAKeyLeavesTheOneItBegins) {
    NSUserDefaults defaults(path());
    defaults.setBool(true, "a");
    defaults.setBool(true, "a/b");
    defaults.removeObjectForKey("a");
    EXPECT_FALSE(defaults.objectForKey("a"));
    EXPECT_TRUE(defaults.objectForKey("a/b"));
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_EQ(dictionaryIn(path()), (NSDictionary{{"a/b", true}}));
    defaults.removeObjectForKey("never there");
}

TEST_F(NSUserDefaultsTest, AsksRegisteredValuesLastAndNeverWritesThem) {
    NSUserDefaults defaults(path());
    defaults.registerDefaults({{"color", "red"}, {"size", 3}});
    defaults.registerDefaults({{"size", 4}});
    EXPECT_EQ(defaults.stringForKey("color"), QStringLiteral("red"));
    EXPECT_EQ(defaults.integerForKey("size"), 4);
    defaults.setObject("blue", "color");
    EXPECT_EQ(defaults.stringForKey("color"), QStringLiteral("blue"));
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_EQ(dictionaryIn(path()), (NSDictionary{{"color", "blue"}}));
    defaults.removeObjectForKey("color");
    EXPECT_EQ(defaults.stringForKey("color"), QStringLiteral("red"));
}

TEST_F(NSUserDefaultsTest, RefusesWhatTheFileCannotHold) {
    NSUserDefaults defaults(path());
    defaults.setObject("fine", "key");
    testing::internal::CaptureStderr();
    defaults.setObject("\x01", "key");
    defaults.setObject(NSArray{"\xFF"}, "other");
    defaults.setObject("fine", "key\x02");
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 3) << log;
    EXPECT_EQ(defaults.stringForKey("key"), QStringLiteral("fine"));
    EXPECT_FALSE(defaults.objectForKey("other"));
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(dictionaryIn(path()), (NSDictionary{{"key", "fine"}}));
}

TEST_F(NSUserDefaultsTest, TellsItsPath) {
    EXPECT_EQ(NSUserDefaults(path()).path(), path());
}

TEST_F(NSUserDefaultsTest, MakesTheFolderOfItsFile) {
    NSUserDefaults defaults(pathOf("new/folder/settings.plist"));
    defaults.setBool(true, "key");
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_TRUE(QFile::exists(pathOf("new/folder/settings.plist")));
}

TEST_F(NSUserDefaultsTest, WritesNothingWithoutAChange) {
    NSUserDefaults defaults(path());
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_TRUE(fileNames().isEmpty());
}

TEST_F(NSUserDefaultsTest, WritesWhenItGoes) {
    NSUserDefaults(path()).setBool(true, "key");
    EXPECT_EQ(dictionaryIn(path()), (NSDictionary{{"key", true}}));
}

TEST_F(NSUserDefaultsTest, IsWrittenByTheEventLoop) {
    int count = 1;
    char name[] = "test";
    char* arguments[] = {name, nullptr};
    const QCoreApplication application(count, arguments);
    NSUserDefaults defaults(path());
    defaults.setBool(true, "key");
    EXPECT_TRUE(QTest::qWaitFor([&] { return QFile::exists(path()); }, 20'000));
    EXPECT_EQ(dictionaryIn(path()), (NSDictionary{{"key", true}}));
}

TEST_F(NSUserDefaultsTest, SharesOneFileBetweenTwoObjects) {
    NSUserDefaults first(path());
    NSUserDefaults second(path());
    first.setInteger(1, "first");
    second.setInteger(2, "second");
    EXPECT_EQ(second.integerForKey("first"), 1);
    EXPECT_TRUE(first.synchronize());
    EXPECT_TRUE(second.synchronize());
    EXPECT_EQ(dictionaryIn(path()), (NSDictionary{{"first", 1}, {"second", 2}}));
}

TEST_F(NSUserDefaultsTest, ReadsFromMemoryUntilItSynchronizes) {
    NSUserDefaults defaults(path());
    defaults.setInteger(1, "key");
    ASSERT_TRUE(defaults.synchronize());
    ASSERT_TRUE(succeeded(startProcess([&] {
        NSUserDefaults other(path());
        other.setInteger(2, "key");
        return other.synchronize();
    })));
    EXPECT_EQ(defaults.integerForKey("key"), 1);
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(defaults.integerForKey("key"), 2);
}

TEST_F(NSUserDefaultsTest, KeepsTheChangesOfTwoProcessesThatWriteAtOnce) {
    constexpr int rounds = 40;
    const auto writer = [&](const char* key) {
        return [this, key] {
            NSUserDefaults defaults(path());
            for (int round = 1; round <= rounds; ++round) {
                defaults.setInteger(round, std::string(key) + std::to_string(round % 4));
                if (!defaults.synchronize()) {
                    return false;
                }
            }
            return true;
        };
    };
    const pid_t first = startProcess(writer("first/"));
    const pid_t second = startProcess(writer("second/"));
    EXPECT_TRUE(succeeded(first));
    EXPECT_TRUE(succeeded(second));
    const NSDictionary expected{{"first/0", 40},  {"first/1", 37},  {"first/2", 38},  {"first/3", 39},
                                {"second/0", 40}, {"second/1", 37}, {"second/2", 38}, {"second/3", 39}};
    EXPECT_EQ(dictionaryIn(path()), expected);
    EXPECT_EQ(fileNames(), QStringList(QStringLiteral("settings.plist")));
}

TEST_F(NSUserDefaultsTest, NeverGivesTwoContentsTheSameTime) {
    // By size and time, to the millisecond, other processes tell whether the file changed. A time that the clock has
    // not reached yet makes sure that the clock alone does not keep them apart.
    NSUserDefaults defaults(path());
    defaults.setInteger(1, "key");
    ASSERT_TRUE(defaults.synchronize());
    const QDateTime future = QDateTime::currentDateTime().addSecs(3600);
    {
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(future, QFileDevice::FileModificationTime));
    }
    for (int round = 1; round <= 3; ++round) {
        defaults.setInteger(round + 1, "key");
        ASSERT_TRUE(defaults.synchronize());
        EXPECT_EQ(QFileInfo(path()).lastModified(), future.addMSecs(round));
    }
}

TEST_F(NSUserDefaultsTest, KeepsTheOldFileWhenTheDiskIsFull) {
    NSUserDefaults(path()).setObject("old", "key");
    const QByteArray old = contentOf(path());
    for (const rlim_t limit : {rlim_t{0}, rlim_t{600}}) {
        EXPECT_TRUE(succeeded(startProcess([&] {
            std::signal(SIGXFSZ, SIG_IGN);
            NSUserDefaults defaults(path());
            defaults.setObject(std::string(100'000, 'x'), "key");
            rlimit size{};
            ::getrlimit(RLIMIT_FSIZE, &size);
            const rlimit full{limit, size.rlim_max};
            ::setrlimit(RLIMIT_FSIZE, &full);
            const bool failedTwice = !defaults.synchronize() && !defaults.synchronize();
            const bool oldStands = contentOf(path()) == old;
            const bool staysInMemory = defaults.stringForKey("key").size() == 100'000;
            const bool leavesNothing = fileNames() == QStringList(QStringLiteral("settings.plist"));
            return failedTwice && oldStands && staysInMemory && leavesNothing;
        }))) << limit;
        EXPECT_EQ(contentOf(path()), old);
    }
}

TEST_F(NSUserDefaultsTest, WritesOnceThereIsRoomAgain) {
    EXPECT_TRUE(succeeded(startProcess([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        NSUserDefaults defaults(path());
        defaults.setObject(std::string(100'000, 'x'), "key");
        rlimit size{};
        ::getrlimit(RLIMIT_FSIZE, &size);
        const rlimit full{600, size.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &full);
        const bool failed = !defaults.synchronize();
        ::setrlimit(RLIMIT_FSIZE, &size);
        return failed && defaults.synchronize() && defaults.synchronize();
    })));
    EXPECT_EQ(dictionaryIn(path()), (NSDictionary{{"key", std::string(100'000, 'x')}}));
}

TEST_F(NSUserDefaultsTest, ReportsAFileThatCannotBeMade) {
    write(pathOf("file"), "no folder");
    NSUserDefaults defaults(pathOf("file/settings.plist"));
    defaults.setBool(true, "key");
    EXPECT_FALSE(defaults.synchronize());
    EXPECT_TRUE(defaults.boolForKey("key"));
}

TEST_F(NSUserDefaultsTest, LeavesAFolderInThePlaceOfItsFileAlone) {
    ASSERT_TRUE(QDir().mkdir(path()));
    NSUserDefaults defaults(path());
    EXPECT_FALSE(defaults.objectForKey("key"));
    defaults.setBool(true, "key");
    EXPECT_FALSE(defaults.synchronize());
    EXPECT_TRUE(defaults.boolForKey("key"));
    EXPECT_TRUE(QFileInfo(path()).isDir());
}

TEST_F(NSUserDefaultsTest, ReadsADamagedFileAsEmptyAndKeepsItAside) {
    for (const QByteArray damaged : {"<plist>", "\xFF\xFE garbage", "<plist version=\"1.0\"><array/></plist>"}) {
        const QString path = pathOf("damaged.plist");
        write(path, damaged);
        testing::internal::CaptureStderr();
        NSUserDefaults defaults(path);
        EXPECT_NE(testing::internal::GetCapturedStderr().find("damaged.plist"), std::string::npos);
        EXPECT_FALSE(defaults.objectForKey("key"));
        EXPECT_TRUE(defaults.synchronize());
        EXPECT_EQ(contentOf(path), damaged);

        defaults.setBool(true, "key");
        EXPECT_TRUE(defaults.synchronize());
        EXPECT_EQ(dictionaryIn(path), (NSDictionary{{"key", true}}));
        EXPECT_EQ(contentOf(path + QStringLiteral(".damaged")), damaged);
        QFile::remove(path + QStringLiteral(".damaged"));
    }
}

TEST_F(NSUserDefaultsTest, KeepsEveryDamagedFile) {
    for (const QByteArray damaged : {"first", "second"}) {
        write(path(), "<" + damaged);
        NSUserDefaults(path()).setBool(true, "key");
    }
    EXPECT_EQ(contentOf(pathOf("settings.plist.damaged")), "<first");
    EXPECT_EQ(contentOf(pathOf("settings.plist.damaged-2")), "<second");
}

TEST_F(NSUserDefaultsTest, KeepsAFileAsideThatIsDamagedWhileItRuns) {
    NSUserDefaults defaults(path());
    defaults.setInteger(1, "old");
    ASSERT_TRUE(defaults.synchronize());
    write(path(), "<damaged");
    defaults.setInteger(2, "new");
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(dictionaryIn(path()), (NSDictionary{{"new", 2}}));
    EXPECT_EQ(contentOf(pathOf("settings.plist.damaged")), "<damaged");
}

TEST_F(NSUserDefaultsTest, FollowsALinkToItsFile) {
    write(pathOf("real.plist"), "<plist version=\"1.0\"><dict><key>a</key><integer>1</integer></dict></plist>");
    ASSERT_TRUE(QFile::link(QStringLiteral("real.plist"), path()));
    NSUserDefaults defaults(path());
    EXPECT_EQ(defaults.integerForKey("a"), 1);
    defaults.setInteger(2, "a");
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_TRUE(QFileInfo(path()).isSymbolicLink());
    EXPECT_EQ(dictionaryIn(pathOf("real.plist")), (NSDictionary{{"a", 2}}));
}

TEST_F(NSUserDefaultsTest, StandardOnesLieInTheConfigurationFolder) {
    qputenv("XDG_CONFIG_HOME", pathOf("config").toUtf8());
    QCoreApplication::setOrganizationName(QStringLiteral("Some/Body"));
    QCoreApplication::setApplicationName(QStringLiteral("Notes"));
    NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
    EXPECT_EQ(defaults.path(), pathOf("config/Some_Body/Notes.plist"));
    EXPECT_EQ(&defaults, &NSUserDefaults::standardUserDefaults());
    defaults.setBool(true, "key");
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(dictionaryIn(defaults.path()), (NSDictionary{{"key", true}}));
}

TEST_F(NSUserDefaultsTest, StandardOnesAreNamedAfterTheApplicationWithoutAnOrganization) {
    qputenv("XDG_CONFIG_HOME", pathOf("config").toUtf8());
    QCoreApplication::setApplicationName(QStringLiteral("Notes"));
    EXPECT_EQ(NSUserDefaults::standardUserDefaults().path(), pathOf("config/Notes/Notes.plist"));
}

TEST_F(NSUserDefaultsTest, StandardOnesAreNamedAfterTheExecutableWithoutAnApplication) {
    qputenv("XDG_CONFIG_HOME", pathOf("config").toUtf8());
    EXPECT_EQ(NSUserDefaults::standardUserDefaults().path(),
              pathOf("config/vxkit_foundation_tests/vxkit_foundation_tests.plist"));
}
