// SPDX-License-Identifier: MIT
// What is removed, renamed, added and imported in the window.
#include "SnippetsWindowHost.h"

#include <ImportBar.h>
#include <SnippetQuestions.h>

#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDProgressIndicator.h>
#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/foundation/NSTimer.h>

#include <QKeyEvent>
#include <QSignalSpy>

namespace {

using SnippetsWindowTest = SnippetsWindowHost;

TEST_F(SnippetsWindowTest, DeleteRemovesAndUndoPutsTheSameRecordBack) {
    press(Qt::Key_Down);
    const std::shared_ptr<Snippet> middle = window->selectedSnippet();
    press(Qt::Key_Delete);
    EXPECT_EQ(totalCount(), 2);
    EXPECT_TRUE(undoBar()->isVisible());
    EXPECT_EQ(undoBar()->text(), QStringLiteral("Removed “Middle”"));
    EXPECT_EQ(selectedTitle(), "Oldest");

    QTest::mouseClick(button("Undo"), Qt::LeftButton);
    EXPECT_EQ(totalCount(), 3);
    EXPECT_FALSE(undoBar()->isVisible());
    EXPECT_EQ(window->selectedSnippet(), middle);
    EXPECT_EQ(window->model().indexOf(*middle).row(), 1);
}

TEST_F(SnippetsWindowTest, ControlZPutsBackEverythingThatTheBarOffers) {
    press(Qt::Key_Delete);
    press(Qt::Key_Delete);
    EXPECT_EQ(undoBar()->text(), QStringLiteral("Removed 2 snippets"));
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(totalCount(), 3);
    EXPECT_FALSE(undoBar()->isVisible());
    EXPECT_FALSE(window->canUndo());
}

TEST_F(SnippetsWindowTest, TheUndoBarGoesAwayByItself) {
    const NSTimer::IntervalsForTesting intervals([](double) { return 0.0; });
    press(Qt::Key_Delete);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !undoBar()->isVisible(); }));
    EXPECT_EQ(totalCount(), 2);
    press(Qt::Key_Delete);
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(totalCount(), 2) << "what the bar has offered before is undone by itself";
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(totalCount(), 3);
}

TEST_F(SnippetsWindowTest, DeleteInTheMiddleOfTheSearchDeletesThere) {
    type("mid");
    press(Qt::Key_Home);
    press(Qt::Key_Delete);
    EXPECT_EQ(search()->text(), QStringLiteral("id"));
    EXPECT_EQ(totalCount(), 3);
}

TEST_F(SnippetsWindowTest, AKeyHeldDownRemovesOneSnippetOnly) {
    press(Qt::Key_Delete);
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Delete, Qt::NoModifier, {}, true);
    QCoreApplication::sendEvent(search(), &repeated);
    EXPECT_EQ(totalCount(), 2);
}

TEST_F(SnippetsWindowTest, AsksBeforeItRemoves) {
    setAsks(true);
    const AnimationDurationsForTesting none(0);
    whenAsked(Qt::Key_Escape);
    press(Qt::Key_Delete);
    EXPECT_EQ(totalCount(), 3);
    EXPECT_TRUE(asksBeforeRemoving());
    whenAsked(Qt::Key_Return);
    press(Qt::Key_Delete);
    EXPECT_EQ(totalCount(), 2);
    EXPECT_TRUE(window->canUndo());
    EXPECT_TRUE(asksBeforeRemoving());
    EXPECT_EQ(questions, 2);
}

TEST_F(SnippetsWindowTest, AsksNoMoreWhereThatWasWished) {
    setAsks(true);
    const AnimationDurationsForTesting none(0);
    whenNextModalRunHasBegun(application, [this] {
        LTHUDCheckBox* box = nullptr;
        for (QAbstractButton* button : application.modalWindow()->findChildren<QAbstractButton*>()) {
            box = box ? box : dynamic_cast<LTHUDCheckBox*>(button);
        }
        ASSERT_TRUE(box);
        box->setState(NSOnState);
        pressInSheet(Qt::Key_Return);
    });
    button("Remove")->click();
    EXPECT_EQ(totalCount(), 2);
    EXPECT_FALSE(asksBeforeRemoving());
    press(Qt::Key_Delete);
    EXPECT_EQ(totalCount(), 1);
}

TEST_F(SnippetsWindowTest, ACheckedBoxIsForgottenWhereTheSnippetStays) {
    setAsks(true);
    const AnimationDurationsForTesting none(0);
    whenNextModalRunHasBegun(application, [this] {
        for (QAbstractButton* button : application.modalWindow()->findChildren<QAbstractButton*>()) {
            if (auto* box = dynamic_cast<LTHUDCheckBox*>(button)) {
                box->setState(NSOnState);
            }
        }
        pressInSheet(Qt::Key_Escape);
    });
    press(Qt::Key_Delete);
    EXPECT_EQ(totalCount(), 3);
    EXPECT_TRUE(asksBeforeRemoving());
}

TEST_F(SnippetsWindowTest, RenamesTheSelectedSnippet) {
    const AnimationDurationsForTesting none(0);
    const std::shared_ptr<Snippet> newest = window->selectedSnippet();
    whenNextModalRunHasBegun(application, [this] {
        auto* field = application.modalWindow()->findChild<QLineEdit*>();
        ASSERT_TRUE(field);
        EXPECT_EQ(field->selectedText(), QStringLiteral("Newest"));
        field->setText(QStringLiteral("  Another name "));
        pressInSheet(Qt::Key_Return);
    });
    press(Qt::Key_F2);
    EXPECT_EQ(selectedTitle(), "Another name");
    EXPECT_EQ(window->selectedSnippet(), newest);
    EXPECT_TRUE(newest->dateOfModification());
    EXPECT_TRUE(LTDatabase::isDirty());
    EXPECT_EQ(window->model().data(window->model().indexOf(*newest)).toString(), QStringLiteral("Another name"));
}

TEST_F(SnippetsWindowTest, KeepsATitleThatIsNotReplaced) {
    const AnimationDurationsForTesting none(0);
    for (const Qt::Key answer : {Qt::Key_Escape, Qt::Key_Return}) {
        whenAsked(answer);
        button("Rename")->click();
        EXPECT_EQ(selectedTitle(), "Newest");
        EXPECT_FALSE(window->selectedSnippet()->dateOfModification());
    }
    EXPECT_EQ(questions, 2);
}

TEST_F(SnippetsWindowTest, ControlVAddsFromTheClipboardAndSelectsIt) {
    setClipboard("  Clipped title  \nand more\n");
    type("oldest");
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(totalCount(), 4);
    EXPECT_EQ(selectedTitle(), "Clipped title");
    EXPECT_EQ(window->selectedSnippet()->text(), QStringLiteral("  Clipped title  \nand more\n"));
    EXPECT_EQ(search()->text(), QString());
    EXPECT_EQ(window->model().indexOf(*window->selectedSnippet()).row(), 0);
}

TEST_F(SnippetsWindowTest, ControlVReplacesWhatIsSelectedInTheSearch) {
    setClipboard("middle");
    type("oldest");
    search()->selectAll();
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(search()->text(), QStringLiteral("middle"));
    EXPECT_EQ(totalCount(), 3);
}

TEST_F(SnippetsWindowTest, AddsNothingFromAClipboardWithoutText) {
    setClipboard(" \n\t");
    EXPECT_FALSE(window->addFromClipboard());
    NSPasteboard::generalPasteboard().clearContents();
    EXPECT_FALSE(window->addFromClipboard());
    EXPECT_EQ(totalCount(), 3);
}

TEST_F(SnippetsWindowTest, TellsWhatWasNotImportedAndTheDetails) {
    auto* bar = window->findChild<MessageBar*>(QStringLiteral("messageBar"));
    window->showImportResult({.importedCount = 3, .refusals = {}});
    EXPECT_FALSE(bar->isVisible());

    window->showImportResult({.importedCount = 1,
                              .refusals = {{.name = QStringLiteral("a.png"), .reason = QStringLiteral("is empty")},
                                           {.name = QStringLiteral("b"), .reason = QStringLiteral("is large")}}});
    EXPECT_TRUE(bar->isVisible());
    EXPECT_EQ(bar->text(), QStringLiteral("1 file was imported, 2 not"));
    EXPECT_EQ(bar->details(), QStringLiteral("a.png: is empty\nb: is large"));
    EXPECT_FALSE(bar->findChild<QPlainTextEdit*>()->isVisible());
    for (QPushButton* details : bar->findChildren<QPushButton*>()) {
        if (details->text() == QStringLiteral("Details")) {
            details->click();
        }
    }
    EXPECT_TRUE(bar->findChild<QPlainTextEdit*>()->isVisible());
}

TEST_F(SnippetsWindowTest, TellsHowFarAnImportIsAndThatItIsOver) {
    auto* const bar = window->findChild<ImportBar*>();
    EXPECT_FALSE(bar->isVisible());
    window->showImportProgress({.isLooking = true, .foundCount = 7});
    EXPECT_TRUE(bar->isVisible());
    EXPECT_EQ(bar->text(), QStringLiteral("Looking for files: 7 found"));
    EXPECT_TRUE(bar->indicator().isIndeterminate());
    window->showImportProgress({.isLooking = false, .foundCount = 1200, .doneCount = 300});
    EXPECT_EQ(bar->text(), QStringLiteral("Importing: 300 of 1,200"));
    EXPECT_FALSE(bar->indicator().isIndeterminate());
    EXPECT_EQ(bar->indicator().doubleValue() / bar->indicator().maxValue(), 0.25);
    window->showImportResult({.importedCount = 1200, .refusals = {}});
    EXPECT_FALSE(bar->isVisible());
    EXPECT_FALSE(bar->indicator().isMoving());
    EXPECT_FALSE(window->findChild<MessageBar*>(QStringLiteral("messageBar"))->isVisible());
}

TEST_F(SnippetsWindowTest, TellsHowManyCameInBeforeAnImportWasStopped) {
    auto* const bar = window->findChild<MessageBar*>(QStringLiteral("messageBar"));
    window->showImportResult({.importedCount = 12, .refusals = {}, .wasStopped = true});
    EXPECT_TRUE(bar->isVisible());
    EXPECT_EQ(bar->text(), QStringLiteral("Stopped: 12 files were imported"));
    window->showImportResult({.importedCount = 1,
                              .refusals = {{.name = QStringLiteral("b"), .reason = QStringLiteral("is large")}},
                              .wasStopped = true});
    EXPECT_EQ(bar->text(), QStringLiteral("Stopped: 1 file was imported, 1 not"));
}

TEST_F(SnippetsWindowTest, StopAndEscapeAskForTheEndOfAnImport) {
    const QSignalSpy asked(window.get(), &SnippetsWindow::asksToStopImport);
    window->showImportProgress({.isLooking = false, .foundCount = 9, .doneCount = 3});
    QTest::mouseClick(button("Stop"), Qt::LeftButton);
    EXPECT_EQ(asked.count(), 1);
    button("Stop")->setFocus(Qt::TabFocusReason);
    press(Qt::Key_Return);
    EXPECT_EQ(asked.count(), 2);
    EXPECT_TRUE(window->isVisible()) << "Return presses the button, and copies nothing";

    search()->setFocus();
    type("mid");
    press(Qt::Key_Escape);
    EXPECT_EQ(asked.count(), 2) << "first of all it clears the search";
    press(Qt::Key_Escape);
    EXPECT_EQ(asked.count(), 3);
    EXPECT_TRUE(window->isVisible());
    window->showImportResult({});
    press(Qt::Key_Escape);
    EXPECT_EQ(asked.count(), 3);
    EXPECT_FALSE(window->isVisible());
}

} // namespace
