// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/XSettings.h>

#include <VXKit/platform/desktop/X11Connection.h>
#include <VXKit/platform/desktop/X11SelectionOwner.h>

#include <QCoreApplication>
#include <QtEndian>

#include <cstddef>
#include <cstdint>

namespace {

constexpr const char* managerSelection = "_XSETTINGS_S0";
constexpr const char* settingsProperty = "_XSETTINGS_SETTINGS";

/// Takes numbers and bytes off the front of what a manager publishes. Beyond its end there is nothing.
class Reader {
public:
    explicit Reader(const QByteArray& bytes) : m_bytes(bytes) {}

    void setBigEndian(bool flag) { m_isBigEndian = flag; }

    template <class Number>
    std::optional<Number> number() {
        const auto bytes = take(sizeof(Number));
        if (!bytes) {
            return std::nullopt;
        }
        return m_isBigEndian ? qFromBigEndian<Number>(bytes->constData())
                             : qFromLittleEndian<Number>(bytes->constData());
    }

    std::optional<QByteArray> take(std::size_t count) {
        if (count > static_cast<std::size_t>(m_bytes.size() - m_position)) {
            return std::nullopt;
        }
        const QByteArray taken = m_bytes.mid(m_position, static_cast<qsizetype>(count));
        m_position += taken.size();
        return taken;
    }

    /// Bytes, and those after them up to the next multiple of four.
    std::optional<QByteArray> takePadded(std::size_t count) {
        constexpr std::size_t unit = 4;
        const auto taken = take(count);
        return taken && take((unit - count % unit) % unit) ? taken : std::nullopt;
    }

private:
    const QByteArray& m_bytes;
    qsizetype m_position = 0;
    bool m_isBigEndian = false;
};

enum class Kind : std::uint8_t { Integer = 0, String = 1, Color = 2 };

/// Passes over the value of a setting that is not asked for. False where it cannot be told where that ends.
bool skipValue(Reader& reader, Kind kind) {
    constexpr std::size_t colorSize = 8;
    switch (kind) {
    case Kind::Integer:
        return reader.take(sizeof(std::int32_t)).has_value();
    case Kind::String: {
        const auto length = reader.number<std::uint32_t>();
        return length && reader.takePadded(*length);
    }
    case Kind::Color:
        return reader.take(colorSize).has_value();
    }
    return false;
}

} // namespace

std::optional<int> xSettingsInteger(const QByteArray& settings, const QByteArray& name) {
    constexpr std::size_t restOfByteOrder = 3;
    Reader reader(settings);
    const auto byteOrder = reader.number<std::uint8_t>();
    reader.setBigEndian(byteOrder == std::uint8_t{1});
    reader.take(restOfByteOrder);
    reader.number<std::uint32_t>(); // the number of the version
    const std::uint32_t count = reader.number<std::uint32_t>().value_or(0);
    for (std::uint32_t number = 0; number < count; ++number) {
        const auto kind = reader.number<std::uint8_t>();
        reader.take(1);
        const auto nameLength = reader.number<std::uint16_t>();
        const auto settingName = nameLength ? reader.takePadded(*nameLength) : std::nullopt;
        const auto version = reader.number<std::uint32_t>();
        if (!settingName || !version) {
            return std::nullopt;
        }
        if (*settingName == name && *kind == static_cast<std::uint8_t>(Kind::Integer)) {
            return reader.number<std::int32_t>();
        }
        if (!skipValue(reader, static_cast<Kind>(*kind))) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

XSettings::XSettings(QObject* parent) : QObject(parent), m_manager(new X11SelectionOwner(managerSelection, this)) {
    if (!X11Connection::shared()) {
        return;
    }
    qApp->installNativeEventFilter(this);
    connect(m_manager, &X11SelectionOwner::changed, this, &XSettings::read);
    read();
}

std::optional<int> XSettings::integer(const QByteArray& name) const {
    return xSettingsInteger(m_settings, name);
}

bool XSettings::nativeEventFilter(const QByteArray& /*eventType*/, void* message, qintptr* /*result*/) {
    const X11Connection* x11 = X11Connection::shared();
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    if (!x11 || x11EventNumber(*event) != XCB_PROPERTY_NOTIFY) {
        return false;
    }
    const auto* property = reinterpret_cast<const xcb_property_notify_event_t*>(event);
    if (property->window == m_manager->window() && property->atom == x11->atom(settingsProperty)) {
        // Not from within the event's delivery, since it waits for the server.
        QMetaObject::invokeMethod(this, &XSettings::read, Qt::QueuedConnection);
    }
    return false;
}

void XSettings::read() {
    const X11Connection* x11 = X11Connection::shared();
    m_settings.clear();
    if (x11 && m_manager->window() != XCB_NONE) {
        x11->selectEvents(m_manager->window(), XCB_EVENT_MASK_PROPERTY_CHANGE);
        m_settings = x11->bytesOfProperty(m_manager->window(), settingsProperty);
    }
}
