// SPDX-License-Identifier: MIT
#include "SnippetsListView.h"

#include "SnippetDelegate.h"

#include <QApplication>
#include <QEvent>
#include <QHeaderView>
#include <QLabel>
#include <QResizeEvent>

#include <algorithm>

namespace {

constexpr int placeholderMargin = 24; // points
constexpr int secondColorStep = 6;    // of 255, that it is lighter than the first

NSColor colorOf(const QColor& color) {
    return NSColor::colorWithCalibratedRed(double(color.redF()), double(color.greenF()), double(color.blueF()),
                                           double(color.alphaF()));
}

} // namespace

SnippetsListView::SnippetsListView(QWidget* parent) : LTHUDTableView(parent), m_placeholder(new QLabel(viewport())) {
    setPalette(QApplication::palette());
    setItemDelegate(new SnippetDelegate(this));
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTabKeyNavigation(false);
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
        return {colorOf(base)};
    }
    const auto lighter = [](int channel) { return std::min(channel + secondColorStep, 255); };
    return {colorOf(base), colorOf(QColor(lighter(base.red()), lighter(base.green()), lighter(base.blue())))};
}

NSColor SnippetsListView::_highlightColorForCell(const NSCell* /*cell*/) const {
    return colorOf(palette().color(QPalette::Highlight));
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
