// SPDX-License-Identifier: MIT
#pragma once

#include <SnippetsApplication.h>

#include <Snippet.h>
#include <SnippetsDatabase.h>

#include <gtest/gtest.h>

#include <memory>

inline NSDate dateAt(double seconds) {
    return NSDate::dateWithTimeIntervalSince1970(seconds);
}

inline std::shared_ptr<Snippet> makeSnippet(double identity, const char* title, const char* text = "Text") {
    auto snippet = std::make_shared<Snippet>();
    snippet->setSnippetID(dateAt(identity));
    snippet->setTitle(QString::fromUtf8(title));
    snippet->setText(QString::fromUtf8(text));
    return snippet;
}

/// The example host's application object, whose sync a test may put another in the place of.
class HostedApplication : public SnippetsApplication {
public:
    using SnippetsApplication::SnippetsApplication;

    LTSyncManagerClass* syncManagerClass() const override {
        return otherSyncManager ? otherSyncManager : SnippetsApplication::syncManagerClass();
    }

    LTSyncManagerClass* otherSyncManager = nullptr;
};

/// The example host's application object and its database, in the empty home folder of the test's own process.
class SnippetsHost : public testing::Test {
protected:
    /// Adds a snippet to the database; the identity is its age.
    std::shared_ptr<Snippet> add(double identity, const char* title, const char* text = "Text") {
        std::shared_ptr<Snippet> snippet = makeSnippet(identity, title, text);
        database->addSnippet(snippet);
        return snippet;
    }

    int argc = 1;
    char name[9] = "snippets";
    char* argv[2] = {name, nullptr};
    HostedApplication application{argc, argv};
    std::shared_ptr<SnippetsDatabase> database = SnippetsDatabase::shared();
};
