// SPDX-License-Identifier: MIT
#include "../FileDialog.h"
#include "AppKitHost.h"

#include <VXKit/platform/appkit/NSOpenPanel.h>
#include <VXKit/platform/appkit/NSSavePanel.h>

#include <QAbstractItemModel>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTreeView>

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

class BellApplication : public NSApplication {
public:
    BellApplication() : NSApplication(s_argc, s_argv) {}
    void soundBell() override { ++beeps; }

    int beeps = 0;

private:
    static inline char s_name[] = "host";
    static inline char* s_argv[] = {s_name, nullptr};
    static inline int s_argc = 1;
};

class FilePanels : public testing::Test {
protected:
    void makeFile(const QString& name) const {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }

    [[nodiscard]] QString path(const QString& name) const { return folder.filePath(name); }

    static void escape(const QWidget& window) { QTest::keyClick(window.windowHandle(), Qt::Key_Escape); }

    /// As Qt's dialog is accepted that stands for one of the platform's, which has closed by then.
    static void acceptAsThePlatforms(QFileDialog& dialog, const QString& name) {
        typeName(dialog, name);
        dialog.setAttribute(Qt::WA_DontShowOnScreen);
        static_cast<QDialog&>(dialog).accept();
        dialog.setAttribute(Qt::WA_DontShowOnScreen, false);
    }

    /// Types `name` into a save panel and answers what it gives.
    QString saved(const QString& name, const QString& requiredType) {
        NSSavePanel panel;
        panel.setRequiredFileType(requiredType);
        Steps steps;
        steps.addForFileDialog([&](QFileDialog& dialog) { enterName(dialog, name); });
        EXPECT_EQ(panel.runModalForDirectory(folder.path(), {}), NSFileHandlingPanelOKButton);
        return panel.filename();
    }

    BellApplication application;
    QTemporaryDir folder;
};

using NSSavePanelTest = FilePanels;
using NSOpenPanelTest = FilePanels;

QString nameIn(const QFileDialog& dialog) {
    return dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->text();
}

/// The names of what the dialog lists.
std::vector<QString> listed(const QFileDialog& dialog) {
    const auto* view = dialog.findChild<QTreeView*>(QStringLiteral("treeView"));
    std::vector<QString> names;
    for (int row = 0; row < view->model()->rowCount(view->rootIndex()); ++row) {
        names.push_back(view->model()->index(row, 0, view->rootIndex()).data().toString());
    }
    return names;
}

} // namespace

TEST(FilePanelAnswers, HaveAppKitsNumbers) {
    EXPECT_EQ(NSOKButton, 1);
    EXPECT_EQ(NSCancelButton, 0);
    EXPECT_EQ(NSFileHandlingPanelOKButton, 1);
    EXPECT_EQ(NSFileHandlingPanelCancelButton, 0);
}

TEST_F(NSSavePanelTest, AsksBeforeAnEventLoopRunsAndStandsInTheModalRuns) {
    const auto panel = NSSavePanel::savePanel();
    Steps steps;
    steps.addForFileDialog([&](QFileDialog& dialog) {
        EXPECT_EQ(application.modalWindow(), panel.get());
        EXPECT_TRUE(QTest::qWaitForWindowActive(&dialog));
        EXPECT_EQ(QApplication::activeModalWidget(), &dialog);
        EXPECT_EQ(dialog.acceptMode(), QFileDialog::AcceptSave);
        EXPECT_FALSE(panel->isVisible());
        escape(dialog);
    });
    EXPECT_EQ(panel->runModal(), NSFileHandlingPanelCancelButton);
    EXPECT_EQ(panel->filename(), QString());
    EXPECT_EQ(application.modalWindow(), nullptr);
    EXPECT_EQ(openDialog<QFileDialog>(), nullptr);
}

TEST_F(NSSavePanelTest, ProposesAFolderAndAName) {
    NSSavePanel panel;
    panel.setRequiredFileType(QStringLiteral("plist"));
    Steps steps;
    steps.addForFileDialog([&](QFileDialog& dialog) {
        EXPECT_EQ(dialog.directory(), QDir(folder.path()));
        EXPECT_EQ(nameIn(dialog), QStringLiteral("DB.plist"));
        EXPECT_THAT(dialog.nameFilters(), ElementsAre(QStringLiteral("*.plist")));
        QTest::keyClick(dialog.windowHandle(), Qt::Key_Return);
    });
    EXPECT_EQ(panel.runModalForDirectory(folder.path(), QStringLiteral("DB.plist")), NSFileHandlingPanelOKButton);
    EXPECT_EQ(panel.filename(), path(QStringLiteral("DB.plist")));
}

TEST_F(NSSavePanelTest, BeginsInTheHomeFolderWhereNoneIsNamed) {
    NSSavePanel panel;
    Steps steps;
    steps.addForFileDialog([&](QFileDialog& dialog) {
        EXPECT_EQ(dialog.directory(), QDir::home());
        escape(dialog);
    });
    panel.runModal();
}

TEST_F(NSSavePanelTest, GivesTheNameTheRequiredTypeWhereItLacksIt) {
    EXPECT_EQ(saved(QStringLiteral("plain"), QStringLiteral("plist")), path(QStringLiteral("plain.plist")));
    EXPECT_EQ(saved(QStringLiteral("other.txt"), QStringLiteral("plist")), path(QStringLiteral("other.txt.plist")));
    EXPECT_EQ(saved(QStringLiteral("right.plist"), QStringLiteral("plist")), path(QStringLiteral("right.plist")));
    EXPECT_EQ(saved(QStringLiteral("loud.PLIST"), QStringLiteral("plist")), path(QStringLiteral("loud.PLIST")));
    EXPECT_EQ(saved(QStringLiteral("dotted"), QStringLiteral(".plist")), path(QStringLiteral("dotted.plist")));
    EXPECT_EQ(application.beeps, 0);
}

TEST_F(NSSavePanelTest, TakesAnyNameWithoutARequiredType) {
    EXPECT_EQ(saved(QStringLiteral("plain"), {}), path(QStringLiteral("plain")));
    EXPECT_EQ(saved(QStringLiteral("other.txt"), {}), path(QStringLiteral("other.txt")));
}

TEST_F(NSSavePanelTest, AsksBeforeItNamesAFileThatExists) {
    makeFile(QStringLiteral("taken.txt.plist"));
    NSSavePanel panel;
    panel.setRequiredFileType(QStringLiteral("plist"));
    Steps steps;
    steps.addForFileDialog([](QFileDialog& dialog) { enterName(dialog, QStringLiteral("taken.txt")); });
    steps.addForQuestion([](QMessageBox& question) {
        EXPECT_TRUE(question.text().contains(QStringLiteral("taken.txt.plist"))) << question.text().toStdString();
        question.button(QMessageBox::No)->click();
    });
    steps.addForFileDialog([](QFileDialog& dialog) { QTest::keyClick(dialog.windowHandle(), Qt::Key_Return); });
    steps.addForQuestion([](QMessageBox& question) { question.button(QMessageBox::Yes)->click(); });
    EXPECT_EQ(panel.runModalForDirectory(folder.path(), {}), NSFileHandlingPanelOKButton);
    EXPECT_EQ(panel.filename(), path(QStringLiteral("taken.txt.plist")));
}

TEST_F(NSSavePanelTest, AsksAgainWhereThePlatformsDialogAnswersAFileThatNobodyAgreedToReplace) {
    makeFile(QStringLiteral("taken.txt.plist"));
    NSSavePanel panel;
    panel.setRequiredFileType(QStringLiteral("plist"));
    Steps steps;
    steps.addForFileDialog([](QFileDialog& dialog) { acceptAsThePlatforms(dialog, QStringLiteral("taken.txt")); });
    steps.addForFileDialog([&](QFileDialog& dialog) {
        EXPECT_EQ(application.beeps, 1);
        EXPECT_EQ(nameIn(dialog), QStringLiteral("taken.txt.plist"));
        EXPECT_EQ(panel.filename(), QString());
        acceptAsThePlatforms(dialog, QStringLiteral("free.txt"));
    });
    EXPECT_EQ(panel.runModalForDirectory(folder.path(), {}), NSFileHandlingPanelOKButton);
    EXPECT_EQ(panel.filename(), path(QStringLiteral("free.txt.plist")));
}

TEST_F(NSOpenPanelTest, AsksAgainWhereThePlatformsDialogAnswersAFileOfAnotherType) {
    makeFile(QStringLiteral("b.txt"));
    NSOpenPanel panel;
    Steps steps;
    steps.addForFileDialog([](QFileDialog& dialog) { acceptAsThePlatforms(dialog, QStringLiteral("b.txt")); });
    steps.addForFileDialog([&](QFileDialog& dialog) {
        EXPECT_EQ(application.beeps, 1);
        escape(dialog);
    });
    EXPECT_EQ(panel.runModalForDirectory(folder.path(), {}, {QStringLiteral("plist")}), NSCancelButton);
    EXPECT_EQ(panel.filename(), QString());
}

TEST_F(NSSavePanelTest, ForgetsItsAnswerWhenItIsCancelledTheNextTime) {
    NSSavePanel panel;
    Steps steps;
    steps.addForFileDialog([](QFileDialog& dialog) { enterName(dialog, QStringLiteral("name")); });
    EXPECT_EQ(panel.runModalForDirectory(folder.path(), {}), NSFileHandlingPanelOKButton);
    EXPECT_EQ(panel.filename(), path(QStringLiteral("name")));
    steps.addForFileDialog([](QFileDialog& dialog) { escape(dialog); });
    EXPECT_EQ(panel.runModalForDirectory(folder.path(), {}), NSFileHandlingPanelCancelButton);
    EXPECT_EQ(panel.filename(), QString());
}

TEST_F(NSSavePanelTest, IsCancelledWhenItIsClosed) {
    NSSavePanel panel;
    Steps steps;
    steps.addForFileDialog([](QFileDialog& dialog) { dialog.close(); });
    EXPECT_EQ(panel.runModal(), NSFileHandlingPanelCancelButton);
}

TEST_F(NSSavePanelTest, IsCancelledFromOutside) {
    NSSavePanel panel;
    const std::vector<std::function<void()>> endings = {
        [&] { application.stopModal(); },           [&] { application.stopModalWithCode(NSFileHandlingPanelOKButton); },
        [&] { application.abortModal(); },          [&] { panel.orderOut(nullptr); },
        [&] { panel.orderWindow(NSWindowOut, 0); }, [&] { application.terminate(nullptr); },
    };
    int ended = 0;
    for (const auto& end : endings) {
        Steps steps;
        steps.addForFileDialog([&](QFileDialog& dialog) {
            typeName(dialog, QStringLiteral("name"));
            end();
            ++ended;
        });
        EXPECT_EQ(panel.runModal(), NSFileHandlingPanelCancelButton) << ended;
        EXPECT_EQ(openDialog<QFileDialog>(), nullptr) << ended;
        EXPECT_EQ(panel.filename(), QString());
    }
    EXPECT_EQ(ended, 6);
}

TEST_F(NSSavePanelTest, IsCancelledWhenItIsDestroyed) {
    auto panel = NSSavePanel::savePanel();
    Steps steps;
    steps.addForFileDialog([&](QFileDialog&) { panel.reset(); });
    EXPECT_EQ(panel->runModal(), NSFileHandlingPanelCancelButton);
    EXPECT_EQ(application.modalWindow(), nullptr);
    EXPECT_EQ(openDialog<QFileDialog>(), nullptr);
}

TEST_F(NSSavePanelTest, IsNotAskedAgainWhileItAsks) {
    NSSavePanel panel;
    Steps steps;
    int inner = -1;
    steps.addForFileDialog([&](QFileDialog& dialog) {
        inner = panel.runModal();
        enterName(dialog, QStringLiteral("name"));
    });
    EXPECT_EQ(panel.runModalForDirectory(folder.path(), {}), NSFileHandlingPanelOKButton);
    EXPECT_EQ(inner, NSFileHandlingPanelCancelButton);
    EXPECT_EQ(panel.filename(), path(QStringLiteral("name")));
}

TEST_F(NSSavePanelTest, NestsInTheRunOfAWindowAndGivesItTheKeyboardBack) {
    HostWindow window(NSMakeRect(100, 100, 200, 100));
    Steps steps;
    int inner = -1;
    steps.add([&] { return window.isKeyWindow() && application.modalWindow() == &window; },
              [&] {
                  NSSavePanel panel;
                  inner = panel.runModal();
                  EXPECT_EQ(application.modalWindow(), &window);
                  EXPECT_TRUE(QTest::qWaitFor([&] { return window.isKeyWindow(); }));
                  application.stopModalWithCode(7);
              });
    steps.addForFileDialog([&](QFileDialog& dialog) {
        EXPECT_NE(application.modalWindow(), &window);
        EXPECT_FALSE(window.isKeyWindow());
        escape(dialog);
    });
    EXPECT_EQ(application.runModalForWindow(window), 7);
    EXPECT_EQ(inner, NSFileHandlingPanelCancelButton);
}

TEST_F(NSOpenPanelTest, OffersFilesOfTheGivenTypesAndFolders) {
    makeFile(QStringLiteral("a.plist"));
    makeFile(QStringLiteral("b.txt"));
    makeFile(QStringLiteral("c.xml"));
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("d")));
    NSOpenPanel panel;
    Steps steps;
    steps.addForFileDialog([&](QFileDialog& dialog) {
        EXPECT_EQ(dialog.acceptMode(), QFileDialog::AcceptOpen);
        const std::vector<QString> wanted = {QStringLiteral("a.plist"), QStringLiteral("c.xml"), QStringLiteral("d")};
        std::vector<QString> names;
        EXPECT_TRUE(QTest::qWaitFor([&] {
            names = listed(dialog);
            std::sort(names.begin(), names.end());
            return names == wanted;
        })) << testing::PrintToString(names);
        escape(dialog);
    });
    EXPECT_EQ(panel.runModalForDirectory(folder.path(), {}, {QStringLiteral("plist"), QStringLiteral(".xml")}),
              NSCancelButton);
}

TEST_F(NSOpenPanelTest, TakesAFileOfAGivenTypeInAnyCase) {
    makeFile(QStringLiteral("a.PLIST"));
    NSOpenPanel panel;
    Steps steps;
    steps.addForFileDialog([](QFileDialog& dialog) { enterName(dialog, QStringLiteral("a.PLIST")); });
    EXPECT_EQ(panel.runModalForDirectory(folder.path(), {}, {QStringLiteral("plist")}), NSOKButton);
    EXPECT_EQ(panel.filename(), path(QStringLiteral("a.PLIST")));
}

TEST_F(NSOpenPanelTest, BeepsAtATypedNameOfAnotherType) {
    makeFile(QStringLiteral("a.plist"));
    makeFile(QStringLiteral("b.txt"));
    NSOpenPanel panel;
    Steps steps;
    steps.addForFileDialog([&](QFileDialog& dialog) {
        enterName(dialog, QStringLiteral("b.txt"));
        EXPECT_EQ(application.beeps, 1);
        EXPECT_TRUE(dialog.isVisible());
        enterName(dialog, QStringLiteral("a.plist"));
    });
    EXPECT_EQ(panel.runModalForDirectory(folder.path(), {}, {QStringLiteral("plist")}), NSOKButton);
    EXPECT_EQ(panel.filename(), path(QStringLiteral("a.plist")));
}

TEST_F(NSOpenPanelTest, TakesNoFileThatDoesNotExist) {
    NSOpenPanel panel;
    Steps steps;
    steps.addForFileDialog([](QFileDialog& dialog) { enterName(dialog, QStringLiteral("missing.plist")); });
    steps.addForQuestion([](QMessageBox& told) { escape(told); });
    steps.addForFileDialog([](QFileDialog& dialog) { escape(dialog); });
    EXPECT_EQ(panel.runModalForDirectory(folder.path(), {}, {QStringLiteral("plist")}), NSCancelButton);
}

TEST_F(NSOpenPanelTest, TakesAnyFileWithoutTypesAndOnlyTheRequiredOneWithThat) {
    makeFile(QStringLiteral("b.txt"));
    const auto panel = NSOpenPanel::openPanel();
    Steps steps;
    steps.addForFileDialog([](QFileDialog& dialog) { enterName(dialog, QStringLiteral("b.txt")); });
    EXPECT_EQ(panel->runModalForDirectory(folder.path(), {}), NSOKButton);
    EXPECT_EQ(panel->filename(), path(QStringLiteral("b.txt")));
    panel->setRequiredFileType(QStringLiteral("plist"));
    steps.addForFileDialog([&](QFileDialog& dialog) {
        enterName(dialog, QStringLiteral("b.txt"));
        EXPECT_EQ(application.beeps, 1);
        escape(dialog);
    });
    EXPECT_EQ(panel->runModalForDirectory(folder.path(), {}), NSCancelButton);
}

TEST_F(NSOpenPanelTest, BeginsInTheHomeFolderWithTypesAlone) {
    NSOpenPanel panel;
    Steps steps;
    steps.addForFileDialog([](QFileDialog& dialog) {
        EXPECT_EQ(dialog.directory(), QDir::home());
        EXPECT_THAT(dialog.nameFilters(), ElementsAre(QStringLiteral("*.plist")));
        escape(dialog);
    });
    EXPECT_EQ(panel.runModalForTypes({QStringLiteral("plist")}), NSCancelButton);
}

TEST(FilePanelsOfAPlainQtProgram, AskToo) {
    int argc = 1;
    char name[] = "plain";
    char* argv[] = {name, nullptr};
    const QApplication application(argc, argv);
    const QTemporaryDir folder;
    NSSavePanel panel;
    panel.setRequiredFileType(QStringLiteral("plist"));
    Steps steps;
    steps.addForFileDialog([](QFileDialog& dialog) { enterName(dialog, QStringLiteral("name")); });
    EXPECT_EQ(panel.runModalForDirectory(folder.path(), {}), NSFileHandlingPanelOKButton);
    EXPECT_EQ(panel.filename(), folder.filePath(QStringLiteral("name.plist")));
    steps.addForFileDialog([](QFileDialog& dialog) { dialog.close(); });
    EXPECT_EQ(panel.runModal(), NSFileHandlingPanelCancelButton);
}
