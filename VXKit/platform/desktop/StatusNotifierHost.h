// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/desktop/StatusItemHost.h>

#include <QElapsedTimer>
#include <QImage>
#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QSize>
#include <QTimer>

#include <memory>
#include <optional>

class QDBusServiceWatcher;

/// Shows a status item in a panel that collects them over the session bus (org.kde.StatusNotifierItem, which the panels
/// of the large desktops have), where such a panel says that it is there.
///
/// The panel shows pictures: every time that the view is drawn, what was drawn is kept, and sent where it has changed,
/// at most ten times a second. The view is drawn as often as it would be on a screen, and never because a panel asks.
/// Where a panel has put the item it does not tell, so the item's frame is an estimate, made better by each click.
class VXKIT_EXPORT StatusNotifierHost final : public StatusItemHost {
    Q_OBJECT

public:
    explicit StatusNotifierHost(QObject* parent = nullptr);
    ~StatusNotifierHost() override;

    [[nodiscard]] Kind kind() const override { return Kind::StatusNotifier; }
    [[nodiscard]] Availability availability() override;
    [[nodiscard]] QRectF itemFrame() const override;

    /// Within the height of a panel around the latest click; before any click, everywhere on panels.
    [[nodiscard]] bool mayBeAt(const QPointF& global) const override;

    /// Where an item of `size` presumably is on a screen with the rectangle `screen`, of which panels leave `available`
    /// free. After a `click` it is centred on that across, before any it is at the right. It ends at the panel's inner
    /// edge where the panel is at the top, unless the click was elsewhere; then it is centred on the click. It never
    /// leaves the screen.
    [[nodiscard]] static QRect estimatedFrame(const std::optional<QPoint>& click, const QSize& size,
                                              const QRect& screen, const QRect& available);

protected:
    void attach() override;
    void detach() override;
    void itemWidthHasChanged() override;
    void titleHasChanged() override;
    void toolTipHasChanged() override;

private:
    class ItemOnBus;
    class Drawing;

    void watchForPanels();
    void askForPanels();
    void setAvailability(Availability availability);
    void enrol();
    void hasBeenDrawn(const QImage& atTwoPixelsAPoint);
    void sendPixmaps();
    void wasClicked(const QPoint& told);
    [[nodiscard]] static QPoint placeOfClick(const QPoint& told);
    void frameMayHaveChanged();

private Q_SLOTS:
    void panelsHaveChanged();

private:
    Availability m_availability = Availability::Undecided;
    QDBusServiceWatcher* m_watcher = nullptr; ///< null before the first question
    int m_question = 0;                       ///< the number of the latest one to the bus; older answers do not count
    std::unique_ptr<ItemOnBus> m_item;        ///< while the item is on the bus
    QPointer<Drawing> m_drawing;              ///< belongs to the window
    QImage m_drawn;
    QElapsedTimer m_sinceSent;
    QTimer m_sendLater;
    std::optional<QPoint> m_click;
    QRectF m_frame; ///< the estimate that was told last
};
