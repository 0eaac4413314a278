// SPDX-License-Identifier: MIT
#include <VXKit/controls/LTHUDCheckBoxCell.h>

#include <VXKit/controls/HUDImage.h>

#include <QString>

namespace {

constexpr std::int32_t alreadyInstalled = -1;

// In points.
constexpr double imageMargin = 2;
constexpr double imageLength = 16;

} // namespace

LTHUDCheckBoxCell::LTHUDCheckBoxCell() = default;

LTHUDCheckBoxCell::~LTHUDCheckBoxCell() = default;

void LTHUDCheckBoxCell::setIntValue(int value) {
    m_realValue = value;
    setEnabled(value != alreadyInstalled);
    NSButtonCell::setIntValue(value);
}

NSSize LTHUDCheckBoxCell::cellSize() const {
    constexpr double length = imageMargin + imageLength + imageMargin;
    return {length, length};
}

void LTHUDCheckBoxCell::drawWithFrame(const NSRect& cellFrame, ViewCore& controlView) {
    const QString name =
        m_realValue == alreadyInstalled ? QStringLiteral("AlreadyInstalled") : HUDCheckboxImageName(*this);
    drawHUDImage(name, NSMakePoint(NSMinX(cellFrame) + imageMargin, NSMinY(cellFrame) + imageMargin), controlView);
}
