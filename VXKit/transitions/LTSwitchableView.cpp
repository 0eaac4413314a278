// SPDX-License-Identifier: MIT
#include <VXKit/transitions/LTSwitchableView.h>

#include <VXKit/platform/appkit/FrameAnimator.h>
#include <VXKit/platform/appkit/NSAnimationContext.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>
#include <VXKit/platform/foundation/NSTimer.h>

#include <utility>

namespace {

constexpr double switchTime = 0.25; // seconds
constexpr double settleTime = 2;    // seconds, from the start of a switch
constexpr std::int32_t isSwitching = 2;

struct Way {
    NSPoint newStart;
    NSPoint oldEnd;
};

Way wayOf(int direction, const NSSize& size) {
    switch (direction) {
    case 0:
        return {{size.width, 0}, {-size.width, 0}};
    case 1:
        return {{-size.width, 0}, {size.width, 0}};
    case 2:
        return {{0, size.height}, {0, -size.height}};
    default:
        return {{0, -size.height}, {0, size.height}};
    }
}

} // namespace

LTSwitchableView::LTSwitchableView(const NSRect& frame, QWidget* parent) : LTSwitchableView(parent) {
    NSView::setFrame(frame);
}

LTSwitchableView::LTSwitchableView(QWidget* parent) : NSView(parent) {
    setPostsFrameChangedNotifications(true);
    NSNotificationCenter::defaultCenter().addObserver(
        this, [this](const NSNotification&) { _frameChanged(); }, NSViewFrameDidChangeNotification,
        static_cast<const ViewCore*>(this));
}

LTSwitchableView::~LTSwitchableView() = default;

void LTSwitchableView::setANewView(QWidget* view, int inDirection, bool adjustWindow) {
    m_animating = isSwitching;
    if (_otherView && _otherView->isHidden()) {
        _otherView->show();
    }
    detachUnsetAnimation();
    NSAnimationContext::beginGrouping();
    NSAnimationContext::currentContext().setDuration(switchTime);
    ViewCore* const newView = view ? &ViewCore::attach(*view) : nullptr;
    if (!m_currentView) {
        addSubview(view);
        if (newView) {
            newView->setFrame(bounds());
        }
        m_currentView = view;
        NSAnimationContext::endGrouping();
        return;
    }
    if (view == m_currentView) {
        return;
    }
    // Whoever is told of a frame may take away what it belongs to.
    const QPointer<QWidget> self(this);
    const QPointer<QWidget> guardedView(view);
    const NSRect target = adjustWindow && newView && window() ? adjustedWindow(*newView) : bounds();
    if (!self || (view && !guardedView)) {
        NSAnimationContext::endGrouping();
        return;
    }
    const Way way = wayOf(inDirection, target.size);
    if (newView) {
        newView->setFrame({way.newStart, target.size});
        addSubview(guardedView);
    }
    if (_otherView && _otherView != view) {
        ViewCore::attach(*_otherView).removeFromSuperview();
    }
    if (guardedView) {
        newView->animator().setFrame(target);
    }
    if (m_currentView) {
        ViewCore::attach(*m_currentView).animator().setFrame({way.oldEnd, target.size});
    }
    NSAnimationContext::endGrouping();
    _otherView = std::exchange(m_currentView, guardedView);
}

/// Has the window get the size of `newView`, and answers what its content will be then, at (0, 0).
NSRect LTSwitchableView::adjustedWindow(const ViewCore& newView) {
    NSWindow& window = *this->window();
    const NSRect frame = window.frame();
    const NSSize size = newView.bounds().size;
    // In single precision, in which the window grows to the size of the view.
    const auto dw = static_cast<float>(size.width - frame.size.width);
    const auto dh = static_cast<float>(size.height - frame.size.height);
    const NSRect newFrame =
        NSMakeRect(frame.origin.x - static_cast<double>(dw / 2), frame.origin.y - static_cast<double>(dh),
                   frame.size.width + static_cast<double>(dw), frame.size.height + static_cast<double>(dh));
    const NSRect content = window.contentRectForFrameRect(newFrame);
    window.animator().setFrame(newFrame, true);
    return {NSZeroPoint, content.size};
}

/// Runs the settling when its time has come. Each switch has one of its own: that of a switch before may come early for
/// the next.
void LTSwitchableView::detachUnsetAnimation() {
    NSTimer::scheduledTimerWithTimeInterval(settleTime, NSTimerRepeats::No,
                                            [self = QPointer<QWidget>(this)](NSTimer& /*timer*/) {
                                                if (self) {
                                                    static_cast<LTSwitchableView*>(self.data())->unsetAnimation();
                                                }
                                            });
}

void LTSwitchableView::unsetAnimation() {
    const QPointer<QWidget> self(this);
    if (NSWindow* window = this->window()) {
        window->setMinSize(window->frame().size);
    }
    if (self) {
        m_animating = 0;
    }
}

void LTSwitchableView::_frameChanged() {
    if (m_animating >= 1) {
        return;
    }
    const QPointer<QWidget> self(this);
    if (m_currentView) {
        ViewCore::attach(*m_currentView).setFrame(bounds());
    }
    if (self && _otherView && !_otherView->isHidden()) {
        _otherView->hide();
    }
}

void LTSwitchableView::drawRect(const NSRect& /*dirtyRect*/) {}
