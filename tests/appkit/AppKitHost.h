// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSEvent.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>

#include <QTest>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

inline void expectNear(const NSRect& actual, const NSRect& expected, double tolerance) {
    EXPECT_NEAR(actual.origin.x, expected.origin.x, tolerance);
    EXPECT_NEAR(actual.origin.y, expected.origin.y, tolerance);
    EXPECT_NEAR(actual.size.width, expected.size.width, tolerance);
    EXPECT_NEAR(actual.size.height, expected.size.height, tolerance);
}

/// The names of what is posted while it lives, in order.
class Posts {
public:
    explicit Posts(NSNotificationSender sender = nullptr)
        : m_observation(NSNotificationCenter::defaultCenter().addObserverForName(
              "", sender, [this](const NSNotification& post) { names.emplace_back(post.name); })) {}

    std::vector<std::string> names;

private:
    NSNotificationObservation m_observation;
};

/// A window without a frame that writes down the events it is sent and those that its views had no use for.
class HostWindow : public NSWindow {
public:
    explicit HostWindow(const NSRect& frame, unsigned styleMask = NSBorderlessWindowMask)
        : NSWindow(frame, styleMask, NSBackingStoreBuffered, false) {}

    bool canBecomeKeyWindow() const override { return takesKeyboard; }
    bool canBecomeMainWindow() const override { return takesCommands && isVisible(); }
    void sendEvent(const NSEvent& event) override {
        sent.push_back(event);
        if (!dropsEvents) {
            NSWindow::sendEvent(event);
        }
    }
    void mouseDown(const NSEvent& /*event*/) override { unused.emplace_back("mouseDown"); }
    void mouseDragged(const NSEvent& /*event*/) override { unused.emplace_back("mouseDragged"); }
    void mouseUp(const NSEvent& /*event*/) override { unused.emplace_back("mouseUp"); }
    void rightMouseDown(const NSEvent& /*event*/) override { unused.emplace_back("rightMouseDown"); }
    void keyDown(const NSEvent& /*event*/) override { unused.emplace_back("keyDown"); }

    ViewCore& content() const { return *ViewCore::of(contentView()); }

    /// The types of what was sent, by AppKit's numbers.
    std::vector<int> sentTypes() const {
        std::vector<int> types;
        for (const NSEvent& event : sent) {
            types.push_back(event.type());
        }
        return types;
    }

    bool takesKeyboard = true;
    bool takesCommands = true;
    bool dropsEvents = false;
    std::vector<NSEvent> sent;
    std::vector<std::string> unused;
};

/// A view that writes its events down as "name.event" and does with them what the test says.
class HostView : public NSView {
public:
    HostView(std::string name, std::vector<std::string>& log) : m_name(std::move(name)), m_log(log) {
        setFocusPolicy(Qt::StrongFocus);
    }

    void mouseDown(const NSEvent& event) override {
        take("mouseDown", event, [&] { NSView::mouseDown(event); });
    }
    void mouseDragged(const NSEvent& event) override {
        take("mouseDragged", event, [&] { NSView::mouseDragged(event); });
    }
    void mouseUp(const NSEvent& event) override {
        take("mouseUp", event, [&] { NSView::mouseUp(event); });
    }
    void rightMouseDown(const NSEvent& event) override {
        take("rightMouseDown", event, [&] { NSView::rightMouseDown(event); });
    }
    void scrollWheel(const NSEvent& event) override {
        take("scrollWheel", event, [&] { NSView::scrollWheel(event); });
    }
    void keyDown(const NSEvent& event) override {
        take("keyDown", event, [&] { NSView::keyDown(event); });
    }
    void keyUp(const NSEvent& event) override {
        take("keyUp", event, [&] { NSView::keyUp(event); });
    }
    bool performKeyEquivalent(const NSEvent& event) override {
        m_log.push_back(m_name + ".performKeyEquivalent");
        return answersKeys || NSView::performKeyEquivalent(event);
    }
    bool becomeFirstResponder() override {
        m_log.push_back(m_name + ".become");
        const bool answer = NSView::becomeFirstResponder();
        if (whenTaking) {
            whenTaking();
        }
        return answer;
    }
    bool resignFirstResponder() override {
        m_log.push_back(m_name + ".resign");
        const bool answer = NSView::resignFirstResponder();
        if (whenLeaving) {
            whenLeaving();
        }
        return answer;
    }

    bool passesOn = false;
    bool answersKeys = false;
    std::function<void()> whenTaking;
    std::function<void()> whenLeaving;
    std::function<void(const NSEvent&)> handler;
    std::vector<NSEvent> events;

private:
    template <class Base>
    void take(const char* what, const NSEvent& event, const Base& base) {
        m_log.push_back(m_name + "." + what);
        events.push_back(event);
        if (passesOn) {
            base();
        }
        // Last, because it may be the view's end.
        if (const std::function<void(const NSEvent&)> work = handler) {
            work(event);
        }
    }

    std::string m_name;
    std::vector<std::string>& m_log;
};

/// A view that draws what the test says and counts.
class DrawnView : public NSView {
public:
    void drawRect(const NSRect& dirtyRect) override {
        ++drawings;
        lastDirtyRect = dirtyRect;
        if (drawing) {
            drawing();
        }
    }

    std::function<void()> drawing;
    int drawings = 0;
    NSRect lastDirtyRect;
};

/// A base to stand before AppKitHost, for a screen with two pixels a point.
class TwoPixelsAPoint {
protected:
    TwoPixelsAPoint() { qputenv("QT_SCALE_FACTOR", "2"); }
    ~TwoPixelsAPoint() { qunsetenv("QT_SCALE_FACTOR"); }
};

/// An application object of the kit's.
class AppKitHost : public testing::Test {
protected:
    /// Everything that is waiting in the event loop happens, what it causes among it.
    static void settle() {
        for (int round = 0; round < 3; ++round) {
            QCoreApplication::sendPostedEvents();
            QCoreApplication::processEvents();
        }
    }

    static void show(NSWindow& window) {
        window.makeKeyAndOrderFront(nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
        if (window.canBecomeKeyWindow()) {
            ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        }
        settle();
    }

    static HostView& addHostView(ViewCore& superview, const NSRect& frame, const std::string& name,
                                 std::vector<std::string>& log) {
        auto view = std::make_unique<HostView>(name, log);
        view->setFrame(frame);
        superview.addSubview(view.get());
        return *view.release();
    }

private:
    static inline char s_name[] = "host";
    static inline char* s_argv[] = {s_name, nullptr};
    static inline int s_argc = 1;

protected:
    NSApplication application{s_argc, s_argv};
};
