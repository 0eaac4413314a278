// SPDX-License-Identifier: MIT
#include <VXKit/controls/LTNameTag.h>

#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSFont.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <algorithm>
#include <string>
#include <utility>

namespace {

// Points.
constexpr double measuredFontSize = 12;
constexpr double drawnFontSize = 10;
constexpr double tagLeastWidth = 20;
constexpr double widthAround = 5;
constexpr double heightAround = 3;
constexpr double dictionaryLeastWidth = 185;
constexpr double dictionaryWidthAround = 10;
constexpr double dictionaryHeightAround = 10;
constexpr double dictionaryLines = 3;

NSSize measuredSize(const QString& name) {
    return sizeWithAttributes(name, {.font = NSFont::systemFontOfSize(measuredFontSize)});
}

/// The text under "name", or null where there is none.
const std::string* nameIn(const NSDictionary& dictionary) {
    return dictionary.objectOfType<std::string>("name");
}

} // namespace

LTNameTag::LTNameTag(QWidget* parent) : NSView(parent) {}

LTNameTag::LTNameTag(QString itsName) : name(std::move(itsName)) {
    const NSSize size = measuredSize(name);
    setFrame(NSMakeRect(0, 0, std::max(tagLeastWidth, size.width + widthAround), size.height + heightAround));
    setAccessibleName(name);
}

LTNameTag::LTNameTag(const NSDictionary& dictionary) : dic(dictionary) {
    NSSize size;
    if (const std::string* text = nameIn(dictionary)) {
        name = QString::fromStdString(*text);
        size = measuredSize(name);
    }
    const bool isWide = size.width >= dictionaryLeastWidth - dictionaryWidthAround;
    setFrame(NSMakeRect(0, 0, isWide ? size.width + dictionaryWidthAround : dictionaryLeastWidth,
                        dictionaryLines * size.height + dictionaryHeightAround));
    setAccessibleName(name);
}

LTNameTag::~LTNameTag() = default;

std::unique_ptr<LTNameTag> LTNameTag::nameTagWithName(const QString& name) {
    return std::make_unique<LTNameTag>(name);
}

std::unique_ptr<LTNameTag> LTNameTag::nameTagWithDictionary(const NSDictionary& dictionary) {
    return std::make_unique<LTNameTag>(dictionary);
}

void LTNameTag::setText(const QString& text) {
    name = text;
    setAccessibleName(name);
    setNeedsDisplay(true);
}

void LTNameTag::drawRect(const NSRect& /*dirtyRect*/) {
    const NSTextAttributes attributes{.font = NSFont::systemFontOfSize(drawnFontSize),
                                      .foregroundColor = NSColor::whiteColor()};
    const NSSize size = sizeWithAttributes(name, attributes);
    const NSSize room = bounds().size;
    drawAtPoint(name, {(room.width - size.width) / 2, (room.height - size.height) / 2}, attributes);
}
