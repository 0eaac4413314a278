// SPDX-License-Identifier: MIT
#include "AppKitHost.h"

#include <QLabel>
#include <QVBoxLayout>

#include <array>
#include <cmath>
#include <limits>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class FlippedView : public NSView {
public:
    bool isFlipped() const override { return true; }
};

class NSViewTest : public AppKitHost {
protected:
    NSViewTest() { super.setFrame(NSMakeRect(0, 0, 200, 100)); }

    /// A view at `frame` of `superview`, with `mask`.
    static NSView& add(ViewCore& superview, const NSRect& frame, unsigned mask = NSViewNotSizable) {
        auto view = std::make_unique<NSView>();
        view->setFrame(frame);
        view->setAutoresizingMask(mask);
        superview.addSubview(view.get());
        return *view.release();
    }

    NSView super;
};

struct Span {
    double position;
    double length;
};

/// One direction of a frame after its superview went from one length to another: what is no spring keeps its length,
/// and the springs are stretched by the same factor until all fit, or by the same length where they have none.
Span stretched(Span span, double before, double after, bool marginIsSpring, bool lengthIsSpring, bool restIsSpring) {
    std::array<double, 3> parts{span.position, span.length, before - span.position - span.length};
    const std::array<bool, 3> isSpring{marginIsSpring, lengthIsSpring, restIsSpring};
    double springs = 0;
    int count = 0;
    for (std::size_t part = 0; part < 3; ++part) {
        springs += isSpring.at(part) ? parts.at(part) : 0;
        count += isSpring.at(part) ? 1 : 0;
    }
    for (std::size_t part = 0; part < 3; ++part) {
        if (isSpring.at(part)) {
            parts.at(part) = springs > 0 ? parts.at(part) * (springs + after - before) / springs
                                         : parts.at(part) + (after - before) / count;
        }
    }
    return {parts[0], parts[1]};
}

NSRect stretched(const NSRect& frame, const NSSize& before, const NSSize& after, unsigned mask) {
    const auto has = [mask](unsigned bit) { return (mask & bit) != 0; };
    const Span across =
        stretched({frame.origin.x, frame.size.width}, before.width, after.width, has(1), has(2), has(4));
    const Span up =
        stretched({frame.origin.y, frame.size.height}, before.height, after.height, has(8), has(16), has(32));
    return NSMakeRect(across.position, up.position, across.length, up.length);
}

constexpr double frameTolerance = 1e-9; // points

} // namespace

TEST_F(NSViewTest, LeavesADoubleClickToWhatIsBelowIt) {
    class Witness : public NSView {
    public:
        void mouseDown(const NSEvent& event) override { clickCounts.push_back(event.clickCount()); }

        std::vector<int> clickCounts;
    };
    HostWindow window(NSMakeRect(100, 100, 200, 200));
    auto* const below = new Witness;
    window.content().addSubview(below);
    below->setFrame(NSMakeRect(0, 0, 200, 200));
    auto* const above = new NSView;
    below->addSubview(above);
    above->setFrame(NSMakeRect(20, 20, 100, 100));
    window.makeKeyAndOrderFront(nullptr);
    QTest::mouseDClick(window.windowHandle(), Qt::LeftButton, {}, above->mapTo(&window, above->rect().center()));
    EXPECT_EQ(below->clickCounts, (std::vector{1, 2}));
}

TEST_F(NSViewTest, LiesFromTheBottomLeftOfItsSuperview) {
    const NSView& view = add(super, NSMakeRect(10, 20, 30, 40));
    EXPECT_EQ(view.geometry(), QRect(10, 40, 30, 40));
    EXPECT_EQ(view.frame(), NSMakeRect(10, 20, 30, 40));
    EXPECT_EQ(view.bounds(), NSMakeRect(0, 0, 30, 40));
}

TEST_F(NSViewTest, LiesFromTheTopLeftOfAFlippedSuperview) {
    FlippedView flipped;
    flipped.setFrame(NSMakeRect(0, 0, 200, 100));
    const NSView& view = add(flipped, NSMakeRect(10, 20, 30, 40));
    EXPECT_EQ(view.geometry(), QRect(10, 20, 30, 40));
    EXPECT_EQ(view.frame(), NSMakeRect(10, 20, 30, 40));
}

TEST_F(NSViewTest, KeepsTheFractionsThatWereSet) {
    const NSView& view = add(super, NSMakeRect(10.3, 20.6, 30.25, 40.125));
    EXPECT_EQ(view.frame(), NSMakeRect(10.3, 20.6, 30.25, 40.125));
    EXPECT_EQ(view.bounds(), NSMakeRect(0, 0, 30.25, 40.125));
}

TEST_F(NSViewTest, TilesWithoutGapsWhateverTheFractions) {
    constexpr double width = 200.0 / 7;
    constexpr double height = 100.0 / 7;
    std::vector<QRect> across;
    std::vector<QRect> up;
    for (int index = 0; index < 7; ++index) {
        across.push_back(add(super, NSMakeRect(index * width, 0, width, 10)).geometry());
        up.push_back(add(super, NSMakeRect(0, index * height, 10, height)).geometry());
    }
    for (std::size_t index = 1; index < 7; ++index) {
        EXPECT_EQ(across[index].left(), across[index - 1].right() + 1);
        EXPECT_EQ(up[index].bottom() + 1, up[index - 1].top());
    }
    EXPECT_EQ(across.back().right() + 1, 200);
    EXPECT_EQ(up.back().top(), 0);
}

TEST_F(NSViewTest, FollowsWhatQtMovedItTo) {
    NSView& view = add(super, NSMakeRect(10.5, 20, 30, 40));
    view.move(5, 5);
    EXPECT_EQ(view.frame(), NSMakeRect(5, 55, 30, 40));
    view.setGeometry(1, 2, 3, 4);
    EXPECT_EQ(view.frame(), NSMakeRect(1, 94, 3, 4));
}

TEST_F(NSViewTest, MovesByItsOriginAndGrowsByItsSize) {
    NSView& view = add(super, NSMakeRect(10, 20, 30, 40));
    view.setFrameOrigin({1.5, 2});
    EXPECT_EQ(view.frame(), NSMakeRect(1.5, 2, 30, 40));
    view.setFrameSize({5, 6});
    EXPECT_EQ(view.frame(), NSMakeRect(1.5, 2, 5, 6));
}

TEST_F(NSViewTest, KeepsANegativeSizeAndShowsNone) {
    const NSView& view = add(super, NSMakeRect(10, 20, -5, -6));
    EXPECT_EQ(view.frame(), NSMakeRect(10, 20, -5, -6));
    EXPECT_TRUE(view.size().isEmpty());
}

TEST_F(NSViewTest, OutlastsFramesBeyondAnyScreen) {
    constexpr double infinite = std::numeric_limits<double>::infinity();
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    NSView& view = add(super, NSMakeRect(0, 0, 10, 10), 63);
    add(view, NSMakeRect(0, 0, 10, 10), 63);
    for (const double number : {1e300, -1e300, 1e10, infinite, -infinite, none, 0.0}) {
        view.setFrame(NSMakeRect(number, number, number, number));
        view.setFrame(NSMakeRect(0, 0, number, 10));
        super.setFrameSize({number, number});
        super.setFrameSize({200, 100});
    }
    view.setFrame(NSMakeRect(10, 20, 30, 40));
    EXPECT_EQ(view.geometry(), QRect(10, 40, 30, 40)) << "and is none the worse for it";
}

TEST_F(NSViewTest, FollowsItsSuperviewBySpringsAndStrutsInEveryMask) {
    constexpr NSSize before{200, 100};
    for (unsigned mask = 0; mask < 64; ++mask) {
        for (const NSSize& after : {NSSize{317, 163}, NSSize{120, 61}, NSSize{200, 140}}) {
            SCOPED_TRACE(testing::Message() << "mask " << mask << " to " << after.width << "x" << after.height);
            NSView superview;
            superview.setFrame({NSZeroPoint, before});
            const NSRect frame = NSMakeRect(30, 15, 110, 40);
            const NSView& view = add(superview, frame, mask);
            superview.setFrameSize(after);
            const NSRect expected = stretched(frame, before, after, mask);
            expectNear(view.frame(), expected, frameTolerance);
            EXPECT_EQ(view.geometry().left(), qRound(expected.origin.x));
            EXPECT_EQ(view.geometry().top(), qRound(after.height - expected.origin.y - expected.size.height));
            EXPECT_EQ(view.geometry().bottom() + 1, qRound(after.height - expected.origin.y));
        }
    }
}

TEST_F(NSViewTest, SharesTheChangeEquallyAmongSpringsWithoutLength) {
    NSView& view = add(super, NSMakeRect(0, 50, 0, 0), NSViewMinXMargin | NSViewWidthSizable);
    super.setFrameSize({230, 100});
    EXPECT_EQ(view.frame(), NSMakeRect(15, 50, 15, 0));
}

TEST_F(NSViewTest, FollowsAFlippedSuperviewFromTheTop) {
    FlippedView flipped;
    flipped.setFrame(NSMakeRect(0, 0, 200, 100));
    const NSView& fixed = add(flipped, NSMakeRect(10, 20, 30, 40));
    const NSView& atTheBottom = add(flipped, NSMakeRect(10, 60, 30, 40), NSViewMinYMargin);
    flipped.setFrameSize({200, 150});
    EXPECT_EQ(fixed.geometry(), QRect(10, 20, 30, 40));
    EXPECT_EQ(atTheBottom.geometry(), QRect(10, 110, 30, 40));
}

TEST_F(NSViewTest, StaysAtTheBottomLeftWithoutSprings) {
    const NSView& view = add(super, NSMakeRect(10, 20, 30, 40));
    super.setFrameSize({300, 300});
    EXPECT_EQ(view.frame(), NSMakeRect(10, 20, 30, 40));
    EXPECT_EQ(view.geometry(), QRect(10, 240, 30, 40));
}

TEST_F(NSViewTest, FollowsAsItsSuperviewWasResizedByQt) {
    const NSView& view = add(super, NSMakeRect(10, 20, 180, 60), NSViewWidthSizable | NSViewHeightSizable);
    super.resize(260, 170);
    super.show();
    settle();
    EXPECT_EQ(view.frame(), NSMakeRect(10, 20, 240, 130));
    super.resize(300, 100);
    EXPECT_EQ(view.frame(), NSMakeRect(10, 20, 280, 60)) << "also while it is shown";
}

TEST_F(NSViewTest, LaysOutWhatIsBelowItsSubviews) {
    NSView& view = add(super, NSMakeRect(10, 20, 180, 60), NSViewWidthSizable | NSViewHeightSizable);
    const NSView& inner = add(view, NSMakeRect(0, 50, 180, 10), NSViewWidthSizable | NSViewMinYMargin);
    super.setFrameSize({300, 200});
    EXPECT_EQ(view.frame(), NSMakeRect(10, 20, 280, 160));
    EXPECT_EQ(inner.frame(), NSMakeRect(0, 150, 280, 10));
}

TEST_F(NSViewTest, KeepsTheFramesOfSubviewsThatCameBeforeItsOwn) {
    NSView view;
    const NSView& early = add(view, NSMakeRect(10, 20, 30, 40));
    const NSView& earlySpring = add(view, NSMakeRect(0, 90, 200, 10), NSViewWidthSizable | NSViewMinYMargin);
    view.setFrame(NSMakeRect(0, 0, 200, 100));
    EXPECT_EQ(early.frame(), NSMakeRect(10, 20, 30, 40));
    EXPECT_EQ(early.geometry(), QRect(10, 40, 30, 40));
    EXPECT_EQ(earlySpring.frame(), NSMakeRect(0, 90, 200, 10));
    EXPECT_EQ(earlySpring.geometry(), QRect(0, 0, 200, 10));
    view.setFrameSize({250, 120});
    EXPECT_EQ(earlySpring.frame(), NSMakeRect(0, 110, 250, 10)) << "from then on they follow";
}

TEST_F(NSViewTest, KeepsTheFramesOfSubviewsThatCameBeforeItWasAddedItself) {
    NSView view;
    const NSView& early = add(view, NSMakeRect(10, 20, 30, 40));
    super.addSubview(&view);
    view.setFrame(NSMakeRect(0, 0, 200, 100));
    EXPECT_EQ(early.geometry(), QRect(10, 40, 30, 40));
    view.removeFromSuperview();
}

TEST_F(NSViewTest, FollowsFromTheSizeThatQtGaveItsSuperviewFirst) {
    NSView view;
    view.resize(200, 100);
    const NSView& spring = add(view, NSMakeRect(10, 20, 180, 60), NSViewWidthSizable | NSViewHeightSizable);
    view.setFrame(NSMakeRect(0, 0, 300, 150));
    EXPECT_EQ(spring.frame(), NSMakeRect(10, 20, 280, 110));
}

TEST_F(NSViewTest, LeavesWhatQtLaysOutToQt) {
    auto* const label = new QLabel(&super);
    label->setGeometry(1, 2, 30, 10);
    super.setFrameSize({300, 200});
    EXPECT_EQ(label->geometry(), QRect(1, 2, 30, 10));
}

TEST_F(NSViewTest, GivesAPlainWidgetAFrameWhenAsked) {
    auto* const label = new QLabel;
    EXPECT_EQ(ViewCore::of(label), nullptr);
    ViewCore& view = ViewCore::attach(*label);
    EXPECT_EQ(ViewCore::of(label), &view);
    EXPECT_EQ(&ViewCore::attach(*label), &view) << "once";
    EXPECT_EQ(&ViewCore::attach(super), &super) << "a view is one already";
    view.setFrame(NSMakeRect(10, 20, 30.5, 10));
    view.setAutoresizingMask(NSViewMinXMargin);
    super.addSubview(label);
    EXPECT_EQ(label->geometry(), QRect(10, 70, 31, 10));
    super.setFrameSize({220, 120});
    EXPECT_EQ(view.frame(), NSMakeRect(30, 20, 30.5, 10));
    delete label;
    EXPECT_THAT(super.subviews(), IsEmpty());
}

TEST_F(NSViewTest, LaysOutTheSubviewsOfAPlainWidget) {
    auto* const plain = new QWidget;
    ViewCore& view = ViewCore::attach(*plain);
    view.setFrame(NSMakeRect(0, 0, 100, 100));
    super.addSubview(plain);
    const NSView& inner = add(view, NSMakeRect(10, 10, 80, 80), NSViewWidthSizable);
    super.show();
    plain->resize(150, 100);
    EXPECT_EQ(inner.frame(), NSMakeRect(10, 10, 130, 80));
}

TEST_F(NSViewTest, ForgetsAPlainWidgetThatIsGone) {
    auto label = std::make_unique<QLabel>();
    const QWidget* const where = label.get();
    ViewCore::attach(*label);
    label.reset();
    EXPECT_EQ(ViewCore::of(nullptr), nullptr);
    std::vector<std::unique_ptr<QLabel>> others;
    for (int count = 0; count < 50; ++count) {
        others.push_back(std::make_unique<QLabel>());
        EXPECT_EQ(ViewCore::of(others.back().get()), nullptr) << "one made at the same address: " << where;
    }
}

TEST_F(NSViewTest, HasItsSubviewsFromTheLowestUp) {
    NSView& first = add(super, NSMakeRect(0, 0, 10, 10));
    NSView& second = add(super, NSMakeRect(0, 0, 10, 10));
    EXPECT_THAT(super.subviews(), ElementsAre(&first, &second));
    super.addSubview(&first);
    EXPECT_THAT(super.subviews(), ElementsAre(&second, &first)) << "added again, it goes above the others";
    EXPECT_EQ(first.superview(), &super);
    EXPECT_EQ(super.superview(), nullptr);
}

TEST_F(NSViewTest, DoesNotCountWindowsAmongItsSubviews) {
    const NSView& view = add(super, NSMakeRect(0, 0, 10, 10));
    QWidget dialog(&super, Qt::Dialog);
    EXPECT_THAT(super.subviews(), ElementsAre(&view));
}

TEST_F(NSViewTest, IsShownWithItsSuperviewUnlessItWasHidden) {
    super.show();
    const NSView& shown = add(super, NSMakeRect(0, 0, 10, 10));
    auto* const hidden = new NSView;
    hidden->setHidden(true);
    super.addSubview(hidden);
    EXPECT_TRUE(shown.isVisible());
    EXPECT_FALSE(hidden->isVisible());
}

TEST_F(NSViewTest, IsOwnedByItsSuperviewUntilItIsTakenOut) {
    QPointer<NSView> view = &add(super, NSMakeRect(10, 20, 30, 40));
    auto other = std::make_unique<NSView>();
    other->setFrame(NSMakeRect(0, 0, 50, 50));
    other->addSubview(view);
    EXPECT_THAT(super.subviews(), IsEmpty());
    view->removeFromSuperview();
    EXPECT_EQ(view->superview(), nullptr);
    other.reset();
    ASSERT_TRUE(view) << "taken out, it is its owner's";
    super.addSubview(view);
    other = std::make_unique<NSView>();
    other->addSubview(view);
    other.reset();
    EXPECT_FALSE(view);
}

TEST_F(NSViewTest, KeepsItsFrameAndItsHiddenStateWhileItIsOut) {
    super.show();
    NSView& view = add(super, NSMakeRect(10.5, 20, 30, 40));
    view.removeFromSuperview();
    EXPECT_FALSE(view.isVisible());
    EXPECT_EQ(view.frame(), NSMakeRect(10.5, 20, 30, 40));
    super.addSubview(&view);
    EXPECT_TRUE(view.isVisible());
    EXPECT_EQ(view.frame(), NSMakeRect(10.5, 20, 30, 40));
    EXPECT_EQ(view.geometry(), QRect(11, 40, 30, 40));
    view.hide();
    view.removeFromSuperview();
    super.addSubview(&view);
    EXPECT_FALSE(view.isVisible());
}

TEST_F(NSViewTest, TakingOutAViewWithoutSuperviewDoesNothing) {
    super.show();
    super.removeFromSuperview();
    EXPECT_TRUE(super.isVisible());
}

TEST_F(NSViewTest, KnowsItsWindow) {
    HostWindow window(NSMakeRect(0, 0, 100, 100));
    const NSView& view = add(window.content(), NSMakeRect(0, 0, 10, 10));
    EXPECT_EQ(view.window(), &window);
    EXPECT_EQ(super.window(), nullptr) << "a plain window of Qt's is none";
}

TEST_F(NSViewTest, TellsOfAChangedFrameOnlyWhenAskedTo) {
    NSView& view = add(super, NSMakeRect(0, 0, 10, 10));
    const Posts posts(static_cast<ViewCore*>(&view));
    view.setFrame(NSMakeRect(0, 0, 20, 20));
    EXPECT_THAT(posts.names, IsEmpty());
    view.setPostsFrameChangedNotifications(true);
    view.setFrame(NSMakeRect(0, 0, 20, 20));
    EXPECT_THAT(posts.names, IsEmpty()) << "nothing changed";
    view.setFrame(NSMakeRect(0.1, 0, 20, 20));
    EXPECT_THAT(posts.names, ElementsAre(NSViewFrameDidChangeNotification)) << "be it by a fraction";
}

TEST_F(NSViewTest, IsTheSenderByEitherOfItsTypes) {
    NSView& view = add(super, NSMakeRect(0, 0, 10, 10));
    view.setPostsFrameChangedNotifications(true);
    const Posts ofWidget(static_cast<const QWidget*>(&view));
    view.setFrameOrigin({5, 5});
    EXPECT_THAT(ofWidget.names, ElementsAre(NSViewFrameDidChangeNotification));
}

TEST_F(NSViewTest, TellsOfTheFrameThatItsSuperviewGaveIt) {
    NSView& fixed = add(super, NSMakeRect(0, 0, 10, 10));
    NSView& spring = add(super, NSMakeRect(0, 0, 10, 10), NSViewWidthSizable);
    fixed.setPostsFrameChangedNotifications(true);
    spring.setPostsFrameChangedNotifications(true);
    const Posts ofFixed(&fixed);
    const Posts ofSpring(&spring);
    super.setFrameSize({300, 300});
    EXPECT_THAT(ofFixed.names, IsEmpty());
    EXPECT_THAT(ofSpring.names, ElementsAre(NSViewFrameDidChangeNotification));
}

TEST_F(NSViewTest, TellsOfTheFrameThatQtGaveIt) {
    auto* const view = new NSView;
    auto* const layout = new QVBoxLayout(&super);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(view);
    super.show();
    settle();
    view->setPostsFrameChangedNotifications(true);
    const Posts posts(view);
    super.resize(300, 300);
    settle();
    EXPECT_EQ(view->frame(), NSMakeRect(0, 0, 300, 300));
    EXPECT_THAT(posts.names, ElementsAre(NSViewFrameDidChangeNotification));
}

TEST_F(NSViewTest, ConvertsToASuperviewAndBack) {
    NSView& view = add(super, NSMakeRect(10, 20, 100, 60));
    NSView& inner = add(view, NSMakeRect(5, 6, 50, 50));
    EXPECT_EQ(inner.convertRectToView(NSMakeRect(1, 2, 3, 4), &super), NSMakeRect(16, 28, 3, 4));
    EXPECT_EQ(inner.convertPointToView({1, 2}, &super), NSMakePoint(16, 28));
    EXPECT_EQ(inner.convertPointFromView({16, 28}, &super), NSMakePoint(1, 2));
    EXPECT_EQ(super.convertRectToView(NSMakeRect(16, 28, 3, 4), &inner), NSMakeRect(1, 2, 3, 4));
    EXPECT_EQ(super.convertPointToView({16, 28}, &inner), NSMakePoint(1, 2));
    EXPECT_EQ(super.convertPointFromView({1, 2}, &inner), NSMakePoint(16, 28));
}

TEST_F(NSViewTest, ConvertsBetweenViewsSideBySide) {
    const NSView& left = add(super, NSMakeRect(10, 20, 30, 30));
    const NSView& right = add(super, NSMakeRect(110, 5, 30, 30));
    EXPECT_EQ(left.convertPointToView({1, 2}, &right), NSMakePoint(-99, 17));
    EXPECT_EQ(left.convertPointFromView({1, 2}, &right), NSMakePoint(101, -13));
    EXPECT_EQ(left.convertPointToView({1, 2}, &left), NSMakePoint(1, 2));
}

TEST_F(NSViewTest, ConvertsBetweenFlippedAndUnflippedViews) {
    auto* const flipped = new FlippedView;
    flipped->setFrame(NSMakeRect(10, 20, 100, 60));
    super.addSubview(flipped);
    const NSView& inner = add(*flipped, NSMakeRect(0, 0, 10, 10));
    EXPECT_EQ(flipped->convertRectToView(NSMakeRect(0, 0, 10, 5), &super), NSMakeRect(10, 75, 10, 5));
    EXPECT_EQ(flipped->convertPointToView({0, 0}, &super), NSMakePoint(10, 80));
    EXPECT_EQ(inner.convertPointToView({0, 0}, &super), NSMakePoint(10, 70));
    EXPECT_EQ(super.convertRectToView(NSMakeRect(10, 75, 10, 5), flipped), NSMakeRect(0, 0, 10, 5));
}

TEST_F(NSViewTest, ConvertsToTheWindowAndBack) {
    HostWindow window(NSMakeRect(50, 60, 200, 100));
    const NSView& view = add(window.content(), NSMakeRect(10, 20, 100, 60));
    EXPECT_EQ(view.convertPointToView({1, 2}, nullptr), NSMakePoint(11, 22));
    EXPECT_EQ(view.convertRectToView(NSMakeRect(1, 2, 3, 4), nullptr), NSMakeRect(11, 22, 3, 4));
    EXPECT_EQ(view.convertPointFromView({11, 22}, nullptr), NSMakePoint(1, 2));
}
