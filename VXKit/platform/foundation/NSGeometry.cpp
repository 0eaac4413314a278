// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSGeometry.h>

#include <QLocale>

#include <cmath>

namespace {

QString pair(double first, double second) {
    const auto digits = [](double number) {
        // −0 is a number like 0 to whoever reads this.
        return QString::number(number == 0 ? 0.0 : number, 'g', QLocale::FloatingPointShortest);
    };
    return QStringLiteral("{%1, %2}").arg(digits(first), digits(second));
}

} // namespace

NSRect NSIntegralRect(const NSRect& rect) {
    if (NSIsEmptyRect(rect)) {
        return NSZeroRect;
    }
    const double x = std::floor(NSMinX(rect));
    const double y = std::floor(NSMinY(rect));
    return {{x, y}, {std::ceil(NSMaxX(rect)) - x, std::ceil(NSMaxY(rect)) - y}};
}

void NSDivideRect(const NSRect& rect, NSRect* slice, NSRect* remainder, double amount, NSRectEdge edge) {
    NSRect cut = NSZeroRect;
    NSRect rest = NSZeroRect;
    if (!NSIsEmptyRect(rect)) {
        cut = rect;
        rest = rect;
        const bool across = edge == NSMinXEdge || edge == NSMaxXEdge;
        const double whole = across ? NSWidth(rect) : NSHeight(rect);
        const double part = amount > 0 ? std::min(amount, whole) : 0.0;
        double& cutLength = across ? cut.size.width : cut.size.height;
        double& restLength = across ? rest.size.width : rest.size.height;
        cutLength = part;
        restLength = whole - part;
        const bool atTheStart = edge == NSMinXEdge || edge == NSMinYEdge;
        NSRect& further = atTheStart ? rest : cut;
        (across ? further.origin.x : further.origin.y) += atTheStart ? part : whole - part;
    }
    if (slice) {
        *slice = cut;
    }
    if (remainder) {
        *remainder = rest;
    }
}

QString NSStringFromPoint(const NSPoint& point) {
    return pair(point.x, point.y);
}

QString NSStringFromSize(const NSSize& size) {
    return pair(size.width, size.height);
}

QString NSStringFromRect(const NSRect& rect) {
    return QStringLiteral("{%1, %2}").arg(NSStringFromPoint(rect.origin), NSStringFromSize(rect.size));
}
