// SPDX-License-Identifier: MIT
// What the window is made of.
#include "SnippetsWindow.h"

#include "DropMark.h"
#include "ImportBar.h"
#include "MessageBar.h"
#include "SnippetDetail.h"
#include "SnippetTextEdit.h"
#include "SnippetsFooter.h"
#include "SnippetsListModel.h"
#include "SnippetsListView.h"
#include "TitleText.h"

#include <VXKit/controls/LTLeftResizeCorner.h>
#include <VXKit/controls/LTResizeCorner.h>

#include <QAction>
#include <QBoxLayout>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QPushButton>
#include <QSplitter>

#include <initializer_list>
#include <memory>

namespace {

// Points.
constexpr double resizeCornerLength = 11;
constexpr double resizeCornerMargin = 3; // so that the grip is within the round corner
constexpr int arrowHeight = 14;          // of the window's arrow, above its body
constexpr int separatorDepth = 48;       // of the window's separator, below its top
constexpr int outlineWidth = 2;          // that the window's sides leave
constexpr int listWidth = 280;
constexpr int smallestColumnWidth = 200;
constexpr int searchMargin = 12;
constexpr int searchHeight = 26;

} // namespace

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
    makeSearch();

    m_splitter = new QSplitter(contentView());
    m_splitter->setChildrenCollapsible(false);
    m_splitter->setHandleWidth(1);
    m_list = new SnippetsListView(m_splitter);
    m_list->setModel(m_model);
    m_list->setAccessibleName(QStringLiteral("Snippets"));
    m_list->setMinimumWidth(smallestColumnWidth);
    m_detail = new SnippetDetail(m_database, m_splitter);
    m_detail->setMinimumWidth(smallestColumnWidth);
    m_footer = new SnippetsFooter(contentView());
    m_dropMark = new DropMark(contentView());

    for (QWidget* widget : std::initializer_list<QWidget*>{m_search, m_list, &m_detail->editor()}) {
        widget->installEventFilter(this);
    }
    for (QPushButton* button : m_footer->buttons()) {
        button->installEventFilter(this);
    }
    for (QWidget* bar : std::initializer_list<QWidget*>{m_importBar, m_messageBar, m_syncBar, m_undoBar}) {
        for (QPushButton* button : bar->findChildren<QPushButton*>()) {
            button->installEventFilter(this);
        }
    }
}

void SnippetsWindow::makeSearch() {
    m_search = new QLineEdit(contentView());
    m_search->setPlaceholderText(QStringLiteral("Search snippets"));
    m_search->setAccessibleName(QStringLiteral("Search snippets"));
    m_search->setMinimumHeight(searchHeight);
    // What is dropped on it is for the window too.
    m_search->setAcceptDrops(false);
    m_search->addAction(QIcon(QStringLiteral(":/images/Search.svg")), QLineEdit::LeadingPosition);
    // In place of Qt's own clear button, whose symbol cannot be seen on a dark field.
    m_clearSearch = m_search->addAction(QIcon(QStringLiteral(":/images/Close.svg")), QLineEdit::TrailingPosition);
    m_clearSearch->setText(QStringLiteral("Clear search"));
    m_clearSearch->setVisible(false);
}

void SnippetsWindow::layOutWidgets() {
    m_splitter->setStretchFactor(0, 0);
    m_splitter->setStretchFactor(1, 1);
    m_splitter->setSizes({listWidth, static_cast<int>(LTWindow::frame().size.width) - listWidth});

    // Search in the window's head, between its arrow and its separator; the rest within its outline.
    auto* searchLayout = new QHBoxLayout;
    searchLayout->setContentsMargins(searchMargin, 0, searchMargin, 0);
    searchLayout->addWidget(m_search);
    auto* head = new QWidget(contentView());
    head->setFixedHeight(separatorDepth - arrowHeight);
    head->setLayout(searchLayout);

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
    layout->addWidget(m_footer);
}

void SnippetsWindow::connectWidgets() {
    connect(m_clearSearch, &QAction::triggered, m_search, &QLineEdit::clear);
    connect(m_search, &QLineEdit::textChanged, this, &SnippetsWindow::searchHasChanged);
    connect(m_search, &QLineEdit::textEdited, this, [this] { m_searchIsLatest = true; });
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &SnippetsWindow::selectionHasChanged);
    connect(m_list, &QAbstractItemView::doubleClicked, this, [this] {
        if (copySelected()) {
            leave();
        }
    });
    connect(m_list, &SnippetsListView::dragBegan, this, [this] { m_isDragging = true; });
    connect(m_list, &SnippetsListView::dragEnded, this, &SnippetsWindow::rowWasDragged);
    connect(m_model, &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex&, int first, int last) {
        // The first to come into an empty list; later ones leave the selection, or that there is none, to the user.
        if (m_model->rowCount() == last - first + 1) {
            selectRow(0);
        }
        updateCount();
    });
    connect(m_model, &QAbstractItemModel::rowsRemoved, this, &SnippetsWindow::updateCount);
    connect(m_model, &QAbstractItemModel::dataChanged, this, [this] { m_detail->showSnippet(selectedSnippet()); });
    connect(m_detail, &SnippetDetail::typed, this, &SnippetsWindow::noteLatestAction);
    connect(m_detail, &SnippetDetail::edited, this,
            [this](const std::shared_ptr<Snippet>& snippet, const QString& before, const QString& after) {
                noteLatestAction();
                m_history.noteText(snippet, before, after);
            });
    connect(m_detail, &SnippetDetail::otherVersionWasKept, this, [this](const std::shared_ptr<Snippet>& other) {
        m_messageBar->showMessage(QStringLiteral("What you are editing was changed elsewhere too. That is kept as ") +
                                  quotedTitle(other->title()));
    });
    connect(
        m_detail, &SnippetDetail::wasBroughtBack, this,
        [this](const std::shared_ptr<Snippet>& snippet) {
            m_messageBar->showMessage(quotedTitle(snippet->title()) +
                                      QStringLiteral(" was removed elsewhere. It is back with what you have typed"));
            selectSnippet(*snippet);
        },
        Qt::QueuedConnection);
    connect(m_footer, &SnippetsFooter::asksWhatItIs, this, &SnippetsWindow::asksWhatItIs);
    connect(m_footer, &SnippetsFooter::asksToAdd, this, &SnippetsWindow::addFromClipboard);
    connect(m_footer, &SnippetsFooter::asksToRename, this, &SnippetsWindow::renameSelected);
    connect(m_footer, &SnippetsFooter::asksToRemove, this, &SnippetsWindow::askToRemoveSelected);
    connect(m_footer, &SnippetsFooter::asksToCopy, this, &SnippetsWindow::copySelected);
    connect(m_importBar, &ImportBar::asksToStop, this, &SnippetsWindow::asksToStopImport);
    connect(m_undoBar, &MessageBar::actionTriggered, this, &SnippetsWindow::undo);
    connect(m_undoBar, &MessageBar::dismissed, this, &SnippetsWindow::closeRemovals);
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
