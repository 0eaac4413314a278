// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/desktop/NSWorkspace.h>

/// The workspace of an X11 desktop, by the hints of its window manager.
///
/// An application is a process with a client window; its name is the file name of its program, its path the program's
/// (left out where the process belongs to somebody else), and its serial number the process number in the low word.
/// This application's own name is that of NSProcessInfo. Private to platform/desktop: see NSWorkspace.
class X11Workspace final : public NSWorkspace {
public:
    /// Whether the window manager tells the active window and the list of windows.
    [[nodiscard]] bool knowsApplications() const override;

    /// The application with the keyboard. This application, too, while one of its windows has it that the window
    /// manager knows nothing of.
    [[nodiscard]] std::optional<NSDictionary> activeApplication() const override;

    /// In the order in which their first windows came. Windows of other machines and of processes that are gone do not
    /// count.
    [[nodiscard]] std::vector<NSDictionary> launchedApplications() const override;

    /// Brings the first running application with that path to the front, else starts it.
    bool launchApplication(const QString& path) override;

    /// Brings the topmost window of the process to the front and gives it the keyboard; a minimised one only where it
    /// has no other.
    void setFrontProcess(ProcessSerialNumber process) override;
};
