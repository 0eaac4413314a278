// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSStatusItem.h>

#include <VXKit/platform/appkit/NSEvent.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/appkit/NSStatusBar.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/desktop/StatusItemHosts.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>

#include <QContextMenuEvent>
#include <QEvent>
#include <QGuiApplication>
#include <QPointer>
#include <QScreen>

#include <cmath>
#include <utility>
#include <vector>

namespace {

// A grey in the middle, so that it is lighter than a dark bar and darker than a light one.
constexpr double highlightWhite = 0.5;
constexpr double highlightAlpha = 0.45;
constexpr double highlightRadius = 4;

/// The window that holds an item's view: placed by the desktop, so it knows only from there where it is.
class NSStatusBarWindow final : public NSWindow {
public:
    explicit NSStatusBarWindow(const StatusItemHosts& hosts)
        : NSWindow(NSZeroRect, NSBorderlessWindowMask, NSBackingStoreBuffered, true), m_hosts(hosts) {}

    [[nodiscard]] NSRect frame() const override { return NSScreenRectFromGlobal(m_hosts.itemFrame()); }

private:
    const StatusItemHosts& m_hosts;
};

/// Where a menu of `size` goes for an item at `item`: below it, or above it where the item is in the lower half of its
/// screen, whose edge it would not fit before.
QPoint placeOfMenu(const QRect& item, const QSize& size) {
    const QScreen* screen = QGuiApplication::screenAt(item.center());
    const bool goesUp = screen && item.center().y() > screen->geometry().center().y();
    return {item.left(), goesUp ? item.top() - size.height() : item.top() + item.height()};
}

} // namespace

struct NSStatusItem::Private : public QObject {
    explicit Private(double wantedLength) : window(hosts), length(wantedLength) {
        window.installEventFilter(this);
        connect(&hosts, &StatusItemHosts::frameChanged, this, [this] {
            NSNotificationCenter::defaultCenter().postNotificationName(NSWindowDidMoveNotification, &window);
        });
        connect(&hosts, &StatusItemHosts::activated, this, [this] { click(); });
        connect(&hosts, &StatusItemHosts::contextMenuRequested, this,
                [this](const QPoint& global) { showMenuAt(QRect(global, QSize(1, 1))); });
    }

    ~Private() override { hosts.release(); }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched != &window || event->type() != QEvent::ContextMenu || !menu) {
            return QObject::eventFilter(watched, event);
        }
        showMenuAt(hosts.itemFrame().toAlignedRect());
        return true;
    }

    /// What a click in the window would have done.
    void click() {
        const QPointer<NSWindow> clicked(&window);
        const NSPoint middle = NSMakePoint(window.width() / 2.0, window.height() / 2.0);
        for (const NSEventType type : {NSLeftMouseDown, NSLeftMouseUp}) {
            // The view may let go of the item.
            if (clicked) {
                clicked->sendEvent(NSEvent::mouseEventWithType(type, middle, 0, clicked, 1));
            }
        }
    }

    void showMenuAt(const QRect& item) const {
        if (menu) {
            menu->popup(placeOfMenu(item, menu->sizeHint()));
        }
    }

    void applyLength() {
        double width = length;
        if (length == NSSquareStatusItemLength) {
            width = hosts.thickness();
        } else if (length < 0) {
            width = viewWidth;
        }
        hosts.setItemWidth(static_cast<int>(std::ceil(width)));
    }

    StatusItemHosts hosts;
    NSStatusBarWindow window;
    QPointer<QMenu> menu;
    NSView* view = nullptr; // belongs to the window
    double length;
    double viewWidth = 0; // that it had of its own
    bool isRemoved = false;
};

NSStatusItem::NSStatusItem(Passkey, NSStatusBar& statusBar, double length)
    : m_statusBar(statusBar), m_private(std::make_unique<Private>(length)) {
    setTitle(QGuiApplication::applicationDisplayName());
    m_private->applyLength();
    m_statusBar.m_items.push_back(this);
}

NSStatusItem::~NSStatusItem() {
    std::erase(m_statusBar.m_items, this);
}

double NSStatusItem::length() const {
    return m_private->length;
}

void NSStatusItem::setLength(double length) {
    m_private->length = length;
    m_private->applyLength();
}

NSView* NSStatusItem::view() const {
    return m_private->view;
}

void NSStatusItem::setView(std::unique_ptr<NSView> view) {
    if (!view) {
        return;
    }
    m_private->viewWidth = view->frame().size.width;
    m_private->view = view.get();
    m_private->window.setContentView(view.release());
    m_private->view->setAccessibleName(m_private->window.windowTitle());
    m_private->applyLength();
    if (!m_private->isRemoved) {
        m_private->hosts.take(m_private->window);
    }
}

void NSStatusItem::drawStatusBarBackgroundInRect(const NSRect& rect, bool highlight) const {
    if (!highlight) {
        return;
    }
    NSGraphicsContext::saveGraphicsState();
    NSColor::colorWithDeviceWhite(highlightWhite, highlightAlpha).setFill();
    NSBezierPath::bezierPathWithRoundedRect(rect, highlightRadius, highlightRadius).fill();
    NSGraphicsContext::restoreGraphicsState();
}

QMenu* NSStatusItem::menu() const {
    return m_private->menu;
}

void NSStatusItem::setMenu(QMenu* menu) {
    m_private->menu = menu;
}

void NSStatusItem::setToolTip(const QString& toolTip) {
    m_private->window.setToolTip(toolTip);
    m_private->hosts.setToolTip(toolTip);
}

void NSStatusItem::setTitle(const QString& title) {
    m_private->window.setWindowTitle(title);
    m_private->window.setAccessibleName(title);
    if (m_private->view) {
        m_private->view->setAccessibleName(title);
    }
    m_private->hosts.setTitle(title);
}

void NSStatusItem::removeFromBar() {
    m_private->isRemoved = true;
    m_private->hosts.release();
}

bool NSStatusItem::mayBeAtPoint(const NSPoint& point) const {
    return m_private->hosts.mayBeAt(NSScreenRectToGlobal({point, NSZeroSize}).topLeft());
}
