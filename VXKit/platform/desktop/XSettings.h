// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QAbstractNativeEventFilter>
#include <QByteArray>
#include <QObject>

#include <optional>

class X11SelectionOwner;

/// The desktop's settings as its X settings manager tells them, kept current; none where there is no such manager.
///
/// Private to platform/desktop. Main thread only.
class VXKIT_EXPORT XSettings final : public QObject, public QAbstractNativeEventFilter {
public:
    explicit XSettings(QObject* parent = nullptr);

    /// The value of the whole-number setting `name`; nothing where there is none of that name and kind.
    [[nodiscard]] std::optional<int> integer(const QByteArray& name) const;

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    void read();

    X11SelectionOwner* m_manager; // owned as a child
    QByteArray m_settings;
};

/// The same out of the bytes that a manager publishes. Whatever they are: where they break off or make no sense, there
/// is nothing more in them.
[[nodiscard]] VXKIT_EXPORT std::optional<int> xSettingsInteger(const QByteArray& settings, const QByteArray& name);
