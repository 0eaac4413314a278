// SPDX-License-Identifier: MIT
// Texts that are edited in the window, and what is undone there.
#include "SnippetsEditingHost.h"

#include <VXKit/app/LTApplicationProtocol.h>
#include <VXKit/platform/foundation/NSTimer.h>

#include <QAccessible>
#include <QLabel>

#include <gmock/gmock.h>

namespace {

using SnippetsEditing = SnippetsEditingHost;

TEST_F(SnippetsEditing, TypingInTheTextEditsItAndSearchesNothing) {
    const double before = NSDate::date().timeIntervalSince1970();
    database->saveDB();
    edit();
    EXPECT_TRUE(editor()->hasFocus());
    type("Very ");
    EXPECT_EQ(search()->text(), QString());
    press(Qt::Key_Escape);
    EXPECT_TRUE(search()->hasFocus());
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(selectedText(), "Very newest text");
    EXPECT_GE(selected()->dateOfModification()->timeIntervalSince1970(), before);
    EXPECT_TRUE(LTDatabase::isDirty());
    EXPECT_EQ(window->model().indexOf(*selected()).row(), 0) << "the order is that of making them";
}

TEST_F(SnippetsEditing, EscapeLeadsBackToWhereTheKeyboardWas) {
    list()->setFocus();
    press(Qt::Key_Tab);
    EXPECT_TRUE(editor()->hasFocus());
    press(Qt::Key_Escape);
    EXPECT_TRUE(list()->hasFocus());
    QTest::mouseClick(editor()->viewport(), Qt::LeftButton);
    EXPECT_TRUE(editor()->hasFocus());
    edit();
    EXPECT_TRUE(list()->hasFocus());
}

TEST_F(SnippetsEditing, WhatIsTypedIsKeptAfterAPause) {
    const NSTimer::IntervalsForTesting intervals([](double) { return 0.0; });
    edit();
    type("A");
    EXPECT_TRUE(QTest::qWaitFor([this] { return selectedText() == "Anewest text"; }));
    EXPECT_TRUE(editor()->hasFocus());
    EXPECT_EQ(editor()->textCursor().position(), 1) << "the caret stays where it is";
}

TEST_F(SnippetsEditing, WhatIsTypedIsKeptWithAnotherSelectionAndAtHiding) {
    const std::shared_ptr<Snippet> newest = selected();
    edit();
    type("A");
    window->selectRow(1);
    EXPECT_EQ(newest->text(), QStringLiteral("Anewest text"));
    EXPECT_EQ(previewedText(), QStringLiteral("middle text"));
    type("B");
    window->leave();
    EXPECT_EQ(selectedText(), "Bmiddle text");
}

TEST_F(SnippetsEditing, WhatIsTypedIsSavedAtTheEndOfTheProgram) {
    edit();
    type("A");
    NSNotificationCenter::defaultCenter().postNotificationName(NSApplicationWillTerminateNotification, &application);
    const std::optional<NSDictionary> content = NSDictionary::dictionaryWithContentsOfFile(database->path());
    ASSERT_TRUE(content);
    EXPECT_TRUE(NSPropertyList(*content).description().contains(QStringLiteral("Anewest text")));
}

TEST_F(SnippetsEditing, TypingIsUndoneAlsoAfterItWasKept) {
    edit();
    type("one ");
    press(Qt::Key_Escape);
    EXPECT_EQ(selectedText(), "one newest text");
    edit();
    undo();
    press(Qt::Key_Escape);
    EXPECT_EQ(selectedText(), "newest text");
    edit();
    redo();
    press(Qt::Key_Escape);
    EXPECT_EQ(selectedText(), "one newest text");
}

TEST_F(SnippetsEditing, ControlZOutsideOfTheTextUndoesAllThatWasTyped) {
    edit();
    type("one two ");
    press(Qt::Key_Escape);
    undo();
    EXPECT_EQ(selectedText(), "newest text");
    EXPECT_EQ(previewedText(), QStringLiteral("newest text"));
    redo();
    EXPECT_EQ(selectedText(), "one two newest text");
    EXPECT_EQ(previewedText(), QStringLiteral("one two newest text"));
}

TEST_F(SnippetsEditing, UndoesRenamesRemovalsAndEditsInTheirOrder) {
    const std::shared_ptr<Snippet> newest = selected();
    rename("Renamed");
    edit();
    type("more ");
    press(Qt::Key_Escape);
    press(Qt::Key_Delete);
    EXPECT_EQ(totalCount(), 2);
    undo();
    EXPECT_EQ(selected(), newest);
    EXPECT_EQ(selectedText(), "more newest text");
    undo();
    EXPECT_EQ(selectedText(), "newest text");
    EXPECT_EQ(selectedTitle(), "Renamed");
    undo();
    EXPECT_EQ(selectedTitle(), "Newest");
    EXPECT_FALSE(window->canUndo());
    for (int count = 0; count < 3; ++count) {
        redo();
    }
    EXPECT_EQ(totalCount(), 2);
    EXPECT_EQ(newest->title(), QStringLiteral("Renamed"));
    EXPECT_EQ(newest->text(), QStringLiteral("more newest text"));
    EXPECT_FALSE(window->canRedo());
}

TEST_F(SnippetsEditing, TypingTakesTheOfferToUndoARemovalAway) {
    press(Qt::Key_Delete);
    ASSERT_TRUE(undoBar()->isVisible());
    edit();
    type("A");
    EXPECT_FALSE(undoBar()->isVisible()) << "which is not what would be undone now";
    press(Qt::Key_Escape);
    undo();
    EXPECT_EQ(selectedText(), "middle text");
    EXPECT_EQ(totalCount(), 2);
    undo();
    EXPECT_EQ(selectedText(), "newest text");
    EXPECT_EQ(totalCount(), 3);
}

TEST_F(SnippetsEditing, UndoesATitleThatWasPastedWithATab) {
    rename("From\ta table");
    EXPECT_EQ(selectedTitle(), "From a table");
    EXPECT_EQ(footer()->text(), QStringLiteral("Renamed to “From a table”"));
    undo();
    EXPECT_EQ(selectedTitle(), "Newest");
    redo();
    EXPECT_EQ(selectedTitle(), "From a table");
}

TEST_F(SnippetsEditing, SelectsWhatAnUndoIsAbout) {
    rename("Renamed");
    window->setSearch(QStringLiteral("oldest"));
    EXPECT_EQ(selectedTitle(), "Oldest");
    list()->setFocus();
    undo();
    EXPECT_EQ(selectedTitle(), "Newest");
}

TEST_F(SnippetsEditing, TheSearchUndoesItsOwnTypingWhereThatWasLater) {
    rename("Renamed");
    type("new");
    undo();
    EXPECT_EQ(search()->text(), QString());
    EXPECT_EQ(selectedTitle(), "Renamed");
    undo();
    EXPECT_EQ(selectedTitle(), "Newest");
}

TEST_F(SnippetsEditing, UndoesNothingThatSomebodyElseHasChangedSince) {
    rename("Renamed");
    selected()->rename(QStringLiteral("By a sync"), NSDate::date());
    database->notifyOfModificationForSnippet(selected());
    undo();
    EXPECT_EQ(selectedTitle(), "By a sync");
    EXPECT_EQ(footer()->text(), QStringLiteral("“By a sync” has been changed since"));
}

TEST_F(SnippetsEditing, AnEmptiedTextLeavesTheSnippetWithItsTitle) {
    edit();
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_Delete);
    press(Qt::Key_Escape);
    EXPECT_EQ(totalCount(), 3);
    EXPECT_EQ(selectedTitle(), "Newest");
    EXPECT_EQ(selectedText(), "");
    undo();
    EXPECT_EQ(selectedText(), "newest text");
}

TEST_F(SnippetsEditing, ATitleThatWasMadeOfTheTextFollowsIt) {
    setClipboard("first line\nsecond");
    window->addFromClipboard();
    edit();
    type("A ");
    press(Qt::Key_Escape);
    EXPECT_EQ(selectedTitle(), "A first line");
    window->selectRow(1);
    edit();
    type("A ");
    press(Qt::Key_Escape);
    EXPECT_EQ(selectedTitle(), "Newest") << "which is a title of its own";
}

TEST_F(SnippetsEditing, WhetherATitleFollowsIsSettledBeforeTheTyping) {
    const auto replaceText = [this](const char* text) {
        edit();
        press(Qt::Key_A, Qt::ControlModifier);
        press(Qt::Key_Delete);
        type(text);
        press(Qt::Key_Escape);
    };
    add(4.0, "Hello", "Hello");
    window->selectRow(0);
    replaceText("");
    EXPECT_EQ(selectedTitle(), "Hello") << "there is nothing to make one from";
    replaceText("World");
    EXPECT_EQ(selectedTitle(), "World");
    undo();
    EXPECT_EQ(selectedTitle(), "Hello");

    window->selectRow(1);
    replaceText("Newest");
    replaceText("Newest of all");
    EXPECT_EQ(selectedTitle(), "Newest") << "which the text was equal to for a while";
}

TEST_F(SnippetsEditing, EditsWhatAPlainFieldWouldSpoil) {
    QString hostile = QStringLiteral("a\r\nb\u00a0c\td\r\n");
    hostile += QChar(u'\0');
    hostile += QStringLiteral("\u2028\uFDD0\uFFFC end");
    add(4.0, "Hostile");
    window->selectRow(0);
    const std::shared_ptr<Snippet> snippet = selected();
    snippet->setText(hostile);
    snippet->updateModificationDate();
    database->notifyOfModificationForSnippet(snippet);
    edit();
    press(Qt::Key_End, Qt::ControlModifier);
    type("!");
    press(Qt::Key_Home, Qt::ControlModifier);
    press(Qt::Key_Return);
    press(Qt::Key_Escape);
    EXPECT_EQ(snippet->utf8Text().toPercentEncoding().toStdString(),
              (QStringLiteral("\r\n") + hostile + QLatin1Char('!')).toUtf8().toPercentEncoding().toStdString());
    database->saveDB();
    EXPECT_EQ(std::dynamic_pointer_cast<Snippet>(
                  _LTSnippet::snippetWithDictionary<Snippet>(*snippet->dictionaryRepresentation()))
                  ->text(),
              snippet->text());
}

TEST_F(SnippetsEditing, HalfACharacterIsReplacedAndNothingElse) {
    edit();
    editor()->insertPlainText(QString(QChar(0xD800)));
    press(Qt::Key_Escape);
    EXPECT_EQ(selected()->text().sliced(1), QStringLiteral("newest text"));
    const std::optional<NSDate> kept = selected()->dateOfModification();
    edit();
    press(Qt::Key_Escape);
    EXPECT_EQ(selected()->dateOfModification(), kept) << "it is kept once";
}

TEST_F(SnippetsEditing, AHugeTextIsShownWholeAsSoonAsItIsEdited) {
    const QString line = QStringLiteral("A line among very many of them.\n");
    const std::shared_ptr<Snippet> huge = add(4.0, "Huge");
    huge->setText(line.repeated(20'000));
    huge->updateModificationDate();
    database->notifyOfModificationForSnippet(huge);
    window->selectRow(0);
    EXPECT_LE(editor()->text().size(), 100'000);
    edit();
    EXPECT_EQ(editor()->text(), huge->text());
    press(Qt::Key_End, Qt::ControlModifier);
    type("end");
    press(Qt::Key_Escape);
    EXPECT_EQ(huge->text(), line.repeated(20'000) + QStringLiteral("end"));
    edit();
    undo();
    press(Qt::Key_Escape);
    EXPECT_EQ(huge->text(), line.repeated(20'000));
}

TEST_F(SnippetsEditing, WhatIsNotShownOfAnEndlessLineStays) {
    const std::shared_ptr<Snippet> endless = add(4.0, "Endless");
    endless->setText(QString(1'000'000, QLatin1Char('x')));
    endless->updateModificationDate();
    database->notifyOfModificationForSnippet(endless);
    window->selectRow(0);
    edit();
    EXPECT_LE(editor()->text().size(), 100'000);
    type("a");
    press(Qt::Key_Escape);
    EXPECT_EQ(endless->text(), QLatin1Char('a') + QString(1'000'000, QLatin1Char('x')));
}

TEST_F(SnippetsEditing, AChangeFromElsewhereIsKeptBesideWhatIsBeingTyped) {
    edit();
    type("mine ");
    const std::shared_ptr<Snippet> edited = selected();
    edited->setText(QStringLiteral("theirs"));
    edited->updateModificationDate();
    database->notifyOfModificationForSnippet(edited);
    EXPECT_EQ(selected(), edited);
    EXPECT_EQ(selectedText(), "mine newest text");
    EXPECT_EQ(previewedText(), QStringLiteral("mine newest text"));
    EXPECT_THAT(texts(), testing::Contains("theirs"));
    EXPECT_TRUE(messageBar()->isVisible());
    EXPECT_TRUE(editor()->hasFocus());
    type("and ");
    press(Qt::Key_Escape);
    EXPECT_EQ(selectedText(), "mine and newest text");
}

TEST_F(SnippetsEditing, AChangeFromElsewhereIsShownWhereNothingIsBeingTyped) {
    edit();
    type("mine ");
    press(Qt::Key_Escape);
    selected()->setText(QStringLiteral("theirs"));
    selected()->updateModificationDate();
    database->notifyOfModificationForSnippet(selected());
    EXPECT_EQ(previewedText(), QStringLiteral("theirs"));
    EXPECT_EQ(totalCount(), 3);
    edit();
    undo();
    EXPECT_EQ(previewedText(), QStringLiteral("mine newest text")) << "what was typed can still be come back to";
}

TEST_F(SnippetsEditing, WhatIsRemovedElsewhereComesBackWithWhatIsBeingTyped) {
    edit();
    type("mine ");
    const std::shared_ptr<Snippet> edited = selected();
    database->removeSnippet(edited);
    EXPECT_TRUE(QTest::qWaitFor([&] { return selected() == edited; }));
    EXPECT_EQ(edited->text(), QStringLiteral("mine newest text"));
    EXPECT_EQ(totalCount(), 3);
    EXPECT_EQ(previewedText(), QStringLiteral("mine newest text"));
    EXPECT_TRUE(messageBar()->isVisible());
}

TEST_F(SnippetsEditing, WhatNoLongerMatchesTheSearchStaysWhileItIsEdited) {
    type("newest");
    edit();
    press(Qt::Key_A, Qt::ControlModifier);
    type("other");
    const std::shared_ptr<Snippet> edited = selected();
    edited->setTitle(QStringLiteral("Other"));
    press(Qt::Key_Escape);
    EXPECT_EQ(selected(), edited);
    EXPECT_EQ(selectedText(), "other");
    press(Qt::Key_Escape);
    EXPECT_EQ(selected(), edited);
}

TEST_F(SnippetsEditing, TheKeysOfTheWindowAreLeftToTheText) {
    setClipboard("pasted ");
    edit();
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(previewedText(), QStringLiteral("pasted newest text"));
    EXPECT_EQ(totalCount(), 3);
    press(Qt::Key_Home);
    press(Qt::Key_Delete);
    EXPECT_EQ(totalCount(), 3);
    press(Qt::Key_Return);
    EXPECT_EQ(previewedText(), QStringLiteral("\nasted newest text"));
    EXPECT_TRUE(window->isVisible());
    press(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(clipboard(), QStringLiteral("\nasted newest text"));
}

TEST_F(SnippetsEditing, WithoutASelectionThereIsNothingToEdit) {
    window->selectRow(-1);
    edit();
    EXPECT_FALSE(editor()->hasFocus());
    EXPECT_TRUE(editor()->isReadOnly());
    editor()->setFocus();
    type("mid");
    EXPECT_EQ(search()->text(), QStringLiteral("mid"));
}

TEST_F(SnippetsEditing, ScreenReadersFindTheTextAndTheSelection) {
    QAccessibleInterface* const text = QAccessible::queryAccessibleInterface(editor());
    ASSERT_TRUE(text && text->textInterface());
    EXPECT_EQ(text->role(), QAccessible::EditableText);
    EXPECT_EQ(text->text(QAccessible::Name), QStringLiteral("Text of the selected snippet"));
    EXPECT_EQ(text->textInterface()->text(0, text->textInterface()->characterCount()), QStringLiteral("newest text"));
    EXPECT_FALSE(text->state().readOnly);
    edit();
    type("A");
    EXPECT_EQ(text->textInterface()->text(0, 2), QStringLiteral("An"));
    QAccessibleInterface* const table = QAccessible::queryAccessibleInterface(list());
    ASSERT_TRUE(table && table->tableInterface());
    EXPECT_EQ(table->tableInterface()->selectedRows(), QList<int>{0});
    press(Qt::Key_Escape);
    press(Qt::Key_Down);
    EXPECT_EQ(table->tableInterface()->selectedRows(), QList<int>{1});
    EXPECT_TRUE(table->tableInterface()->cellAt(1, 0)->state().selected);
}

TEST_F(SnippetsEditing, TabGoesThroughTheWholeWindowAndBack) {
    std::vector<std::string> names;
    for (int count = 0; count < 8; ++count) {
        names.push_back(window->focusWidget()->accessibleName().toStdString());
        press(Qt::Key_Tab);
    }
    EXPECT_THAT(names, testing::ElementsAre("Search snippets", "Snippets", "Text of the selected snippet",
                                            "About Snippets", "Add from Clipboard", "Rename", "Remove", "Copy"));
    EXPECT_TRUE(search()->hasFocus());
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(window->focusWidget()->accessibleName(), QStringLiteral("Copy"));
}

} // namespace
