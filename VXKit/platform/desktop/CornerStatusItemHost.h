// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/desktop/StatusItemHost.h>

#include <QMetaObject>
#include <QRect>

/// Shows a status item in a small window of its own at the top right of what panels leave free of the primary screen,
/// for desktops that have no place for one: an application without any could not be reached.
///
///       ……………………………………╭──────╮╭──────╮
///                             │ item ││ item │        the first that came is the one on the right
///                             ╰──────╯╰──────╯
///
/// The window is above the others, on all desktops, and never takes the keyboard. Always available.
class VXKIT_EXPORT CornerStatusItemHost final : public StatusItemHost {
    Q_OBJECT

public:
    explicit CornerStatusItemHost(QObject* parent = nullptr);
    ~CornerStatusItemHost() override;

    [[nodiscard]] Kind kind() const override { return Kind::Corner; }
    [[nodiscard]] Availability availability() override { return Availability::Present; }
    [[nodiscard]] QRectF itemFrame() const override { return m_frame; }

protected:
    void attach() override;
    void detach() override;
    void itemWidthHasChanged() override;
    void drawBackground(QPainter& painter) override;

private:
    static void placeAll();

    void watchPrimaryScreen();
    void place(const QRect& frame);
    void applyShape();

    QRect m_frame;
    QMetaObject::Connection m_screenWatch;
};
