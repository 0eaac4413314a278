// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/desktop/StatusItemHost.h>

#include <QObject>
#include <QPoint>
#include <QPointF>
#include <QPointer>
#include <QRectF>
#include <QString>
#include <QTimer>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QWidget;

/// Keeps one status item on the desktop: in the first of its hosts that is available, and in another when that one goes
/// or a better one comes.
///
/// A host that is better than the present one gets the item at once. When the present one has gone, the item waits a
/// moment for it before a worse one gets it, so that a tray that is started again has its item back and nothing flashes
/// elsewhere meanwhile. Owns the hosts, borrows the window. Main thread only; coordinates are Qt's global points.
class VXKIT_EXPORT StatusItemHosts final : public QObject {
    Q_OBJECT

public:
    using Hosts = std::vector<std::unique_ptr<StatusItemHost>>;

    /// How long the item waits.
    static constexpr std::chrono::milliseconds standardPatience{250};

    /// The hosts of the desktop that the application runs on, the best first: tray, panel over the session bus, own
    /// window. On a platform without a desktop, as that of tests, its own window alone.
    [[nodiscard]] static Hosts standardHosts();

    /// Makes the hosts of all that are constructed while it lives, instead of standardHosts. For tests; they must end
    /// in reverse order, which scopes do by themselves.
    class VXKIT_EXPORT HostsForTesting {
    public:
        [[nodiscard]] explicit HostsForTesting(std::function<Hosts()> make);
        HostsForTesting(const HostsForTesting&) = delete;
        HostsForTesting& operator=(const HostsForTesting&) = delete;
        ~HostsForTesting();

    private:
        std::function<Hosts()> m_previous;
    };

    explicit StatusItemHosts(QObject* parent = nullptr);
    StatusItemHosts(Hosts hosts, std::chrono::milliseconds patience, QObject* parent = nullptr);
    ~StatusItemHosts() override;

    /// Shows `window` as a status item. Nothing where it is shown already; another one is released before.
    void take(QWidget& window);
    /// Takes the item from the desktop. Nothing where none is taken.
    void release();

    /// The host that has the item; null while none has. It may have gone a moment ago.
    [[nodiscard]] StatusItemHost* host() const { return m_host; }

    /// Where the item is or was last, or before that, where it will presumably be.
    [[nodiscard]] QRectF itemFrame() const;
    /// As StatusItemHost's; no while none has the item.
    [[nodiscard]] bool mayBeAt(const QPointF& global) const;
    /// The height that an item has, in points.
    [[nodiscard]] int thickness() const;

    /// As StatusItemHost's, whichever host has the item.
    void setItemWidth(int width);
    void setTitle(const QString& title);
    void setToolTip(const QString& toolTip);

Q_SIGNALS:
    /// host() answers otherwise than before.
    void hostChanged();
    /// itemFrame answers otherwise than before.
    void frameChanged();
    /// As StatusItemHost's.
    void activated(const QPoint& global);
    void contextMenuRequested(const QPoint& global);

private:
    void choose(bool waits);
    void moveTo(StatusItemHost* host);
    void noteFrame();
    [[nodiscard]] std::size_t rankOf(const StatusItemHost* host) const;

    Hosts m_hosts;
    QPointer<QWidget> m_window;
    StatusItemHost* m_host = nullptr;
    bool m_isMoving = false;
    QTimer m_patience;
    int m_itemWidth = StatusItemHost::standardThickness;
    QRectF m_frame;
};
