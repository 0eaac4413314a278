// SPDX-License-Identifier: MIT
#include "AppKitHost.h"

#include <VXKit/platform/appkit/NSButton.h>
#include <VXKit/platform/appkit/NSButtonCell.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSFont.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <QFocusEvent>
#include <QImage>
#include <QKeyEvent>
#include <QPointer>
#include <QSignalSpy>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

namespace {

const QString escapeKey = QStringLiteral("\x1b");
const QString returnKey = QStringLiteral("\r");

/// A cell that writes down what it is asked to draw.
class WitnessCell : public NSButtonCell {
public:
    WitnessCell() { ++made; }

    void drawWithFrame(const NSRect& cellFrame, ViewCore& controlView) override {
        frames.push_back(cellFrame);
        view = &controlView;
    }

    static inline int made = 0;
    std::vector<NSRect> frames;
    ViewCore* view = nullptr;
};

class WitnessButton : public NSButton {
public:
    using NSButton::NSButton;
    NSCellClass cellClass() const override { return NSCellClassOf<WitnessCell>(); }
};

class NSButtonTest : public AppKitHost {
protected:
    NSButton& add(const NSRect& frame, const QString& title = {}) {
        auto button = std::make_unique<NSButton>(frame);
        button->setTitle(title);
        window.content().addSubview(button.get());
        return *button.release();
    }

    static NSEvent key(const QString& characters, std::uint16_t code, unsigned modifiers = 0) {
        return NSEvent::keyEventWithType(NSKeyDown, modifiers, nullptr, characters, code);
    }

    std::vector<std::string> log;
    HostWindow window{NSMakeRect(100, 100, 300, 200)};
};

using NSButtonCellTest = AppKitHost;

} // namespace

TEST_F(NSButtonTest, MakesItsCellOfItsClassWhenFirstAsked) {
    WitnessCell::made = 0;
    const WitnessButton button(NSMakeRect(0, 0, 50, 20));
    EXPECT_EQ(WitnessCell::made, 0);
    NSButtonCell& cell = button.cell();
    EXPECT_NE(dynamic_cast<WitnessCell*>(&cell), nullptr);
    EXPECT_EQ(&button.cell(), &cell);
    EXPECT_EQ(WitnessCell::made, 1);
    EXPECT_EQ(cell.controlView(), &button);
}

TEST_F(NSButtonTest, LetsItsCellDrawAllOfIt) {
    WitnessButton button(NSMakeRect(3, 4, 50.5, 20));
    (void)button.grab();
    const auto& cell = dynamic_cast<WitnessCell&>(button.cell());
    ASSERT_FALSE(cell.frames.empty());
    EXPECT_EQ(cell.frames.back(), NSMakeRect(0, 0, 50.5, 20));
    EXPECT_EQ(cell.view, &button);
}

TEST_F(NSButtonTest, ShowsWhatItHoldsInAnotherCell) {
    NSButton button;
    button.setCheckable(true);
    button.setTitle(QStringLiteral("Bold"));
    button.setState(NSOnState);
    auto cell = std::make_unique<WitnessCell>();
    cell->setTitle(QStringLiteral("forgotten"));
    NSButtonCell* const raw = cell.get();
    button.setCell(std::move(cell));
    EXPECT_EQ(&button.cell(), raw);
    EXPECT_EQ(raw->controlView(), &button);
    EXPECT_EQ(raw->title(), QStringLiteral("Bold"));
    EXPECT_EQ(raw->state(), NSOnState);
    button.setCell(nullptr);
    EXPECT_EQ(dynamic_cast<WitnessCell*>(&button.cell()), nullptr);
}

TEST_F(NSButtonTest, IsWhatItsCellSaysAndTheOtherWayRound) {
    NSButton button;
    button.setCheckable(true);
    NSButtonCell& cell = button.cell();
    cell.setTitle(QStringLiteral("Title"));
    cell.setState(NSOnState);
    cell.setEnabled(false);
    cell.setHighlighted(true);
    EXPECT_EQ(button.title(), QStringLiteral("Title"));
    EXPECT_EQ(button.state(), NSOnState);
    EXPECT_FALSE(button.isEnabled());
    EXPECT_TRUE(button.isDown());
    button.setTitle(QStringLiteral("Other"));
    button.setState(NSOffState);
    button.setEnabled(true);
    button.setDown(false);
    EXPECT_EQ(cell.title(), QStringLiteral("Other"));
    EXPECT_EQ(cell.intValue(), 0);
    EXPECT_TRUE(cell.isEnabled());
    EXPECT_FALSE(cell.isHighlighted());
}

TEST_F(NSButtonTest, TakesAnyStateButOffForOn) {
    NSButton button;
    button.setState(NSOnState);
    EXPECT_EQ(button.state(), NSOffState) << "it cannot be checked";
    button.setCheckable(true);
    for (const int state : {NSOnState, NSMixedState, 7}) {
        button.setState(NSOffState);
        button.setState(state);
        EXPECT_EQ(button.state(), NSOnState) << state;
    }
}

TEST_F(NSButtonTest, HasATagOfItsOwn) {
    NSButton button;
    EXPECT_EQ(button.tag(), 0);
    button.setTag(-1);
    EXPECT_EQ(button.tag(), -1);
}

TEST_F(NSButtonTest, HasTheFrameThatItWasMadeWith) {
    EXPECT_EQ(NSButton(NSMakeRect(1.5, 2.5, 30.25, 20)).frame(), NSMakeRect(1.5, 2.5, 30.25, 20));
    EXPECT_TRUE(NSButton().isFlipped());
}

TEST_F(NSButtonTest, TakesADoubleClickForTwoClicks) {
    const NSButton& button = add(NSMakeRect(10, 10, 100, 30));
    window.makeKeyAndOrderFront(nullptr);
    const QSignalSpy clicked(&button, &NSButton::clicked);
    QTest::mouseDClick(window.windowHandle(), Qt::LeftButton, {}, button.mapTo(&window, button.rect().center()));
    EXPECT_EQ(clicked.count(), 2);
}

TEST_F(NSButtonTest, DrawsItsTitleWithoutMarks) {
    NSButton button;
    using Titles = std::pair<const char*, const char*>;
    for (const auto& [title, displayed] :
         {Titles("Save", "Save"), Titles("&Save", "Save"), Titles("Save &As", "Save As"), Titles("A && B", "A & B"),
          Titles("&&&Save", "&Save"), Titles("Save&", "Save"), Titles("&", ""), Titles("&&", "&"), Titles("", ""),
          Titles("&a&b", "ab")}) {
        button.setTitle(QString::fromLatin1(title));
        EXPECT_EQ(button.title(), QString::fromLatin1(title));
        EXPECT_EQ(button.displayTitle(), QString::fromLatin1(displayed)) << title;
    }
}

TEST_F(NSButtonTest, UnderlinesItsMnemonic) {
    NSButton button;
    const auto underlined = [&](const char* title) {
        button.setTitle(QString::fromLatin1(title));
        return button.cell().attributedDisplayTitle({}).attributes().underlinedCharacter.value_or(-1);
    };
    EXPECT_EQ(underlined("&Save"), 0);
    EXPECT_EQ(underlined("A && &B"), 4);
    EXPECT_EQ(underlined("&a&b"), 0);
    EXPECT_EQ(underlined("Save && Quit"), -1);
    EXPECT_EQ(underlined("Save&"), -1);
}

TEST_F(NSButtonTest, IsClickedByItsMnemonic) {
    NSButton& button = add(NSMakeRect(10, 10, 100, 30), QStringLiteral("&Save"));
    show(window);
    const QSignalSpy clicks(&button, &QAbstractButton::clicked);
    QTest::keyClick(window.windowHandle(), Qt::Key_S, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return clicks.count() == 1; }));
}

TEST_F(NSButtonTest, KeepsTheLooksOfAnAttributedTitleUntilAPlainOneIsSet) {
    NSButton button;
    button.cell().setControlSize(NSSmallControlSize);
    button.setTitle(QStringLiteral("Plain"));
    EXPECT_EQ(button.attributedTitle(),
              NSAttributedString(QStringLiteral("Plain"), {.font = NSFont::systemFontOfSize(11)}));
    const NSAttributedString white(QStringLiteral("White"), {.foregroundColor = NSColor::whiteColor()});
    button.setAttributedTitle(white);
    EXPECT_EQ(button.title(), QStringLiteral("White"));
    EXPECT_EQ(button.attributedTitle(), white);
    button.setText(QStringLiteral("Other"));
    EXPECT_EQ(button.attributedTitle(), NSAttributedString(QStringLiteral("Other"), white.attributes()));
    button.setTitle(QStringLiteral("Other"));
    EXPECT_EQ(button.attributedTitle().attributes().foregroundColor, NSColor::blackColor());
}

TEST_F(NSButtonTest, LooksPressedForAMomentBeforeItClicks) {
    NSButton& button = add(NSMakeRect(10, 10, 100, 30));
    show(window);
    const QSignalSpy clicks(&button, &QAbstractButton::clicked);
    button.performClick(nullptr);
    EXPECT_TRUE(button.cell().isHighlighted());
    EXPECT_EQ(clicks.count(), 0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return clicks.count() == 1; }));
    EXPECT_FALSE(button.cell().isHighlighted());
}

TEST_F(NSButtonTest, ClicksThroughItsCell) {
    NSButton& button = add(NSMakeRect(10, 10, 100, 30));
    const QSignalSpy clicks(&button, &QAbstractButton::clicked);
    button.cell().performClick(nullptr);
    EXPECT_TRUE(QTest::qWaitFor([&] { return clicks.count() == 1; }));
}

TEST_F(NSButtonTest, IsNotClickedWhileDisabled) {
    NSButton& button = add(NSMakeRect(10, 10, 100, 30));
    button.setEnabled(false);
    const QSignalSpy clicks(&button, &QAbstractButton::clicked);
    button.performClick(nullptr);
    EXPECT_FALSE(button.isDown());
    // One that is clicked later comes after all that this one might still do.
    NSButton& other = add(NSMakeRect(10, 50, 100, 30));
    const QSignalSpy otherClicks(&other, &QAbstractButton::clicked);
    other.performClick(nullptr);
    EXPECT_TRUE(QTest::qWaitFor([&] { return otherClicks.count() == 1; }));
    EXPECT_EQ(clicks.count(), 0);
}

TEST_F(NSButtonTest, AnswersTheKeyOfItsCellWhereverTheKeyboardIs) {
    NSButton& button = add(NSMakeRect(10, 10, 100, 30));
    button.cell().setKeyEquivalent(escapeKey);
    HostView& view = addHostView(window.content(), NSMakeRect(10, 60, 50, 20), "view", log);
    show(window);
    window.makeFirstResponder(&view);
    log.clear();
    const QSignalSpy clicks(&button, &QAbstractButton::clicked);
    QTest::keyClick(window.windowHandle(), Qt::Key_Escape);
    EXPECT_TRUE(QTest::qWaitFor([&] { return clicks.count() == 1; }));
    EXPECT_THAT(log, testing::Not(testing::Contains("view.keyDown")));
}

TEST_F(NSButtonTest, AnswersReturnOnBothPartsOfTheKeyboard) {
    NSButton& button = add(NSMakeRect(10, 10, 100, 30));
    button.cell().setKeyEquivalent(returnKey);
    show(window);
    const QSignalSpy clicks(&button, &QAbstractButton::clicked);
    QTest::keyClick(window.windowHandle(), Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([&] { return clicks.count() == 1; }));
    QTest::keyClick(window.windowHandle(), Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return clicks.count() == 2; }));
}

TEST_F(NSButtonTest, WantsCommandForLettersAndNothingForEscape) {
    NSButton& button = add(NSMakeRect(10, 10, 100, 30));
    show(window);
    constexpr std::uint16_t placeOfS = 1;
    constexpr std::uint16_t placeOfEscape = 53;
    const QString letter = QStringLiteral("s");
    button.cell().setKeyEquivalent(letter);
    EXPECT_FALSE(button.performKeyEquivalent(key(letter, placeOfS)));
    EXPECT_FALSE(button.performKeyEquivalent(key(letter, placeOfS, NSAlternateKeyMask)));
    EXPECT_FALSE(button.performKeyEquivalent(key(letter, placeOfS, NSCommandKeyMask | NSAlternateKeyMask)));
    EXPECT_FALSE(button.performKeyEquivalent(key(QStringLiteral("S"), placeOfS, NSCommandKeyMask | NSShiftKeyMask)));
    EXPECT_TRUE(button.performKeyEquivalent(key(letter, placeOfS, NSCommandKeyMask)));
    EXPECT_TRUE(button.performKeyEquivalent(key(letter, placeOfS, NSCommandKeyMask | NSAlphaShiftKeyMask)));
    button.cell().setKeyEquivalent(QStringLiteral("S"));
    EXPECT_TRUE(button.performKeyEquivalent(key(QStringLiteral("S"), placeOfS, NSCommandKeyMask | NSShiftKeyMask)));

    button.cell().setKeyEquivalent(escapeKey);
    EXPECT_TRUE(button.performKeyEquivalent(key(escapeKey, placeOfEscape)));
    EXPECT_TRUE(button.performKeyEquivalent(key({}, placeOfEscape))) << "whatever text it makes";
    EXPECT_FALSE(button.performKeyEquivalent(key(escapeKey, placeOfEscape, NSCommandKeyMask)));
    EXPECT_FALSE(button.performKeyEquivalent(key(escapeKey, placeOfEscape, NSShiftKeyMask)));
    EXPECT_FALSE(button.performKeyEquivalent(NSEvent::keyEventWithType(NSKeyUp, 0, nullptr, escapeKey, placeOfEscape)));
}

TEST_F(NSButtonTest, AnswersNoKeyWithoutAKeyEquivalent) {
    NSButton& button = add(NSMakeRect(10, 10, 100, 30));
    show(window);
    EXPECT_FALSE(button.performKeyEquivalent(key({}, NSUnknownKeyCode)));
    EXPECT_FALSE(button.performKeyEquivalent(key({}, NSUnknownKeyCode, NSCommandKeyMask)));
}

TEST_F(NSButtonTest, LeavesItsKeyToOthersWhileItIsDisabledOrHidden) {
    NSButton& button = add(NSMakeRect(10, 10, 100, 30));
    button.cell().setKeyEquivalent(escapeKey);
    show(window);
    const NSEvent escape = key(escapeKey, 53);
    button.setEnabled(false);
    EXPECT_FALSE(button.performKeyEquivalent(escape));
    button.setEnabled(true);
    button.hide();
    EXPECT_FALSE(button.performKeyEquivalent(escape));
    button.show();
    EXPECT_TRUE(button.performKeyEquivalent(escape));
}

TEST_F(NSButtonTest, ClicksOnceForAKeyThatIsHeldDown) {
    NSButton& button = add(NSMakeRect(10, 10, 100, 30));
    button.cell().setKeyEquivalent(escapeKey);
    show(window);
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier, escapeKey, true);
    EXPECT_TRUE(button.performKeyEquivalent(NSEvent(held, &window))) << "nobody else gets it";
    EXPECT_FALSE(button.isDown());
}

TEST_F(NSButtonTest, ShowsThatItHasTheKeyboardButNotAfterAClickOfTheMouse) {
    NSButton& button = add(NSMakeRect(10, 10, 100, 30));
    show(window);
    EXPECT_FALSE(NSButton().showsFirstResponder());
    for (const Qt::FocusReason reason :
         {Qt::TabFocusReason, Qt::BacktabFocusReason, Qt::ShortcutFocusReason, Qt::OtherFocusReason}) {
        button.clearFocus();
        EXPECT_FALSE(button.showsFirstResponder());
        button.setFocus(reason);
        EXPECT_TRUE(button.showsFirstResponder()) << reason;
    }
    button.clearFocus();
    button.setFocus(Qt::MouseFocusReason);
    EXPECT_FALSE(button.showsFirstResponder());
}

TEST_F(NSButtonTest, ShowsTheSameWhenItsWindowComesBack) {
    NSButton& button = add(NSMakeRect(10, 10, 100, 30));
    show(window);
    for (const Qt::FocusReason reason : {Qt::MouseFocusReason, Qt::TabFocusReason}) {
        button.clearFocus();
        button.setFocus(reason);
        const bool before = button.showsFirstResponder();
        QFocusEvent out(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
        QFocusEvent in(QEvent::FocusIn, Qt::ActiveWindowFocusReason);
        QCoreApplication::sendEvent(&button, &out);
        QCoreApplication::sendEvent(&button, &in);
        EXPECT_EQ(button.showsFirstResponder(), before);
    }
}

TEST_F(NSButtonTest, OutlastsItsDeletionByItsOwnClick) {
    for (const bool byKey : {false, true}) {
        QPointer<NSButton> button = &add(NSMakeRect(10, 10, 100, 30));
        button->cell().setKeyEquivalent(escapeKey);
        QObject::connect(button, &QAbstractButton::clicked, &window, [&] { delete button; });
        show(window);
        if (byKey) {
            QTest::keyClick(window.windowHandle(), Qt::Key_Escape);
        } else {
            QTest::mouseClick(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(50, 200 - 25));
        }
        EXPECT_TRUE(QTest::qWaitFor([&] { return !button; }));
    }
}

TEST_F(NSButtonTest, OutlastsAnotherCellInItsAction) {
    NSButton& button = add(NSMakeRect(10, 10, 100, 30));
    show(window);
    QObject::connect(&button, &QAbstractButton::clicked, &window, [&] { button.setCell(nullptr); });
    const QSignalSpy clicks(&button, &QAbstractButton::clicked);
    button.cell().performClick(nullptr);
    EXPECT_TRUE(QTest::qWaitFor([&] { return clicks.count() == 1; }));
    EXPECT_EQ(button.cell().controlView(), &button);
}

TEST_F(NSButtonTest, LooksLikeAButtonOfTheDesktop) {
    for (const bool isCheckable : {false, true}) {
        NSButton button;
        button.setCheckable(isCheckable);
        button.setTitle(QStringLiteral("Save"));
        button.resize(button.sizeHint());
        EXPECT_GT(button.sizeHint().width(), button.fontMetrics().horizontalAdvance(button.title()));
        const QImage normal = button.grab().toImage();
        button.setDown(true);
        EXPECT_NE(button.grab().toImage(), normal);
        button.setDown(false);
        button.setEnabled(false);
        EXPECT_NE(button.grab().toImage(), normal);
    }
}

TEST_F(NSButtonTest, StandsUprightInAnyView) {
    class UnflippedButton : public NSButton {
    public:
        using NSButton::NSButton;
        bool isFlipped() const override { return false; }
    };
    const NSRect frame = NSMakeRect(0, 0, 120, 40);
    NSButton flipped(frame);
    UnflippedButton unflipped(frame);
    for (NSButton* button : {&flipped, static_cast<NSButton*>(&unflipped)}) {
        button->setTitle(QStringLiteral("Save"));
    }
    EXPECT_EQ(unflipped.grab().toImage(), flipped.grab().toImage());
}

TEST_F(NSButtonCellTest, KeepsItsOwnValuesWithoutAButton) {
    NSButtonCell cell;
    EXPECT_EQ(cell.controlView(), nullptr);
    EXPECT_TRUE(cell.isEnabled());
    EXPECT_FALSE(cell.isHighlighted());
    EXPECT_EQ(cell.state(), NSOffState);
    EXPECT_EQ(cell.controlSize(), NSRegularControlSize);
    cell.setTitle(QStringLiteral("&Row"));
    cell.setEnabled(false);
    cell.setHighlighted(true);
    cell.setIntValue(NSMixedState);
    cell.setKeyEquivalent(QStringLiteral("r"));
    EXPECT_EQ(cell.title(), QStringLiteral("&Row"));
    EXPECT_EQ(cell.attributedDisplayTitle({}).string(), QStringLiteral("Row"));
    EXPECT_FALSE(cell.isEnabled());
    EXPECT_TRUE(cell.isHighlighted());
    EXPECT_EQ(cell.intValue(), NSOnState);
    EXPECT_EQ(cell.keyEquivalent(), QStringLiteral("r"));
}

TEST_F(NSButtonCellTest, GoesToItsOtherStateWhenClickedWithoutAButton) {
    NSButtonCell cell;
    cell.performClick(nullptr);
    EXPECT_EQ(cell.state(), NSOnState);
    cell.performClick(nullptr);
    EXPECT_EQ(cell.state(), NSOffState);
    cell.setEnabled(false);
    cell.performClick(nullptr);
    EXPECT_EQ(cell.state(), NSOffState);
}

TEST_F(NSButtonCellTest, DrawsNothingWithoutRoomOrContext) {
    NSButtonCell cell;
    NSView view;
    cell.drawWithFrame(NSMakeRect(0, 0, 40, 20), view);
    DrawnView drawn;
    drawn.drawing = [&] { cell.drawWithFrame(NSMakeRect(0, 0, -40, 20), drawn); };
    const QImage empty = NSView().grab(QRect(0, 0, 40, 20)).toImage();
    EXPECT_EQ(drawn.grab(QRect(0, 0, 40, 20)).toImage(), empty);
    EXPECT_GT(cell.cellSize().width, 0);
}
