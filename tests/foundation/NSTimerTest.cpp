// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSException.h>
#include <VXKit/platform/foundation/NSTimer.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTest>
#include <QThread>

#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

namespace {

/// Milliseconds after which a test no longer hopes for what it waits for.
constexpr int patience = 20'000;

/// A Qt application, which timers need, for as long as one test.
struct Application {
    int count = 1;
    char name[5] = "test";
    char* arguments[2] = {name, nullptr};
    QCoreApplication application{count, arguments};
};

/// Something for a block to hold; tells when it goes.
class Held {
public:
    explicit Held(std::function<void()> atTheEnd) : m_atTheEnd(std::move(atTheEnd)) {}
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    ~Held() { m_atTheEnd(); }

private:
    std::function<void()> m_atTheEnd;
};

std::shared_ptr<NSTimer> every(double seconds, NSTimer::Block block) {
    return NSTimer::scheduledTimerWithTimeInterval(seconds, NSTimerRepeats::Yes, std::move(block));
}

std::shared_ptr<NSTimer> once(double seconds, NSTimer::Block block) {
    return NSTimer::scheduledTimerWithTimeInterval(seconds, NSTimerRepeats::No, std::move(block));
}

/// Lets the event loop work until a timer scheduled now has fired, and so every one that was due before.
void letDueTimersFire() {
    bool fired = false;
    once(0.005, [&](NSTimer&) { fired = true; });
    EXPECT_TRUE(QTest::qWaitFor([&] { return fired; }, patience));
}

} // namespace

TEST(NSTimer, FiresOnceAfterItsInterval) {
    const Application application;
    QElapsedTimer clock;
    clock.start();
    int firings = 0;
    const auto timer = once(0.03, [&](NSTimer&) { ++firings; });
    EXPECT_TRUE(timer->isValid());
    ASSERT_TRUE(QTest::qWaitFor([&] { return firings == 1; }, patience));
    EXPECT_GE(clock.elapsed(), 29);
    EXPECT_FALSE(timer->isValid());
    letDueTimersFire();
    EXPECT_EQ(firings, 1);
}

TEST(NSTimer, IsValidWhileItsOnlyFiringRuns) {
    const Application application;
    bool wasValid = false;
    const auto timer = once(0, [&](NSTimer& self) { wasValid = self.isValid(); });
    ASSERT_TRUE(QTest::qWaitFor([&] { return !timer->isValid(); }, patience));
    EXPECT_TRUE(wasValid);
}

TEST(NSTimer, RepeatsUntilInvalidated) {
    const Application application;
    int firings = 0;
    const auto timer = every(0.001, [&](NSTimer& self) {
        if (++firings == 3) {
            self.invalidate();
        }
    });
    ASSERT_TRUE(QTest::qWaitFor([&] { return !timer->isValid(); }, patience));
    letDueTimersFire();
    EXPECT_EQ(firings, 3);
}

TEST(NSTimer, IsHeldByTheEventLoop) {
    const Application application;
    int firings = 0;
    std::weak_ptr<NSTimer> timer = every(0.001, [&](NSTimer&) { ++firings; });
    ASSERT_TRUE(QTest::qWaitFor([&] { return firings == 2; }, patience));
    ASSERT_FALSE(timer.expired());
    timer.lock()->invalidate();
    EXPECT_TRUE(timer.expired());
}

TEST(NSTimer, TellsTheIntervalThatItRepeatsAfter) {
    const Application application;
    EXPECT_EQ(every(300, {})->timeInterval(), 300);
    EXPECT_EQ(every(0, {})->timeInterval(), 0.0001);
    EXPECT_EQ(every(-5, {})->timeInterval(), 0.0001);
    EXPECT_EQ(once(300, {})->timeInterval(), 0);
}

TEST(NSTimer, TakesAnIntervalBeyondTheReachOfQt) {
    const Application application;
    int firings = 0;
    const auto timer = every(1e12, [&](NSTimer&) { ++firings; });
    const auto never = every(std::numeric_limits<double>::infinity(), [&](NSTimer&) { ++firings; });
    letDueTimersFire();
    EXPECT_TRUE(timer->isValid());
    EXPECT_TRUE(never->isValid());
    EXPECT_EQ(firings, 0);
}

TEST(NSTimer, KeepsToTheMultiplesOfAnIntervalThatIsNoWholeMillisecond) {
    const Application application;
    QElapsedTimer clock;
    clock.start();
    int firings = 0;
    const auto timer = every(0.0125, [&](NSTimer&) { ++firings; });
    ASSERT_TRUE(QTest::qWaitFor([&] { return firings == 20; }, patience));
    EXPECT_GE(clock.elapsed(), 248);
}

TEST(NSTimer, LeavesMissedFiringsOut) {
    const Application application;
    QElapsedTimer clock;
    clock.start();
    std::vector<qint64> firings;
    const auto timer = every(0.01, [&](NSTimer&) {
        firings.push_back(clock.elapsed());
        while (firings.size() == 1 && clock.elapsed() < 115) {
        }
    });
    ASSERT_TRUE(QTest::qWaitFor([&] { return firings.size() >= 3; }, patience));
    EXPECT_GE(firings[1], 118);
    EXPECT_GE(firings[2], 128);
}

TEST(NSTimer, DoesNotFireInsideItsOwnBlock) {
    const Application application;
    int firings = 0;
    int depth = 0;
    int deepest = 0;
    const auto timer = every(0.001, [&](NSTimer& self) {
        deepest = std::max(deepest, ++depth);
        if (++firings == 1) {
            letDueTimersFire();
            self.fire();
        }
        --depth;
    });
    ASSERT_TRUE(QTest::qWaitFor([&] { return firings >= 3; }, patience));
    EXPECT_EQ(deepest, 1);
}

TEST(NSTimer, GoesOnAfterABlockThatWasFiredByHandRanTheEventLoop) {
    const Application application;
    int firings = 0;
    const auto timer = every(0.001, [&](NSTimer&) {
        if (++firings == 1) {
            letDueTimersFire();
        }
    });
    timer->fire();
    EXPECT_EQ(firings, 1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return firings >= 3; }, patience));
}

TEST(NSTimer, FiresByHand) {
    const Application application;
    int firings = 0;
    const auto repeating = every(300, [&](NSTimer&) { ++firings; });
    repeating->fire();
    repeating->fire();
    EXPECT_EQ(firings, 2);
    EXPECT_TRUE(repeating->isValid());
    repeating->invalidate();
    repeating->fire();
    EXPECT_EQ(firings, 2);

    const auto single = once(300, [&](NSTimer&) { ++firings; });
    single->fire();
    single->fire();
    EXPECT_EQ(firings, 3);
    EXPECT_FALSE(single->isValid());
}

TEST(NSTimer, DropsItsBlockWhenInvalidated) {
    const Application application;
    bool isHeld = true;
    const auto timer = every(300, [held = std::make_shared<Held>([&] { isHeld = false; })](NSTimer&) {});
    EXPECT_TRUE(isHeld);
    timer->invalidate();
    EXPECT_FALSE(isHeld);
}

TEST(NSTimer, DropsItsBlockAfterTheRunThatInvalidatedIt) {
    const Application application;
    bool isHeld = true;
    bool wasHeldInside = false;
    const auto timer = every(0, [&, held = std::make_shared<Held>([&] { isHeld = false; })](NSTimer& self) {
        self.invalidate();
        wasHeldInside = isHeld;
    });
    ASSERT_TRUE(QTest::qWaitFor([&] { return !timer->isValid(); }, patience));
    EXPECT_TRUE(wasHeldInside);
    EXPECT_FALSE(isHeld);
}

TEST(NSTimer, DropsItsBlockAfterItsOnlyFiring) {
    const Application application;
    bool isHeld = true;
    const auto timer = once(0, [held = std::make_shared<Held>([&] { isHeld = false; })](NSTimer&) {});
    EXPECT_TRUE(QTest::qWaitFor([&] { return !isHeld; }, patience));
}

TEST(NSTimer, SurvivesTheLossOfEveryHandleInsideItsBlock) {
    const Application application;
    std::shared_ptr<NSTimer> timer;
    bool wasInvalid = false;
    timer = every(0, [&](NSTimer& self) {
        self.invalidate();
        timer.reset();
        wasInvalid = !self.isValid();
    });
    EXPECT_TRUE(QTest::qWaitFor([&] { return wasInvalid; }, patience));
}

TEST(NSTimer, MayBeInvalidatedByWhatItsBlockHolds) {
    const Application application;
    std::shared_ptr<NSTimer> timer;
    int ends = 0;
    timer = every(300, [held = std::make_shared<Held>([&] {
                            ++ends;
                            timer->invalidate();
                        })](NSTimer&) {});
    timer->invalidate();
    EXPECT_EQ(ends, 1);
}

TEST(NSTimer, LogsAnExceptionOfItsBlockAndGoesOn) {
    const Application application;
    int firings = 0;
    testing::internal::CaptureStderr();
    const auto timer = every(0.001, [&](NSTimer&) {
        switch (++firings) {
        case 1:
            throw NSException(NSInvalidArgumentException, QStringLiteral("no such note"));
        case 2:
            throw 42;
        default:
            break;
        }
    });
    EXPECT_TRUE(QTest::qWaitFor([&] { return firings >= 3; }, patience));
    EXPECT_TRUE(timer->isValid());
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("NSInvalidArgumentException: no such note"), std::string::npos) << log;
    EXPECT_NE(log.find("unknown type"), std::string::npos) << log;
}

TEST(NSTimer, IsInvalidWithoutAnApplication) {
    bool isHeld = true;
    testing::internal::CaptureStderr();
    const auto timer = every(0, [held = std::make_shared<Held>([&] { isHeld = false; })](NSTimer&) {});
    EXPECT_NE(testing::internal::GetCapturedStderr().find("timer cannot be scheduled"), std::string::npos);
    ASSERT_TRUE(timer);
    EXPECT_FALSE(timer->isValid());
    EXPECT_FALSE(isHeld);
    timer->fire();
    timer->invalidate();
}

TEST(NSTimer, IsInvalidOnAThreadWithoutAnEventLoop) {
    const Application application;
    testing::internal::CaptureStderr();
    bool wasValid = true;
    std::thread([&] { wasValid = every(0, {})->isValid(); }).join();
    EXPECT_FALSE(wasValid);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("timer cannot be scheduled"), std::string::npos);
}

TEST(NSTimer, FiresOnTheThreadThatScheduledItAndEndsWithIt) {
    const Application application;
    std::atomic<bool> isHeld = true;
    std::atomic<QThread*> firedOn = nullptr;
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        QEventLoop loop;
        every(0.001, [&, held = std::make_shared<Held>([&] { isHeld = false; })](NSTimer&) {
            firedOn = QThread::currentThread();
            loop.quit();
        });
        loop.exec();
    }));
    thread->start();
    ASSERT_TRUE(thread->wait(patience));
    EXPECT_EQ(firedOn.load(), thread.get());
    EXPECT_FALSE(isHeld);
}

TEST(NSTimer, EndsWithTheApplicationInTheOrderOfScheduling) {
    for (int run = 0; run < 2; ++run) {
        std::vector<int> ended;
        std::vector<bool> applicationStood;
        std::shared_ptr<NSTimer> timer;
        {
            const Application application;
            for (int number = 0; number < 3; ++number) {
                timer = every(300, [held = std::make_shared<Held>([&ended, &applicationStood, number] {
                                        ended.push_back(number);
                                        applicationStood.push_back(QCoreApplication::instance() != nullptr);
                                    })](NSTimer&) {});
            }
            EXPECT_TRUE(ended.empty());
        }
        EXPECT_FALSE(timer->isValid());
        EXPECT_EQ(ended, (std::vector{0, 1, 2}));
        EXPECT_EQ(applicationStood, std::vector<bool>(3, true));
    }
}

TEST(NSTimer, UsesTheIntervalsOfATest) {
    const Application application;
    std::vector<double> asked;
    int firings = 0;
    {
        const NSTimer::IntervalsForTesting outer([](double) { return 600.0; });
        const NSTimer::IntervalsForTesting inner([&](double seconds) {
            asked.push_back(seconds);
            return 0.0;
        });
        const auto timer = every(300, [&](NSTimer&) { ++firings; });
        EXPECT_EQ(timer->timeInterval(), 300);
        ASSERT_TRUE(QTest::qWaitFor([&] { return firings >= 2; }, patience));
        timer->invalidate();
    }
    EXPECT_EQ(asked, std::vector{300.0});
    const auto unchanged = once(0.001, [&](NSTimer&) { firings = -1; });
    EXPECT_TRUE(QTest::qWaitFor([&] { return firings == -1; }, patience));
}
