// SPDX-License-Identifier: MIT
#include "SyncState.h"

#include <VXKit/platform/foundation/AtomicFile.h>
#include <VXKit/platform/foundation/NSError.h>
#include <VXKit/platform/foundation/NSPropertyListSerialization.h>

#include <QDir>
#include <QFileInfo>

#include <utility>

namespace {

constexpr const char* addressEntry = "address";
constexpr const char* databaseEntry = "database";
constexpr const char* filesEntry = "files";
constexpr const char* nameEntry = "name";
constexpr const char* etagEntry = "etag";
constexpr const char* fingerprintEntry = "fingerprint";

QByteArray bytesUnder(const char* key, const NSDictionary& dictionary) {
    const auto* data = dictionary.objectOfType<NSData>(key);
    return data ? QByteArray(reinterpret_cast<const char*>(data->data()), static_cast<qsizetype>(data->size()))
                : QByteArray();
}

NSData dataOf(const QByteArray& bytes) {
    return {bytes.begin(), bytes.end()};
}

bool hasText(const NSDictionary& dictionary, const char* key, const QString& text) {
    const auto* value = dictionary.objectOfType<std::string>(key);
    return value && *value == text.toStdString();
}

} // namespace

SyncState::SyncState(QString address, QString database)
    : m_address(std::move(address)), m_database(std::move(database)) {}

SyncState SyncState::load(const QString& path, const QString& address, const QString& database) {
    SyncState state(address, database);
    if (!QFileInfo::exists(path)) {
        return state;
    }
    const std::optional<NSDictionary> content = NSDictionary::dictionaryWithContentsOfFile(path);
    const NSArray* files = content ? content->objectOfType<NSArray>(filesEntry) : nullptr;
    if (!files || !hasText(*content, addressEntry, address) || !hasText(*content, databaseEntry, database)) {
        return state;
    }
    for (const NSPropertyList& value : *files) {
        const auto* file = value.as<NSDictionary>();
        const auto* name = file ? file->objectOfType<std::string>(nameEntry) : nullptr;
        if (name) {
            state.set(QString::fromStdString(*name),
                      {.etag = bytesUnder(etagEntry, *file), .fingerprint = bytesUnder(fingerprintEntry, *file)});
        }
    }
    return state;
}

QString SyncState::save(const QString& path) const {
    NSArray files;
    files.reserve(static_cast<std::size_t>(m_entries.size()));
    for (auto entry = m_entries.begin(); entry != m_entries.end(); ++entry) {
        files.emplace_back(NSDictionary{{nameEntry, entry.key()},
                                        {etagEntry, dataOf(entry->etag)},
                                        {fingerprintEntry, dataOf(entry->fingerprint)}});
    }
    NSDictionary content{{addressEntry, m_address}, {databaseEntry, m_database}};
    content.setObject(std::move(files), filesEntry);
    const QString folder = QFileInfo(path).path();
    if (!QDir().mkpath(folder)) {
        return folder + QStringLiteral(": cannot create the folder");
    }
    NSError error;
    const std::optional<std::string> bytes = NSPropertyListSerialization::dataWithPropertyList(content, &error);
    return bytes && VXWriteFileAtomically(path, *bytes, &error) ? QString() : error.localizedDescription;
}

std::optional<SyncState::Entry> SyncState::entry(const QString& name) const {
    const auto found = m_entries.find(name);
    return found == m_entries.end() ? std::nullopt : std::optional(*found);
}
