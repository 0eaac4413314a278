// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSWindow.h>

#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/FrameAnimations.h>
#include <VXKit/platform/appkit/FrameAnimator.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/appkit/WindowList.h>
#include <VXKit/platform/desktop/WindowEffects.h>

#include <QGuiApplication>
#include <QScopedValueRollback>
#include <QWindow>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

using WindowList::post;
using WindowList::watched;

namespace {

constexpr double resizeTime = 0.20;                     // seconds that an animated change of the frame takes …
constexpr double resizeDistance = 150;                  // … for each so many points
constexpr double shareAboveCentre = 1.0 / 3;            // of the free height, above a centred window
constexpr std::chrono::milliseconds longestAnswer(500); // of a window manager that is asked for a frame
constexpr std::size_t mostAsked = 100;

double largestChange(const NSRect& from, const NSRect& to) {
    return std::max({std::abs(NSMinX(to) - NSMinX(from)), std::abs(NSMaxX(to) - NSMaxX(from)),
                     std::abs(NSMinY(to) - NSMinY(from)), std::abs(NSMaxY(to) - NSMaxY(from))});
}

} // namespace

NSRect NSWindow::frameRectForContentRect(const NSRect& contentRect) const {
    const QMargins around = borders();
    return {{contentRect.origin.x - around.left(), contentRect.origin.y - around.bottom()},
            {contentRect.size.width + around.left() + around.right(),
             contentRect.size.height + around.top() + around.bottom()}};
}

QMargins NSWindow::borders() const {
    return windowHandle() ? windowHandle()->frameMargins() : QMargins();
}

NSRect NSWindow::contentRectForFrameRect(const NSRect& frame) const {
    const NSRect around = frameRectForContentRect(frame);
    return {{2 * frame.origin.x - around.origin.x, 2 * frame.origin.y - around.origin.y},
            {2 * frame.size.width - around.size.width, 2 * frame.size.height - around.size.height}};
}

NSRect NSWindow::frame() const {
    if ((geometry() == m_placedGeometry && borders() == m_placedBorders) || isLateAnswer(geometry())) {
        return m_frame;
    }
    return frameRectForContentRect(NSScreenRectFromGlobal(QRectF(geometry())));
}

void NSWindow::place(const NSRect& frame) {
    const QRect wanted = NSRoundedEdges(NSScreenRectToGlobal(contentRectForFrameRect(frame)));
    {
        // Qt tells of the change while it makes it, piece by piece.
        const QScopedValueRollback<bool> placing(m_isPlacing, true);
        m_placedGeometry = wanted;
        applySizeLimits(wanted.size());
        setGeometry(wanted);
    }
    m_placedGeometry = geometry();
    m_placedBorders = borders();
    rememberAsked(m_placedGeometry);
    moveToPixel();
    layOutContent();
}

/// A window manager answers when it likes, and Qt takes each answer for the window's geometry, also one to a question
/// that was asked some questions ago. Whoever works out the next frame from the last, as in a drag, must not see that.
void NSWindow::rememberAsked(const QRect& geometry) {
    if (m_management == NSWindowManagement::Bypassing || !QWidget::isVisible()) {
        m_asked.clear();
        return;
    }
    if (m_asked.size() == mostAsked) {
        m_asked.erase(m_asked.begin());
    }
    m_asked.push_back(geometry);
    m_answers.start(longestAnswer);
}

/// Whether it is what was asked for lately, be it size and place at different times: the two are not changed at once.
bool NSWindow::isLateAnswer(const QRect& geometry) const {
    const auto has = [&](auto isTheSame) { return std::any_of(m_asked.begin(), m_asked.end(), isTheSame); };
    return has([&](const QRect& asked) { return asked.size() == geometry.size(); }) &&
           has([&](const QRect& asked) { return asked.topLeft() == geometry.topLeft(); });
}

void NSWindow::stopWaitingForAnswers() {
    m_asked.clear();
    if (geometry() != m_placedGeometry && QWidget::isVisible()) {
        // Qt did not pass on a frame that was that of the latest answer by chance. Another answer to this is the last
        // word.
        place(m_frame);
    }
}

/// Where a point has several pixels, a window that stands where it says may begin between two points.
void NSWindow::moveToPixel() {
    if (m_management == NSWindowManagement::Bypassing && windowHandle() && devicePixelRatioF() != 1) {
        const QPointF corner = NSScreenRectToGlobal(m_frame).topLeft();
        if (corner != QPointF(m_placedGeometry.topLeft())) {
            WindowEffects::sharedEffects().moveToPixel(*this, corner);
        }
    }
}

void NSWindow::layOutContent() {
    if (ViewCore* view = ViewCore::of(m_contentView)) {
        view->setFrame(NSMakeRect(0, 0, width(), height()));
    } else if (m_contentView) {
        m_contentView->setGeometry(rect());
    }
}

/// Tells Qt, and by it the window manager, how small and how large the window may be made that is of `size` now. It is
/// the limits that give way: they are not meant for the program itself.
void NSWindow::applySizeLimits(const QSize& size) {
    if ((m_styleMask & NSResizableWindowMask) != 0) {
        const auto contentSize = [this](const NSSize& ofFrame) {
            return NSRoundedEdges(NSRectToQRectF(contentRectForFrameRect({NSZeroPoint, ofFrame}))).size();
        };
        setMinimumSize(contentSize(m_minSize).boundedTo(size));
        setMaximumSize(contentSize(m_maxSize).expandedTo(size).boundedTo({QWIDGETSIZE_MAX, QWIDGETSIZE_MAX}));
    } else if ((m_styleMask & NSTitledWindowMask) != 0) {
        setFixedSize(size);
    }
}

void NSWindow::setFrame(const NSRect& frame, bool display) {
    FrameAnimations::frameIsSet(*this);
    const QPointer<NSWindow> self(this);
    const NSRect before = NSWindow::frame();
    m_frame = frame;
    place(frame);
    moveChildren(before);
    if (self) {
        announceChange(before, NSWindow::frame());
    }
    if (self && display) {
        self->display();
    }
}

void NSWindow::setFrame(const NSRect& frame, bool display, bool animate) {
    const NSRect from = this->frame();
    if (!animate || from == frame) {
        setFrame(frame, display);
        return;
    }
    runBlockingAnimation(*this, animationResizeTime(frame), [&](double progress) {
        const bool isLast = progress == 1;
        setFrame(isLast ? frame : rectBetween(from, frame, progress), display || !isLast);
    });
}

WindowAnimator NSWindow::animator() {
    return WindowAnimator(*this);
}

void NSWindow::setFrameOrigin(const NSPoint& origin) {
    setFrame({origin, frame().size}, false);
}

void NSWindow::center() {
    const NSRect visible = NSScreen::mainScreen().visibleFrame();
    const NSSize size = frame().size;
    setFrameOrigin({std::floor(visible.origin.x + (visible.size.width - size.width) / 2),
                    std::floor(visible.origin.y + (visible.size.height - size.height) * (1 - shareAboveCentre))});
}

NSRect NSWindow::constrainFrameRect(const NSRect& frame) const {
    return frame;
}

double NSWindow::animationResizeTime(const NSRect& newFrame) const {
    return resizeTime * largestChange(frame(), newFrame) / resizeDistance;
}

void NSWindow::takeGeometryFromQt() {
    if (m_isPlacing || geometry() == m_placedGeometry) {
        return;
    }
    if (isLateAnswer(geometry())) {
        layOutContent();
        return;
    }
    const QPointer<NSWindow> self(this);
    // Where the borders have become known since, they were there before the change as well.
    const NSRect before = borders() == m_placedBorders
                              ? m_frame
                              : frameRectForContentRect(NSScreenRectFromGlobal(QRectF(m_placedGeometry)));
    m_frame = frameRectForContentRect(NSScreenRectFromGlobal(QRectF(geometry())));
    m_placedGeometry = geometry();
    m_placedBorders = borders();
    m_asked.clear();
    applySizeLimits(size());
    layOutContent();
    moveChildren(before);
    if (self) {
        announceChange(before, NSWindow::frame());
    }
}

void NSWindow::announceChange(const NSRect& before, const NSRect& after) {
    const QPointer<NSWindow> self(this);
    if (before.size != after.size) {
        scheduleShapeUpdate();
    }
    if (before.origin != after.origin) {
        post(NSWindowDidMoveNotification, this);
    }
    if (self && before.size != after.size) {
        post(NSWindowDidResizeNotification, this);
    }
}

void NSWindow::moveChildren(const NSRect& before) {
    const NSRect after = NSWindow::frame();
    const double dX = after.origin.x - before.origin.x;
    const double dY = after.origin.y - before.origin.y;
    if (dX == 0 && dY == 0) {
        return;
    }
    for (const QPointer<NSWindow>& child : watched(childWindows())) {
        if (child) {
            const NSPoint origin = child->frame().origin;
            child->setFrameOrigin({origin.x + dX, origin.y + dY});
        }
    }
}

void NSWindow::setMinSize(const NSSize& size) {
    m_minSize = size;
    applySizeLimits(QWidget::size());
}

void NSWindow::setMaxSize(const NSSize& size) {
    m_maxSize = size;
    applySizeLimits(QWidget::size());
}

void NSWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    takeGeometryFromQt();
}

void NSWindow::moveEvent(QMoveEvent* event) {
    QWidget::moveEvent(event);
    takeGeometryFromQt();
}
