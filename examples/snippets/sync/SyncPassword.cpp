// SPDX-License-Identifier: MIT
#include "SyncPassword.h"

#include <VXKit/support/VXLog.h>

#include <qt6keychain/keychain.h>

#include <utility>

namespace {

constexpr QLatin1String service("VXKit Snippets");

/// What the password is kept under: who, and where.
QString keyOf(const SyncSettings& settings) {
    return settings.name + QLatin1Char('@') + settings.address.adjusted(QUrl::RemovePath).toString();
}

} // namespace

void SyncPassword::read(const SyncSettings& settings, QObject* receiver,
                        std::function<void(const std::optional<QString>&)> handler) {
    auto* job = new QKeychain::ReadPasswordJob(service, receiver);
    job->setKey(keyOf(settings));
    job->setInsecureFallback(false);
    QObject::connect(job, &QKeychain::Job::finished, receiver, [job, handler = std::move(handler)] {
        if (job->error() != QKeychain::NoError) {
            VXLog("No password from the secret service: %@", job->errorString());
        }
        handler(job->error() == QKeychain::NoError ? std::optional(job->textData()) : std::nullopt);
    });
    job->start();
}

void SyncPassword::write(const SyncSettings& settings, const QString& password, QObject* receiver,
                         std::function<void(bool)> handler) {
    auto* job = new QKeychain::WritePasswordJob(service, receiver);
    job->setKey(keyOf(settings));
    job->setTextData(password);
    job->setInsecureFallback(false);
    QObject::connect(job, &QKeychain::Job::finished, receiver, [job, handler = std::move(handler)] {
        if (job->error() != QKeychain::NoError) {
            VXLog("The password is not kept: %@", job->errorString());
        }
        handler(job->error() == QKeychain::NoError);
    });
    job->start();
}
