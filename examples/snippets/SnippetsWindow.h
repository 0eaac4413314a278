// SPDX-License-Identifier: MIT
#pragma once

#include "SnippetKind.h"

#include <VXKit/app/LTWindow.h>

#include <memory>
#include <optional>
#include <vector>

class ElidedLabel;
class ImportBar;
class MessageBar;
class NSTimer;
class QAction;
class QHBoxLayout;
class QKeyEvent;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QSplitter;
class Snippet;
class SnippetKindTag;
class SnippetsDatabase;
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
/// import that is told of, and then leaves.
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

    /// Puts back what the bar offers to put back: the same records, with all that belonged to them.
    void undoRemoval();
    [[nodiscard]] bool canUndoRemoval() const { return !m_removed.empty(); }

    /// Tells how far an import is, with a way to stop it, until its result is shown.
    void showImportProgress(const SnippetImportProgress& progress);
    /// Tells what an import did, where it is worth telling: when something was refused, and when it took a while or was
    /// stopped.
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

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    /// The user is done and the window out of the way.
    void left();
    /// The user wants to know what this program is.
    void asksWhatItIs();
    /// The user has seen enough of the import that is told of.
    void asksToStopImport();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void makeWidgets();
    void layOutWidgets();
    void connectWidgets();
    void addResizeCorners();
    void restoreLayout();
    bool handleKeyPress(QObject* receiver, QKeyEvent* event);
    bool handleCommandKey(QObject* receiver, const QKeyEvent& event);
    bool passToList(QKeyEvent* event);
    bool passToSearch(QObject* receiver, QKeyEvent* event);
    void searchHasChanged();
    void selectionHasChanged();
    void updatePreview();
    void updateKindTag(std::optional<SnippetKind> kind);
    void updateCount();
    void sayForAWhile(const QString& status);
    void forgetRemoved();
    void selectSnippet(const _LTSnippet& snippet);

    std::shared_ptr<SnippetsDatabase> m_database;
    SnippetsListModel* m_model;

    ImportBar* m_importBar = nullptr;
    MessageBar* m_messageBar = nullptr;
    MessageBar* m_syncBar = nullptr;
    MessageBar* m_undoBar = nullptr;
    QLineEdit* m_search = nullptr;
    QAction* m_clearSearch = nullptr;
    QSplitter* m_splitter = nullptr;
    SnippetsListView* m_list = nullptr;
    QWidget* m_detail = nullptr;
    QHBoxLayout* m_titleLayout = nullptr;
    ElidedLabel* m_title = nullptr;
    SnippetKindTag* m_kindTag = nullptr; // of the snippet that is selected
    QLabel* m_dates = nullptr;
    QPlainTextEdit* m_preview = nullptr;
    ElidedLabel* m_status = nullptr;
    QPushButton* m_about = nullptr;
    QPushButton* m_add = nullptr;
    QPushButton* m_rename = nullptr;
    QPushButton* m_remove = nullptr;
    QPushButton* m_copy = nullptr;

    QString m_previewedText;
    std::vector<std::shared_ptr<Snippet>> m_removed; // what the undo bar would put back
    std::shared_ptr<NSTimer> m_undoTimer;
    std::shared_ptr<NSTimer> m_statusTimer;
    std::shared_ptr<NSTimer> m_clockTimer; // for dates that are told seen from now; only while the window is visible
};
