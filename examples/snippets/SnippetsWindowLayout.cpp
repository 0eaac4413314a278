// SPDX-License-Identifier: MIT
#include "SnippetsWindowLayout.h"

#include <VXKit/platform/foundation/NSUserDefaults.h>
#include <VXKit/support/VXLog.h>

#include <QSplitter>

namespace {

constexpr const char* divisionKey = "SnippetsWindowDivision";
constexpr const char* sizeKey = "SnippetsWindowSize";
constexpr const char* widthKey = "width";
constexpr const char* heightKey = "height";

} // namespace

std::optional<NSSize> keptWindowSize() {
    const std::optional<NSPropertyList> value = NSUserDefaults::standardUserDefaults().objectForKey(sizeKey);
    const NSDictionary* size = value ? value->as<NSDictionary>() : nullptr;
    const auto length = [size](const char* side) {
        const NSPropertyList* number = size ? size->objectForKey(side) : nullptr;
        return number ? number->doubleValue() : 0;
    };
    const NSSize read{length(widthKey), length(heightKey)};
    return read.width > 0 && read.height > 0 ? std::optional(read) : std::nullopt;
}

void restoreDivision(QSplitter& splitter) {
    const std::optional<NSPropertyList> value = NSUserDefaults::standardUserDefaults().objectForKey(divisionKey);
    if (const NSData* data = value ? value->as<NSData>() : nullptr) {
        splitter.restoreState(
            QByteArray(reinterpret_cast<const char*>(data->data()), static_cast<qsizetype>(data->size())));
    }
    // Part of what the state remembers, and not the user's to change.
    splitter.setChildrenCollapsible(false);
    splitter.setHandleWidth(1);
}

void keepWindowLayout(const NSSize& size, const QSplitter& splitter) {
    NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
    NSDictionary lengths;
    lengths.setObject(size.width, widthKey);
    lengths.setObject(size.height, heightKey);
    defaults.setObject(lengths, sizeKey);
    const QByteArray division = splitter.saveState();
    defaults.setObject(NSData(division.begin(), division.end()), divisionKey);
    if (!defaults.synchronize()) {
        VXLog("The size and the division of the window could not be kept");
    }
}
