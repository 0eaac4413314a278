// SPDX-License-Identifier: MIT
#include "SnippetsListView.h"

#include "SnippetDelegate.h"

#include <QLabel>
#include <QResizeEvent>

namespace {

constexpr int placeholderMargin = 24; // points

} // namespace

SnippetsListView::SnippetsListView(QWidget* parent) : QListView(parent), m_placeholder(new QLabel(viewport())) {
    setItemDelegate(new SnippetDelegate(this));
    setUniformItemSizes(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setFrameShape(QFrame::NoFrame);
    setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_Hover);

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
    QListView::setModel(model);
    connect(model, &QAbstractItemModel::rowsInserted, this, &SnippetsListView::showOrHidePlaceholder);
    connect(model, &QAbstractItemModel::rowsRemoved, this, &SnippetsListView::showOrHidePlaceholder);
    showOrHidePlaceholder();
}

void SnippetsListView::keyboardSearch(const QString& /*search*/) {}

void SnippetsListView::resizeEvent(QResizeEvent* event) {
    QListView::resizeEvent(event);
    m_placeholder->setGeometry(viewport()->rect());
}

void SnippetsListView::showOrHidePlaceholder() {
    m_placeholder->setVisible(model()->rowCount() == 0);
}
