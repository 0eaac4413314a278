// SPDX-License-Identifier: MIT
#include "../controls/HUDButtonTestSupport.h"

#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/FrameAnimations.h>
#include <VXKit/platform/foundation/NSException.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSFont.h>
#include <VXKit/platform/graphics/NSShadow.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>
#include <VXKit/transitions/LTPreferenceTabs.h>
#include <VXKit/transitions/_LTPrefTab.h>

#include <QAccessible>
#include <QAccessibleActionInterface>
#include <QAccessibleInterface>
#include <QPointer>
#include <QSignalSpy>

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

constexpr int plateGrey = 43; // 0.17

double boldWidth(const QString& name) {
    return sizeWithAttributes(name, {.font = NSFont::boldSystemFontOfSize(12)}).width;
}

int greyAt(const QImage& picture, int x, int y) {
    return qRed(picture.pixel(x, y));
}

/// The smallest rectangle around what differs between two pictures by more than a shade.
QRect differenceOf(const QImage& left, const QImage& right, int shade = 8) {
    QRect box;
    for (int y = 0; y < left.height(); ++y) {
        for (int x = 0; x < left.width(); ++x) {
            if (std::abs(greyAt(left, x, y) - greyAt(right, x, y)) > shade) {
                box |= QRect(x, y, 1, 1);
            }
        }
    }
    return box;
}

class PrefTab : public HUDButtonHost {
protected:
    std::unique_ptr<_LTPrefTab> tab = _LTPrefTab::tabWithName(QStringLiteral("General"));
};

/// A window with a row of tabs above a container.
class LTPreferenceTabsTest : public HUDButtonHost {
protected:
    LTPreferenceTabsTest() {
        auto* const container = new LTSwitchableView(NSMakeRect(0, 0, 300, 160));
        tabs = new LTPreferenceTabs(NSMakeRect(0, 170, 300, 26));
        tabs->_switchView = container;
        window.content().addSubview(container);
        window.content().addSubview(tabs);
    }

    /// Three tabs with a view each.
    void setUpThree() {
        tabs->setTabNames({QStringLiteral("General"), QStringLiteral("Accounts"), QStringLiteral("Keys")});
        views = {new NSView, new NSView, new NSView};
        tabs->setTabViews({views.begin(), views.end()});
    }

    [[nodiscard]] _LTPrefTab& tab(std::size_t index) const {
        return dynamic_cast<_LTPrefTab&>(*tabs->subviews().at(index));
    }
    [[nodiscard]] std::vector<bool> selections() const {
        std::vector<bool> flags;
        for (std::size_t index = 0; index < tabs->subviews().size(); ++index) {
            flags.push_back(tab(index).isSelected());
        }
        return flags;
    }
    [[nodiscard]] QWidget* shownView() const { return tabs->_switchView->currentView(); }
    void press(Qt::Key key) { QTest::keyClick(window.windowHandle(), key); }
    void click(_LTPrefTab& clicked) {
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, clicked.mapTo(&window, clicked.rect().center()));
    }

    LTPreferenceTabs* tabs;
    std::vector<QPointer<NSView>> views;
    FrameAnimations::ClockForTesting clock;
};

template <class Function>
QString nameOfException(const Function& function) {
    try {
        function();
    } catch (const NSException& exception) {
        return exception.name();
    }
    return {};
}

} // namespace

TEST_F(PrefTab, IsAsWideAsItsNameInBoldAndTenPoints) {
    EXPECT_EQ(tab->frame(), NSMakeRect(0, 0, boldWidth(QStringLiteral("General")) + 10, 26));
    EXPECT_EQ(tab->title(), QStringLiteral("General"));
    EXPECT_FALSE(tab->isSelected());
    EXPECT_EQ(_LTPrefTab::tabWithName({})->frame(), NSMakeRect(0, 0, 10, 26));
    EXPECT_EQ(_LTPrefTab::tabWithName(QStringLiteral("&Keys"))->frame().size.width,
              boldWidth(QStringLiteral("Keys")) + 10)
        << "a mark is not drawn";
}

TEST_F(PrefTab, DrawsOnlyItsTitleUnlessSelected) {
    for (const int ratio : {1, 2}) {
        const QImage picture = pictureOf(*tab, ratio);
        const QImage empty = pictureOfDrawing(*tab, ratio, [] {});
        const QRect ink = differenceOf(picture, empty);
        // The regular weight is narrower than the bold that was measured.
        const double width =
            sizeWithAttributes(QStringLiteral("General"), {.font = NSFont::systemFontOfSize(12)}).width;
        const double left = (tab->bounds().size.width - width) / 2;
        EXPECT_NEAR(ink.left(), left * ratio, 2 * ratio);
        EXPECT_NEAR(ink.right() + 1, (left + width) * ratio, 2 * ratio);
        EXPECT_GE(ink.top(), 7 * ratio);
        EXPECT_LE(ink.bottom(), 19 * ratio);
        EXPECT_NEAR((ink.top() + ink.bottom() + 1) / 2.0, 13 * ratio, 1.5 * ratio);
        int lightest = 0;
        for (int x = ink.left(); x <= ink.right(); ++x) {
            lightest = std::max(lightest, greyAt(picture, x, ink.center().y()));
        }
        EXPECT_GE(lightest, 225);
    }
}

TEST_F(PrefTab, DrawsARoundedPlateWhileSelected) {
    tab->setTitle({});
    tab->setSelected(true);
    const int width = tab->width();
    for (const int ratio : {1, 2, 4}) {
        const QImage picture = pictureOf(*tab, ratio);
        const int middle = picture.width() / 2;
        EXPECT_EQ(greyAt(picture, middle, 13 * ratio), plateGrey);
        EXPECT_EQ(greyAt(picture, middle, 0), panelColor.red());
        EXPECT_EQ(greyAt(picture, middle, 26 * ratio - 1), panelColor.red());
        if (ratio > 1) {
            EXPECT_EQ(greyAt(picture, middle, 3 * ratio / 2 - 1), panelColor.red());
            EXPECT_EQ(greyAt(picture, middle, 3 * ratio / 2), plateGrey);
            EXPECT_EQ(greyAt(picture, middle, 49 * ratio / 2 - 1), plateGrey);
            EXPECT_EQ(greyAt(picture, middle, 49 * ratio / 2), panelColor.red());
        } else {
            EXPECT_NEAR(greyAt(picture, middle, 1), (plateGrey + panelColor.red()) / 2.0, 2);
            EXPECT_NEAR(greyAt(picture, middle, 24), (plateGrey + panelColor.red()) / 2.0, 2);
        }
        EXPECT_EQ(greyAt(picture, 0, 13 * ratio), plateGrey) << "to its left edge";
        EXPECT_EQ(greyAt(picture, static_cast<int>(std::floor(tab->bounds().size.width)) * ratio - 1, 13 * ratio),
                  plateGrey);
    }
    // Corners of 3 points: on the diagonal they begin 3 (1 - √½) = 0.88 points from both sides.
    const QImage picture = pictureOf(*tab, 8);
    EXPECT_EQ(greyAt(picture, 5, 12 + 5), panelColor.red());
    EXPECT_EQ(greyAt(picture, 9, 12 + 9), plateGrey);
    EXPECT_GT(width, 0);
}

TEST_F(PrefTab, DrawsItsTitleInRegularOnThePlate) {
    const QString title = tab->title();
    const NSTextAttributes attributes{.font = NSFont::systemFontOfSize(12), .foregroundColor = NSColor::whiteColor()};
    const NSSize size = sizeWithAttributes(title, attributes);
    for (const bool isSelected : {false, true}) {
        tab->setSelected(isSelected);
        for (const double ratio : {1.0, 2.0}) {
            const QImage expected = pictureOfDrawing(*tab, ratio, [&] {
                tab->setTitle({});
                tab->drawRect(tab->bounds());
                drawInRect(title,
                           NSMakeRect(tab->bounds().size.width / 2 - size.width / 2, 13 - size.height / 2, size.width,
                                      size.height),
                           attributes);
            });
            tab->setTitle(title);
            EXPECT_EQ(difference(pictureOf(*tab, ratio), expected), 0) << ratio;
        }
    }
}

TEST_F(PrefTab, GlowsWhilePressed) {
    for (const int ratio : {1, 2}) {
        const QImage normal = pictureOf(*tab, ratio);
        tab->setDown(true);
        const QImage pressed = pictureOf(*tab, ratio);
        tab->setDown(false);
        EXPECT_GE(difference(pressed, normal), 30);
        // A blur of 1 is seen a point and a half around the ink.
        const QRect ink = differenceOf(normal, pictureOfDrawing(*tab, ratio, [] {}));
        const QRect glow = differenceOf(pressed, normal);
        const int reach = 2 * ratio;
        EXPECT_TRUE(ink.adjusted(-reach, -reach, reach, reach).contains(glow));
        bool isLighter = true;
        for (int y = 0; y < normal.height(); ++y) {
            for (int x = 0; x < normal.width(); ++x) {
                isLighter = isLighter && greyAt(pressed, x, y) >= greyAt(normal, x, y) - 1;
            }
        }
        EXPECT_TRUE(isLighter);
    }
}

TEST_F(PrefTab, ShowsARingOnThePlateWhileItHasTheKeyboard) {
    _LTPrefTab& focused = add(std::move(tab));
    focused.setTitle({});
    show(window);
    focused.setFocus(Qt::TabFocusReason);
    const QImage picture = pictureOf(focused, 2);
    const int middle = picture.width() / 2;
    EXPECT_EQ(greyAt(picture, middle, 2), panelColor.red());
    EXPECT_GE(greyAt(picture, middle, 3), 190);
    EXPECT_GE(greyAt(picture, middle, 48), 190);
    EXPECT_EQ(greyAt(picture, middle, 49), panelColor.red());
    EXPECT_GE(greyAt(picture, 0, 26), 190);
    focused.clearFocus();
    focused.setFocus(Qt::MouseFocusReason);
    EXPECT_EQ(greyAt(pictureOf(focused, 2), middle, 3), panelColor.red()) << "not after a click";
}

TEST_F(PrefTab, IsRedrawnBeforeSettingItsSelectionReturns) {
    class CountedTab : public _LTPrefTab {
    public:
        void drawRect(const NSRect& dirtyRect) override {
            ++drawings;
            _LTPrefTab::drawRect(dirtyRect);
        }
        int drawings = 0;
    };
    auto made = std::make_unique<CountedTab>();
    made->setFrame(NSMakeRect(0, 0, 60, 26));
    CountedTab& counted = add(std::move(made));
    show(window);
    counted.drawings = 0;
    counted.setSelected(true);
    EXPECT_EQ(counted.drawings, 1);
    EXPECT_TRUE(counted.isSelected());
    counted.setSelected(true);
    EXPECT_EQ(counted.drawings, 2) << "also where nothing changes";
}

TEST_F(LTPreferenceTabsTest, StandsTabsFivePointsApart) {
    tabs->setTabNames({QStringLiteral("General"), QStringLiteral("Accounts")});
    ASSERT_EQ(tabs->subviews().size(), 2U);
    const double width = boldWidth(QStringLiteral("General")) + 10;
    EXPECT_EQ(tab(0).frame(), NSMakeRect(5, 0, width, 26));
    EXPECT_EQ(tab(1).frame(), NSMakeRect(5 + width + 5, 0, boldWidth(QStringLiteral("Accounts")) + 10, 26));
    EXPECT_THAT(selections(), ElementsAre(true, false));
    EXPECT_EQ(tabs->indexOfSelectedTab(), 0);
}

TEST_F(LTPreferenceTabsTest, NamesSetAgainAreASecondRowOnTheFirst) {
    tabs->setTabNames({QStringLiteral("General"), QStringLiteral("Accounts")});
    tabs->setTabNames({QStringLiteral("Keys")});
    ASSERT_EQ(tabs->subviews().size(), 3U);
    EXPECT_EQ(tab(2).frame().origin, NSMakePoint(5, 0));
    EXPECT_THAT(selections(), ElementsAre(true, false, false)) << "the first of all";
    tabs->setTabNames({});
    EXPECT_EQ(tabs->subviews().size(), 3U);
}

TEST_F(LTPreferenceTabsTest, FailsWithoutAnyTab) {
    EXPECT_EQ(nameOfException([&] { tabs->setTabNames({}); }), QString::fromLatin1(NSRangeException));
}

TEST_F(LTPreferenceTabsTest, ShowsTheViewOfTheSelectedTabWithoutMotionAtFirst) {
    setUpThree();
    EXPECT_EQ(shownView(), views[0]);
    EXPECT_EQ(views[0]->frame(), NSMakeRect(0, 0, 300, 160));
}

TEST_F(LTPreferenceTabsTest, TakesViewsBeforeNames) {
    views = {new NSView, new NSView};
    tabs->setTabViews({views.begin(), views.end()});
    tabs->setTabNames({QStringLiteral("General"), QStringLiteral("Accounts")});
    EXPECT_EQ(shownView(), views[0]);
    EXPECT_THAT(selections(), ElementsAre(true, false));
}

TEST_F(LTPreferenceTabsTest, SlidesALaterTabInFromTheRightAndAnEarlierOneFromTheLeft) {
    setUpThree();
    tabs->setSelectionIndex(2);
    EXPECT_THAT(selections(), ElementsAre(false, false, true));
    EXPECT_EQ(shownView(), views[2]);
    EXPECT_EQ(views[2]->frame(), NSMakeRect(300, 0, 300, 160));
    clock.advance(0.25);
    EXPECT_EQ(views[0]->frame(), NSMakeRect(-300, 0, 300, 160));
    const NSRect frame = window.frame();
    tabs->setSelectionIndex(0);
    EXPECT_EQ(views[0]->frame(), NSMakeRect(-300, 0, 300, 160));
    clock.advance(0.25);
    EXPECT_EQ(views[2]->frame(), NSMakeRect(300, 0, 300, 160));
    EXPECT_EQ(window.frame(), frame) << "the window keeps its size";
}

TEST_F(LTPreferenceTabsTest, ATabIsChosenByAClick) {
    setUpThree();
    show(window);
    click(tab(1));
    EXPECT_THAT(selections(), ElementsAre(false, true, false));
    EXPECT_EQ(shownView(), views[1]);
    EXPECT_EQ(views[1]->frame().origin, NSMakePoint(300, 0));
}

TEST_F(LTPreferenceTabsTest, TheTabThatIsSelectedStaysSoWithoutMotion) {
    setUpThree();
    show(window);
    click(tab(0));
    EXPECT_THAT(selections(), ElementsAre(true, false, false));
    EXPECT_EQ(shownView(), views[0]);
    EXPECT_FALSE(FrameAnimations::isAnimating(*views[0]));
    EXPECT_EQ(views[0]->frame(), NSMakeRect(0, 0, 300, 160));
}

TEST_F(LTPreferenceTabsTest, WithoutASelectionTheFirstIsMeant) {
    setUpThree();
    tab(0).setSelected(false);
    EXPECT_EQ(tabs->indexOfSelectedTab(), 0);
    tabs->setSelectionIndex(1);
    EXPECT_EQ(views[1]->frame().origin, NSMakePoint(300, 0)) << "from the right, as from the first";
    tab(2).setSelected(true);
    EXPECT_EQ(tabs->indexOfSelectedTab(), 1) << "the first of two";
}

TEST_F(LTPreferenceTabsTest, ATabWithoutAViewFailsAfterItIsSelected) {
    setUpThree();
    tabs->setTabViews({views[0], views[1]});
    EXPECT_EQ(nameOfException([&] { tabs->setSelectionIndex(2); }), QString::fromLatin1(NSRangeException));
    EXPECT_THAT(selections(), ElementsAre(false, false, true));
    EXPECT_EQ(shownView(), views[0]);
    EXPECT_EQ(nameOfException([&] { tabs->setSelectionIndex(-1); }), QString::fromLatin1(NSRangeException));
    EXPECT_EQ(nameOfException([&] { tabs->setTabViews({}); }), QString::fromLatin1(NSRangeException));
}

TEST_F(LTPreferenceTabsTest, WorksWithoutAContainer) {
    tabs->_switchView = nullptr;
    setUpThree();
    tabs->setSelectionIndex(2);
    EXPECT_EQ(tabs->indexOfSelectedTab(), 2);
    delete tabs;
    for (const auto& view : views) {
        EXPECT_FALSE(view) << "it had no other owner";
    }
}

TEST_F(LTPreferenceTabsTest, KeepsItsViewsAndLetsGoOfThoseReplaced) {
    setUpThree();
    const std::vector<QPointer<NSView>> before = views;
    tabs->setSelectionIndex(1);
    auto* const other = new NSView;
    tabs->setTabViews({other, before[1], new NSView});
    EXPECT_TRUE(before[0]) << "the container still has it";
    EXPECT_TRUE(before[1]);
    EXPECT_FALSE(before[2]);
    EXPECT_EQ(shownView(), before[1]);
    tabs->setSelectionIndex(0);
    EXPECT_EQ(shownView(), other);
}

TEST_F(LTPreferenceTabsTest, OutlastsAViewThatIsDestroyed) {
    setUpThree();
    delete views[1];
    tabs->setSelectionIndex(1);
    EXPECT_EQ(shownView(), nullptr);
    clock.advance(0.25);
    tabs->setSelectionIndex(2);
    EXPECT_EQ(views[2]->frame(), NSMakeRect(0, 0, 300, 160));
}

TEST_F(LTPreferenceTabsTest, ArrowKeysHomeAndEndSelect) {
    setUpThree();
    show(window);
    tab(0).setFocus(Qt::TabFocusReason);
    press(Qt::Key_Right);
    EXPECT_THAT(selections(), ElementsAre(false, true, false));
    EXPECT_TRUE(tab(1).showsFirstResponder());
    EXPECT_EQ(shownView(), views[1]);
    press(Qt::Key_End);
    EXPECT_THAT(selections(), ElementsAre(false, false, true));
    EXPECT_TRUE(tab(2).hasFocus());
    press(Qt::Key_Right);
    EXPECT_THAT(selections(), ElementsAre(false, false, true)) << "there is none behind the last";
    EXPECT_TRUE(tab(2).hasFocus());
    press(Qt::Key_Left);
    EXPECT_THAT(selections(), ElementsAre(false, true, false));
    press(Qt::Key_Home);
    EXPECT_THAT(selections(), ElementsAre(true, false, false));
    press(Qt::Key_Left);
    EXPECT_TRUE(tab(0).hasFocus());
    EXPECT_EQ(shownView(), views[0]);
}

TEST_F(LTPreferenceTabsTest, SpaceAndReturnPressATab) {
    setUpThree();
    show(window);
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
        tabs->setSelectionIndex(0);
        tab(2).setFocus(Qt::TabFocusReason);
        press(key);
        EXPECT_TRUE(QTest::qWaitFor([&] { return tabs->indexOfSelectedTab() == 2; })) << key;
        EXPECT_EQ(shownView(), views[2]);
    }
}

TEST_F(LTPreferenceTabsTest, TabAndMnemonicsReachTheTabs) {
    tabs->setTabNames({QStringLiteral("&General"), QStringLiteral("&Accounts")});
    views = {new NSView, new NSView};
    tabs->setTabViews({views.begin(), views.end()});
    show(window);
    tab(0).setFocus(Qt::TabFocusReason);
    press(Qt::Key_Tab);
    EXPECT_TRUE(tab(1).hasFocus());
    EXPECT_EQ(tabs->indexOfSelectedTab(), 0) << "that selects nothing";
    QTest::keyClick(window.windowHandle(), Qt::Key_A, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return tabs->indexOfSelectedTab() == 1; }));
}

TEST_F(LTPreferenceTabsTest, TellsAccessibilityWhatItIs) {
    setUpThree();
    show(window);
    QAccessibleInterface* const row = QAccessible::queryAccessibleInterface(tabs);
    ASSERT_TRUE(row);
    EXPECT_EQ(row->role(), QAccessible::PageTabList);
    ASSERT_EQ(row->childCount(), 3);
    tab(1).setFocus(Qt::TabFocusReason);
    for (int index = 0; index < 3; ++index) {
        const QAccessibleInterface* const each = row->child(index);
        EXPECT_EQ(each->role(), QAccessible::PageTab);
        EXPECT_EQ(each->text(QAccessible::Name), tab(static_cast<std::size_t>(index)).title());
        EXPECT_TRUE(each->state().selectable);
        EXPECT_EQ(each->state().selected != 0, index == 0);
        EXPECT_TRUE(each->state().focusable);
        EXPECT_EQ(each->state().focused != 0, index == 1);
    }
    tabs->setSelectionIndex(2);
    EXPECT_FALSE(row->child(0)->state().selected);
    EXPECT_TRUE(row->child(2)->state().selected);
}

TEST_F(LTPreferenceTabsTest, AccessibilityPressesATabAndGivesItTheKeyboard) {
    setUpThree();
    show(window);
    QAccessibleActionInterface* const action = QAccessible::queryAccessibleInterface(&tab(2))->actionInterface();
    ASSERT_TRUE(action);
    EXPECT_THAT(action->actionNames(),
                ElementsAre(QAccessibleActionInterface::pressAction(), QAccessibleActionInterface::setFocusAction()));
    action->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(QTest::qWaitFor([&] { return tabs->indexOfSelectedTab() == 2; }));
    action->doAction(QAccessibleActionInterface::setFocusAction());
    EXPECT_TRUE(tab(2).hasFocus());
}

TEST_F(LTPreferenceTabsTest, TellsAccessibilityTheKeysThatPressATab) {
    tabs->setTabNames({QStringLiteral("&General"), QStringLiteral("Accounts")});
    const auto keysOf = [this](std::size_t index, const QString& name) {
        return QAccessible::queryAccessibleInterface(&tab(index))->actionInterface()->keyBindingsForAction(name);
    };
    EXPECT_EQ(keysOf(0, QAccessibleActionInterface::pressAction()), QStringList{QStringLiteral("Alt+G")});
    EXPECT_EQ(keysOf(0, QAccessibleActionInterface::setFocusAction()), QStringList());
    EXPECT_EQ(keysOf(1, QAccessibleActionInterface::pressAction()), QStringList()) << "without a mnemonic";
}

TEST_F(LTPreferenceTabsTest, LeavesTheKeysOfATabThatIsTakenOutOfTheRow) {
    setUpThree();
    _LTPrefTab& taken = tab(2);
    window.content().addSubview(&taken);
    show(window);
    taken.setFocus(Qt::TabFocusReason);
    press(Qt::Key_Home);
    EXPECT_TRUE(taken.hasFocus());
    EXPECT_THAT(selections(), ElementsAre(true, false));
    EXPECT_THAT(window.unused, ElementsAre("keyDown"));
}

TEST_F(LTPreferenceTabsTest, ChoosesWithoutMotionWhereThereIsToBeNone) {
    const AnimationDurationsForTesting none(0);
    setUpThree();
    tabs->setSelectionIndex(1);
    EXPECT_EQ(views[1]->frame(), NSMakeRect(0, 0, 300, 160));
    EXPECT_EQ(views[0]->frame(), NSMakeRect(-300, 0, 300, 160));
}
