// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QString>
#include <QUrl>

#include <memory>

class QWidget;

/// The help window: shows the page at the application's helpURL, fetched afresh each time it is popped.
///
/// Pages come from the host's resources, from files, or over HTTP; where one cannot be had the window says which and
/// why. Escape closes it. Process-wide: made on first use, and let go of with the application object.
class VXKIT_EXPORT LTHelpLoader {
public:
    LTHelpLoader(const LTHelpLoader&) = delete;
    LTHelpLoader& operator=(const LTHelpLoader&) = delete;
    ~LTHelpLoader();

    /// The loader of the process, with its window, made on first use. Needs the application object.
    [[nodiscard]] static LTHelpLoader& loader();

    /// Whether the first use has been; asking makes nothing.
    [[nodiscard]] static bool exists();

    /// Loads the page and brings the window to the front with the keyboard.
    void pop();

    /// The window, borrowed.
    [[nodiscard]] QWidget& window() const;

    /// What the window shows, as plain text.
    [[nodiscard]] QString text() const;

private:
    LTHelpLoader();

    class HelpWindow;
    std::unique_ptr<HelpWindow> m_window;
};
