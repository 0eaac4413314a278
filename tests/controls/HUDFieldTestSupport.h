// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/controls/LTHUDSecureTextField.h>
#include <VXKit/controls/LTHUDTextField.h>
#include <VXKit/platform/appkit/NSButton.h>
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSShadow.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <tests/appkit/AppKitHost.h>
#include <tests/graphics/GraphicsTestSupport.h>

#include <QClipboard>
#include <QImage>
#include <QMimeData>
#include <QTest>
#include <QWindow>

#include <memory>

/// A field that counts how often it is drawn.
template <class Field>
class Counted : public Field {
public:
    using Field::Field;

    void drawRect(const NSRect& dirtyRect) override {
        ++drawings;
        Field::drawRect(dirtyRect);
    }

    int drawings = 0;
};

/// A field, something else that takes the keyboard, and a button that counts its clicks, in a window.
template <class Field>
class HUDFieldTest : public AppKitHost {
protected:
    HUDFieldTest() {
        QApplication::setCursorFlashTime(0);
        window.content().addSubview(&field);
        window.content().addSubview(&other);
        window.content().addSubview(button.get());
        other.setFocusPolicy(Qt::StrongFocus);
        other.setFrame(NSMakeRect(10, 50, 50, 20));
        QObject::connect(button.get(), &NSButton::clicked, [this] { ++clicks; });
    }

    void showWindow() {
        show(window);
        ASSERT_TRUE(window.makeFirstResponder(&other));
        settle();
    }
    void showFocused() {
        showWindow();
        ASSERT_TRUE(window.makeFirstResponder(&field));
        settle();
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(window.windowHandle(), key, modifiers);
    }
    void type(const QString& text) {
        for (const QChar character : text) {
            QTest::keyClick(window.windowHandle(), character.toLatin1());
        }
    }
    void waitForClick() {
        EXPECT_TRUE(QTest::qWaitFor([this] { return !button->isDown() && clicks > 0; }));
        settle();
    }

    static void copyToClipboard(const QString& text) { QGuiApplication::clipboard()->setText(text); }
    static void copyStyledToClipboard(const QString& html) {
        auto data = std::make_unique<QMimeData>();
        data->setHtml(html);
        QGuiApplication::clipboard()->setMimeData(data.release());
    }

    /// What the field paints, with nothing below; `part` of it alone where there is one.
    QImage picture(const QRegion& part = {}) {
        const double ratio = field.devicePixelRatioF();
        QImage image(field.size() * ratio, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        image.fill(Qt::transparent);
        field.render(&image, part.boundingRect().topLeft(), part, QWidget::DrawChildren);
        image.setDevicePixelRatio(1);
        return image;
    }

    /// What it paints without text, and beside it what `more` draws with the shadow that is left in force.
    QImage well(double shadowBlurRadius, const std::function<void()>& more = {}) const {
        const NSSize size = field.frame().size;
        return drawn(size, field.devicePixelRatioF(), [&] {
            NSBezierPath path =
                NSBezierPath::bezierPathWithRoundedRect(NSMakeRect(0.5, 0.5, size.width - 1, size.height - 1), 4, 4);
            NSColor::colorWithCalibratedWhite(0.26, 1).set();
            path.fill();
            NSShadow shadow;
            shadow.setShadowColor(NSColor::blackColor());
            shadow.setShadowBlurRadius(shadowBlurRadius);
            shadow.set();
            NSColor::colorWithCalibratedWhite(0.36, 1).set();
            path.setLineWidth(0.5);
            path.stroke();
            if (more) {
                more();
            }
        });
    }

    static void drawPlaceholder(const QString& placeholder, const NSSize& size) {
        NSTextAttributes attributes;
        attributes.font = NSFont::systemFontOfSize(12);
        attributes.foregroundColor = NSColor::colorWithCalibratedWhite(0.65, 1);
        const double height = sizeWithAttributes(placeholder, attributes).height;
        drawInRect(placeholder, NSMakeRect(10, size.height / 2 - height / 2, size.width - 20, height), attributes);
    }

    /// The pixels that are lighter than the well and its hairline.
    static QRect lightPixels(const QImage& image) {
        constexpr int light = 140;
        QRect found;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (qGreen(image.pixel(x, y)) > light) {
                    found |= QRect(x, y, 1, 1);
                }
            }
        }
        return found;
    }

    HostWindow window{NSMakeRect(100, 100, 240, 120)};
    Counted<Field> field{NSMakeRect(10, 80, 200, 22)};
    NSView other;
    std::unique_ptr<NSButton> button = std::make_unique<NSButton>(NSMakeRect(100, 10, 100, 20));
    int clicks = 0;
};
