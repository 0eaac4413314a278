// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/TrayStatusItemHost.h>

#include <VXKit/platform/desktop/X11Connection.h>
#include <VXKit/platform/desktop/X11Geometry.h>
#include <VXKit/platform/desktop/X11SelectionOwner.h>

#include <QCoreApplication>
#include <QMetaObject>
#include <QPainter>
#include <QSysInfo>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <chrono>

#include <xcb/xcb.h>

namespace {

constexpr const char* traySelection = "_NET_SYSTEM_TRAY_S0";

// The protocols' own numbers: the one message to a tray that matters, and the version and flag of an embedded window.
constexpr std::uint32_t requestDock = 0;
constexpr std::uint32_t embeddingVersion = 0;
constexpr std::uint32_t wantsToBeMapped = 1;

constexpr int translucentDepth = 32;
constexpr int opaqueDepth = 24;

/// A tray answers in milliseconds; one that is starting up together with everything else may take longer.
constexpr std::chrono::seconds timeToDock(5);

/// A tray that takes the window in and puts it out again this often does not want it.
constexpr int mostTimesToAsk = 5;

/// Every event has this bit set that came by a client's request and not from the server.
constexpr unsigned sentEventBit = 0x80;

/// The colour depth of windows that the tray `owner` can show with what is behind them; 24 where it does not tell.
int depthOfTray(const X11Connection& x11, xcb_window_t owner) {
    const auto visual = x11.wordOfProperty(owner, "_NET_SYSTEM_TRAY_VISUAL", XCB_ATOM_VISUALID);
    for (auto depths = xcb_screen_allowed_depths_iterator(&x11.screen()); visual && depths.rem > 0;
         xcb_depth_next(&depths)) {
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0; xcb_visualtype_next(&visuals)) {
            if (visuals.data->visual_id == *visual) {
                return depths.data->depth;
            }
        }
    }
    return opaqueDepth;
}

int depthOf(const X11Connection& x11, xcb_window_t window) {
    const auto geometry = x11.reply(xcb_get_geometry_reply, xcb_get_geometry(x11.connection(), window));
    return geometry ? geometry->depth : 0;
}

bool isOnScreen(const X11Connection& x11, xcb_window_t window) {
    const auto attributes =
        x11.reply(xcb_get_window_attributes_reply, xcb_get_window_attributes(x11.connection(), window));
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

/// The windows around `window`, from its parent out to the child of the root window.
std::vector<xcb_window_t> windowsAround(const X11Connection& x11, xcb_window_t window) {
    std::vector<xcb_window_t> around;
    while (true) {
        const auto tree = x11.reply(xcb_query_tree_reply, xcb_query_tree(x11.connection(), window));
        if (!tree || tree->parent == XCB_NONE || tree->parent == x11.root()) {
            return around;
        }
        window = tree->parent;
        around.push_back(window);
    }
}

/// What `window` shows, in pixels; null where the server does not tell, as of a window that is not on the screen.
QImage picture(const X11Connection& x11, xcb_window_t window, const QSize& size) {
    const auto reply =
        x11.reply(xcb_get_image_reply, xcb_get_image(x11.connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, window, 0, 0,
                                                     static_cast<std::uint16_t>(size.width()),
                                                     static_cast<std::uint16_t>(size.height()), ~std::uint32_t{0}));
    const bool isOurByteOrder = (xcb_get_setup(x11.connection())->image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST) ==
                                (QSysInfo::ByteOrder == QSysInfo::LittleEndian);
    constexpr int bytesOfPixel = 4;
    const int bytesOfLine = size.width() * bytesOfPixel;
    if (!reply || !isOurByteOrder || reply->depth != opaqueDepth ||
        xcb_get_image_data_length(reply.get()) < bytesOfLine * size.height()) {
        return {};
    }
    return QImage(xcb_get_image_data(reply.get()), size.width(), size.height(), bytesOfLine, QImage::Format_RGB32)
        .copy();
}

} // namespace

TrayStatusItemHost::TrayStatusItemHost(QObject* parent)
    : StatusItemHost(parent), m_tray(new X11SelectionOwner(traySelection, this)) {
    connect(m_tray, &X11SelectionOwner::changed, this, [this] { ownerHasChanged(); });
    m_patience.setSingleShot(true);
    m_patience.setInterval(timeToDock);
    m_patience.callOnTimeout(this, [this] { giveUp(); });
}

TrayStatusItemHost::~TrayStatusItemHost() {
    release();
}

StatusItemHost::Availability TrayStatusItemHost::availability() {
    return m_tray->window() != XCB_NONE && !m_trayRefuses ? Availability::Present : Availability::Absent;
}

int TrayStatusItemHost::thickness() const {
    return m_isDocked && !m_frame.isEmpty() ? qRound(m_frame.height()) : standardThickness;
}

void TrayStatusItemHost::attach() {
    // What the window server tells of the window counts only from here on.
    qApp->installNativeEventFilter(this);
    askToDock();
}

void TrayStatusItemHost::detach() {
    qApp->removeNativeEventFilter(this);
    m_patience.stop();
    m_timesAsked = 0;
    m_isDocked = false;
    m_around.clear();
    dropNativeWindow();
}

void TrayStatusItemHost::ownerHasChanged() {
    m_trayRefuses = false;
    m_timesAsked = 0;
    m_patience.stop();
    if (window()) {
        m_isDocked = false;
        m_around.clear();
        dropNativeWindow();
        askToDock();
    }
    Q_EMIT availabilityChanged();
}

void TrayStatusItemHost::askToDock() {
    const X11Connection* x11 = X11Connection::shared();
    const xcb_window_t tray = m_tray->window();
    if (!x11 || tray == XCB_NONE || m_trayRefuses) {
        return;
    }
    if (++m_timesAsked > mostTimesToAsk) {
        giveUp();
        return;
    }
    const bool showsThrough = depthOfTray(*x11, tray) == translucentDepth;
    prepareWindow(Qt::Window | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint | Qt::WindowDoesNotAcceptFocus,
                  showsThrough ? Surface::Translucent : Surface::Opaque);
    m_background = QImage();
    window()->resize(itemWidth(), standardThickness);
    const auto native = static_cast<xcb_window_t>(window()->winId());
    applyWantedSize();
    x11->setProperty(native, "_XEMBED_INFO", x11->atom("_XEMBED_INFO"), {embeddingVersion, wantsToBeMapped});
    x11->sendTo(tray, "_NET_SYSTEM_TRAY_OPCODE", {XCB_CURRENT_TIME, requestDock, native, 0, 0});
    m_patience.start();
}

void TrayStatusItemHost::applyWantedSize() {
    // Not QWidget's own least size: the window must follow a tray that makes it smaller all the same. Trays that give
    // an item their own height make it as wide as these numbers are to one another.
    if (QWindow* handle = window()->windowHandle()) {
        handle->setMinimumSize(QSize(itemWidth(), standardThickness));
    }
}

void TrayStatusItemHost::itemWidthHasChanged() {
    applyWantedSize();
    window()->resize(itemWidth(), window()->height());
}

std::uint32_t TrayStatusItemHost::nativeWindow() const {
    return window() ? static_cast<std::uint32_t>(window()->internalWinId()) : std::uint32_t{XCB_NONE};
}

bool TrayStatusItemHost::isTranslucent() const {
    return window() && window()->testAttribute(Qt::WA_TranslucentBackground);
}

bool TrayStatusItemHost::isItemOrAround(std::uint32_t native) const {
    return native == nativeWindow() || std::find(m_around.begin(), m_around.end(), native) != m_around.end();
}

bool TrayStatusItemHost::nativeEventFilter(const QByteArray& /*eventType*/, void* message, qintptr* /*result*/) {
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    switch (event->response_type & ~sentEventBit) {
    case XCB_REPARENT_NOTIFY:
        if (reinterpret_cast<const xcb_reparent_notify_event_t*>(event)->window == nativeWindow()) {
            // Not from within the delivery of an event of that very window.
            QMetaObject::invokeMethod(
                this, [this] { windowWasReparented(); }, Qt::QueuedConnection);
        }
        break;
    case XCB_DESTROY_NOTIFY:
        // A tray that ends without handing the windows in it back to the root window takes them along.
        if (reinterpret_cast<const xcb_destroy_notify_event_t*>(event)->window == nativeWindow() && m_isDocked) {
            QMetaObject::invokeMethod(
                this, [this] { hasBeenUndocked(); }, Qt::QueuedConnection);
        }
        break;
    case XCB_MAP_NOTIFY:
        if (isItemOrAround(reinterpret_cast<const xcb_map_notify_event_t*>(event)->window)) {
            updateLater();
        }
        break;
    case XCB_CONFIGURE_NOTIFY:
        if (isItemOrAround(reinterpret_cast<const xcb_configure_notify_event_t*>(event)->window)) {
            updateLater();
        }
        break;
    default:
        break;
    }
    return false;
}

void TrayStatusItemHost::windowWasReparented() {
    const X11Connection* x11 = X11Connection::shared();
    const xcb_window_t native = nativeWindow();
    if (!x11 || native == XCB_NONE) {
        return;
    }
    m_around = windowsAround(*x11, native);
    if (!m_around.empty()) {
        hasBeenDocked();
    } else if (m_isDocked) {
        hasBeenUndocked();
    }
}

void TrayStatusItemHost::hasBeenDocked() {
    const X11Connection* x11 = X11Connection::shared();
    m_patience.stop();
    m_isDocked = true;
    for (const xcb_window_t around : m_around) {
        x11->selectEvents(around, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    }
    // Shown only now, since before it would have appeared as a window of its own for a moment.
    window()->show();
    updateLater();
}

void TrayStatusItemHost::hasBeenUndocked() {
    const X11Connection* x11 = X11Connection::shared();
    if (!x11 || !m_isDocked) {
        return;
    }
    m_isDocked = false;
    m_around.clear();
    dropNativeWindow();
    const auto owner =
        x11->reply(xcb_get_selection_owner_reply, xcb_get_selection_owner(x11->connection(), x11->atom(traySelection)));
    // Where the tray is gone or another one, that is about to be told.
    if (owner && owner->owner == m_tray->window()) {
        askToDock();
    }
}

void TrayStatusItemHost::giveUp() {
    m_trayRefuses = true;
    m_patience.stop();
    Q_EMIT availabilityChanged();
}

void TrayStatusItemHost::updateLater() {
    if (m_isGoingToUpdate) {
        return;
    }
    m_isGoingToUpdate = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_isGoingToUpdate = false;
            updateFrame();
        },
        Qt::QueuedConnection);
}

void TrayStatusItemHost::updateFrame() {
    const X11Connection* x11 = X11Connection::shared();
    const xcb_window_t native = nativeWindow();
    // Trays put a window that they have not shown yet anywhere.
    if (!x11 || native == XCB_NONE || !m_isDocked || !isOnScreen(*x11, native)) {
        return;
    }
    const auto place = x11->reply(xcb_translate_coordinates_reply,
                                  xcb_translate_coordinates(x11->connection(), native, x11->root(), 0, 0));
    const auto geometry = x11->reply(xcb_get_geometry_reply, xcb_get_geometry(x11->connection(), native));
    if (!place || !geometry) {
        return;
    }
    const QRect pixels(place->dst_x, place->dst_y, geometry->width, geometry->height);
    const QRectF frame(pointsFromNative(pixels.topLeft(), x11Screens()),
                       QSizeF(pixels.size()) / window()->devicePixelRatioF());
    if (!isTranslucent() && (m_background.isNull() || m_backgroundFrame != pixels)) {
        m_backgroundFrame = pixels;
        updateBackground();
    }
    if (frame != m_frame) {
        m_frame = frame;
        Q_EMIT frameChanged();
    }
}

/// Reads what the tray has behind the item: the server is told to draw there what is behind the window in its parent,
/// and is asked at once what that looks like.
void TrayStatusItemHost::updateBackground() {
    const X11Connection* x11 = X11Connection::shared();
    const xcb_window_t native = nativeWindow();
    if (m_around.empty() || depthOf(*x11, m_around.front()) != depthOf(*x11, native)) {
        return;
    }
    const std::uint32_t parentsBackground = XCB_BACK_PIXMAP_PARENT_RELATIVE;
    x11->ignoreErrors(
        xcb_change_window_attributes_checked(x11->connection(), native, XCB_CW_BACK_PIXMAP, &parentsBackground));
    x11->ignoreErrors(xcb_clear_area_checked(x11->connection(), 0, native, 0, 0, 0, 0));
    m_background = picture(*x11, native, m_backgroundFrame.size());
    m_background.setDevicePixelRatio(window()->devicePixelRatioF());
    window()->update();
}

void TrayStatusItemHost::drawBackground(QPainter& painter) {
    if (isTranslucent()) {
        return;
    }
    painter.fillRect(window()->rect(), window()->palette().window());
    painter.drawImage(0, 0, m_background);
}
