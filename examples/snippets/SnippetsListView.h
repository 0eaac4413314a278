// SPDX-License-Identifier: MIT
#pragma once

#include <QListView>

class QLabel;

/// The list of snippets: rows of one height, so that a long list is laid out without asking for its rows, and a text in
/// the middle while there are none.
class SnippetsListView : public QListView {
public:
    explicit SnippetsListView(QWidget* parent = nullptr);

    /// What to show while there are no rows.
    void setPlaceholderText(const QString& text);
    /// What is shown in place of rows; empty while there are some.
    [[nodiscard]] QString shownPlaceholderText() const;

    void setModel(QAbstractItemModel* model) override;

    /// Does nothing: typing searches, and the search field is where that happens.
    void keyboardSearch(const QString& search) override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void showOrHidePlaceholder();

    QLabel* m_placeholder;
};
