// SPDX-License-Identifier: MIT
#include "RoundTrip.h"

#include <VXKit/platform/foundation/NSPropertyListSerialization.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

void require(bool condition, const char* what, const NSError& error) {
    if (condition) {
        return;
    }
    std::fprintf(stderr, "%s: %s\n", what, qPrintable(error.localizedDescription));
    std::abort();
}

/// `value` with every date cut down to its second.
NSPropertyList inWholeSeconds(const NSPropertyList& value) {
    if (const auto* date = value.as<NSDate>()) {
        return NSDate::dateWithTimeIntervalSince1970(std::floor(date->timeIntervalSince1970()));
    }
    if (const auto* array = value.as<NSArray>()) {
        NSArray result;
        for (const NSPropertyList& element : *array) {
            result.push_back(inWholeSeconds(element));
        }
        return result;
    }
    if (const auto* dictionary = value.as<NSDictionary>()) {
        NSDictionary result;
        for (const NSDictionary::Entry& entry : *dictionary) {
            result.appendEntry(entry.key, inWholeSeconds(entry.object));
        }
        return result;
    }
    return value;
}

void checkXML(const NSPropertyList& value) {
    const std::optional<std::string> written = NSPropertyListSerialization::dataWithPropertyList(value, nullptr);
    if (!written) {
        return;
    }
    NSError error;
    NSPropertyListFormat format{};
    const auto read = NSPropertyListSerialization::propertyListWithData(*written, &format, &error);
    require(read.has_value() && format == NSPropertyListFormat::XML, "the XML form cannot be read back", error);
    require(*read == inWholeSeconds(value), "the XML form reads back as another value", error);
    const std::optional<std::string> again = NSPropertyListSerialization::dataWithPropertyList(*read, &error);
    require(again == written, "the XML form is not the same when it is written again", error);
}

void checkDescription(const NSPropertyList& value) {
    const QString description = value.description();
    const bool isWhole = value.as<NSArray>() || value.as<NSDictionary>() || value.as<NSData>();
    if (!isWhole) {
        return;
    }
    NSError error;
    NSPropertyListFormat format{};
    const auto read = NSPropertyListSerialization::propertyListWithData(description.toStdString(), &format, &error);
    require(read.has_value() && format == NSPropertyListFormat::OpenStep, "the description cannot be read", error);
    require(read->description() == description, "the description reads as another value", error);
}

} // namespace

void checkRoundTrip(const NSPropertyList& value) {
    checkXML(value);
    checkDescription(value);
}
