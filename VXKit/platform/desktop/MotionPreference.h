// SPDX-License-Identifier: MIT
// The person's wish for less motion on the screen, which every effect that moves something honours.
#pragma once

#include <VXKit/VXKitExport.h>

/// The key under which the user defaults of a program ask for less motion in it; off at first.
inline constexpr const char* VXReduceMotion = "VXReduceMotion";

/// Whether effects are to show their end at once. Yes where anything says so: the program's own VXReduceMotion, or the
/// desktop, by its settings portal or, where there is none, by its X settings manager.
///
/// Answers what is known by now, without waiting: the desktop is asked when this or askForMotionPreference is first
/// called, and tells of changes from then on. Main thread only. AppKit: `NSWorkspace
/// -accessibilityDisplayShouldReduceMotion`.
[[nodiscard]] VXKIT_EXPORT bool prefersReducedMotion();

/// Begins to ask the desktop, so that its answer is there by the time of the first effect. Nothing without an
/// application object, and where it has been asked.
VXKIT_EXPORT void askForMotionPreference();
