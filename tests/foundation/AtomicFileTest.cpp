// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/AtomicFile.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <random>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>

using testing::HasSubstr;

namespace {

class AtomicFile : public testing::Test {
protected:
    [[nodiscard]] QString path(const char* name = "file") const { return folder.filePath(QString::fromUtf8(name)); }

    [[nodiscard]] std::string content(const char* name = "file") const {
        return VXReadFile(path(name), nullptr).value_or("<unreadable>");
    }

    [[nodiscard]] QStringList names() const {
        return QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }

    void write(const char* name, std::string_view bytes) const {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes.data(), qint64(bytes.size())), qint64(bytes.size()));
    }

    [[nodiscard]] mode_t mode(const char* name = "file") const {
        struct stat status {};
        EXPECT_EQ(::stat(QFile::encodeName(path(name)).constData(), &status), 0);
        return status.st_mode & 07777;
    }

    /// Runs `work` in a child process and answers its exit status, or −signal.
    template <class Work>
    static int inChild(Work work) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::_exit(work());
        }
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    QTemporaryDir folder;
    NSError error;
};

} // namespace

TEST_F(AtomicFile, WritesANewFileWithTheModeOfTheUmask) {
    const mode_t old = ::umask(027);
    EXPECT_TRUE(VXWriteFileAtomically(path(), "new", &error));
    ::umask(old);
    EXPECT_EQ(content(), "new");
    EXPECT_EQ(mode(), 0640U);
}

TEST_F(AtomicFile, ReplacesTheContentAndKeepsTheMode) {
    write("file", "a longer old content");
    ASSERT_EQ(::chmod(QFile::encodeName(path()).constData(), 0604), 0);
    EXPECT_TRUE(VXWriteFileAtomically(path(), "new", &error));
    EXPECT_EQ(content(), "new");
    EXPECT_EQ(mode(), 0604U);
    EXPECT_EQ(names(), QStringList{QStringLiteral("file")});
}

TEST_F(AtomicFile, KeepsTheOwnerWhereItMay) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root may give files away";
    }
    write("file", "old");
    ASSERT_EQ(::chown(QFile::encodeName(path()).constData(), 1234, 4321), 0);
    EXPECT_TRUE(VXWriteFileAtomically(path(), "new", &error));
    struct stat status {};
    ASSERT_EQ(::stat(QFile::encodeName(path()).constData(), &status), 0);
    EXPECT_EQ(status.st_uid, 1234U);
    EXPECT_EQ(status.st_gid, 4321U);
}

TEST_F(AtomicFile, WritesEmptyContent) {
    write("file", "old");
    EXPECT_TRUE(VXWriteFileAtomically(path(), "", &error));
    EXPECT_EQ(content(), "");
}

TEST_F(AtomicFile, KeepsZeroBytes) {
    const std::string bytes("a\0b\0", 4);
    EXPECT_TRUE(VXWriteFileAtomically(path(), bytes, &error));
    EXPECT_EQ(content(), bytes);
}

TEST_F(AtomicFile, ShowsTheOldFileAndTheCompleteNewOneRightBeforeTheReplacement) {
    write("file", "old");
    ASSERT_TRUE(QFile::link(QStringLiteral("file"), path("link")));
    VXReplacement replacement;
    replacement.aboutToReplace = [&](const QByteArray& target) {
        EXPECT_EQ(target, QFile::encodeName(path("file")));
        EXPECT_EQ(content("file"), "old");
        QStringList others = names();
        others.removeAll(QStringLiteral("file"));
        others.removeAll(QStringLiteral("link"));
        ASSERT_EQ(others.size(), 1);
        EXPECT_EQ(content(qPrintable(others[0])), "new");
        EXPECT_EQ(replacement.written, std::nullopt);
    };
    ASSERT_TRUE(VXWriteFileAtomically(path("link"), "new", replacement, &error));
    EXPECT_EQ(content("file"), "new");
    EXPECT_EQ(replacement.written, VXStateOfFile(QFile::encodeName(path("link"))));
}

TEST_F(AtomicFile, TellsByItsStateAnyLaterWrite) {
    VXReplacement replacement;
    ASSERT_TRUE(VXWriteFileAtomically(path(), "own", replacement, &error));
    if (!replacement.stateTellsEveryChange) {
        GTEST_SKIP() << "the times of this file system are coarse";
    }
    EXPECT_EQ(VXStateOfFile(QFile::encodeName(path())), replacement.written);
    for (int round = 0; round < 200; ++round) {
        ASSERT_TRUE(VXWriteFileAtomically(path(), "own", replacement, &error));
        write("file", "two");
        ASSERT_NE(VXStateOfFile(QFile::encodeName(path()))->modified, replacement.written->modified);
    }
}

TEST_F(AtomicFile, KnowsTheStateOfRegularFilesOnly) {
    EXPECT_EQ(VXStateOfFile(QFile::encodeName(path("missing"))), std::nullopt);
    EXPECT_EQ(VXStateOfFile(QFile::encodeName(folder.path())), std::nullopt);
    write("file", "four");
    EXPECT_EQ(VXStateOfFile(QFile::encodeName(path("file")))->size, 4);
}

TEST_F(AtomicFile, FollowsLinksAndLeavesThemLinks) {
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("elsewhere")));
    write("elsewhere/real", "old");
    ASSERT_EQ(::symlink("elsewhere/real", QFile::encodeName(path("inner")).constData()), 0);
    ASSERT_EQ(::symlink("inner", QFile::encodeName(path("outer")).constData()), 0);
    EXPECT_TRUE(VXWriteFileAtomically(path("outer"), "new", &error));
    EXPECT_EQ(content("elsewhere/real"), "new");
    EXPECT_TRUE(QFileInfo(path("outer")).isSymLink());
    EXPECT_TRUE(QFileInfo(path("inner")).isSymLink());
}

TEST_F(AtomicFile, MakesTheFileThatALinkLeadsToInVain) {
    ASSERT_EQ(::symlink("missing", QFile::encodeName(path("link")).constData()), 0);
    EXPECT_TRUE(VXWriteFileAtomically(path("link"), "new", &error));
    EXPECT_EQ(content("missing"), "new");
    EXPECT_TRUE(QFileInfo(path("link")).isSymLink());
}

TEST_F(AtomicFile, RefusesACircleOfLinks) {
    ASSERT_EQ(::symlink("b", QFile::encodeName(path("a")).constData()), 0);
    ASSERT_EQ(::symlink("a", QFile::encodeName(path("b")).constData()), 0);
    EXPECT_FALSE(VXWriteFileAtomically(path("a"), "new", &error));
    EXPECT_THAT(error.localizedDescription.toStdString(), HasSubstr(path("a").toStdString()));
}

TEST_F(AtomicFile, RefusesAFolder) {
    EXPECT_FALSE(VXWriteFileAtomically(folder.path(), "new", &error));
    EXPECT_THAT(error.localizedDescription.toStdString(), HasSubstr("Is a directory"));
    EXPECT_FALSE(VXReadFile(folder.path(), &error));
    EXPECT_THAT(error.localizedDescription.toStdString(), HasSubstr("Is a directory"));
}

TEST_F(AtomicFile, RefusesAMissingFolder) {
    EXPECT_FALSE(VXWriteFileAtomically(path("missing/file"), "new", &error));
    EXPECT_THAT(error.localizedDescription.toStdString(), HasSubstr("No such file"));
}

TEST_F(AtomicFile, RefusesNamesThatNoFileCanHave) {
    EXPECT_FALSE(VXWriteFileAtomically(QString(), "new", &error));
    EXPECT_FALSE(VXWriteFileAtomically(path() + QChar(u'\0') + QStringLiteral("x"), "new", &error));
    EXPECT_FALSE(VXReadFile(QString(), &error));
    EXPECT_TRUE(names().isEmpty());
}

TEST_F(AtomicFile, WritesARelativeName) {
    const QString old = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(folder.path()));
    EXPECT_TRUE(VXWriteFileAtomically(QStringLiteral("file"), "new", &error));
    QDir::setCurrent(old);
    EXPECT_EQ(content(), "new");
}

TEST_F(AtomicFile, DoesNotWaitForAPipe) {
    ASSERT_EQ(::mkfifo(QFile::encodeName(path("pipe")).constData(), 0600), 0);
    EXPECT_FALSE(VXReadFile(path("pipe"), &error));
    EXPECT_FALSE(VXWriteFileAtomically(path("pipe"), "new", &error));
}

TEST_F(AtomicFile, WritesInPlaceToNothingButAFile) {
    ASSERT_EQ(::mkfifo(QFile::encodeName(path("pipe")).constData(), 0600), 0);
    const int reader = ::open(QFile::encodeName(path("pipe")).constData(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    EXPECT_FALSE(VXWriteFileInPlace(path("pipe"), "new", &error));
    EXPECT_THAT(error.localizedDescription.toStdString(), HasSubstr("cannot write to what is no file"));
    char byte = 0;
    EXPECT_EQ(::read(reader, &byte, 1), 0) << "nothing was written";
    ::close(reader);
    EXPECT_FALSE(VXWriteFileInPlace(QString(), "new", &error));
    EXPECT_THAT(error.localizedDescription.toStdString(), HasSubstr("cannot write a file of that name"));
}

TEST_F(AtomicFile, SaysWhyAFileCannotBeRead) {
    EXPECT_FALSE(VXReadFile(path("missing"), &error));
    EXPECT_THAT(error.localizedDescription.toStdString(), HasSubstr("No such file"));
    EXPECT_THAT(error.localizedDescription.toStdString(), HasSubstr(path("missing").toStdString()));
}

TEST_F(AtomicFile, ReadsAFileThatHasNoSizeOfItsOwn) {
    const std::optional<std::string> status = VXReadFile(QStringLiteral("/proc/self/status"), &error);
    ASSERT_TRUE(status);
    EXPECT_THAT(*status, HasSubstr("VmRSS"));
}

TEST_F(AtomicFile, RefusesToReadMoreThanIsWanted) {
    write("file", "12345");
    EXPECT_EQ(VXReadFile(path(), &error, 5), "12345");
    EXPECT_EQ(VXReadFile(path(), &error, 4), std::nullopt);
    EXPECT_THAT(error.localizedDescription.toStdString(), HasSubstr(std::strerror(EFBIG)));
    write("empty", "");
    EXPECT_EQ(VXReadFile(path("empty"), &error, 0), "");
}

TEST_F(AtomicFile, RefusesToReadMoreThanIsWantedOfAFileThatHasNoSizeOfItsOwn) {
    const QString status = QStringLiteral("/proc/self/status");
    EXPECT_TRUE(VXReadFile(status, &error, 100000));
    EXPECT_FALSE(VXReadFile(status, &error, 0));
    EXPECT_FALSE(VXReadFile(status, &error, 100));
    EXPECT_THAT(error.localizedDescription.toStdString(), HasSubstr(std::strerror(EFBIG)));
}

TEST_F(AtomicFile, LeavesTheOldFileWholeWhenTheDiskIsFull) {
    write("file", "the old content");
    const int result = inChild([this] {
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{100000, 100000};
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) {
            return 2;
        }
        NSError reason;
        const bool written = VXWriteFileAtomically(path(), std::string(300000, 'x'), &reason);
        return written || !reason.localizedDescription.contains(QStringLiteral("cannot write")) ? 1 : 0;
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(content(), "the old content");
    EXPECT_EQ(names(), QStringList{QStringLiteral("file")});
}

TEST_F(AtomicFile, LeavesTheOldFileWholeInAReadOnlyFolder) {
    write("file", "the old content");
    ASSERT_EQ(::chmod(QFile::encodeName(folder.path()).constData(), 0555), 0);
    const int result = inChild([this] {
        if (::geteuid() == 0 && ::seteuid(65534) != 0) {
            return 2;
        }
        return VXWriteFileAtomically(path(), "new", nullptr) ? 1 : 0;
    });
    ASSERT_EQ(::chmod(QFile::encodeName(folder.path()).constData(), 0755), 0);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(content(), "the old content");
    EXPECT_EQ(names(), QStringList{QStringLiteral("file")});
}

TEST_F(AtomicFile, IsOldOrNewAfterAKillAtARandomMoment) {
    const std::string old(200000, 'o');
    const std::string changed(300000, 'n');
    ASSERT_TRUE(VXWriteFileAtomically(path(), old, &error));
    std::mt19937 random(20261121);
    std::uniform_int_distribution<useconds_t> moment(0, 3000);
    for (int round = 0; round < 200; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            for (bool toNew = true;; toNew = !toNew) {
                static_cast<void>(VXWriteFileAtomically(path(), toNew ? changed : old, nullptr));
            }
        }
        ::usleep(moment(random));
        ASSERT_EQ(::kill(child, SIGKILL), 0);
        ASSERT_EQ(::waitpid(child, nullptr, 0), child);
        const std::string now = content();
        ASSERT_TRUE(now == old || now == changed) << "round " << round << ": " << now.size() << " bytes";
    }
}
