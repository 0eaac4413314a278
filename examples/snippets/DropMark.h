// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QWidget>

/// Shows where something may be dropped, over what is there: a frame, a little colour, and a few words in the middle.
///
/// Not in the mouse's way.
class DropMark : public QWidget {
public:
    explicit DropMark(QWidget* parent);

    /// Shows the mark over `area` of its parent; `text` is what dropping does.
    void showOver(const QRect& area, const QString& text);
    [[nodiscard]] QString text() const { return m_text; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_text;
};
