// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSPropertyListSerialization.h>

#include <VXKit/platform/foundation/AtomicFile.h>
#include <VXKit/platform/foundation/PropertyListBinaryReader.h>
#include <VXKit/platform/foundation/PropertyListEncoding.h>
#include <VXKit/platform/foundation/PropertyListTextReader.h>
#include <VXKit/platform/foundation/PropertyListXMLReader.h>
#include <VXKit/platform/foundation/PropertyListXMLWriter.h>

namespace {

/// What every file of the binary form begins with, whatever its version.
constexpr std::string_view binaryMagic = "bplist";

NSPropertyList read(std::string_view bytes, NSPropertyListFormat& format) {
    if (bytes.starts_with(binaryMagic)) {
        format = NSPropertyListFormat::Binary;
        return PropertyListBinaryReader(bytes).read();
    }
    PropertyListEncoding encoding(bytes);
    if (encoding.looksLikeXML()) {
        format = NSPropertyListFormat::XML;
        return PropertyListXMLReader(encoding.textOfXML()).read();
    }
    format = NSPropertyListFormat::OpenStep;
    return PropertyListTextReader(encoding.textOfPlain()).read();
}

template <class Value>
std::optional<std::string> documentOf(const Value& value, NSError* error) {
    PropertyListXMLWriter writer;
    if (!writer.write(value)) {
        NSSetError(error, writer.problem());
        return std::nullopt;
    }
    return writer.takeDocument();
}

} // namespace

std::optional<NSPropertyList> NSPropertyListSerialization::propertyListWithData(std::string_view bytes,
                                                                                NSPropertyListFormat* format,
                                                                                NSError* error) {
    try {
        NSPropertyListFormat found{};
        std::optional<NSPropertyList> value(read(bytes, found));
        if (format) {
            *format = found;
        }
        return value;
    } catch (const PropertyListSyntaxError& problem) {
        NSSetError(error, problem.description);
        return std::nullopt;
    }
}

std::optional<NSPropertyList> NSPropertyListSerialization::propertyListWithContentsOfFile(const QString& path,
                                                                                          NSPropertyListFormat* format,
                                                                                          NSError* error) {
    const std::optional<std::string> bytes = VXReadFile(path, error);
    if (!bytes) {
        return std::nullopt;
    }
    NSError problem;
    std::optional<NSPropertyList> value = propertyListWithData(*bytes, format, &problem);
    if (!value) {
        NSSetError(error, path + QStringLiteral(": ") + problem.localizedDescription);
    }
    return value;
}

std::optional<std::string> NSPropertyListSerialization::dataWithPropertyList(const NSPropertyList& value,
                                                                             NSError* error) {
    return documentOf(value, error);
}

std::optional<std::string> NSPropertyListSerialization::dataWithPropertyList(const NSDictionary& dictionary,
                                                                             NSError* error) {
    return documentOf(dictionary, error);
}
