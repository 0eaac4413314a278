// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/NSPanel.h>

class FliprView;

/// The transparent panel in which a window turns over: it covers the window and wide margins around it, in which the
/// near edge of the card and its shadow have room. Made by flippingWindow(); see NSWindow+Flipr.h.
class VXKIT_EXPORT FliprPanel : public NSPanel {
    Q_OBJECT

public:
    FliprPanel();

    /// The view with the card, which is the content view.
    [[nodiscard]] FliprView& card() const { return *m_card; }

    /// Redraws the card; where there is no compositing manager, the panel is cut to it.
    void display() override;

protected:
    /// The card as it is turned.
    void drawCoverage() const override;

private:
    FliprView* m_card; // owned as the content view
};
