// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QtEndian>

#include <cstdint>

enum class ByteOrder : std::uint8_t { Little = 0, Big = 1 };

/// The settings of a manager, as it publishes them.
class PublishedXSettings {
public:
    explicit PublishedXSettings(ByteOrder order) : m_order(order) {}

    PublishedXSettings& integer(const QByteArray& name, std::int32_t value) {
        begin(0, name);
        number(value);
        return *this;
    }
    PublishedXSettings& string(const QByteArray& name, const QByteArray& value) {
        begin(1, name);
        number(static_cast<std::uint32_t>(value.size()));
        padded(value);
        return *this;
    }
    PublishedXSettings& color(const QByteArray& name) {
        begin(2, name);
        m_settings += QByteArray(8, '\x7f');
        return *this;
    }

    [[nodiscard]] QByteArray bytes() const {
        PublishedXSettings header(m_order);
        header.m_settings = QByteArray(1, static_cast<char>(m_order)) + QByteArray(3, '\0');
        header.number(std::uint32_t{42});
        header.number(m_count);
        return header.m_settings + m_settings;
    }

private:
    template <class Number>
    void number(Number value) {
        QByteArray raw(sizeof(Number), '\0');
        m_order == ByteOrder::Big ? qToBigEndian(value, raw.data()) : qToLittleEndian(value, raw.data());
        m_settings += raw;
    }
    void padded(const QByteArray& text) { m_settings += text + QByteArray((4 - text.size() % 4) % 4, '\0'); }
    void begin(char kind, const QByteArray& name) {
        ++m_count;
        m_settings += QByteArray(1, kind) + QByteArray(1, '\0');
        number(static_cast<std::uint16_t>(name.size()));
        padded(name);
        number(std::uint32_t{7});
    }

    ByteOrder m_order;
    std::uint32_t m_count = 0;
    QByteArray m_settings;
};
