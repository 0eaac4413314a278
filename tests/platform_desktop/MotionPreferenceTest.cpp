// SPDX-License-Identifier: MIT
#include "../SessionBus.h"

#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/desktop/MotionPreference.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QMap>
#include <QTest>
#include <QTimer>
#include <QVariantMap>

#include <memory>
#include <optional>
#include <vector>

#include <gmock/gmock.h>

using Settings = QMap<QString, QVariantMap>;
Q_DECLARE_METATYPE(Settings)

namespace {

const QString gnome = QStringLiteral("org.gnome.desktop.interface");
const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString kde = QStringLiteral("org.kde.kdeglobals.KDE");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");

/// A portal of the desktop, on a connection of its own.
class FakePortal final : public QDBusVirtualObject {
public:
    explicit FakePortal(const QString& address)
        : m_bus(QDBusConnection::connectToBus(address, QStringLiteral("portal"))) {
        qDBusRegisterMetaType<Settings>();
        m_bus.registerVirtualObject(portalPath, this);
        m_bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
    }
    ~FakePortal() override { QDBusConnection::disconnectFromBus(QStringLiteral("portal")); }

    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        ++questions;
        asked = message.arguments().value(0).toStringList();
        if (message.member() != QLatin1String("ReadAll") || !answers) {
            return true;
        }
        connection.send(message.createReply(answer ? *answer : QVariant::fromValue(settings)));
        return true;
    }

    void announce(const QVariantList& arguments) {
        QDBusMessage signal =
            QDBusMessage::createSignal(portalPath, settingsInterface, QStringLiteral("SettingChanged"));
        signal.setArguments(arguments);
        m_bus.send(signal);
    }
    void change(const QString& nameSpace, const QString& key, const QVariant& value) {
        announce({nameSpace, key, QVariant::fromValue(QDBusVariant(value))});
    }

    Settings settings{{gnome, {{QStringLiteral("enable-animations"), true}}}};
    std::optional<QVariant> answer; // in place of the settings
    bool answers = true;
    int questions = 0;
    QStringList asked;

private:
    QDBusConnection m_bus;
};

class MotionPreferenceTest : public testing::Test {
protected:
    void SetUp() override {
        if (!SessionBus::canBeHad()) {
            GTEST_SKIP() << "dbus-daemon is not installed";
        }
        m_bus = std::make_unique<SessionBus>();
        m_application = std::make_unique<NSApplication>(m_argc, m_argv.data());
        QCoreApplication::setApplicationName(QStringLiteral("motion"));
    }
    void startPortal() { portal = std::make_unique<FakePortal>(m_bus->address()); }

    static bool becomes(bool reduced) {
        return QTest::qWaitFor([reduced] { return prefersReducedMotion() == reduced; });
    }
    /// Begins to ask, and waits until the answer has been taken in.
    void ask() const {
        askForMotionPreference();
        ASSERT_TRUE(QTest::qWaitFor([this] { return portal->questions > 0; }));
        // What the portal has sent after its answer comes after it.
        portal->change(QStringLiteral("org.kde.kdeglobals.KDE"), QStringLiteral("AnimationDurationFactor"),
                       QStringLiteral("0"));
        ASSERT_TRUE(becomes(true));
        portal->change(QStringLiteral("org.kde.kdeglobals.KDE"), QStringLiteral("AnimationDurationFactor"),
                       QStringLiteral("1"));
        ASSERT_TRUE(becomes(false));
    }

    std::unique_ptr<FakePortal> portal;

private:
    std::unique_ptr<SessionBus> m_bus;
    std::unique_ptr<NSApplication> m_application;
    int m_argc = 1;
    std::array<char, 7> m_name{"motion"};
    std::array<char*, 2> m_argv{m_name.data(), nullptr};
};

} // namespace

TEST_F(MotionPreferenceTest, IsNotReducedWhereNobodySaysSo) {
    EXPECT_FALSE(prefersReducedMotion());
    QCoreApplication::processEvents();
    EXPECT_FALSE(prefersReducedMotion());
}

TEST_F(MotionPreferenceTest, FollowsTheUserDefaultAtOnce) {
    NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
    defaults.setBool(true, "VXReduceMotion");
    EXPECT_TRUE(prefersReducedMotion());
    defaults.setBool(false, "VXReduceMotion");
    EXPECT_FALSE(prefersReducedMotion());
    defaults.removeObjectForKey("VXReduceMotion");
    EXPECT_FALSE(prefersReducedMotion());
}

TEST_F(MotionPreferenceTest, MakesAnimationsJumpToTheirEnd) {
    QObject target;
    std::vector<double> steps;
    const auto run = [&] {
        steps.clear();
        runBlockingAnimation(target, 0.1, [&](double progress) { steps.push_back(progress); });
    };
    EXPECT_FALSE(blockingAnimationsJump());
    run();
    EXPECT_GT(steps.size(), 1U);
    NSUserDefaults::standardUserDefaults().setBool(true, VXReduceMotion);
    EXPECT_TRUE(blockingAnimationsJump());
    run();
    EXPECT_EQ(steps, std::vector<double>{1});
}

TEST_F(MotionPreferenceTest, IsReducedWhereThePortalSaysSo) {
    struct Saying {
        QString nameSpace;
        QString key;
        QVariant value;
        bool isReduced;
    };
    const QString animations = QStringLiteral("enable-animations");
    const QString motion = QStringLiteral("reduced-motion");
    const QString factor = QStringLiteral("AnimationDurationFactor");
    const std::vector<Saying> sayings{
        {gnome, animations, false, true},
        {gnome, animations, true, false},
        {appearance, motion, 1U, true},
        {appearance, motion, 0U, false},
        {appearance, motion, 2U, false},
        {kde, factor, QStringLiteral("0"), true},
        {kde, factor, QStringLiteral("0.5"), false},
        {kde, factor, 0.0, true},
        // Senseless.
        {gnome, animations, QStringLiteral("false"), false},
        {gnome, animations, 0, false},
        {appearance, motion, QStringLiteral("yes"), false},
        {kde, factor, QStringLiteral("fast"), false},
        {kde, factor, QString(), false},
        {QStringLiteral("org.example"), animations, false, false},
    };
    startPortal();
    ask();
    ASSERT_FALSE(prefersReducedMotion());
    for (const Saying& saying : sayings) {
        portal->change(saying.nameSpace, saying.key, saying.value);
        // A change that is surely seen tells that the one before it has come.
        const bool isFactor = saying.key == factor;
        if (saying.isReduced) {
            EXPECT_TRUE(becomes(true)) << saying.key.toStdString() << saying.value.toString().toStdString();
        } else {
            const QString other = isFactor ? motion : factor;
            portal->change(isFactor ? appearance : kde, other, isFactor ? QVariant(1U) : QVariant(QStringLiteral("0")));
            ASSERT_TRUE(becomes(true));
            portal->change(isFactor ? appearance : kde, other, isFactor ? QVariant(0U) : QVariant(QStringLiteral("1")));
            EXPECT_TRUE(becomes(false)) << saying.key.toStdString() << saying.value.toString().toStdString();
        }
        portal->change(gnome, animations, true);
        portal->change(appearance, motion, 0U);
        portal->change(kde, factor, QStringLiteral("1"));
        ASSERT_TRUE(becomes(false));
    }
    EXPECT_EQ(portal->questions, 1) << "it is asked once, and tells the rest";
}

TEST_F(MotionPreferenceTest, TakesInWhatThePortalAnswersFirst) {
    startPortal();
    portal->settings = {{gnome, {{QStringLiteral("enable-animations"), false}}}};
    EXPECT_FALSE(prefersReducedMotion()) << "not waited for";
    EXPECT_TRUE(becomes(true));
    EXPECT_THAT(portal->asked, testing::UnorderedElementsAre(gnome, appearance, kde));
}

TEST_F(MotionPreferenceTest, LooksIntoVariantsWithinVariants) {
    startPortal();
    portal->settings = {{appearance, {{QStringLiteral("reduced-motion"), QVariant::fromValue(QDBusVariant(1U))}}}};
    askForMotionPreference();
    EXPECT_TRUE(becomes(true));
}

TEST_F(MotionPreferenceTest, IsAskedForWhenTheApplicationRuns) {
    startPortal();
    portal->settings = {{appearance, {{QStringLiteral("reduced-motion"), 1U}}}};
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [this] {
        if (portal->questions > 0) {
            NSApplication::sharedApplication()->terminate(nullptr);
        }
    });
    poll.start(1);
    QTimer::singleShot(20000, NSApplication::sharedApplication(), [] { QCoreApplication::exit(1); });
    EXPECT_EQ(NSApplication::sharedApplication()->run(), 0);
}

TEST_F(MotionPreferenceTest, OutlastsAnAnswerOfAnotherKind) {
    startPortal();
    portal->answer = QVariant(QStringLiteral("nonsense"));
    askForMotionPreference();
    ASSERT_TRUE(QTest::qWaitFor([this] { return portal->questions > 0; }));
    portal->change(appearance, QStringLiteral("reduced-motion"), 1U);
    EXPECT_TRUE(becomes(true)) << "what it tells later counts";
}

TEST_F(MotionPreferenceTest, OutlastsAnnouncementsOfAnotherKind) {
    startPortal();
    ask();
    portal->announce({});
    portal->announce({appearance});
    portal->announce({appearance, QStringLiteral("reduced-motion"), 1U});
    portal->announce({1, 2, 3});
    portal->change(gnome, QStringLiteral("enable-animations"), false);
    EXPECT_TRUE(becomes(true));
    portal->change(gnome, QStringLiteral("enable-animations"), true);
    EXPECT_TRUE(becomes(false)) << "and what was not a variant is not taken for one";
}

TEST_F(MotionPreferenceTest, DoesNotWaitForAPortalThatIsSilent) {
    startPortal();
    portal->answers = false;
    QElapsedTimer clock;
    clock.start();
    EXPECT_FALSE(prefersReducedMotion());
    ASSERT_TRUE(QTest::qWaitFor([this] { return portal->questions > 0; }));
    EXPECT_FALSE(prefersReducedMotion());
    EXPECT_LT(clock.elapsed(), 5000);
}
