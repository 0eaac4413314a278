// SPDX-License-Identifier: MIT
#include "Appearance.h"

#include "../DarkColors.h"

#include <VXKit/controls/LTHUDScrollBar.h>

#include <QAbstractScrollArea>
#include <QApplication>
#include <QFont>
#include <QIcon>
#include <QPushButton>
#include <QStyleFactory>

#include <algorithm>
#include <memory>

namespace {

constexpr int fontSize = 13; // pixels of the logical screen

// Points.
constexpr int buttonHeight = 28;
constexpr int buttonPadding = 14; // on either side of the title
constexpr int smallestButtonWidth = 84;

} // namespace

void applyAppearance() {
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(darkColors());
    QFont font = QApplication::font();
    font.setFamilies(QStringList{QStringLiteral("Inter")} + font.families());
    font.setPixelSize(fontSize);
    QApplication::setFont(font);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/images/Snippets.svg")));
}

void useHUDScrollBars(QAbstractScrollArea& area) {
    const auto makeScrollBar = [](Qt::Orientation orientation) {
        auto scrollBar = std::make_unique<LTHUDScrollBar>(orientation);
        scrollBar->awakeFromNib();
        return scrollBar.release();
    };
    area.setVerticalScrollBar(makeScrollBar(Qt::Vertical));
    area.setHorizontalScrollBar(makeScrollBar(Qt::Horizontal));
}

void usePushButtonSize(QPushButton& button) {
    const int titleWidth = button.fontMetrics().horizontalAdvance(button.text());
    button.setFixedHeight(buttonHeight);
    button.setMinimumWidth(std::max(titleWidth + 2 * buttonPadding, smallestButtonWidth));
}
