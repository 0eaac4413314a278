// SPDX-License-Identifier: MIT
#include "DesignerTestSupport.h"

#include <VXKit/app/LTApplicationProtocol.h>
#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDScrollBar.h>
#include <VXKit/controls/LTHUDTextField.h>
#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/graphics/NSImage.h>

#include <QLatin1String>
#include <QProcess>
#include <QSignalSpy>
#include <QVBoxLayout>

namespace {

constexpr int activeKnob = 128; // grey levels
constexpr int inactiveKnob = 82;
constexpr int longestWait = 20000; // milliseconds

class PlainApplicationTest : public PlainQtProgram {
protected:
    ~PlainApplicationTest() override {
        m_otherProgram.closeWriteChannel();
        m_otherProgram.waitForFinished();
    }

    /// Another program gets the keyboard; answers whether that is so. Without a desktop the application stays active
    /// for good.
    bool deactivate() {
        if (QGuiApplication::platformName() == QLatin1String("offscreen")) {
            return false;
        }
        m_otherProgram.start(QStringLiteral(X11_CLIENT), {QStringLiteral("400"), QStringLiteral("300"),
                                                          QStringLiteral("100"), QStringLiteral("80")});
        EXPECT_TRUE(
            QTest::qWaitFor([] { return QGuiApplication::applicationState() != Qt::ApplicationActive; }, longestWait));
        return true;
    }

    /// Counts how often it is drawn.
    class CountingScrollBar : public LTHUDScrollBar {
    public:
        using LTHUDScrollBar::LTHUDScrollBar;
        void drawRect(const NSRect& dirtyRect) override {
            ++drawings;
            LTHUDScrollBar::drawRect(dirtyRect);
        }
        int drawings = 0;
    };

private:
    QProcess m_otherProgram;
};

} // namespace

TEST_F(PlainApplicationTest, HooksAnswerTheirDefaults) {
    EXPECT_FALSE(NSApplication::sharedApplication());
    const LTApplicationProtocol& hooks = VXApplicationHooks();
    EXPECT_TRUE(hooks.helpURL().isEmpty());
    EXPECT_TRUE(hooks.supportsSwitchingBackToPreviousApplication());
    EXPECT_TRUE(hooks.shouldSwitchBackGracefully());
    EXPECT_FALSE(hooks.applicationController());
    EXPECT_FALSE(hooks.syncManagerClass());
    EXPECT_TRUE(hooks.shouldCloseMainWindowOnDeactivate());
    EXPECT_EQ(hooks.mainWindowOpacity(), 1.0F);
}

TEST_F(PlainApplicationTest, IsActiveWhileQtSaysSo) {
    EXPECT_FALSE(VXApplicationIsActive());
    QWidget window;
    show(window);
    EXPECT_TRUE(VXApplicationIsActive());
    if (deactivate()) {
        EXPECT_FALSE(VXApplicationIsActive());
    }
}

TEST_F(PlainApplicationTest, KnobOfAScrollBarIsDarkerWhileAnotherProgramIsActive) {
    QWidget window;
    window.resize(100, 200);
    LTHUDScrollBar scrollBar(NSMakeRect(10, 10, 15, 180), &window);
    scrollBar.awakeFromNib();
    scrollBar.setRange(0, 100);
    scrollBar.setPageStep(100);
    const auto knob = [&] {
        const QPoint middle = scrollBar.rectToWidget(scrollBar.rectForPart(NSScrollerKnob)).center().toPoint();
        return scrollBar.grab().toImage().pixelColor(middle.x(), middle.y()).red();
    };
    EXPECT_NEAR(knob(), inactiveKnob, 1);
    show(window);
    EXPECT_NEAR(knob(), activeKnob, 1);
    if (deactivate()) {
        EXPECT_NEAR(knob(), inactiveKnob, 1);
    }
}

TEST_F(PlainApplicationTest, ScrollBarIsDrawnAnewWhenTheApplicationBecomesActive) {
    QWidget first;
    CountingScrollBar scrollBar(NSMakeRect(10, 10, 15, 180), &first);
    show(first);
    ASSERT_TRUE(QTest::qWaitFor([&] { return scrollBar.drawings > 0; }));
    // The state changes with the window that stays shown, so nothing but the change can have it drawn.
    scrollBar.drawings = 0;
    Q_EMIT application.applicationStateChanged(Qt::ApplicationInactive);
    EXPECT_TRUE(QTest::qWaitFor([&] { return scrollBar.drawings > 0; }));
}

TEST_F(PlainApplicationTest, TitleBarOfAHUDWindowIsPalerWhileAnotherProgramIsActive) {
    LTHUDWindow window(NSMakeRect(100, 100, 200, 120), NSBorderlessWindowMask, NSBackingStoreBuffered, false);
    const auto ground = [&] { return window.backgroundColor().patternImage()->imageForScale(1); };
    const QImage inactive = ground();
    QWidget other;
    show(other);
    const QImage active = ground();
    EXPECT_LT(qAlpha(inactive.pixel(100, 9)), qAlpha(active.pixel(100, 9)));
    EXPECT_EQ(active.pixel(100, 60), inactive.pixel(100, 60));
    if (deactivate()) {
        EXPECT_EQ(ground(), inactive);
    }
}

TEST_F(PlainApplicationTest, LayoutOfQtsHoldsControlsThatAreUsed) {
    QWidget window;
    QVBoxLayout layout(&window);
    LTHUDTextField field;
    LTHUDCheckBox box;
    LTHUDButton button;
    box.setTitle(QStringLiteral("Remember"));
    button.setTitle(QStringLiteral("Sign in"));
    field.setTarget(&button);
    layout.addWidget(&field);
    layout.addWidget(&box);
    layout.addWidget(&button);
    const QSignalSpy clicks(&button, &QAbstractButton::clicked);
    show(window);

    EXPECT_EQ(button.height(), button.sizeHint().height());
    EXPECT_GE(box.width(), box.sizeHint().width());
    click(field);
    QTest::keyClick(window.windowHandle(), 'x');
    EXPECT_EQ(field.stringValue(), QStringLiteral("x"));
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, box.mapTo(&window, QPoint(8, 10)));
    EXPECT_EQ(box.state(), NSOnState);
    click(button);
    EXPECT_EQ(clicks.count(), 1);
    for (QWidget* control :
         {static_cast<QWidget*>(&field), static_cast<QWidget*>(&box), static_cast<QWidget*>(&button)}) {
        EXPECT_TRUE(paints(*control));
    }
}
