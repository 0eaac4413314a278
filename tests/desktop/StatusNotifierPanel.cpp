// SPDX-License-Identifier: MIT
// A panel that shows StatusNotifier items, for the desktop tests; there it stands for those of the large desktops.
//
//     status-notifier-panel [--edge top|bottom] [--left PIXELS] [--height PIXELS] [--silent] [--deaf-tray]
//
// It is the watcher of items and a panel in one, keeps the screen's edge to itself and shows each item's picture from
// PIXELS on, in a cell of 40 pixels. A click becomes Activate, with its place on the screen, or with (0, 0) where
// --silent is given; one of the right button ContextMenu. With --deaf-tray it is also a tray that takes no window in.
// Events are told on standard output, a line each:
//
//     ready                          items can come
//     item SERVICE, gone SERVICE     one came, or went
//     icon NUMBER WIDTHxHEIGHT …     the pictures were fetched, after NUMBER announcements of new ones
#include <VXKit/platform/desktop/StatusNotifierPixmap.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVirtualObject>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QStringList>
#include <QVariantMap>
#include <QWidget>
#include <QtEndian>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <vector>

#include <xcb/xcb.h>

namespace {

constexpr int cellWidth = 40;

QString watcherName() {
    return QStringLiteral("org.kde.StatusNotifierWatcher");
}
QString itemInterface() {
    return QStringLiteral("org.kde.StatusNotifierItem");
}
QString itemPath() {
    return QStringLiteral("/StatusNotifierItem");
}
QString propertiesInterface() {
    return QStringLiteral("org.freedesktop.DBus.Properties");
}

xcb_connection_t* connection() {
    return qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
}

xcb_atom_t atomOf(const QByteArray& name) {
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> atom(
        xcb_intern_atom_reply(
            connection(), xcb_intern_atom(connection(), 0, static_cast<std::uint16_t>(name.size()), name.constData()),
            nullptr),
        &std::free);
    return atom->atom;
}

void tell(const QString& line) {
    std::puts(qUtf8Printable(line));
    std::fflush(stdout);
}

QImage imageOf(const StatusNotifierPixmap& pixmap) {
    QImage image(pixmap.width, pixmap.height, QImage::Format_ARGB32);
    for (int y = 0; y < pixmap.height; ++y) {
        const qsizetype bytesOfRow = qsizetype{pixmap.width} * 4;
        qFromBigEndian<quint32>(pixmap.pixels.constData() + y * bytesOfRow, pixmap.width, image.scanLine(y));
    }
    return image;
}

struct Item {
    QString service;
    QImage picture;
    int announcements = 0;
};

} // namespace

// Outside of it, since the rest of what Qt's meta object system makes of the class comes from another file.
class Panel final : public QWidget {
    Q_OBJECT

public:
    Panel(bool isAtTop, int left, int height, bool isSilent) : m_left(left), m_isSilent(isSilent) {
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        setAttribute(Qt::WA_X11NetWmWindowTypeDock);
        setWindowFlags(Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus);
        setGeometry(screen.left(), isAtTop ? screen.top() : screen.top() + screen.height() - height, screen.width(),
                    height);
        reserveEdge(isAtTop, height);
        show();
    }

    void addItem(const QString& service) {
        m_items.push_back({service, {}, 0});
        QDBusConnection bus = QDBusConnection::sessionBus();
        bus.connect(service, itemPath(), itemInterface(), QStringLiteral("NewIcon"), this,
                    SLOT(iconHasChanged(QDBusMessage)));
        tell(QStringLiteral("item ") + service);
        fetch(service);
    }

    void removeItem(const QString& service) {
        std::erase_if(m_items, [&](const Item& item) { return item.service == service; });
        tell(QStringLiteral("gone ") + service);
        update();
    }

    [[nodiscard]] QStringList services() const {
        QStringList services;
        for (const Item& item : m_items) {
            services.append(item.service + itemPath());
        }
        return services;
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.fillRect(rect(), QColor(0x2a, 0x3f, 0x55));
        int left = m_left;
        for (const Item& item : m_items) {
            const QRect cell(left, 0, cellWidth, height());
            QRect picture(QPoint(), item.picture.size());
            picture.moveCenter(cell.center());
            painter.drawImage(picture.topLeft(), item.picture);
            left += cellWidth;
        }
    }

    void mousePressEvent(QMouseEvent* event) override {
        const auto index = static_cast<std::size_t>(qMax(0, (event->position().toPoint().x() - m_left) / cellWidth));
        if (event->position().x() < m_left || index >= m_items.size()) {
            return;
        }
        const QPoint place = m_isSilent ? QPoint() : event->globalPosition().toPoint();
        QDBusMessage call = QDBusMessage::createMethodCall(
            m_items[index].service, itemPath(), itemInterface(),
            event->button() == Qt::RightButton ? QStringLiteral("ContextMenu") : QStringLiteral("Activate"));
        call << place.x() << place.y();
        QDBusConnection::sessionBus().asyncCall(call);
    }

private Q_SLOTS:
    void iconHasChanged(const QDBusMessage& message) {
        // Signals carry the connection's own name; there is one item on each.
        for (Item& item : m_items) {
            if (item.service == message.service() || m_owners[item.service] == message.service()) {
                ++item.announcements;
                fetch(item.service);
            }
        }
    }

private:
    void reserveEdge(bool isAtTop, int height) {
        const auto reserved = static_cast<std::uint32_t>(height);
        const std::array<std::uint32_t, 4> strut{0, 0, isAtTop ? reserved : 0, isAtTop ? 0 : reserved};
        xcb_change_property(connection(), XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(winId()),
                            atomOf("_NET_WM_STRUT"), XCB_ATOM_CARDINAL, 32, strut.size(), strut.data());
    }

    void fetch(const QString& service) {
        QDBusMessage question =
            QDBusMessage::createMethodCall(service, itemPath(), propertiesInterface(), QStringLiteral("GetAll"));
        question << itemInterface();
        auto* const answer = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
        connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, service] {
            const QDBusPendingReply<QVariantMap> reply(*answer);
            answer->deleteLater();
            if (reply.isError()) {
                tell(QStringLiteral("error ") + reply.error().message());
                return;
            }
            m_owners[service] = reply.reply().service();
            show(service, qdbus_cast<StatusNotifierPixmaps>(reply.value().value(QStringLiteral("IconPixmap"))));
        });
    }

    void show(const QString& service, const StatusNotifierPixmaps& pixmaps) {
        for (Item& item : m_items) {
            if (item.service != service || pixmaps.isEmpty()) {
                continue;
            }
            item.picture = imageOf(pixmaps.first());
            QString line = QStringLiteral("icon %1").arg(item.announcements);
            for (const StatusNotifierPixmap& pixmap : pixmaps) {
                line += QStringLiteral(" %1x%2").arg(pixmap.width).arg(pixmap.height);
            }
            tell(line);
        }
        repaint();
    }
    using QWidget::show;

    int m_left;
    bool m_isSilent;
    std::vector<Item> m_items;
    std::map<QString, QString> m_owners;
};

namespace {

/// Knows of all items; here it is also the panel's own window on them.
class Watcher final : public QDBusVirtualObject {
public:
    explicit Watcher(Panel& panel) : m_panel(panel), m_services(&panel) {
        QDBusConnection bus = QDBusConnection::sessionBus();
        m_services.setConnection(bus);
        m_services.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
        connect(&m_services, &QDBusServiceWatcher::serviceUnregistered, this,
                [this](const QString& service) { m_panel.removeItem(service); });
        bus.registerVirtualObject(QStringLiteral("/StatusNotifierWatcher"), this);
        if (!bus.registerService(watcherName())) {
            tell(QStringLiteral("error there is a watcher already"));
        }
    }

    /// Qt's own tray class asks for the properties only where they are described.
    [[nodiscard]] QString introspect(const QString& /*path*/) const override {
        return QStringLiteral("<interface name=\"org.kde.StatusNotifierWatcher\">"
                              "<property name=\"RegisteredStatusNotifierItems\" type=\"as\" access=\"read\"/>"
                              "<property name=\"IsStatusNotifierHostRegistered\" type=\"b\" access=\"read\"/>"
                              "<property name=\"ProtocolVersion\" type=\"i\" access=\"read\"/>"
                              "<method name=\"RegisterStatusNotifierItem\">"
                              "<arg name=\"service\" type=\"s\" direction=\"in\"/></method>"
                              "</interface>");
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.interface() == QLatin1String("org.freedesktop.DBus.Introspectable")) {
            return false; // Qt answers with the description above
        }
        if (message.interface() == propertiesInterface()) {
            const QVariantMap properties{
                {QStringLiteral("RegisteredStatusNotifierItems"), m_panel.services()},
                {QStringLiteral("IsStatusNotifierHostRegistered"), true},
                {QStringLiteral("ProtocolVersion"), 0},
            };
            const QString name = message.arguments().value(1).toString();
            connection.send(message.member() == QLatin1String("GetAll")
                                ? message.createReply(QVariant(properties))
                                : message.createReply(QVariant::fromValue(QDBusVariant(properties.value(name)))));
            return true;
        }
        if (message.member() == QLatin1String("RegisterStatusNotifierItem")) {
            const QString service = message.arguments().value(0).toString();
            m_services.addWatchedService(service);
            m_panel.addItem(service);
        }
        connection.send(message.createReply());
        return true;
    }

private:
    Panel& m_panel;
    QDBusServiceWatcher m_services;
};

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption edge(QStringLiteral("edge"), {}, QStringLiteral("edge"), QStringLiteral("top"));
    const QCommandLineOption left(QStringLiteral("left"), {}, QStringLiteral("pixels"), QStringLiteral("600"));
    const QCommandLineOption height(QStringLiteral("height"), {}, QStringLiteral("pixels"), QStringLiteral("26"));
    const QCommandLineOption silent(QStringLiteral("silent"));
    const QCommandLineOption deafTray(QStringLiteral("deaf-tray"));
    parser.addOptions({edge, left, height, silent, deafTray});
    parser.process(application);
    registerStatusNotifierTypes();
    Panel panel(parser.value(edge) == QLatin1String("top"), parser.value(left).toInt(), parser.value(height).toInt(),
                parser.isSet(silent));
    const Watcher watcher(panel);
    if (parser.isSet(deafTray)) {
        xcb_set_selection_owner(connection(), static_cast<xcb_window_t>(panel.winId()), atomOf("_NET_SYSTEM_TRAY_S0"),
                                XCB_CURRENT_TIME);
        xcb_flush(connection());
    }
    tell(QStringLiteral("ready"));
    return QApplication::exec();
}

#if __has_include("StatusNotifierPanel.moc") // made by the build, which a check of the source alone does without
#include "StatusNotifierPanel.moc"
#endif
