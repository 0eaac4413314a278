// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/app/LTApplication.h>
#include <VXKit/database/LTDatabase.h>

#include <QString>

#include <memory>
#include <optional>

/// The date `seconds` after 1970.
inline NSDate at(double seconds) {
    return NSDate::dateWithTimeIntervalSince1970(seconds);
}

/// A small concrete record.
class Note : public _LTSnippet {
public:
    Note() = default;
    explicit Note(double identity, const QString& name = {}) {
        snipID = at(identity);
        _name = name;
    }

    static std::shared_ptr<_LTSnippet> emptySnippet() { return std::make_shared<Note>(); }

    std::optional<NSDictionary> dictionaryRepresentation() const override {
        NSDictionary dictionary{{"name", _name}};
        if (const std::optional<NSDate> identity = snippetID()) {
            dictionary.setObject(identity->timeIntervalSince1970(), "id");
        }
        return dictionary;
    }

    void loadFromDictionary(const NSDictionary& dictionary) override {
        if (const auto* name = dictionary.objectOfType<std::string>("name")) {
            _name = QString::fromStdString(*name);
        }
        if (const auto* identity = dictionary.objectOfType<double>("id")) {
            snipID = at(*identity);
        }
    }

    std::shared_ptr<_LTSnippet> copy() const override { return std::make_shared<Note>(*this); }

    std::optional<NSDate> modified() const { return modificationDate; }
    /// Changes the field itself, as a subclass's own code may.
    void changeFieldTo(std::optional<NSDate> identity) { snipID = identity; }
};

/// A record that answers snippetID in a way of its own.
class ShiftedNote : public Note {
public:
    using Note::Note;
    std::optional<NSDate> snippetID() const override {
        const std::optional<NSDate> stored = Note::snippetID();
        return stored ? std::optional(at(stored->timeIntervalSince1970() + shift)) : std::nullopt;
    }

    double shift = 0.0;
};

/// A store of Notes with its insides laid open.
class NotesDatabase : public LTDatabase {
public:
    using LTDatabase::_dictionaryContents;
    using LTDatabase::_dirty;
    using LTDatabase::_layaway;
    using LTDatabase::_layawayEdits;
    using LTDatabase::_layawayRemovals;
    using LTDatabase::_loadWithDictionary;
    using LTDatabase::_path;
    using LTDatabase::databaseFileName;
    using LTDatabase::databaseName;
    using LTDatabase::databaseVersion;
    using LTDatabase::snippetClass;

protected:
    _LTSnippetClass snippetClass() const override { return _LTSnippetClass::of<Note>(); }
};

/// A sync manager that syncs when told so.
class SwitchedSyncManager : public LTSyncManagerClass {
public:
    bool isSyncInProgress() const override { return syncing; }
    void enableSyncing() override {}
    void disableSyncing() override {}

    bool syncing = false;
};

/// An application on the offscreen platform, with a sync manager.
class TestApplication : public LTApplication {
public:
    TestApplication() : LTApplication(s_argc, s_argv) {}
    LTSyncManagerClass* syncManagerClass() const override {
        return hasSyncManager ? const_cast<SwitchedSyncManager*>(&syncManager) : nullptr;
    }

    SwitchedSyncManager syncManager;
    bool hasSyncManager = true;

private:
    static inline char s_name[] = "vxkit-test";
    static inline char* s_argv[] = {s_name, nullptr};
    static inline int s_argc = 1;
};
