// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/StatusItemHost.h>

#include <QEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QWidget>

#include <algorithm>
#include <utility>

namespace {

/// Opens QWidget's operation for giving up the native window, which Qt keeps to subclasses.
class NativeWindowOf final : public QWidget {
public:
    static void destroy(QWidget& widget) { (widget.*operation)(true, true); }

private:
    using QWidget::destroy;
    static constexpr void (QWidget::*operation)(bool, bool) = &NativeWindowOf::destroy;
};

} // namespace

StatusItemHost::StatusItemHost(QObject* parent) : QObject(parent) {}

StatusItemHost::~StatusItemHost() = default;

void StatusItemHost::take(QWidget& window) {
    release();
    m_window = &window;
    m_death = connect(&window, &QObject::destroyed, this, [this] { windowHasDied(); });
    window.installEventFilter(this);
    attach();
}

void StatusItemHost::release() {
    if (!m_window) {
        return;
    }
    disconnect(m_death);
    detach();
    if (m_window) {
        m_window->removeEventFilter(this);
    }
    m_window = nullptr;
}

void StatusItemHost::windowHasDied() {
    m_window = nullptr;
    detach();
}

bool StatusItemHost::mayBeAt(const QPointF& global) const {
    return itemFrame().contains(global);
}

void StatusItemHost::setItemWidth(int width) {
    width = std::max(1, width);
    if (width == m_itemWidth) {
        return;
    }
    m_itemWidth = width;
    if (m_window) {
        itemWidthHasChanged();
    }
}

void StatusItemHost::setTitle(const QString& title) {
    if (title == m_title) {
        return;
    }
    m_title = title;
    if (m_window) {
        titleHasChanged();
    }
}

void StatusItemHost::setToolTip(const QString& toolTip) {
    if (toolTip == m_toolTip) {
        return;
    }
    m_toolTip = toolTip;
    if (m_window) {
        toolTipHasChanged();
    }
}

bool StatusItemHost::eventFilter(QObject* watched, QEvent* event) {
    if (watched != m_window || event->type() != QEvent::Paint) {
        return QObject::eventFilter(watched, event);
    }
    QPainter painter(m_window);
    painter.setClipRegion(static_cast<QPaintEvent*>(event)->region());
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(m_window->rect(), Qt::transparent);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    drawBackground(painter);
    return true;
}

void StatusItemHost::drawBackground(QPainter& /*painter*/) {}

void StatusItemHost::prepareWindow(Qt::WindowFlags flags, Surface surface) {
    dropNativeWindow();
    m_window->setAttribute(Qt::WA_TranslucentBackground, surface == Surface::Translucent);
    m_window->setWindowFlags(flags);
}

void StatusItemHost::dropNativeWindow() {
    if (!m_window) {
        return;
    }
    m_window->hide();
    NativeWindowOf::destroy(*m_window);
}
