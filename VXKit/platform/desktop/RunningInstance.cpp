// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/RunningInstance.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusContext>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDeadlineTimer>
#include <QMetaObject>

#include <algorithm>
#include <atomic>
#include <utility>

namespace {

QString applicationInterface() {
    return QStringLiteral("org.freedesktop.Application");
}

/// As freedesktop.org has launchers make one out of the other.
QString pathOfName(const QString& name) {
    QString path = QLatin1Char('/') + name;
    return path.replace(QLatin1Char('.'), QLatin1Char('/')).replace(QLatin1Char('-'), QLatin1Char('_'));
}

/// A connection to the session bus of its own, which the caller ends: the one that Qt shares may be made before the
/// application object that it belongs to.
class Connection {
public:
    Connection() : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, newName())) {}
    ~Connection() { QDBusConnection::disconnectFromBus(m_bus.name()); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    [[nodiscard]] QDBusConnection& bus() { return m_bus; }

    static QString newName() {
        static std::atomic_int count = 0;
        return QStringLiteral("VXKit running instance %1").arg(++count);
    }

private:
    QDBusConnection m_bus;
};

/// Asks the bus itself about `name`.
QDBusMessage askBus(QDBusConnection& bus, const char* method, const QString& name, int timeout) {
    QDBusMessage question =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                                       QStringLiteral("org.freedesktop.DBus"), QString::fromLatin1(method));
    question << name;
    return bus.call(question, QDBus::Block, timeout);
}

/// The unique name of the connection that has `name`; null where there is none.
QString ownerOf(QDBusConnection& bus, const QString& name, int timeout) {
    const QDBusMessage reply = askBus(bus, "GetNameOwner", name, timeout);
    return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments().value(0).toString() : QString();
}

QString processOf(QDBusConnection& bus, const QString& owner, int timeout) {
    const QDBusMessage reply = askBus(bus, "GetConnectionUnixProcessID", owner, timeout);
    return reply.type() == QDBusMessage::ReplyMessage
               ? QStringLiteral("process %1").arg(reply.arguments().value(0).toUInt())
               : QStringLiteral("process unknown");
}

QVariantMap platformData() {
    constexpr std::pair<const char*, const char*> keys[] = {{"desktop-startup-id", "DESKTOP_STARTUP_ID"},
                                                            {"activation-token", "XDG_ACTIVATION_TOKEN"}};
    QVariantMap data;
    for (const auto& [key, variable] : keys) {
        if (const QString value = qEnvironmentVariable(variable); !value.isEmpty()) {
            data.insert(QString::fromLatin1(key), value);
        }
    }
    return data;
}

/// Not by the clock: Qt's own comes to the end of its patience a little before it.
bool isSilence(QDBusError::ErrorType error) {
    return error == QDBusError::NoReply || error == QDBusError::Timeout || error == QDBusError::TimedOut;
}

bool isOfAnotherProgram(QDBusError::ErrorType error) {
    return error == QDBusError::UnknownObject || error == QDBusError::UnknownInterface ||
           error == QDBusError::UnknownMethod;
}

} // namespace

/// What the bus sees of the running instance.
class RunningInstance::Exported final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit Exported(RunningInstance& instance) : m_instance(instance) {}

public Q_SLOTS:
    // By these names and types the bus knows them.
    void Activate(const QVariantMap& platformData) {
        m_instance.deliver([this, platformData] { Q_EMIT m_instance.activated(platformData); });
    }

    void Open(const QStringList& uris, const QVariantMap& platformData) {
        QList<QUrl> urls;
        for (const QString& uri : uris) {
            const QUrl url(uri, QUrl::StrictMode);
            if (!url.isValid() || url.isRelative()) {
                sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("“%1” is no URI").arg(uri));
                return;
            }
            urls.push_back(url);
        }
        if (!urls.isEmpty()) {
            m_instance.deliver([this, urls, platformData] { Q_EMIT m_instance.opened(urls, platformData); });
        }
    }

    void ActivateAction(const QString& name, const QVariantList& parameters, const QVariantMap& platformData) {
        if (!m_instance.m_actions.contains(name)) {
            sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("There is no action “%1”").arg(name));
            return;
        }
        m_instance.deliver([this, name, parameters, platformData] {
            Q_EMIT m_instance.actionActivated(name, parameters, platformData);
        });
    }

private:
    RunningInstance& m_instance;
};

RunningInstance::Request RunningInstance::Request::activate() {
    Request request;
    request.m_method = QStringLiteral("Activate");
    return request;
}

RunningInstance::Request RunningInstance::Request::open(const QList<QUrl>& urls) {
    QStringList uris;
    for (const QUrl& url : urls) {
        if (url.isValid() && !url.isRelative()) {
            uris.push_back(QString::fromLatin1(url.toEncoded()));
        }
    }
    Request request;
    request.m_method = QStringLiteral("Open");
    request.m_arguments = {uris};
    return request;
}

RunningInstance::Request RunningInstance::Request::action(const QString& name, const QVariantList& parameters) {
    Request request;
    request.m_method = QStringLiteral("ActivateAction");
    request.m_arguments = {name, QVariant(parameters)};
    return request;
}

RunningInstance::Answer RunningInstance::ask(const QString& name, const Request& request, QString* problem,
                                             int timeout) {
    Connection connection;
    QDBusConnection& bus = connection.bus();
    const QDeadlineTimer deadline(timeout);
    const auto remaining = [&] { return std::max(1, static_cast<int>(deadline.remainingTime())); };
    while (bus.isConnected()) {
        // The bus has the whole time: that it is slow does not mean that nobody is there.
        const QString owner = ownerOf(bus, name, timeout);
        if (owner.isEmpty()) {
            return Answer::NobodyThere;
        }
        if (request.m_method.isNull()) {
            return Answer::Done;
        }
        const QString process = processOf(bus, owner, timeout);
        QDBusMessage call =
            QDBusMessage::createMethodCall(name, pathOfName(name), applicationInterface(), request.m_method);
        call.setArguments(request.m_arguments + QVariantList{platformData()});
        // The bus may know how to start the program. That is what this process is about to do.
        call.setAutoStartService(false);
        const QDBusMessage reply = bus.call(call, QDBus::Block, remaining());
        if (reply.type() == QDBusMessage::ReplyMessage) {
            return Answer::Done;
        }
        const QDBusError error(reply);
        const bool isGone = ownerOf(bus, name, timeout) != owner;
        if (isGone && !deadline.hasExpired()) {
            continue;
        }
        if (problem) {
            if (isOfAnotherProgram(error.type())) {
                *problem = QStringLiteral("%1 on the session bus belongs to another program (%2): %3")
                               .arg(name, process, error.message());
            } else if (isSilence(error.type())) {
                *problem = QStringLiteral("is already running (%1), but did not answer within %2 seconds")
                               .arg(process, QString::number((timeout + 999) / 1000));
            } else {
                *problem = QStringLiteral("is already running (%1), but refuses: %2").arg(process, error.message());
            }
        }
        return Answer::Failed;
    }
    return Answer::NobodyThere;
}

RunningInstance::RunningInstance(QString name, QStringList actions, QObject* parent)
    : QObject(parent), m_name(std::move(name)), m_actions(std::move(actions)),
      m_exported(std::make_unique<Exported>(*this)) {}

RunningInstance::~RunningInstance() {
    if (!m_connection.isNull()) {
        QDBusConnection::disconnectFromBus(m_connection);
    }
}

RunningInstance::Claim RunningInstance::claim() {
    if (m_connection.isNull()) {
        m_connection = Connection::newName();
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_connection);
    }
    QDBusConnection bus(m_connection);
    if (!bus.isConnected()) {
        return Claim::NoBus;
    }
    // Before the name, because whoever sees that may ask at once.
    bus.registerObject(pathOfName(m_name), m_exported.get(), QDBusConnection::ExportAllSlots);
    const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply = bus.interface()->registerService(
        m_name, QDBusConnectionInterface::DontQueueService, QDBusConnectionInterface::DontAllowReplacement);
    if (!reply.isValid()) {
        return Claim::NoBus;
    }
    return reply.value() == QDBusConnectionInterface::ServiceRegistered ? Claim::Claimed : Claim::Taken;
}

void RunningInstance::beginToDeliver() {
    m_delivers = true;
    for (std::size_t count = 0; count < m_waiting.size(); ++count) {
        QMetaObject::invokeMethod(this, &RunningInstance::deliverNext, Qt::QueuedConnection);
    }
}

/// Later, when the one who asks has its answer.
void RunningInstance::deliver(std::function<void()> emission) {
    m_waiting.push_back(std::move(emission));
    if (m_delivers) {
        QMetaObject::invokeMethod(this, &RunningInstance::deliverNext, Qt::QueuedConnection);
    }
}

void RunningInstance::deliverNext() {
    if (m_waiting.empty()) {
        return;
    }
    const std::function<void()> emission = std::move(m_waiting.front());
    m_waiting.erase(m_waiting.begin());
    emission();
}

#include "RunningInstance.moc"
