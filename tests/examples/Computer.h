// SPDX-License-Identifier: MIT
#pragma once

#include "DavServer.h"

#include <sync/SyncRun.h>

#include <QTest>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

inline NSDate at(double seconds) {
    return NSDate::dateWithTimeIntervalSince1970(seconds);
}

/// A computer with snippets, which does with them what a sync asks for.
class Computer {
public:
    explicit Computer(double firstIdentity) : m_nextIdentity(firstIdentity) {}

    double add(const char* text) {
        const double identity = m_nextIdentity++;
        auto snippet = std::make_shared<Snippet>();
        snippet->setSnippetID(at(identity));
        snippet->setTitle(QStringLiteral("Title"));
        snippet->setText(QString::fromUtf8(text));
        snippets[identity] = snippet;
        return identity;
    }

    void edit(double identity, const QString& text) {
        const auto edited = std::make_shared<Snippet>(*snippets.at(identity));
        edited->setText(text);
        snippets[identity] = edited;
    }
    void edit(double identity, const char* text) { edit(identity, QString::fromUtf8(text)); }

    void remove(double identity) {
        snippets.erase(identity);
        removed.insert(SyncedFile::nameFor(at(identity)));
    }

    SyncOutcome sync(const QUrl& address, int timeout = WebDavFolder::standardTimeout) {
        if (server) {
            server->ageFiles();
        }
        SyncInput input;
        input.state = state;
        input.removed = removed;
        for (const auto& [identity, snippet] : snippets) {
            input.snippets.push_back(snippet);
        }
        SyncRun run(std::make_unique<WebDavFolder>(address, WebDavFolder::Credentials{}, timeout), std::move(input));
        std::optional<SyncOutcome> outcome;
        int ends = 0;
        QObject::connect(&run, &SyncRun::finished, &run, [&](const SyncOutcome& result) {
            outcome = result;
            ++ends;
        });
        run.start();
        EXPECT_TRUE(QTest::qWaitFor([&] { return outcome.has_value(); }, DavServer::longestSync));
        EXPECT_EQ(ends, 1);
        apply(*outcome);
        return *outcome;
    }

    std::vector<std::string> texts() const {
        std::vector<std::string> result;
        for (const auto& [identity, snippet] : snippets) {
            result.push_back(snippet->text().toStdString());
        }
        return result;
    }

    std::string textOf(double identity) const {
        const auto found = snippets.find(identity);
        return found == snippets.end() ? "(none)" : found->second->text().toStdString();
    }

    std::map<double, std::shared_ptr<const Snippet>> snippets;
    SyncState state{QStringLiteral("address"), QStringLiteral("database")};
    QSet<QString> removed;
    const DavServer* server = nullptr; // whose files to make look old before a sync

private:
    void apply(const SyncOutcome& outcome) {
        state = outcome.state;
        removed -= outcome.settledRemovals;
        for (const SyncChange& change : outcome.changes) {
            const double identity = SyncedFile::identityIn(change.name)->timeIntervalSince1970();
            if (change.snippet) {
                snippets[identity] = change.snippet;
            } else {
                snippets.erase(identity);
            }
            if (change.alsoToKeep) {
                const auto kept = std::make_shared<Snippet>(*change.alsoToKeep);
                kept->setSnippetID(at(m_nextIdentity));
                snippets[m_nextIdentity++] = kept;
            }
            state.set(change.name, change.entryAfter);
            removed.remove(change.name);
        }
    }

    double m_nextIdentity;
};
