// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/controls/LTHUDTableView.h>

#include <memory>

class QLabel;
class Snippet;
class SnippetsListModel;

/// The list of snippets: the kit's dark table with a single column, in this program's colours, and a text in the middle
/// while there are no rows.
///
/// Home and End go to the first and the last row, and Tab leaves the table, as in any list. A row can be dragged out.
class SnippetsListView : public LTHUDTableView {
    Q_OBJECT

public:
    explicit SnippetsListView(QWidget* parent = nullptr);

    /// What to show while there are no rows.
    void setPlaceholderText(const QString& text);
    /// What is shown in place of rows; empty while there are some.
    [[nodiscard]] QString shownPlaceholderText() const;

    void setModel(QAbstractItemModel* model) override;

    /// Does nothing: typing searches, and the search field is where that happens.
    void keyboardSearch(const QString& search) override;

    /// One alone while there are no rows, so that the text is not on stripes.
    [[nodiscard]] std::vector<NSColor> _alternatingRowBackgroundColors() const override;
    [[nodiscard]] NSColor _highlightColorForCell(const NSCell* cell) const override;

    /// What is under the pointer while a snippet is dragged: its title, on a pill.
    [[nodiscard]] QPixmap dragPicture(const QString& title) const;

Q_SIGNALS:
    void dragBegan();
    /// `wasDropped` somewhere that took it.
    void dragEnded(const std::shared_ptr<Snippet>& snippet, bool wasDropped);

protected:
    /// Drags the selected row, as a copy whatever is asked for.
    void startDrag(Qt::DropActions actions) override;
    [[nodiscard]] QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void updateRowHeight();
    void showOrHidePlaceholder();

    QLabel* m_placeholder = nullptr;
};
