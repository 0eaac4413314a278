// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QMetaObject>
#include <QObject>
#include <QPoint>
#include <QPointF>
#include <QPointer>
#include <QRectF>
#include <QString>
#include <QWidget>

class QPainter;
class QRegion;

/// One way in which a desktop shows a status item: in a tray, over the session bus, in a window of its own.
///
/// A host works for one item. While it has taken the item's window, a borrowed top-level widget that holds the item's
/// view and nothing else, the window is the host's: its flags, its place, whether it is shown, and what is behind the
/// view, which the host paints in place of the widget's own painting. Give a window to one host at a time and take it
/// back with release before another gets it; StatusItemHosts does both. Either may be destroyed first. Main thread
/// only; coordinates are Qt's global points, y downwards.
class VXKIT_EXPORT StatusItemHost : public QObject {
    Q_OBJECT

public:
    enum class Kind {
        Tray,           ///< a tray that window systems of old have: the window itself is docked there
        StatusNotifier, ///< a panel that is told of the item over the session bus and sends its clicks back
        Corner,         ///< a small window of its own in a corner of the screen
    };
    enum class Availability {
        Absent,
        Undecided, ///< somebody was asked and has not answered yet; availabilityChanged tells
        Present,
    };

    /// The height of an item where the desktop does not say another, in points.
    static constexpr int standardThickness = 22;

    explicit StatusItemHost(QObject* parent = nullptr);
    /// Lets go of the window; a subclass does that in its own destructor, by release.
    ~StatusItemHost() override;

    [[nodiscard]] virtual Kind kind() const = 0;

    /// Whether the desktop can show the item this way now. The first question begins to watch the desktop for it.
    [[nodiscard]] virtual Availability availability() = 0;
    [[nodiscard]] bool isAvailable() { return availability() == Availability::Present; }

    /// Shows `window` as the item. Where the host is not available, that happens as soon as it is. A window taken
    /// before is released.
    void take(QWidget& window);
    /// Takes the item away; its window is hidden and has no native window any more. Nothing where none is taken.
    void release();
    /// The window that is taken, or null.
    [[nodiscard]] QWidget* window() const { return m_window; }

    /// Where the item is; a null rectangle before it has a place. Its pixels may lie between whole points.
    [[nodiscard]] virtual QRectF itemFrame() const = 0;

    /// Whether a click at `global` may have been one on the item. Where its frame is an estimate, this is generous.
    [[nodiscard]] virtual bool mayBeAt(const QPointF& global) const;

    /// The height that an item has here, in points.
    [[nodiscard]] virtual int thickness() const { return standardThickness; }

    /// The width that the item wants, in points, at least 1. May be set before and after the window is taken.
    void setItemWidth(int width);
    [[nodiscard]] int itemWidth() const { return m_itemWidth; }

    /// The name that the desktop may show for the item, and the text for a pointer that rests on it. Only a host that
    /// shows the item elsewhere than in its window needs them.
    void setTitle(const QString& title);
    [[nodiscard]] const QString& title() const { return m_title; }
    void setToolTip(const QString& toolTip);
    [[nodiscard]] const QString& toolTip() const { return m_toolTip; }

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    /// itemFrame answers otherwise than before.
    void frameChanged();
    /// availability answers otherwise than before.
    void availabilityChanged();
    /// The item was clicked at `global`. Only where the item's window does not get the mouse itself.
    void activated(const QPoint& global);
    /// The item's menu was asked for at `global`. Only as above.
    void contextMenuRequested(const QPoint& global);

protected:
    enum class Surface { Opaque, Translucent };

    /// Begins and ends showing window(); from attach on, until detach has returned. In detach, window() is null where
    /// it has died.
    virtual void attach() = 0;
    virtual void detach() = 0;
    /// What the setters have changed, while a window is taken.
    virtual void itemWidthHasChanged() {}
    virtual void titleHasChanged() {}
    virtual void toolTipHasChanged() {}
    /// Paints what is behind the view, onto transparent (black, on an opaque surface). Here: nothing.
    virtual void drawBackground(QPainter& painter);

    /// Hides window() and gives up its native window, so that the next one is made with `flags` and `surface`.
    void prepareWindow(Qt::WindowFlags flags, Surface surface);
    /// Hides window() and gives up its native window.
    void dropNativeWindow();

private:
    void windowHasDied();

    QPointer<QWidget> m_window;
    QMetaObject::Connection m_death;
    int m_itemWidth = standardThickness;
    QString m_title;
    QString m_toolTip;
};
