// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSView.h>

#include <VXKit/platform/appkit/FrameAnimations.h>
#include <VXKit/platform/appkit/FrameAnimator.h>
#include <VXKit/platform/appkit/LayoutPlacement.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>

#include <unordered_map>
#include <utility>

template class ViewOf<QWidget>;

namespace {

std::unordered_map<const QWidget*, ViewCore*>& attachedViews() {
    static std::unordered_map<const QWidget*, ViewCore*> views;
    return views;
}

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

void ViewCore::setNextKeyView(QWidget* /*view*/) {}

void ViewCore::awakeFromNib() {}
