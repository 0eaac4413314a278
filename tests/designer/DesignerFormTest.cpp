// SPDX-License-Identifier: MIT
#include "DesignerTestSupport.h"

#include <VXKit/VXKit.h>

#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPixmap>
#include <QPushButton>
#include <QSignalSpy>

#include "ui_Controls.h"

namespace {

class DesignerFormTest : public PlainQtProgram {
protected:
    /// What the form says, in the terms of the classes.
    static void expectControls(const QWidget& form) {
        const auto& button = child<LTHUDButton>(form, QStringLiteral("pushButton"));
        EXPECT_EQ(button.title(), QStringLiteral("&Press"));
        EXPECT_EQ(button.tag(), 7);
        EXPECT_EQ(button.geometry(), QRect(10, 10, 96, 28));
        EXPECT_EQ(child<LTHUDCheckBox>(form, QStringLiteral("checkBox")).state(), NSOnState);
        EXPECT_EQ(child<LTHUDRadioButton>(form, QStringLiteral("firstRadio")).state(), NSOnState);
        EXPECT_EQ(child<LTHUDRadioButton>(form, QStringLiteral("secondRadio")).state(), NSOffState);
        EXPECT_EQ(child<LTHUDFlatButton>(form, QStringLiteral("flatButton")).title(), QStringLiteral("Flat"));
        const auto& field = child<LTHUDTextField>(form, QStringLiteral("textField"));
        EXPECT_EQ(field.placeholderString(), QStringLiteral("Name"));
        EXPECT_TRUE(field.placeholderText().isEmpty()) << "Qt draws it besides";
        EXPECT_EQ(field.maxLength(), 12);
        const auto& secret = child<LTHUDSecureTextField>(form, QStringLiteral("secretField"));
        EXPECT_EQ(secret.stringValue(), QStringLiteral("secret"));
        EXPECT_EQ(child<PlainLineEdit>(form, QStringLiteral("plainField")).stringValue(), QStringLiteral("plain"));
        const auto& table = child<LTHUDTableView>(form, QStringLiteral("hudTable"));
        EXPECT_TRUE(table.usesAlternatingRowBackgroundColors());
        EXPECT_EQ(table.rowHeight(), 24);
        EXPECT_EQ(child<LTHUDScrollBar>(form, QStringLiteral("hudScrollBar")).maximum(), 300);
        EXPECT_EQ(child<NSScroller>(form, QStringLiteral("scroller")).value(), 40);
        expectProgress(form);
        EXPECT_EQ(child<LTNameTag>(form, QStringLiteral("nameTag")).text(), QStringLiteral("Tagged"));
        EXPECT_EQ(child<LTNameTag>(form, QStringLiteral("nameTag")).accessibleName(), QStringLiteral("Tagged"));
        const auto& tabs = child<LTPreferenceTabs>(form, QStringLiteral("tabs"));
        EXPECT_EQ(tabs.tabTitles(),
                  QStringList({QStringLiteral("General"), QStringLiteral("Accounts"), QStringLiteral("Keys")}));
        EXPECT_EQ(tabs.indexOfSelectedTab(), 0);
        const auto& label = child<NSTextField>(form, QStringLiteral("label"));
        EXPECT_EQ(label.textColor().qtColor().rgb(), qRgb(200, 40, 20));
        EXPECT_TRUE(label.isSelectable());
        EXPECT_EQ(label.superview(), &child<NSBox>(form, QStringLiteral("box")));
        const auto& inView = child<NSButton>(form, QStringLiteral("viewButton"));
        EXPECT_EQ(inView.superview(), &child<NSView>(form, QStringLiteral("view")));
        EXPECT_TRUE(NSEqualRects(inView.frame(), NSMakeRect(10, 66, 96, 24))) << "not from the bottom left";
    }

    static void expectProgress(const QWidget& form) {
        EXPECT_TRUE(child<LTHUDProgressIndicator>(form, QStringLiteral("hudProgress")).isSpinning());
        const auto& progress = child<NSProgressIndicator>(form, QStringLiteral("progress"));
        EXPECT_FALSE(progress.isIndeterminate());
        EXPECT_FALSE(progress.isSpinning());
        EXPECT_EQ(progress.minValue(), 10);
        EXPECT_EQ(progress.maxValue(), 30);
        EXPECT_EQ(progress.doubleValue(), 25);
    }
};

} // namespace

TEST_F(DesignerFormTest, HasTheClassesAndPropertiesOfTheForm) {
    const auto form = loadForm(QStringLiteral("Controls"));
    expectControls(*form);
}

TEST_F(DesignerFormTest, CodeMadeFromTheFormHasTheSame) {
    QWidget form;
    Ui::Controls controls;
    controls.setupUi(&form);
    expectControls(form);
    EXPECT_EQ(controls.imageView->parentWidget(), &form);
    EXPECT_EQ(controls.switchable->currentView(), nullptr);
}

TEST_F(DesignerFormTest, MakesPromotedWidgets) {
    const auto form = loadForm(QStringLiteral("Promoted"));
    EXPECT_EQ(child<LTHUDButton>(*form, QStringLiteral("pushButton")).title(), QStringLiteral("Promoted"));
    EXPECT_EQ(child<LTHUDTextField>(*form, QStringLiteral("textField")).placeholderString(), QStringLiteral("Typed"));
    EXPECT_NO_THROW((void)child<NSView>(*form, QStringLiteral("view")));
}

TEST_F(DesignerFormTest, HasQtsClassesInTheirPlaceWhereThePluginIsNotKnown) {
    const auto form = loadForm(QStringLiteral("Promoted"), false);
    EXPECT_EQ(child<QPushButton>(*form, QStringLiteral("pushButton")).text(), QStringLiteral("Promoted"));
    EXPECT_EQ(child<QLineEdit>(*form, QStringLiteral("textField")).placeholderText(), QStringLiteral("Typed"));
}

TEST_F(DesignerFormTest, ButtonIsClickedAndReachesWhatTheFormConnectsItTo) {
    const auto form = loadForm(QStringLiteral("Controls"));
    show(*form);
    auto& button = child<LTHUDButton>(*form, QStringLiteral("pushButton"));
    const QSignalSpy clicks(&button, &QAbstractButton::clicked);
    click(button);
    EXPECT_EQ(clicks.count(), 1);
    EXPECT_EQ(child<LTHUDCheckBox>(*form, QStringLiteral("checkBox")).state(), NSOffState);
}

TEST_F(DesignerFormTest, RadioButtonsExcludeOneAnother) {
    const auto form = loadForm(QStringLiteral("Controls"));
    show(*form);
    click(child<LTHUDRadioButton>(*form, QStringLiteral("secondRadio")));
    EXPECT_EQ(child<LTHUDRadioButton>(*form, QStringLiteral("firstRadio")).state(), NSOffState);
    EXPECT_EQ(child<LTHUDRadioButton>(*form, QStringLiteral("secondRadio")).state(), NSOnState);
}

TEST_F(DesignerFormTest, FieldTakesWhatIsTypedAndReturnPressesTheButtonThatTheFormNames) {
    const auto form = loadForm(QStringLiteral("Controls"));
    show(*form);
    auto& field = child<LTHUDTextField>(*form, QStringLiteral("textField"));
    const QSignalSpy clicks(&child<LTHUDButton>(*form, QStringLiteral("pushButton")), &QAbstractButton::clicked);
    click(field);
    for (const char key : {'a', 'b', 'c'}) {
        QTest::keyClick(form->windowHandle(), key);
    }
    EXPECT_EQ(field.stringValue(), QStringLiteral("abc"));
    QTest::keyClick(form->windowHandle(), Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([&] { return clicks.count() == 1; }));
}

TEST_F(DesignerFormTest, TabKeyGoesFromFieldToField) {
    const auto form = loadForm(QStringLiteral("Controls"));
    show(*form);
    click(child<LTHUDTextField>(*form, QStringLiteral("textField")));
    QTest::keyClick(form->windowHandle(), Qt::Key_Tab);
    EXPECT_TRUE(child<LTHUDSecureTextField>(*form, QStringLiteral("secretField")).hasFocus());
}

TEST_F(DesignerFormTest, TabOfARowIsSelectedByAClick) {
    const auto form = loadForm(QStringLiteral("Controls"));
    show(*form);
    auto& tabs = child<LTPreferenceTabs>(*form, QStringLiteral("tabs"));
    click(*tabs.subviews().at(2));
    EXPECT_EQ(tabs.indexOfSelectedTab(), 2);
}

TEST_F(DesignerFormTest, TitlesThatAreSetAgainReplaceTheTabs) {
    const auto form = loadForm(QStringLiteral("Controls"));
    auto& tabs = child<LTPreferenceTabs>(*form, QStringLiteral("tabs"));
    tabs.setProperty("tabTitles", QStringList{QStringLiteral("One"), QStringLiteral("Two")});
    EXPECT_EQ(tabs.subviews().size(), 2U);
    EXPECT_EQ(tabs.indexOfSelectedTab(), 0);
    tabs.setProperty("tabTitles", QStringList());
    EXPECT_TRUE(tabs.subviews().empty());
}

TEST_F(DesignerFormTest, ScrollBarIsAwakeAndHasNoArrowsWhenItIsSeen) {
    const auto form = loadForm(QStringLiteral("Controls"));
    show(*form);
    EXPECT_EQ(child<LTHUDScrollBar>(*form, QStringLiteral("hudScrollBar")).arrowsPosition(), NSScrollerArrowsNone);
}

TEST_F(DesignerFormTest, EveryControlPaints) {
    const auto form = loadForm(QStringLiteral("Controls"));
    show(*form);
    for (const char* name :
         {"pushButton", "flatButton", "checkBox",     "firstRadio", "secondRadio", "textField",  "secretField",
          "plainField", "hudTable",   "hudScrollBar", "scroller",   "hudProgress", "progress",   "line",
          "nameTag",    "tabs",       "box",          "label",      "viewButton",  "leftCorner", "rightCorner"}) {
        EXPECT_TRUE(paints(child<QWidget>(*form, QString::fromLatin1(name)))) << name;
    }
}

TEST_F(DesignerFormTest, ImageViewShowsThePictureOfAForm) {
    const auto form = loadForm(QStringLiteral("Controls"));
    auto& view = child<NSImageView>(*form, QStringLiteral("imageView"));
    EXPECT_FALSE(paints(view));
    QPixmap red(20, 10);
    red.fill(Qt::red);
    view.setProperty("pixmap", red);
    EXPECT_EQ(view.pixmap().size(), red.size());
    EXPECT_EQ(view.grab().toImage().pixelColor(24, 24), QColor(Qt::red));
    EXPECT_NE(view.grab().toImage().pixelColor(24, 12), QColor(Qt::red)) << "not in its own size";
    view.setPixmap({});
    EXPECT_FALSE(paints(view));
}
