// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/desktop/WindowShadow.h>

#include <QImage>
#include <QObject>
#include <QRect>
#include <QRegion>
#include <QSet>

#include <memory>
#include <optional>

class QWidget;

/// What a window asks of the desktop and Qt has no word for: shadow, blur, colour inversion, all desktops, order among
/// windows, the shape that takes clicks.
///
/// An abstract interface with a backend for each kind of desktop; this base class is also the backend for a desktop
/// that offers nothing. Every operation may be called at any time in the life of a top-level widget, before its native
/// window exists too: what was asked for is remembered, done whenever the native window is made again, is shown, or the
/// desktop begins to offer it, and forgotten when the widget dies. Where an effect is not available the window is left
/// without it. A widget that is not a window is not meant. Main thread only.
class VXKIT_EXPORT WindowEffects : public QObject {
    Q_OBJECT

public:
    /// What isAvailable tells of.
    enum class Effect {
        Shadow,           ///< setShadow
        Blur,             ///< setBlur
        ColorInversion,   ///< setColorInversion
        AllDesktops,      ///< setOnAllDesktops
        Translucency,     ///< pixels with an alpha below 1 let the windows behind shine through
        InputRegion,      ///< setInputRegion
        PressesElsewhere, ///< setWatchesPresses
    };
    /// Which side of another window.
    enum class Place {
        Above, ///< nearer to the person
        Below, ///< farther from the person
    };

    /// For the backends; hosts ask sharedEffects.
    explicit WindowEffects(QObject* parent = nullptr);
    ~WindowEffects() override;

    /// The effects of the process, those of the platform that the application object runs on. Connections to its
    /// signals last as long as the application object; do not ask before there is one.
    [[nodiscard]] static WindowEffects& sharedEffects();

    /// Puts `effects` in the place of the shared ones, which are destroyed; null goes back to the platform's own. For
    /// tests, and before windows ask for anything.
    static void setSharedEffects(std::unique_ptr<WindowEffects> effects);

    /// Whether the desktop offers `effect` now. Changes are told by compositingChanged. Here: colour inversion, which
    /// needs no desktop, and translucency, which only X11 can be without.
    [[nodiscard]] virtual bool isAvailable(Effect effect) const;

    /// Gives `window` a drop shadow, or none. It follows the window in everything, lets clicks through, never has the
    /// keyboard, and is there only while the desktop offers translucency. Does nothing here.
    virtual void setShadow(QWidget& window, const std::optional<WindowShadow>& shadow);

    /// What casts the shadow of `window`: the window's look, of which only alpha counts, in its size; a null image (as
    /// in the beginning) stands for the window's rectangle. Does nothing here.
    virtual void setShadowShape(QWidget& window, const QImage& coverage);

    /// Blurs what is seen through `window` within `region`, in points of the window; an empty region stands for all of
    /// it, a `radius` (standard deviation, in points) of 0 or less for no blur. Desktops blur with a radius of their
    /// own: of `radius` they learn only whether there is one. Does nothing here.
    virtual void setBlur(QWidget& window, double radius, const QRegion& region);

    /// Shows `window` in inverted colours, translucency kept. No window server offers this, so what the window itself
    /// paints is inverted, after it is painted and before it is shown: what shines through translucent parts stays as
    /// it is, and so do child widgets with a native window of their own. AppKit has no such operation.
    void setColorInversion(QWidget& window, bool inverts);

    /// Shows `window` on every virtual desktop, or again on one. A window that bypasses the window manager is on all of
    /// them anyway. Does nothing here. AppKit: `-setCollectionBehavior:`, of which this is a part.
    virtual void setOnAllDesktops(QWidget& window, bool isOnAll);

    /// The part of `window` that takes clicks, in points of the window; the rest lets them through to what is behind.
    /// Nothing stands for all of the window. Does nothing here.
    virtual void setInputRegion(QWidget& window, const std::optional<QRegion>& region);

    /// Puts `window` right above or below `sibling`, or above or below all windows of its level where that is null.
    /// Where the desktop knows no order relative to another window, as here, whichever belongs above is raised. Done at
    /// once and not remembered: nothing happens while one of the two has no native window.
    /// AppKit: `-orderWindow:relativeTo:`.
    virtual void order(QWidget& window, Place place, QWidget* sibling);

    /// Gives `window` the keyboard, at once or as soon as it is on the screen, from whichever program has it. Unlike
    /// QWidget::activateWindow, which asks with the time of the last event that Qt saw, this is not refused where the
    /// user has been with other programs meanwhile: a click on a status item that another program shows is no event of
    /// ours. AppKit: the keyboard's part of `-makeKeyWindow` and `-activateIgnoringOtherApps:`.
    virtual void takeKeyboard(QWidget& window);

    /// Whether a window of this application has the keyboard at this moment, or takeKeyboard is about to give it to
    /// one; by the window server's word, which Qt's follows late. Here: no, so that Qt's counts.
    [[nodiscard]] virtual bool hasKeyboard() const;

    /// Moves a window that bypasses the window manager to the pixel nearest to `topLeft`, in Qt's global points. Where
    /// a point has several pixels, that may lie between two points, which is where Qt's own coordinates end; Qt must
    /// have moved the window to the nearest of these before. Does nothing here.
    virtual void moveToPixel(QWidget& window, const QPointF& topLeft);

    /// The rectangle of `window` without the window manager's frame, in Qt's global points, as the window server has
    /// it at this moment; nothing where there is no native window or the server does not tell, as here. Qt's own idea
    /// of it is late right after a window is shown or moved.
    [[nodiscard]] virtual std::optional<QRect> serverFrame(const QWidget& window) const;

    /// Whether `watcher` wants to hear pressedElsewhere. Watched while anybody wants it; a watcher that dies wants it
    /// no more.
    void setWatchesPresses(QObject& watcher, bool watches);

Q_SIGNALS:
    /// isAvailable may answer otherwise than before: a compositing manager came or went, or began to offer blur.
    void compositingChanged();

    /// A mouse button was pressed outside this application's windows, be it on a window of another program or on the
    /// bare desktop, which takes the keyboard from nobody. Emitted from the event loop.
    void pressedElsewhere();

protected:
    /// Begins or ends the emission of pressedElsewhere. Does nothing here.
    virtual void setEmitsPresses(bool emits);

private:
    QSet<QObject*> m_watchers;
};
