// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/desktop/WindowEffects.h>
#include <VXKit/platform/desktop/X11SelectionOwner.h>

#include <QAbstractNativeEventFilter>

#include <cstdint>
#include <memory>
#include <unordered_map>

#include <xcb/xcb.h>

class QWindow;

/// The window effects of an X11 desktop.
///
/// Shadows are windows of their own, see X11ShadowWindow; blur, desktops and order are asked of the window manager and
/// the compositing manager by their hints. Private to platform/desktop: see WindowEffects.
class X11WindowEffects final : public WindowEffects, public QAbstractNativeEventFilter {
    Q_OBJECT

public:
    explicit X11WindowEffects(QObject* parent = nullptr);
    ~X11WindowEffects() override;

    [[nodiscard]] bool isAvailable(Effect effect) const override;
    void setShadow(QWidget& window, const std::optional<WindowShadow>& shadow) override;
    void setShadowShape(QWidget& window, const QImage& coverage) override;
    void setBlur(QWidget& window, double radius, const QRegion& region) override;
    void setOnAllDesktops(QWidget& window, bool isOnAll) override;
    void setInputRegion(QWidget& window, const std::optional<QRegion>& region) override;
    void order(QWidget& window, Place place, QWidget* sibling) override;
    void takeKeyboard(QWidget& window) override;
    [[nodiscard]] bool hasKeyboard() const override;
    void moveToPixel(QWidget& window, const QPointF& topLeft) override;
    [[nodiscard]] std::optional<QRect> serverFrame(const QWidget& window) const override;

    bool eventFilter(QObject* object, QEvent* event) override;
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

protected:
    void setEmitsPresses(bool emits) override;

private:
    struct Window;

    Window& stateOf(QWidget& window);
    Window* find(const QObject* widgetOrHandle) const;
    Window* find(xcb_window_t native) const;

    void adoptNativeWindow(Window& window);
    void applyBeforeMapping(const Window& window);
    void applyBlur(const Window& window) const;
    void applyInputRegion(const Window& window) const;
    void askForDesktops(const Window& window) const;

    void giveKeyboard(Window& window);

    void updateShadow(Window& window);
    void updateShadowLater(Window& window);
    void moveShadow(Window& window);
    void stackShadow(Window& window) const;
    void stackShadows() const;

    void compositingHasChanged();
    void rootPropertyHasChanged(xcb_atom_t property);

    X11SelectionOwner m_compositingManager;
    std::unordered_map<const QObject*, std::unique_ptr<Window>> m_windows; ///< by widget
    std::uint8_t m_inputExtension = 0; ///< the major code of XInput, 0 where the server has none
    bool m_isBlurAnnounced = false;
    bool m_emitsPresses = false;
};
