// SPDX-License-Identifier: MIT
#include <VXKit/app/_LTViewLoader.h>

#include "ShellHost.h"

#include <VXKit/app/VXNibClasses.h>
#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDFlatButton.h>
#include <VXKit/controls/LTHUDRadioButton.h>
#include <VXKit/controls/LTHUDSecureTextField.h>
#include <VXKit/controls/LTHUDTextField.h>
#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/foundation/NSBundle.h>
#include <VXKit/transitions/LTPreferenceTabs.h>
#include <VXKit/transitions/LTSwitchableView.h>

#include <QPointer>

#include <functional>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;

class FormLoader : public _LTViewLoader {
public:
    void connectNib(NSNibConnections& connections) override {
        _LTViewLoader::connectNib(connections);
        connections.outlet(QStringLiteral("_window"), panel);
        connections.outlet(QStringLiteral("_name"), name);
        connections.outlet(QStringLiteral("_password"), password);
        connections.outlet(QStringLiteral("_checkBox"), checkBox);
        connections.outlet(QStringLiteral("_radioButton"), radioButton);
        connections.outlet(QStringLiteral("_flatButton"), flatButton);
        connections.outlet(QStringLiteral("_button"), button);
        connections.outlet(QStringLiteral("_switch"), switchView);
        connections.outlet(QStringLiteral("_tabs"), tabs);
        connections.action(QStringLiteral("openInBrowser:"), [this](QObject* sender) { lastSender = sender; });
    }
    void awakeFromNib() override { ++awakenings; }

    QPointer<LTHUDWindow> panel;
    QPointer<LTHUDTextField> name;
    QPointer<LTHUDSecureTextField> password;
    QPointer<LTHUDCheckBox> checkBox;
    QPointer<LTHUDRadioButton> radioButton;
    QPointer<LTHUDFlatButton> flatButton;
    QPointer<LTHUDButton> button;
    QPointer<LTSwitchableView> switchView;
    QPointer<LTPreferenceTabs> tabs;
    QObject* lastSender = nullptr;
    int awakenings = 0;
};

/// Tells what a loader owns.
class OpenLoader : public _LTViewLoader {
public:
    [[nodiscard]] bool hasNib() const { return nib && nib->isValid(); }
};

std::string logOf(const std::function<void()>& work) {
    testing::internal::CaptureStderr();
    work();
    return testing::internal::GetCapturedStderr();
}

class LTViewLoaderTest : public ShellHost {
protected:
    static NSBundle* bundle() { return NSBundle::bundleWithIdentifier(QStringLiteral("org.vxkit.NibTest")); }

    /// A loader with the nib of the kit's classes, loaded without a word.
    static std::shared_ptr<FormLoader> formLoader() {
        std::shared_ptr<FormLoader> loader;
        const std::string log =
            logOf([&] { loader = _LTViewLoader::loaderWithNib<FormLoader>(QStringLiteral("Loader"), bundle()); });
        EXPECT_EQ(log, std::string());
        return loader;
    }
};

} // namespace

TEST_F(LTViewLoaderTest, IsAnInstanceOfTheSubclassThatWasAskedFor) {
    const std::shared_ptr<_LTViewLoader> loader = formLoader();
    EXPECT_NE(dynamic_cast<FormLoader*>(loader.get()), nullptr);
}

TEST_F(LTViewLoaderTest, ConnectsTheOutletsOfEverySubclassOfTheKit) {
    const std::shared_ptr<FormLoader> loader = formLoader();
    EXPECT_NE(loader->panel, nullptr);
    EXPECT_NE(loader->name, nullptr);
    EXPECT_NE(loader->password, nullptr);
    EXPECT_NE(loader->checkBox, nullptr);
    EXPECT_NE(loader->radioButton, nullptr);
    EXPECT_NE(loader->flatButton, nullptr);
    EXPECT_NE(loader->button, nullptr);
    EXPECT_NE(loader->switchView, nullptr);
    EXPECT_NE(loader->tabs, nullptr);
    EXPECT_EQ(loader->awakenings, 1);
}

TEST_F(LTViewLoaderTest, HandsOutItsViewAndTheWindowThatIsIn) {
    const std::shared_ptr<FormLoader> loader = formLoader();
    ASSERT_NE(loader->view(), nullptr);
    EXPECT_EQ(loader->view()->objectName(), QStringLiteral("_view"));
    EXPECT_EQ(loader->window(), loader->panel);
    EXPECT_EQ(ViewCore::of(loader->view())->frame(), NSMakeRect(10, 10, 280, 180));
    EXPECT_EQ(loader->panel->frame().size, NSMakeSize(300, 200));
}

TEST_F(LTViewLoaderTest, TakesANibOfTheMainBundleWhereNoneIsGiven) {
    NSNib::registerClass<NSView>(QStringLiteral("WritingView"));
    const auto loader = _LTViewLoader::loaderWithNib(QStringLiteral("View"));
    ASSERT_NE(loader->view(), nullptr);
    EXPECT_EQ(loader->window(), nullptr) << "the view is in no window";

    _LTViewLoader other;
    other.initWithNibName(QStringLiteral("View"));
    EXPECT_NE(other.view(), nullptr);
    EXPECT_NE(other.view(), loader->view());
}

TEST_F(LTViewLoaderTest, HasNullOutletsWhereTheNibIsMissing) {
    std::shared_ptr<OpenLoader> loader;
    const std::string log =
        logOf([&] { loader = _LTViewLoader::loaderWithNib<OpenLoader>(QStringLiteral("Missing"), bundle()); });
    ASSERT_NE(loader, nullptr);
    EXPECT_EQ(loader->view(), nullptr);
    EXPECT_EQ(loader->window(), nullptr);
    EXPECT_FALSE(loader->hasNib());
    EXPECT_THAT(log, HasSubstr("/org.vxkit.NibTest/Missing.ui: there is no such nib"));
}

TEST_F(LTViewLoaderTest, SendsActionsToTheLoader) {
    const std::shared_ptr<FormLoader> loader = formLoader();
    loader->button->click();
    EXPECT_EQ(loader->lastSender, loader->button);
}

TEST_F(LTViewLoaderTest, LeavesTheViewAliveWhenTheLoaderGoes) {
    std::shared_ptr<FormLoader> loader = formLoader();
    const QPointer<QWidget> view = loader->view();
    const QPointer<LTHUDButton> button = loader->button;
    loader.reset();
    ASSERT_NE(view, nullptr);
    button->click();
    EXPECT_NE(view, nullptr);
}

TEST_F(LTViewLoaderTest, HasNoViewOnceThatWasDeleted) {
    const std::shared_ptr<FormLoader> loader = formLoader();
    delete loader->panel.data();
    EXPECT_EQ(loader->view(), nullptr);
    EXPECT_EQ(loader->window(), nullptr);
}

TEST_F(LTViewLoaderTest, GivesFieldsTheirPlaceholderTargetAndNextKeyView) {
    const std::shared_ptr<FormLoader> loader = formLoader();
    EXPECT_EQ(loader->name->placeholderString(), QStringLiteral("Name"));
    EXPECT_EQ(loader->name->placeholderText(), QString());
    EXPECT_EQ(loader->name->target(), loader->button);
    EXPECT_EQ(loader->name->nextKeyView(), loader->password);
    EXPECT_EQ(loader->password->nextKeyView(), loader->name);
    EXPECT_EQ(loader->password->target(), nullptr);
    EXPECT_EQ(loader->password->echoMode(), QLineEdit::Password);
}

TEST_F(LTViewLoaderTest, GivesTitlesOfANibTheLooksOfTheirControl) {
    const std::shared_ptr<FormLoader> loader = formLoader();
    EXPECT_EQ(loader->checkBox->title(), QStringLiteral("Remember"));
    EXPECT_EQ(loader->checkBox->state(), NSOnState);
    EXPECT_EQ(loader->checkBox->attributedTitle().attributes().foregroundColor, NSColor::whiteColor());
    EXPECT_EQ(loader->radioButton->state(), NSOffState);
}

TEST_F(LTViewLoaderTest, KeepsClassesOfTheHostThatTakeTheKitsPlace) {
    class HostButton : public LTHUDButton {
    public:
        using LTHUDButton::LTHUDButton;
    };
    NSNib::registerClass<HostButton>(QStringLiteral("LTHUDButton"));
    const std::shared_ptr<FormLoader> loader = formLoader();
    EXPECT_NE(dynamic_cast<HostButton*>(loader->button.data()), nullptr);
    NSNib::registerClass<LTHUDButton>(QStringLiteral("LTHUDButton"));
}
