// SPDX-License-Identifier: MIT
#include "SnippetsWindowHost.h"

#include <SnippetKindTag.h>

#include <VXKit/controls/LTHUDScrollBar.h>
#include <VXKit/controls/LTLeftResizeCorner.h>
#include <VXKit/controls/LTResizeCorner.h>
#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/NSScreen.h>

#include <QAccessible>
#include <QHeaderView>
#include <QSignalSpy>
#include <QSplitter>

#include <algorithm>
#include <limits>

#include <gmock/gmock.h>

namespace {

using SnippetsWindowTest = SnippetsWindowHost;

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

TEST_F(SnippetsWindowTest, EveryPlaceForTheKeyboardHasAnAccessibleName) {
    for (const QWidget* widget : window->findChildren<QWidget*>()) {
        if (widget->isVisible() && (widget->focusPolicy() & Qt::TabFocus) && widget->focusProxy() == nullptr &&
            !widget->inherits("QSplitter")) {
            EXPECT_FALSE(widget->accessibleName().isEmpty()) << widget->metaObject()->className();
        }
    }
}

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

} // namespace
