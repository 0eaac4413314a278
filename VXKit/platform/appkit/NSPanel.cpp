// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSPanel.h>

bool NSPanel::canBecomeMainWindow() const {
    return false;
}
