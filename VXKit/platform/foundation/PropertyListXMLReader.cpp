// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/PropertyListXMLReader.h>

#include <VXKit/platform/foundation/PropertyListEncoding.h>
#include <VXKit/platform/foundation/PropertyListScalars.h>

#include <charconv>
#include <cstring>

namespace {

constexpr bool isNameCharacter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || character == '_' || character == '-' || character == ':' ||
           character == '.' || (static_cast<unsigned char>(character) & 0x80);
}

const char* findCharacter(const char* begin, const char* end, char character) {
    return static_cast<const char*>(std::memchr(begin, character, static_cast<std::size_t>(end - begin)));
}

/// A name from the file, for an error message: cut short, because a hostile one may be megabytes long.
QString shown(std::string_view name) {
    constexpr std::size_t longest = 40;
    return QString::fromUtf8(name.data(), static_cast<qsizetype>(std::min(name.size(), longest)));
}

} // namespace

PropertyListXMLReader::PropertyListXMLReader(std::string_view text)
    : m_text(text), m_position(text.data()), m_end(text.data() + text.size()),
      m_hasCarriageReturns(text.find('\r') != std::string_view::npos) {}

NSPropertyList PropertyListXMLReader::read() {
    if (const char* control = VXFirstForbiddenControl(m_text)) {
        failAt(
            control,
            QStringLiteral("XML cannot hold the control character U+%1").arg(int{*control}, 4, 16, QLatin1Char('0')));
    }
    readDocumentHead();
    for (;;) {
        skipMiscellaneous();
        const Tag tag = readTag();
        if (tag.kind != TagKind::Close) {
            readElement(tag);
        } else if (m_builder.isInContainer()) {
            closeContainer(tag);
        } else if (tag.name == "plist" && m_builder.isComplete()) {
            break;
        } else {
            fail(QStringLiteral("</%1> ends what has no value").arg(shown(tag.name)));
        }
    }
    skipMiscellaneous();
    if (m_position != m_end) {
        fail(QStringLiteral("something follows </plist>"));
    }
    return m_builder.takeTop();
}

void PropertyListXMLReader::failAt(const char* position, const QString& reason) const {
    VXFailAtLine(m_text, position, reason);
}

bool PropertyListXMLReader::consume(std::string_view literal) {
    if (static_cast<std::size_t>(m_end - m_position) < literal.size() ||
        std::memcmp(m_position, literal.data(), literal.size()) != 0) {
        return false;
    }
    m_position += literal.size();
    return true;
}

/// Where `literal` stands next; `what` names the thing that it would end.
const char* PropertyListXMLReader::find(std::string_view literal, const char* what) const {
    const std::string_view rest(m_position, static_cast<std::size_t>(m_end - m_position));
    const std::size_t offset = rest.find(literal);
    if (offset == std::string_view::npos) {
        fail(QStringLiteral("%1 does not end").arg(QLatin1String(what)));
    }
    return m_position + offset;
}

void PropertyListXMLReader::skipSpace() {
    while (m_position < m_end && VXIsXMLSpace(*m_position)) {
        ++m_position;
    }
}

/// Skips one comment or processing instruction, where one stands here.
bool PropertyListXMLReader::skipMarkup() {
    if (consume("<!--")) {
        m_position = find("-->", "a comment") + 3;
        return true;
    }
    if (consume("<?")) {
        m_position = find("?>", "a processing instruction") + 2;
        return true;
    }
    return false;
}

void PropertyListXMLReader::skipMiscellaneous() {
    do {
        skipSpace();
    } while (m_end - m_position >= 2 && (m_position[1] == '!' || m_position[1] == '?') && skipMarkup());
}

/// The declaration names the type that every property list has, so what it says is of no use; what it defines would be
/// of use to somebody who means harm.
void PropertyListXMLReader::skipDocumentType() {
    for (; m_position < m_end && *m_position != '>'; ++m_position) {
        if (*m_position == '[') {
            fail(QStringLiteral("a document type with definitions of its own is not allowed"));
        }
        if (*m_position == '"' || *m_position == '\'') {
            const char quote = *m_position++;
            m_position = find({&quote, 1}, "a quoted part of the document type");
        }
    }
    if (m_position == m_end) {
        fail(QStringLiteral("the document type does not end"));
    }
    ++m_position;
}

PropertyListXMLReader::Tag PropertyListXMLReader::readTag() {
    if (m_position == m_end) {
        fail(QStringLiteral("the text ends too early"));
    }
    if (*m_position != '<') {
        fail(QStringLiteral("text stands where only a tag may stand"));
    }
    ++m_position;
    const bool closes = m_position < m_end && *m_position == '/';
    m_position += closes ? 1 : 0;
    const char* const nameBegin = m_position;
    while (m_position < m_end && isNameCharacter(*m_position)) {
        ++m_position;
    }
    const std::string_view name(nameBegin, static_cast<std::size_t>(m_position - nameBegin));
    if (name.empty()) {
        fail(QStringLiteral("a tag has no name"));
    }
    if (m_position < m_end && *m_position == '>') {
        ++m_position;
        return {name, closes ? TagKind::Close : TagKind::Open};
    }
    if (!closes) {
        return {name, skipAttributes()};
    }
    skipSpace();
    if (!consume(">")) {
        fail(QStringLiteral("</%1 does not end").arg(shown(name)));
    }
    return {name, TagKind::Close};
}

/// Skips what follows the name of a start tag, and tells whether the element is empty. A '>' inside an attribute's
/// value ends nothing.
PropertyListXMLReader::TagKind PropertyListXMLReader::skipAttributes() {
    for (;;) {
        skipSpace();
        if (consume(">")) {
            return TagKind::Open;
        }
        if (consume("/>")) {
            return TagKind::Empty;
        }
        const char* const nameBegin = m_position;
        while (m_position < m_end && isNameCharacter(*m_position)) {
            ++m_position;
        }
        const bool hasName = m_position != nameBegin;
        skipSpace();
        if (!hasName || !consume("=")) {
            fail(QStringLiteral("a tag is malformed or does not end"));
        }
        skipSpace();
        if (m_position == m_end || (*m_position != '"' && *m_position != '\'')) {
            fail(QStringLiteral("an attribute's value is not quoted"));
        }
        const char quote = *m_position++;
        m_position = find({&quote, 1}, "an attribute's value") + 1;
    }
}

void PropertyListXMLReader::readDocumentHead() {
    skipMiscellaneous();
    if (consume("<!DOCTYPE")) {
        skipDocumentType();
        skipMiscellaneous();
    }
    const Tag tag = readTag();
    if (tag.name != "plist" || tag.kind == TagKind::Close) {
        fail(QStringLiteral("<%1> stands where <plist> is expected").arg(shown(tag.name)));
    }
    if (tag.kind == TagKind::Empty) {
        fail(QStringLiteral("<plist> holds no value"));
    }
}

void PropertyListXMLReader::readElement(const Tag& tag) {
    const bool needsKey = m_builder.isInDictionary() && !m_builder.hasPendingKey();
    if (tag.name == "key") {
        if (!needsKey) {
            fail(QStringLiteral("<key> stands where a value is expected"));
        }
        m_builder.addKey(readContent(tag));
        return;
    }
    if (needsKey) {
        fail(QStringLiteral("<%1> has no <key> before it").arg(shown(tag.name)));
    }
    if (m_builder.isComplete()) {
        fail(QStringLiteral("<plist> holds more than one value"));
    }
    if (tag.name == "dict" || tag.name == "array") {
        openContainer(tag);
    } else {
        readScalar(tag);
    }
}

void PropertyListXMLReader::openContainer(const Tag& tag) {
    const bool opened = tag.name == "dict" ? m_builder.beginDictionary() : m_builder.beginArray();
    if (!opened) {
        fail(QStringLiteral("more than %1 levels of dictionaries and arrays").arg(VXPropertyListMaximumDepth));
    }
    if (tag.kind == TagKind::Empty) {
        m_builder.end();
    }
}

void PropertyListXMLReader::closeContainer(const Tag& tag) {
    if (m_builder.hasPendingKey()) {
        fail(QStringLiteral("a <key> has no value"));
    }
    const std::string_view expected = m_builder.isInDictionary() ? "dict" : "array";
    if (tag.name != expected) {
        fail(QStringLiteral("</%1> stands where </%2> is expected").arg(shown(tag.name), shown(expected)));
    }
    m_builder.end();
}

void PropertyListXMLReader::readScalar(const Tag& tag) {
    const char* const begin = m_position;
    const auto refuse = [&](std::string_view content) {
        failAt(begin, QStringLiteral("\"%1\" is no %2").arg(shown(content), shown(tag.name)));
    };
    if (tag.name == "string") {
        m_builder.addValue(readContent(tag));
    } else if (tag.name == "date") {
        const std::string_view content = VXTrimmed(readContent(tag));
        const std::optional<NSDate> date = VXParseXMLDate(content);
        date ? m_builder.addValue(*date) : refuse(content);
    } else if (tag.name == "real") {
        const std::string_view content = VXTrimmed(readContent(tag));
        const std::optional<double> real = VXParseReal(content);
        real ? m_builder.addValue(*real) : refuse(content);
    } else if (tag.name == "integer") {
        const std::string_view content = VXTrimmed(readContent(tag));
        std::optional<NSPropertyList> integer = VXParseInteger(content);
        integer ? m_builder.addValue(*std::move(integer)) : refuse(content);
    } else if (tag.name == "true" || tag.name == "false") {
        const std::string_view content = VXTrimmed(readContent(tag));
        content.empty() ? m_builder.addValue(tag.name == "true") : refuse(content);
    } else if (tag.name == "data") {
        const std::string_view content = readContent(tag);
        std::optional<NSData> data = VXParseBase64(content);
        data ? m_builder.addValue(*std::move(data)) : refuse(VXTrimmed(content));
    } else {
        fail(QStringLiteral("<%1> is no element of a property list").arg(shown(tag.name)));
    }
}

/// The text between a start tag and its end tag, which is skipped. It lies in the document itself where nothing had to
/// be decoded, else in a buffer that the next call overwrites.
std::string_view PropertyListXMLReader::readContent(const Tag& tag) {
    if (tag.kind == TagKind::Empty) {
        return {};
    }
    bool decoded = false;
    m_decoded.clear();
    std::string_view content;
    for (;;) {
        const char* const begin = m_position;
        const char* const bracket = findCharacter(begin, m_end, '<');
        if (!bracket) {
            fail(QStringLiteral("<%1> does not end").arg(shown(tag.name)));
        }
        const bool ends = bracket + 1 < m_end && bracket[1] == '/';
        const bool isPlain =
            !findCharacter(begin, bracket, '&') && !(m_hasCarriageReturns && findCharacter(begin, bracket, '\r'));
        if (ends && isPlain && !decoded) {
            content = {begin, static_cast<std::size_t>(bracket - begin)};
        } else {
            appendText(begin, bracket, true);
            decoded = true;
            content = m_decoded;
        }
        m_position = bracket;
        if (ends) {
            break;
        }
        if (consume("<![CDATA[")) {
            const char* const end = find("]]>", "a CDATA section");
            appendText(m_position, end, false);
            m_position = end + 3;
        } else if (!skipMarkup()) {
            fail(QStringLiteral("a tag stands inside <%1>").arg(shown(tag.name)));
        }
    }
    m_position += 2;
    if (!consume(tag.name)) {
        fail(QStringLiteral("<%1> is not ended by </%1>").arg(shown(tag.name)));
    }
    skipSpace();
    if (!consume(">")) {
        fail(QStringLiteral("<%1> is not ended by </%1>").arg(shown(tag.name)));
    }
    return content;
}

/// Appends text to the decoded content: references where asked for, and every line end as one newline, as XML demands.
void PropertyListXMLReader::appendText(const char* begin, const char* end, bool decodesReferences) {
    while (begin < end) {
        const char* special = decodesReferences ? findCharacter(begin, end, '&') : nullptr;
        special = special ? special : end;
        if (m_hasCarriageReturns) {
            const char* const carriageReturn = findCharacter(begin, special, '\r');
            special = carriageReturn ? carriageReturn : special;
        }
        m_decoded.append(begin, static_cast<std::size_t>(special - begin));
        if (special == end) {
            return;
        }
        if (*special == '&') {
            begin = appendReference(special, end);
            continue;
        }
        m_decoded += '\n';
        begin = special + 1;
        if (begin < end && *begin == '\n') {
            ++begin;
        }
    }
}

/// Decodes the reference at `ampersand` and answers where the text goes on.
const char* PropertyListXMLReader::appendReference(const char* ampersand, const char* end) {
    const char* const semicolon = findCharacter(ampersand, end, ';');
    if (!semicolon) {
        failAt(ampersand, QStringLiteral("a reference does not end"));
    }
    const std::string_view name(ampersand + 1, static_cast<std::size_t>(semicolon - ampersand - 1));
    if (name == "amp") {
        m_decoded += '&';
    } else if (name == "lt") {
        m_decoded += '<';
    } else if (name == "gt") {
        m_decoded += '>';
    } else if (name == "quot") {
        m_decoded += '"';
    } else if (name == "apos") {
        m_decoded += '\'';
    } else if (name.starts_with('#')) {
        VXAppendUTF8(m_decoded, characterOfReference(name.substr(1), ampersand));
    } else {
        failAt(ampersand, QStringLiteral("&%1; is not defined").arg(shown(name)));
    }
    return semicolon + 1;
}

char32_t PropertyListXMLReader::characterOfReference(std::string_view digits, const char* position) const {
    const bool hexadecimal = digits.starts_with('x');
    digits.remove_prefix(hexadecimal ? 1 : 0);
    std::uint32_t number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, problem] = std::from_chars(digits.data(), end, number, hexadecimal ? 16 : 10);
    const bool isControl = number < 0x20 && number != '\t' && number != '\n' && number != '\r';
    const bool isSurrogate = VXIsHighSurrogate(number) || VXIsLowSurrogate(number);
    if (problem != std::errc() || stop != end || number > 0x10FFFF || isControl || isSurrogate) {
        failAt(position, QStringLiteral("&#%1%2; is no character that XML can hold")
                             .arg(QLatin1String(hexadecimal ? "x" : ""), shown(digits)));
    }
    return number;
}
