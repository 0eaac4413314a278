// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSEvent.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/foundation/NSGeometry.h>
#include <VXKit/platform/graphics/NSColor.h>

#include <QImage>
#include <QMargins>
#include <QPointer>
#include <QRect>
#include <QRegion>
#include <QTimer>
#include <QWidget>

#include <limits>
#include <optional>
#include <vector>

/// Posted with the window as sender when its frame has another origin, before NSWindowDidResizeNotification.
inline constexpr const char* NSWindowDidMoveNotification = "NSWindowDidMoveNotification";
/// Posted with the window as sender when its frame has another size.
inline constexpr const char* NSWindowDidResizeNotification = "NSWindowDidResizeNotification";
/// Posted with the window as sender when it has got the keyboard.
inline constexpr const char* NSWindowDidBecomeKeyNotification = "NSWindowDidBecomeKeyNotification";
/// Posted with the window as sender when it has lost the keyboard.
inline constexpr const char* NSWindowDidResignKeyNotification = "NSWindowDidResignKeyNotification";
/// Posted with the window as sender when it has become the one that commands go to.
inline constexpr const char* NSWindowDidBecomeMainNotification = "NSWindowDidBecomeMainNotification";
/// Posted with the window as sender when commands go to it no more.
inline constexpr const char* NSWindowDidResignMainNotification = "NSWindowDidResignMainNotification";
/// Posted with the window as sender before it closes.
inline constexpr const char* NSWindowWillCloseNotification = "NSWindowWillCloseNotification";

/// A window's style without any of the bits below: no frame and no title bar.
inline constexpr unsigned NSBorderlessWindowMask = 0;
/// The window has a frame and a title bar, and may have the keyboard (NSWindow::canBecomeKeyWindow).
inline constexpr unsigned NSTitledWindowMask = 1;
/// The title bar of a titled window has a button that closes it.
inline constexpr unsigned NSClosableWindowMask = 2;
/// The title bar of a titled window has a button that minimizes it.
inline constexpr unsigned NSMiniaturizableWindowMask = 4;
/// The person may resize the window by its frame, within its least and largest size; a titled one has a button that
/// maximizes it.
inline constexpr unsigned NSResizableWindowMask = 8;

/// How a window keeps its pixels. Every window here is buffered, whatever is asked.
enum NSBackingStoreType {
    NSBackingStoreRetained = 0,    ///< by the window server where it is covered
    NSBackingStoreNonretained = 1, ///< not at all
    NSBackingStoreBuffered = 2,    ///< whole, and shown when it is drawn
};

/// What NSWindow::orderWindow does. AppKit: `NSWindowOrderingMode`.
enum NSWindowOrderingMode {
    NSWindowBelow = -1, ///< orders the window in, below another
    NSWindowOut = 0,    ///< orders the window out
    NSWindowAbove = 1,  ///< orders the window in, above another
};

/// The window is on one desktop, as other programs' windows are.
inline constexpr unsigned NSWindowCollectionBehaviorDefault = 0;
/// The window is on every desktop.
inline constexpr unsigned NSWindowCollectionBehaviorCanJoinAllSpaces = 1;

/// The level of ordinary windows, and of a window at first.
inline constexpr int NSNormalWindowLevel = 0;
/// The level of palettes, above ordinary windows.
inline constexpr int NSFloatingWindowLevel = 3;
/// The level at which the kit's alerts and panels float.
inline constexpr int NSModalPanelWindowLevel = 8;
/// The level of a menu bar.
inline constexpr int NSMainMenuWindowLevel = 24;
/// The level of status items.
inline constexpr int NSStatusWindowLevel = 25;
/// The level of open menus, the highest here.
inline constexpr int NSPopUpMenuWindowLevel = 101;

/// Number by which CGWindowLevelForKey knows NSNormalWindowLevel.
inline constexpr int kCGNormalWindowLevelKey = 4;
/// Number by which CGWindowLevelForKey knows NSFloatingWindowLevel.
inline constexpr int kCGFloatingWindowLevelKey = 5;
/// Number by which CGWindowLevelForKey knows NSMainMenuWindowLevel.
inline constexpr int kCGMainMenuWindowLevelKey = 8;
/// Number by which CGWindowLevelForKey knows NSStatusWindowLevel.
inline constexpr int kCGStatusWindowLevelKey = 9;
/// Number by which CGWindowLevelForKey knows NSModalPanelWindowLevel; the kit's windows float at that.
inline constexpr int kCGModalPanelWindowLevelKey = 10;
/// Number by which CGWindowLevelForKey knows NSPopUpMenuWindowLevel.
inline constexpr int kCGPopUpMenuWindowLevelKey = 11;

/// The level that goes by the number `key`; the normal one for a number without a level.
[[nodiscard]] constexpr int CGWindowLevelForKey(int key) {
    switch (key) {
    case kCGFloatingWindowLevelKey:
        return NSFloatingWindowLevel;
    case kCGMainMenuWindowLevelKey:
        return NSMainMenuWindowLevel;
    case kCGStatusWindowLevelKey:
        return NSStatusWindowLevel;
    case kCGModalPanelWindowLevelKey:
        return NSModalPanelWindowLevel;
    case kCGPopUpMenuWindowLevelKey:
        return NSPopUpMenuWindowLevel;
    default:
        return NSNormalWindowLevel;
    }
}

/// Who puts a window in its place on an X11 desktop.
enum class NSWindowManagement {
    Managed,   ///< the window manager, which may clamp its frame and gives it the keyboard as it sees fit
    Bypassing, ///< the window itself: its frame holds to the pixel, and it stays above full-screen windows
};

class NSButton;
class NSButtonCell;
class QPainter;
class WindowAnimator;

/// Windows do not change on the screen until NSEnableScreenUpdates has been called as often: those that are ordered out
/// or lose their opacity meanwhile stay as they are, so that what comes in their place is there before they go. AppKit:
/// the function of the same name.
VXKIT_EXPORT void NSDisableScreenUpdates();
/// Takes one NSDisableScreenUpdates back; with the last one, everything that waited is done. Without one it is ignored.
/// AppKit: the function of the same name.
VXKIT_EXPORT void NSEnableScreenUpdates();

/// Fills `rect` of the view that is just drawn with what its window has for a background, in place of what is there: a
/// pattern goes on from that around the view, and translucent stays as translucent as the window. Nothing where no view
/// draws (ViewCore::focusView). AppKit: the function of the same name.
VXKIT_EXPORT void NSDrawWindowBackground(const NSRect& rect);

/// A window, in AppKit's terms: screen coordinates with the origin at the bottom left, levels, key and main windows.
///
/// A top-level QWidget, with a content view that fills it. The window paints its background colour, which a window that
/// is not opaque may leave transparent; without a compositing manager it is shown opaque, cut to its shape. Whoever
/// makes a window owns it, unless it is released when closed. A QLayout belongs on the content view or deeper.
///
/// Stands for AppKit's class of the same name.
class VXKIT_EXPORT NSWindow : public QWidget {
    Q_OBJECT

public:
    /// A window whose content is `contentRect`, in screen coordinates. It is not shown. `backing` and `defer` make no
    /// difference here: the window server hears of a window when it is first ordered in.
    /// AppKit: `-initWithContentRect:styleMask:backing:defer:`.
    NSWindow(const NSRect& contentRect, unsigned styleMask, NSBackingStoreType backing, bool defer);
    ~NSWindow() override;

    /// The window's frame, its title bar included, in screen coordinates. A subclass may compute it; ordering the
    /// window in places it where this says. AppKit: `-frame`.
    [[nodiscard]] virtual NSRect frame() const;
    /// Moves and resizes the window, posts what changed (the move first) and, with `display`, redraws it before it
    /// returns. AppKit: `-setFrame:display:`.
    virtual void setFrame(const NSRect& frame, bool display);
    /// With `animate`, gets there smoothly in animationResizeTime and returns when it is there; the user's input waits.
    /// AppKit: `-setFrame:display:animate:`.
    virtual void setFrame(const NSRect& frame, bool display, bool animate);
    /// Changes what is set through it by and by, as the current NSAnimationContext says; see FrameAnimator.h. A frame
    /// that is set here ends that. AppKit: `-animator`.
    [[nodiscard]] WindowAnimator animator();
    /// AppKit: `-setFrameOrigin:`.
    virtual void setFrameOrigin(const NSPoint& origin);
    /// Puts the window in the middle across and a third of the free height below the top of what panels leave free.
    /// AppKit: `-center`.
    void center();
    /// Where the window goes instead when it would be ordered in with `frame`. Here: there.
    /// AppKit: `-constrainFrameRect:toScreen:`.
    [[nodiscard]] virtual NSRect constrainFrameRect(const NSRect& frame) const;
    /// Seconds that an animated change to `newFrame` takes: 0.20 for each 150 points of the largest change in any edge.
    /// AppKit: `-animationResizeTime:`.
    [[nodiscard]] virtual double animationResizeTime(const NSRect& newFrame) const;

    /// The frame around a content of `contentRect`. The same for a borderless window; of others, as far as the window
    /// manager has told the width of its borders. AppKit: `-frameRectForContentRect:`.
    [[nodiscard]] NSRect frameRectForContentRect(const NSRect& contentRect) const;
    /// The content within a frame of `frame`, with borders as above. AppKit: `-contentRectForFrameRect:`.
    [[nodiscard]] NSRect contentRectForFrameRect(const NSRect& frame) const;

    /// The least size of the frame, (0, 0) at first: what dragging a corner keeps to, and for a managed resizable
    /// window the window manager. AppKit: `-minSize`.
    [[nodiscard]] NSSize minSize() const { return m_minSize; }
    /// Does not change the window, even where that is smaller. AppKit: `-setMinSize:`.
    void setMinSize(const NSSize& size);
    /// The largest size of the frame, kept to as the least one is; the largest number of a `float` at first. AppKit:
    /// `-maxSize`.
    [[nodiscard]] NSSize maxSize() const { return m_maxSize; }
    /// Does not change the window, even where that is larger. AppKit: `-setMaxSize:`.
    void setMaxSize(const NSSize& size);

    /// The bits of the style that the window was made with. AppKit: `-styleMask`.
    [[nodiscard]] unsigned styleMask() const { return m_styleMask; }

    /// The view that fills the window, which owns it; an empty NSView at first, never null. AppKit: `-contentView`.
    [[nodiscard]] QWidget* contentView() const { return m_contentView; }
    /// Takes `view` over and fills the window with it; the one before is deleted. Nothing for null. AppKit:
    /// `-setContentView:`.
    void setContentView(QWidget* view);

    /// Which windows lie above which: those of a higher level above those of a lower one. AppKit: `-level`.
    [[nodiscard]] int level() const { return m_level; }
    /// Puts a window that is shown on top of its new level. On a managed window, any above the normal level keeps it
    /// above other programs' windows. AppKit: `-setLevel:`.
    void setLevel(int level);
    /// The number by which the window server knows the window; -1 before it was first ordered in, and for a one-shot
    /// window whenever it is out.
    [[nodiscard]] int windowNumber() const { return m_windowNumber; }
    /// Whether the window server forgets the window when it is ordered out. No.
    [[nodiscard]] bool isOneShot() const { return m_isOneShot; }
    /// Counts when the window is next ordered out. AppKit: `-setOneShot:`.
    void setOneShot(bool flag) { m_isOneShot = flag; }
    /// On which desktops the window is: NSWindowCollectionBehaviorDefault at first. AppKit: `-collectionBehavior`.
    [[nodiscard]] unsigned collectionBehavior() const { return m_collectionBehavior; }
    /// Bits that are not named above are kept and make no difference. AppKit: `-setCollectionBehavior:`.
    void setCollectionBehavior(unsigned behavior);
    /// Who puts the window in its place: the window manager, at first. AppKit needs none.
    [[nodiscard]] NSWindowManagement management() const { return m_management; }
    /// To be called while the window is out. One that the window server knows gets a new number.
    void setManagement(NSWindowManagement management);

    /// Yes, at first. AppKit: `-isOpaque`.
    [[nodiscard]] bool isOpaque() const { return m_isOpaque; }
    /// Whether the window covers all of its frame. To be called before the window is first ordered in.
    void setOpaque(bool flag);
    /// What setHasShadow said. AppKit: `-hasShadow`.
    [[nodiscard]] bool hasShadow() const { return m_hasShadow; }
    /// Whether a window manager draws one; the kit's own is another (setUpWindowShadow). Yes.
    void setHasShadow(bool flag) { m_hasShadow = flag; }
    /// The opacity of the whole window, as it was set; 1 at first. AppKit: `-alphaValue`.
    [[nodiscard]] double alphaValue() const { return m_alphaValue; }
    /// From 0, which cannot be seen, to 1. Without a compositing manager anything above 0 is 1.
    void setAlphaValue(double alpha);
    /// What the window paints below its views. AppKit: `-backgroundColor`.
    [[nodiscard]] const NSColor& backgroundColor() const { return m_backgroundColor; }
    /// Redraws the window; where it is not opaque, what of `color` is transparent lets clicks through. AppKit:
    /// `-setBackgroundColor:`.
    virtual void setBackgroundColor(const NSColor& color);

    /// Blurs what shines through the window, where the desktop offers that, within its shape. 0, the radius at first,
    /// is no blur.
    void setBackgroundBlurRadius(double radius);

    /// Shows a blurred picture of `below`, another window of the application's that this one lies over, through its
    /// translucent background until it is ordered out. Nothing for a window without a blur, and where the desktop
    /// blurs by itself. AppKit needs none.
    void blurWindowBelow(NSWindow& below);

    /// Whether the mouse goes through the window to what lies behind, and screen readers past it: there is nothing to
    /// do in it. No. AppKit: `-ignoresMouseEvents`.
    [[nodiscard]] bool ignoresMouseEvents() const { return m_ignoresMouseEvents; }
    /// Takes effect at once. AppKit: `-setIgnoresMouseEvents:`.
    void setIgnoresMouseEvents(bool flag);

    /// Redraws the window and its views before it returns. Nothing while it is not shown. AppKit: `-display`.
    virtual void display();

    /// Shows the window above the others of its level, without giving it the keyboard; one that was out is redrawn.
    /// `sender` is not looked at.
    void orderFront(QObject* sender);
    /// Shows the window below the others of its level. AppKit: `-orderBack:`.
    void orderBack(QObject* sender);
    /// Takes the window off the screen. Where it had the keyboard, that goes to the modal window, or to the topmost of
    /// the application's that can take it.
    void orderOut(QObject* sender);
    /// Orders the window in, just above or below the window with the number `otherWindowNumber` (0: all of its level),
    /// or out. AppKit: `-orderWindow:relativeTo:`.
    virtual void orderWindow(NSWindowOrderingMode place, int otherWindowNumber);
    /// Shows the window in front and gives it the keyboard. AppKit: `-makeKeyAndOrderFront:`.
    virtual void makeKeyAndOrderFront(QObject* sender);
    /// Gives the window the keyboard, if it can take it and is shown. AppKit: `-makeKeyWindow`.
    void makeKeyWindow();
    /// How often the window was ordered in or out or closed, by whomever: an effect that sees another number than at
    /// its beginning has been overtaken.
    [[nodiscard]] unsigned orderings() const { return m_orderings; }
    /// Hides QWidget's: no from the moment that the window is ordered out, also while screen updates are suspended.
    [[nodiscard]] bool isVisible() const { return QWidget::isVisible() && !m_goesOutLater; }

    /// The window deletes itself when it is closed. No.
    [[nodiscard]] bool isReleasedWhenClosed() const { return testAttribute(Qt::WA_DeleteOnClose); }
    /// To be set for a window that nobody else owns. AppKit: `-setReleasedWhenClosed:`.
    void setReleasedWhenClosed(bool flag) { setAttribute(Qt::WA_DeleteOnClose, flag); }

    /// Lets `child` move with this window, and be ordered in and out with it; `place` says on which side it lies. It
    /// leaves the parent that it had, and is owned by whoever made it. Nothing for null and the window itself. AppKit:
    /// `-addChildWindow:ordered:`.
    void addChildWindow(NSWindow* child, NSWindowOrderingMode place);
    /// Lets `child` go where it is; nothing for a window that is no child of this one. AppKit: `-removeChildWindow:`.
    void removeChildWindow(NSWindow* child);
    /// The children in the order in which they were added. AppKit: `-childWindows`.
    [[nodiscard]] std::vector<NSWindow*> childWindows() const;
    /// The window that this one is a child of, or null. AppKit: `-parentWindow`.
    [[nodiscard]] NSWindow* parentWindow() const { return m_parentWindow; }

    /// Whether the window looks and moves like a sheet, which the kit's own emulation of one says of it.
    [[nodiscard]] bool isSheet() const { return m_isSheet; }
    /// Changes nothing but what isSheet answers.
    void _setSheet(bool flag) { m_isSheet = flag; }

    /// Whether the window may take the keyboard. A borderless one may not. AppKit: `-canBecomeKeyWindow`.
    [[nodiscard]] virtual bool canBecomeKeyWindow() const;
    /// Whether the window may be the one that commands go to: a titled one, while it is shown. AppKit:
    /// `-canBecomeMainWindow`.
    [[nodiscard]] virtual bool canBecomeMainWindow() const;
    /// Whether the window has the keyboard. AppKit: `-isKeyWindow`.
    [[nodiscard]] bool isKeyWindow() const { return m_isKey; }
    /// Whether the window is the one that commands go to. AppKit: `-isMainWindow`.
    [[nodiscard]] bool isMainWindow() const;
    /// Called when the window has got the keyboard; called by itself, takes it. AppKit: `-becomeKeyWindow`.
    virtual void becomeKeyWindow();
    /// Called when the window has lost the keyboard. AppKit: `-resignKeyWindow`.
    virtual void resignKeyWindow();

    /// What gets the keys: a view, or the window itself where none does. AppKit: `-firstResponder`.
    [[nodiscard]] QWidget* firstResponder() const;
    /// Gives the keys to `responder`, or to the window itself where that is null, which ends editing. False where the
    /// view takes no keys or is not in this window. AppKit: `-makeFirstResponder:`.
    bool makeFirstResponder(QWidget* responder);

    /// The button that Return and the keypad's Enter press wherever the keyboard is in the window, unless a view
    /// answers them as key equivalents itself. Null takes it back. AppKit: `-setDefaultButtonCell:`.
    void setDefaultButtonCell(const NSButtonCell* cell);
    /// The cell of that button as it is now; null where there is none, or it is gone. AppKit: `-defaultButtonCell`.
    [[nodiscard]] NSButtonCell* defaultButtonCell() const;

    /// Every event of the mouse and the keyboard for the window comes here first; this hands it on to its view, and to
    /// nobody where a subclass does not call it. Keys are offered to the views as key equivalents before that.
    /// AppKit: `-sendEvent:`.
    virtual void sendEvent(const NSEvent& event);
    /// @{
    /// Events that no view had a use for. Here: nothing. AppKit: `-mouseDown:` and its kin.
    virtual void mouseDown(const NSEvent& event);
    virtual void mouseDragged(const NSEvent& event);
    virtual void mouseUp(const NSEvent& event);
    virtual void rightMouseDown(const NSEvent& event);
    virtual void keyDown(const NSEvent& event);
    /// @}

    /// Called when the window has been loaded from a nib, or by its owner where there is none. Here: nothing.
    virtual void awakeFromNib();

    /// All windows of the application, the lowest first. AppKit: `NSApplication -windows`.
    [[nodiscard]] static std::vector<NSWindow*> windows();
    /// The window of the application with the keyboard; null where there is none. AppKit: `NSApplication -keyWindow`.
    [[nodiscard]] static NSWindow* keyWindow();
    /// The window that commands go to; null where there is none. AppKit: `NSApplication -mainWindow`.
    [[nodiscard]] static NSWindow* mainWindow();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

    /// Draws what the window covers, of which only alpha counts, in its own coordinates: for its shadow, its clicks,
    /// and its outline where it cannot be translucent. Here: the background colour.
    virtual void drawCoverage() const;
    /// Cuts the window to what it covers now, at once.
    void updateShape();
    /// Posts what is different between two frames.
    void announceChange(const NSRect& before, const NSRect& after);

private:
    friend class ViewCore;
    friend void NSDisableScreenUpdates();
    friend void NSEnableScreenUpdates();
    friend void NSDrawWindowBackground(const NSRect& rect);

    class InputFilter;

    void applyWindowFlags();
    void applySizeLimits(const QSize& size);
    [[nodiscard]] QMargins borders() const;
    void place(const NSRect& frame);
    void rememberAsked(const QRect& geometry);
    [[nodiscard]] bool isLateAnswer(const QRect& geometry) const;
    void stopWaitingForAnswers();
    void moveToPixel();
    void layOutContent();
    void takeGeometryFromQt();
    void moveChildren(const NSRect& before);
    void orderIn(NSWindowOrderingMode place, int otherWindowNumber);
    void orderOutNow();
    void putBypassingWindowsBelow();
    void raiseBypassingWindows() const;
    void orderHigherLevelsFront() const;
    void orderLowerLevelsBack() const;
    void orderChildrenOut();
    void setWentOutWithParent(const NSWindow* child, bool flag);
    void becomeMainWindow();
    void applyAlpha();
    void applyLateAlpha();
    bool takeFirstClick(const NSEvent& event);
    void takeInput(const std::optional<QRegion>& region);
    bool pressDefaultButton(const NSEvent& event);
    void passKeyboardOn();
    void scheduleShapeUpdate();
    [[nodiscard]] QImage coverage() const;
    void paintBackground(QPainter& painter, const QRect& dirty) const;
    void dispatch(QEvent& event);
    void handleUnusedEvent(const NSEvent& event);

    static constexpr int numberOfUnknown = -1; // to the window server
    static constexpr auto largestLength = static_cast<double>(std::numeric_limits<float>::max());

    unsigned m_styleMask;
    NSRect m_frame;         // as it was set
    QRect m_placedGeometry; // what it was rounded to, without borders: elsewhere, the window manager has moved it
    QMargins m_placedBorders;
    bool m_isPlacing = false;
    std::vector<QRect> m_asked; // of the window manager, lately
    QTimer m_answers;           // until it must have answered all of them
    QPointer<QWidget> m_contentView;
    InputFilter* m_inputFilter; // owned as a child
    NSSize m_minSize;
    NSSize m_maxSize{largestLength, largestLength};
    int m_level = NSNormalWindowLevel;
    int m_windowNumber = numberOfUnknown;
    bool m_isOneShot = false;
    unsigned m_collectionBehavior = NSWindowCollectionBehaviorDefault;
    NSWindowManagement m_management = NSWindowManagement::Managed;
    bool m_isOpaque = true;
    bool m_hasShadow = true;
    double m_alphaValue = 1;
    NSColor m_backgroundColor;
    double m_backgroundBlurRadius = 0;
    QPointer<NSButton> m_defaultButton;
    unsigned m_orderings = 0;
    bool m_comesToFront = false; // the window server has not put it there yet
    bool m_isKey = false;
    bool m_isSheet = false;
    bool m_ignoresMouseEvents = false;
    bool m_isInFirstClick = false; // which no view gets
    bool m_goesOutLater = false;
    bool m_changesAlphaLater = false;
    bool m_comesInLater = false;
    bool m_shapeIsStale = false;
    QImage m_backdrop;         // of a window that blurs what is below by itself
    QImage m_opaqueBackground; // where there is no compositing manager
    QPointer<NSWindow> m_parentWindow;
    struct Child {
        QPointer<NSWindow> window;
        NSWindowOrderingMode place;
        bool wentOutWithParent;
    };
    std::vector<Child> m_children;
};
