// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/StatusItemHosts.h>

#include <tests/status/FakeStatusItemHost.h>
#include <tests/status/StatusTest.h>

#include <QGuiApplication>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <utility>

namespace {

using Availability = StatusItemHost::Availability;
using Kind = StatusItemHost::Kind;

/// Longer than any test lasts, and none: whether an item waits must not hang on how fast the machine is.
constexpr std::chrono::hours endlessPatience(1);
constexpr std::chrono::milliseconds noPatience(0);

class StatusItemHostsTest : public StatusTest {
protected:
    StatusItemHosts& makeHosts(Availability tray, Availability notifier, std::chrono::milliseconds patience) {
        StatusItemHosts::Hosts hosts;
        m_tray = add(hosts, Kind::Tray, tray);
        m_notifier = add(hosts, Kind::StatusNotifier, notifier);
        m_corner = add(hosts, Kind::Corner, Availability::Present);
        m_hosts = std::make_unique<StatusItemHosts>(std::move(hosts), patience);
        return *m_hosts;
    }

    static FakeStatusItemHost* add(StatusItemHosts::Hosts& hosts, Kind kind, Availability availability) {
        auto host = std::make_unique<FakeStatusItemHost>(kind, availability);
        FakeStatusItemHost* added = host.get();
        hosts.push_back(std::move(host));
        return added;
    }

    QWidget m_window;
    std::unique_ptr<StatusItemHosts> m_hosts;
    FakeStatusItemHost* m_tray = nullptr;
    FakeStatusItemHost* m_notifier = nullptr;
    FakeStatusItemHost* m_corner = nullptr;
};

} // namespace

TEST_F(StatusItemHostsTest, PrefersTheTray) {
    StatusItemHosts& hosts = makeHosts(Availability::Present, Availability::Present, endlessPatience);
    hosts.take(m_window);
    EXPECT_EQ(hosts.host(), m_tray);
    EXPECT_EQ(m_tray->window(), &m_window);
}

TEST_F(StatusItemHostsTest, PrefersAPanelToTheCorner) {
    StatusItemHosts& hosts = makeHosts(Availability::Absent, Availability::Present, endlessPatience);
    hosts.take(m_window);
    EXPECT_EQ(hosts.host(), m_notifier);
}

TEST_F(StatusItemHostsTest, TakesTheCornerAtOnceWhereNothingElseCanCome) {
    StatusItemHosts& hosts = makeHosts(Availability::Absent, Availability::Absent, endlessPatience);
    hosts.take(m_window);
    EXPECT_EQ(hosts.host(), m_corner);
}

TEST_F(StatusItemHostsTest, WaitsForAPanelThatHasNotAnswered) {
    StatusItemHosts& hosts = makeHosts(Availability::Absent, Availability::Undecided, endlessPatience);
    hosts.take(m_window);
    EXPECT_EQ(hosts.host(), nullptr);
    m_notifier->setAvailability(Availability::Present);
    EXPECT_EQ(hosts.host(), m_notifier);
    EXPECT_EQ(m_corner->timesTaken(), 0);
}

TEST_F(StatusItemHostsTest, TakesTheCornerAtOnceWhenThePanelSaysNo) {
    StatusItemHosts& hosts = makeHosts(Availability::Absent, Availability::Undecided, endlessPatience);
    hosts.take(m_window);
    m_notifier->setAvailability(Availability::Absent);
    EXPECT_EQ(hosts.host(), m_corner);
}

TEST_F(StatusItemHostsTest, DoesNotWaitForeverForAnAnswer) {
    StatusItemHosts& hosts = makeHosts(Availability::Absent, Availability::Undecided, noPatience);
    hosts.take(m_window);
    EXPECT_TRUE(QTest::qWaitFor([&] { return hosts.host() == m_corner; }));
}

TEST_F(StatusItemHostsTest, MovesToThePanelWhenTheTrayIsGone) {
    StatusItemHosts& hosts = makeHosts(Availability::Present, Availability::Present, noPatience);
    hosts.take(m_window);
    m_tray->setAvailability(Availability::Absent);
    EXPECT_TRUE(QTest::qWaitFor([&] { return hosts.host() == m_notifier; }));
    EXPECT_FALSE(m_tray->hasItem());
    EXPECT_TRUE(m_notifier->hasItem());
    EXPECT_EQ(m_corner->timesTaken(), 0);
}

TEST_F(StatusItemHostsTest, MovesBackAtOnceWhenTheTrayReturns) {
    StatusItemHosts& hosts = makeHosts(Availability::Absent, Availability::Present, endlessPatience);
    hosts.take(m_window);
    m_tray->setAvailability(Availability::Present);
    EXPECT_EQ(hosts.host(), m_tray);
    EXPECT_FALSE(m_notifier->hasItem());
}

TEST_F(StatusItemHostsTest, LeavesTheItemToATrayThatIsStartedAgain) {
    StatusItemHosts& hosts = makeHosts(Availability::Present, Availability::Absent, endlessPatience);
    hosts.take(m_window);
    m_tray->setAvailability(Availability::Absent);
    EXPECT_EQ(hosts.host(), m_tray);
    m_tray->setAvailability(Availability::Present);
    EXPECT_EQ(hosts.host(), m_tray);
    EXPECT_EQ(m_tray->timesTaken(), 1);
    EXPECT_EQ(m_corner->timesTaken(), 0);
}

TEST_F(StatusItemHostsTest, GivesUpOnATrayThatStaysAway) {
    StatusItemHosts& hosts = makeHosts(Availability::Present, Availability::Absent, noPatience);
    hosts.take(m_window);
    m_tray->setAvailability(Availability::Absent);
    EXPECT_TRUE(QTest::qWaitFor([&] { return hosts.host() == m_corner; }));
}

TEST_F(StatusItemHostsTest, EstimatesAFrameBeforeTheItemHasAPlace) {
    const StatusItemHosts& hosts = makeHosts(Availability::Absent, Availability::Undecided, endlessPatience);
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    EXPECT_EQ(hosts.itemFrame().right(), screen.right() + 1);
    EXPECT_EQ(hosts.itemFrame().top(), screen.top());
    EXPECT_EQ(hosts.itemFrame().height(), hosts.thickness());
}

TEST_F(StatusItemHostsTest, TellsOfFramesOfTheHostWithTheItemAlone) {
    StatusItemHosts& hosts = makeHosts(Availability::Present, Availability::Present, endlessPatience);
    hosts.take(m_window);
    const QSignalSpy moves(&hosts, &StatusItemHosts::frameChanged);
    m_notifier->setItemFrame({1, 2, 3, 4});
    EXPECT_EQ(moves.count(), 0);
    m_tray->setItemFrame({5, 6, 7, 8});
    EXPECT_EQ(moves.count(), 1);
    EXPECT_EQ(hosts.itemFrame(), QRectF(5, 6, 7, 8));
}

TEST_F(StatusItemHostsTest, KeepsTheLastFrameWhileTheItemIsOnItsWay) {
    StatusItemHosts& hosts = makeHosts(Availability::Present, Availability::Absent, endlessPatience);
    hosts.take(m_window);
    m_tray->setItemFrame({5, 6, 7, 8});
    m_tray->setItemFrame({});
    EXPECT_EQ(hosts.itemFrame(), QRectF(5, 6, 7, 8));
}

TEST_F(StatusItemHostsTest, GivesTheWidthToWhicheverHostHasTheItem) {
    StatusItemHosts& hosts = makeHosts(Availability::Present, Availability::Present, noPatience);
    hosts.setItemWidth(60);
    hosts.take(m_window);
    EXPECT_EQ(m_tray->itemWidth(), 60);
    m_tray->setAvailability(Availability::Absent);
    ASSERT_TRUE(QTest::qWaitFor([&] { return hosts.host() == m_notifier; }));
    EXPECT_EQ(m_notifier->itemWidth(), 60);
    hosts.setItemWidth(0);
    EXPECT_EQ(m_notifier->itemWidth(), 1);
}

TEST_F(StatusItemHostsTest, ReleasesTheItem) {
    StatusItemHosts& hosts = makeHosts(Availability::Present, Availability::Absent, noPatience);
    hosts.take(m_window);
    hosts.release();
    EXPECT_EQ(hosts.host(), nullptr);
    EXPECT_FALSE(m_tray->hasItem());
    m_tray->setAvailability(Availability::Absent);
    EXPECT_EQ(hosts.host(), nullptr);
}

TEST_F(StatusItemHostsTest, SurvivesItsEndByWhoeverHearsOfAMove) {
    makeHosts(Availability::Absent, Availability::Present, endlessPatience).take(m_window);
    QObject::connect(m_hosts.get(), &StatusItemHosts::hostChanged, m_hosts.get(), [this] { delete m_hosts.release(); });
    m_tray->setAvailability(Availability::Present);
    EXPECT_EQ(m_hosts, nullptr);
}

TEST_F(StatusItemHostsTest, SurvivesTheEndOfTheWindow) {
    StatusItemHosts& hosts = makeHosts(Availability::Present, Availability::Absent, noPatience);
    {
        QWidget window;
        hosts.take(window);
    }
    EXPECT_FALSE(m_tray->hasItem());
    m_tray->setAvailability(Availability::Absent);
    hosts.take(m_window);
    EXPECT_EQ(m_corner->window(), &m_window);
}

TEST_F(StatusItemHostsTest, ReachesForNoSessionWithoutADesktop) {
    const StatusItemHosts::Hosts hosts = StatusItemHosts::standardHosts();
    ASSERT_EQ(hosts.size(), 1U);
    EXPECT_EQ(hosts.front()->kind(), Kind::Corner);
}
