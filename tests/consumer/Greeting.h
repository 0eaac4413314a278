// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/NSNib.h>

/// A dark panel with a button, from a nib of this program's own.
class Greeting : public NSNibOwner {
public:
    /// Throws std::runtime_error where the nib is not what it should be.
    Greeting();

    [[nodiscard]] LTHUDWindow& window() const { return *m_window; }
    [[nodiscard]] LTHUDButton& button() const { return *m_button; }
    [[nodiscard]] int timesGreeted() const { return m_timesGreeted; }

    void connectNib(NSNibConnections& nib) override;

private:
    QPointer<LTHUDWindow> m_window;
    QPointer<LTHUDButton> m_button;
    int m_timesGreeted = 0;
};
