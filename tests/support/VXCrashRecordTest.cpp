// SPDX-License-Identifier: MIT
#include <VXKit/support/VXCrashRecord.h>

#include <VXKit/support/VXCrashRecording.h>
#include <VXKit/support/VXExceptionReporter.h>

#include "ChildProgram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <random>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

const QString readNull = QStringLiteral("(anonymous namespace)::readNull()");
const QString staticCrash = QStringLiteral("(anonymous namespace)::staticCrash()");

QStringList namesOf(const VXCrashRecord& record) {
    QStringList names;
    for (const VXCrashFrame& frame : record.frames()) {
        names.append(frame.symbol ? frame.symbol->name() : QString());
    }
    return names;
}

class CrashRecord : public testing::Test {
protected:
    [[nodiscard]] QString path() const { return m_folder.filePath(QStringLiteral("crashes")); }

    [[nodiscard]] QStringList files() const {
        return QDir(path()).entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    /// Answers the child's exit status, or −signal.
    int crash(const char* way, const char* program = CRASHING_PROGRAM) const {
        return ChildProgram({program, way, path().toStdString()}).end();
    }

    /// The one record of a crash in this way, which is to end with `signal`.
    [[nodiscard]] std::vector<VXCrashRecord> recordOf(const char* way, int signal,
                                                      const char* program = CRASHING_PROGRAM) const {
        EXPECT_EQ(crash(way, program), -signal) << way;
        std::vector<VXCrashRecord> records = VXTakeCrashRecords(path());
        EXPECT_EQ(records.size(), 1U) << way;
        if (records.size() == 1) {
            EXPECT_EQ(records[0].signalNumber(), signal);
        }
        return records;
    }

    void write(const QString& name, const QByteArray& bytes) const {
        ASSERT_TRUE(QDir().mkpath(path()));
        QFile file(path() + u'/' + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    [[nodiscard]] QByteArray bytesOf(const QString& name) const {
        QFile file(path() + u'/' + name);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

private:
    QTemporaryDir m_folder;
};

} // namespace

TEST_F(CrashRecord, TellsOfANullPointer) {
    const auto before = static_cast<double>(std::time(nullptr));
    const auto records = recordOf("null", SIGSEGV);
    ASSERT_EQ(records.size(), 1U);
    const VXCrashRecord& record = records[0];
    EXPECT_EQ(record.signalName(), QStringLiteral("SIGSEGV"));
    EXPECT_EQ(record.signalCode(), SEGV_MAPERR);
    EXPECT_EQ(record.senderIdentifier(), 0);
    EXPECT_EQ(record.faultAddress(), 0U);
    EXPECT_EQ(record.hostVersion(), QStringLiteral("7.1β"));
    EXPECT_TRUE(record.isMainThread());
    EXPECT_EQ(record.exceptionType(), QString());
    EXPECT_GE(record.date().timeIntervalSince1970(), before);
    EXPECT_LE(record.date().timeIntervalSince1970(), static_cast<double>(std::time(nullptr)) + 1);
    const QStringList names = namesOf(record);
    ASSERT_GE(names.size(), 3);
    EXPECT_EQ(names[0], staticCrash);
    EXPECT_EQ(names[1], readNull);
    EXPECT_TRUE(names.contains(QStringLiteral("main")));
}

TEST_F(CrashRecord, NamesStaticFunctionsWithoutDebugInformation) {
    const auto records = recordOf("null", SIGSEGV, CRASHING_PROGRAM_PLAIN);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(namesOf(records[0]).mid(0, 2), (QStringList{staticCrash, readNull}));
}

TEST_F(CrashRecord, FollowsTheStackOfAStrippedProgramAndNamesWhatIsLeft) {
    const auto records = recordOf("library", SIGSEGV, CRASHING_PROGRAM_STRIPPED);
    ASSERT_EQ(records.size(), 1U);
    const QStringList names = namesOf(records[0]);
    ASSERT_GE(names.size(), 5);
    EXPECT_EQ(names.mid(0, 3), QStringList({QString(), QString(), QString()})); // its own, up to the library's call
    EXPECT_EQ(names[4], QStringLiteral("crashingLibraryCalls"));
}

TEST_F(CrashRecord, NamesAStackThroughALibrary) {
    const auto records = recordOf("library", SIGSEGV);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(namesOf(records[0]).mid(0, 5),
              (QStringList{staticCrash, readNull, QStringLiteral("(anonymous namespace)::readNullForLibrary(void*)"),
                           QStringLiteral("(anonymous namespace)::hiddenInLibrary(int (*)(void*), void*)"),
                           QStringLiteral("crashingLibraryCalls")}));
}

TEST_F(CrashRecord, NamesFunctionsOfALibraryThatWasLoadedLater) {
    const auto records = recordOf("plugin", SIGSEGV);
    ASSERT_EQ(records.size(), 1U);
    const QStringList names = namesOf(records[0]);
    ASSERT_GE(names.size(), 2);
    EXPECT_EQ(names[0], QStringLiteral("crashingLibraryReadsNull"));
    EXPECT_EQ(records[0].frames()[0].symbol->modulePath(), QFile::decodeName(CRASHING_PLUGIN));
}

TEST_F(CrashRecord, NamesWhoCalledThroughANullPointer) {
    const auto records = recordOf("call", SIGSEGV);
    ASSERT_EQ(records.size(), 1U);
    const QStringList names = namesOf(records[0]);
    ASSERT_GE(names.size(), 3);
    EXPECT_EQ(records[0].frames()[0].address, 0U);
    EXPECT_EQ(names[0], QString());
    EXPECT_EQ(names[1], QStringLiteral("(anonymous namespace)::callNull()"));
    EXPECT_TRUE(names.contains(QStringLiteral("main")));
}

TEST_F(CrashRecord, HasEveryCallOfADeepStack) {
    const auto records = recordOf("deep", SIGSEGV);
    ASSERT_EQ(records.size(), 1U);
    const QStringList names = namesOf(records[0]);
    EXPECT_EQ(names.count(QStringLiteral("(anonymous namespace)::recurse(int)")), 10001);
    EXPECT_TRUE(names.contains(QStringLiteral("main")));
    EXPECT_EQ(names[0], staticCrash);
}

TEST_F(CrashRecord, TellsOfAStackOverflow) {
    const auto records = recordOf("overflow", SIGSEGV);
    ASSERT_EQ(records.size(), 1U);
    const QStringList names = namesOf(records[0]);
    EXPECT_GT(names.count(QStringLiteral("(anonymous namespace)::overflow(char volatile*)")), 1000);
}

TEST_F(CrashRecord, TellsOfADivisionByZero) {
    const auto records = recordOf("divide", SIGFPE);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_TRUE(namesOf(records[0]).contains(QStringLiteral("(anonymous namespace)::divide()")));
}

TEST_F(CrashRecord, TellsOfEverySignalThatEndsAProcessForAFault) {
    const std::pair<const char*, int> ways[] = {
        {"trap", SIGTRAP}, {"bus", SIGBUS}, {"instruction", SIGILL}, {"system", SIGSYS}};
    for (const auto& [way, signal] : ways) {
        auto records = recordOf(way, signal);
        ASSERT_EQ(records.size(), 1U);
        EXPECT_EQ(records[0].senderIdentifier(), records[0].processIdentifier());
        EXPECT_TRUE(namesOf(records[0]).contains(QStringLiteral("main"))) << way;
        EXPECT_TRUE(records[0].discard());
    }
}

#ifndef __SANITIZE_THREAD__ // which hands on the signal of an abort too late, when there is nothing left to do for it
TEST_F(CrashRecord, TellsOfAnAbort) {
    const auto records = recordOf("abort", SIGABRT);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_TRUE(namesOf(records[0]).contains(QStringLiteral("(anonymous namespace)::doAbort()")));
    EXPECT_EQ(records[0].exceptionType(), QString());
}

TEST_F(CrashRecord, TellsOnceOfAnExceptionThatNobodyCatches) {
    const auto records = recordOf("exception", SIGABRT);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].exceptionType(), QStringLiteral("std::runtime_error"));
    EXPECT_EQ(records[0].exceptionReason(), QStringLiteral("the cupboard was bare"));
    EXPECT_TRUE(namesOf(records[0]).contains(QStringLiteral("(anonymous namespace)::throwNobodyCatches()")));
}

TEST_F(CrashRecord, TellsTheClassOfAnExceptionThatSaysNothing) {
    const auto records = recordOf("unusual", SIGABRT);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].exceptionType(), QStringLiteral("(anonymous namespace)::Unusual"));
    EXPECT_EQ(records[0].exceptionReason(), QString());
}
#endif

TEST_F(CrashRecord, NamesTheStackOfACrashInAnAllocationAndAllocatesNothing) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer has an allocator of its own";
#endif
    const auto records = recordOf("malloc", SIGSEGV);
    ASSERT_EQ(records.size(), 1U);
    const QStringList names = namesOf(records[0]);
    ASSERT_GE(names.size(), 4);
    EXPECT_EQ(names.mid(0, 4), (QStringList{staticCrash, readNull, QStringLiteral("malloc"),
                                            QStringLiteral("(anonymous namespace)::allocate()")}));
}

TEST_F(CrashRecord, TellsOfACrashInAnotherThread) {
    const auto records = recordOf("thread", SIGSEGV);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_FALSE(records[0].isMainThread());
    const QStringList names = namesOf(records[0]);
    EXPECT_EQ(names.mid(0, 2), (QStringList{staticCrash, readNull}));
    EXPECT_FALSE(names.contains(QStringLiteral("main")));
}

TEST_F(CrashRecord, TellsOfACrashWhileTheLoaderIsLocked) {
    const auto records = recordOf("loader", SIGSEGV);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(namesOf(records[0]).mid(0, 2), (QStringList{staticCrash, readNull}));
}

TEST_F(CrashRecord, IsOneWhereTwoThreadsCrashAtOnce) {
    const auto records = recordOf("two", SIGSEGV);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(namesOf(records[0]).value(1), readNull);
}

TEST_F(CrashRecord, IsOneForEachProcessAfterAFork) {
    EXPECT_EQ(crash("fork"), -SIGSEGV);
    const auto records = VXTakeCrashRecords(path());
    ASSERT_EQ(records.size(), 2U);
    EXPECT_NE(records[0].processIdentifier(), records[1].processIdentifier());
}

TEST_F(CrashRecord, NeedsNoFileDescriptorThatIsLeft) {
    const auto records = recordOf("descriptors", SIGSEGV);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(namesOf(records[0]).value(1), readNull);
}

TEST_F(CrashRecord, IsNotMadeWhereTheFolderIsGone) {
    ::setenv("REMOVE_THE_FOLDER", "1", 1);
    EXPECT_EQ(crash("null"), -SIGSEGV);
    ::unsetenv("REMOVE_THE_FOLDER");
    EXPECT_TRUE(VXTakeCrashRecords(path()).empty());
}

TEST_F(CrashRecord, IsNotMadeAfterRecordingEnded) {
    EXPECT_EQ(crash("stopped"), -SIGSEGV);
    EXPECT_EQ(files(), QStringList());
}

TEST_F(CrashRecord, LeavesTheSignalToTheHandlerThatWasThereBefore) {
    EXPECT_EQ(crash("former"), 42);
    EXPECT_EQ(VXTakeCrashRecords(path()).size(), 1U);
}

TEST_F(CrashRecord, CanBeReadByItsUserAlone) {
    EXPECT_EQ(crash("null"), -SIGSEGV);
    struct stat status {};
    ASSERT_EQ(files().size(), 1);
    ASSERT_EQ(::stat(QFile::encodeName(path() + u'/' + files()[0]).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    ASSERT_EQ(::stat(QFile::encodeName(path()).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0700U);
}

TEST_F(CrashRecord, LosesItsCopyOfTheStackWhenItIsTaken) {
    // The environment lies on the stack.
    ::setenv("SECRET_OF_THE_USER", "open sesame, said he", 1);
    EXPECT_EQ(crash("null"), -SIGSEGV);
    ASSERT_EQ(files().size(), 1);
    const QString name = files()[0];
    EXPECT_TRUE(bytesOf(name).contains("open sesame, said he"));
    const auto records = VXTakeCrashRecords(path());
    EXPECT_EQ(records.size(), 1U);
    EXPECT_FALSE(bytesOf(name).contains("open sesame, said he"));
}

TEST_F(CrashRecord, CanBeTakenAgainUntilItIsDiscarded) {
    std::vector<VXCrashFrame> frames;
    {
        const auto records = recordOf("null", SIGSEGV);
        ASSERT_EQ(records.size(), 1U);
        frames = records[0].frames();
        EXPECT_TRUE(VXTakeCrashRecords(path()).empty()) << "somebody has it";
    }
    auto records = VXTakeCrashRecords(path());
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].frames(), frames);
    EXPECT_EQ(records[0].hostVersion(), QStringLiteral("7.1β"));
    EXPECT_TRUE(records[0].discard());
    EXPECT_FALSE(records[0].discard());
    records.clear();
    EXPECT_TRUE(VXTakeCrashRecords(path()).empty());
    EXPECT_EQ(files(), QStringList());
}

TEST_F(CrashRecord, GivesNoNamesOfAProgramThatWasReplaced) {
    const QString program = path() + QStringLiteral("-program");
    ASSERT_TRUE(QFile::copy(QFile::decodeName(CRASHING_PROGRAM_PLAIN), program));
    EXPECT_EQ(crash("null", program.toStdString().c_str()), -SIGSEGV);
    ASSERT_TRUE(QFile::remove(program));
    ASSERT_TRUE(QFile::copy(QStringLiteral("/bin/true"), program));
    const auto records = VXTakeCrashRecords(path());
    ASSERT_EQ(records.size(), 1U);
    EXPECT_NE(records[0].frames()[0].address, 0U);
    EXPECT_FALSE(records[0].frames()[0].symbol);
}

TEST_F(CrashRecord, KeepsTheNewestTen) {
    for (int number = 10; number < 25; ++number) {
        write(QStringLiteral("crash-1-%1.vxcrash").arg(number), "of another make");
    }
    write(QStringLiteral("crash-notes.txt"), "the user's own");
    EXPECT_TRUE(VXTakeCrashRecords(path()).empty());
    const QStringList left = files();
    EXPECT_EQ(left.size(), 11);
    EXPECT_TRUE(left.contains(QStringLiteral("crash-notes.txt")));
    EXPECT_TRUE(left.contains(QStringLiteral("crash-1-15.vxcrash")));
    EXPECT_FALSE(left.contains(QStringLiteral("crash-1-14.vxcrash")));
}

TEST_F(CrashRecord, PassesOverWhatIsNoRecord) {
    EXPECT_EQ(crash("null"), -SIGSEGV);
    ASSERT_EQ(files().size(), 1);
    const QString genuine = path() + u'/' + files()[0];
    write(QStringLiteral("crash-1-1.vxcrash"), "");
    write(QStringLiteral("crash-1-2.vxcrash"), QByteArray(100000, 'x'));
    write(QStringLiteral("crash-1-3.vxcrash"), QByteArray(9 << 20, 'x'));
    const auto named = [this](const char* name) { return QFile::encodeName(path()) + '/' + name; };
    ASSERT_EQ(::mkfifo(named("crash-1-4.vxcrash").constData(), 0600), 0);
    ASSERT_EQ(::mkdir(named("crash-1-5.vxcrash").constData(), 0700), 0);
    ASSERT_EQ(::symlink("/dev/zero", named("crash-1-6.vxcrash").constData()), 0);
    const QByteArray elsewhere = QFile::encodeName(path()) + "-elsewhere";
    ASSERT_EQ(::rename(QFile::encodeName(genuine).constData(), elsewhere.constData()), 0);
    ASSERT_EQ(::symlink(elsewhere.constData(), named("crash-1-7.vxcrash").constData()), 0);
    EXPECT_TRUE(VXTakeCrashRecords(path()).empty());
    if (::geteuid() == 0) {
        ASSERT_EQ(::rename(elsewhere.constData(), named("crash-1-8.vxcrash").constData()), 0);
        ASSERT_EQ(::chown(named("crash-1-8.vxcrash").constData(), 1, 1), 0);
        EXPECT_TRUE(VXTakeCrashRecords(path()).empty()) << "another user's";
    }
}

TEST_F(CrashRecord, TellsWhatIsLeftOfOneThatWasCutOff) {
    EXPECT_EQ(crash("null"), -SIGSEGV);
    ASSERT_EQ(files().size(), 1);
    const QString name = files()[0];
    const QByteArray whole = bytesOf(name);
    for (const qsizetype length : {qsizetype{80}, qsizetype{100}, qsizetype{200}, whole.size() / 2, whole.size() - 1}) {
        write(name, whole.first(length));
        const auto records = VXTakeCrashRecords(path());
        ASSERT_EQ(records.size(), 1U) << length;
        EXPECT_EQ(records[0].signalName(), QStringLiteral("SIGSEGV"));
        ASSERT_GE(records[0].frames().size(), 1U);
    }
}

TEST_F(CrashRecord, OutlastsRecordsThatWereTamperedWith) {
    EXPECT_EQ(crash("library", CRASHING_PROGRAM_PLAIN), -SIGSEGV);
    ASSERT_EQ(files().size(), 1);
    const QString name = files()[0];
    const QByteArray whole = bytesOf(name);
    std::mt19937 random(1); // the same changes each time
    for (int round = 0; round < 60; ++round) {
        QByteArray bytes = whole;
        // Mostly in what is read as numbers: the head, the registers and, at the end, what was loaded.
        for (int change = 0; change < 8; ++change) {
            const auto range = static_cast<std::uint32_t>(change % 2 == 0 ? 400 : bytes.size());
            const auto place = static_cast<qsizetype>(random() % range);
            const qsizetype position = change % 4 == 3 ? bytes.size() - 1 - place % 4000 : place;
            bytes[position] = static_cast<char>(change % 3 == 0 ? 0xff : random());
        }
        write(name, bytes);
        for (const VXCrashRecord& record : VXTakeCrashRecords(path())) {
            EXPECT_LE(record.frames().size(), 16384U);
        }
        // What was made of it, too.
        for (const VXCrashRecord& record : VXTakeCrashRecords(path())) {
            EXPECT_LE(record.frames().size(), 16384U);
        }
    }
}

TEST_F(CrashRecord, NeedsAFolderThatCanBeHad) {
    NSError error;
    EXPECT_FALSE(VXRecordCrashes(QString(), {}, &error));
    EXPECT_FALSE(error.localizedDescription.isEmpty());
    error = {};
    EXPECT_FALSE(VXRecordCrashes(QStringLiteral("/proc/crashes"), {}, &error));
    EXPECT_FALSE(error.localizedDescription.isEmpty());
}

TEST_F(CrashRecord, PutsBackTheHandlersThatWereThereBefore) {
    struct sigaction before {};
    ::sigaction(SIGSEGV, nullptr, &before);
    const std::terminate_handler terminate = std::get_terminate();
    ASSERT_TRUE(VXRecordCrashes(path()));
    ASSERT_TRUE(VXRecordCrashes(path()));
    struct sigaction during {};
    ::sigaction(SIGSEGV, nullptr, &during);
    EXPECT_NE(during.sa_sigaction, before.sa_sigaction);
    EXPECT_NE(std::get_terminate(), terminate);
    VXStopRecordingCrashes();
    struct sigaction after {};
    ::sigaction(SIGSEGV, nullptr, &after);
    EXPECT_EQ(after.sa_sigaction, before.sa_sigaction);
    EXPECT_EQ(std::get_terminate(), terminate);
}

TEST(CrashRecording, GoesOnWhereNothingCanBeRecorded) {
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("file")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    testing::internal::CaptureStderr();
    VXReportCrashes(file.fileName() + QStringLiteral("/Crashes"));
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_NE(told.find("Crashes are not recorded: "), std::string::npos) << told;
}
