// SPDX-License-Identifier: MIT
// What the tests of the store's file share.
#pragma once

#include "TestRecords.h"

#include <VXKit/platform/foundation/AtomicFile.h>
#include <VXKit/platform/foundation/NSPropertyListSerialization.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>

#include <gtest/gtest.h>

inline constexpr const char* foreign = "{ DBVersion = \"0.1\"; contents = ( { name = foreign; } ); }";

class DatabaseFile : public testing::Test {
protected:
    DatabaseFile() { NSUserDefaults::standardUserDefaults().setBool(true, "VXDBAutomaticSavingDisabled"); }

    [[nodiscard]] QString path(const QString& name) const { return folder.filePath(name); }
    [[nodiscard]] QString path() const { return path(QStringLiteral("Notes.plist")); }

    template <class Store = NotesDatabase>
    [[nodiscard]] static std::shared_ptr<Store> open(const QString& path) {
        auto store = LTDatabase::alloc<Store>();
        store->initWithFile(path);
        return store;
    }
    [[nodiscard]] std::shared_ptr<NotesDatabase> open() const { return open(path()); }

    /// A store that has read its file and written it once.
    [[nodiscard]] std::shared_ptr<NotesDatabase> saved() const {
        auto store = open();
        store->saveDB();
        return store;
    }

    static void change(LTDatabase& store, const char* name = "own") {
        store.addSnippet(std::make_shared<Note>(1.0, QString::fromUtf8(name)));
    }

    static std::string contentOf(const QString& file) { return VXReadFile(file, nullptr).value_or("<none>"); }

    /// Writes over the file, as many an editor does.
    static void writeInPlace(const QString& file, const std::string& bytes) {
        std::ofstream(QFile::encodeName(file).constData(), std::ios::binary) << bytes;
        ASSERT_EQ(contentOf(file), bytes);
    }
    /// Puts another file in its place, as others do.
    static void replace(const QString& file, const std::string& bytes) {
        ASSERT_TRUE(VXWriteFileAtomically(file, bytes, nullptr));
    }

    [[nodiscard]] static std::vector<std::string> namesIn(const QString& folder) {
        std::vector<std::string> names;
        for (const QString& name : QDir(folder).entryList(
                 QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name)) {
            names.push_back(name.toStdString());
        }
        return names;
    }

    /// What there is beside the file.
    [[nodiscard]] std::vector<std::string> copies() const {
        std::vector<std::string> names = namesIn(folder.path());
        std::erase(names, "Notes.plist");
        return names;
    }

    [[nodiscard]] std::string contentOfOnlyCopy() const {
        const std::vector<std::string> names = copies();
        return names.size() == 1 ? contentOf(path(QString::fromStdString(names.front()))) : "<not one copy>";
    }

    [[nodiscard]] std::vector<std::string> recordsIn(const QString& file) const {
        std::vector<std::string> names;
        const auto dictionary = NSDictionary::dictionaryWithContentsOfFile(file);
        for (const NSPropertyList& element : *dictionary->objectOfType<NSArray>("contents")) {
            names.push_back(*element.as<NSDictionary>()->objectOfType<std::string>("name"));
        }
        return names;
    }

    static void setModified(const QString& file, const timespec& time) {
        const timespec times[] = {{0, UTIME_OMIT}, time};
        ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(file).constData(), times, AT_SYMLINK_NOFOLLOW), 0);
    }

    /// How many bytes this process has read from files so far.
    static long bytesRead() {
        std::ifstream statistics("/proc/self/io");
        std::string name;
        long bytes = 0;
        statistics >> name >> bytes;
        EXPECT_EQ(name, "rchar:");
        return bytes;
    }

    static struct stat statusOf(const QString& file) {
        struct stat status {};
        EXPECT_EQ(::stat(QFile::encodeName(file).constData(), &status), 0);
        return status;
    }

    QTemporaryDir folder;
};

inline constexpr const char* changedElsewhere =
    R"(Notes \(changed elsewhere [0-9]+-[0-9]+-[0-9]+ [0-9]+\.[0-9]+\.[0-9]+(, [0-9]+)?\)\.plist)";
