// SPDX-License-Identifier: MIT
#include "SnippetsHost.h"

#include <SnippetImportRun.h>

#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <gmock/gmock.h>

#include <algorithm>
#include <new>
#include <optional>
#include <vector>

namespace {

class SnippetImportRunTest : public SnippetsHost {
protected:
    SnippetImportRunTest() {
        run.setPace({.slice = {}, .patience = {}});
        QObject::connect(&run, &SnippetImportRun::progressed, &run, [this](const SnippetImportProgress& progress) {
            progresses.push_back(progress);
            if (whenTold) {
                whenTold(progress);
            }
        });
        QObject::connect(&run, &SnippetImportRun::ended, &run, [this](const SnippetImportResult& ended) {
            ++endings;
            result = ended;
        });
    }

    /// A folder with `count` files.
    QString folderOf(const char* folderName, int count) const {
        const QString path = folder.filePath(QString::fromLatin1(folderName));
        EXPECT_TRUE(QDir().mkpath(path));
        for (int number = 0; number < count; ++number) {
            QFile file(path + QStringLiteral("/%1-%2.txt").arg(QString::fromLatin1(folderName)).arg(number));
            EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write("text") == 4);
        }
        return path;
    }

    [[nodiscard]] bool ends() const {
        return QTest::qWaitFor([this] { return !run.isRunning(); }, 30000);
    }

    std::vector<std::string> titles() const {
        std::vector<std::string> list;
        for (const std::shared_ptr<_LTSnippet>& snippet : database->snippets()) {
            list.push_back(snippet->title().toStdString());
        }
        return list;
    }

    QTemporaryDir folder;
    SnippetImportRun run{database};
    std::vector<SnippetImportProgress> progresses;
    std::function<void(const SnippetImportProgress&)> whenTold;
    std::optional<SnippetImportResult> result;
    int endings = 0;
};

TEST_F(SnippetImportRunTest, ImportsWhatTheImporterDoesAtOnce) {
    run.importPaths({folderOf("many", 3), folder.filePath(QStringLiteral("missing"))});
    EXPECT_EQ(database->snippets().count(), 0U) << "the caller is not held up";
    ASSERT_TRUE(ends());
    EXPECT_THAT(titles(), testing::ElementsAre("many-0.txt", "many-1.txt", "many-2.txt"));
    EXPECT_EQ(endings, 1);
    EXPECT_EQ(result->importedCount, 3U);
    EXPECT_EQ(result->refusals.size(), 1U);
    EXPECT_FALSE(result->wasStopped);
}

TEST_F(SnippetImportRunTest, LetsOtherEventsInBetween) {
    int others = 0;
    QTimer other;
    QObject::connect(&other, &QTimer::timeout, &other, [&] {
        ++others;
        EXPECT_TRUE(run.isRunning());
    });
    run.importPaths({folderOf("many", 50)});
    QObject::connect(&run, &SnippetImportRun::ended, &other, &QTimer::stop);
    other.start(0);
    ASSERT_TRUE(ends());
    EXPECT_GE(others, 25);
}

TEST_F(SnippetImportRunTest, LooksForAllFilesFirstAndThenTellsHowManyAreDone) {
    run.importPaths({folderOf("many", 4)});
    ASSERT_TRUE(ends());
    const auto firstImport = std::find_if(progresses.begin(), progresses.end(),
                                          [](const SnippetImportProgress& progress) { return !progress.isLooking; });
    EXPECT_NE(firstImport, progresses.begin());
    std::vector<std::size_t> done;
    for (auto progress = firstImport; progress != progresses.end(); ++progress) {
        EXPECT_FALSE(progress->isLooking);
        EXPECT_EQ(progress->foundCount, 4U);
        done.push_back(progress->doneCount);
    }
    EXPECT_THAT(done, testing::ElementsAre(0U, 1U, 2U, 3U));
}

TEST_F(SnippetImportRunTest, TellsNothingOfAShortOne) {
    run.setPace({.slice = {}, .patience = std::chrono::hours(1)});
    run.importPaths({folderOf("few", 3)});
    ASSERT_TRUE(ends());
    EXPECT_TRUE(progresses.empty());
    EXPECT_EQ(result->importedCount, 3U);
}

TEST_F(SnippetImportRunTest, KeepsWhatHasComeInWhenItIsStopped) {
    whenTold = [this](const SnippetImportProgress& progress) {
        if (progress.doneCount == 2) {
            run.stop();
        }
    };
    run.importPaths({folderOf("many", 9)});
    ASSERT_TRUE(ends());
    QTest::qWait(20);
    EXPECT_THAT(titles(), testing::ElementsAre("many-0.txt", "many-1.txt"));
    EXPECT_EQ(endings, 1);
    EXPECT_EQ(result->importedCount, 2U);
    EXPECT_TRUE(result->wasStopped);
    run.stop();
    EXPECT_EQ(endings, 1) << "there is nothing to stop any more";
}

TEST_F(SnippetImportRunTest, ForgetsWhatWasLeftWhenItIsStopped) {
    whenTold = [this](const SnippetImportProgress&) { run.stop(); };
    run.importPaths({folderOf("many", 9)});
    ASSERT_TRUE(ends());
    whenTold = nullptr;
    run.importPaths({folderOf("others", 2)});
    ASSERT_TRUE(ends());
    EXPECT_THAT(titles(), testing::ElementsAre("others-0.txt", "others-1.txt"));
    EXPECT_FALSE(result->wasStopped);
}

TEST_F(SnippetImportRunTest, ImportsWhatComesMeanwhileAfterwards) {
    const QString others = folderOf("others", 2);
    whenTold = [&](const SnippetImportProgress& progress) {
        if (progress.doneCount == 1 && progress.foundCount == 3 && !progress.isLooking) {
            run.importPaths({others});
        }
    };
    run.importPaths({folderOf("many", 3)});
    ASSERT_TRUE(ends());
    EXPECT_THAT(titles(),
                testing::ElementsAre("many-0.txt", "many-1.txt", "many-2.txt", "others-0.txt", "others-1.txt"));
    EXPECT_EQ(endings, 1);
    EXPECT_EQ(result->importedCount, 5U);
}

TEST_F(SnippetImportRunTest, EndsAtAnExceptionAndLetsLaterImportsRun) {
    int exceptions = 0;
    NSSetUncaughtExceptionHandler([&](const NSException&) { ++exceptions; });
    auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
        LTSnippetDBWasModifiedNotification, database.get(), [](const NSNotification&) { throw std::bad_alloc(); });
    run.importPaths({folderOf("many", 3)});
    ASSERT_TRUE(ends());
    EXPECT_EQ(endings, 1);
    EXPECT_EQ(exceptions, 1);
    EXPECT_TRUE(result->wasStopped);

    observation = {};
    run.importPaths({folderOf("others", 2)});
    ASSERT_TRUE(ends());
    EXPECT_EQ(endings, 2);
    EXPECT_THAT(titles(), testing::ElementsAre("many-0.txt", "others-0.txt", "others-1.txt"));
    NSSetUncaughtExceptionHandler({});
}

TEST_F(SnippetImportRunTest, EndsAtAnExceptionOfWhomItTells) {
    int exceptions = 0;
    NSSetUncaughtExceptionHandler([&](const NSException&) { ++exceptions; });
    whenTold = [](const SnippetImportProgress&) { throw std::bad_alloc(); };
    run.importPaths({folderOf("many", 3)});
    ASSERT_TRUE(ends());
    EXPECT_EQ(endings, 1);
    EXPECT_EQ(exceptions, 1);
    NSSetUncaughtExceptionHandler({});
}

TEST_F(SnippetImportRunTest, MayDieWhileItTells) {
    auto mortal = std::make_unique<SnippetImportRun>(database);
    mortal->setPace({.slice = {}, .patience = {}});
    QObject::connect(mortal.get(), &SnippetImportRun::progressed, qApp, [&] { mortal.reset(); });
    mortal->importPaths({folderOf("many", 3)});
    EXPECT_TRUE(QTest::qWaitFor([&] { return !mortal; }));
    QTest::qWait(20);
    EXPECT_EQ(database->snippets().count(), 0U);
}

} // namespace
