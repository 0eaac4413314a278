// SPDX-License-Identifier: MIT
#include <VXKit/controls/LTHUDLineEdit.h>

#include <VXKit/platform/appkit/KeyCodes.h>
#include <VXKit/platform/appkit/NSButton.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSFont.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/platform/graphics/NSShadow.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <QKeyEvent>

#include <utility>

namespace {

// Lengths in points, whites and alphas from 0 to 1.
constexpr double wellInset = 0.5;
constexpr double wellRadius = 4;
constexpr double wellWhite = 0.26;
constexpr double hairlineWhite = 0.36;
constexpr double hairlineWidth = 0.5;
constexpr double placeholderWhite = 0.65;
constexpr double disabledPlaceholderAlpha = 0.4;
constexpr double placeholderSize = 12;
constexpr double placeholderX = 10;

} // namespace

LTHUDLineEdit::LTHUDLineEdit(const Style& style, QWidget* parent) : PlainLineEdit(parent), m_style(style) {}

void LTHUDLineEdit::setTarget(NSButton* target) {
    m_target = target;
}

NSButton* LTHUDLineEdit::target() const {
    return m_target;
}

void LTHUDLineEdit::setPlaceholderString(const QString& placeholder) {
    const QString before = std::exchange(m_placeholder, placeholder);
    if (accessibleDescription() == before) {
        setAccessibleDescription(placeholder);
    }
    setNeedsDisplay(true);
}

NSRect LTHUDLineEdit::bounds() const {
    const NSRect bounds = PlainLineEdit::bounds();
    return m_drawing ? bounds : NSOffsetRect(bounds, m_style.boundsShift.x, m_style.boundsShift.y);
}

void LTHUDLineEdit::awakeFromNib() {
    if (const QString name = property("target").toString(); !name.isEmpty()) {
        setTarget(dynamic_cast<NSButton*>(QWidget::window()->findChild<QWidget*>(name)));
    }
}

bool LTHUDLineEdit::becomeFirstResponder() {
    const bool becomes = PlainLineEdit::becomeFirstResponder();
    // Not only when the event loop comes to it: the placeholder must not be seen beside the caret.
    display();
    return becomes;
}

bool LTHUDLineEdit::resignFirstResponder() {
    const bool resigns = PlainLineEdit::resignFirstResponder();
    setNeedsDisplay(true);
    return resigns;
}

void LTHUDLineEdit::keyDown(const NSEvent& event) {
    if (isReturnOrEnter(event)) {
        pressTarget(event);
    } else if (event.keyCode() == NSTabKeyCode) {
        selectNextKeyView(event);
    } else {
        PlainLineEdit::keyDown(event);
    }
}

bool LTHUDLineEdit::performKeyEquivalent(const NSEvent& event) {
    if (isReturnOrEnter(event) && m_target && isFirstResponder()) {
        pressTarget(event);
        return true;
    }
    return PlainLineEdit::performKeyEquivalent(event);
}

void LTHUDLineEdit::pressTarget(const NSEvent& event) {
    if (m_target && !event.isARepeat()) {
        m_target->performClick(this);
    }
}

void LTHUDLineEdit::selectNextKeyView(const NSEvent& event) {
    if (NSWindow* window = ViewCore::window()) {
        window->makeFirstResponder(m_nextKeyView);
    } else if (m_nextKeyView) {
        m_nextKeyView->setFocus(Qt::TabFocusReason);
    } else {
        focusNextPrevChild((event.modifierFlags() & NSShiftKeyMask) == 0);
    }
}

bool LTHUDLineEdit::event(QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        // QWidget would move the keyboard by itself, before keyDown hears of it.
        if (key->key() == Qt::Key_Tab || key->key() == Qt::Key_Backtab) {
            keyPressEvent(key);
            return true;
        }
    }
    return PlainLineEdit::event(event);
}

void LTHUDLineEdit::drawRect(const NSRect& dirtyRect) {
    m_drawing = true;
    drawWell();
    m_drawing = false;
    PlainLineEdit::drawRect(dirtyRect);
    if (!m_placeholder.isNull() && text().isEmpty() && !isFirstResponder()) {
        drawPlaceholder();
    }
}

/// Leaves its shadow in force: text and caret are to throw it too.
void LTHUDLineEdit::drawWell() {
    NSShadow shadow;
    shadow.setShadowColor(NSColor::blackColor());
    shadow.setShadowBlurRadius(m_style.shadowBlurRadius);
    const NSSize size = bounds().size;
    const double pixelRatio = devicePixelRatioF();
    // Kept, because most of the time of a repaint would go into blurring the same shadow again.
    if (!m_well || m_well->size() != size || m_wellPixelRatio != pixelRatio) {
        m_well = NSImage::initWithSize(size);
        m_wellPixelRatio = pixelRatio;
        if (!m_well->isValid()) {
            return;
        }
        m_well->lockFocus(pixelRatio);
        NSBezierPath well = NSBezierPath::bezierPathWithRoundedRect(
            NSInsetRect({NSZeroPoint, size}, wellInset, wellInset), wellRadius, wellRadius);
        NSColor::colorWithCalibratedWhite(wellWhite, 1).set();
        well.fill();
        NSColor::colorWithCalibratedWhite(hairlineWhite, 1).set();
        well.setLineWidth(hairlineWidth);
        shadow.set();
        well.stroke();
        m_well->unlockFocus();
    }
    m_well->drawInRect({NSZeroPoint, size}, NSZeroRect, NSCompositeSourceOver, 1);
    shadow.set();
}

void LTHUDLineEdit::drawPlaceholder() const {
    NSTextAttributes attributes;
    attributes.foregroundColor =
        NSColor::colorWithCalibratedWhite(placeholderWhite, isEnabled() ? 1 : disabledPlaceholderAlpha);
    attributes.font = NSFont::systemFontOfSize(placeholderSize);
    attributes.alignment = NSLeftTextAlignment;
    const double height = sizeWithAttributes(m_placeholder, attributes).height;
    const NSSize size = bounds().size;
    drawInRect(m_placeholder, {{placeholderX, size.height / 2 - height / 2}, {size.width - 2 * placeholderX, height}},
               attributes);
}
