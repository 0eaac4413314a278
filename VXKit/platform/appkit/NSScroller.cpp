// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSScroller.h>

#include <VXKit/platform/appkit/NSApplication.h>

#include <QApplication>
#include <QPointer>
#include <QProxyStyle>
#include <QStyle>
#include <QStyleFactory>
#include <QStyleOptionSlider>

#include <algorithm>
#include <array>
#include <utility>

template class ViewOf<QScrollBar>;

namespace {

// In points.
constexpr double regularWidth = 15;
constexpr double smallWidth = 11;
constexpr double horizontalSlotMargin = 3;
constexpr double verticalSlotMargin = 3.5;
constexpr int leastKnobLength = 20;

bool isHorizontal(const QStyleOptionSlider& option) {
    return option.orientation == Qt::Horizontal;
}

/// `length` points of the scroller from `start` on, over all its thickness.
NSRect piece(const QStyleOptionSlider& option, double start, double length) {
    if (!(length > 0)) {
        return NSZeroRect;
    }
    if (!isHorizontal(option)) {
        return NSMakeRect(0, start, option.rect.width(), length);
    }
    const bool isMirrored = option.direction == Qt::RightToLeft;
    return NSMakeRect(isMirrored ? option.rect.width() - start - length : start, 0, length, option.rect.height());
}

/// Where the pieces of a scroller without arrows lie.
NSRect arrowlessRect(const QStyleOptionSlider& option, NSScrollerPart part) {
    const int length = isHorizontal(option) ? option.rect.width() : option.rect.height();
    const int thickness = isHorizontal(option) ? option.rect.height() : option.rect.width();
    const double margin = isHorizontal(option) ? horizontalSlotMargin : verticalSlotMargin;
    const int slotLength = length - static_cast<int>(2 * margin);
    if (part == NSScrollerKnobSlot) {
        return piece(option, margin, slotLength);
    }
    // A knob is longer than it is thick, which is what tells the one direction from the other.
    const int leastLength = std::max(leastKnobLength, thickness + 1);
    const qint64 range = qint64(option.maximum) - option.minimum;
    if (range <= 0 || slotLength < leastLength || !option.state.testFlag(QStyle::State_Enabled)) {
        return NSZeroRect;
    }
    const qint64 page = std::max(option.pageStep, 0);
    const int knobLength = std::max(leastLength, static_cast<int>(slotLength * page / (range + page)));
    const int room = slotLength - knobLength;
    const int knob =
        QStyle::sliderPositionFromValue(option.minimum, option.maximum, option.sliderPosition, room, option.upsideDown);
    switch (part) {
    case NSScrollerKnob:
        return piece(option, margin + knob, knobLength);
    case NSScrollerDecrementPage:
        return piece(option, margin, knob);
    case NSScrollerIncrementPage:
        return piece(option, margin + knob + knobLength, room - knob);
    default:
        return NSZeroRect;
    }
}

QStyle::SubControl subControlOf(NSScrollerPart part) {
    switch (part) {
    case NSScrollerDecrementPage:
        return QStyle::SC_ScrollBarSubPage;
    case NSScrollerKnob:
        return QStyle::SC_ScrollBarSlider;
    case NSScrollerIncrementPage:
        return QStyle::SC_ScrollBarAddPage;
    case NSScrollerDecrementLine:
        return QStyle::SC_ScrollBarSubLine;
    case NSScrollerIncrementLine:
        return QStyle::SC_ScrollBarAddLine;
    case NSScrollerKnobSlot:
        return QStyle::SC_ScrollBarGroove;
    case NSScrollerNoPart:
        break;
    }
    return QStyle::SC_None;
}

constexpr std::array parts{NSScrollerKnob,          NSScrollerDecrementPage, NSScrollerIncrementPage,
                           NSScrollerDecrementLine, NSScrollerIncrementLine, NSScrollerKnobSlot};

} // namespace

/// The style of the desktop with the pieces where a scroller without arrows has them: QScrollBar asks its style what
/// the mouse is on and how far a drag goes.
class NSScroller::ArrowlessStyle : public QProxyStyle {
public:
    explicit ArrowlessStyle(QStyle* desktop) : QProxyStyle(desktop) {}

    /// The one of the application, for as long as that lives and keeps its style.
    static ArrowlessStyle& shared() {
        static QPointer<ArrowlessStyle> style;
        const QString desktop = QApplication::style()->name();
        if (!style || style->baseStyle()->name() != desktop) {
            style = new ArrowlessStyle(QStyleFactory::create(desktop));
            style->setParent(qApp);
        }
        return *style;
    }

    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl subControl,
                         const QWidget* widget) const override {
        const auto* const slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
        if (control != CC_ScrollBar || !slider) {
            return QProxyStyle::subControlRect(control, option, subControl, widget);
        }
        const auto* const part =
            std::find_if(parts.begin(), parts.end(), [&](auto each) { return subControlOf(each) == subControl; });
        return part == parts.end() ? QRect() : NSRectToQRectF(arrowlessRect(*slider, *part)).toRect();
    }

    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override {
        const auto* const slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
        if (control != CC_ScrollBar || !slider) {
            return QProxyStyle::drawComplexControl(control, option, painter, widget);
        }
        QStyleOptionSlider arrowless(*slider);
        arrowless.subControls &= ~(SC_ScrollBarAddLine | SC_ScrollBarSubLine);
        if (arrowlessRect(arrowless, NSScrollerKnob) == NSZeroRect) {
            arrowless.subControls &= ~SC_ScrollBarSlider;
        }
        QProxyStyle::drawComplexControl(control, &arrowless, painter, widget);
    }
};

NSScroller::NSScroller(QWidget* parent) : ViewOf<QScrollBar>(parent) {
    setUp();
}

NSScroller::NSScroller(Qt::Orientation orientation, QWidget* parent) : ViewOf<QScrollBar>(orientation, parent) {
    setUp();
}

NSScroller::NSScroller(const NSRect& frame, QWidget* parent)
    : NSScroller(NSWidth(frame) > NSHeight(frame) ? Qt::Horizontal : Qt::Vertical, parent) {
    ViewOf<QScrollBar>::setFrame(frame);
}

NSScroller::~NSScroller() = default;

void NSScroller::setUp() {
    // Qt's says that it is, and would keep what lies below from being painted.
    setAttribute(Qt::WA_OpaquePaintEvent, false);
    NSNotificationCenter& centre = NSNotificationCenter::defaultCenter();
    for (const char* name : {NSApplicationDidBecomeActiveNotification, NSApplicationDidResignActiveNotification}) {
        m_activationChanges.push_back(
            centre.addObserverForName(name, nullptr, [this](const NSNotification&) { setNeedsDisplay(true); }));
    }
    // Where the application is another kind of QApplication, nothing is posted.
    QObject::connect(qApp, &QGuiApplication::applicationStateChanged, this, [this] { setNeedsDisplay(true); });
}

double NSScroller::scrollerWidthForControlSize(NSControlSize controlSize) {
    return controlSize == NSRegularControlSize ? regularWidth : smallWidth;
}

void NSScroller::setArrowsPosition(NSScrollArrowPosition position) {
    if (position == m_arrowsPosition) {
        return;
    }
    m_arrowsPosition = position;
    setStyle(position == NSScrollerArrowsNone ? &ArrowlessStyle::shared() : nullptr);
    setAttribute(Qt::WA_OpaquePaintEvent, false);
    updateGeometry();
    update();
}

void NSScroller::setControlSize(NSControlSize controlSize) {
    m_controlSize = controlSize;
    updateGeometry();
    update();
}

NSRect NSScroller::rectForPart(NSScrollerPart part) const {
    QStyleOptionSlider option;
    initStyleOption(&option);
    if (m_arrowsPosition == NSScrollerArrowsNone) {
        return arrowlessRect(option, part);
    }
    const bool isOfKnob = part == NSScrollerKnob || part == NSScrollerDecrementPage || part == NSScrollerIncrementPage;
    if (part == NSScrollerNoPart || (isOfKnob && (maximum() <= minimum() || !isEnabled()))) {
        return NSZeroRect;
    }
    const QRect rect = style()->subControlRect(QStyle::CC_ScrollBar, &option, subControlOf(part), this);
    return rect.isEmpty() ? NSZeroRect : NSRectFromQRectF(QRectF(rect));
}

NSScrollerPart NSScroller::testPart(const NSPoint& point) const {
    const auto* const found = std::find_if(parts.begin(), parts.end(), [&](NSScrollerPart part) {
        return NSMouseInRect(point, rectForPart(part), isFlipped());
    });
    return found == parts.end() ? NSScrollerNoPart : *found;
}

double NSScroller::doubleValue() const {
    const double range = double(maximum()) - minimum();
    return range > 0 ? (double(sliderPosition()) - minimum()) / range : 0;
}

double NSScroller::knobProportion() const {
    const double range = double(maximum()) - minimum();
    return range > 0 ? std::max(pageStep(), 0) / (range + std::max(pageStep(), 0)) : 1;
}

QSize NSScroller::sizeHint() const {
    if (m_arrowsPosition != NSScrollerArrowsNone) {
        return ViewOf<QScrollBar>::sizeHint();
    }
    const int thickness = static_cast<int>(scrollerWidthForControlSize(m_controlSize));
    const int length = 2 * leastKnobLength;
    return orientation() == Qt::Horizontal ? QSize(length, thickness) : QSize(thickness, length);
}
