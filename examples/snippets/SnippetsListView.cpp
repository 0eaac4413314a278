// SPDX-License-Identifier: MIT
#include "SnippetsListView.h"

#include "SnippetDelegate.h"
#include "SnippetMimeData.h"
#include "SnippetsListModel.h"
#include "TitleText.h"

#include <VXKit/platform/graphics/QtColor.h>

#include <QApplication>
#include <QDrag>
#include <QEvent>
#include <QHeaderView>
#include <QLabel>
#include <QMimeData>
#include <QPainter>
#include <QPointer>
#include <QResizeEvent>

#include <algorithm>

namespace {

// Points.
constexpr int placeholderMargin = 24;
constexpr int dragPadding = 10; // of the picture under the pointer, around its title
constexpr QPoint dragHotSpot(-12, -8);

constexpr int secondColorStep = 6; // of 255, that it is lighter than the first

} // namespace

SnippetsListView::SnippetsListView(QWidget* parent) : LTHUDTableView(parent), m_placeholder(new QLabel(viewport())) {
    setPalette(QApplication::palette());
    setItemDelegate(new SnippetDelegate(this));
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTabKeyNavigation(false);
    setDragDropMode(QAbstractItemView::DragOnly);
    setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_Hover);
    horizontalHeader()->hide();
    horizontalHeader()->setStretchLastSection(true);
    updateRowHeight();

    m_placeholder->setAlignment(Qt::AlignCenter);
    m_placeholder->setWordWrap(true);
    m_placeholder->setTextFormat(Qt::PlainText);
    m_placeholder->setMargin(placeholderMargin);
    m_placeholder->setForegroundRole(QPalette::PlaceholderText);
    m_placeholder->setAttribute(Qt::WA_TransparentForMouseEvents);
}

void SnippetsListView::setPlaceholderText(const QString& text) {
    m_placeholder->setText(text);
}

QString SnippetsListView::shownPlaceholderText() const {
    return m_placeholder->isHidden() ? QString() : m_placeholder->text();
}

void SnippetsListView::setModel(QAbstractItemModel* model) {
    LTHUDTableView::setModel(model);
    connect(model, &QAbstractItemModel::rowsInserted, this, &SnippetsListView::showOrHidePlaceholder);
    connect(model, &QAbstractItemModel::rowsRemoved, this, &SnippetsListView::showOrHidePlaceholder);
    showOrHidePlaceholder();
}

void SnippetsListView::keyboardSearch(const QString& /*search*/) {}

std::vector<NSColor> SnippetsListView::_alternatingRowBackgroundColors() const {
    const QColor base = palette().color(QPalette::Base);
    if (!model() || model()->rowCount() == 0) {
        return {NSColorFromQColor(base)};
    }
    const auto lighter = [](int channel) { return std::min(channel + secondColorStep, 255); };
    return {NSColorFromQColor(base),
            NSColorFromQColor(QColor(lighter(base.red()), lighter(base.green()), lighter(base.blue())))};
}

NSColor SnippetsListView::_highlightColorForCell(const NSCell* /*cell*/) const {
    return NSColorFromQColor(palette().color(QPalette::Highlight));
}

QPixmap SnippetsListView::dragPicture(const QString& title) const {
    const QString text = shortTitle(title);
    const QSize size(fontMetrics().horizontalAdvance(text) + 2 * dragPadding, fontMetrics().height() + dragPadding);
    QPixmap picture(size * devicePixelRatioF());
    picture.setDevicePixelRatio(devicePixelRatioF());
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().color(QPalette::Highlight));
    painter.drawRoundedRect(QRect(QPoint(), size), size.height() / 2.0, size.height() / 2.0);
    painter.setFont(font());
    painter.setPen(palette().color(QPalette::HighlightedText));
    painter.drawText(QRect(QPoint(), size), Qt::AlignCenter | Qt::TextSingleLine, text);
    return picture;
}

void SnippetsListView::startDrag(Qt::DropActions /*actions*/) {
    const auto* const snippets = dynamic_cast<const SnippetsListModel*>(model());
    const std::shared_ptr<Snippet> snippet = snippets ? snippets->snippetAt(currentIndex()) : nullptr;
    if (!snippet) {
        return;
    }
    const QPointer<SnippetsListView> self(this);
    Q_EMIT dragBegan();
    // Qt deletes it, and the data with it, when nobody needs them any more.
    auto* const drag = new QDrag(this);
    drag->setMimeData(mimeDataOf(*snippet).release());
    drag->setPixmap(dragPicture(currentIndex().data().toString()));
    drag->setHotSpot(dragHotSpot);
    const Qt::DropAction action = drag->exec(Qt::CopyAction, Qt::CopyAction);
    if (self) {
        Q_EMIT dragEnded(snippet, action == Qt::CopyAction);
    }
}

/// In a table, Home and End are the ends of a row.
QModelIndex SnippetsListView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
    if (model() && action == MoveHome) {
        return model()->index(0, 0);
    }
    if (model() && action == MoveEnd) {
        return model()->index(model()->rowCount() - 1, 0);
    }
    return LTHUDTableView::moveCursor(action, modifiers);
}

void SnippetsListView::resizeEvent(QResizeEvent* event) {
    LTHUDTableView::resizeEvent(event);
    m_placeholder->setGeometry(viewport()->rect());
}

void SnippetsListView::changeEvent(QEvent* event) {
    LTHUDTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        updateRowHeight();
    }
}

void SnippetsListView::updateRowHeight() {
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    setRowHeight(itemDelegate()->sizeHint(option, {}).height());
}

void SnippetsListView::showOrHidePlaceholder() {
    m_placeholder->setVisible(model()->rowCount() == 0);
}
