// SPDX-License-Identifier: MIT
#include "Appearance.h"

#include "../DarkColors.h"

#include <QApplication>
#include <QFont>
#include <QIcon>
#include <QStyleFactory>
#include <QWidget>

namespace {

constexpr int fontSize = 12; // pixels of the logical screen

} // namespace

void applyAppearance() {
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QFont font = QApplication::font();
    font.setFamilies(QStringList{QStringLiteral("Inter")} + font.families());
    font.setPixelSize(fontSize);
    QApplication::setFont(font);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/images/StatusIcon.svg")));
}

void useDarkColors(QWidget& panel) {
    panel.setPalette(darkColors());
}
