// SPDX-License-Identifier: MIT
// The program with its snippets in a file of the user's own choice.
#include <Snippet.h>
#include <SnippetsApplication.h>
#include <SnippetsDatabase.h>
#include <SnippetsListModel.h>
#include <SnippetsWindow.h>

#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <QAction>
#include <QDir>
#include <QMenu>
#include <QTemporaryDir>

#include <memory>

#include <gmock/gmock.h>

namespace {

class SnippetsLocation : public testing::Test {
protected:
    void SetUp() override {
        NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
        defaults.setBool(true, "UsesCustomDB");
        defaults.setObject(customPath(), "CustomDBFilePath");
        const auto snippet = std::make_shared<Snippet>();
        snippet->setSnippetID(NSDate::dateWithTimeIntervalSince1970(1000));
        snippet->setTitle(QStringLiteral("Mine"));
        NSDictionary file{{"DBVersion", "0.1"}};
        file.setObject(NSArray{*snippet->dictionaryRepresentation()}, "contents");
        ASSERT_TRUE(file.writeToFile(customPath(), true));
        ASSERT_TRUE(application.start());
    }

    [[nodiscard]] QString customPath() const { return folder.filePath(QStringLiteral("mine.plist")); }

    [[nodiscard]] QAction* menuItem(const char* title) const {
        for (QAction* action : application.statusItem()->menu()->actions()) {
            if (action->text() == QString::fromUtf8(title)) {
                return action;
            }
        }
        return nullptr;
    }

    [[nodiscard]] std::vector<std::string> titles() const {
        std::vector<std::string> result;
        for (int row = 0; row < application.window().model().rowCount(); ++row) {
            result.push_back(application.window().model().index(row).data().toString().toStdString());
        }
        return result;
    }

    const AnimationDurationsForTesting noAnimations{0};
    QTemporaryDir folder;
    int argc = 1;
    char name[9] = "snippets";
    char* argv[2] = {name, nullptr};
    SnippetsApplication application{argc, argv};
};

} // namespace

TEST_F(SnippetsLocation, ShowsTheSnippetsOfThatFileAndDoesNotSyncThem) {
    EXPECT_EQ(application.database().path(), customPath());
    EXPECT_THAT(titles(), testing::ElementsAre("Mine"));
    EXPECT_FALSE(application.syncManager().isEnabled());
    EXPECT_FALSE(menuItem("Sync Now")->isEnabled());
    EXPECT_TRUE(menuItem("Use Standard Database")->isVisible());
}

TEST_F(SnippetsLocation, GoesBackToTheStandardFileWhileItRuns) {
    const auto added = std::make_shared<Snippet>();
    added->setTitle(QStringLiteral("Added"));
    application.database().addSnippet(added);
    application.showMainWindow();
    menuItem("Use Standard Database")->trigger();

    EXPECT_EQ(application.database().path(), QDir::homePath() + QStringLiteral("/Library/Preferences/Snippets.plist"));
    EXPECT_TRUE(application.window().isVisible());
    EXPECT_THAT(titles(), testing::IsEmpty());
    EXPECT_TRUE(menuItem("Sync Now")->isEnabled());
    EXPECT_FALSE(menuItem("Use Standard Database")->isVisible());
    const auto saved = NSDictionary::dictionaryWithContentsOfFile(customPath());
    EXPECT_EQ(saved->objectOfType<NSArray>("contents")->size(), 2U);

    application.database().addSnippet(std::make_shared<Snippet>(*added));
    EXPECT_THAT(titles(), testing::ElementsAre("Added"));
    EXPECT_EQ(LTDatabase::sharedDB().get(), &application.database());
}

TEST_F(SnippetsLocation, SyncsTheStandardFileOnceItIsBack) {
    application.useStandardFile();
    const SnippetsDatabase* standard = &application.database();
    application.useStandardFile();
    EXPECT_EQ(&application.database(), standard) << "nothing to go back from";
    EXPECT_TRUE(application.syncManager().isEnabled());
}
