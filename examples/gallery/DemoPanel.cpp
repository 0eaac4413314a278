// SPDX-License-Identifier: MIT
#include "DemoPanel.h"

#include "Stage.h"

#include <VXKit/controls/LTHUDButton.h>

namespace {

// Points.
constexpr double contentMargin = 20;
constexpr double laneHeight = 36;
constexpr NSSize buttonSize{96, 28};
constexpr double buttonBottom = 4;

} // namespace

std::unique_ptr<LTHUDWindow> makeDemoPanel(const NSSize& size, const QString& title, const QString& text) {
    auto panel =
        std::make_unique<LTHUDWindow>(NSRect{NSZeroPoint, size}, NSBorderlessWindowMask, NSBackingStoreBuffered, false);
    panel->setWindowTitle(title);
    ViewCore& content = *ViewCore::of(panel->contentView());

    auto* const field = new NSTextField(NSMakeRect(contentMargin, laneHeight, size.width - 2 * contentMargin,
                                                   size.height - hudTitleBarHeight - laneHeight - contentMargin));
    makeWhite(*field, text, NSFont::systemFontOfSize(NSFont::systemFontSize()));
    field->setAutoresizingMask(NSViewWidthSizable | NSViewHeightSizable);
    content.addSubview(field);

    auto* const close = new LTHUDButton(
        NSMakeRect(size.width - buttonSize.width - contentMargin, buttonBottom, buttonSize.width, buttonSize.height));
    close->setTitle(QStringLiteral("&Close"));
    close->cell().setKeyEquivalent(QStringLiteral("\x1b"));
    close->setAutoresizingMask(NSViewMinXMargin | NSViewMaxYMargin);
    content.addSubview(close);
    QObject::connect(close, &QAbstractButton::clicked, panel.get(),
                     [window = panel.get()] { window->orderOut(nullptr); });
    panel->awakeFromNib();
    panel->center();
    return panel;
}
