// SPDX-License-Identifier: MIT
#include "GalleryHost.h"
#include "Stage.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDTableView.h>
#include <VXKit/controls/LTHUDTextField.h>

#include <QLabel>
#include <QLineEdit>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>

#include <set>
#include <typeinfo>

namespace {

class GalleryWindowTest : public GalleryHost {
protected:
    void SetUp() override {
        window.showPage(0);
        window.makeKeyAndOrderFront(nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        window.makeFirstResponder(&window.list());
    }

    static constexpr int mostSteps = 60; // more than any page has controls

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(window.windowHandle(), key, modifiers);
    }

    /// The first view of the class `View` below `ancestor`.
    template <class View>
    static View* find(QWidget& ancestor) {
        for (auto* const child : ancestor.findChildren<QWidget*>()) {
            if (auto* const view = dynamic_cast<View*>(child)) {
                return view;
            }
        }
        return nullptr;
    }

    LTHUDCheckBox* checkBox(const QString& title) {
        for (auto* const child : window.findChildren<QAbstractButton*>()) {
            auto* const box = dynamic_cast<LTHUDCheckBox*>(child);
            if (box && box->title() == title) {
                return box;
            }
        }
        return nullptr;
    }

    GalleryWindow window;
};

} // namespace

TEST_F(GalleryWindowTest, DownGoesThroughAllPagesAndStopsAtTheLast) {
    const int last = static_cast<int>(window.pages().size()) - 1;
    for (int page = 1; page <= last; ++page) {
        press(Qt::Key_Down);
        EXPECT_EQ(window.currentPage(), page);
    }
    press(Qt::Key_Down);
    EXPECT_EQ(window.currentPage(), last);
    press(Qt::Key_Home, Qt::ControlModifier);
    EXPECT_EQ(window.currentPage(), 0);
}

TEST_F(GalleryWindowTest, ControlPageKeysGoToAnotherPageFromAnyControl) {
    find<LTHUDButton>(window.stage())->setFocus();
    press(Qt::Key_PageDown, Qt::ControlModifier);
    EXPECT_EQ(window.currentPage(), 1);
    press(Qt::Key_PageUp, Qt::ControlModifier);
    EXPECT_EQ(window.currentPage(), 0);
    press(Qt::Key_PageUp, Qt::ControlModifier);
    EXPECT_EQ(window.currentPage(), 0);
}

TEST_F(GalleryWindowTest, TabReachesEveryControlOfEveryPageAndComesBackToTheList) {
    for (int page = 0; page < static_cast<int>(window.pages().size()); ++page) {
        window.showPage(page);
        window.makeFirstResponder(&window.list());
        std::set<QWidget*> unreached;
        for (auto* const widget : window.findChildren<QWidget*>()) {
            if ((widget->focusPolicy() & Qt::TabFocus) == Qt::TabFocus && widget->isVisible() && widget->isEnabled() &&
                !qobject_cast<QLineEdit*>(widget->focusProxy())) {
                unreached.insert(widget);
            }
        }
        // A radio button that is off is reached by the arrow keys, from the one that is on.
        std::erase_if(unreached, [](QWidget* widget) {
            auto* const button = dynamic_cast<QAbstractButton*>(widget);
            return button && button->autoExclusive() && !button->isChecked();
        });
        for (int step = 0; step < mostSteps && !(step > 0 && window.list().hasFocus()); ++step) {
            unreached.erase(QApplication::focusWidget());
            press(Qt::Key_Tab);
        }
        EXPECT_TRUE(unreached.empty()) << qPrintable(window.pages()[static_cast<std::size_t>(page)]->name()) << ": "
                                       << unreached.size() << " not reached, such as "
                                       << (*unreached.begin())->metaObject()->className();
    }
}

TEST_F(GalleryWindowTest, ASettingChangesTheControlAtOnce) {
    ASSERT_TRUE(window.showPageNamed(QStringLiteral("buttons")));
    auto* const button = find<LTHUDButton>(window.stage());
    checkBox(QStringLiteral("Enabled"))->click();
    EXPECT_FALSE(button->isEnabled());
    checkBox(QStringLiteral("Shown pressed"))->click();
    EXPECT_TRUE(button->isDown());
}

TEST_F(GalleryWindowTest, TheViewOfTheNibGreetsWhomItIsTold) {
    ASSERT_TRUE(window.showPageNamed(QStringLiteral("nib")));
    auto* const field = find<LTHUDTextField>(window.stage());
    ASSERT_NE(field, nullptr);
    field->setFocus();
    for (const Qt::Key key : {Qt::Key_A, Qt::Key_D, Qt::Key_A}) {
        press(key);
    }
    press(Qt::Key_Return);
    const auto* const answer = window.stage().findChild<QLabel*>(QStringLiteral("answerField"));
    ASSERT_NE(answer, nullptr);
    EXPECT_TRUE(QTest::qWaitFor([&] { return answer->text() == u"Good day, ada."; })) << qPrintable(answer->text());
}

TEST_F(GalleryWindowTest, NoPageLeavesAWindowBehind) {
    const auto shown = [] {
        QStringList titles;
        for (const NSWindow* each : NSWindow::windows()) {
            if (each->isVisible()) {
                titles.append(each->windowTitle());
            }
        }
        titles.sort();
        return titles;
    };
    const QSet<QString> openers{QStringLiteral("Show Window"),
                                QStringLiteral("Show Panel"),
                                QStringLiteral("Show Help"),
                                QStringLiteral("Pop"),
                                QStringLiteral("Flip"),
                                QStringLiteral("Switch"),
                                QStringLiteral("In a Plain Window")};
    const QStringList before = shown();
    int opened = 0;
    for (int page = 1; page < static_cast<int>(window.pages().size()); ++page) {
        window.showPage(page);
        for (auto* const child : window.findChildren<QAbstractButton*>()) {
            auto* const button = dynamic_cast<LTHUDButton*>(child);
            if (button && openers.contains(button->displayTitle())) {
                button->click();
                EXPECT_NE(shown(), before) << qPrintable(button->displayTitle());
                ++opened;
            }
        }
        window.showPage(0);
        EXPECT_EQ(shown(), before) << qPrintable(window.pages()[static_cast<std::size_t>(page)]->name());
    }
    EXPECT_EQ(opened, 8);
}

TEST_F(GalleryWindowTest, ControlQAsksToQuit) {
    QSignalSpy asked(&window, &GalleryWindow::asksToQuit);
    press(Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(asked.size(), 1);
}

TEST_F(GalleryWindowTest, KnowsNoPageByAnotherName) {
    EXPECT_FALSE(window.showPageNamed(QStringLiteral("no such page")));
    EXPECT_EQ(window.currentPage(), 0);
}
