// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/foundation/PropertyListBuilder.h>

#include <QString>

#include <string>
#include <string_view>

/// Reads the XML form of a property list in one pass over UTF-8 text.
///
/// It knows as much XML as a property list can hold: elements (attributes are skipped), text, CDATA, comments,
/// processing instructions, character references and the five predefined entities. A document type declaration is
/// skipped unread, and one with definitions in it is refused, so an entity can neither be defined nor fetched.
class PropertyListXMLReader {
public:
    /// `text` is valid UTF-8 without a byte-order mark and outlives the reader.
    explicit PropertyListXMLReader(std::string_view text);

    /// The value of the document. Throws a PropertyListSyntaxError that names the line.
    [[nodiscard]] NSPropertyList read();

private:
    enum class TagKind { Open, Empty, Close };
    struct Tag {
        std::string_view name;
        TagKind kind;
    };

    [[noreturn]] void fail(const QString& reason) const { failAt(m_position, reason); }
    [[noreturn]] void failAt(const char* position, const QString& reason) const;

    bool consume(std::string_view literal);
    const char* find(std::string_view literal, const char* what) const;
    void skipSpace();
    void skipMiscellaneous();
    bool skipMarkup();
    void skipDocumentType();
    Tag readTag();
    TagKind skipAttributes();

    void readDocumentHead();
    void readElement(const Tag& tag);
    void openContainer(const Tag& tag);
    void closeContainer(const Tag& tag);
    void readScalar(const Tag& tag);

    std::string_view readContent(const Tag& tag);
    void appendText(const char* begin, const char* end, bool decodesReferences);
    const char* appendReference(const char* ampersand, const char* end);
    [[nodiscard]] char32_t characterOfReference(std::string_view digits, const char* position) const;

    std::string_view m_text;
    const char* m_position;
    const char* m_end;
    bool m_hasCarriageReturns;
    PropertyListBuilder m_builder;
    std::string m_decoded;
};
