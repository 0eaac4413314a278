// SPDX-License-Identifier: MIT
#include <VXKit/controls/LTHUDTableView.h>

#include <VXKit/controls/LTHUDScrollBar.h>
#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/NSArrayController.h>
#include <VXKit/platform/appkit/NSButtonCell.h>
#include <VXKit/platform/foundation/NSPropertyList.h>

#include <QPalette>

#include <memory>

namespace {

constexpr const char* enabledKey = "enabled";

constexpr double firstWhite = 0.15;
constexpr double secondWhite = 0.25;
constexpr double alphaInHUDWindow = 0.95;

// For what Qt draws: the header, the corner between the scroll bars, editors. Of 255.
constexpr int headerWhite = 56;
constexpr int baseWhite = 38;
constexpr int disabledWhite = 140;

QScrollBar* makeScrollBar(Qt::Orientation orientation) {
    auto scrollBar = std::make_unique<LTHUDScrollBar>(orientation);
    scrollBar->awakeFromNib();
    return scrollBar.release();
}

QPalette darkPalette(const NSColor& highlight) {
    const QColor header(headerWhite, headerWhite, headerWhite);
    QPalette palette(header, header);
    palette.setColor(QPalette::Base, QColor(baseWhite, baseWhite, baseWhite));
    palette.setColor(QPalette::Highlight, highlight.qtColor());
    for (const QPalette::ColorRole role :
         {QPalette::Text, QPalette::WindowText, QPalette::ButtonText, QPalette::HighlightedText}) {
        palette.setColor(role, Qt::white);
        palette.setColor(QPalette::Disabled, role, QColor(disabledWhite, disabledWhite, disabledWhite));
    }
    return palette;
}

} // namespace

LTHUDTableView::LTHUDTableView(QWidget* parent) : NSTableView(parent) {
    setUp();
}

LTHUDTableView::LTHUDTableView(const NSRect& frame, QWidget* parent) : NSTableView(frame, parent) {
    setUp();
}

LTHUDTableView::~LTHUDTableView() = default;

void LTHUDTableView::setUp() {
    setUsesAlternatingRowBackgroundColors(true);
    setPalette(darkPalette(LTHUDTableView::_highlightColorForCell(nullptr)));
    textCell().setTextColor(NSColor::whiteColor());
    setVerticalScrollBar(makeScrollBar(Qt::Vertical));
    setHorizontalScrollBar(makeScrollBar(Qt::Horizontal));
}

std::vector<NSColor> LTHUDTableView::_alternatingRowBackgroundColors() const {
    const double alpha = qobject_cast<const LTHUDWindow*>(window()) ? alphaInHUDWindow : 1.0;
    return {NSColor::colorWithCalibratedWhite(firstWhite, alpha),
            NSColor::colorWithCalibratedWhite(secondWhite, alpha)};
}

NSColor LTHUDTableView::_highlightColorForCell(const NSCell* /*cell*/) const {
    return NSColor::colorWithCalibratedRed(0.573, 0.353, 0.122, 1.0);
}

NSCell* LTHUDTableView::preparedCellAtColumn(int column, int row) {
    NSCell* const cell = NSTableView::preparedCellAtColumn(column, row);
    auto* const buttonCell = dynamic_cast<NSButtonCell*>(cell);
    if (!dataSource() || !buttonCell) {
        return cell;
    }
    // A table and its source may be of different lengths for a moment while either changes.
    const NSArray& objects = dataSource()->arrangedObjects();
    const auto place = static_cast<std::size_t>(row);
    const auto* const object = place < objects.size() ? objects[place].as<NSDictionary>() : nullptr;
    const NSPropertyList* const enabled = object ? object->objectForKey(enabledKey) : nullptr;
    buttonCell->setIntValue(enabled ? NSIntValue(*enabled) : 0);
    return cell;
}

void LTHUDTableView::setIntValueOfCell(int value, int column, int row) {
    if (dataSource() && row >= 0) {
        dataSource()->setValue(value, enabledKey, static_cast<std::size_t>(row));
        return;
    }
    NSTableView::setIntValueOfCell(value, column, row);
}
