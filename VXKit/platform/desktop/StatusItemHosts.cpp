// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/StatusItemHosts.h>

#include <VXKit/platform/desktop/CornerStatusItemHost.h>
#include <VXKit/platform/desktop/StatusNotifierHost.h>
#include <VXKit/platform/desktop/TrayStatusItemHost.h>

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include <algorithm>
#include <utility>

namespace {

std::function<StatusItemHosts::Hosts()>& maker() {
    static std::function<StatusItemHosts::Hosts()> make = &StatusItemHosts::standardHosts;
    return make;
}

bool hasDesktop() {
    const QString platform = QGuiApplication::platformName();
    return platform != QLatin1String("offscreen") && platform != QLatin1String("minimal");
}

} // namespace

StatusItemHosts::Hosts StatusItemHosts::standardHosts() {
    Hosts hosts;
    // Without a desktop of its own, a process must not reach for whatever session its environment names.
    if (hasDesktop()) {
        hosts.push_back(std::make_unique<TrayStatusItemHost>());
        hosts.push_back(std::make_unique<StatusNotifierHost>());
    }
    hosts.push_back(std::make_unique<CornerStatusItemHost>());
    return hosts;
}

StatusItemHosts::HostsForTesting::HostsForTesting(std::function<Hosts()> make)
    : m_previous(std::exchange(maker(), std::move(make))) {}

StatusItemHosts::HostsForTesting::~HostsForTesting() {
    maker() = std::move(m_previous);
}

StatusItemHosts::StatusItemHosts(QObject* parent) : StatusItemHosts(maker()(), standardPatience, parent) {}

StatusItemHosts::StatusItemHosts(Hosts hosts, std::chrono::milliseconds patience, QObject* parent)
    : QObject(parent), m_hosts(std::move(hosts)) {
    m_patience.setSingleShot(true);
    m_patience.setInterval(patience);
    m_patience.callOnTimeout(this, [this] { choose(false); });
    for (const std::unique_ptr<StatusItemHost>& entry : m_hosts) {
        const StatusItemHost* host = entry.get();
        connect(host, &StatusItemHost::availabilityChanged, this, [this] { choose(true); });
        connect(host, &StatusItemHost::frameChanged, this, [this, host] {
            if (host == m_host && !m_isMoving) {
                noteFrame();
            }
        });
        connect(host, &StatusItemHost::activated, this, &StatusItemHosts::activated);
        connect(host, &StatusItemHost::contextMenuRequested, this, &StatusItemHosts::contextMenuRequested);
    }
}

StatusItemHosts::~StatusItemHosts() {
    for (const std::unique_ptr<StatusItemHost>& host : m_hosts) {
        host->disconnect(this);
    }
    release();
}

void StatusItemHosts::take(QWidget& window) {
    if (m_window == &window) {
        return;
    }
    release();
    m_window = &window;
    choose(true);
}

void StatusItemHosts::release() {
    m_patience.stop();
    m_window = nullptr;
    if (StatusItemHost* host = std::exchange(m_host, nullptr)) {
        host->release();
        Q_EMIT hostChanged();
    }
}

std::size_t StatusItemHosts::rankOf(const StatusItemHost* host) const {
    const auto found =
        std::find_if(m_hosts.begin(), m_hosts.end(),
                     [host](const std::unique_ptr<StatusItemHost>& entry) { return entry.get() == host; });
    return static_cast<std::size_t>(found - m_hosts.begin());
}

/// With `waits`, a host that is worse than the present one, or than one that is yet to answer, gets the item only when
/// the item has waited.
void StatusItemHosts::choose(bool waits) {
    if (!m_window) {
        return;
    }
    StatusItemHost* best = nullptr;
    bool isUndecided = false;
    for (const std::unique_ptr<StatusItemHost>& host : m_hosts) {
        const StatusItemHost::Availability availability = host->availability();
        if (availability == StatusItemHost::Availability::Present) {
            best = host.get();
            break;
        }
        isUndecided = isUndecided || availability == StatusItemHost::Availability::Undecided;
    }
    const bool mayGetBetter = isUndecided || (m_host && rankOf(best) > rankOf(m_host));
    if (waits && mayGetBetter && best != m_host) {
        if (!m_patience.isActive()) {
            m_patience.start();
        }
        return;
    }
    m_patience.stop();
    moveTo(best);
}

void StatusItemHosts::moveTo(StatusItemHost* host) {
    if (host == m_host) {
        return;
    }
    if (StatusItemHost* before = std::exchange(m_host, host)) {
        before->release();
    }
    if (host) {
        m_isMoving = true;
        host->setItemWidth(m_itemWidth);
        host->take(*m_window);
        m_isMoving = false;
    }
    // Whoever hears of it may take the item away, and this object with it.
    const QPointer<StatusItemHosts> self(this);
    Q_EMIT hostChanged();
    if (self) {
        noteFrame();
    }
}

void StatusItemHosts::noteFrame() {
    const QRectF frame = m_host ? m_host->itemFrame() : QRectF();
    // A host that has no place for the item yet will have one; until then it is where it was last.
    if (!frame.isNull() && frame != m_frame) {
        m_frame = frame;
        Q_EMIT frameChanged();
    }
}

QRectF StatusItemHosts::itemFrame() const {
    if (!m_frame.isNull()) {
        return m_frame;
    }
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen) {
        return {};
    }
    return StatusNotifierHost::estimatedFrame(std::nullopt, QSize(m_itemWidth, thickness()), screen->geometry(),
                                              screen->availableGeometry());
}

bool StatusItemHosts::mayBeAt(const QPointF& global) const {
    return m_host && m_host->mayBeAt(global);
}

int StatusItemHosts::thickness() const {
    return m_host ? m_host->thickness() : StatusItemHost::standardThickness;
}

void StatusItemHosts::setItemWidth(int width) {
    m_itemWidth = std::max(1, width);
    if (m_host) {
        m_host->setItemWidth(m_itemWidth);
    }
}

void StatusItemHosts::setTitle(const QString& title) {
    for (const std::unique_ptr<StatusItemHost>& host : m_hosts) {
        host->setTitle(title);
    }
}

void StatusItemHosts::setToolTip(const QString& toolTip) {
    for (const std::unique_ptr<StatusItemHost>& host : m_hosts) {
        host->setToolTip(toolTip);
    }
}
