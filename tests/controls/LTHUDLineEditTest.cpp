// SPDX-License-Identifier: MIT
// What both kinds of field do.
#include "HUDFieldTestSupport.h"

#include <QAccessible>
#include <QAction>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPointer>
#include <QSignalSpy>
#include <QVBoxLayout>

#include <algorithm>

#include <gmock/gmock.h>

using testing::Contains;
using testing::Not;

namespace {

template <class Field>
class HUDFields : public HUDFieldTest<Field> {
protected:
    void sendKey(Qt::Key key, bool isRepeat) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, QString(), isRepeat);
        QCoreApplication::sendEvent(this->window.windowHandle(), &event);
    }
    void drop(const QString& text) {
        QMimeData data;
        data.setText(text);
        const QPoint place(100, 11);
        QDragEnterEvent enter(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&this->field, &enter);
        QDropEvent event(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&this->field, &event);
    }
    void commit(const QString& text) {
        QInputMethodEvent event;
        event.setCommitString(text);
        QCoreApplication::sendEvent(&this->field, &event);
    }
    void pasteByMenu() {
        const std::unique_ptr<QMenu> menu(this->field.createStandardContextMenu());
        paste(*menu);
    }
    static void paste(const QWidget& menu) {
        const QList<QAction*> actions = menu.actions();
        const auto found = std::find_if(actions.begin(), actions.end(), [](const QAction* action) {
            return action->text().contains(QStringLiteral("Paste"));
        });
        ASSERT_NE(found, actions.end());
        QAction* paste = *found;
        ASSERT_TRUE(paste->isEnabled());
        paste->trigger();
    }
};

using Fields = testing::Types<LTHUDTextField, LTHUDSecureTextField>;
TYPED_TEST_SUITE(HUDFields, Fields);

} // namespace

TYPED_TEST(HUDFields, ReturnClicksTheTargetOnceAndInsertsNothing) {
    this->field.setTarget(this->button.get());
    this->field.setStringValue(QStringLiteral("text"));
    this->showFocused();
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        this->clicks = 0;
        this->press(key);
        EXPECT_TRUE(this->button->isDown()) << "it is seen to be pressed";
        this->waitForClick();
        EXPECT_EQ(this->clicks, 1);
        EXPECT_EQ(this->field.stringValue(), QStringLiteral("text"));
    }
}

TYPED_TEST(HUDFields, AHeldReturnClicksOnce) {
    this->field.setTarget(this->button.get());
    this->showFocused();
    this->sendKey(Qt::Key_Return, false);
    this->waitForClick();
    this->sendKey(Qt::Key_Return, true);
    EXPECT_FALSE(this->button->isDown());
    this->settle();
    EXPECT_EQ(this->clicks, 1);
}

TYPED_TEST(HUDFields, ReturnDoesNothingWithoutATarget) {
    this->showFocused();
    QSignalSpy returns(&this->field, &QLineEdit::returnPressed);
    this->press(Qt::Key_Return);
    EXPECT_EQ(this->field.stringValue(), QString());
    this->field.setTarget(this->button.get());
    this->button.reset();
    this->press(Qt::Key_Return);
    EXPECT_EQ(this->field.target(), nullptr);
    EXPECT_EQ(returns.count(), 0);
    EXPECT_THAT(this->window.unused, Not(Contains("keyDown"))) << "and goes no further";
}

TYPED_TEST(HUDFields, AnswersReturnAsAKeyEquivalentOnlyWithTheKeyboardAndATarget) {
    const NSEvent returnKey =
        NSEvent::keyEventWithType(NSKeyDown, 0, &this->window, QStringLiteral("\r"), std::uint16_t{36});
    const NSEvent letter =
        NSEvent::keyEventWithType(NSKeyDown, 0, &this->window, QStringLiteral("v"), std::uint16_t{9});
    this->showFocused();
    EXPECT_FALSE(this->field.performKeyEquivalent(returnKey));
    this->field.setTarget(this->button.get());
    EXPECT_FALSE(this->field.performKeyEquivalent(letter));
    EXPECT_TRUE(this->field.performKeyEquivalent(returnKey));
    this->waitForClick();
    this->window.makeFirstResponder(&this->other);
    EXPECT_FALSE(this->field.performKeyEquivalent(returnKey));
    EXPECT_EQ(this->clicks, 1);
}

TYPED_TEST(HUDFields, TabGoesToTheNextKeyViewWhateverIsHeld) {
    this->field.setNextKeyView(&this->other);
    this->showWindow();
    for (const auto modifiers : {Qt::KeyboardModifiers(Qt::NoModifier), Qt::KeyboardModifiers(Qt::ShiftModifier),
                                 Qt::KeyboardModifiers(Qt::ControlModifier)}) {
        for (const Qt::Key key : {Qt::Key_Tab, Qt::Key_Backtab}) {
            this->window.makeFirstResponder(&this->field);
            this->press(key, modifiers);
            EXPECT_EQ(this->window.firstResponder(), &this->other) << modifiers;
        }
    }
    EXPECT_EQ(this->field.stringValue(), QString());
}

TYPED_TEST(HUDFields, TabGoesToTheWindowWithoutANextKeyView) {
    this->showFocused();
    this->press(Qt::Key_Tab);
    EXPECT_EQ(this->window.firstResponder(), &this->window);
    this->window.makeFirstResponder(&this->field);
    {
        NSView shortLived;
        this->field.setNextKeyView(&shortLived);
        EXPECT_EQ(this->field.nextKeyView(), &shortLived);
    }
    EXPECT_EQ(this->field.nextKeyView(), nullptr);
    this->press(Qt::Key_Tab);
    EXPECT_EQ(this->window.firstResponder(), &this->window);
}

TYPED_TEST(HUDFields, TabIsQtsInAPlainWindow) {
    QWidget plain;
    auto* layout = new QVBoxLayout(&plain);
    auto* before = new QLineEdit;
    auto* between = new TypeParam;
    auto* after = new QLineEdit;
    for (QWidget* widget :
         {static_cast<QWidget*>(before), static_cast<QWidget*>(between), static_cast<QWidget*>(after)}) {
        layout->addWidget(widget);
    }
    plain.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&plain));
    between->setFocus();
    QTest::keyClick(plain.windowHandle(), Qt::Key_Tab);
    EXPECT_TRUE(after->hasFocus());
    between->setFocus();
    QTest::keyClick(plain.windowHandle(), Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_TRUE(before->hasFocus());
    between->setNextKeyView(before);
    between->setFocus();
    QTest::keyClick(plain.windowHandle(), Qt::Key_Tab);
    EXPECT_TRUE(before->hasFocus());
    EXPECT_GE(between->height(), 18);
    EXPECT_EQ(between->x(), before->x()) << "it is where the layout has it";
}

TYPED_TEST(HUDFields, LeavesOtherKeysToQt) {
    this->showFocused();
    this->type(QStringLiteral("abc"));
    this->press(Qt::Key_Backspace);
    EXPECT_EQ(this->field.stringValue(), QStringLiteral("ab"));
    this->press(Qt::Key_Home);
    this->press(Qt::Key_Delete);
    EXPECT_EQ(this->field.stringValue(), QStringLiteral("b"));
    this->press(Qt::Key_Escape);
    EXPECT_THAT(this->window.unused, Contains("keyDown")) << "Escape is the window's";
    EXPECT_EQ(this->window.firstResponder(), &this->field);
}

TYPED_TEST(HUDFields, LosesTheKeyboardWhenItIsHidden) {
    this->showFocused();
    this->field.hide();
    EXPECT_NE(this->window.firstResponder(), &this->field);
}

TYPED_TEST(HUDFields, DrawsAtOnceWhenItGetsTheKeyboardAndLaterWhenItLosesIt) {
    this->showWindow();
    this->field.drawings = 0;
    this->window.makeFirstResponder(&this->field);
    EXPECT_GE(this->field.drawings, 1);
    this->settle();
    this->field.drawings = 0;
    this->window.makeFirstResponder(&this->other);
    EXPECT_EQ(this->field.drawings, 0);
    this->settle();
    EXPECT_GE(this->field.drawings, 1);
}

TYPED_TEST(HUDFields, TakeANullStringForTheEmptyOne) {
    this->field.setStringValue(QStringLiteral("text"));
    this->field.setStringValue(QString());
    EXPECT_EQ(this->field.stringValue(), QString());
    EXPECT_TRUE(this->field.stringValue().isEmpty());
}

TYPED_TEST(HUDFields, HaveASpaceForEachLineBreakByEveryWayIn) {
    const QString lines = QStringLiteral("a\r\nb\nc\rd\u2028e\u2029f");
    const QString line = QStringLiteral("a b c d e f");
    this->showFocused();
    this->copyToClipboard(lines);
    const std::vector<std::pair<const char*, std::function<void()>>> ways{
        {"Control-V", [&] { this->press(Qt::Key_V, Qt::ControlModifier); }},
        {"Shift-Insert", [&] { this->press(Qt::Key_Insert, Qt::ShiftModifier); }},
        {"menu", [&] { this->pasteByMenu(); }},
        {"drop", [&] { this->drop(lines); }},
        {"input method", [&] { this->commit(lines); }},
        {"set", [&] { this->field.setStringValue(lines); }},
        {"set by Qt's name", [&] { this->field.setText(lines); }},
        {"inserted by Qt's name", [&] { this->field.insert(lines); }},
        {"accessibility",
         [&] { QAccessible::queryAccessibleInterface(&this->field)->editableTextInterface()->insertText(0, lines); }},
    };
    for (const auto& [name, comeIn] : ways) {
        this->field.clear();
        comeIn();
        EXPECT_EQ(this->field.stringValue(), line) << name;
        EXPECT_EQ(this->field.cursorPosition(), line.size()) << name;
    }
}

TYPED_TEST(HUDFields, TakeWhatIsDroppedAsItIs) {
    this->showFocused();
    this->drop(QStringLiteral("a  b"));
    EXPECT_EQ(this->field.stringValue(), QStringLiteral("a  b"));
}

TYPED_TEST(HUDFields, PasteNothingWhereTheDesktopHasNoSelection) {
    if (QGuiApplication::clipboard()->supportsSelection()) {
        GTEST_SKIP() << "this platform has one";
    }
    this->showFocused();
    this->copyToClipboard(QStringLiteral("x"));
    this->field.setStringValue(QStringLiteral("kept"));
    this->field.pasteFromClipboard(QClipboard::Selection);
    EXPECT_EQ(this->field.stringValue(), QStringLiteral("kept"));
}

TYPED_TEST(HUDFields, PasteByTheMenuThatTheyOpen) {
    this->showFocused();
    this->copyToClipboard(QStringLiteral("x\ny"));
    const QPoint place(100, 11);
    QContextMenuEvent event(QContextMenuEvent::Mouse, place, this->field.mapToGlobal(place));
    QCoreApplication::sendEvent(&this->field, &event);
    const QPointer<QWidget> menu = QApplication::activePopupWidget();
    ASSERT_NE(menu, nullptr);
    this->paste(*menu);
    EXPECT_EQ(this->field.stringValue(), QStringLiteral("x y"));
    menu->close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !menu; }));
}

TYPED_TEST(HUDFields, TellOfOneChangeForAPaste) {
    this->showFocused();
    this->copyToClipboard(QStringLiteral("x\ny"));
    this->field.setStringValue(QStringLiteral("ab"));
    QSignalSpy changes(&this->field, &QLineEdit::textChanged);
    QSignalSpy moves(&this->field, &QLineEdit::cursorPositionChanged);
    this->press(Qt::Key_V, Qt::ControlModifier);
    ASSERT_EQ(changes.count(), 1);
    EXPECT_EQ(changes.at(0).at(0).toString(), QStringLiteral("abx y"));
    EXPECT_EQ(moves.count(), 1);
}

TYPED_TEST(HUDFields, PasteTheTextOfStyledText) {
    this->showFocused();
    this->copyStyledToClipboard(QStringLiteral("<p style='color:red'>red<br>rich</p>"));
    this->press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(this->field.stringValue(), QStringLiteral("red rich"));
    this->field.clear();
    this->pasteByMenu();
    EXPECT_EQ(this->field.stringValue(), QStringLiteral("red rich"));
}

TYPED_TEST(HUDFields, TakeNothingWhileReadOnly) {
    this->showFocused();
    this->copyToClipboard(QStringLiteral("x\ny"));
    this->field.setStringValue(QStringLiteral("kept"));
    this->field.setReadOnly(true);
    this->press(Qt::Key_V, Qt::ControlModifier);
    this->press(Qt::Key_Insert, Qt::ShiftModifier);
    this->drop(QStringLiteral("x\ny"));
    EXPECT_EQ(this->field.stringValue(), QStringLiteral("kept"));
    EXPECT_FALSE(this->field.testAttribute(Qt::WA_InputMethodEnabled));
}

TYPED_TEST(HUDFields, PasteTheSelectionOfTheDesktopOnAMiddleClick) {
    QClipboard* clipboard = QGuiApplication::clipboard();
    if (!clipboard->supportsSelection()) {
        GTEST_SKIP() << "this platform has no such selection";
    }
    this->showFocused();
    clipboard->setText(QStringLiteral("x\ny"), QClipboard::Selection);
    this->field.setStringValue(QStringLiteral("ab"));
    const QPoint atTheEnd = this->field.mapTo(&this->window, QPoint(150, 11));
    QTest::mouseClick(this->window.windowHandle(), Qt::MiddleButton, Qt::NoModifier, atTheEnd);
    EXPECT_EQ(this->field.stringValue(), QStringLiteral("abx y"));
}

TYPED_TEST(HUDFields, TellAScreenReaderOfThePlaceholder) {
    const QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&this->field);
    ASSERT_TRUE(accessible);
    EXPECT_EQ(accessible->role(), QAccessible::EditableText);
    EXPECT_TRUE(accessible->state().editable);
    this->field.setPlaceholderString(QStringLiteral("Name"));
    EXPECT_EQ(accessible->text(QAccessible::Description), QStringLiteral("Name"));
    this->field.setPlaceholderString(QStringLiteral("Title"));
    EXPECT_EQ(accessible->text(QAccessible::Description), QStringLiteral("Title"));
    this->field.setPlaceholderString(QString());
    EXPECT_EQ(accessible->text(QAccessible::Description), QString());
    this->field.setAccessibleDescription(QStringLiteral("The name of the snippet"));
    this->field.setPlaceholderString(QStringLiteral("Name"));
    EXPECT_EQ(accessible->text(QAccessible::Description), QStringLiteral("The name of the snippet"));
    EXPECT_TRUE(this->field.placeholderText().isEmpty()) << "Qt draws none besides";
}

TYPED_TEST(HUDFields, KeepTheirColorsWhateverThePersonsAre) {
    this->showFocused();
    this->field.setStringValue(QStringLiteral("text"));
    const QImage before = this->picture();
    QPalette red(Qt::red);
    red.setColor(QPalette::Text, Qt::red);
    red.setColor(QPalette::Base, Qt::yellow);
    QApplication::setPalette(red);
    this->settle();
    EXPECT_EQ(difference(this->picture(), before), 0);
    this->field.setPalette(red);
    this->settle();
    EXPECT_EQ(difference(this->picture(), before), 0);
}

TYPED_TEST(HUDFields, DrawAPartAsTheyDrawTheWhole) {
    this->showFocused();
    this->field.setStringValue(QStringLiteral("Caret and text"));
    this->field.setSelection(2, 4);
    const QImage whole = this->picture();
    for (const QRect& part : {QRect(30, 3, 2, 16), QRect(0, 0, 12, 22), QRect(17, 8, 31, 5), QRect(190, 12, 10, 10)}) {
        const QImage drawnPart = this->picture(part);
        QImage expected(whole.size(), whole.format());
        expected.fill(Qt::transparent);
        const QRect pixels(part.topLeft() * this->field.devicePixelRatio(),
                           part.size() * this->field.devicePixelRatio());
        EXPECT_EQ(difference(drawnPart.copy(pixels), whole.copy(pixels)), 0) << part.x();
    }
}

TYPED_TEST(HUDFields, OutlastStrangeFrames) {
    this->showFocused();
    this->field.setPlaceholderString(QStringLiteral("Name"));
    for (const NSSize& size : {NSMakeSize(0, 0), NSMakeSize(-5, -5), NSMakeSize(1, 1), NSMakeSize(3, 22),
                               NSMakeSize(200, 2), NSMakeSize(5000, 500)}) {
        this->field.setFrame({{0, 0}, size});
        this->field.setStringValue(QString(100000, QChar(u'm')));
        this->field.display();
        this->field.setStringValue(QString());
        this->window.makeFirstResponder(&this->other);
        this->field.display();
        this->window.makeFirstResponder(&this->field);
        EXPECT_EQ(this->field.frame().size, size);
    }
}

TYPED_TEST(HUDFields, MayBeDeletedByWhatReturnStarts) {
    auto* doomed = new TypeParam(NSMakeRect(10, 10, 100, 22));
    const QPointer<QWidget> guard(doomed);
    this->window.content().addSubview(doomed);
    doomed->setTarget(this->button.get());
    QObject::connect(this->button.get(), &NSButton::pressed, [guard] { delete guard.data(); });
    this->showWindow();
    this->window.makeFirstResponder(doomed);
    this->press(Qt::Key_Return);
    EXPECT_FALSE(guard);
    this->waitForClick();
}
