// SPDX-License-Identifier: MIT
#include "SnippetsWindowHost.h"

#include <ImportBar.h>
#include <MessageBar.h>
#include <SnippetKindTag.h>
#include <SnippetPasteboard.h>
#include <SnippetQuestions.h>
#include <SnippetsListModel.h>
#include <SnippetsListView.h>
#include <SnippetsWindow.h>

#include <VXKit/app/LTStatusItemView.h>
#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDProgressIndicator.h>
#include <VXKit/controls/LTHUDScrollBar.h>
#include <VXKit/controls/LTLeftResizeCorner.h>
#include <VXKit/controls/LTResizeCorner.h>
#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSPasteboard.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/appkit/NSStatusItem.h>
#include <VXKit/platform/foundation/NSTimer.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>
#include <VXKit/support/NSPasteboard+VXKitAdditions.h>

#include <QAccessible>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHeaderView>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QSplitter>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QWindow>

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>

namespace {

class SnippetsWindowTest : public SnippetsWindowHost {};

TEST_F(SnippetsWindowTest, OpensWithTheNewestSelectedAndTheKeyboardInTheSearch) {
    EXPECT_EQ(selectedTitle(), "Newest");
    EXPECT_TRUE(search()->hasFocus());
    EXPECT_EQ(previewedText(), QStringLiteral("newest text"));
}

TEST_F(SnippetsWindowTest, UpAndDownMoveThroughTheListFromTheSearch) {
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    EXPECT_EQ(selectedTitle(), "Oldest");
    press(Qt::Key_Up);
    EXPECT_EQ(selectedTitle(), "Middle");
    EXPECT_TRUE(search()->hasFocus());
}

TEST_F(SnippetsWindowTest, TypingInTheListSearches) {
    list()->setFocus();
    type("mid");
    EXPECT_EQ(search()->text(), QStringLiteral("mid"));
    EXPECT_TRUE(search()->hasFocus());
    EXPECT_EQ(window->model().rowCount(), 1);
    EXPECT_EQ(selectedTitle(), "Middle");

    list()->setFocus();
    press(Qt::Key_Backspace);
    EXPECT_EQ(search()->text(), QStringLiteral("mi"));
}

TEST_F(SnippetsWindowTest, ReturnCopiesCountsTheUseAndHides) {
    const QSignalSpy left(window.get(), &SnippetsWindow::left);
    const double before = NSDate::date().timeIntervalSince1970();
    press(Qt::Key_Down);
    const std::shared_ptr<Snippet> middle = window->selectedSnippet();
    const std::optional<NSDate> modified = middle->dateOfModification();
    press(Qt::Key_Return);

    EXPECT_EQ(clipboard(), QStringLiteral("middle text"));
    EXPECT_EQ(middle->useCount(), 1);
    ASSERT_TRUE(middle->dateOfLastUse());
    EXPECT_GE(middle->dateOfLastUse()->timeIntervalSince1970(), before);
    EXPECT_EQ(middle->dateOfModification(), modified);
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(left.count(), 1);
    EXPECT_TRUE(LTDatabase::isDirty());
}

TEST_F(SnippetsWindowTest, ReturnWithoutAMatchDoesNothing) {
    type("nothing like it");
    press(Qt::Key_Return);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(selectedTitle(), "nothing");
}

TEST_F(SnippetsWindowTest, ControlCCopiesAndStays) {
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard(), QStringLiteral("newest text"));
    EXPECT_TRUE(window->isVisible());
}

TEST_F(SnippetsWindowTest, ControlCCopiesWhatIsSelectedInAField) {
    type("new");
    search()->selectAll();
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard(), QStringLiteral("new"));
    EXPECT_EQ(window->selectedSnippet()->useCount(), 0);
}

TEST_F(SnippetsWindowTest, EscapeClearsTheSearchFirstThenHides) {
    type("mid");
    press(Qt::Key_Escape);
    EXPECT_EQ(search()->text(), QString());
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(selectedTitle(), "Middle");
    press(Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible());
}

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

TEST_F(SnippetsWindowTest, ButtonsNeedASelection) {
    EXPECT_TRUE(button("Copy")->isEnabled());
    EXPECT_TRUE(button("Remove")->isEnabled());
    window->selectRow(-1);
    EXPECT_FALSE(button("Copy")->isEnabled());
    EXPECT_FALSE(button("Remove")->isEnabled());
    EXPECT_TRUE(button("Add from Clipboard")->isEnabled());
    EXPECT_EQ(previewedText(), QString());
}

TEST_F(SnippetsWindowTest, ReturnOnAButtonPressesIt) {
    button("Remove")->setFocus(Qt::TabFocusReason);
    press(Qt::Key_Return);
    EXPECT_EQ(totalCount(), 2);
    EXPECT_TRUE(window->isVisible());
}

TEST_F(SnippetsWindowTest, TheSelectionSurvivesWhatHappensInTheDatabase) {
    press(Qt::Key_Down);
    add(4.0, "Newer still");
    database->removeSnippet(std::shared_ptr<_LTSnippet>(database->snippets()[0]));
    EXPECT_EQ(selectedTitle(), "Middle");
}

TEST_F(SnippetsWindowTest, WhatComesIntoAnEmptyListIsSelected) {
    for (int removed = 0; removed < 3; ++removed) {
        press(Qt::Key_Delete);
    }
    EXPECT_EQ(selectedTitle(), "nothing");
    add(5.0, "First to come");
    add(6.0, "Next");
    EXPECT_EQ(selectedTitle(), "First to come");
    EXPECT_TRUE(button("Copy")->isEnabled());
}

TEST_F(SnippetsWindowTest, SaysSoWhereThereIsNothingToShow) {
    EXPECT_EQ(list()->shownPlaceholderText(), QString());
    type("nothing like it");
    EXPECT_EQ(list()->shownPlaceholderText(), QStringLiteral("No snippet has all of these words."));
    press(Qt::Key_Escape);
    for (int removed = 0; removed < 3; ++removed) {
        press(Qt::Key_Delete);
    }
    EXPECT_TRUE(list()->shownPlaceholderText().startsWith(QStringLiteral("No snippets yet.")));
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

TEST_F(SnippetsWindowTest, HomeAndEndGoToTheEndsOfTheList) {
    list()->setFocus();
    press(Qt::Key_End);
    EXPECT_EQ(selectedTitle(), "Oldest");
    press(Qt::Key_Home);
    EXPECT_EQ(selectedTitle(), "Newest");
}

TEST_F(SnippetsWindowTest, TabLeavesTheList) {
    list()->setFocus();
    press(Qt::Key_Tab);
    EXPECT_FALSE(list()->hasFocus());
    EXPECT_EQ(selectedTitle(), "Newest");
}

TEST_F(SnippetsWindowTest, AClickSelectsAndADoubleClickCopiesAndHides) {
    const QPoint oldest = list()->visualRect(window->model().index(2)).center();
    QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, oldest);
    EXPECT_EQ(selectedTitle(), "Oldest");
    QTest::mouseDClick(list()->viewport(), Qt::LeftButton, {}, oldest);
    EXPECT_EQ(clipboard(), QStringLiteral("oldest text"));
    EXPECT_FALSE(window->isVisible());
}

TEST_F(SnippetsWindowTest, ItsListFillsItsWidthWithRowsOfTwoLines) {
    const QRect row = list()->visualRect(window->model().index(0));
    EXPECT_EQ(row.width(), list()->viewport()->width());
    EXPECT_GE(row.height(), 2 * list()->fontMetrics().height());
    EXPECT_EQ(list()->visualRect(window->model().index(1)).top(), row.bottom() + 1);
}

TEST_F(SnippetsWindowTest, ScreenReadersFindTheTitlesInTheTableAndNoNumbers) {
    QAccessibleInterface* const accessible = QAccessible::queryAccessibleInterface(list());
    ASSERT_TRUE(accessible && accessible->tableInterface());
    EXPECT_EQ(accessible->text(QAccessible::Name), QStringLiteral("Snippets"));
    EXPECT_EQ(accessible->tableInterface()->rowCount(), 3);
    EXPECT_EQ(accessible->tableInterface()->cellAt(1, 0)->text(QAccessible::Name), QStringLiteral("Middle"));
    EXPECT_EQ(window->model().headerData(1, Qt::Vertical), QVariant());
}

TEST_F(SnippetsWindowTest, AllThatScrollsHasTheKitsScrollBars) {
    int areas = 0;
    for (const QAbstractScrollArea* area : window->findChildren<QAbstractScrollArea*>()) {
        if (qobject_cast<const QHeaderView*>(area)) {
            continue;
        }
        ++areas;
        for (QScrollBar* bar : {area->verticalScrollBar(), area->horizontalScrollBar()}) {
            const auto* const scroller = dynamic_cast<LTHUDScrollBar*>(bar);
            ASSERT_TRUE(scroller) << area->accessibleName().toStdString();
            EXPECT_EQ(scroller->arrowsPosition(), NSScrollerArrowsNone);
        }
    }
    EXPECT_GE(areas, 2);
}

TEST_F(SnippetsWindowTest, TellsTheKindOfTheSelectedSnippet) {
    const auto kind = [this] {
        QCoreApplication::processEvents();
        std::vector<std::string> kinds;
        for (QWidget* widget : window->findChildren<QWidget*>()) {
            if (dynamic_cast<SnippetKindTag*>(widget)) {
                EXPECT_TRUE(widget->isVisible());
                kinds.push_back(widget->accessibleName().toStdString());
            }
        }
        return kinds;
    };
    EXPECT_THAT(kind(), testing::ElementsAre("Text"));
    add(4.0, "Page", "https://example.org");
    window->selectRow(0);
    EXPECT_THAT(kind(), testing::ElementsAre("Link"));
    window->selectRow(-1);
    EXPECT_THAT(kind(), testing::IsEmpty());
}

TEST_F(SnippetsWindowTest, CopyingShowsThePopUpOnceTheWindowIsGone) {
    const AnimationDurationsForTesting none(0);
    bool wasVisibleAtLeaving = false;
    QObject::connect(window.get(), &SnippetsWindow::left, window.get(),
                     [&] { wasVisibleAtLeaving = isCopyPopUpShown(); });
    press(Qt::Key_Return);
    EXPECT_EQ(clipboard(), QStringLiteral("newest text"));
    EXPECT_FALSE(window->isVisible());
    EXPECT_FALSE(wasVisibleAtLeaving);
    EXPECT_TRUE(QTest::qWaitFor([] { return isCopyPopUpShown(); }));
    EXPECT_FALSE(window->isVisible());
}

TEST_F(SnippetsWindowTest, NothingCopiedShowsNoPopUp) {
    const AnimationDurationsForTesting none(0);
    window->selectRow(-1);
    press(Qt::Key_C, Qt::ControlModifier);
    QTest::qWait(20);
    EXPECT_FALSE(isCopyPopUpShown());
}

TEST_F(SnippetsWindowTest, TellsHowFarAnImportIsAndThatItIsOver) {
    auto* const bar = window->findChild<ImportBar*>();
    EXPECT_FALSE(bar->isVisible());
    window->showImportProgress({.isLooking = true, .foundCount = 7});
    EXPECT_TRUE(bar->isVisible());
    EXPECT_EQ(bar->text(), QStringLiteral("Looking for files: 7 found"));
    EXPECT_TRUE(bar->indicator().isIndeterminate());
    window->showImportProgress({.isLooking = false, .foundCount = 1200, .doneCount = 300});
    EXPECT_EQ(bar->text(), QStringLiteral("Importing: 300 of 1,200 files"));
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

TEST_F(SnippetsWindowTest, EveryPlaceForTheKeyboardHasAnAccessibleName) {
    for (const QWidget* widget : window->findChildren<QWidget*>()) {
        if (widget->isVisible() && (widget->focusPolicy() & Qt::TabFocus) && widget->focusProxy() == nullptr &&
            !widget->inherits("QSplitter")) {
            EXPECT_FALSE(widget->accessibleName().isEmpty()) << widget->metaObject()->className();
        }
    }
}

class SnippetsApplicationTest : public SnippetsHost {
protected:
    void SetUp() override {
        if (!application.start()) {
            GTEST_FAIL() << "The application does not start";
        }
    }
};

TEST_F(SnippetsWindowTest, KeepsItsDivisionForTheNextLaunch) {
    auto* splitter = window->findChild<QSplitter*>();
    splitter->setSizes({240, splitter->width() - 240});
    const QList<int> sizes = splitter->sizes();
    press(Qt::Key_Escape);
    window = std::make_unique<SnippetsWindow>(database);
    window->makeKeyAndOrderFront(nullptr);
    EXPECT_EQ(window->findChild<QSplitter*>()->sizes(), sizes);
}

TEST_F(SnippetsWindowTest, ItsCornersResizeItWithinItsLimits) {
    // The first click in a window of an application that is not active does no more than activate it.
    application.activateIgnoringOtherApps(true);
    for (const int side : {-1, 1}) {
        QWidget* const corner = side < 0 ? static_cast<QWidget*>(view<LTLeftResizeCorner>()) : view<LTResizeCorner>();
        ASSERT_TRUE(corner);
        const NSSize before = window->frame().size;
        drag(*corner, {side * 40, 24});
        EXPECT_EQ(window->frame().size, (NSSize{before.width + 40, before.height + 24})) << side;
        drag(*corner, {side * 3000, 3000});
        EXPECT_EQ(window->frame().size, window->maxSize()) << side;
        drag(*corner, {-side * 3000, -3000});
        const NSSize small = window->frame().size;
        EXPECT_GE(small.width, window->minSize().width);
        EXPECT_GE(small.height, window->minSize().height);
        EXPECT_EQ(corner->mapTo(window.get(), corner->rect().bottomLeft()).y(), window->height() - 4) << side;
        window->setFrame({window->frame().origin, before}, true);
        EXPECT_TRUE(search()->hasFocus()) << side;
    }
}

TEST_F(SnippetsWindowTest, KeepsItsSizeForTheNextLaunch) {
    const NSRect frame = window->frame();
    window->setFrame({frame.origin, {frame.size.width - 60, frame.size.height - 50}}, true);
    press(Qt::Key_Escape);
    window = std::make_unique<SnippetsWindow>(database);
    EXPECT_EQ(window->frame().size, (NSSize{frame.size.width - 60, frame.size.height - 50}));
}

TEST_F(SnippetsWindowTest, TakesNoSizeThatIsNoneOrBeyondItsLimits) {
    NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
    const NSSize standard = window->frame().size;
    window.reset();
    defaults.setObject(std::string("large"), "SnippetsWindowSize");
    EXPECT_EQ(SnippetsWindow(database).frame().size, standard);
    NSDictionary size;
    size.setObject(std::numeric_limits<double>::quiet_NaN(), "width");
    size.setObject(400.0, "height");
    defaults.setObject(size, "SnippetsWindowSize");
    EXPECT_EQ(SnippetsWindow(database).frame().size, standard);
    size.setObject(1e9, "width");
    size.setObject(1.0, "height");
    defaults.setObject(size, "SnippetsWindowSize");
    const SnippetsWindow limited(database);
    EXPECT_EQ(limited.frame().size.width,
              std::min(limited.maxSize().width, NSScreen::mainScreen().visibleFrame().size.width));
    EXPECT_EQ(limited.frame().size.height, limited.minSize().height);
}

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
