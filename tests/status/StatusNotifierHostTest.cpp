// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/StatusNotifierHost.h>
#include <VXKit/platform/desktop/StatusNotifierPixmap.h>

#include <tests/SessionBus.h>
#include <tests/status/StatusTest.h>

#include <QCoreApplication>
#include <QCursor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QImage>
#include <QPainter>
#include <QSignalSpy>
#include <QTest>
#include <QVariantMap>
#include <QWidget>

#include <gtest/gtest.h>

#include <memory>
#include <optional>

namespace {

using Availability = StatusItemHost::Availability;

constexpr QRect screen(0, 0, 1000, 800);
constexpr QRect belowPanel(0, 30, 1000, 770);
constexpr QRect abovePanel(0, 0, 1000, 770);
constexpr QSize itemSize(20, 22);

const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString itemInterface = QStringLiteral("org.kde.StatusNotifierItem");
const QString itemPath = QStringLiteral("/StatusNotifierItem");

} // namespace

// Outside of it, since the rest of what Qt's meta object system makes of the class comes from another file.
/// Both a watcher of items and a panel that shows them, on a connection of its own.
class FakePanel final : public QDBusVirtualObject {
    Q_OBJECT

public:
    explicit FakePanel(const QString& address, bool isThere = true)
        : m_bus(QDBusConnection::connectToBus(address, QStringLiteral("panel"))), m_isThere(isThere) {
        registerStatusNotifierTypes();
        m_bus.registerVirtualObject(QStringLiteral("/StatusNotifierWatcher"), this);
        m_bus.registerService(watcherName);
        m_bus.connect(QString(), itemPath, itemInterface, QStringLiteral("NewIcon"), this, SLOT(iconIsNew()));
        m_bus.connect(QString(), itemPath, itemInterface, QStringLiteral("NewTitle"), this, SLOT(titleIsNew()));
        m_bus.connect(QString(), itemPath, itemInterface, QStringLiteral("NewToolTip"), this, SLOT(toolTipIsNew()));
    }
    ~FakePanel() override {
        m_bus.unregisterService(watcherName);
        QDBusConnection::disconnectFromBus(QStringLiteral("panel"));
    }

    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() == QLatin1String("Get")) {
            connection.send(message.createReply(QVariant::fromValue(QDBusVariant(m_isThere))));
            return true;
        }
        if (message.member() == QLatin1String("RegisterStatusNotifierItem")) {
            items.append(message.arguments().value(0).toString());
        }
        connection.send(message.createReply());
        return true;
    }

    void setIsThere(bool isThere) {
        m_isThere = isThere;
        m_bus.send(QDBusMessage::createSignal(QStringLiteral("/StatusNotifierWatcher"), watcherName,
                                              isThere ? QStringLiteral("StatusNotifierHostRegistered")
                                                      : QStringLiteral("StatusNotifierHostUnregistered")));
    }

    /// Calls a method of the item that came last, and answers the reply.
    QDBusMessage call(const QString& interface, const QString& method, const QVariantList& arguments) {
        QDBusMessage message = QDBusMessage::createMethodCall(items.last(), itemPath, interface, method);
        message.setArguments(arguments);
        // Not a blocking call: the item lives in the same thread.
        const QDBusPendingCallWatcher answer(m_bus.asyncCall(message));
        EXPECT_TRUE(QTest::qWaitFor([&] { return answer.isFinished(); }));
        return answer.reply();
    }

    QVariantMap properties() {
        const QDBusMessage reply =
            call(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("GetAll"), {itemInterface});
        return qdbus_cast<QVariantMap>(reply.arguments().value(0));
    }

    StatusNotifierPixmaps pixmaps() {
        return qdbus_cast<StatusNotifierPixmaps>(properties().value(QStringLiteral("IconPixmap")));
    }

    QStringList items;
    int newIcons = 0;
    int newTitles = 0;
    int newToolTips = 0;

private Q_SLOTS:
    void iconIsNew() { ++newIcons; }
    void titleIsNew() { ++newTitles; }
    void toolTipIsNew() { ++newToolTips; }

private:
    QDBusConnection m_bus;
    bool m_isThere;
};

namespace {

/// One colour all over, and how often it was painted.
class ColourView final : public QWidget {
public:
    using QWidget::QWidget;
    QColor colour = Qt::red;
    int paintings = 0;

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        ++paintings;
        QPainter(this).fillRect(rect(), colour);
    }
};

class StatusNotifierHostTest : public StatusTest {
protected:
    void SetUp() override {
        if (!SessionBus::canBeHad()) {
            GTEST_SKIP() << "dbus-daemon is not installed";
        }
        m_bus = std::make_unique<SessionBus>();
        m_view.setParent(&m_window);
        m_view.setGeometry(0, 0, 22, 22);
    }

    void waitForItem(const FakePanel& panel) {
        ASSERT_TRUE(QTest::qWaitFor([&] { return !panel.items.isEmpty(); }));
    }

    std::unique_ptr<SessionBus> m_bus;
    QWidget m_window;
    ColourView m_view;
};

} // namespace

TEST(StatusNotifierPixmap, SendsAlphaFirstAndColoursNotMultipliedByIt) {
    QImage image(2, 1, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    image.setPixelColor(0, 0, QColor(255, 128, 0, 255));
    image.setPixelColor(1, 0, QColor(0, 0, 255, 51));
    const StatusNotifierPixmap pixmap = statusNotifierPixmap(image);
    EXPECT_EQ(pixmap.width, 2);
    EXPECT_EQ(pixmap.height, 1);
    EXPECT_EQ(pixmap.pixels, QByteArray::fromHex("ffff8000330000ff"));
}

TEST(StatusNotifierPixmap, HalvesByTheMeanOfFourPixels) {
    QImage image(4, 2, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::black);
    image.setPixelColor(2, 0, Qt::white);
    image.setPixelColor(3, 1, Qt::white);
    const StatusNotifierPixmaps pixmaps = statusNotifierPixmaps(image);
    ASSERT_EQ(pixmaps.size(), 2);
    EXPECT_EQ(pixmaps.at(0).width, 2);
    EXPECT_EQ(pixmaps.at(0).height, 1);
    EXPECT_EQ(pixmaps.at(0).pixels.left(4), QByteArray::fromHex("ff000000"));
    EXPECT_NEAR(static_cast<unsigned char>(pixmaps.at(0).pixels.at(5)), 127, 1);
    EXPECT_EQ(pixmaps.at(1).width, 4);
}

TEST(StatusNotifierFrame, IsAtTheTopRightBeforeAClick) {
    EXPECT_EQ(StatusNotifierHost::estimatedFrame(std::nullopt, itemSize, screen, screen), QRect(980, 0, 20, 22));
}

TEST(StatusNotifierFrame, EndsAtTheInnerEdgeOfAPanelAtTheTop) {
    EXPECT_EQ(StatusNotifierHost::estimatedFrame(std::nullopt, itemSize, screen, belowPanel), QRect(980, 8, 20, 22));
    EXPECT_EQ(StatusNotifierHost::estimatedFrame(QPoint(500, 12), itemSize, screen, belowPanel), QRect(490, 8, 20, 22));
}

TEST(StatusNotifierFrame, IsAroundAClickInAPanelElsewhere) {
    EXPECT_EQ(StatusNotifierHost::estimatedFrame(QPoint(500, 780), itemSize, screen, abovePanel),
              QRect(490, 769, 20, 22));
    // There is a panel at the top too, and the click was not there.
    EXPECT_EQ(StatusNotifierHost::estimatedFrame(QPoint(500, 700), itemSize, screen, belowPanel),
              QRect(490, 689, 20, 22));
}

TEST(StatusNotifierFrame, StaysOnTheScreen) {
    EXPECT_EQ(StatusNotifierHost::estimatedFrame(QPoint(999, 799), itemSize, screen, abovePanel),
              QRect(980, 778, 20, 22));
    EXPECT_EQ(StatusNotifierHost::estimatedFrame(QPoint(2, 3), itemSize, screen, screen), QRect(0, 0, 20, 22));
    EXPECT_EQ(StatusNotifierHost::estimatedFrame(QPoint(5, 5), QSize(2000, 22), screen, screen).left(), 0);
}

TEST_F(StatusNotifierHostTest, IsAbsentWithoutABus) {
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere");
    StatusNotifierHost host;
    EXPECT_EQ(host.availability(), Availability::Absent);
    host.take(m_window);
    host.release();
}

TEST_F(StatusNotifierHostTest, IsAbsentWithoutAWatcher) {
    StatusNotifierHost host;
    EXPECT_EQ(host.availability(), Availability::Undecided);
    EXPECT_TRUE(QTest::qWaitFor([&] { return host.availability() == Availability::Absent; }));
}

TEST_F(StatusNotifierHostTest, IsAbsentWhereAWatcherKnowsOfNoPanel) {
    FakePanel panel(m_bus->address(), false);
    StatusNotifierHost host;
    EXPECT_TRUE(QTest::qWaitFor([&] { return host.availability() == Availability::Absent; }));
    panel.setIsThere(true);
    EXPECT_TRUE(QTest::qWaitFor([&] { return host.isAvailable(); }));
    panel.setIsThere(false);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !host.isAvailable(); }));
}

TEST_F(StatusNotifierHostTest, FollowsAWatcherThatComesAndGoes) {
    StatusNotifierHost host;
    EXPECT_TRUE(QTest::qWaitFor([&] { return host.availability() == Availability::Absent; }));
    {
        const FakePanel panel(m_bus->address());
        EXPECT_TRUE(QTest::qWaitFor([&] { return host.isAvailable(); }));
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return !host.isAvailable(); }));
}

TEST_F(StatusNotifierHostTest, EnrolsAgainWithAWatcherThatIsStartedAgain) {
    auto panel = std::make_unique<FakePanel>(m_bus->address());
    StatusNotifierHost host;
    ASSERT_TRUE(QTest::qWaitFor([&] { return host.isAvailable(); }));
    host.take(m_window);
    waitForItem(*panel);
    const QString name = panel->items.last();
    EXPECT_TRUE(name.startsWith(QStringLiteral("org.kde.StatusNotifierItem-")));
    panel.reset();
    panel = std::make_unique<FakePanel>(m_bus->address());
    waitForItem(*panel);
    EXPECT_EQ(panel->items.last(), name);
}

TEST_F(StatusNotifierHostTest, SendsThePixelsOfTheView) {
    FakePanel panel(m_bus->address());
    StatusNotifierHost host;
    host.take(m_window);
    host.setTitle(QStringLiteral("Title"));
    host.setToolTip(QStringLiteral("Tip"));
    waitForItem(panel);
    const StatusNotifierPixmaps pixmaps = panel.pixmaps();
    ASSERT_EQ(pixmaps.size(), 2);
    EXPECT_EQ(pixmaps.at(0).width, 22);
    EXPECT_EQ(pixmaps.at(0).height, 22);
    EXPECT_EQ(pixmaps.at(1).width, 44);
    EXPECT_EQ(pixmaps.at(0).pixels.left(4), QByteArray::fromHex("ffff0000"));
    const QVariantMap properties = panel.properties();
    EXPECT_EQ(properties.value(QStringLiteral("Category")), QStringLiteral("ApplicationStatus"));
    EXPECT_EQ(properties.value(QStringLiteral("Status")), QStringLiteral("Active"));
    EXPECT_EQ(properties.value(QStringLiteral("Title")), QStringLiteral("Title"));
    EXPECT_EQ(properties.value(QStringLiteral("ItemIsMenu")), false);
    EXPECT_FALSE(properties.contains(QStringLiteral("Menu")));
    EXPECT_EQ(qdbus_cast<StatusNotifierToolTip>(properties.value(QStringLiteral("ToolTip"))).title,
              QStringLiteral("Tip"));
}

TEST_F(StatusNotifierHostTest, DrawsTheViewOnceForEachDisplay) {
    FakePanel panel(m_bus->address());
    StatusNotifierHost host;
    host.take(m_window);
    waitForItem(panel);
    QCoreApplication::processEvents();
    m_view.paintings = 0;
    m_view.repaint();
    m_view.repaint();
    EXPECT_EQ(m_view.paintings, 2);
    m_view.update();
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_view.paintings == 3; }));
    static_cast<void>(panel.properties());
    QCoreApplication::processEvents();
    EXPECT_EQ(m_view.paintings, 3);
}

TEST_F(StatusNotifierHostTest, IsNeverOnTheScreen) {
    StatusNotifierHost host;
    host.take(m_window);
    EXPECT_TRUE(m_window.isVisible());
    EXPECT_TRUE(m_window.testAttribute(Qt::WA_DontShowOnScreen));
    host.release();
    EXPECT_FALSE(m_window.isVisible());
    EXPECT_FALSE(m_window.testAttribute(Qt::WA_DontShowOnScreen));
    EXPECT_EQ(m_window.graphicsEffect(), nullptr);
}

TEST_F(StatusNotifierHostTest, AnnouncesAPictureOnlyWhenItHasChanged) {
    FakePanel panel(m_bus->address());
    StatusNotifierHost host;
    host.take(m_window);
    waitForItem(panel);
    m_view.repaint();
    m_view.colour = Qt::blue;
    m_view.repaint();
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return panel.pixmaps().at(0).pixels.left(4) == QByteArray::fromHex("ff0000ff"); }));
    ASSERT_TRUE(QTest::qWaitFor([&] { return panel.newIcons >= 1; }));
    const int announced = panel.newIcons;
    m_view.repaint();
    host.setTitle(QStringLiteral("After the picture"));
    // Signals of one connection come in the order in which they were sent.
    ASSERT_TRUE(QTest::qWaitFor([&] { return panel.newTitles == 1; }));
    EXPECT_EQ(panel.newIcons, announced);
}

TEST_F(StatusNotifierHostTest, SendsAWiderPictureOfAnItemThatHasGrown) {
    FakePanel panel(m_bus->address());
    StatusNotifierHost host;
    host.take(m_window);
    waitForItem(panel);
    EXPECT_EQ(host.kind(), StatusItemHost::Kind::StatusNotifier);
    const double before = host.itemFrame().width();
    host.setItemWidth(40);
    EXPECT_EQ(host.itemFrame().width(), before + 40 - 22);
    EXPECT_TRUE(QTest::qWaitFor([&] { return panel.pixmaps().at(0).width == 40; }));
}

TEST_F(StatusNotifierHostTest, AnnouncesAtMostTenPicturesASecond) {
    FakePanel panel(m_bus->address());
    StatusNotifierHost host;
    host.take(m_window);
    waitForItem(panel);
    QElapsedTimer clock;
    clock.start();
    constexpr int pictures = 40;
    for (int picture = 1; picture <= pictures; ++picture) {
        m_view.colour = QColor(picture, 0, 0);
        m_view.repaint();
    }
    const QByteArray last = QByteArray::fromHex("ff280000");
    ASSERT_TRUE(QTest::qWaitFor([&] { return panel.newIcons > 0 && panel.pixmaps().at(0).pixels.left(4) == last; }));
    ASSERT_TRUE(QTest::qWaitFor([&] { return panel.newIcons >= 2; }));
    EXPECT_LE(panel.newIcons, 2 + clock.elapsed() / 100);
}

TEST_F(StatusNotifierHostTest, TellsOfAClickAndMovesThere) {
    FakePanel panel(m_bus->address());
    StatusNotifierHost host;
    host.setItemWidth(20);
    host.take(m_window);
    waitForItem(panel);
    QSignalSpy clicks(&host, &StatusItemHost::activated);
    const QSignalSpy moves(&host, &StatusItemHost::frameChanged);
    EXPECT_EQ(panel.call(itemInterface, QStringLiteral("Activate"), {300, 10}).type(), QDBusMessage::ReplyMessage);
    ASSERT_TRUE(QTest::qWaitFor([&] { return clicks.count() == 1; }));
    EXPECT_EQ(clicks.at(0).at(0).toPoint(), QPoint(300, 10));
    EXPECT_EQ(moves.count(), 1);
    EXPECT_EQ(host.itemFrame().center().x(), 300);
    EXPECT_TRUE(host.mayBeAt({310, 10}));
    EXPECT_FALSE(host.mayBeAt({500, 10}));
}

TEST_F(StatusNotifierHostTest, TakesThePointersPlaceForAClickWithoutOne) {
    FakePanel panel(m_bus->address());
    StatusNotifierHost host;
    host.take(m_window);
    waitForItem(panel);
    QCursor::setPos(123, 45);
    QSignalSpy clicks(&host, &StatusItemHost::activated);
    panel.call(itemInterface, QStringLiteral("Activate"), {0, 0});
    ASSERT_TRUE(QTest::qWaitFor([&] { return clicks.count() == 1; }));
    EXPECT_EQ(clicks.at(0).at(0).toPoint(), QCursor::pos());
}

TEST_F(StatusNotifierHostTest, AsksForTheMenu) {
    FakePanel panel(m_bus->address());
    StatusNotifierHost host;
    host.take(m_window);
    waitForItem(panel);
    QSignalSpy requests(&host, &StatusItemHost::contextMenuRequested);
    panel.call(itemInterface, QStringLiteral("ContextMenu"), {40, 50});
    ASSERT_TRUE(QTest::qWaitFor([&] { return requests.count() == 1; }));
    EXPECT_EQ(requests.at(0).at(0).toPoint(), QPoint(40, 50));
}

TEST_F(StatusNotifierHostTest, AnswersWhatItDoesNotKnowWithAnError) {
    FakePanel panel(m_bus->address());
    StatusNotifierHost host;
    host.take(m_window);
    waitForItem(panel);
    EXPECT_EQ(panel.call(itemInterface, QStringLiteral("Activate"), {}).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(panel.call(itemInterface, QStringLiteral("Nonsense"), {1, 2}).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(panel
                  .call(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
                        {itemInterface, QStringLiteral("Menu")})
                  .type(),
              QDBusMessage::ErrorMessage);
    EXPECT_EQ(panel.call(itemInterface, QStringLiteral("Scroll"), {1, QStringLiteral("vertical")}).type(),
              QDBusMessage::ReplyMessage);
}

TEST_F(StatusNotifierHostTest, DescribesItself) {
    FakePanel panel(m_bus->address());
    StatusNotifierHost host;
    host.take(m_window);
    waitForItem(panel);
    const QDBusMessage reply =
        panel.call(QStringLiteral("org.freedesktop.DBus.Introspectable"), QStringLiteral("Introspect"), {});
    const QString description = reply.arguments().value(0).toString();
    EXPECT_TRUE(description.contains(QStringLiteral("<interface name=\"org.kde.StatusNotifierItem\">")));
    EXPECT_TRUE(description.contains(QStringLiteral("IconPixmap")));
}

TEST_F(StatusNotifierHostTest, ExportsSeveralItems) {
    FakePanel panel(m_bus->address());
    StatusNotifierHost first;
    StatusNotifierHost second;
    QWidget other;
    first.take(m_window);
    second.take(other);
    ASSERT_TRUE(QTest::qWaitFor([&] { return panel.items.size() == 2; }));
    EXPECT_NE(panel.items.at(0), panel.items.at(1));
}

#if __has_include("StatusNotifierHostTest.moc") // made by the build, which a check of the source alone does without
#include "StatusNotifierHostTest.moc"
#endif
