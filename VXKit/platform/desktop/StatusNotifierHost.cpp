// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/StatusNotifierHost.h>

#include <VXKit/platform/desktop/StatusNotifierPixmap.h>
#include <VXKit/platform/desktop/X11Connection.h>
#include <VXKit/platform/desktop/X11Geometry.h>

#include <QCoreApplication>
#include <QCursor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QGraphicsEffect>
#include <QGuiApplication>
#include <QMetaObject>
#include <QPainter>
#include <QScreen>
#include <QVariantMap>
#include <QWidget>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <utility>

namespace {

constexpr int sendInterval = 100; // milliseconds between two pictures, at least
constexpr int drawnPixelRatio = 2;

QString watcherService() {
    return QStringLiteral("org.kde.StatusNotifierWatcher");
}
QString watcherPath() {
    return QStringLiteral("/StatusNotifierWatcher");
}
QString itemPath() {
    return QStringLiteral("/StatusNotifierItem");
}
QString itemInterface() {
    return QStringLiteral("org.kde.StatusNotifierItem");
}
QString propertiesInterface() {
    return QStringLiteral("org.freedesktop.DBus.Properties");
}

/// The names of the process's items on the bus; panels expect them to be made like this.
QString nextItemName() {
    static int number = 0;
    return QStringLiteral("org.kde.StatusNotifierItem-%1-%2").arg(QCoreApplication::applicationPid()).arg(++number);
}

constexpr const char* itemDescription = R"xml(<interface name="org.kde.StatusNotifierItem">
    <property name="Category" type="s" access="read"/>
    <property name="Id" type="s" access="read"/>
    <property name="Title" type="s" access="read"/>
    <property name="Status" type="s" access="read"/>
    <property name="WindowId" type="i" access="read"/>
    <property name="IconName" type="s" access="read"/>
    <property name="IconPixmap" type="a(iiay)" access="read"/>
    <property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
    <property name="ItemIsMenu" type="b" access="read"/>
    <method name="Activate"><arg name="x" type="i" direction="in"/><arg name="y" type="i" direction="in"/></method>
    <method name="SecondaryActivate">
      <arg name="x" type="i" direction="in"/><arg name="y" type="i" direction="in"/>
    </method>
    <method name="ContextMenu"><arg name="x" type="i" direction="in"/><arg name="y" type="i" direction="in"/></method>
    <method name="Scroll">
      <arg name="delta" type="i" direction="in"/><arg name="orientation" type="s" direction="in"/>
    </method>
    <signal name="NewIcon"/>
    <signal name="NewTitle"/>
    <signal name="NewToolTip"/>
    <signal name="NewStatus"><arg name="status" type="s"/></signal>
  </interface>
  <interface name="org.freedesktop.DBus.Properties">
    <method name="Get">
      <arg name="interface" type="s" direction="in"/><arg name="name" type="s" direction="in"/>
      <arg name="value" type="v" direction="out"/>
    </method>
    <method name="GetAll">
      <arg name="interface" type="s" direction="in"/><arg name="properties" type="a{sv}" direction="out"/>
    </method>
  </interface>
)xml";

} // namespace

/// The item as programs on the bus see it, on a connection of its own, because panels know an item by its connection.
/// Qt's own object for this drops where a click was and says of every item that it has no frame.
class StatusNotifierHost::ItemOnBus final : public QDBusVirtualObject {
public:
    explicit ItemOnBus(StatusNotifierHost& host)
        : m_host(host), m_name(nextItemName()),
          m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_name)) {
        registerStatusNotifierTypes();
        m_bus.registerVirtualObject(itemPath(), this);
    }

    ~ItemOnBus() override {
        m_bus.unregisterObject(itemPath());
        QDBusConnection::disconnectFromBus(m_name);
    }

    /// Takes the name of an item, and tells the watcher of items. Where the name cannot be had, as in a sandbox, the
    /// connection's own serves.
    void enrol() {
        QDBusMessage request = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("RequestName"));
        constexpr uint doNotQueue = 4;
        request << m_name << doNotQueue;
        auto* const answer = new QDBusPendingCallWatcher(m_bus.asyncCall(request), this);
        connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
            constexpr uint isOwner = 1;
            constexpr uint wasOwner = 4;
            const QDBusPendingReply<uint> reply(*answer);
            const bool hasName = !reply.isError() && (reply.value() == isOwner || reply.value() == wasOwner);
            answer->deleteLater();
            QDBusMessage registration = QDBusMessage::createMethodCall(
                watcherService(), watcherPath(), watcherService(), QStringLiteral("RegisterStatusNotifierItem"));
            registration << (hasName ? m_name : m_bus.baseService());
            m_bus.asyncCall(registration);
        });
    }

    void sendSignal(const char* name) {
        m_bus.send(QDBusMessage::createSignal(itemPath(), itemInterface(), QString::fromLatin1(name)));
    }

    [[nodiscard]] QString introspect(const QString& path) const override {
        return path == itemPath() ? QString::fromLatin1(itemDescription) : QString();
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.path() != itemPath()) {
            return false;
        }
        if (message.interface() == propertiesInterface()) {
            return answerProperties(message, connection);
        }
        if (!message.interface().isEmpty() && message.interface() != itemInterface()) {
            return false;
        }
        if (message.member() == QLatin1String("Scroll")) {
            reply(message, connection);
            return true;
        }
        if (message.signature() != QLatin1String("ii")) {
            return false;
        }
        const QPoint place(message.arguments().at(0).toInt(), message.arguments().at(1).toInt());
        if (message.member() == QLatin1String("Activate")) {
            reply(message, connection);
            later([place](StatusNotifierHost& host) { host.wasClicked(place); });
            return true;
        }
        if (message.member() == QLatin1String("ContextMenu")) {
            reply(message, connection);
            later([place](StatusNotifierHost& host) { Q_EMIT host.contextMenuRequested(placeOfClick(place)); });
            return true;
        }
        if (message.member() == QLatin1String("SecondaryActivate")) {
            reply(message, connection);
            return true;
        }
        return false;
    }

private:
    /// Host code may take the item away, and this object with it, which is being called by the bus.
    void later(std::function<void(StatusNotifierHost&)> call) {
        QMetaObject::invokeMethod(
            &m_host, [host = &m_host, call = std::move(call)] { call(*host); }, Qt::QueuedConnection);
    }

    static void reply(const QDBusMessage& message, const QDBusConnection& connection) {
        if (message.isReplyRequired()) {
            connection.send(message.createReply());
        }
    }

    [[nodiscard]] QVariantMap properties() const {
        const QString title = m_host.title().isEmpty() ? QCoreApplication::applicationName() : m_host.title();
        return {
            {QStringLiteral("Category"), QStringLiteral("ApplicationStatus")},
            {QStringLiteral("Id"), QCoreApplication::applicationName()},
            {QStringLiteral("Title"), title},
            {QStringLiteral("Status"), QStringLiteral("Active")},
            {QStringLiteral("WindowId"), 0},
            {QStringLiteral("IconName"), QString()},
            {QStringLiteral("IconPixmap"), QVariant::fromValue(statusNotifierPixmaps(m_host.m_drawn))},
            {QStringLiteral("ToolTip"), QVariant::fromValue(StatusNotifierToolTip{{}, {}, m_host.toolTip(), {}})},
            {QStringLiteral("ItemIsMenu"), false},
        };
    }

    bool answerProperties(const QDBusMessage& message, const QDBusConnection& connection) const {
        const QVariantList arguments = message.arguments();
        if (message.member() == QLatin1String("GetAll") && message.signature() == QLatin1String("s")) {
            connection.send(message.createReply(QVariant(properties())));
            return true;
        }
        if (message.member() == QLatin1String("Get") && message.signature() == QLatin1String("ss")) {
            const QVariantMap all = properties();
            const auto property = all.constFind(arguments.at(1).toString());
            connection.send(property == all.constEnd()
                                ? message.createErrorReply(QDBusError::UnknownProperty, arguments.at(1).toString())
                                : message.createReply(QVariant::fromValue(QDBusVariant(*property))));
            return true;
        }
        return false;
    }

    StatusNotifierHost& m_host;
    QString m_name;
    QDBusConnection m_bus;
};

/// Stands between the window and its pixels: when the window is painted, all of it is, once, into a picture.
///
/// Reading the pixels of the window would be nearer at hand, but they have the ratio of the screen that Qt takes it to
/// be on, and drawing again for another ratio would be one drawing too many.
class StatusNotifierHost::Drawing final : public QGraphicsEffect {
public:
    Drawing(StatusNotifierHost& host, QWidget& window) : QGraphicsEffect(&window), m_host(&host), m_window(window) {}

protected:
    void draw(QPainter* /*painter*/) override {
        QImage picture(m_window.size() * drawnPixelRatio, QImage::Format_ARGB32_Premultiplied);
        if (picture.isNull()) {
            return;
        }
        picture.setDevicePixelRatio(drawnPixelRatio);
        picture.fill(Qt::transparent);
        m_window.render(&picture, QPoint(), QRegion(), QWidget::DrawChildren);
        if (m_host) {
            m_host->hasBeenDrawn(picture);
        }
    }

private:
    QPointer<StatusNotifierHost> m_host;
    QWidget& m_window;
};

StatusNotifierHost::StatusNotifierHost(QObject* parent) : StatusItemHost(parent) {
    m_sendLater.setSingleShot(true);
    m_sendLater.callOnTimeout(this, [this] { sendPixmaps(); });
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        connect(screen, &QScreen::availableGeometryChanged, this, [this] { frameMayHaveChanged(); });
    }
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, [this] { frameMayHaveChanged(); });
}

StatusNotifierHost::~StatusNotifierHost() {
    release();
}

StatusItemHost::Availability StatusNotifierHost::availability() {
    if (!m_watcher) {
        watchForPanels();
    }
    return m_availability;
}

void StatusNotifierHost::watchForPanels() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    m_watcher = new QDBusServiceWatcher(watcherService(), bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    if (!bus.isConnected()) {
        m_availability = Availability::Absent;
        return;
    }
    connect(m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, [this] { panelsHaveChanged(); });
    for (const char* signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
        bus.connect(watcherService(), watcherPath(), watcherService(), QString::fromLatin1(signal), this,
                    SLOT(panelsHaveChanged()));
    }
    askForPanels();
}

void StatusNotifierHost::panelsHaveChanged() {
    askForPanels();
}

void StatusNotifierHost::askForPanels() {
    QDBusMessage question =
        QDBusMessage::createMethodCall(watcherService(), watcherPath(), propertiesInterface(), QStringLiteral("Get"));
    question << watcherService() << QStringLiteral("IsStatusNotifierHostRegistered");
    question.setAutoStartService(false);
    auto* const answer = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
    const int number = ++m_question;
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, number] {
        const QDBusPendingReply<QDBusVariant> reply(*answer);
        answer->deleteLater();
        if (number != m_question) {
            return;
        }
        const bool isThere = !reply.isError() && reply.value().variant().toBool();
        // A watcher that was started again knows nothing of the items of its predecessor.
        if (isThere && m_item) {
            m_item->enrol();
        }
        setAvailability(isThere ? Availability::Present : Availability::Absent);
    });
}

void StatusNotifierHost::setAvailability(Availability availability) {
    if (availability != m_availability) {
        m_availability = availability;
        Q_EMIT availabilityChanged();
    }
}

void StatusNotifierHost::attach() {
    prepareWindow(Qt::Window | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint | Qt::WindowDoesNotAcceptFocus,
                  Surface::Translucent);
    // Visible, so that it is drawn, and yet never seen.
    window()->setAttribute(Qt::WA_DontShowOnScreen);
    m_drawing = new Drawing(*this, *window());
    window()->setGraphicsEffect(m_drawing);
    window()->resize(itemWidth(), thickness());
    window()->show();
    window()->repaint();
    m_item = std::make_unique<ItemOnBus>(*this);
    m_item->enrol();
    frameMayHaveChanged();
}

void StatusNotifierHost::detach() {
    m_item.reset();
    m_sendLater.stop();
    m_drawn = QImage();
    m_click.reset();
    if (!window()) {
        return;
    }
    if (m_drawing && window()->graphicsEffect() == m_drawing) {
        window()->setGraphicsEffect(nullptr);
    }
    dropNativeWindow();
    window()->setAttribute(Qt::WA_DontShowOnScreen, false);
}

void StatusNotifierHost::itemWidthHasChanged() {
    window()->resize(itemWidth(), thickness());
    frameMayHaveChanged();
}

void StatusNotifierHost::titleHasChanged() {
    m_item->sendSignal("NewTitle");
}

void StatusNotifierHost::toolTipHasChanged() {
    m_item->sendSignal("NewToolTip");
}

void StatusNotifierHost::hasBeenDrawn(const QImage& atTwoPixelsAPoint) {
    if (atTwoPixelsAPoint == m_drawn) {
        return;
    }
    m_drawn = atTwoPixelsAPoint;
    if (!m_sinceSent.isValid() || m_sinceSent.hasExpired(sendInterval)) {
        sendPixmaps();
    } else if (!m_sendLater.isActive()) {
        m_sendLater.start(static_cast<int>(sendInterval - m_sinceSent.elapsed()));
    }
}

void StatusNotifierHost::sendPixmaps() {
    m_sendLater.stop();
    if (m_item) {
        m_sinceSent.start();
        m_item->sendSignal("NewIcon");
    }
}

void StatusNotifierHost::wasClicked(const QPoint& told) {
    const QPoint place = placeOfClick(told);
    m_click = place;
    frameMayHaveChanged();
    Q_EMIT activated(place);
}

/// Panels tell the place in pixels; some do not know it and say (0, 0), where no item is.
QPoint StatusNotifierHost::placeOfClick(const QPoint& told) {
    if (told.isNull()) {
        return QCursor::pos();
    }
    return X11Connection::shared() ? pointsFromNative(told, x11Screens()).toPoint() : told;
}

QRectF StatusNotifierHost::itemFrame() const {
    const QScreen* screen = m_click ? QGuiApplication::screenAt(*m_click) : nullptr;
    if (!screen) {
        screen = QGuiApplication::primaryScreen();
    }
    const QSize size(itemWidth(), thickness());
    if (!screen) {
        return {};
    }
    return estimatedFrame(m_click, size, screen->geometry(), screen->availableGeometry());
}

bool StatusNotifierHost::mayBeAt(const QPointF& global) const {
    const QScreen* screen = QGuiApplication::screenAt(global.toPoint());
    if (!screen) {
        return false;
    }
    const QRect available = screen->availableGeometry();
    if (!m_click) {
        return !available.contains(global.toPoint());
    }
    // An item is about as wide as its panel is high, and may have been clicked at either side of it.
    const QRect all = screen->geometry();
    const int reach = std::max({thickness(), available.top() - all.top(), all.bottom() - available.bottom(),
                                available.left() - all.left(), all.right() - available.right()});
    return itemFrame().contains(global) ||
           (std::abs(global.x() - m_click->x()) <= reach && std::abs(global.y() - m_click->y()) <= reach);
}

void StatusNotifierHost::frameMayHaveChanged() {
    const QRectF frame = itemFrame();
    if (window() && frame != m_frame) {
        m_frame = frame;
        Q_EMIT frameChanged();
    }
}

QRect StatusNotifierHost::estimatedFrame(const std::optional<QPoint>& click, const QSize& size, const QRect& screen,
                                         const QRect& available) {
    const int rightmost = screen.left() + screen.width() - size.width();
    const int lowest = screen.top() + screen.height() - size.height();
    const bool panelIsOnTop = available.top() > screen.top();
    int left = rightmost;
    int top = screen.top();
    if (click) {
        left = click->x() - size.width() / 2;
        top = click->y() - size.height() / 2;
    }
    if (panelIsOnTop && (!click || click->y() < available.top())) {
        top = available.top() - size.height();
    }
    return {QPoint(std::clamp(left, screen.left(), std::max(screen.left(), rightmost)),
                   std::clamp(top, screen.top(), std::max(screen.top(), lowest))),
            size};
}
