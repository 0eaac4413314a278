// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/graphics/NSFont.h>

#include <QString>

class LTHUDButton;
class LTHUDCheckBox;
class NSTextField;

/// One page of the preferences window, as large as the whole window is while it is shown. What it has is placed in rows
/// from the top down, below the room for title bar and tabs and above that for the button lane.
class PreferencesPage : public NSView {
public:
    /// Points, of the whole window.
    explicit PreferencesPage(const NSSize& size);

    /// Takes its own size again, after it left the window and took that of the page that came.
    void restoreSize();

    /// Points.
    static constexpr double margin = 24;

protected:
    /// The frame of the next row, which is `height` high and as wide as the page but for its margins.
    [[nodiscard]] NSRect nextRow(double height);

    /// Texts lie in `frame`, and so on; all become subviews.
    NSTextField& addText(const NSRect& frame, const QString& text);
    LTHUDCheckBox& addCheckBox(const NSRect& frame, const QString& title, bool isOn);
    LTHUDButton& addButton(const NSRect& frame, const QString& title);
    void add(ViewCore& view);

private:
    NSSize m_size;
    double m_nextY; // the upper edge of the next row, from the page's lower edge
};
