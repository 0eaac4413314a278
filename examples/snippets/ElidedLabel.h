// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>

/// One line of plain text that ends in an ellipsis where it does not fit; the whole of it is the tool tip then.
class ElidedLabel : public QLabel {
public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};
