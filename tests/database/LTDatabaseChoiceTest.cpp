// SPDX-License-Identifier: MIT
#include "../ExitInTheMiddle.h"
#include "DatabaseLocationHost.h"

#include <VXKit/platform/appkit/NSOpenPanel.h>
#include <VXKit/platform/appkit/NSSavePanel.h>
#include <VXKit/platform/foundation/NSException.h>

#include <QLineEdit>

#include <cstdio>
#include <cstdlib>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

/// The process ends by these: each test starts the test program again.
class DatabaseLocationExit : public DatabaseLocation {
protected:
    DatabaseLocationExit() { expectExitInTheMiddle(); }

    /// Asks for the shared store as a host does, and tells on the way out what was chosen.
    void startHost() {
        // The process that ends here leaves nothing behind.
        folder.remove();
        log(); // is there before what reads it at the end
        std::atexit([] {
            for (const std::string& line : log()) {
                std::fprintf(stderr, "log: %s\n", line.c_str());
            }
            std::fprintf(stderr, "chosen: %s; loading: %d\n", choiceOnDisk().c_str(), LTDatabase::isLoading() ? 1 : 0);
            QDir(QDir::homePath()).removeRecursively();
        });
        LTDatabase::sharedDB<Diary>();
        std::fprintf(stderr, "the host goes on\n");
        std::_Exit(1);
    }
};

} // namespace

TEST_F(DatabaseLocation, IsChosenWithTheOptionKey) {
    const QString own = makeFile(QStringLiteral("own.plist"));
    holdOption();
    whenAlertAsks([](LTHUDWindow& window) {
        EXPECT_TRUE(LTDatabase::isLoading());
        QTest::keyClick(window.windowHandle(), Qt::Key_Return);
    });
    steps.addForFileDialog([&](QFileDialog& dialog) {
        EXPECT_TRUE(LTDatabase::isLoading());
        EXPECT_TRUE(dynamic_cast<NSOpenPanel*>(application.modalWindow()));
        EXPECT_EQ(dialog.acceptMode(), QFileDialog::AcceptOpen);
        EXPECT_THAT(dialog.nameFilters(), ElementsAre(QStringLiteral("*.plist")));
        enterName(dialog, own);
    });
    const auto store = LTDatabase::sharedDB<Diary>();
    EXPECT_FALSE(LTDatabase::isLoading());
    EXPECT_EQ(path(), own);
    EXPECT_EQ(store->snippets().count(), 1U);
    EXPECT_EQ(choice(), "custom, " + own.toStdString());
    EXPECT_THAT(log(), ElementsAre(chooseAlert, "load own.plist (custom, own.plist)", "disable syncing while loading"))
        << "the choice is on the disk before the store is made";
}

TEST_F(DatabaseLocation, IsAskedForWithTheOptionKeyAlsoWhereItWasChosenBefore) {
    const QString other = makeFile(QStringLiteral("other.plist"));
    chooseBefore(makeFile(QStringLiteral("own.plist")));
    hold(Qt::AltModifier | Qt::ShiftModifier);
    answerAlert(QStringLiteral("Choose Database..."));
    answerPanel(other);
    LTDatabase::sharedDB<Diary>();
    EXPECT_EQ(path(), other);
    EXPECT_THAT(log(),
                ElementsAre(chooseAlert, "load other.plist (custom, other.plist)", "disable syncing while loading"));
}

TEST_F(DatabaseLocation, IsNotAskedForWithOtherModifierKeys) {
    hold(Qt::ControlModifier | Qt::ShiftModifier | Qt::MetaModifier);
    LTDatabase::sharedDB<Diary>();
    EXPECT_EQ(path(), defaultPath());
    EXPECT_THAT(log(), ElementsAre("load DB.plist (nothing, no path)"));
}

TEST_F(DatabaseLocation, TellsOfAFileThatGivesNoDatabaseAndKeepsItAsTheChoice) {
    const QString own = makeFile(QStringLiteral("own.plist"));
    Diary::broken = {"own.plist"};
    holdOption();
    answerAlert(Qt::Key_Return);
    answerPanel(own);
    answerAlert(QStringLiteral("OK"));
    LTDatabase::sharedDB<Diary>();
    EXPECT_EQ(path(), defaultPath());
    EXPECT_EQ(choice(), "custom, " + own.toStdString());
    EXPECT_THAT(log(), ElementsAre(chooseAlert, "load own.plist (custom, own.plist)", unusableAlert,
                                   "load DB.plist (custom, own.plist)"));
    EXPECT_FALSE(LTDatabase::isLoading());
}

TEST_F(DatabaseLocation, IsCreatedWithTheOptionKey) {
    holdOption();
    answerAlert(QStringLiteral("Create Database..."));
    steps.addForFileDialog([&](QFileDialog& dialog) {
        EXPECT_TRUE(LTDatabase::isLoading());
        auto* const panel = dynamic_cast<NSSavePanel*>(application.modalWindow());
        ASSERT_TRUE(panel);
        EXPECT_EQ(panel->requiredFileType(), QStringLiteral("plist"));
        EXPECT_EQ(dialog.acceptMode(), QFileDialog::AcceptSave);
        EXPECT_EQ(dialog.directory(), QDir::home());
        EXPECT_EQ(dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->text(), QStringLiteral("DB.plist"));
        enterName(dialog, folder.filePath(QStringLiteral("new")));
    });
    const auto store = LTDatabase::sharedDB<Diary>();
    const QString created = folder.filePath(QStringLiteral("new.plist"));
    EXPECT_EQ(path(), created);
    EXPECT_EQ(choice(), "custom, " + created.toStdString());
    EXPECT_THAT(log(), ElementsAre(chooseAlert, "load new.plist (custom, new.plist)", "disable syncing while loading"));
    EXPECT_FALSE(QFileInfo::exists(created)) << "made by the first save";
    store->saveDB();
    EXPECT_TRUE(QFileInfo::exists(created));
    EXPECT_FALSE(LTDatabase::isLoading());
}

TEST_F(DatabaseLocation, ProposesTheFileNameOfItsClass) {
    class Named : public Diary {
        QString databaseFileName() const override { return QStringLiteral("Named.plist"); }
    };
    holdOption();
    answerAlert(QStringLiteral("Create Database..."));
    steps.addForFileDialog([](QFileDialog& dialog) { QTest::keyClick(dialog.windowHandle(), Qt::Key_Return); });
    LTDatabase::sharedDB<Named>();
    EXPECT_EQ(path(), QDir::home().filePath(QStringLiteral("Named.plist")));
}

TEST_F(DatabaseLocation, TurnsSyncingOffAlsoWhereTheCreatedDatabaseCannotBeMade) {
    Diary::broken = {"new.plist"};
    holdOption();
    answerAlert(QStringLiteral("Create Database..."));
    answerPanel(folder.filePath(QStringLiteral("new.plist")));
    EXPECT_THROW(LTDatabase::sharedDB<Diary>(), std::runtime_error);
    EXPECT_THAT(log(), ElementsAre(chooseAlert, "load new.plist (custom, new.plist)", "disable syncing while loading"));
    EXPECT_FALSE(LTDatabase::isLoading());
    EXPECT_FALSE(QFileInfo::exists(folder.filePath(QStringLiteral("new.plist"))));
}

TEST_F(DatabaseLocation, BeginsAnewAfterTheDefaultDatabaseCouldNotBeMade) {
    Diary::broken = {"DB.plist"};
    EXPECT_THROW(LTDatabase::sharedDB<Diary>(), std::runtime_error);
    EXPECT_FALSE(LTDatabase::isLoading());
    EXPECT_THROW(static_cast<void>(LTDatabase::isDirty()), NSException);
    EXPECT_FALSE(QFileInfo::exists(defaultPath()));
    Diary::broken.clear();
    EXPECT_TRUE(LTDatabase::sharedDB<Diary>());
    EXPECT_EQ(path(), defaultPath());
}

TEST_F(DatabaseLocationExit, QuitEndsTheProcess) {
    EXPECT_EXIT(
        {
            holdOption();
            answerAlert(QStringLiteral("Quit"));
            startHost();
        },
        testing::ExitedWithCode(0),
        testing::AllOf(HasSubstr("log: Choose My %@ Diary database."),
                       HasSubstr("chosen: nothing, no path; loading: 1"), Not(HasSubstr("log: load"))));
}

TEST_F(DatabaseLocationExit, EscapeQuits) {
    EXPECT_EXIT(
        {
            holdOption();
            answerAlert(Qt::Key_Escape);
            startHost();
        },
        testing::ExitedWithCode(0), HasSubstr("chosen: nothing, no path"));
}

TEST_F(DatabaseLocationExit, ACancelledOpenPanelEndsTheProcess) {
    EXPECT_EXIT(
        {
            holdOption();
            answerAlert(Qt::Key_Return);
            steps.addForFileDialog([](QFileDialog& dialog) {
                log().emplace_back(dialog.acceptMode() == QFileDialog::AcceptOpen ? "open panel" : "save panel");
                QTest::keyClick(dialog.windowHandle(), Qt::Key_Escape);
            });
            startHost();
        },
        testing::ExitedWithCode(0),
        testing::AllOf(HasSubstr("log: open panel\n"), HasSubstr("chosen: nothing, no path"),
                       Not(HasSubstr("log: load")), Not(HasSubstr("log: disable"))));
}

TEST_F(DatabaseLocationExit, ACancelledSavePanelEndsTheProcess) {
    EXPECT_EXIT(
        {
            holdOption();
            answerAlert(QStringLiteral("Create Database..."));
            steps.addForFileDialog([](QFileDialog& dialog) {
                log().emplace_back(dialog.acceptMode() == QFileDialog::AcceptOpen ? "open panel" : "save panel");
                dialog.close();
            });
            startHost();
        },
        testing::ExitedWithCode(0),
        testing::AllOf(HasSubstr("log: save panel\n"), HasSubstr("chosen: nothing, no path"),
                       Not(HasSubstr("log: load")), Not(HasSubstr("log: disable"))));
}

TEST_F(DatabaseLocationExit, TheEndOfTheApplicationAnswersTheQuestion) {
    EXPECT_EXIT(
        {
            holdOption();
            whenAlertAsks([this](LTHUDWindow&) { application.terminate(nullptr); });
            startHost();
        },
        testing::ExitedWithCode(0), HasSubstr("chosen: nothing, no path"));
}
