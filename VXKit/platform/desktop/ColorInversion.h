// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QFocusFrame>
#include <QImage>
#include <QRegion>

/// Inverts the colours of `image` within `region`, in its own pixels; what lies outside it does not count. Alpha stays:
/// of a premultiplied pixel each colour c becomes alpha - c. For the formats ARGB32_Premultiplied and RGB32 only.
VXKIT_EXPORT void invertColors(QImage& image, const QRegion& region);

/// Lies over all other children of a window and inverts what they and the window have painted, once for each time that
/// they paint.
///
/// Takes no mouse and no keyboard, and is no part of what screen readers see. Of a QFocusFrame it is only this: Qt
/// leaves those out of the accessible children. Deleting it ends the inversion; the window owns it. Private to
/// platform/desktop: see WindowEffects::setColorInversion.
class ColorInversion final : public QFocusFrame {
    Q_OBJECT

public:
    explicit ColorInversion(QWidget& window);
    ~ColorInversion() override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* object, QEvent* event) override;
};
