// SPDX-License-Identifier: MIT
#include "SnippetsHost.h"

#include <ImportBar.h>
#include <MessageBar.h>
#include <SnippetsWindow.h>

#include <VXKit/app/LTStatusItemView.h>
#include <VXKit/platform/appkit/NSStatusItem.h>

#include <QFile>
#include <QIcon>
#include <QTemporaryDir>
#include <QTest>

namespace {

class SnippetsApplicationTest : public SnippetsHost {
protected:
    void SetUp() override {
        if (!application.start()) {
            GTEST_FAIL() << "The application does not start";
        }
    }
};

TEST_F(SnippetsApplicationTest, HasItsViewInItsStatusItem) {
    ASSERT_TRUE(application.statusItem());
    auto* view = dynamic_cast<LTStatusItemView*>(application.statusItem()->view());
    ASSERT_TRUE(view);
    EXPECT_FALSE(NSIsEmptyRect(view->frameOfStatusItem()));
}

TEST_F(SnippetsApplicationTest, HangsItsWindowUnderItsStatusItem) {
    application.showMainWindow();
    const auto* view = dynamic_cast<LTStatusItemView*>(application.statusItem()->view());
    EXPECT_EQ(NSMaxY(application.window().NSWindow::frame()), NSMinY(view->frameOfStatusItem()));
}

TEST_F(SnippetsApplicationTest, StaysUnderItsStatusItemWhenItIsResized) {
    application.showMainWindow();
    SnippetsWindow& window = application.window();
    const auto* view = dynamic_cast<LTStatusItemView*>(application.statusItem()->view());
    const NSRect before = window.NSWindow::frame();
    window.setFrame({before.origin, {before.size.width - 80, before.size.height + 30}}, true);
    const NSRect after = window.NSWindow::frame();
    EXPECT_EQ(after.size, (NSSize{before.size.width - 80, before.size.height + 30}));
    EXPECT_EQ(NSMaxY(after), NSMinY(view->frameOfStatusItem()));
    EXPECT_EQ(after, window.frame()) << "it is where the kit has it for its size";
}

TEST_F(SnippetsApplicationTest, AStoppedImportIsSavedAndTold) {
    const QTemporaryDir folder;
    for (int number = 0; number < 5; ++number) {
        QFile file(folder.filePath(QString::number(number)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("text") == 4);
    }
    SnippetsWindow& window = application.window();
    application.showMainWindow();
    application.importRun().setPace({.slice = {}, .patience = {}});
    QObject::connect(&application.importRun(), &SnippetImportRun::progressed, &window,
                     [&](const SnippetImportProgress& progress) {
                         if (progress.doneCount == 2) {
                             Q_EMIT window.findChild<ImportBar*>()->asksToStop();
                         }
                     });
    application.importPaths({folder.path()});
    ASSERT_TRUE(QTest::qWaitFor([this] { return !application.importRun().isRunning(); }));

    EXPECT_EQ(window.findChild<MessageBar*>(QStringLiteral("messageBar"))->text(),
              QStringLiteral("Stopped: 2 files were imported"));
    EXPECT_FALSE(window.findChild<ImportBar*>()->isVisible());
    const std::optional<NSDictionary> content = NSDictionary::dictionaryWithContentsOfFile(database->path());
    ASSERT_TRUE(content);
    EXPECT_EQ(content->objectOfType<NSArray>("contents")->size(), 2U);
}

TEST_F(SnippetsApplicationTest, TogglesAndClosesItsWindowAsTheKitAsks) {
    LTApplicationController* controller = VXApplicationHooks().applicationController();
    ASSERT_TRUE(controller);
    controller->toggleMainWindow();
    EXPECT_TRUE(application.window().isVisible());
    EXPECT_TRUE(application.isActive());
    controller->toggleMainWindow();
    EXPECT_FALSE(application.window().isVisible());
    controller->toggleMainWindow();
    controller->closeMainWindow();
    controller->closeMainWindow();
    EXPECT_FALSE(application.window().isVisible());
}

TEST_F(SnippetsApplicationTest, HasAHelpPage) {
    EXPECT_EQ(application.helpURL().scheme(), QStringLiteral("qrc"));
    EXPECT_TRUE(QFile::exists(QLatin1Char(':') + application.helpURL().path()));
}

TEST_F(SnippetsApplicationTest, HasItsImages) {
    for (const char* image : {"StatusIcon", "StatusIconHighlighted", "Snippets", "Search", "Close"}) {
        const QIcon icon(QStringLiteral(":/images/%1.svg").arg(QString::fromLatin1(image)));
        EXPECT_FALSE(icon.pixmap(22, 22).isNull()) << image;
    }
}

TEST_F(SnippetsApplicationTest, ImportedFilesAreSavedAtOnce) {
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("note.txt")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("text") == 4);
    file.close();
    application.importPaths({file.fileName()});
    ASSERT_TRUE(QTest::qWaitFor([this] { return !application.importRun().isRunning(); }));

    EXPECT_FALSE(LTDatabase::isDirty());
    const std::optional<NSDictionary> content = NSDictionary::dictionaryWithContentsOfFile(database->path());
    ASSERT_TRUE(content);
    EXPECT_EQ(content->objectOfType<NSArray>("contents")->size(), 1U);
}

} // namespace
