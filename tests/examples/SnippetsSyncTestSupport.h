// SPDX-License-Identifier: MIT
// What the tests of the program and its sync share.
#pragma once

#include "Computer.h"
#include "DavServer.h"
#include "FaultyProxy.h"
#include "SnippetsHost.h"

#include <MessageBar.h>
#include <SnippetTextEdit.h>
#include <SnippetsWindow.h>
#include <sync/SnippetsSyncManager.h>

#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/foundation/NSTimer.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <QTest>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

/// The program, a real server that it reaches by way of a proxy, and another computer.
class SyncingProgram : public SnippetsHost {
protected:
    SyncingProgram() { qunsetenv("DBUS_SESSION_BUS_ADDRESS"); }

    void SetUp() override {
        ASSERT_TRUE(server.start());
        other.server = &server;
        proxy = std::make_unique<FaultyProxy>(server.port());
        ASSERT_TRUE(application.start());
        QObject::connect(&manager(), &SnippetsSyncManager::ended,
                         [this](const SyncReport& report) { reports.push_back(report); });
    }

    SnippetsSyncManager& manager() { return application.syncManager(); }

    /// Switches syncing on without beginning a sync.
    void switchOn(const QUrl& address, const QString& user = {}) {
        ASSERT_TRUE((SyncSettings{.address = address, .name = user, .isOn = true}.save()));
    }
    void switchOn() { switchOn(proxy->addressFor(server.address())); }

    bool waitForReport(std::size_t count) {
        return QTest::qWaitFor([&] { return reports.size() >= count; }, DavServer::longestSync);
    }

    /// One sync from its beginning to its end.
    SyncReport sync() {
        server.ageFiles();
        const std::size_t before = reports.size();
        manager().sync(SnippetsSyncManager::Cause::User);
        EXPECT_TRUE(waitForReport(before + 1));
        return reports.back();
    }

    /// Does something at the moment of the first request of a method, while the program's sync is under way.
    void whenAsked(const QByteArray& method, std::function<void()> work) {
        proxy->setPolicy([this, method, work = std::move(work), done = false](const ProxiedRequest& request) mutable {
            if (request.method == method && !std::exchange(done, true)) {
                EXPECT_TRUE(manager().isSyncInProgress());
                work();
            }
            return ProxyFault();
        });
    }

    /// Types into the text of the first snippet while a sync is under way, and syncs until all is settled.
    void typeDuringASync(const char* typed) {
        application.showMainWindow();
        application.window().selectRow(0);
        auto* const editor = application.window().findChild<SnippetTextEdit*>();
        whenAsked("GET", [&] { editor->insertPlainText(QString::fromUtf8(typed)); });
        for (int count = 0; count < 3; ++count) {
            sync();
        }
    }

    std::vector<std::string> texts() const {
        std::vector<std::string> result;
        for (const auto& snippet : database->snippets()) {
            result.push_back(std::dynamic_pointer_cast<Snippet>(snippet)->text().toStdString());
        }
        return result;
    }

    void edit(const std::shared_ptr<Snippet>& snippet, const char* text) const {
        snippet->setText(QString::fromUtf8(text));
        database->notifyOfModificationForSnippet(snippet);
    }

    static std::size_t recordedRemovals() {
        return NSUserDefaults::standardUserDefaults().arrayForKey("SyncingData").value_or(NSArray()).size();
    }

    MessageBar& syncBar() { return *application.window().findChild<MessageBar*>(QStringLiteral("syncBar")); }

    // The symbol's pulse need not be waited for; what comes by itself after minutes does not come.
    const NSTimer::IntervalsForTesting intervals{[](double seconds) { return seconds < 2 ? 0.001 : seconds; }};
    const AnimationDurationsForTesting noAnimations{0};
    DavServer server;
    std::unique_ptr<FaultyProxy> proxy;
    Computer other{5000};
    std::vector<SyncReport> reports;
};
