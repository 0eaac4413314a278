// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSView.h>

#include <VXKit/platform/appkit/FrameAnimations.h>
#include <VXKit/platform/appkit/FrameAnimator.h>
#include <VXKit/platform/appkit/LayoutPlacement.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/platform/graphics/NSShadow.h>

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QPointer>

#include <algorithm>
#include <cmath>
#include <memory>
#include <typeinfo>
#include <unordered_map>
#include <utility>

template class ViewOf<QWidget>;

namespace {

std::unordered_map<const QWidget*, ViewCore*>& attachedViews() {
    static std::unordered_map<const QWidget*, ViewCore*> views;
    return views;
}

/// A view that draws, and the context that it draws into.
struct Focus {
    const ViewCore* view = nullptr;
    const NSGraphicsContext* context = nullptr;
};

Focus currentFocus;

bool isFlippedSuperview(const QWidget* superview) {
    const ViewCore* view = ViewCore::of(superview);
    return view && view->isFlipped();
}

/// A rectangle between Qt's coordinates, with y growing down, and those of a superview `height` points high.
NSRect flippedRect(const NSRect& rect, double height, bool superviewIsFlipped) {
    if (superviewIsFlipped) {
        return rect;
    }
    return {{rect.origin.x, height - rect.origin.y - rect.size.height}, rect.size};
}

/// How one direction of a frame follows its superview, whose length has changed from `oldLength` to `newLength`.
void followLength(double& position, double& length, double oldLength, double newLength, bool minIsSpring,
                  bool lengthIsSpring, bool maxIsSpring) {
    const int springs = (minIsSpring ? 1 : 0) + (lengthIsSpring ? 1 : 0) + (maxIsSpring ? 1 : 0);
    if (springs == 0) {
        return;
    }
    const double change = newLength - oldLength;
    const double minMargin = position;
    const double maxMargin = oldLength - position - length;
    const double flexible =
        (minIsSpring ? minMargin : 0) + (lengthIsSpring ? length : 0) + (maxIsSpring ? maxMargin : 0);
    const auto share = [&](double part) { return flexible > 0 ? change * part / flexible : change / springs; };
    if (minIsSpring) {
        position += share(minMargin);
    }
    if (lengthIsSpring) {
        length += share(length);
    }
}

/// How far from what throws it a shadow is seen, in points.
double reachOf(const NSShadow& shadow) {
    constexpr double spread = 1.5; // times the blur radius: three standard deviations
    return shadow.shadowBlurRadius() * spread +
           std::max(std::abs(shadow.shadowOffset().width), std::abs(shadow.shadowOffset().height));
}

/// Makes of what was painted on a black ground, of premultiplied format, so much of `color` as it is light.
void turnIntoInk(QImage& layer, const QColor& color) {
    constexpr int full = 255;
    const QRgb ink = color.rgba();
    for (int y = 0; y < layer.height(); ++y) {
        auto* const line = reinterpret_cast<QRgb*>(layer.scanLine(y));
        std::transform(line, line + layer.width(), line, [ink](QRgb pixel) {
            return qPremultiply(qRgba(qRed(ink), qGreen(ink), qBlue(ink), qGray(pixel) * qAlpha(ink) / full));
        });
    }
}

/// Asks the views below `widget`, through the plain widgets between.
bool performKeyEquivalentBelow(const QWidget& widget, const NSEvent& event) {
    // Watched, because one that is asked may take away those that are still to be.
    const QObjectList& objects = widget.children();
    const std::vector<QPointer<QObject>> children(objects.begin(), objects.end());
    return std::any_of(children.begin(), children.end(), [&](const QPointer<QObject>& object) {
        auto* child = qobject_cast<QWidget*>(object.data());
        if (!child || child->isWindow() || !child->isVisible() || !child->isEnabled()) {
            return false;
        }
        ViewCore* view = ViewCore::of(child);
        return view ? view->performKeyEquivalent(event) : performKeyEquivalentBelow(*child, event);
    });
}

} // namespace

/// The view part of a plain widget, and what tells it that the widget was resized.
class ViewCore::Attachment : public QObject {
public:
    explicit Attachment(QWidget& plain) : QObject(&plain), m_plain(plain), m_core(&plain) {
        plain.installEventFilter(this);
        attachedViews().emplace(&plain, &m_core);
    }
    ~Attachment() override { attachedViews().erase(&m_plain); }

    [[nodiscard]] ViewCore& core() { return m_core; }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() == QEvent::Resize) {
            m_core.sizeMayHaveChanged();
        }
        if (event->type() == QEvent::Resize || event->type() == QEvent::Move) {
            m_core.frameMayHaveChanged();
        }
        return false;
    }

private:
    const QWidget& m_plain;
    ViewCore m_core;
};

ViewCore::ViewCore(QWidget* self) : m_self(self) {}

ViewCore::~ViewCore() = default;

ViewCore* ViewCore::of(const QWidget* widget) {
    if (!widget) {
        return nullptr;
    }
    if (const auto* view = dynamic_cast<const ViewCore*>(widget)) {
        return const_cast<ViewCore*>(view);
    }
    const auto found = attachedViews().find(widget);
    return found == attachedViews().end() ? nullptr : found->second;
}

ViewCore& ViewCore::attach(QWidget& plain) {
    if (ViewCore* view = of(&plain)) {
        return *view;
    }
    return (new Attachment(plain))->core();
}

NSRect ViewCore::frame() const {
    if (m_hasFrame && m_self->geometry() == m_placedGeometry) {
        return m_frame;
    }
    const NSRect geometry = NSRectFromQRectF(QRectF(m_self->geometry()));
    const QWidget* superview = m_self->parentWidget();
    return superview && !m_self->isWindow() ? flippedRect(geometry, superview->height(), isFlippedSuperview(superview))
                                            : geometry;
}

void ViewCore::setFrame(const NSRect& frame) {
    FrameAnimations::frameIsSet(*m_self);
    m_frame = frame;
    m_hasFrame = true;
    place();
    sizeMayHaveChanged();
    frameMayHaveChanged();
}

void ViewCore::setPostsFrameChangedNotifications(bool flag) {
    m_postsFrameChangedNotifications = flag;
    m_toldFrame = frame();
}

void ViewCore::frameMayHaveChanged() {
    if (m_postsFrameChangedNotifications && std::exchange(m_toldFrame, frame()) != m_toldFrame) {
        NSNotificationCenter::defaultCenter().postNotificationName(NSViewFrameDidChangeNotification, this);
    }
}

void ViewCore::setFrameOrigin(const NSPoint& origin) {
    setFrame({origin, frame().size});
}

void ViewCore::setFrameSize(const NSSize& size) {
    setFrame({frame().origin, size});
}

ViewAnimator ViewCore::animator() {
    return ViewAnimator(*this);
}

void ViewCore::place() {
    const QWidget* superview = m_self->isWindow() ? nullptr : m_self->parentWidget();
    ViewCore* superviewCore = of(superview);
    if (superviewCore && !superviewCore->m_laidOutSize.isValid() && superview->testAttribute(Qt::WA_Resized)) {
        superviewCore->m_laidOutSize = superview->size();
    }
    const NSRect placed =
        superview ? flippedRect(m_frame, superview->height(), isFlippedSuperview(superview)) : m_frame;
    m_placedGeometry = geometryForFrame(NSRectToQRectF(placed));
    m_self->setGeometry(m_placedGeometry);
    // Less than the widget would let itself be made: what it is now is as near as it comes.
    m_placedGeometry = m_self->geometry();
}

QRect ViewCore::geometryForFrame(const QRectF& frame) const {
    return NSRoundedEdges(frame);
}

NSRect ViewCore::bounds() const {
    return {NSZeroPoint, frame().size};
}

void ViewCore::sizeMayHaveChanged() {
    // A widget that was never shown gets no event of being resized, and the one that it gets when shown does not tell
    // the size before.
    const QSize before = std::exchange(m_laidOutSize, m_self->size());
    if (!before.isValid()) {
        placeSubviews();
    } else if (before != m_laidOutSize) {
        resizeSubviewsWithOldSize({static_cast<double>(before.width()), static_cast<double>(before.height())});
    }
}

/// Where they were meant to be in a view that had no size of its own yet.
void ViewCore::placeSubviews() {
    for (QWidget* child : subviews()) {
        ViewCore* view = of(child);
        if (view && view->m_hasFrame && !isPlacedByLayout(m_self->layout(), *child)) {
            view->place();
        }
    }
}

void ViewCore::resizeSubviewsWithOldSize(const NSSize& oldSize) {
    for (QWidget* child : subviews()) {
        ViewCore* view = of(child);
        // One without a frame or in a layout is Qt's to place.
        if (view && view->m_hasFrame && !isPlacedByLayout(m_self->layout(), *child)) {
            view->applyAutoresizing(child->geometry(), oldSize, *this);
        }
    }
}

void ViewCore::applyAutoresizing(const QRect& geometryBefore, const NSSize& oldSuperSize, const ViewCore& superview) {
    NSRect frame = m_frame;
    if (geometryBefore != m_placedGeometry) {
        frame = flippedRect(NSRectFromQRectF(QRectF(geometryBefore)), oldSuperSize.height, superview.isFlipped());
    }
    const auto isSpring = [this](unsigned bit) { return (m_autoresizingMask & bit) != 0; };
    followLength(frame.origin.x, frame.size.width, oldSuperSize.width, superview.m_self->width(),
                 isSpring(NSViewMinXMargin), isSpring(NSViewWidthSizable), isSpring(NSViewMaxXMargin));
    followLength(frame.origin.y, frame.size.height, oldSuperSize.height, superview.m_self->height(),
                 isSpring(NSViewMinYMargin), isSpring(NSViewHeightSizable), isSpring(NSViewMaxYMargin));
    const FrameAnimations::Continuing continuing(*m_self);
    setFrame(frame);
}

void ViewCore::addSubview(QWidget* view) {
    if (!view) {
        return;
    }
    ViewCore* core = of(view);
    const bool isHidden = view->testAttribute(Qt::WA_WState_ExplicitShowHide) && view->isHidden();
    view->setParent(m_self);
    view->raise();
    if (core && core->m_hasFrame) {
        core->place();
        core->sizeMayHaveChanged();
    }
    if (!isHidden) {
        view->show();
    }
}

std::vector<QWidget*> ViewCore::subviews() const {
    std::vector<QWidget*> views;
    for (QObject* child : m_self->children()) {
        auto* widget = qobject_cast<QWidget*>(child);
        if (widget && !widget->isWindow()) {
            views.push_back(widget);
        }
    }
    return views;
}

void ViewCore::removeFromSuperview() {
    if (superview()) {
        const bool isHidden = m_self->isHidden();
        m_self->setParent(nullptr);
        // Qt hides what it takes out; whether it is shown in its next superview is what it was before.
        m_self->setAttribute(Qt::WA_WState_ExplicitShowHide, isHidden);
    }
}

NSWindow* ViewCore::window() const {
    return qobject_cast<NSWindow*>(m_self->QWidget::window());
}

NSRect ViewCore::convertRectToView(const NSRect& rect, const ViewCore* view) const {
    const QWidget* window = m_self->QWidget::window();
    const QRectF inWidget = rectToWidget(rect);
    const QPointF inWindow = m_self->mapTo(window, inWidget.topLeft());
    if (!view) {
        return flippedRect(NSRectFromQRectF(QRectF(inWindow, inWidget.size())), window->height(), false);
    }
    const QPointF inView = view->m_self->QWidget::window() == window
                               ? view->m_self->mapFrom(window, inWindow)
                               : view->m_self->mapFromGlobal(window->mapToGlobal(inWindow));
    return view->rectFromWidget(QRectF(inView, inWidget.size()));
}

NSPoint ViewCore::convertPointToView(const NSPoint& point, const ViewCore* view) const {
    const NSRect rect = convertRectToView({point, NSZeroSize}, view);
    return rect.origin;
}

NSPoint ViewCore::convertPointFromView(const NSPoint& point, const ViewCore* view) const {
    if (view) {
        return view->convertPointToView(point, this);
    }
    const QWidget* window = m_self->QWidget::window();
    const QPointF inWidget = m_self->mapFrom(window, QPointF(point.x, window->height() - point.y));
    return rectFromWidget(QRectF(inWidget, QSizeF(0, 0))).origin;
}

QRectF ViewCore::rectToWidget(const NSRect& rect) const {
    return NSRectToQRectF(flippedRect(rect, m_self->height(), isFlipped()));
}

NSRect ViewCore::rectFromWidget(const QRectF& rect) const {
    return flippedRect(NSRectFromQRectF(rect), m_paintHeight >= 0 ? m_paintHeight : m_self->height(), isFlipped());
}

void ViewCore::display() {
    m_self->repaint();
}

void ViewCore::setNeedsDisplay(bool flag) {
    if (flag) {
        m_self->update();
    }
}

void ViewCore::setNeedsDisplayInRect(const NSRect& rect) {
    m_self->update(rectToWidget(rect).toAlignedRect());
}

void ViewCore::paint(QWidget& surface, const QRegion& dirtyRegion) {
    if (typeid(*m_self) == typeid(NSView)) {
        // Nothing to draw, and not worth a painter: in a page that slides, such a view is painted with each frame.
        return;
    }
    m_dirtyRect = dirtyRegion.boundingRect();
    m_paintHeight = surface.height();
    {
        QPainter painter(&surface);
        NSGraphicsContext context(painter, m_paintHeight, isFlipped());
        const QWidget* window = surface.window();
        const QPointF windowCorner = surface.mapFrom(window, QPointF(0, window->height()));
        context.setPatternPhase({windowCorner.x(), isFlipped() ? windowCorner.y() : m_paintHeight - windowCorner.y()});
        const Focus outer = std::exchange(currentFocus, {this, &context});
        drawRect(rectFromWidget(QRectF(m_dirtyRect)));
        currentFocus = outer;
    }
    m_paintHeight = -1;
}

const ViewCore* ViewCore::focusView() {
    const NSGraphicsContext* context = NSGraphicsContext::currentContext();
    return context && context == currentFocus.context ? currentFocus.view : nullptr;
}

void ViewCore::drawRect(const NSRect& /*dirtyRect*/) {
    // Nothing to catch: a widget that draws nothing by itself would only cost its layer.
    if (!NSGraphicsContext::currentContext() || m_self->metaObject() == &QWidget::staticMetaObject) {
        return drawAsWidget(m_dirtyRect);
    }
    drawCaught(Qt::transparent, [](QImage&) {});
}

void ViewCore::drawAsMask(const NSColor& color) {
    if (!NSGraphicsContext::currentContext()) {
        return drawAsWidget(m_dirtyRect);
    }
    drawCaught(Qt::black, [ink = color.qtColor()](QImage& layer) { turnIntoInk(layer, ink); });
}

/// The class's own painting opens a painter of its own on the widget, which knows nothing of the shadow and opacity in
/// force here. So it is caught in a layer, with room around for what throws its shadow into the dirty part.
void ViewCore::drawCaught(const QColor& ground, const std::function<void(QImage&)>& finish) {
    QWidget* const surface = [this]() -> QWidget* {
        auto* scrollArea = qobject_cast<QAbstractScrollArea*>(m_self);
        return scrollArea ? scrollArea->viewport() : m_self;
    }();
    const int reach = static_cast<int>(std::ceil(reachOf(NSGraphicsContext::currentContext()->shadow())));
    const QRect part = m_dirtyRect.adjusted(-reach, -reach, reach, reach) & surface->rect();
    const double pixelRatio = surface->devicePixelRatioF();
    QImage layer(part.size() * pixelRatio, QImage::Format_ARGB32_Premultiplied);
    if (layer.isNull()) {
        return;
    }
    layer.setDevicePixelRatio(pixelRatio);
    layer.fill(ground);
    m_capture = &layer;
    m_captureOffset = part.topLeft();
    drawAsWidget(part);
    m_capture = nullptr;
    finish(layer);
    NSImage::initWithQImage(layer)->drawInRect(rectFromWidget(QRectF(part)), NSZeroRect, NSCompositeSourceOver, 1);
}

QPaintDevice* ViewCore::paintCapture(QPoint* offset) const {
    if (m_capture) {
        *offset = m_captureOffset;
    }
    return m_capture;
}

QPaintDevice* CaptureViewport::redirected(QPoint* offset) const {
    QPaintDevice* capture = m_view.paintCapture(offset);
    return capture ? capture : QWidget::redirected(offset);
}

QPainter* CaptureViewport::sharedPainter() const {
    return m_view.isCapturingPaint() ? nullptr : QWidget::sharedPainter();
}

void ViewCore::drawAsWidget(const QRect& /*dirtyRect*/) {}

void ViewCore::handleAsWidget(QEvent& /*event*/) {}

void ViewCore::dispatch(QEvent& event) {
    const QPointer<QWidget> self(m_self);
    handleEvent(NSEvent::forDelivery(event, window()));
    if (!self) {
        // Qt would ask what is gone for its parent, to hand the event on.
        event.accept();
    }
}

void ViewCore::handleEvent(const NSEvent& event) {
    switch (event.type()) {
    case NSLeftMouseDown:
        return mouseDown(event);
    case NSLeftMouseUp:
        return mouseUp(event);
    case NSLeftMouseDragged:
        return mouseDragged(event);
    case NSRightMouseDown:
        return rightMouseDown(event);
    case NSRightMouseUp:
        return rightMouseUp(event);
    case NSRightMouseDragged:
        return rightMouseDragged(event);
    case NSOtherMouseDown:
        return otherMouseDown(event);
    case NSOtherMouseUp:
        return otherMouseUp(event);
    case NSOtherMouseDragged:
        return otherMouseDragged(event);
    case NSMouseMoved:
        return mouseMoved(event);
    case NSMouseEntered:
        return mouseEntered(event);
    case NSMouseExited:
        return mouseExited(event);
    case NSScrollWheel:
        return scrollWheel(event);
    case NSKeyDown:
        return keyDown(event);
    case NSKeyUp:
        return keyUp(event);
    }
    passToWidget(event);
}

void ViewCore::focus(QFocusEvent& event) {
    QEvent* const outer = std::exchange(m_focusEvent, &event);
    const QPointer<QWidget> self(m_self);
    event.type() == QEvent::FocusIn ? becomeFirstResponder() : resignFirstResponder();
    if (self) {
        m_focusEvent = outer;
    }
}

bool ViewCore::becomeFirstResponder() {
    if (m_focusEvent) {
        handleAsWidget(*m_focusEvent);
    }
    return true;
}

bool ViewCore::resignFirstResponder() {
    if (m_focusEvent) {
        handleAsWidget(*m_focusEvent);
    }
    return true;
}

void ViewCore::passToWidget(const NSEvent& event) {
    if (event.qtEvent()) {
        handleAsWidget(*event.qtEvent());
        return;
    }
    // Qt takes its own events on to the parent, this one nobody else does.
    if (ViewCore* next = of(superview())) {
        next->handleEvent(event);
    } else if (NSWindow* last = window()) {
        last->handleUnusedEvent(event);
    }
}

void ViewCore::mouseDown(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::mouseDragged(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::mouseUp(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::rightMouseDown(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::rightMouseDragged(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::rightMouseUp(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::otherMouseDown(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::otherMouseDragged(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::otherMouseUp(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::mouseMoved(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::mouseEntered(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::mouseExited(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::scrollWheel(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::keyDown(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::keyUp(const NSEvent& event) {
    passToWidget(event);
}

bool ViewCore::acceptsFirstMouse(const NSEvent& /*event*/) const {
    return false;
}

bool ViewCore::performKeyEquivalent(const NSEvent& event) {
    return performKeyEquivalentBelow(*m_self, event);
}

void ViewCore::setNextKeyView(QWidget* /*view*/) {}

void ViewCore::awakeFromNib() {}
