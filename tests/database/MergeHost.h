// SPDX-License-Identifier: MIT
// What the tests of merges at the end of a sync share.
#pragma once

#include "TestRecords.h"

#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <QTemporaryDir>

#include <string>
#include <vector>

#include <gtest/gtest.h>

inline std::vector<std::string> namesOf(const LTSnippetArray& list) {
    std::vector<std::string> names;
    for (const auto& snippet : list) {
        names.push_back(snippet->title().toStdString());
    }
    return names;
}

class Merge : public testing::Test {
protected:
    Merge() {
        NSUserDefaults::standardUserDefaults().setBool(true, "VXDBAutomaticSavingDisabled");
        store = LTDatabase::alloc<NotesDatabase>();
        store->initWithFile(folder.filePath(QStringLiteral("DB.plist")));
    }

    ~Merge() override { store->_dirty = false; }

    template <class Record = Note>
    static std::shared_ptr<Record> note(double identity, const char* name = "") {
        return std::make_shared<Record>(identity, QString::fromUtf8(name));
    }

    template <class Record = Note>
    std::shared_ptr<Record> added(double identity, const char* name = "") {
        const auto snippet = note<Record>(identity, name);
        store->addSnippet(snippet);
        return snippet;
    }

    void beginSync() { application.syncManager.syncing = true; }

    void endSync() {
        application.syncManager.syncing = false;
        NSNotificationCenter::defaultCenter().postNotificationName(LTSyncManagerHasEndedSyncing, nullptr);
    }

    [[nodiscard]] std::vector<std::string> names() const { return namesOf(store->snippets()); }

    TestApplication application;
    QTemporaryDir folder;
    std::shared_ptr<NotesDatabase> store;
};

inline double stampOf(const Note& note) {
    return note.modified()->timeIntervalSince1970();
}
