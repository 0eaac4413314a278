// SPDX-License-Identifier: MIT
#pragma once

#include <QLayout>
#include <QWidget>

/// Whether `layout`, or one within it, places `widget`, which has no frame of its own then. No for null.
inline bool isPlacedByLayout(const QLayout* layout, const QWidget& widget) {
    for (int index = 0; layout && index < layout->count(); ++index) {
        QLayoutItem* item = layout->itemAt(index);
        if (item->widget() == &widget || isPlacedByLayout(item->layout(), widget)) {
            return true;
        }
    }
    return false;
}
