// SPDX-License-Identifier: MIT
#include "SnippetsWindow.h"

#include "DropMark.h"
#include "ImportBar.h"
#include "MessageBar.h"
#include "NumberText.h"
#include "SnippetDetail.h"
#include "SnippetExportPanel.h"
#include "SnippetImporter.h"
#include "SnippetMimeData.h"
#include "SnippetPasteboard.h"
#include "SnippetQuestions.h"
#include "SnippetTextEdit.h"
#include "SnippetsFooter.h"
#include "SnippetsListModel.h"
#include "SnippetsListView.h"
#include "SnippetsWindowLayout.h"
#include "StopTimer.h"
#include "TitleText.h"
#include "sync/SnippetsSyncManager.h"

#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSPasteboard.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/foundation/NSTimer.h>

#include <QAction>
#include <QDropEvent>
#include <QLineEdit>
#include <QLocale>
#include <QMimeData>
#include <QSplitter>

#include <algorithm>
#include <utility>

namespace {

// Points.
constexpr NSSize windowSize{720, 500};
constexpr NSSize leastSize{600, 320};
constexpr NSSize largestSize{1400, 1000};

constexpr double undoTime = 8.0;     // seconds that a bar offers to undo a removal
constexpr double clockInterval = 60; // seconds

// The search is prepared in slices, between which the first key may come.
constexpr double slicePause = 0.005; // seconds
constexpr int sliceTime = 4;         // milliseconds

NSSize limitedSize(const NSSize& size, const NSSize& least, const NSSize& largest) {
    return {std::max(least.width, std::min(size.width, largest.width)),
            std::max(least.height, std::min(size.height, largest.height))};
}

QString dropText(const DraggedContent& content) {
    if (content.hasText) {
        return QStringLiteral("Drop to add a snippet");
    }
    return content.paths.size() == 1 ? QStringLiteral("Drop to import the file")
                                     : QStringLiteral("Drop to import %1 files").arg(content.paths.size());
}

} // namespace

SnippetsWindow::SnippetsWindow(std::shared_ptr<SnippetsDatabase> database)
    : LTWindow({NSZeroPoint, windowSize}, NSBorderlessWindowMask, NSBackingStoreBuffered, false),
      m_database(std::move(database)), m_model(new SnippetsListModel(m_database, this)), m_history(m_database) {
    setWindowTitle(QStringLiteral("Snippets"));
    makeWidgets();
    layOutWidgets();
    connectWidgets();
    addResizeCorners();
    setMinSize(leastSize);
    setMaxSize(largestSize);
    restoreLayout();
    setAcceptDrops(true);
    searchHasChanged();
    m_willTerminate = NSNotificationCenter::defaultCenter().addObserverForName(NSApplicationWillTerminateNotification,
                                                                               nullptr, [this](const NSNotification&) {
                                                                                   if (m_detail->keep()) {
                                                                                       // Which has come to its own turn
                                                                                       // before.
                                                                                       m_database->saveDB();
                                                                                   }
                                                                               });
}

SnippetsWindow::~SnippetsWindow() {
    // As long as there is a window that hears of it: Qt takes the keyboard from the text in the middle of the end.
    m_detail->keep();
    disconnect(m_model, nullptr, this, nullptr);
    stopTimer(m_undoTimer);
    stopTimer(m_clockTimer);
    stopTimer(m_searchTimer);
}

void SnippetsWindow::restoreLayout() {
    if (const std::optional<NSSize> size = keptWindowSize()) {
        // It may have been kept on a larger screen.
        const NSSize screen = NSScreen::mainScreen().visibleFrame().size;
        setFrame(
            {LTWindow::frame().origin, {std::min(size->width, screen.width), std::min(size->height, screen.height)}},
            false);
    }
    restoreDivision(*m_splitter);
}

void SnippetsWindow::saveLayout() const {
    keepWindowLayout(LTWindow::frame().size, *m_splitter);
}

void SnippetsWindow::setFrame(const NSRect& frame, bool display) {
    // The left corner knows no largest size.
    const NSRect limited{frame.origin, limitedSize(frame.size, minSize(), maxSize())};
    if (limited.size == LTWindow::frame().size) {
        LTWindow::setFrame(limited, display);
        return;
    }
    // The place of the window follows from its size, which it must have first.
    LTWindow::setFrame(limited, false);
    LTWindow::setFrame(constrainFrameRect(LTWindow::frame()), display);
}

void SnippetsWindow::setSearch(const QString& search) {
    m_search->setText(search);
}

void SnippetsWindow::selectRow(int row) {
    const QModelIndex index = m_model->index(row);
    if (!index.isValid()) {
        m_list->clearSelection();
        m_list->setCurrentIndex({});
        return;
    }
    m_list->setCurrentIndex(index);
    m_list->scrollTo(index);
}

std::shared_ptr<Snippet> SnippetsWindow::selectedSnippet() const {
    const QModelIndexList selected = m_list->selectionModel()->selectedIndexes();
    return selected.isEmpty() ? nullptr : m_model->snippetAt(selected.first());
}

bool SnippetsWindow::addFromClipboard() {
    const std::shared_ptr<Snippet> added = addSnippetFromPasteboard(*m_database, NSPasteboard::generalPasteboard());
    if (!added) {
        m_footer->sayForAWhile(QStringLiteral("There is no text on the clipboard"));
        return false;
    }
    tellAdded(*added);
    return true;
}

bool SnippetsWindow::addText(const QString& text) {
    const std::shared_ptr<Snippet> added = addSnippetOfText(*m_database, text);
    if (!added) {
        m_footer->sayForAWhile(QStringLiteral("There is no text to add"));
        return false;
    }
    tellAdded(*added);
    return true;
}

void SnippetsWindow::tellAdded(const Snippet& added) {
    if (m_database->holdsChangesBack()) {
        m_footer->sayForAWhile(quotedTitle(added.title()) + QStringLiteral(" comes in when the sync has ended"));
        return;
    }
    selectSnippet(added);
    m_footer->sayForAWhile(QStringLiteral("Added ") + quotedTitle(added.title()));
}

bool SnippetsWindow::copySelected() {
    const std::shared_ptr<Snippet> selected = selectedSnippet();
    if (!selected) {
        return false;
    }
    m_detail->keep();
    if (!copySnippetToPasteboard(selected, *m_database, NSPasteboard::generalPasteboard())) {
        m_footer->sayForAWhile(QStringLiteral("The clipboard does not take the text"));
        return false;
    }
    m_footer->sayForAWhile(QStringLiteral("Copied ") + quotedTitle(selected->title()));
    showCopyPopUp();
    return true;
}

void SnippetsWindow::renameSelected() {
    const std::shared_ptr<Snippet> selected = selectedSnippet();
    if (!selected) {
        return;
    }
    const QPointer<SnippetsWindow> self(this);
    m_detail->endEditing();
    const std::optional<QString> title = askForTitle(*selected, *this);
    if (!self || !title) {
        return;
    }
    if (!m_database->holds(*selected)) {
        // Somebody else has removed it meanwhile.
        m_footer->sayForAWhile(quotedTitle(selected->title()) + QStringLiteral(" is no longer here"));
        return;
    }
    noteLatestAction();
    const QString before = selected->title();
    selected->rename(*title, NSDate::date());
    m_history.noteTitle(selected, before, selected->title());
    m_database->notifyOfModificationForSnippet(selected);
    m_footer->sayForAWhile(QStringLiteral("Renamed to ") + quotedTitle(selected->title()));
}

void SnippetsWindow::askToRemoveSelected() {
    const std::shared_ptr<Snippet> selected = selectedSnippet();
    const QPointer<SnippetsWindow> self(this);
    // What is selected may be another one when the answer comes.
    if (selected && mayRemove(*selected, *this) && self && selectedSnippet() == selected) {
        removeSelected();
    }
}

void SnippetsWindow::removeSelected() {
    const std::shared_ptr<Snippet> selected = selectedSnippet();
    if (!selected) {
        return;
    }
    m_detail->endEditing();
    m_searchIsLatest = false;
    m_history.noteRemoval(selected);
    m_database->removeSnippet(selected);
    const std::size_t count = m_history.openRemovalCount();
    m_undoBar->showMessage(count == 1 ? QStringLiteral("Removed ") + quotedTitle(selected->title())
                                      : QStringLiteral("Removed %1 snippets").arg(count));
    stopTimer(m_undoTimer);
    m_undoTimer =
        NSTimer::scheduledTimerWithTimeInterval(undoTime, NSTimerRepeats::No, [this](NSTimer&) { closeRemovals(); });
}

void SnippetsWindow::editSelected() {
    if (selectedSnippet()) {
        m_detail->editor().setFocus(Qt::ShortcutFocusReason);
    }
}

void SnippetsWindow::undo() {
    m_detail->endEditing();
    closeRemovals();
    tell(m_history.undo());
}

void SnippetsWindow::redo() {
    m_detail->endEditing();
    closeRemovals();
    tell(m_history.redo());
}

void SnippetsWindow::tell(const SnippetHistory::Outcome& outcome) {
    m_searchIsLatest = false;
    if (outcome.snippet) {
        selectSnippet(*outcome.snippet);
    }
    if (!outcome.message.isEmpty()) {
        m_footer->sayForAWhile(outcome.message);
    }
}

/// The bar offers to undo the latest action, which it is no more.
void SnippetsWindow::noteLatestAction() {
    m_searchIsLatest = false;
    closeRemovals();
}

/// What is removed from now on is undone by itself.
void SnippetsWindow::closeRemovals() {
    m_history.closeRemoval();
    m_undoBar->hide();
    stopTimer(m_undoTimer);
}

void SnippetsWindow::exportSnippets() {
    m_detail->keep();
    std::vector<std::shared_ptr<Snippet>> snippets;
    for (int row = 0; row < m_model->rowCount(); ++row) {
        snippets.push_back(m_model->snippetAt(m_model->index(row)));
    }
    if (snippets.empty()) {
        m_footer->sayForAWhile(QStringLiteral("There is nothing to export"));
        return;
    }
    const QPointer<SnippetsWindow> self(this);
    const std::optional<SnippetExportResult> result =
        exportWithPanels(snippets, m_model->isSearching(), m_database->path(), *this);
    if (!self || !result) {
        return;
    }
    if (result->problem.isEmpty()) {
        m_footer->sayForAWhile(QStringLiteral("Exported ") +
                               numbered(static_cast<qint64>(result->count), "snippet", "snippets"));
    } else {
        m_messageBar->showMessage(QStringLiteral("Not exported: ") + result->problem);
    }
}

void SnippetsWindow::showImportProgress(const SnippetImportProgress& progress) {
    m_importBar->showProgress(progress);
}

void SnippetsWindow::showImportResult(const SnippetImportResult& result) {
    m_importBar->end();
    const bool hasLists = result.listedCount + result.knownCount > 0;
    const QString imported = numbered(static_cast<qint64>(result.importedCount), hasLists ? "snippet" : "file",
                                      hasLists ? "snippets" : "files");
    const QString known = result.knownCount == 0
                              ? QString()
                              : QStringLiteral(", %1 here already").arg(static_cast<qint64>(result.knownCount));
    if (result.refusals.empty() && !result.wasStopped) {
        m_footer->sayForAWhile(QStringLiteral("Imported ") + imported + known);
        return;
    }
    QStringList details;
    for (const SnippetImportRefusal& refusal : result.refusals) {
        details += refusal.description();
    }
    QString message = imported +
                      (result.importedCount == 1 ? QStringLiteral(" was imported") : QStringLiteral(" were imported")) +
                      known;
    if (!result.refusals.empty()) {
        message += QStringLiteral(", %1 not").arg(static_cast<qint64>(result.refusals.size()));
    }
    m_messageBar->showMessage(result.wasStopped ? QStringLiteral("Stopped: ") + message : message, details);
}

void SnippetsWindow::tellSync(const SyncReport& report) {
    if (!report.problem.isEmpty()) {
        m_syncBar->showMessage(QStringLiteral("Not synced: ") + report.problem, report.notes);
    } else if (!report.notes.isEmpty()) {
        m_syncBar->showMessage(QStringLiteral("Synced, with something to know"), report.notes);
    } else {
        // What an earlier sync had to say is settled.
        m_syncBar->hide();
        m_footer->sayForAWhile(QStringLiteral("Synced"));
    }
}

void SnippetsWindow::selectSnippet(const _LTSnippet& snippet) {
    QModelIndex index = m_model->indexOf(snippet);
    if (!index.isValid() && m_model->lists(snippet)) {
        // A search that it does not match hides it.
        m_search->clear();
        index = m_model->indexOf(snippet);
    }
    if (index.isValid()) {
        selectRow(index.row());
    }
}

void SnippetsWindow::searchHasChanged() {
    m_clearSearch->setVisible(!m_search->text().isEmpty());
    m_model->setSearch(m_search->text());
    m_list->setPlaceholderText(m_model->isSearching()
                                   ? QStringLiteral("No snippet has all of these words.")
                                   : QStringLiteral("No snippets yet.\n\nCopy some text, then press Ctrl+V here."));
    // While searching, Return takes the first match; without a search, what was selected stays.
    if (m_model->isSearching() || !selectedSnippet()) {
        selectRow(0);
    } else {
        m_list->scrollTo(m_list->currentIndex());
    }
    selectionHasChanged();
    updateCount();
}

void SnippetsWindow::selectionHasChanged() {
    const std::shared_ptr<Snippet> selected = selectedSnippet();
    m_footer->setHasSelection(selected != nullptr);
    m_model->setHeld(selected);
    m_detail->showSnippet(selected);
}

void SnippetsWindow::updateCount() {
    const QString total = numbered(m_model->totalCount(), "snippet", "snippets");
    m_footer->setCount(m_model->isSearching()
                           ? QLocale(QLocale::English).toString(m_model->rowCount()) + QStringLiteral(" of ") + total
                           : total);
}

void SnippetsWindow::leave() {
    orderOut(nullptr);
    Q_EMIT left();
}

void SnippetsWindow::orderWindow(NSWindowOrderingMode place, int otherWindowNumber) {
    m_goesAfterDrag = m_isDragging && place == NSWindowOut;
    if (!m_goesAfterDrag) {
        LTWindow::orderWindow(place, otherWindowNumber);
    }
}

void SnippetsWindow::showEvent(QShowEvent* event) {
    LTWindow::showEvent(event);
    if (event->spontaneous()) {
        return;
    }
    m_search->setFocus();
    m_search->selectAll();
    if (!selectedSnippet()) {
        selectRow(0);
    }
    m_clockTimer = NSTimer::scheduledTimerWithTimeInterval(clockInterval, NSTimerRepeats::Yes,
                                                           [this](NSTimer&) { m_list->viewport()->update(); });
    m_searchTimer = NSTimer::scheduledTimerWithTimeInterval(slicePause, NSTimerRepeats::Yes, [this](NSTimer& timer) {
        if (!m_model->prepareSearch(sliceTime)) {
            timer.invalidate();
        }
    });
}

void SnippetsWindow::hideEvent(QHideEvent* event) {
    LTWindow::hideEvent(event);
    if (event->spontaneous()) {
        return;
    }
    stopTimer(m_clockTimer);
    stopTimer(m_searchTimer);
    m_dropMark->hide();
    m_detail->endEditing();
    saveLayout();
    // The next time starts afresh, at the snippet that was selected.
    m_search->clear();
}

void SnippetsWindow::mouseDown(const NSEvent& event) {
    LTWindow::mouseDown(event);
    // Without a place for the keyboard, Up and Down would have no effect.
    m_search->setFocus();
}

void SnippetsWindow::dragEnterEvent(QDragEnterEvent* event) {
    const auto* const source = qobject_cast<const QWidget*>(event->source());
    const DraggedContent content = contentOf(*event->mimeData());
    const bool isOwn = source && source->window() == this;
    if (isOwn || content.isEmpty() || !event->possibleActions().testFlag(Qt::CopyAction) ||
        NSApplication::sharedApplication()->modalWindow()) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
    m_dropMark->showOver(m_splitter->geometry(), dropText(content));
}

void SnippetsWindow::dragLeaveEvent(QDragLeaveEvent* /*event*/) {
    m_dropMark->hide();
}

void SnippetsWindow::dropEvent(QDropEvent* event) {
    m_dropMark->hide();
    event->setDropAction(Qt::CopyAction);
    event->accept();
    const DraggedContent content = contentOf(*event->mimeData());
    if (content.hasText) {
        addText(event->mimeData()->text());
    } else {
        Q_EMIT asksToImport(content.paths);
    }
}

void SnippetsWindow::rowWasDragged(const std::shared_ptr<Snippet>& snippet, bool wasDropped) {
    m_isDragging = false;
    if (wasDropped && snippet && m_database->holds(*snippet)) {
        // As good as copied and pasted.
        snippet->noteUse(NSDate::date());
        m_database->notifyOfModificationForSnippet(snippet);
        m_footer->sayForAWhile(QStringLiteral("Dragged out ") + quotedTitle(snippet->title()));
    }
    if (std::exchange(m_goesAfterDrag, false)) {
        leave();
    }
}
