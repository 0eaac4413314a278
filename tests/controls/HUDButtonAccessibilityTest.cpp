// SPDX-License-Identifier: MIT
#include "HUDButtonTestSupport.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDFlatButton.h>
#include <VXKit/controls/LTHUDRadioButton.h>

#include <QAccessible>
#include <QAccessibleActionInterface>
#include <QAccessibleInterface>
#include <QSignalSpy>

#include <vector>

namespace {

class HUDButtonAccessibility : public HUDButtonHost {
protected:
    static QAccessibleInterface& accessible(NSButton& button) {
        return *QAccessible::queryAccessibleInterface(&button);
    }
};

} // namespace

TEST_F(HUDButtonAccessibility, TellsWhatAControlIs) {
    LTHUDButton button;
    LTHUDFlatButton flat;
    LTHUDCheckBox checkBox;
    LTHUDRadioButton radio;
    EXPECT_EQ(accessible(button).role(), QAccessible::Button);
    EXPECT_EQ(accessible(flat).role(), QAccessible::Button);
    EXPECT_EQ(accessible(checkBox).role(), QAccessible::CheckBox);
    EXPECT_EQ(accessible(radio).role(), QAccessible::RadioButton);
}

TEST_F(HUDButtonAccessibility, TellsTheTitleWithoutTheMarkAsTheName) {
    LTHUDButton button;
    button.setTitle(QStringLiteral("&Save && Quit"));
    LTHUDCheckBox checkBox;
    checkBox.setTitle(QStringLiteral("Do not &ask again"));
    LTHUDRadioButton radio;
    radio.setTitle(QStringLiteral("&Weekly"));
    EXPECT_EQ(accessible(button).text(QAccessible::Name), QStringLiteral("Save & Quit"));
    EXPECT_EQ(accessible(checkBox).text(QAccessible::Name), QStringLiteral("Do not ask again"));
    EXPECT_EQ(accessible(radio).text(QAccessible::Name), QStringLiteral("Weekly"));
    EXPECT_EQ(accessible(button).text(QAccessible::Accelerator), QStringLiteral("Alt+S"));
}

TEST_F(HUDButtonAccessibility, TellsTheState) {
    LTHUDButton button;
    EXPECT_FALSE(accessible(button).state().checkable);
    EXPECT_FALSE(accessible(button).state().disabled);
    button.setEnabled(false);
    EXPECT_TRUE(accessible(button).state().disabled);

    LTHUDCheckBox checkBox;
    EXPECT_TRUE(accessible(checkBox).state().checkable);
    EXPECT_FALSE(accessible(checkBox).state().checked);
    checkBox.setState(NSOnState);
    EXPECT_TRUE(accessible(checkBox).state().checked);

    LTHUDRadioButton radio;
    EXPECT_FALSE(accessible(radio).state().checked);
    radio.setState(NSOnState);
    EXPECT_TRUE(accessible(radio).state().checked);
}

TEST_F(HUDButtonAccessibility, TellsWhetherAControlCanHaveAndHasTheKeyboard) {
    auto& button = add<LTHUDButton>(NSMakeRect(10, 10, 100, 28));
    show(window);
    button.clearFocus();
    EXPECT_TRUE(accessible(button).state().focusable);
    EXPECT_FALSE(accessible(button).state().focused);
    button.setFocus();
    EXPECT_TRUE(accessible(button).state().focused);
}

TEST_F(HUDButtonAccessibility, PressesAButton) {
    auto& button = add<LTHUDButton>(NSMakeRect(10, 10, 100, 28));
    show(window);
    const QSignalSpy clicks(&button, &QAbstractButton::clicked);
    accessible(button).actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(QTest::qWaitFor([&] { return clicks.count() == 1; }));
}

TEST_F(HUDButtonAccessibility, TogglesCheckBoxesAndRadioButtons) {
    auto& checkBox = add<LTHUDCheckBox>(NSMakeRect(10, 10, 100, 20));
    auto& radio = add<LTHUDRadioButton>(NSMakeRect(10, 40, 100, 20));
    show(window);
    accessible(checkBox).actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    EXPECT_TRUE(QTest::qWaitFor([&] { return checkBox.state() == NSOnState; }));
    accessible(radio).actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    EXPECT_TRUE(QTest::qWaitFor([&] { return radio.state() == NSOnState; }));
}

TEST_F(HUDButtonAccessibility, LetsTabReachEveryControl) {
    const std::vector<NSButton*> controls{
        &add<LTHUDButton>(NSMakeRect(10, 10, 100, 28)), &add<LTHUDFlatButton>(NSMakeRect(10, 40, 100, 24)),
        &add<LTHUDCheckBox>(NSMakeRect(10, 70, 100, 20)), &add<LTHUDRadioButton>(NSMakeRect(10, 100, 100, 20))};
    show(window);
    controls.front()->setFocus(Qt::TabFocusReason);
    for (NSButton* control : controls) {
        EXPECT_EQ(window.firstResponder(), control);
        EXPECT_TRUE(control->showsFirstResponder());
        QTest::keyClick(window.windowHandle(), Qt::Key_Tab);
    }
}

TEST_F(HUDButtonAccessibility, LetsTheSpaceBarPressEveryControl) {
    const std::vector<NSButton*> controls{
        &add<LTHUDButton>(NSMakeRect(10, 10, 100, 28)), &add<LTHUDFlatButton>(NSMakeRect(10, 40, 100, 24)),
        &add<LTHUDCheckBox>(NSMakeRect(10, 70, 100, 20)), &add<LTHUDRadioButton>(NSMakeRect(10, 100, 100, 20))};
    show(window);
    for (NSButton* control : controls) {
        const QSignalSpy clicks(control, &QAbstractButton::clicked);
        control->setFocus(Qt::TabFocusReason);
        QTest::keyPress(window.windowHandle(), Qt::Key_Space);
        EXPECT_TRUE(control->cell().isHighlighted());
        QTest::keyRelease(window.windowHandle(), Qt::Key_Space);
        EXPECT_EQ(clicks.count(), 1);
    }
}
