// SPDX-License-Identifier: MIT
// What the parts of NSWindow share. For them alone.
#pragma once

#include <VXKit/platform/appkit/NSWindow.h>

#include <QPointer>

#include <vector>

namespace WindowList {

/// All windows, the lowest first, by level and within a level as they were ordered last.
std::vector<NSWindow*>& allWindows();

/// Where a window of `level` belongs that is ordered in front of its level, or behind it.
std::vector<NSWindow*>::iterator placeInLevel(int level, NSWindowOrderingMode place);

/// The same windows, each null when it is gone.
std::vector<QPointer<NSWindow>> watched(const std::vector<NSWindow*>& windows);

/// Posts `name` about `window`.
void post(const char* name, const NSWindow* window);

/// Whether what is ordered out, and changes of opacity, wait for NSEnableScreenUpdates().
bool areScreenUpdatesDisabled();

} // namespace WindowList
