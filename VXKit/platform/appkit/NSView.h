// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSEvent.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <QAbstractScrollArea>
#include <QAbstractTextDocumentLayout>
#include <QEvent>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPoint>
#include <QRect>
#include <QRegion>
#include <QSize>
#include <QWheelEvent>
#include <QWidget>

#include <functional>
#include <type_traits>
#include <utility>
#include <vector>

class NSColor;
class NSWindow;
class QColor;
class QImage;
class ViewAnimator;

/// Posted with the view as sender when its frame has changed, by views that were asked to (setPosts…).
inline constexpr const char* NSViewFrameDidChangeNotification = "NSViewFrameDidChangeNotification";

/// @{
/// Which sides of a view are springs when its superview is resized; the others are struts. Bits of autoresizingMask.
inline constexpr unsigned NSViewNotSizable = 0;
inline constexpr unsigned NSViewMinXMargin = 1;
inline constexpr unsigned NSViewWidthSizable = 2;
inline constexpr unsigned NSViewMaxXMargin = 4;
inline constexpr unsigned NSViewMinYMargin = 8;
inline constexpr unsigned NSViewHeightSizable = 16;
inline constexpr unsigned NSViewMaxYMargin = 32;
/// @}

/// What makes a widget a view: frames with the origin at the bottom left, drawing in AppKit's terms, events as NSEvent.
///
/// Not used by itself; ViewOf puts it onto a widget class of Qt's, and everything that class can do (input methods,
/// accessibility, Designer) stays. Frames are kept as the exact fractions that were set and rounded to pixels where the
/// widget is placed. Every operation below whose name AppKit has is AppKit's.
///
/// A view belongs to its superview, which deletes it; taken out, it belongs to whoever took it.
class VXKIT_EXPORT ViewCore {
public:
    /// The view part of `self`, the widget that it is a base of; for ViewOf and attach alone.
    explicit ViewCore(QWidget* self);
    ViewCore(const ViewCore&) = delete;
    ViewCore& operator=(const ViewCore&) = delete;
    virtual ~ViewCore();

    /// The view that `widget` is, or the one that attach gave it; null for a plain widget.
    [[nodiscard]] static ViewCore* of(const QWidget* widget);

    /// Gives a plain widget of Qt's a frame and springs and struts, for as long as it lives. A widget that is a view
    /// already is left as it is.
    static ViewCore& attach(QWidget& plain);

    /// The widget that the view is, or that it was attached to; never null.
    [[nodiscard]] QWidget* widget() const { return m_self; }

    /// Where the view lies in its superview, in points.
    [[nodiscard]] virtual NSRect frame() const;
    /// Places the view and, when its size changes, its subviews. A negative size is kept and shown as none.
    virtual void setFrame(const NSRect& frame);
    /// setFrame with the size as it is. AppKit: `-setFrameOrigin:`.
    void setFrameOrigin(const NSPoint& origin);
    /// setFrame with the origin as it is. AppKit: `-setFrameSize:`.
    void setFrameSize(const NSSize& size);
    /// Changes what is set through it by and by, as the current NSAnimationContext says; see FrameAnimator.h. A frame
    /// that is set here ends that, one that comes of the superview's size does not. AppKit: `-animator`.
    [[nodiscard]] ViewAnimator animator();

    /// The view's own coordinates: the origin is (0, 0).
    [[nodiscard]] virtual NSRect bounds() const;
    /// Whether y grows downwards in the view's own coordinates, and the frames of its subviews with it. No.
    [[nodiscard]] virtual bool isFlipped() const { return false; }

    /// Which sides are springs; NSViewNotSizable at first. AppKit: `-autoresizingMask`.
    [[nodiscard]] unsigned autoresizingMask() const { return m_autoresizingMask; }
    /// Counts when the superview is next resized. AppKit: `-setAutoresizingMask:`.
    void setAutoresizingMask(unsigned mask) { m_autoresizingMask = mask; }
    /// Places the subviews anew after the view's size has changed from `oldSize`, by their masks. The springs of a
    /// direction share the change in proportion to their lengths.
    virtual void resizeSubviewsWithOldSize(const NSSize& oldSize);

    /// Whether changes of the frame are posted (NSViewFrameDidChangeNotification). No. AppKit:
    /// `-postsFrameChangedNotifications`.
    [[nodiscard]] bool postsFrameChangedNotifications() const { return m_postsFrameChangedNotifications; }
    /// What has changed before is not posted. AppKit: `-setPostsFrameChangedNotifications:`.
    void setPostsFrameChangedNotifications(bool flag);

    /// Puts `view` above the other subviews; this view owns it from then on. It keeps the frame that it was given, and
    /// is shown unless it was hidden. Nothing for null.
    void addSubview(QWidget* view);
    /// The widget that the view lies in, be it a view or a plain one; null for a window and for a view that is in none.
    /// AppKit: `-superview`.
    [[nodiscard]] QWidget* superview() const { return m_self->isWindow() ? nullptr : m_self->parentWidget(); }
    /// The children that are not windows, from the lowest up.
    [[nodiscard]] std::vector<QWidget*> subviews() const;
    /// Takes the view out. It belongs to the caller then. Nothing for one without a superview.
    void removeFromSuperview();
    /// The window that the view is in, or null: also where that is a plain window of Qt's.
    [[nodiscard]] NSWindow* window() const;

    /// A rectangle of this view in the coordinates of `view`, which may be in another window; of this view's window
    /// where that is null. AppKit: `-convertRect:toView:`.
    [[nodiscard]] NSRect convertRectToView(const NSRect& rect, const ViewCore* view) const;
    /// The same for a point. AppKit: `-convertPoint:toView:`.
    [[nodiscard]] NSPoint convertPointToView(const NSPoint& point, const ViewCore* view) const;
    /// A point of `view`, or of this view's window where that is null, in the coordinates of this view. AppKit:
    /// `-convertPoint:fromView:`.
    [[nodiscard]] NSPoint convertPointFromView(const NSPoint& point, const ViewCore* view) const;

    /// Draws the part `dirtyRect` of the view, in the current graphics context, whose coordinates are the view's own.
    /// Here: what the widget class of Qt's draws, with the shadow that is set. AppKit: `-drawRect:`.
    virtual void drawRect(const NSRect& dirtyRect);
    /// The view whose drawRect draws into the current graphics context; null where that is another's, an image's, or
    /// none. AppKit: `+focusView`.
    [[nodiscard]] static const ViewCore* focusView();
    /// Redraws the whole view before it returns. Nothing while it is not shown.
    virtual void display();
    /// Redraws the view when the event loop next comes to it; nothing with `flag` false. AppKit: `-setNeedsDisplay:`.
    void setNeedsDisplay(bool flag);
    /// The same for a part of the view. AppKit: `-setNeedsDisplayInRect:`.
    void setNeedsDisplayInRect(const NSRect& rect);

    /// @{
    /// The view gets or loses the keyboard. Here: what the widget class does then. The answer is always yes. A view
    /// that is to go when it gets the keyboard is deleted later (deleteLater): Qt is not done with it.
    virtual bool becomeFirstResponder();
    virtual bool resignFirstResponder();
    /// @}

    /// @{
    /// Events, which the window hands to the view under the pointer or with the keyboard. Here: what the widget class
    /// does with them; where that is nothing, the superview gets the event, and at last the window.
    virtual void mouseDown(const NSEvent& event);
    virtual void mouseDragged(const NSEvent& event);
    virtual void mouseUp(const NSEvent& event);
    virtual void rightMouseDown(const NSEvent& event);
    virtual void rightMouseDragged(const NSEvent& event);
    virtual void rightMouseUp(const NSEvent& event);
    virtual void otherMouseDown(const NSEvent& event);
    virtual void otherMouseDragged(const NSEvent& event);
    virtual void otherMouseUp(const NSEvent& event);
    virtual void mouseMoved(const NSEvent& event);
    virtual void mouseEntered(const NSEvent& event);
    virtual void mouseExited(const NSEvent& event);
    virtual void scrollWheel(const NSEvent& event);
    virtual void keyDown(const NSEvent& event);
    virtual void keyUp(const NSEvent& event);
    /// @}

    /// Whether the click `event`, which makes the view's window the one with the keyboard, is for the view as well. If
    /// not, the window alone gets it, until the button is released. Here: no for a view with nothing in it; a widget
    /// class of Qt's takes such a click as all of them do. AppKit: `-acceptsFirstMouse:`.
    [[nodiscard]] virtual bool acceptsFirstMouse(const NSEvent& event) const;

    /// Whether the view, or one below it, answers to the key of `event` wherever the keyboard is. Asked before the key
    /// goes to the first responder, of subviews from the lowest up. Here: no.
    virtual bool performKeyEquivalent(const NSEvent& event);

    /// Calls the operation above that `event` is for.
    void handleEvent(const NSEvent& event);

    /// Where Tab leads, for a view that takes that key for itself. Here: nothing, Qt's tab order counts.
    virtual void setNextKeyView(QWidget* view);

    /// Called when the view has been loaded from a nib, with all of the nib. Here: nothing. AppKit: `-awakeFromNib`.
    virtual void awakeFromNib();

    /// A rectangle of the view in Qt's coordinates of the widget.
    [[nodiscard]] QRectF rectToWidget(const NSRect& rect) const;
    /// A rectangle in Qt's coordinates of the widget in those of the view; while the view is drawn, of the surface that
    /// it is drawn on.
    [[nodiscard]] NSRect rectFromWidget(const QRectF& rect) const;

protected:
    /// What the widget class draws by itself, in the widget's coordinates. Here: nothing.
    virtual void drawAsWidget(const QRect& dirtyRect);
    /// What the widget class does with an event by itself. Here: nothing.
    virtual void handleAsWidget(QEvent& event);

    /// Draws what the widget class draws by itself in `color`, with the shadow that is set, as strongly as that is
    /// light on a black ground. In place of drawRect's own way for classes that invert what lies below, as Qt does for
    /// the caret, which a layer without a ground does not show.
    void drawAsMask(const NSColor& color);

    /// Where the widget is placed for a frame in Qt's coordinates of its superview. Here: its edges rounded.
    [[nodiscard]] virtual QRect geometryForFrame(const QRectF& frame) const;

    /// Calls drawRect for `dirtyRegion` of `surface`, the widget or its viewport, in a graphics context of its own.
    void paint(QWidget& surface, const QRegion& dirtyRegion);
    /// Hands an event of Qt's to the operation for it (handleEvent). The view may be gone when this returns.
    void dispatch(QEvent& event);
    /// Calls becomeFirstResponder or resignFirstResponder, which pass `event` on to the widget class.
    void focus(QFocusEvent& event);
    /// Lays the subviews out again where the widget's size is not the one they were laid out for.
    void sizeMayHaveChanged();
    /// Posts that the frame has changed where it is not the one that was told last.
    void frameMayHaveChanged();

    /// Where the widget class's own painting goes while it is caught, with where it begins there in `offset`; null, and
    /// `offset` as it was, at other times.
    [[nodiscard]] QPaintDevice* paintCapture(QPoint* offset) const;
    /// Whether the widget class's own painting is caught at this moment.
    [[nodiscard]] bool isCapturingPaint() const { return m_capture != nullptr; }

private:
    friend class CaptureViewport;
    class Attachment;

    void drawCaught(const QColor& ground, const std::function<void(QImage&)>& finish);
    void passToWidget(const NSEvent& event);
    void place();
    void placeSubviews();
    void applyAutoresizing(const QRect& geometryBefore, const NSSize& oldSuperSize, const ViewCore& superview);

    QWidget* m_self;
    unsigned m_autoresizingMask = NSViewNotSizable;
    bool m_postsFrameChangedNotifications = false;
    bool m_hasFrame = false;   // set by setFrame, so that the exact numbers are known
    NSRect m_frame;            // as it was set
    NSRect m_toldFrame;        // by the last notification
    QRect m_placedGeometry;    // what it was rounded to: where the widget is elsewhere, Qt has moved it
    QSize m_laidOutSize;       // the size that the subviews were laid out for
    double m_paintHeight = -1; // of the surface being painted: a scrolling view's viewport is lower than the view
    QRect m_dirtyRect;
    QPaintDevice* m_capture = nullptr;
    QPoint m_captureOffset;
    QEvent* m_focusEvent = nullptr;
};

/// The viewport of a view that scrolls; there for its painting to be caught as the view's own is.
class VXKIT_EXPORT CaptureViewport : public QWidget {
public:
    /// The viewport of `view`, which must outlive it.
    explicit CaptureViewport(const ViewCore& view) : m_view(view) {}

protected:
    QPaintDevice* redirected(QPoint* offset) const override;
    QPainter* sharedPainter() const override;

private:
    const ViewCore& m_view;
};

/// A widget class of Qt's as a view: `ViewOf<QWidget>` is NSView, a button would be `ViewOf<QAbstractButton>`.
template <class QtBase>
class ViewOf : public QtBase, public ViewCore {
    static constexpr bool scrolls = std::is_base_of_v<QAbstractScrollArea, QtBase>;

public:
    ViewOf(const ViewOf&) = delete;
    ViewOf& operator=(const ViewOf&) = delete;

    /// Made as the widget class is, with the same `arguments`; without a frame, unless they say where it is.
    template <class... Arguments>
    requires(!(std::is_base_of_v<ViewOf, std::remove_cvref_t<Arguments>> ||
               ...)) explicit ViewOf(Arguments&&... arguments)
        : QtBase(std::forward<Arguments>(arguments)...), ViewCore(static_cast<QWidget*>(this)) {
        replaceViewport();
    }

    using ViewCore::setFrame;
    using ViewCore::window;

    /// No for a view with nothing in it; yes for any other widget class of Qt's.
    [[nodiscard]] bool acceptsFirstMouse(const NSEvent& /*event*/) const override {
        return !std::is_same_v<QtBase, QWidget>;
    }

protected:
    /// @cond
    // Qt's events on their way to the view's operations and back to the widget class: those are what a subclass
    // overrides.
    void paintEvent(QPaintEvent* event) override {
        if constexpr (scrolls) {
            ViewCore::paint(*this->viewport(), event->region());
        } else {
            ViewCore::paint(*this, event->region());
        }
    }
    bool event(QEvent* event) override {
        // Before focusInEvent and its like, after which QWidget still needs a view that may be gone by then.
        if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) {
            focus(static_cast<QFocusEvent&>(*event));
            return true;
        }
        return QtBase::event(event);
    }
    void resizeEvent(QResizeEvent* event) override {
        QtBase::resizeEvent(event);
        sizeMayHaveChanged();
        frameMayHaveChanged();
    }
    void moveEvent(QMoveEvent* event) override {
        QtBase::moveEvent(event);
        frameMayHaveChanged();
    }
    void mousePressEvent(QMouseEvent* event) override { dispatch(*event); }
    void mouseReleaseEvent(QMouseEvent* event) override { dispatch(*event); }
    void mouseDoubleClickEvent(QMouseEvent* event) override { dispatch(*event); }
    void mouseMoveEvent(QMouseEvent* event) override { dispatch(*event); }
    void wheelEvent(QWheelEvent* event) override { dispatch(*event); }
    void enterEvent(QEnterEvent* event) override { dispatch(*event); }
    void leaveEvent(QEvent* event) override { dispatch(*event); }
    void keyPressEvent(QKeyEvent* event) override { dispatch(*event); }
    void keyReleaseEvent(QKeyEvent* event) override { dispatch(*event); }

    void drawAsWidget(const QRect& dirtyRect) override {
        // An abstract class has nothing to draw.
        if constexpr (!std::is_abstract_v<QtBase>) {
            QPaintEvent event(dirtyRect);
            QtBase::paintEvent(&event);
        }
    }
    void handleAsWidget(QEvent& event) override {
        switch (event.type()) {
        case QEvent::MouseButtonPress:
            return QtBase::mousePressEvent(static_cast<QMouseEvent*>(&event));
        case QEvent::MouseButtonRelease:
            return QtBase::mouseReleaseEvent(static_cast<QMouseEvent*>(&event));
        case QEvent::MouseButtonDblClick:
            return QtBase::mouseDoubleClickEvent(static_cast<QMouseEvent*>(&event));
        case QEvent::MouseMove:
            return QtBase::mouseMoveEvent(static_cast<QMouseEvent*>(&event));
        case QEvent::Wheel:
            return QtBase::wheelEvent(static_cast<QWheelEvent*>(&event));
        case QEvent::Enter:
            return QtBase::enterEvent(static_cast<QEnterEvent*>(&event));
        case QEvent::Leave:
            return QtBase::leaveEvent(&event);
        case QEvent::KeyPress:
            return QtBase::keyPressEvent(static_cast<QKeyEvent*>(&event));
        case QEvent::KeyRelease:
            return QtBase::keyReleaseEvent(static_cast<QKeyEvent*>(&event));
        case QEvent::FocusIn:
        case QEvent::FocusOut:
            QtBase::event(&event);
            return;
        default:
            return;
        }
    }

    QPaintDevice* redirected(QPoint* offset) const override {
        QPaintDevice* capture = scrolls ? nullptr : paintCapture(offset);
        return capture ? capture : QtBase::redirected(offset);
    }
    QPainter* sharedPainter() const override {
        return !scrolls && isCapturingPaint() ? nullptr : QtBase::sharedPainter();
    }
    /// @endcond

private:
    void replaceViewport() {
        if constexpr (scrolls) {
            // What Qt's own viewport was set up with does not pass to another by itself.
            QWidget* const before = this->viewport();
            auto* const viewport = new CaptureViewport(*this);
            viewport->setBackgroundRole(before->backgroundRole());
            viewport->setAutoFillBackground(before->autoFillBackground());
            viewport->setCursor(before->cursor());
            viewport->setAttribute(Qt::WA_InputMethodEnabled, before->testAttribute(Qt::WA_InputMethodEnabled));
            viewport->setMouseTracking(before->hasMouseTracking());
            viewport->setAcceptDrops(before->acceptDrops());
            this->setViewport(viewport);
            if constexpr (requires { this->document()->documentLayout(); }) {
                this->document()->documentLayout()->setPaintDevice(this->viewport());
            }
        }
    }
};

/// A view with nothing in it. Stands for AppKit's class of the same name.
using NSView = ViewOf<QWidget>;

extern template class VXKIT_EXPORT ViewOf<QWidget>;
