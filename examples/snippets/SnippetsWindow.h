// SPDX-License-Identifier: MIT
#pragma once

#include "SnippetHistory.h"

#include <VXKit/app/LTWindow.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>

#include <QPointer>

#include <memory>
#include <vector>

class DropMark;
class ImportBar;
class MessageBar;
class NSTimer;
class QAction;
class QDropEvent;
class QKeyEvent;
class QLineEdit;
class QSplitter;
class Snippet;
class SnippetDetail;
class SnippetsDatabase;
class SnippetsFooter;
class SnippetsListModel;
class SnippetsListView;
class _LTSnippet;
struct SnippetImportProgress;
struct SnippetImportResult;
struct SyncReport;

/// The program's window, which hangs under its status item: search, the list, and the selected snippet with its text.
///
///                            ▲
///     ╭──────────────────────┘└────────────────────────────╮
///     │ 🔍 Search snippets                               ✕ │
///     ├──────────────────┬─────────────────────────────────┤
///     │ Title      14:02 │ Title                    (Link) │
///     │ First line       │ Created … Used 3 times          │
///     │ Title  Yesterday │ ┌─────────────────────────────┐ │
///     │ First line       │ │ text                        │ │
///     ├──────────────────┴─────────────────────────────────┤
///     │ 214 snippets  Add from Clipboard Rename Remove Copy│
///     ╰╲──────────────────────────────────────────────────╱╯
///
/// Its bottom corners resize it, within limits; it stays under the status item, and has its size again at the next
/// launch.
///
/// It is made for the keyboard: whatever has the focus, typing searches, Up and Down move through the list, Return
/// copies and leaves, F2 renames, Delete removes, Ctrl+V adds from the clipboard, Escape clears the search, stops an
/// import that is told of, and then leaves. Ctrl+Z undoes what was done last. In the text, which Tab, a click or Ctrl+E
/// gets to, the keys edit, Ctrl+Z undoes what was typed there, and Escape leads back.
///
/// Text and files that are dropped on it become snippets; a row that is dragged out of it is the text of a snippet to
/// the program that it is dropped on.
class SnippetsWindow : public LTWindow {
    Q_OBJECT

public:
    explicit SnippetsWindow(std::shared_ptr<SnippetsDatabase> database);
    ~SnippetsWindow() override;

    [[nodiscard]] SnippetsListModel& model() const { return *m_model; }

    /// Searches as if `search` had been typed; the first match is selected.
    void setSearch(const QString& search);

    /// Selects the snippet of a row, or nothing where there is no such row.
    void selectRow(int row);

    /// The selected record, or null.
    [[nodiscard]] std::shared_ptr<Snippet> selectedSnippet() const;

    /// Adds a snippet of the text on the clipboard and selects it. False where there is no text, which the window says.
    bool addFromClipboard();

    /// Copies the selected snippet to the clipboard and counts the use. False where nothing is selected.
    bool copySelected();

    /// Asks for another title of the selected snippet.
    void renameSelected();

    /// Asks whether the selected snippet is to be removed, unless that is not wished for, and removes it.
    void askToRemoveSelected();

    /// Removes the selected snippet. For a while a bar offers to undo that; removals made meanwhile are undone
    /// together.
    void removeSelected();

    /// Puts the keyboard into the text of the selected snippet, to edit it. Nothing where none is selected.
    void editSelected();

    /// Undoes the latest removal, the latest new title or what was last typed into a text, and selects the snippet.
    void undo();
    /// Does again what was undone last.
    void redo();
    [[nodiscard]] bool canUndo() const { return m_history.canUndo(); }
    [[nodiscard]] bool canRedo() const { return m_history.canRedo(); }

    /// Asks for a file or folder, and writes the snippets that are shown to it: all, or those that were found.
    void exportSnippets();

    /// Adds a snippet of `text` and selects it. False where there is nothing but blanks, which the window says.
    bool addText(const QString& text);

    /// Tells how far an import is, with a way to stop it, until its result is shown.
    void showImportProgress(const SnippetImportProgress& progress);
    /// Tells what an import did: in passing where all went well, and so that it stays where something was refused or
    /// the import was stopped.
    void showImportResult(const SnippetImportResult& result);

    /// Tells how a sync ended: quietly where all went well, with all that the user should know otherwise.
    void tellSync(const SyncReport& report);

    /// Keeps the size and the division of the window for the next launch.
    void saveLayout() const;

    /// Keeps the size within the window's limits, and the window under the status item.
    void setFrame(const NSRect& frame, bool display) override;
    using LTWindow::setFrame;

    /// Orders the window out and says so.
    void leave();

    /// A click that nothing in the window has a use for, and one on a corner, puts the keyboard into the search.
    void mouseDown(const NSEvent& event) override;

    /// Stays while one of its rows is dragged somewhere, since the drag would end with it, and goes after that.
    void orderWindow(NSWindowOrderingMode place, int otherWindowNumber) override;

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    /// The user is done and the window out of the way.
    void left();
    /// The user wants to know what this program is.
    void asksWhatItIs();
    /// The user has seen enough of the import that is told of.
    void asksToStopImport();
    /// Files and folders were dropped on the window.
    void asksToImport(const QStringList& paths);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void makeWidgets();
    void makeSearch();
    void layOutWidgets();
    void connectWidgets();
    void addResizeCorners();
    void restoreLayout();
    bool handleKeyPress(QObject* receiver, QKeyEvent* event);
    bool handleCommandKey(QObject* receiver, const QKeyEvent& event);
    bool handleEditorKey(const QKeyEvent& event);
    bool handleUndoKey(QObject* receiver, const QKeyEvent& event);
    bool passToList(QKeyEvent* event);
    bool passToSearch(QObject* receiver, QKeyEvent* event);
    bool isEditor(const QObject* receiver) const;
    void leaveEditor();
    void handleEscape();
    void searchHasChanged();
    void selectionHasChanged();
    void updateCount();
    void tellAdded(const Snippet& added);
    void tell(const SnippetHistory::Outcome& outcome);
    void noteLatestAction();
    void closeRemovals();
    void selectSnippet(const _LTSnippet& snippet);
    void rowWasDragged(const std::shared_ptr<Snippet>& snippet, bool wasDropped);

    std::shared_ptr<SnippetsDatabase> m_database;
    SnippetsListModel* m_model;
    SnippetHistory m_history;

    ImportBar* m_importBar = nullptr;
    MessageBar* m_messageBar = nullptr;
    MessageBar* m_syncBar = nullptr;
    MessageBar* m_undoBar = nullptr;
    QLineEdit* m_search = nullptr;
    QAction* m_clearSearch = nullptr;
    QSplitter* m_splitter = nullptr;
    SnippetsListView* m_list = nullptr;
    SnippetDetail* m_detail = nullptr;
    SnippetsFooter* m_footer = nullptr;
    DropMark* m_dropMark = nullptr;

    bool m_searchIsLatest = false; // it was typed into since anything else was done that can be undone
    bool m_isDragging = false;     // one of its rows
    bool m_goesAfterDrag = false;
    QPointer<QWidget> m_beforeEditing; // where the keyboard was
    std::shared_ptr<NSTimer> m_undoTimer;
    std::shared_ptr<NSTimer> m_clockTimer;  // for dates that are told seen from now; only while the window is visible
    std::shared_ptr<NSTimer> m_searchTimer; // while there are texts to prepare
    NSNotificationObservation m_willTerminate;
};
