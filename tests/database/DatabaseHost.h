// SPDX-License-Identifier: MIT
// What the tests of the store share.
#pragma once

#include "TestRecords.h"

#include <VXKit/platform/foundation/AtomicFile.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <QTemporaryDir>

#include <sys/stat.h>

#include <gtest/gtest.h>

inline void setAutomaticSaving(bool on) {
    NSUserDefaults::standardUserDefaults().setBool(!on, "VXDBAutomaticSavingDisabled");
}

class Database : public testing::Test {
protected:
    Database() { setAutomaticSaving(false); }

    [[nodiscard]] QString path() const { return folder.filePath(QStringLiteral("DB.plist")); }

    template <class Store = NotesDatabase>
    [[nodiscard]] std::shared_ptr<Store> open() const {
        auto store = LTDatabase::alloc<Store>();
        store->initWithFile(path());
        return store;
    }

    [[nodiscard]] NSDictionary file() const {
        return NSDictionary::dictionaryWithContentsOfFile(path()).value_or(NSDictionary());
    }

    [[nodiscard]] std::size_t recordsInFile() const {
        const NSDictionary dictionary = file();
        const auto* contents = dictionary.objectOfType<NSArray>("contents");
        return contents ? contents->size() : SIZE_MAX;
    }

    void writeFile(const std::string& bytes) const { ASSERT_TRUE(VXWriteFileAtomically(path(), bytes, nullptr)); }

    static std::vector<QString> titles(const LTDatabase& store) {
        std::vector<QString> result;
        for (const auto& snippet : store.snippets()) {
            result.push_back(snippet->title());
        }
        return result;
    }

    static std::shared_ptr<Note> note(double identity, const char* name = "") {
        return std::make_shared<Note>(identity, QString::fromUtf8(name));
    }

    static void terminate() {
        NSNotificationCenter::defaultCenter().postNotificationName(NSApplicationWillTerminateNotification, nullptr);
    }

    QTemporaryDir folder;
};
