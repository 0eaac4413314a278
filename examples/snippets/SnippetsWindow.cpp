// SPDX-License-Identifier: MIT
#include "SnippetsWindow.h"

#include "Appearance.h"
#include "DateText.h"
#include "ElidedLabel.h"
#include "ImportBar.h"
#include "MessageBar.h"
#include "SnippetImporter.h"
#include "SnippetKindTag.h"
#include "SnippetPasteboard.h"
#include "SnippetQuestions.h"
#include "SnippetsListModel.h"
#include "SnippetsListView.h"
#include "TitleText.h"
#include "sync/SnippetsSyncManager.h"

#include <VXKit/controls/LTLeftResizeCorner.h>
#include <VXKit/controls/LTResizeCorner.h>
#include <VXKit/platform/appkit/NSPasteboard.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/foundation/NSTimer.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>
#include <VXKit/support/VXLog.h>

#include <QAction>
#include <QBoxLayout>
#include <QCoreApplication>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QSplitter>
#include <QTextOption>

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace {

// Points.
constexpr NSSize windowSize{720, 500};
constexpr NSSize leastSize{600, 320};
constexpr NSSize largestSize{1400, 1000};
constexpr double resizeCornerLength = 11;
constexpr double resizeCornerMargin = 3; // so that the grip is within the round corner
constexpr int arrowHeight = 14;          // of the window's arrow, above its body
constexpr int separatorDepth = 48;       // of the window's separator, below its top
constexpr int outlineWidth = 2;          // that the window's sides leave
constexpr int listWidth = 280;
constexpr int smallestColumnWidth = 200;
constexpr int margin = 12;
constexpr int spacing = 8;
constexpr int searchHeight = 26;
constexpr int titleFontGrowth = 3;

constexpr double undoTime = 8.0;     // seconds that a removal can be undone
constexpr double statusTime = 2.5;   // seconds that a note in the status line stays
constexpr double clockInterval = 60; // seconds

/// Longer texts are shown up to here, so that moving through the list never stops at one.
constexpr qsizetype longestPreview = 100'000; // characters

constexpr const char* divisionKey = "SnippetsWindowDivision";
constexpr const char* sizeKey = "SnippetsWindowSize";
constexpr const char* widthKey = "width";
constexpr const char* heightKey = "height";

NSData dataOf(const QByteArray& bytes) {
    return {bytes.begin(), bytes.end()};
}

QByteArray bytesUnder(const char* key) {
    const std::optional<NSPropertyList> value = NSUserDefaults::standardUserDefaults().objectForKey(key);
    const NSData* data = value ? value->as<NSData>() : nullptr;
    return data ? QByteArray(reinterpret_cast<const char*>(data->data()), static_cast<qsizetype>(data->size()))
                : QByteArray();
}

std::optional<NSSize> sizeUnder(const char* key) {
    const std::optional<NSPropertyList> value = NSUserDefaults::standardUserDefaults().objectForKey(key);
    const NSDictionary* size = value ? value->as<NSDictionary>() : nullptr;
    const auto length = [size](const char* side) {
        const NSPropertyList* number = size ? size->objectForKey(side) : nullptr;
        return number ? number->doubleValue() : 0;
    };
    const NSSize read{length(widthKey), length(heightKey)};
    return read.width > 0 && read.height > 0 ? std::optional(read) : std::nullopt;
}

NSSize limitedSize(const NSSize& size, const NSSize& least, const NSSize& largest) {
    return {std::max(least.width, std::min(size.width, largest.width)),
            std::max(least.height, std::min(size.height, largest.height))};
}

QString numbered(qint64 count, const char* one, const char* many) {
    return QLocale(QLocale::English).toString(count) + QLatin1Char(' ') + QString::fromLatin1(count == 1 ? one : many);
}

QString datesText(const Snippet& snippet) {
    QStringList parts;
    if (const std::optional<NSDate> created = snippet.snippetID()) {
        parts += QStringLiteral("Created ") + fullDateText(*created);
    }
    const std::optional<NSDate> modified = snippet.dateOfModification();
    // A batch of snippets gets identities that go back from the instant it was made, second by second; only a date that
    // reads otherwise tells something.
    if (modified && (!snippet.snippetID() || fullDateText(*modified) != fullDateText(*snippet.snippetID()))) {
        parts += QStringLiteral("Modified ") + fullDateText(*modified);
    }
    if (snippet.useCount() > 0) {
        QString use = QStringLiteral("Used ") + numbered(snippet.useCount(), "time", "times");
        if (const std::optional<NSDate> used = snippet.dateOfLastUse()) {
            use += QStringLiteral(", last ") + fullDateText(*used);
        }
        parts += use;
    } else {
        parts += QStringLiteral("Never used");
    }
    if (snippet.text().size() > longestPreview) {
        parts += QStringLiteral("Beginning of ") + numbered(snippet.text().size(), "character", "characters");
    }
    return parts.join(QStringLiteral("  ·  "));
}

bool hasOnly(const QKeyEvent& event, Qt::KeyboardModifiers modifiers) {
    return (event.modifiers() & ~Qt::KeypadModifier) == modifiers;
}

} // namespace

SnippetsWindow::SnippetsWindow(std::shared_ptr<SnippetsDatabase> database)
    : LTWindow({NSZeroPoint, windowSize}, NSBorderlessWindowMask, NSBackingStoreBuffered, false),
      m_database(std::move(database)), m_model(new SnippetsListModel(m_database, this)) {
    setWindowTitle(QStringLiteral("Snippets"));
    makeWidgets();
    layOutWidgets();
    connectWidgets();
    addResizeCorners();
    setMinSize(leastSize);
    setMaxSize(largestSize);
    restoreLayout();
    searchHasChanged();
}

SnippetsWindow::~SnippetsWindow() {
    for (const std::shared_ptr<NSTimer>& timer : {m_undoTimer, m_statusTimer, m_clockTimer}) {
        if (timer) {
            timer->invalidate();
        }
    }
}

void SnippetsWindow::makeWidgets() {
    m_importBar = new ImportBar(contentView());
    m_importBar->setObjectName(QStringLiteral("importBar"));
    m_messageBar = new MessageBar(contentView());
    m_messageBar->setObjectName(QStringLiteral("messageBar"));
    m_syncBar = new MessageBar(contentView());
    m_syncBar->setObjectName(QStringLiteral("syncBar"));
    m_undoBar = new MessageBar(contentView());
    m_undoBar->setObjectName(QStringLiteral("undoBar"));
    m_undoBar->setAction(QStringLiteral("Undo"), QStringLiteral("Undo removal"));

    m_search = new QLineEdit(contentView());
    m_search->setPlaceholderText(QStringLiteral("Search snippets"));
    m_search->setAccessibleName(QStringLiteral("Search snippets"));
    m_search->setMinimumHeight(searchHeight);
    m_search->addAction(QIcon(QStringLiteral(":/images/Search.svg")), QLineEdit::LeadingPosition);
    // In place of Qt's own clear button, whose symbol cannot be seen on a dark field.
    m_clearSearch = m_search->addAction(QIcon(QStringLiteral(":/images/Close.svg")), QLineEdit::TrailingPosition);
    m_clearSearch->setText(QStringLiteral("Clear search"));
    m_clearSearch->setVisible(false);

    m_splitter = new QSplitter(contentView());
    m_splitter->setChildrenCollapsible(false);
    m_splitter->setHandleWidth(1);
    m_list = new SnippetsListView(m_splitter);
    m_list->setModel(m_model);
    m_list->setAccessibleName(QStringLiteral("Snippets"));
    m_list->setMinimumWidth(smallestColumnWidth);

    m_detail = new QWidget(m_splitter);
    m_detail->setMinimumWidth(smallestColumnWidth);
    m_detail->setAutoFillBackground(true);
    m_detail->setBackgroundRole(QPalette::Base);
    m_title = new ElidedLabel(m_detail);
    QFont titleFont = m_title->font();
    titleFont.setPixelSize(QFontInfo(titleFont).pixelSize() + titleFontGrowth);
    titleFont.setWeight(QFont::DemiBold);
    m_title->setFont(titleFont);
    m_dates = new QLabel(m_detail);
    m_dates->setTextFormat(Qt::PlainText);
    m_dates->setWordWrap(true);
    m_dates->setForegroundRole(QPalette::PlaceholderText);
    m_dates->setContentsMargins(0, 0, margin, 0);
    m_preview = new QPlainTextEdit(m_detail);
    m_preview->setObjectName(QStringLiteral("preview"));
    m_preview->setReadOnly(true);
    m_preview->setFrameShape(QFrame::NoFrame);
    m_preview->setTabChangesFocus(true);
    useHUDScrollBars(*m_preview);
    // So that there is never anything to scroll across.
    m_preview->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    m_preview->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_preview->document()->setDocumentMargin(0);
    m_preview->setAccessibleName(QStringLiteral("Text of the selected snippet"));
    QFont textFont = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    textFont.setPixelSize(QFontInfo(font()).pixelSize() - 1);
    m_preview->setFont(textFont);

    m_status = new ElidedLabel(contentView());
    m_status->setForegroundRole(QPalette::PlaceholderText);
    m_about = new QPushButton(QStringLiteral("i"), contentView());
    m_add = new QPushButton(QStringLiteral("Add from Clipboard"), contentView());
    m_rename = new QPushButton(QStringLiteral("Rename"), contentView());
    m_remove = new QPushButton(QStringLiteral("Remove"), contentView());
    m_copy = new QPushButton(QStringLiteral("Copy"), contentView());
    m_add->setToolTip(QStringLiteral("Add the text on the clipboard (Ctrl+V)"));
    m_rename->setToolTip(QStringLiteral("Give the selected snippet another title (F2)"));
    m_remove->setToolTip(QStringLiteral("Remove the selected snippet (Delete)"));
    m_copy->setToolTip(QStringLiteral("Copy the selected snippet (Return copies and closes)"));
    m_about->setToolTip(QStringLiteral("Turn the window over, to what this program is"));
    for (QPushButton* button : {m_about, m_add, m_rename, m_remove, m_copy}) {
        // A click on one leaves the keyboard where it was.
        button->setFocusPolicy(Qt::TabFocus);
        button->setAccessibleName(button->text());
        usePushButtonSize(*button);
    }
    m_about->setAccessibleName(QStringLiteral("About Snippets"));
    m_about->setFixedWidth(m_about->height());
    for (QWidget* widget :
         {static_cast<QWidget*>(m_search), static_cast<QWidget*>(m_list), static_cast<QWidget*>(m_preview),
          static_cast<QWidget*>(m_about), static_cast<QWidget*>(m_add), static_cast<QWidget*>(m_rename),
          static_cast<QWidget*>(m_remove), static_cast<QWidget*>(m_copy)}) {
        widget->installEventFilter(this);
    }
    for (QWidget* bar : std::initializer_list<QWidget*>{m_importBar, m_messageBar, m_syncBar, m_undoBar}) {
        for (QPushButton* button : bar->findChildren<QPushButton*>()) {
            button->installEventFilter(this);
        }
    }
}

void SnippetsWindow::layOutWidgets() {
    auto* detailLayout = new QVBoxLayout(m_detail);
    detailLayout->setContentsMargins(margin + spacing / 2, margin, 0, 0);
    detailLayout->setSpacing(spacing / 2);
    m_titleLayout = new QHBoxLayout;
    m_titleLayout->setContentsMargins(0, 0, margin, 0);
    m_titleLayout->setSpacing(spacing);
    m_titleLayout->addWidget(m_title, 1);
    detailLayout->addLayout(m_titleLayout);
    detailLayout->addWidget(m_dates);
    detailLayout->addSpacing(spacing);
    detailLayout->addWidget(m_preview, 1);
    m_splitter->setStretchFactor(0, 0);
    m_splitter->setStretchFactor(1, 1);
    m_splitter->setSizes({listWidth, static_cast<int>(windowSize.width) - listWidth});

    // Search in the window's head, between its arrow and its separator; the rest within its outline.
    auto* searchLayout = new QHBoxLayout;
    searchLayout->setContentsMargins(margin, 0, margin, 0);
    searchLayout->addWidget(m_search);
    auto* head = new QWidget(contentView());
    head->setFixedHeight(separatorDepth - arrowHeight);
    head->setLayout(searchLayout);
    auto* buttonLayout = new QHBoxLayout;
    buttonLayout->setContentsMargins(margin, spacing + 2, margin, spacing + 2);
    buttonLayout->setSpacing(spacing);
    buttonLayout->addWidget(m_about);
    buttonLayout->addWidget(m_status, 1);
    buttonLayout->addWidget(m_add);
    buttonLayout->addWidget(m_rename);
    buttonLayout->addWidget(m_remove);
    buttonLayout->addWidget(m_copy);

    auto* layout = new QVBoxLayout(contentView());
    layout->setContentsMargins(outlineWidth, arrowHeight, outlineWidth, outlineWidth);
    layout->setSpacing(0);
    layout->addWidget(head);
    layout->addSpacing(1);
    layout->addWidget(m_importBar);
    layout->addWidget(m_messageBar);
    layout->addWidget(m_syncBar);
    layout->addWidget(m_splitter, 1);
    layout->addWidget(m_undoBar);
    layout->addLayout(buttonLayout);
}

void SnippetsWindow::connectWidgets() {
    connect(m_clearSearch, &QAction::triggered, m_search, &QLineEdit::clear);
    connect(m_search, &QLineEdit::textChanged, this, &SnippetsWindow::searchHasChanged);
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &SnippetsWindow::selectionHasChanged);
    connect(m_list, &QAbstractItemView::doubleClicked, this, [this] {
        if (copySelected()) {
            leave();
        }
    });
    connect(m_model, &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex&, int first, int last) {
        // The first to come into an empty list; later ones leave the selection, or that there is none, to the user.
        if (m_model->rowCount() == last - first + 1) {
            selectRow(0);
        }
        updateCount();
    });
    connect(m_model, &QAbstractItemModel::rowsRemoved, this, &SnippetsWindow::updateCount);
    connect(m_model, &QAbstractItemModel::dataChanged, this, &SnippetsWindow::updatePreview);
    connect(m_about, &QPushButton::clicked, this, &SnippetsWindow::asksWhatItIs);
    connect(m_add, &QPushButton::clicked, this, &SnippetsWindow::addFromClipboard);
    connect(m_rename, &QPushButton::clicked, this, &SnippetsWindow::renameSelected);
    connect(m_remove, &QPushButton::clicked, this, &SnippetsWindow::askToRemoveSelected);
    connect(m_copy, &QPushButton::clicked, this, &SnippetsWindow::copySelected);
    connect(m_importBar, &ImportBar::asksToStop, this, &SnippetsWindow::asksToStopImport);
    connect(m_undoBar, &MessageBar::actionTriggered, this, &SnippetsWindow::undoRemoval);
    connect(m_undoBar, &MessageBar::dismissed, this, &SnippetsWindow::forgetRemoved);
}

void SnippetsWindow::addResizeCorners() {
    constexpr double length = resizeCornerLength;
    constexpr double inset = resizeCornerMargin;
    ViewCore& content = *ViewCore::of(contentView());
    auto left = std::make_unique<LTLeftResizeCorner>(NSMakeRect(inset, inset, length, length));
    left->setAutoresizingMask(NSViewMaxXMargin | NSViewMaxYMargin);
    content.addSubview(left.release());
    auto right = std::make_unique<LTResizeCorner>(
        NSMakeRect(content.bounds().size.width - inset - length, inset, length, length));
    right->setAutoresizingMask(NSViewMinXMargin | NSViewMaxYMargin);
    content.addSubview(right.release());
}

void SnippetsWindow::restoreLayout() {
    if (const std::optional<NSSize> size = sizeUnder(sizeKey)) {
        // It may have been kept on a larger screen.
        const NSSize screen = NSScreen::mainScreen().visibleFrame().size;
        setFrame(
            {LTWindow::frame().origin, {std::min(size->width, screen.width), std::min(size->height, screen.height)}},
            false);
    }
    m_splitter->restoreState(bytesUnder(divisionKey));
    // Part of what the state remembers, and not the user's to change.
    m_splitter->setChildrenCollapsible(false);
    m_splitter->setHandleWidth(1);
}

void SnippetsWindow::saveLayout() const {
    NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
    const NSSize size = LTWindow::frame().size;
    NSDictionary lengths;
    lengths.setObject(size.width, widthKey);
    lengths.setObject(size.height, heightKey);
    defaults.setObject(lengths, sizeKey);
    defaults.setObject(dataOf(m_splitter->saveState()), divisionKey);
    if (!defaults.synchronize()) {
        VXLog("The size and the division of the window could not be kept");
    }
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
        sayForAWhile(QStringLiteral("There is no text on the clipboard"));
        return false;
    }
    if (m_database->holdsChangesBack()) {
        sayForAWhile(quotedTitle(added->title()) + QStringLiteral(" comes in when the sync has ended"));
        return true;
    }
    selectSnippet(*added);
    sayForAWhile(QStringLiteral("Added ") + quotedTitle(added->title()));
    return true;
}

bool SnippetsWindow::copySelected() {
    const std::shared_ptr<Snippet> selected = selectedSnippet();
    if (!selected) {
        return false;
    }
    if (!copySnippetToPasteboard(selected, *m_database, NSPasteboard::generalPasteboard())) {
        sayForAWhile(QStringLiteral("The clipboard does not take the text"));
        return false;
    }
    sayForAWhile(QStringLiteral("Copied ") + quotedTitle(selected->title()));
    showCopyPopUp();
    return true;
}

void SnippetsWindow::renameSelected() {
    const std::shared_ptr<Snippet> selected = selectedSnippet();
    if (!selected) {
        return;
    }
    const QPointer<SnippetsWindow> self(this);
    const std::optional<QString> title = askForTitle(*selected, *this);
    if (self && title) {
        selected->rename(*title, NSDate::date());
        m_database->notifyOfModificationForSnippet(selected);
        sayForAWhile(QStringLiteral("Renamed to ") + quotedTitle(*title));
    }
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
    m_removed.push_back(selected);
    m_database->removeSnippet(selected);
    m_undoBar->showMessage(m_removed.size() == 1 ? QStringLiteral("Removed ") + quotedTitle(selected->title())
                                                 : QStringLiteral("Removed %1 snippets").arg(m_removed.size()));
    if (m_undoTimer) {
        m_undoTimer->invalidate();
    }
    m_undoTimer =
        NSTimer::scheduledTimerWithTimeInterval(undoTime, NSTimerRepeats::No, [this](NSTimer&) { forgetRemoved(); });
}

void SnippetsWindow::undoRemoval() {
    if (m_removed.empty()) {
        return;
    }
    const std::vector<std::shared_ptr<Snippet>> removed = std::exchange(m_removed, {});
    forgetRemoved();
    std::shared_ptr<Snippet> last;
    for (const std::shared_ptr<Snippet>& snippet : removed) {
        last = m_database->putBack(snippet);
    }
    if (m_database->holdsChangesBack()) {
        sayForAWhile(quotedTitle(last->title()) + QStringLiteral(" comes back when the sync has ended"));
    } else {
        selectSnippet(*last);
    }
}

void SnippetsWindow::forgetRemoved() {
    m_removed.clear();
    m_undoBar->hide();
    if (m_undoTimer) {
        m_undoTimer->invalidate();
        m_undoTimer.reset();
    }
}

void SnippetsWindow::showImportProgress(const SnippetImportProgress& progress) {
    m_importBar->showProgress(progress);
}

void SnippetsWindow::showImportResult(const SnippetImportResult& result) {
    const bool wasToldOf = !m_importBar->isHidden();
    m_importBar->end();
    const auto imported = static_cast<qint64>(result.importedCount);
    if (result.refusals.empty() && !result.wasStopped) {
        if (wasToldOf) {
            sayForAWhile(QStringLiteral("Imported ") + numbered(imported, "file", "files"));
        }
        return;
    }
    QStringList details;
    for (const SnippetImportRefusal& refusal : result.refusals) {
        details += refusal.description();
    }
    QString message = numbered(imported, "file was", "files were") + QStringLiteral(" imported");
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
        sayForAWhile(QStringLiteral("Synced"));
    }
}

void SnippetsWindow::selectSnippet(const _LTSnippet& snippet) {
    QModelIndex index = m_model->indexOf(snippet);
    if (!index.isValid()) {
        // A search that it does not match hides it.
        m_search->clear();
        index = m_model->indexOf(snippet);
    }
    selectRow(index.row());
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
    const bool isSelected = selectedSnippet() != nullptr;
    m_copy->setEnabled(isSelected);
    m_rename->setEnabled(isSelected);
    m_remove->setEnabled(isSelected);
    updatePreview();
}

void SnippetsWindow::updatePreview() {
    const std::shared_ptr<Snippet> snippet = selectedSnippet();
    m_title->setText(snippet ? m_model->data(m_model->indexOf(*snippet)).toString() : QString());
    m_dates->setText(snippet ? datesText(*snippet) : QString());
    const QString text = snippet ? snippet->text().first(std::min(snippet->text().size(), longestPreview)) : QString();
    updateKindTag(snippet ? std::optional(kindOfText(text)) : std::nullopt);
    // Setting it anew would take the user's place in the text away.
    if (m_previewedText != text) {
        m_previewedText = text;
        m_preview->setPlainText(text);
    }
}

void SnippetsWindow::updateKindTag(std::optional<SnippetKind> kind) {
    if ((m_kindTag ? std::optional(m_kindTag->kind()) : std::nullopt) == kind) {
        return;
    }
    delete std::exchange(m_kindTag, nullptr);
    if (kind) {
        m_kindTag = new SnippetKindTag(*kind);
        m_titleLayout->addWidget(m_kindTag, 0, Qt::AlignVCenter);
    }
}

void SnippetsWindow::updateCount() {
    const QString total = numbered(m_model->totalCount(), "snippet", "snippets");
    m_status->setText(m_model->isSearching()
                          ? QLocale(QLocale::English).toString(m_model->rowCount()) + QStringLiteral(" of ") + total
                          : total);
}

void SnippetsWindow::sayForAWhile(const QString& status) {
    m_status->setText(status);
    if (m_statusTimer) {
        m_statusTimer->invalidate();
    }
    m_statusTimer =
        NSTimer::scheduledTimerWithTimeInterval(statusTime, NSTimerRepeats::No, [this](NSTimer&) { updateCount(); });
}

void SnippetsWindow::leave() {
    orderOut(nullptr);
    Q_EMIT left();
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
}

void SnippetsWindow::hideEvent(QHideEvent* event) {
    LTWindow::hideEvent(event);
    if (!event->spontaneous() && m_clockTimer) {
        m_clockTimer->invalidate();
        m_clockTimer.reset();
    }
    if (!event->spontaneous()) {
        saveLayout();
        // The next time starts afresh, at the snippet that was selected.
        m_search->clear();
    }
}

void SnippetsWindow::keyPressEvent(QKeyEvent* event) {
    // From widgets that are not filtered, those of the message bars.
    if (!handleKeyPress(nullptr, event)) {
        LTWindow::keyPressEvent(event);
    }
}

void SnippetsWindow::mouseDown(const NSEvent& event) {
    LTWindow::mouseDown(event);
    // Without a place for the keyboard, Up and Down would have no effect.
    m_search->setFocus();
}

bool SnippetsWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress && handleKeyPress(watched, static_cast<QKeyEvent*>(event))) {
        return true;
    }
    return LTWindow::eventFilter(watched, event);
}

bool SnippetsWindow::handleKeyPress(QObject* receiver, QKeyEvent* event) {
    const bool isInSearch = receiver == m_search;
    if (handleCommandKey(receiver, *event)) {
        return true;
    }
    if (!hasOnly(*event, Qt::NoModifier)) {
        return passToSearch(receiver, event);
    }
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (auto* button = qobject_cast<QPushButton*>(receiver)) {
            button->click();
        } else if (copySelected()) {
            leave();
        }
        return true;
    case Qt::Key_Escape:
        if (!m_search->text().isEmpty()) {
            m_search->clear();
            m_search->setFocus();
        } else if (m_importBar->isVisible()) {
            Q_EMIT asksToStopImport();
        } else {
            leave();
        }
        return true;
    case Qt::Key_Delete:
        if (isInSearch && (m_search->hasSelectedText() || m_search->cursorPosition() < m_search->text().size())) {
            return false;
        }
        // A key held down deletes characters, never snippets.
        if (!event->isAutoRepeat()) {
            askToRemoveSelected();
        }
        return true;
    case Qt::Key_F2:
        renameSelected();
        return true;
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        return isInSearch && passToList(event);
    default:
        return passToSearch(receiver, event);
    }
}

/// Keys with Control, which stay what they are in a text that has something selected.
bool SnippetsWindow::handleCommandKey(QObject* receiver, const QKeyEvent& event) {
    if (!hasOnly(event, Qt::ControlModifier)) {
        return false;
    }
    const bool isInSelectedText = (receiver == m_search && m_search->hasSelectedText()) ||
                                  (receiver == m_preview && m_preview->textCursor().hasSelection());
    switch (event.key()) {
    case Qt::Key_V:
        if (receiver == m_search && isInSelectedText) {
            return false;
        }
        if (!event.isAutoRepeat()) {
            addFromClipboard();
        }
        return true;
    case Qt::Key_C:
        if (isInSelectedText) {
            return false;
        }
        copySelected();
        return true;
    case Qt::Key_Z:
        if (!canUndoRemoval()) {
            return false;
        }
        undoRemoval();
        return true;
    case Qt::Key_F:
        m_search->setFocus();
        m_search->selectAll();
        return true;
    default:
        return false;
    }
}

bool SnippetsWindow::passToList(QKeyEvent* event) {
    QCoreApplication::sendEvent(m_list, event);
    return true;
}

/// Typing anywhere but in the search field goes there, and so does the key that takes back what was typed.
bool SnippetsWindow::passToSearch(QObject* receiver, QKeyEvent* event) {
    constexpr Qt::KeyboardModifiers commands = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    const QString text = event->text();
    const bool isTyping = !text.isEmpty() && (text.at(0).isPrint() || event->key() == Qt::Key_Backspace);
    const bool pressesButton = qobject_cast<QPushButton*>(receiver) && event->key() == Qt::Key_Space;
    if (receiver == m_search || !isTyping || pressesButton || (event->modifiers() & commands)) {
        return false;
    }
    m_search->setFocus();
    m_search->deselect();
    m_search->setCursorPosition(static_cast<int>(m_search->text().size()));
    QCoreApplication::sendEvent(m_search, event);
    return true;
}
