// SPDX-License-Identifier: MIT
// The example host under orders, for tests that need several at once. Reads orders from standard input, a line each:
//
//     address URL     switch syncing with this folder on
//     change SEED N   N random changes
//     sync            begin a sync
//     texts           tell the texts of all snippets
//     save            save, unless a sync is in progress
//
// and tells on standard output, a line each, "wrote TEXT", "gaveup TEXT", "saved", "ended PROBLEM", "text TEXT" and
// "that is all". Ends with its input.
#include <Snippet.h>
#include <SnippetsApplication.h>
#include <SnippetsDatabase.h>

#include <QSocketNotifier>

#include <cstdio>
#include <iostream>
#include <random>
#include <set>
#include <string>
#include <unistd.h>

namespace {

void tell(const std::string& line) {
    std::cout << line << std::endl;
}

class SyncingHost : public SnippetsApplication {
public:
    using SnippetsApplication::SnippetsApplication;

    void obey(const QString& order) {
        const QStringList words = order.split(QLatin1Char(' '));
        if (words[0] == QLatin1String("address")) {
            (void)SyncSettings{.address = QUrl(words.value(1)), .name = {}, .isOn = true}.save();
        } else if (words[0] == QLatin1String("change")) {
            std::mt19937 random(words.value(1).toUInt());
            for (int count = words.value(2).toInt(); count > 0; --count) {
                change(random, words.value(1) + QLatin1Char('-') + QString::number(count));
            }
        } else if (words[0] == QLatin1String("sync")) {
            syncManager().sync(SnippetsSyncManager::Cause::User);
        } else if (words[0] == QLatin1String("texts")) {
            for (const auto& snippet : database().snippets()) {
                tell("text " + textOf(*snippet));
            }
            tell("that is all");
        } else if (words[0] == QLatin1String("save") && !syncManager().isSyncInProgress() && database().save()) {
            tell("saved");
        }
    }

private:
    static std::string textOf(const _LTSnippet& snippet) {
        return dynamic_cast<const Snippet&>(snippet).text().toStdString();
    }

    void change(std::mt19937& random, const QString& text) {
        const std::size_t count = database().snippets().count();
        if (count == 0 || random() % 3 == 0) {
            double realID = 0;
            const auto snippet = _LTSnippet::emptySnippetWithUniqueIDStartingDate<Snippet>(
                NSDate::date().timeIntervalSince1970(), &realID);
            snippet->setText(text);
            database().addSnippet(snippet);
            tell("wrote " + text.toStdString());
            return;
        }
        const auto snippet = std::dynamic_pointer_cast<Snippet>(database().snippets()[random() % count]);
        // One removed during a sync is in the list until the sync has ended, and gone then whatever is done to it.
        if (m_removed.contains(snippet)) {
            return;
        }
        tell("gaveup " + textOf(*snippet));
        if (random() % 3 == 0) {
            m_removed.insert(snippet);
            database().removeSnippet(snippet);
        } else {
            snippet->setText(text);
            snippet->updateModificationDate();
            database().notifyOfModificationForSnippet(snippet);
            tell("wrote " + text.toStdString());
        }
    }

    std::set<std::shared_ptr<Snippet>> m_removed;
};

} // namespace

int main(int argc, char** argv) {
    QCoreApplication::setApplicationName(QStringLiteral("snippets"));
    SyncingHost host(argc, argv);
    if (!host.start()) {
        return 1;
    }
    QObject::connect(&host.syncManager(), &SnippetsSyncManager::ended, [](const SyncReport& report) {
        tell("saved");
        tell("ended " + report.problem.toStdString());
    });
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QByteArray received;
    QObject::connect(&input, &QSocketNotifier::activated, [&] {
        QByteArray bytes(4096, '\0');
        const ssize_t length = ::read(STDIN_FILENO, bytes.data(), static_cast<std::size_t>(bytes.size()));
        if (length <= 0) {
            input.setEnabled(false);
            host.terminate(nullptr);
            return;
        }
        received += bytes.first(length);
        for (qsizetype end = received.indexOf('\n'); end >= 0; end = received.indexOf('\n')) {
            host.obey(QString::fromUtf8(received.first(end)));
            received = received.mid(end + 1);
        }
    });
    tell("ready");
    return host.run();
}
