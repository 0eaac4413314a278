// SPDX-License-Identifier: MIT
#include <VXKit/transitions/FliprPanel.h>

#include <VXKit/platform/desktop/WindowEffects.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/transitions/FliprView.h>

#include <memory>

namespace {

constexpr NSRect startingContentRect{{128, 128}, {512, 768}};

} // namespace

FliprPanel::FliprPanel() : NSPanel(startingContentRect, NSBorderlessWindowMask, NSBackingStoreBuffered, false) {
    setManagement(NSWindowManagement::Bypassing);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setBackgroundColor(NSColor::clearColor());
    setOpaque(false);
    setHasShadow(false);
    setOneShot(true);
    setLevel(CGWindowLevelForKey(kCGModalPanelWindowLevelKey));
    setCollectionBehavior(NSWindowCollectionBehaviorCanJoinAllSpaces);
    const NSRect frame{NSZeroPoint, startingContentRect.size};
    auto card =
        std::make_unique<FliprView>(frame, NSInsetRect(frame, FliprView::horizontalMargin, FliprView::verticalMargin));
    card->setAutoresizingMask(NSViewWidthSizable | NSViewHeightSizable);
    m_card = card.get();
    setContentView(card.release());
}

void FliprPanel::display() {
    const bool isCut = !WindowEffects::sharedEffects().isAvailable(WindowEffects::Effect::Translucency);
    if (isCut && QWidget::isVisible()) {
        updateShape();
    }
    NSPanel::display();
}

void FliprPanel::drawCoverage() const {
    m_card->drawCard();
    // A window that covers nothing would count as one without a shape, which is a rectangle. A card on its edge covers
    // nothing, so that a point in its middle stands for it.
    NSColor::blackColor().setFill();
    const NSRect place = m_card->originalRect();
    NSRectFillUsingOperation(NSMakeRect(NSMidX(place), NSMidY(place), 1, 1), NSCompositeDestinationOver);
}
