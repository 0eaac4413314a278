// SPDX-License-Identifier: MIT
// Pictures of HUD buttons, and the pictures that they should be.
#pragma once

#include <VXKit/platform/appkit/NSButton.h>
#include <VXKit/platform/foundation/NSGeometry.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/support/VXKitResources.h>

#include <tests/appkit/AppKitHost.h>
#include <tests/graphics/GraphicsTestSupport.h>

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QPointF>
#include <QRegion>
#include <QString>
#include <QWidget>

#include <array>
#include <functional>
#include <memory>
#include <utility>

/// The dark of a panel on a light desktop.
inline const QColor panelColor(90, 90, 90);

inline QImage emptyPanel(const QWidget& control, double ratio) {
    QImage image(control.size() * ratio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(panelColor);
    return image;
}

/// What the control looks like on a panel, at `ratio` pixels a point; of the image, a pixel is a point.
inline QImage pictureOf(QWidget& control, double ratio) {
    QImage image = emptyPanel(control, ratio);
    control.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    image.setDevicePixelRatio(1);
    return image;
}

/// The panel behind `control` with what `drawing` draws in the control's own coordinates.
inline QImage pictureOfDrawing(const NSButton& control, double ratio, const std::function<void()>& drawing) {
    QImage image = emptyPanel(control, ratio);
    QPainter painter(&image);
    {
        const NSGraphicsContext context(painter, control.height(), control.isFlipped());
        drawing();
    }
    painter.end();
    image.setDevicePixelRatio(1);
    return image;
}

/// An image of the kit as it is at `ratio` pixels a point.
inline QImage kitPixels(const QString& name, double ratio) {
    QImage image = VXKitImage(name)->imageForScale(ratio);
    image.setDevicePixelRatio(1);
    return image;
}

/// The image of a control in one of its states.
struct Look {
    bool isPressed;
    bool isOn;
    const char* name;
};

/// That a person can tell each state from every other.
inline void expectImagesToDiffer(const std::array<Look, 4>& looks) {
    constexpr int visibleDifference = 30;
    for (const Look& look : looks) {
        for (const Look& other : looks) {
            if (&look != &other) {
                EXPECT_GE(difference(kitPixels(QString::fromLatin1(look.name), 1),
                                     kitPixels(QString::fromLatin1(other.name), 1)),
                          visibleDifference)
                    << look.name << " and " << other.name;
            }
        }
    }
}

/// The panel behind `control` with the image `name` of the kit copied onto it, its top left corner at `corner` in
/// points from the top left.
inline QImage pictureOfImage(const QWidget& control, double ratio, const QString& name, QPointF corner) {
    QImage image = emptyPanel(control, ratio);
    image.setDevicePixelRatio(1);
    QPainter painter(&image);
    painter.drawImage(corner * ratio, kitPixels(name, ratio));
    return image;
}

/// A window with HUD buttons in its content view.
class HUDButtonHost : public AppKitHost {
protected:
    /// Takes the button over and shows it with the window.
    template <class Button>
    Button& add(std::unique_ptr<Button> button) {
        window.content().addSubview(button.get());
        return *button.release();
    }

    template <class Button>
    Button& add(const NSRect& frame, const QString& title = {}) {
        auto button = std::make_unique<Button>(frame);
        button->setTitle(title);
        return add(std::move(button));
    }

    HostWindow window{NSMakeRect(100, 100, 300, 200)};
};
