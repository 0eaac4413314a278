// SPDX-License-Identifier: MIT
#include "AppKitHost.h"

#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/platform/graphics/NSShadow.h>

#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QStandardItemModel>
#include <QTableView>
#include <QTextEdit>

#include <algorithm>
#include <cstdlib>

#include <gmock/gmock.h>

namespace {

class FlippedDrawnView : public DrawnView {
public:
    bool isFlipped() const override { return true; }
};

/// A widget class of Qt's as a view, which throws `shadow` where there is one.
template <class Base>
class Shadowed : public ViewOf<Base> {
public:
    using ViewOf<Base>::ViewOf;

    void drawRect(const NSRect& dirtyRect) override {
        if (shadow) {
            shadow->set();
        }
        ViewOf<Base>::drawRect(dirtyRect);
    }

    std::optional<NSShadow> shadow;
};

class NSViewDrawing : public AppKitHost {
protected:
    DrawnView& add(ViewCore& superview, const NSRect& frame) { return add<DrawnView>(superview, frame); }

    template <class View>
    View& add(ViewCore& superview, const NSRect& frame) {
        auto view = std::make_unique<View>();
        view->setFrame(frame);
        superview.addSubview(view.get());
        return *view.release();
    }

    static QImage pictureOf(QWidget& widget) { return widget.grab().toImage().convertToFormat(QImage::Format_RGB32); }

    /// The largest difference of any channel of any pixel.
    static int difference(const QImage& a, const QImage& b) {
        EXPECT_EQ(a.size(), b.size());
        int largest = 0;
        for (int y = 0; y < std::min(a.height(), b.height()); ++y) {
            for (int x = 0; x < std::min(a.width(), b.width()); ++x) {
                const QRgb one = a.pixel(x, y);
                const QRgb other = b.pixel(x, y);
                largest = std::max({largest, std::abs(qRed(one) - qRed(other)), std::abs(qGreen(one) - qGreen(other)),
                                    std::abs(qBlue(one) - qBlue(other))});
            }
        }
        return largest;
    }

    static bool isReddish(QRgb pixel) { return qRed(pixel) > qGreen(pixel) + 60 && qRed(pixel) > qBlue(pixel) + 60; }

    static int reddishPixels(const QImage& image) {
        int count = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                count += isReddish(image.pixel(x, y)) ? 1 : 0;
            }
        }
        return count;
    }

    static NSShadow redShadow(const NSSize& offset) {
        NSShadow shadow;
        shadow.setShadowColor(NSColor::colorWithCalibratedRed(1, 0, 0, 1));
        shadow.setShadowOffset(offset);
        return shadow;
    }

    /// No pixel is like its neighbours, nor the image like its mirror image.
    static NSColor pattern() {
        QImage tile(7, 5, QImage::Format_RGB32);
        for (int y = 0; y < tile.height(); ++y) {
            for (int x = 0; x < tile.width(); ++x) {
                tile.setPixel(x, y, qRgb(x * 36, y * 60, (x * 5 + y * 3) % 7 * 30));
            }
        }
        return NSColor::colorWithPatternImage(NSImage::initWithQImage(tile));
    }

    HostWindow window{NSMakeRect(100, 100, 200, 100)};
};

} // namespace

TEST_F(NSViewDrawing, DisplayDrawsOnceAndBeforeItReturns) {
    DrawnView& view = add(window.content(), NSMakeRect(10, 20, 30, 40));
    show(window);
    view.drawings = 0;
    view.display();
    EXPECT_EQ(view.drawings, 1);
    EXPECT_EQ(view.lastDirtyRect, NSMakeRect(0, 0, 30, 40));
    settle();
    EXPECT_EQ(view.drawings, 1);
}

TEST_F(NSViewDrawing, DisplayOfTheWindowDrawsItsViewsOnce) {
    const DrawnView& view = add(window.content(), NSMakeRect(10, 20, 30, 40));
    show(window);
    const int before = view.drawings;
    window.display();
    EXPECT_EQ(view.drawings, before + 1);
    settle();
    EXPECT_EQ(view.drawings, before + 1);
}

TEST_F(NSViewDrawing, DisplayDrawsNothingWhereNothingIsShown) {
    DrawnView& view = add(window.content(), NSMakeRect(10, 20, 30, 40));
    view.display();
    window.display();
    EXPECT_EQ(view.drawings, 0);
}

TEST_F(NSViewDrawing, SetNeedsDisplayDrawsLater) {
    DrawnView& view = add(window.content(), NSMakeRect(10, 20, 30, 40));
    show(window);
    view.drawings = 0;
    view.setNeedsDisplay(false);
    settle();
    EXPECT_EQ(view.drawings, 0);
    view.setNeedsDisplay(true);
    view.setNeedsDisplay(true);
    EXPECT_EQ(view.drawings, 0);
    settle();
    EXPECT_EQ(view.drawings, 1);
}

TEST_F(NSViewDrawing, DisplayMakesUpForWhatWasStillToBeDrawn) {
    DrawnView& view = add(window.content(), NSMakeRect(10, 20, 30, 40));
    show(window);
    view.drawings = 0;
    view.setNeedsDisplay(true);
    view.display();
    settle();
    EXPECT_EQ(view.drawings, 1);
}

TEST_F(NSViewDrawing, DrawsThePartThatNeedsIt) {
    DrawnView& view = add(window.content(), NSMakeRect(10, 20, 100, 60));
    FlippedDrawnView& flipped = add<FlippedDrawnView>(window.content(), NSMakeRect(110, 20, 80, 60));
    show(window);
    view.setNeedsDisplayInRect(NSMakeRect(5, 6, 20, 10));
    settle();
    EXPECT_EQ(view.lastDirtyRect, NSMakeRect(5, 6, 20, 10));
    flipped.setNeedsDisplayInRect(NSMakeRect(5, 6, 20, 10));
    settle();
    EXPECT_EQ(flipped.lastDirtyRect, NSMakeRect(5, 6, 20, 10));
    view.setNeedsDisplayInRect(NSMakeRect(5.5, 6.5, 20, 10));
    settle();
    EXPECT_EQ(view.lastDirtyRect, NSMakeRect(5, 6, 21, 11)) << "in whole pixels";
}

TEST_F(NSViewDrawing, HasItsOriginAtTheBottomLeft) {
    DrawnView& view = add(window.content(), NSMakeRect(10, 20, 30, 40));
    view.drawing = [] {
        NSColor::colorWithCalibratedRed(0, 0, 1, 1).set();
        NSRectFill(NSMakeRect(0, 0, 5, 6));
    };
    show(window);
    const QImage picture = pictureOf(window);
    EXPECT_EQ(picture.pixelColor(10, 79), QColor(Qt::blue));
    EXPECT_EQ(picture.pixelColor(14, 74), QColor(Qt::blue));
    EXPECT_NE(picture.pixelColor(15, 74), QColor(Qt::blue));
    EXPECT_NE(picture.pixelColor(14, 73), QColor(Qt::blue));
    EXPECT_NE(picture.pixelColor(14, 80), QColor(Qt::blue));
}

TEST_F(NSViewDrawing, HasItsOriginAtTheTopLeftWhenFlipped) {
    FlippedDrawnView& view = add<FlippedDrawnView>(window.content(), NSMakeRect(10, 20, 30, 40));
    view.drawing = [] {
        EXPECT_TRUE(NSGraphicsContext::currentContext()->isFlipped());
        NSColor::colorWithCalibratedRed(0, 0, 1, 1).set();
        NSRectFill(NSMakeRect(0, 0, 5, 6));
    };
    show(window);
    const QImage picture = pictureOf(window);
    EXPECT_EQ(picture.pixelColor(10, 40), QColor(Qt::blue));
    EXPECT_EQ(picture.pixelColor(14, 45), QColor(Qt::blue));
    EXPECT_NE(picture.pixelColor(14, 46), QColor(Qt::blue));
}

TEST_F(NSViewDrawing, ContinuesThePatternOfItsWindow) {
    window.setBackgroundColor(pattern());
    show(window);
    const QImage alone = pictureOf(window);
    const auto drawPattern = [](QWidget& view) {
        return [&view] {
            pattern().set();
            NSRectFill(NSMakeRect(0, 0, view.width(), view.height()));
        };
    };
    DrawnView& view = add(window.content(), NSMakeRect(13, 9, 50, 61));
    view.drawing = drawPattern(view);
    DrawnView& inner = add(view, NSMakeRect(3, 4, 11, 13));
    inner.drawing = drawPattern(inner);
    FlippedDrawnView& flipped = add<FlippedDrawnView>(window.content(), NSMakeRect(80, 16, 41, 34));
    flipped.drawing = drawPattern(flipped);
    settle();
    EXPECT_EQ(difference(alone, pictureOf(window)), 0);
    EXPECT_GT(flipped.drawings, 0);
    EXPECT_GT(inner.drawings, 0);
}

TEST_F(NSViewDrawing, ContinuesThePatternWhereOnlyAPartIsDrawn) {
    window.setBackgroundColor(pattern());
    DrawnView& view = add(window.content(), NSMakeRect(13, 9, 50, 61));
    view.drawing = [&] {
        pattern().set();
        NSRectFill(view.lastDirtyRect);
    };
    show(window);
    const QImage whole = pictureOf(window);
    QImage part(QSize(20, 20), QImage::Format_RGB32);
    window.render(&part, QPoint(), QRegion(30, 40, 20, 20));
    EXPECT_EQ(difference(whole.copy(30, 40, 20, 20), part), 0);
}

class NSViewDrawingAtTwoPixels : public TwoPixelsAPoint, public NSViewDrawing {};

TEST_F(NSViewDrawingAtTwoPixels, ContinuesThePatternOfItsWindow) {
    window.setBackgroundColor(pattern());
    show(window);
    const QImage alone = pictureOf(window);
    ASSERT_EQ(alone.size(), QSize(400, 200));
    for (const NSRect& frame : {NSMakeRect(13, 9, 50, 61), NSMakeRect(80.5, 16.5, 41, 34)}) {
        DrawnView& view = add(window.content(), frame);
        view.drawing = [&view] {
            pattern().set();
            NSRectFill(NSMakeRect(0, 0, view.width(), view.height()));
        };
    }
    settle();
    EXPECT_EQ(difference(alone, pictureOf(window)), 0);
}

TEST_F(NSViewDrawingAtTwoPixels, OfAButtonIsQtsOwn) {
    QPushButton plain(QStringLiteral("Search"));
    Shadowed<QPushButton> view(QStringLiteral("Search"));
    for (QPushButton* button : {&plain, static_cast<QPushButton*>(&view)}) {
        button->resize(120, 40);
        button->ensurePolished();
    }
    EXPECT_LE(difference(pictureOf(plain), pictureOf(view)), 2);
}

TEST_F(NSViewDrawing, HasNoCurrentContextOutsideOfIt) {
    DrawnView& view = add(window.content(), NSMakeRect(13, 9, 50, 61));
    bool hadContext = false;
    view.drawing = [&] { hadContext = NSGraphicsContext::currentContext() != nullptr; };
    show(window);
    EXPECT_TRUE(hadContext);
    EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
}

TEST_F(NSViewDrawing, OfAButtonIsQtsOwn) {
    QPushButton plain(QStringLiteral("Search"));
    Shadowed<QPushButton> view(QStringLiteral("Search"));
    for (QPushButton* button : {&plain, static_cast<QPushButton*>(&view)}) {
        button->resize(120, 40);
        button->ensurePolished();
    }
    EXPECT_LE(difference(pictureOf(plain), pictureOf(view)), 2);
    QImage blank(120, 40, QImage::Format_RGB32);
    blank.fill(Qt::white);
    EXPECT_GT(difference(pictureOf(plain), blank), 0) << "which is something";
}

namespace {

void fill(QTextEdit& edit) {
    edit.resize(160, 90);
    edit.setPlainText(QStringLiteral("one\ntwo\nthree\nfour\nfive\nsix\nseven\neight\nnine"));
    edit.ensurePolished();
}

void fill(QTableView& table, QAbstractItemModel* model) {
    table.resize(160, 90);
    table.setModel(model);
    table.ensurePolished();
}

} // namespace

TEST_F(NSViewDrawing, OfATextViewIsQtsOwnWhereverItIsScrolledTo) {
    QTextEdit plain;
    Shadowed<QTextEdit> view;
    for (QTextEdit* edit : {&plain, static_cast<QTextEdit*>(&view)}) {
        fill(*edit);
        edit->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(edit));
        edit->clearFocus();
        edit->verticalScrollBar()->setValue(25);
    }
    settle();
    ASSERT_GT(view.verticalScrollBar()->value(), 0);
    EXPECT_LE(difference(pictureOf(*plain.viewport()), pictureOf(*view.viewport())), 2);
    EXPECT_EQ(plain.viewport()->cursor().shape(), view.viewport()->cursor().shape());
    EXPECT_EQ(plain.viewport()->acceptDrops(), view.viewport()->acceptDrops());
    EXPECT_EQ(plain.viewport()->hasMouseTracking(), view.viewport()->hasMouseTracking());
}

TEST_F(NSViewDrawing, OfATableIsQtsOwn) {
    QStandardItemModel model(20, 3);
    for (int row = 0; row < 20; ++row) {
        model.setItem(row, 0, new QStandardItem(QString::number(row)));
    }
    QTableView plain;
    Shadowed<QTableView> view;
    fill(plain, &model);
    fill(view, &model);
    for (QTableView* table : {&plain, static_cast<QTableView*>(&view)}) {
        table->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(table));
        table->clearFocus();
        table->scrollTo(model.index(12, 0));
    }
    settle();
    EXPECT_LE(difference(pictureOf(*plain.viewport()), pictureOf(*view.viewport())), 2);
    EXPECT_EQ(plain.viewport()->hasMouseTracking(), view.viewport()->hasMouseTracking());
}

TEST_F(NSViewDrawing, OfAWidgetThrowsTheShadowInForce) {
    Shadowed<QLabel> label(QStringLiteral("iiii"));
    label.resize(80, 60);
    label.setAlignment(Qt::AlignLeft | Qt::AlignTop);
    const QImage without = pictureOf(label);
    ASSERT_EQ(reddishPixels(without), 0);
    label.shadow = redShadow({0, -25});
    const QImage with = pictureOf(label);
    EXPECT_EQ(difference(without.copy(0, 0, 80, 20), with.copy(0, 0, 80, 20)), 0) << "the text itself is the same";
    EXPECT_GT(reddishPixels(with.copy(0, 25, 80, 35)), 10) << "and its shadow lies below";
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 80; ++x) {
            if (qRed(without.pixel(x, y)) < 40) {
                EXPECT_TRUE(isReddish(with.pixel(x, y + 25))) << x << "," << y;
            }
        }
    }
}

TEST_F(NSViewDrawing, OfAPartThrowsTheShadowOfWhatLiesOutsideThePart) {
    Shadowed<QLabel> label(QStringLiteral("iiii"));
    label.resize(80, 60);
    label.setAlignment(Qt::AlignLeft | Qt::AlignTop);
    label.shadow = redShadow({0, -25});
    const QImage whole = pictureOf(label);
    QImage part(QSize(80, 30), QImage::Format_RGB32);
    label.render(&part, QPoint(), QRegion(0, 25, 80, 30));
    ASSERT_GT(reddishPixels(part), 10);
    EXPECT_EQ(difference(whole.copy(0, 25, 80, 30), part), 0);
}

TEST_F(NSViewDrawing, OfAScrollingWidgetThrowsTheShadowInForce) {
    Shadowed<QTextEdit> edit;
    fill(edit);
    edit.setPlainText(QStringLiteral("iiii"));
    edit.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&edit));
    edit.clearFocus();
    settle();
    ASSERT_EQ(reddishPixels(pictureOf(*edit.viewport())), 0);
    edit.shadow = redShadow({0, -25});
    EXPECT_GT(reddishPixels(pictureOf(*edit.viewport()).copy(0, 27, 100, 30)), 10);
}

TEST_F(NSViewDrawing, OfAScrollingWidgetHasItsOriginAtTheBottomOfWhatScrolls) {
    struct : ViewOf<QTextEdit> {
        void drawRect(const NSRect& dirtyRect) override {
            last = dirtyRect;
            NSColor::colorWithCalibratedRed(0, 0, 1, 1).set();
            NSRectFill(NSMakeRect(0, 0, 5, 6));
        }
        NSRect last;
    } edit;
    fill(edit);
    edit.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    edit.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&edit));
    const QImage picture = pictureOf(*edit.viewport());
    EXPECT_EQ(edit.last.origin, NSZeroPoint);
    EXPECT_EQ(edit.last.size.height, edit.viewport()->height());
    EXPECT_LT(edit.viewport()->height(), edit.height());
    EXPECT_EQ(picture.pixelColor(0, picture.height() - 1), QColor(Qt::blue));
    EXPECT_EQ(picture.pixelColor(4, picture.height() - 6), QColor(Qt::blue));
    EXPECT_NE(picture.pixelColor(4, picture.height() - 7), QColor(Qt::blue));
}

TEST_F(NSViewDrawing, OfAnInterruptedWidgetLeavesItsChildrenAlone) {
    // What is caught is the widget's own painting, not that of the views in it.
    Shadowed<QLabel> label;
    label.resize(80, 60);
    label.shadow = redShadow({0, -25});
    auto* const child = new DrawnView;
    child->setFrame(NSMakeRect(10, 40, 10, 10));
    child->drawing = [] {
        NSColor::colorWithCalibratedRed(0, 0, 1, 1).set();
        NSRectFill(NSMakeRect(0, 0, 10, 10));
    };
    label.addSubview(child);
    const QImage picture = pictureOf(label);
    EXPECT_EQ(picture.pixelColor(15, 15), QColor(Qt::blue));
    EXPECT_EQ(reddishPixels(picture), 0);
}
