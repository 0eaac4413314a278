// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/PortalSettings.h>

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QMetaObject>

#include <utility>

namespace {

QString portalService() {
    return QStringLiteral("org.freedesktop.portal.Desktop");
}
QString portalPath() {
    return QStringLiteral("/org/freedesktop/portal/desktop");
}
QString settingsInterface() {
    return QStringLiteral("org.freedesktop.portal.Settings");
}

/// What is in a variant, and in those that some portals put around it again.
QVariant unwrapped(QVariant value) {
    constexpr int mostWrappers = 4;
    for (int count = 0; count < mostWrappers && value.userType() == qMetaTypeId<QDBusVariant>(); ++count) {
        value = value.value<QDBusVariant>().variant();
    }
    return value;
}

} // namespace

PortalSettings::PortalSettings(QStringList namespaces, QObject* parent)
    : QObject(parent), m_namespaces(std::move(namespaces)) {
    // Getting onto the bus takes a moment, which whoever asks first shall not wait for.
    QMetaObject::invokeMethod(this, &PortalSettings::ask, Qt::QueuedConnection);
}

QVariant PortalSettings::value(const QString& nameSpace, const QString& key) const {
    return m_values.value(nameSpace).value(key);
}

void PortalSettings::ask() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        Q_EMIT isMissing();
        return;
    }
    // From whomever: Qt would wait for the bus to tell who owns the portal's name.
    bus.connect(QString(), portalPath(), settingsInterface(), QStringLiteral("SettingChanged"), this,
                SLOT(settingHasChanged(QDBusMessage)));
    QDBusMessage question =
        QDBusMessage::createMethodCall(portalService(), portalPath(), settingsInterface(), QStringLiteral("ReadAll"));
    question << m_namespaces;
    auto* const answer = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        const QDBusMessage reply = answer->reply();
        if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != QLatin1String("a{sa{sv}}")) {
            Q_EMIT isMissing();
            return;
        }
        const auto values = qdbus_cast<QMap<QString, QVariantMap>>(reply.arguments().value(0));
        if (values.isEmpty()) {
            // One that has nobody behind it to ask.
            Q_EMIT isMissing();
        }
        for (auto nameSpace = values.begin(); nameSpace != values.end(); ++nameSpace) {
            for (auto setting = nameSpace->begin(); setting != nameSpace->end(); ++setting) {
                m_values[nameSpace.key()].insert(setting.key(), unwrapped(setting.value()));
            }
        }
    });
}

void PortalSettings::settingHasChanged(const QDBusMessage& signal) {
    const QVariantList arguments = signal.arguments();
    if (signal.signature() != QLatin1String("ssv") || !m_namespaces.contains(arguments.at(0).toString())) {
        return;
    }
    m_values[arguments.at(0).toString()].insert(arguments.at(1).toString(), unwrapped(arguments.at(2)));
}
