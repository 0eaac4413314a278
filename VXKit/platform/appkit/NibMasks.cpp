// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NibMasks.h>

#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/appkit/NSWindow.h>

#include <QLatin1String>
#include <QStringList>

#include <algorithm>
#include <numeric>
#include <span>

namespace {

struct MaskBit {
    QLatin1String name;
    unsigned value;
};

constexpr MaskBit autoresizingBits[] = {
    {QLatin1String("NSViewNotSizable"), NSViewNotSizable},
    {QLatin1String("NSViewMinXMargin"), NSViewMinXMargin},
    {QLatin1String("NSViewWidthSizable"), NSViewWidthSizable},
    {QLatin1String("NSViewMaxXMargin"), NSViewMaxXMargin},
    {QLatin1String("NSViewMinYMargin"), NSViewMinYMargin},
    {QLatin1String("NSViewHeightSizable"), NSViewHeightSizable},
    {QLatin1String("NSViewMaxYMargin"), NSViewMaxYMargin},
};

constexpr MaskBit styleBits[] = {
    {QLatin1String("NSBorderlessWindowMask"), NSBorderlessWindowMask},
    {QLatin1String("NSTitledWindowMask"), NSTitledWindowMask},
    {QLatin1String("NSClosableWindowMask"), NSClosableWindowMask},
    {QLatin1String("NSMiniaturizableWindowMask"), NSMiniaturizableWindowMask},
    {QLatin1String("NSResizableWindowMask"), NSResizableWindowMask},
};

/// The mask that `text` tells of these bits.
std::optional<unsigned> maskFromText(const QString& text, std::span<const MaskBit> bits) {
    bool isNumber = false;
    const unsigned number = text.trimmed().toUInt(&isNumber);
    const unsigned all =
        std::accumulate(bits.begin(), bits.end(), 0U, [](unsigned sum, const MaskBit& bit) { return sum | bit.value; });
    if (isNumber) {
        return (number & ~all) == 0 ? std::optional(number) : std::nullopt;
    }
    unsigned mask = 0;
    for (const QString& name : text.split(QLatin1Char('|'))) {
        const auto bit = std::find_if(bits.begin(), bits.end(),
                                      [&](const MaskBit& candidate) { return candidate.name == name.trimmed(); });
        if (bit == bits.end()) {
            return std::nullopt;
        }
        mask |= bit->value;
    }
    return mask;
}

} // namespace

std::optional<unsigned> NibMasks::autoresizingMask(const QString& text) {
    return maskFromText(text, autoresizingBits);
}

std::optional<unsigned> NibMasks::styleMask(const QString& text) {
    return maskFromText(text, styleBits);
}
