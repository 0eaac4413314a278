// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSCursor.h>

#include <QCursor>
#include <QGuiApplication>

namespace {

int timesHidden = 0;

} // namespace

void NSCursor::hide() {
    if (qGuiApp && ++timesHidden == 1) {
        QGuiApplication::setOverrideCursor(Qt::BlankCursor);
    }
}

void NSCursor::unhide() {
    if (qGuiApp && timesHidden > 0 && --timesHidden == 0) {
        QGuiApplication::restoreOverrideCursor();
    }
}
