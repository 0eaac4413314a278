// SPDX-License-Identifier: MIT
#include "SyncedFile.h"

#include <VXKit/platform/foundation/NSPropertyListSerialization.h>

#include <QCryptographicHash>

#include <array>
#include <charconv>
#include <string_view>

namespace {

constexpr const char* removedKey = "removed"; // a mark's, with the date of the removal
constexpr const char* identityKey = "idSeconds";
constexpr QLatin1String extension(".plist");

void addText(QCryptographicHash& hash, const QByteArray& text) {
    const qsizetype length = text.size();
    hash.addData(QByteArrayView(reinterpret_cast<const char*>(&length), sizeof length));
    hash.addData(text);
}

void addDate(QCryptographicHash& hash, const std::optional<NSDate>& date) {
    const std::array<double, 2> value{date ? 1.0 : 0.0, date ? date->timeIntervalSince1970() : 0.0};
    hash.addData(QByteArrayView(reinterpret_cast<const char*>(value.data()), sizeof value));
}

} // namespace

QString SyncedFile::nameFor(NSDate identity) {
    constexpr std::size_t longestNumber = 512; // characters; a double's smallest steps have over 300 digits
    std::array<char, longestNumber> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), identity.timeIntervalSince1970(),
                                   std::chars_format::fixed)
                         .ptr;
    return QLatin1String(digits.data(), end - digits.data()) + extension;
}

std::optional<NSDate> SyncedFile::identityIn(const QString& name) {
    if (!name.endsWith(extension)) {
        return std::nullopt;
    }
    const QByteArray number = name.chopped(extension.size()).toUtf8();
    double seconds = 0;
    const auto result = std::from_chars(number.begin(), number.end(), seconds, std::chars_format::fixed);
    if (result.ec != std::errc() || result.ptr != number.end() || seconds != seconds) {
        return std::nullopt;
    }
    const NSDate identity = NSDate::dateWithTimeIntervalSince1970(seconds);
    return nameFor(identity) == name ? std::optional(identity) : std::nullopt;
}

std::optional<SyncedFile> SyncedFile::read(const QString& name, const QByteArray& bytes) {
    const std::optional<NSDate> identity = identityIn(name);
    const std::optional<NSPropertyList> content = NSPropertyListSerialization::propertyListWithData(
        std::string_view(bytes.data(), static_cast<std::size_t>(bytes.size())), nullptr, nullptr);
    const NSDictionary* dictionary = content ? content->as<NSDictionary>() : nullptr;
    if (!identity || !dictionary) {
        return std::nullopt;
    }
    if (dictionary->objectForKey(removedKey)) {
        return SyncedFile();
    }
    const auto snippet = std::make_shared<Snippet>();
    snippet->loadFromDictionary(*dictionary);
    if (snippet->snippetID() != identity) {
        return std::nullopt;
    }
    return SyncedFile{.snippet = snippet};
}

std::optional<QByteArray> SyncedFile::bytesOf(const Snippet& snippet) {
    const std::optional<NSDictionary> dictionary = snippet.dictionaryRepresentation();
    const std::optional<std::string> bytes =
        dictionary ? NSPropertyListSerialization::dataWithPropertyList(*dictionary, nullptr) : std::nullopt;
    return bytes ? std::optional(QByteArray::fromStdString(*bytes)) : std::nullopt;
}

QByteArray SyncedFile::markOfRemoval(NSDate identity) {
    const NSDictionary mark{{removedKey, NSDate::date()}, {identityKey, identity.timeIntervalSince1970()}};
    return QByteArray::fromStdString(NSPropertyListSerialization::dataWithPropertyList(mark, nullptr).value());
}

QByteArray SyncedFile::fingerprintOf(const Snippet* snippet) {
    if (!snippet) {
        return {};
    }
    QCryptographicHash hash(QCryptographicHash::Sha256);
    addText(hash, snippet->title().toUtf8());
    addText(hash, snippet->utf8Text());
    addDate(hash, snippet->snippetID());
    addDate(hash, snippet->dateOfModification());
    addDate(hash, snippet->dateOfLastUse());
    const std::int64_t useCount = snippet->useCount();
    hash.addData(QByteArrayView(reinterpret_cast<const char*>(&useCount), sizeof useCount));
    return hash.result();
}
