// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusMessage>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>

/// The desktop's settings as its portal tells them over D-Bus (org.freedesktop.portal.Settings), kept current.
///
/// Nothing here waits for the portal; the bus starts it where it can be started. What it says that makes no sense is
/// left out. Private to platform/desktop. Main thread only.
class PortalSettings final : public QObject {
    Q_OBJECT

public:
    /// Asks for the settings of these namespaces when the event loop next runs.
    explicit PortalSettings(QStringList namespaces, QObject* parent = nullptr);

    /// The value of a setting; invalid where there is none, or none is known yet.
    [[nodiscard]] QVariant value(const QString& nameSpace, const QString& key) const;

Q_SIGNALS:
    /// There is no portal that answers, at least not yet; what one tells later still counts.
    void isMissing();

private Q_SLOTS:
    void settingHasChanged(const QDBusMessage& signal);

private:
    void ask();

    QStringList m_namespaces;
    QMap<QString, QVariantMap> m_values;
};
