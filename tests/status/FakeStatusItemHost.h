// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/desktop/StatusItemHost.h>

#include <QWidget>

/// A host whose availability and frame a test sets.
class FakeStatusItemHost final : public StatusItemHost {
    Q_OBJECT

public:
    FakeStatusItemHost(Kind kind, Availability availability) : m_kind(kind), m_availability(availability) {}
    ~FakeStatusItemHost() override { release(); }

    [[nodiscard]] Kind kind() const override { return m_kind; }
    [[nodiscard]] Availability availability() override { return m_availability; }
    [[nodiscard]] QRectF itemFrame() const override { return m_frame; }

    void setAvailability(Availability availability) {
        m_availability = availability;
        Q_EMIT availabilityChanged();
    }
    void setItemFrame(const QRectF& frame) {
        m_frame = frame;
        Q_EMIT frameChanged();
    }

    [[nodiscard]] bool hasItem() const { return window() != nullptr; }
    [[nodiscard]] int timesTaken() const { return m_timesTaken; }

protected:
    void attach() override {
        ++m_timesTaken;
        window()->resize(itemWidth(), thickness());
        window()->show();
    }
    void detach() override {
        if (window()) {
            window()->hide();
        }
    }

private:
    Kind m_kind;
    Availability m_availability;
    QRectF m_frame;
    int m_timesTaken = 0;
};
