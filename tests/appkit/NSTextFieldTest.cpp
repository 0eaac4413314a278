// SPDX-License-Identifier: MIT
#include "AppKitHost.h"

#include <VXKit/platform/appkit/NSTextField.h>
#include <VXKit/platform/graphics/NSGraphics.h>

#include <tests/graphics/GraphicsTestSupport.h>

#include <QAccessible>
#include <QAction>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QImage>
#include <QPointer>
#include <QTest>
#include <QToolTip>
#include <QWindow>

#include <cmath>

namespace {

const NSFont smallFont = NSFont::systemFontOfSize(11);
const QString pangram = QStringLiteral("The quick brown fox jumps over the lazy dog");

NSTextAttributes attributesOf(const NSFont& font) {
    NSTextAttributes attributes;
    attributes.font = font;
    attributes.foregroundColor = NSColor::whiteColor();
    return attributes;
}

double lineHeight(const NSFont& font) {
    return sizeWithAttributes(QStringLiteral("x"), attributesOf(font)).height;
}

class NSTextFieldTest : public AppKitHost {
protected:
    NSTextFieldTest() {
        field.setFont(smallFont);
        field.setTextColor(NSColor::whiteColor());
        window.content().addSubview(&field);
    }

    void setFrameOfLines(int count, double width = 200) {
        field.setFrame(NSMakeRect(10, 20, width, count * lineHeight(field.font())));
    }

    QImage picture() {
        const double ratio = field.devicePixelRatioF();
        QImage image(field.size() * ratio, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        image.fill(Qt::transparent);
        field.render(&image, {}, {}, QWidget::DrawChildren);
        image.setDevicePixelRatio(1);
        return image;
    }

    /// What drawing the string into an area of the widget's size would make.
    QImage drawnText(const NSFont& font, const QString& text) const {
        const NSSize size = NSMakeSize(field.width(), field.height());
        return drawn(size, field.devicePixelRatioF(), [&] {
            drawInRect(text, {NSZeroPoint, size}, attributesOf(font));
        });
    }

    void click(const QPoint& point, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, modifiers, field.mapTo(&window, point));
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(window.windowHandle(), key, modifiers);
    }

    QString toolTipOfField() {
        QHelpEvent event(QEvent::ToolTip, QPoint(5, 5), field.mapToGlobal(QPoint(5, 5)));
        QCoreApplication::sendEvent(&field, &event);
        QString text = QToolTip::text();
        QToolTip::hideText();
        return text;
    }

    HostWindow window{NSMakeRect(100, 100, 420, 200)};
    NSTextField field{NSMakeRect(10, 20, 200, 100)};
};

class NSTextFieldAtTwoPixels : public TwoPixelsAPoint, public NSTextFieldTest {};

} // namespace

TEST_F(NSTextFieldTest, AnswersWhatWasSet) {
    NSTextField plain;
    EXPECT_EQ(plain.stringValue(), QString());
    EXPECT_EQ(plain.font(), NSFont());
    EXPECT_EQ(plain.textColor(), NSColor::blackColor());
    EXPECT_FALSE(plain.isSelectable());
    field.setStringValue(QStringLiteral("<b>&Bold</b>"));
    EXPECT_EQ(field.stringValue(), QStringLiteral("<b>&Bold</b>"));
    EXPECT_EQ(field.font(), smallFont);
    EXPECT_EQ(field.textColor(), NSColor::whiteColor());
    EXPECT_EQ(field.property("textColor").value<QColor>(), QColor(Qt::white)) << "as a form has it";
}

TEST_F(NSTextFieldTest, TellsTheSizeThatNothingLimits) {
    field.setStringValue(pangram);
    const NSAttributedString attributed = field.attributedStringValue();
    EXPECT_EQ(attributed.string(), pangram);
    EXPECT_EQ(attributed.attributes().font, smallFont);
    EXPECT_EQ(attributed.attributes().foregroundColor, NSColor::whiteColor());
    EXPECT_EQ(attributed.size(), sizeWithAttributes(pangram, attributesOf(smallFont)));
    EXPECT_GT(attributed.size().width, 200);
    EXPECT_EQ(attributed.size().height, lineHeight(smallFont)) << "one line's";
    field.setStringValue(QString());
    EXPECT_EQ(field.attributedStringValue().size().width, 0);
}

TEST_F(NSTextFieldTest, BeginsAtTheLeftEdgeAndTheTop) {
    field.setStringValue(pangram);
    EXPECT_EQ(difference(picture(), drawnText(smallFont, pangram)), 0);
    EXPECT_LE(inkOf(picture()).left(), 1);
    EXPECT_LE(inkOf(picture()).top(), 4);
}

TEST_F(NSTextFieldAtTwoPixels, BeginsAtTheLeftEdgeAndTheTop) {
    field.setStringValue(pangram);
    EXPECT_EQ(difference(picture(), drawnText(smallFont, pangram)), 0);
}

TEST_F(NSTextFieldTest, TakesNothingForMarkup) {
    const QString text = QStringLiteral("<b>&Bold</b>");
    field.setStringValue(text);
    EXPECT_EQ(difference(picture(), drawnText(smallFont, text)), 0);
}

TEST_F(NSTextFieldTest, HoldsAsManyLinesAsItIsHigh) {
    const QString line = QString::fromUtf8("gjpqyÅÇ(|");
    for (const NSFont& font : {smallFont, NSFont::boldSystemFontOfSize(16), NSFont::systemFontOfSize(12)}) {
        field.setFont(font);
        for (const int count : {1, 2, 3, 7}) {
            const QString text = QStringList(count, line).join(u'\n');
            field.setStringValue(text);
            for (const double y : {10.0, 10.3, 10.5, 10.8}) {
                field.setFrame(NSMakeRect(10, y, 200, count * lineHeight(font)));
                EXPECT_EQ(field.frame(), NSMakeRect(10, y, 200, count * lineHeight(font)));
                const QRect ink = inkOf(picture());
                field.setFrame(NSMakeRect(10, y, 200, count * lineHeight(font) + 20));
                // The font's tallest signs reach a trace over its line.
                EXPECT_NEAR(ink.bottom(), inkOf(picture()).bottom(), 1) << count << " lines at " << y;
                EXPECT_GE(ink.height(), inkOf(picture()).height() - 1);
            }
        }
    }
}

TEST_F(NSTextFieldTest, DrawsWhatWrappingPushesOutInASmallerSize) {
    const auto bottomOf = [](const NSFont& font, double width) {
        const NSSize area = NSMakeSize(width, 100);
        return inkOf(drawn(area, [&] { drawInRect(pangram, {NSZeroPoint, area}, attributesOf(font)); })).bottom();
    };
    const NSFont smaller = NSFont::systemFontOfSize(10);
    const double height = 2 * lineHeight(smallFont);
    // A width that the text fills less than twice, and yet breaks into three lines.
    double width = std::ceil(sizeWithAttributes(pangram, attributesOf(smallFont)).width / 2);
    while (width < 200 && (bottomOf(smallFont, width) < height || bottomOf(smaller, width) > height)) {
        ++width;
    }
    ASSERT_LT(width, 200) << "the text of this test fits no more";
    setFrameOfLines(2, width);
    field.setStringValue(pangram);
    EXPECT_GT(difference(picture(), drawnText(smallFont, pangram)), 100);
    EXPECT_EQ(difference(picture(), drawnText(smaller, pangram)), 0);
    EXPECT_EQ(field.font(), smallFont);
    EXPECT_EQ(field.attributedStringValue().attributes().font, smallFont);
    EXPECT_EQ(toolTipOfField(), QString()) << "there is all of it to be seen";
}

TEST_F(NSTextFieldTest, EndsInAnEllipsisWhereNoSizeFits) {
    const QString text = QStringList(20, pangram).join(u' ');
    setFrameOfLines(2);
    field.setStringValue(text);
    const QImage cut = picture();
    // Two lines of the smallest size, and the last of them full.
    const QRect ink = inkOf(cut);
    EXPECT_GT(ink.width(), 150);
    EXPECT_LE(ink.bottom(), 2 * lineHeight(NSFont::systemFontOfSize(9)));
    EXPECT_GT(ink.bottom(), lineHeight(NSFont::systemFontOfSize(9)) + 4);
    EXPECT_EQ(field.stringValue(), text);
    EXPECT_TRUE(toolTipOfField().contains(text));
    field.setToolTip(QStringLiteral("The host's own"));
    EXPECT_EQ(toolTipOfField(), QStringLiteral("The host's own"));
}

TEST_F(NSTextFieldTest, EscapesTheTextInItsToolTip) {
    setFrameOfLines(1, 40);
    field.setStringValue(QStringLiteral("<b>bold</b> and so on and so on"));
    EXPECT_TRUE(toolTipOfField().contains(QStringLiteral("&lt;b&gt;bold")));
}

TEST_F(NSTextFieldTest, IsPalerWhileDisabled) {
    field.setStringValue(pangram);
    const auto strongest = [this] {
        int alpha = 0;
        const QImage image = picture();
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                alpha = std::max(alpha, qAlpha(image.pixel(x, y)));
            }
        }
        return alpha;
    };
    ASSERT_GT(strongest(), 220);
    field.setEnabled(false);
    EXPECT_LT(strongest(), 128);
    EXPECT_GT(strongest(), 60);
}

TEST_F(NSTextFieldTest, OutlastsStrangeFramesAndTexts) {
    field.setSelectable(true);
    for (const QString& text : {QString(), QStringLiteral("\n\n"), QString(200000, QChar(u'm')),
                                QString(20000, QChar(u'\n')), QString(QChar(0xd800)), QStringLiteral("\u202eabc")}) {
        field.setStringValue(text);
        for (const NSSize& size : {NSMakeSize(0, 0), NSMakeSize(-5, -5), NSMakeSize(1, 1), NSMakeSize(200, 3),
                                   NSMakeSize(1, 200), NSMakeSize(300, 40), NSMakeSize(1e9, 1e9)}) {
            field.setFrame({{0, 0}, size});
            EXPECT_EQ(field.frame().size, size);
            if (size.width > 0 && size.width < 1000) {
                picture();
            }
            field.selectText(nullptr);
            EXPECT_EQ(field.selectedText().size(), text.size()) << size.width;
        }
        EXPECT_EQ(field.stringValue(), text);
    }
}

TEST_F(NSTextFieldTest, IsALabelToAScreenReader) {
    field.setStringValue(QStringLiteral("<i>Really</i> delete it?"));
    const QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&field);
    ASSERT_TRUE(accessible);
    EXPECT_EQ(accessible->role(), QAccessible::StaticText);
    EXPECT_EQ(accessible->text(QAccessible::Name), QStringLiteral("<i>Really</i> delete it?"));
}

TEST_F(NSTextFieldTest, LeavesTheMouseToWhatIsBelowUnlessItIsSelectable) {
    field.setStringValue(pangram);
    show(window);
    click(QPoint(20, 6));
    EXPECT_EQ(window.unused, (std::vector<std::string>{"mouseDown", "mouseUp"}));
    EXPECT_NE(window.firstResponder(), &field);
    window.unused.clear();
    field.setSelectable(true);
    click(QPoint(20, 6));
    EXPECT_TRUE(window.unused.empty());
    EXPECT_EQ(window.firstResponder(), &field);
    QTest::mouseClick(window.windowHandle(), Qt::RightButton, Qt::NoModifier, field.mapTo(&window, QPoint(20, 6)));
    if (QWidget* menu = QApplication::activePopupWidget()) {
        menu->close();
    }
}

TEST_F(NSTextFieldTest, SelectsWithTheMouse) {
    field.setStringValue(QStringLiteral("one two three"));
    field.setSelectable(true);
    show(window);
    const auto x = [](const char* before) {
        return static_cast<int>(
            std::lround(sizeWithAttributes(QString::fromLatin1(before), attributesOf(smallFont)).width));
    };
    QWindow* handle = window.windowHandle();
    QTest::mousePress(handle, Qt::LeftButton, {}, field.mapTo(&window, QPoint(x("one "), 6)));
    QTest::mouseMove(handle, field.mapTo(&window, QPoint(x("one two"), 6)));
    QTest::mouseRelease(handle, Qt::LeftButton, {}, field.mapTo(&window, QPoint(x("one two"), 6)));
    EXPECT_EQ(field.selectedText(), QStringLiteral("two"));
    const QImage selected = picture();
    click(QPoint(x("one two three") + 5, 6), Qt::ShiftModifier);
    EXPECT_EQ(field.selectedText(), QStringLiteral("two three"));
    click(QPoint(x("one"), 6));
    EXPECT_EQ(field.selectedText(), QString());
    EXPECT_GT(difference(selected, picture()), 100) << "a selection can be seen";
    QTest::mouseDClick(handle, Qt::LeftButton, {}, field.mapTo(&window, QPoint(x("one t"), 6)));
    EXPECT_EQ(field.selectedText(), QStringLiteral("two"));
    QTest::mouseDClick(handle, Qt::LeftButton, {}, field.mapTo(&window, QPoint(1, 6)));
    EXPECT_EQ(field.selectedText(), QStringLiteral("one"));
}

TEST_F(NSTextFieldTest, SelectsAndCopiesWithTheKeyboard) {
    field.setStringValue(QStringLiteral("one two\nthree"));
    field.setSelectable(true);
    show(window);
    click(QPoint(1, 6));
    press(Qt::Key_Right, Qt::ShiftModifier);
    press(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(field.selectedText(), QStringLiteral("on"));
    press(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(field.selectedText(), QStringLiteral("o"));
    press(Qt::Key_Right, Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_EQ(field.selectedText(), QStringLiteral("one "));
    press(Qt::Key_End, Qt::ShiftModifier);
    EXPECT_EQ(field.selectedText(), QStringLiteral("one two"));
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("one two\nthree"));
    window.unused.clear();
    press(Qt::Key_X);
    EXPECT_EQ(window.unused, (std::vector<std::string>{"keyDown"})) << "other keys are not for it";
    window.makeFirstResponder(nullptr);
    EXPECT_EQ(field.selectedText(), QString()) << "ends with the keyboard";
}

TEST_F(NSTextFieldTest, SelectsByWordsLinesAndToTheEndsWithTheKeyboard) {
    field.setStringValue(QStringLiteral("one two\nthree four\nfive"));
    field.setSelectable(true);
    show(window);
    const int secondLine = static_cast<int>(std::lround(lineHeight(smallFont) * 1.5));
    const auto x = [](const char* before) {
        return static_cast<int>(
            std::lround(sizeWithAttributes(QString::fromLatin1(before), attributesOf(smallFont)).width));
    };
    click(QPoint(x("three fo"), secondLine));
    press(Qt::Key_Left, Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_EQ(field.selectedText(), QStringLiteral("fo"));
    press(Qt::Key_Left, Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_EQ(field.selectedText(), QStringLiteral("three fo"));
    press(Qt::Key_End, Qt::ShiftModifier);
    EXPECT_EQ(field.selectedText(), QStringLiteral("ur"));
    press(Qt::Key_Home, Qt::ShiftModifier);
    EXPECT_EQ(field.selectedText(), QStringLiteral("three fo"));
    press(Qt::Key_Home, Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_EQ(field.selectedText(), QStringLiteral("one two\nthree fo"));
    press(Qt::Key_End, Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_EQ(field.selectedText(), QStringLiteral("ur\nfive"));
}

TEST_F(NSTextFieldTest, LeavesTheContextMenuToWhatIsAroundUnlessItIsSelectable) {
    field.setStringValue(pangram);
    show(window);
    const QPoint place(20, 6);
    const auto isTaken = [&] {
        QContextMenuEvent event(QContextMenuEvent::Mouse, place, field.mapToGlobal(place));
        QCoreApplication::sendEvent(&field, &event);
        return event.isAccepted();
    };
    EXPECT_FALSE(isTaken());
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    field.setSelectable(true);
    EXPECT_TRUE(isTaken());
    const QPointer<QWidget> menu = QApplication::activePopupWidget();
    ASSERT_NE(menu, nullptr);
    ASSERT_EQ(menu->actions().size(), 3);
    EXPECT_FALSE(menu->actions().front()->isEnabled()) << "nothing to copy";
    menu->actions().back()->trigger();
    EXPECT_EQ(field.selectedText(), pangram);
    menu->close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !menu; }));
}

TEST_F(NSTextFieldTest, CopiesWhatItsEllipsisStandsFor) {
    const QString text = QStringList(20, pangram).join(u' ');
    setFrameOfLines(1);
    field.setStringValue(text);
    field.setSelectable(true);
    field.selectText(nullptr);
    EXPECT_EQ(field.selectedText(), text);
    field.setSelectable(false);
    EXPECT_EQ(field.selectedText(), QString());
    field.selectText(nullptr);
    EXPECT_EQ(field.selectedText(), QString());
}

TEST_F(NSTextFieldTest, ForgetsTheSelectionOfAnotherText) {
    field.setStringValue(pangram);
    field.setSelectable(true);
    field.selectText(nullptr);
    field.setStringValue(QStringLiteral("short"));
    EXPECT_EQ(field.selectedText(), QString());
    picture();
}
