// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/desktop/StatusItemHost.h>

#include <QAbstractNativeEventFilter>
#include <QByteArray>
#include <QImage>
#include <QRect>
#include <QRectF>
#include <QTimer>

#include <cstdint>
#include <vector>

class X11SelectionOwner;

/// Shows a status item in the tray of an X11 desktop, the owner of the selection _NET_SYSTEM_TRAY_S0: the item's own
/// window is docked there, so it paints itself, gets its own mouse events, and its frame is what the X server says.
///
/// The tray may make the item as large as it likes; the width that the item wants is its least size. A tray that
/// does not take the window in within a few seconds, or puts it out again and again, counts as absent. When a tray
/// ends, the window is taken from the screen and docked again where a new one comes. Absent where the application is
/// not on X11.
class VXKIT_EXPORT TrayStatusItemHost final : public StatusItemHost, public QAbstractNativeEventFilter {
    Q_OBJECT

public:
    explicit TrayStatusItemHost(QObject* parent = nullptr);
    ~TrayStatusItemHost() override;

    [[nodiscard]] Kind kind() const override { return Kind::Tray; }
    [[nodiscard]] Availability availability() override;
    [[nodiscard]] QRectF itemFrame() const override { return m_frame; }
    [[nodiscard]] int thickness() const override;

    /// Whether the tray has taken the window in.
    [[nodiscard]] bool isDocked() const { return m_isDocked; }

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

protected:
    void attach() override;
    void detach() override;
    void itemWidthHasChanged() override;
    void drawBackground(QPainter& painter) override;

private:
    void ownerHasChanged();
    void askToDock();
    void applyWantedSize();
    void windowWasReparented();
    void hasBeenDocked();
    void hasBeenUndocked();
    void giveUp();
    void updateLater();
    void updateFrame();
    void updateBackground();
    [[nodiscard]] std::uint32_t nativeWindow() const;
    [[nodiscard]] bool isItemOrAround(std::uint32_t native) const;
    [[nodiscard]] bool isTranslucent() const;

    X11SelectionOwner* m_tray;
    QTimer m_patience; ///< runs while the tray was asked and has not taken the window in
    int m_timesAsked = 0;
    bool m_trayRefuses = false;
    bool m_isDocked = false;
    bool m_isGoingToUpdate = false;
    std::vector<std::uint32_t> m_around; ///< the windows that hold the item's, the innermost first
    QRectF m_frame;
    QRect m_backgroundFrame; ///< where the item was when the background was read
    QImage m_background;
};
