// SPDX-License-Identifier: MIT
#include "SnippetListFile.h"

#include "Snippet.h"

#include <VXKit/platform/foundation/NSPropertyListSerialization.h>

#include <algorithm>
#include <array>
#include <utility>

namespace {

constexpr const char* formatKey = "SnippetsFormat";
constexpr std::int64_t newestFormat = 1;
constexpr const char* listKey = "snippets";
// Of the database's own file, of which there may be copies.
constexpr const char* databaseVersionKey = "DBVersion";
constexpr const char* databaseListKey = "contents";

constexpr std::size_t longestBeginning = 1024; // bytes in which the keys of the top are not looked for

bool contains(std::string_view bytes, const char* key) {
    return bytes.find(key) != std::string_view::npos;
}

/// Whether a record has anything that a snippet could not do without.
bool holdsSnippet(const NSDictionary& record) {
    constexpr std::array keys{"text", "title"};
    return std::any_of(keys.begin(), keys.end(), [&](const char* key) {
        return record.objectOfType<std::string>(key) || record.objectOfType<NSData>(key);
    });
}

} // namespace

std::optional<std::string> bytesOfSnippetList(const std::vector<std::shared_ptr<Snippet>>& snippets, NSError* error) {
    NSArray records;
    records.reserve(snippets.size());
    for (const std::shared_ptr<Snippet>& snippet : snippets) {
        records.emplace_back(*snippet->dictionaryRepresentation());
    }
    NSDictionary content;
    content.setObject(newestFormat, formatKey);
    content.setObject(std::move(records), listKey);
    return NSPropertyListSerialization::dataWithPropertyList(content, error);
}

bool isSnippetList(std::string_view bytes) {
    constexpr std::array<std::string_view, 4> beginnings{"<?xml", "<!DOCTYPE plist", "<plist", "bplist"};
    const std::size_t first = bytes.substr(0, longestBeginning).find_first_not_of("\xEF\xBB\xBF \t\r\n");
    if (first == std::string_view::npos) {
        return false;
    }
    const std::string_view content = bytes.substr(first);
    const bool isPropertyList = std::any_of(beginnings.begin(), beginnings.end(),
                                            [&](std::string_view beginning) { return content.starts_with(beginning); });
    return isPropertyList && (contains(content, formatKey) ||
                              (contains(content, databaseVersionKey) && contains(content, databaseListKey)));
}

std::optional<SnippetList> snippetListFrom(std::string_view bytes, NSError* error) {
    const std::optional<NSPropertyList> content =
        NSPropertyListSerialization::propertyListWithData(bytes, nullptr, error);
    if (!content) {
        return std::nullopt;
    }
    const auto* top = content->as<NSDictionary>();
    const NSPropertyList* format = top ? top->objectForKey(formatKey) : nullptr;
    const bool isDatabase = top && !format && top->objectForKey(databaseVersionKey);
    if (format && (!format->as<std::int64_t>() || *format->as<std::int64_t>() != newestFormat)) {
        NSSetError(error, QStringLiteral("its format is %1, and this program reads %2")
                              .arg(format->description().left(20))
                              .arg(newestFormat));
        return std::nullopt;
    }
    const NSArray* records =
        format || isDatabase ? top->objectOfType<NSArray>(isDatabase ? databaseListKey : listKey) : nullptr;
    if (!records) {
        NSSetError(error, QStringLiteral("there is no list in it"));
        return std::nullopt;
    }
    SnippetList list;
    for (std::size_t index = 0; index < records->size(); ++index) {
        const auto* record = (*records)[index].as<NSDictionary>();
        if (record && holdsSnippet(*record)) {
            list.snippets.push_back(_LTSnippet::snippetWithDictionary<Snippet>(*record));
        } else {
            list.badRecords.push_back(index + 1);
        }
    }
    return list;
}
