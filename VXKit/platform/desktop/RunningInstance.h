// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariant>
#include <QVariantMap>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

/// The one instance of a program that runs in the user's session, and the way by which further starts reach it: a name
/// on the session bus and the interface `org.freedesktop.Application` behind it, which launchers and the bus's own
/// activation speak as well.
///
///     first start:    claim() ── the name is its own ──> … the window is made … ──> beginToDeliver()
///     further start:  ask(name, request) ── the first one's signal ──> ends
///
/// The bus decides between two that are started at once. What is asked between claim and beginToDeliver is answered as
/// soon as the event loop runs, and kept; signals come from the event loop, after the answer, so that a slot may
/// run a loop of its own or end the program. The name goes back with the object. Where there is no session bus the
/// program must see by itself that it runs only once.
///
/// Not for finding other programs: only those that have this interface answer. Main thread only, but for `ask`.
class VXKIT_EXPORT RunningInstance final : public QObject {
    Q_OBJECT

public:
    /// What is asked of the running instance.
    class VXKIT_EXPORT Request {
    public:
        /// Asks for nothing, only whether an instance is there.
        [[nodiscard]] static Request look() { return {}; }
        /// Be seen, with the keyboard.
        [[nodiscard]] static Request activate();
        /// Open these; not only local ones, but what is no valid URL is left out.
        [[nodiscard]] static Request open(const QList<QUrl>& urls);
        /// Do what the program knows under `name`. `parameters` are of types that D-Bus has.
        [[nodiscard]] static Request action(const QString& name, const QVariantList& parameters = {});

    private:
        friend class RunningInstance;

        QString m_method; // null for a look
        QVariantList m_arguments;
    };

    /// How a question to the running instance went.
    enum class Answer : std::uint8_t {
        Done,        ///< the running instance has taken the request
        NobodyThere, ///< no instance runs, or there is no session bus
        Failed       ///< somebody has the name and does not take it: hangs, refuses, or is another program
    };

    /// Whose the name is.
    enum class Claim : std::uint8_t {
        Claimed, ///< this process is the running instance
        Taken,   ///< another process is
        NoBus    ///< there is no session bus, or it gives names to nobody
    };

    static constexpr int answerTime = 10'000; ///< milliseconds that a running instance has at most to answer

    /// Asks the instance that has `name`, and waits for the answer at most `timeout` milliseconds; starts no program.
    /// The bus, which answers at once, has as long for each question about the name. With the request goes what the
    /// launcher told this process so that the window may come to the front (`DESKTOP_STARTUP_ID`,
    /// `XDG_ACTIVATION_TOKEN`). An instance that ends meanwhile counts as gone. `problem`, where given, is told why it
    /// failed, in a sentence without a full stop. Needs an application object, but no display.
    [[nodiscard]] static Answer ask(const QString& name, const Request& request, QString* problem = nullptr,
                                    int timeout = answerTime);

    /// Of the program `name`, a name of D-Bus as `org.vxkit.Snippets`; its object is at the path made of the same
    /// words. `actions` are the ones it knows; whoever asks for another is told so.
    RunningInstance(QString name, QStringList actions, QObject* parent = nullptr);
    ~RunningInstance() override;

    /// Makes this process the running instance where no other is. Once it is, it stays so.
    [[nodiscard]] Claim claim();

    /// Emits the signals of what has been asked so far, when the event loop next runs, and of all that will be asked.
    void beginToDeliver();

Q_SIGNALS:
    /// Someone asks that the program be seen. `platformData` of all of them is what the one who asks tells beside:
    /// `desktop-startup-id` and `activation-token`, where a launcher gave it any.
    void activated(const QVariantMap& platformData);
    /// Valid URLs, at least one.
    void opened(const QList<QUrl>& urls, const QVariantMap& platformData);
    /// One of the actions that the program knows. What is among the parameters is for the program to check.
    void actionActivated(const QString& name, const QVariantList& parameters, const QVariantMap& platformData);

private:
    class Exported;

    void deliver(std::function<void()> emission);
    void deliverNext();

    QString m_name;
    QStringList m_actions;
    QString m_connection; ///< the name that Qt has for the connection; null before the first claim
    std::unique_ptr<Exported> m_exported;
    std::vector<std::function<void()>> m_waiting;
    bool m_delivers = false;
};
