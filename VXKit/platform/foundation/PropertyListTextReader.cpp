// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/PropertyListTextReader.h>

#include <VXKit/platform/foundation/PropertyListEncoding.h>
#include <VXKit/platform/foundation/PropertyListScalars.h>

#include <array>

namespace {

/// What an octal escape from 128 to 253 stands for: the upper half of the NeXTSTEP character set. 254 and 255 stand for
/// nothing.
constexpr std::array<char32_t, 126> nextStepCharacters{
    0x00A0, 0x00C0, 0x00C1, 0x00C2, 0x00C3, 0x00C4, 0x00C5, 0x00C7, 0x00C8, 0x00C9, 0x00CA, 0x00CB, 0x00CC, 0x00CD,
    0x00CE, 0x00CF, 0x00D0, 0x00D1, 0x00D2, 0x00D3, 0x00D4, 0x00D5, 0x00D6, 0x00D9, 0x00DA, 0x00DB, 0x00DC, 0x00DD,
    0x00DE, 0x00B5, 0x00D7, 0x00F7, 0x00A9, 0x00A1, 0x00A2, 0x00A3, 0x2044, 0x00A5, 0x0192, 0x00A7, 0x00A4, 0x2019,
    0x201C, 0x00AB, 0x2039, 0x203A, 0xFB01, 0xFB02, 0x00AE, 0x2013, 0x2020, 0x2021, 0x00B7, 0x00A6, 0x00B6, 0x2022,
    0x201A, 0x201E, 0x201D, 0x00BB, 0x2026, 0x2030, 0x00AC, 0x00BF, 0x00B9, 0x02CB, 0x00B4, 0x02C6, 0x02DC, 0x00AF,
    0x02D8, 0x02D9, 0x00A8, 0x00B2, 0x02DA, 0x00B8, 0x00B3, 0x02DD, 0x02DB, 0x02C7, 0x2014, 0x00B1, 0x00BC, 0x00BD,
    0x00BE, 0x00E0, 0x00E1, 0x00E2, 0x00E3, 0x00E4, 0x00E5, 0x00E7, 0x00E8, 0x00E9, 0x00EA, 0x00EB, 0x00EC, 0x00C6,
    0x00ED, 0x00AA, 0x00EE, 0x00EF, 0x00F0, 0x00F1, 0x0141, 0x00D8, 0x0152, 0x00BA, 0x00F2, 0x00F3, 0x00F4, 0x00F5,
    0x00F6, 0x00E6, 0x00F9, 0x00FA, 0x00FB, 0x0131, 0x00FC, 0x00FD, 0x0142, 0x00F8, 0x0153, 0x00DF, 0x00FE, 0x00FF,
};

constexpr bool isBareCharacter(char character) {
    return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
           (character >= 'a' && character <= 'z') ||
           std::string_view("_$/:.-+@").find(character) != std::string_view::npos;
}

constexpr bool isSpace(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

} // namespace

PropertyListTextReader::PropertyListTextReader(std::string_view text)
    : m_text(text), m_position(text.data()), m_end(text.data() + text.size()) {}

NSPropertyList PropertyListTextReader::read() {
    skipSpace();
    if (atEnd()) {
        fail("the text holds no value");
    }
    m_isStringsFile = beginsWithPair();
    if (m_isStringsFile) {
        openContainer(m_builder.beginDictionary());
    }
    do {
        readStep();
    } while (m_builder.isInContainer());
    skipSpace();
    if (!atEnd()) {
        fail("something follows the value");
    }
    return m_builder.takeTop();
}

void PropertyListTextReader::fail(const char* reason) const {
    VXFailAtLine(m_text, m_position, QString::fromLatin1(reason));
}

bool PropertyListTextReader::consume(char character) {
    if (atEnd() || *m_position != character) {
        return false;
    }
    ++m_position;
    return true;
}

void PropertyListTextReader::skipSpace() {
    do {
        while (!atEnd() && isSpace(*m_position)) {
            ++m_position;
        }
    } while (skipComment());
}

/// Skips one comment, or one line or paragraph separator, where one stands here.
bool PropertyListTextReader::skipComment() {
    const std::string_view rest(m_position, static_cast<std::size_t>(m_end - m_position));
    if (rest.starts_with("//")) {
        m_position += std::min(rest.find_first_of("\r\n"), rest.size());
        return true;
    }
    if (rest.starts_with("/*")) {
        const std::size_t end = rest.find("*/", 2);
        if (end == std::string_view::npos) {
            fail("a comment does not end");
        }
        m_position += end + 2;
        return true;
    }
    if (rest.starts_with("\u2028") || rest.starts_with("\u2029")) {
        m_position += 3;
        return true;
    }
    return false;
}

/// Whether the text is that of a strings file: pairs without braces around them.
bool PropertyListTextReader::beginsWithPair() {
    if (std::string_view("{(<").find(*m_position) != std::string_view::npos) {
        return false;
    }
    const char* const begin = m_position;
    static_cast<void>(readString());
    skipSpace();
    const bool isPair = !atEnd() && (*m_position == '=' || *m_position == ';');
    m_position = begin;
    return isPair;
}

/// Reads one key or value, opens a container, or closes one.
void PropertyListTextReader::readStep() {
    skipSpace();
    if (consumeContainerEnd()) {
        m_builder.end();
        readSeparator();
    } else if (m_builder.isInDictionary() && !m_builder.hasPendingKey()) {
        readKey();
    } else {
        readValue();
    }
}

/// A key alone, as in `key;`, has itself for its value.
void PropertyListTextReader::readKey() {
    const std::string_view key = readString();
    m_builder.addKey(key);
    skipSpace();
    if (!consume('=')) {
        m_builder.addValue(key);
        readSeparator();
    }
}

void PropertyListTextReader::readValue() {
    if (consume('{')) {
        openContainer(m_builder.beginDictionary());
        return;
    }
    if (consume('(')) {
        openContainer(m_builder.beginArray());
        return;
    }
    if (consume('<')) {
        readAngled();
    } else {
        m_builder.addValue(readString());
    }
    readSeparator();
}

void PropertyListTextReader::openContainer(bool opened) {
    if (!opened) {
        fail("too many levels of dictionaries and arrays");
    }
}

bool PropertyListTextReader::consumeContainerEnd() {
    if (m_builder.isInArray()) {
        return consume(')');
    }
    if (!m_builder.isInDictionary() || m_builder.hasPendingKey()) {
        return false;
    }
    return m_isStringsFile && m_builder.depth() == 1 ? atEnd() : consume('}');
}

/// Reads what must stand after a value. The last one before a closing bracket needs nothing after it.
void PropertyListTextReader::readSeparator() {
    if (!m_builder.isInContainer()) {
        return;
    }
    skipSpace();
    const bool isInArray = m_builder.isInArray();
    if (consume(isInArray ? ',' : ';')) {
        return;
    }
    if (atEnd() || *m_position != (isInArray ? ')' : '}')) {
        fail(isInArray ? "a comma or ) is missing" : "a semicolon is missing");
    }
}

/// A bare or quoted string. It lies in the text itself where it has no escapes, else in a buffer that the next call
/// overwrites.
std::string_view PropertyListTextReader::readString() {
    if (atEnd()) {
        fail("the text ends too early");
    }
    if (*m_position == '"' || *m_position == '\'') {
        return readQuoted();
    }
    // Two slashes inside a word belong to it, as in a web address; only where a word could begin do they begin a
    // comment.
    const char* const begin = m_position;
    while (!atEnd() && isBareCharacter(*m_position) &&
           !(*m_position == '/' && m_end - m_position > 1 && m_position[1] == '*')) {
        ++m_position;
    }
    if (m_position == begin) {
        fail("a character stands where a value or key is expected");
    }
    return {begin, static_cast<std::size_t>(m_position - begin)};
}

std::string_view PropertyListTextReader::readQuoted() {
    const char quote = *m_position;
    const char* const opening = m_position;
    const char* begin = ++m_position;
    m_decoded.clear();
    bool hasEscapes = false;
    for (;;) {
        while (!atEnd() && *m_position != quote && *m_position != '\\') {
            ++m_position;
        }
        if (atEnd()) {
            m_position = opening;
            fail("a string does not end");
        }
        const std::string_view part(begin, static_cast<std::size_t>(m_position - begin));
        const bool ends = *m_position++ == quote;
        if (ends && !hasEscapes) {
            return part;
        }
        m_decoded += part;
        if (ends) {
            return m_decoded;
        }
        hasEscapes = true;
        appendEscape();
        begin = m_position;
    }
}

/// Decodes what follows a backslash. A character that has no meaning there stands for itself.
void PropertyListTextReader::appendEscape() {
    if (atEnd()) {
        fail("a string does not end");
    }
    const char character = *m_position++;
    constexpr std::string_view letters = "abfnrtv";
    constexpr std::string_view controls = "\a\b\f\n\r\t\v";
    if (character >= '0' && character <= '7') {
        --m_position;
        VXAppendUTF8(m_decoded, readOctal());
    } else if (character == 'U' || character == 'u') {
        char32_t unit = readUnit();
        if (VXIsHighSurrogate(unit) && m_end - m_position > 2 && m_position[0] == '\\' &&
            (m_position[1] == 'U' || m_position[1] == 'u')) {
            m_position += 2;
            const char32_t low = readUnit();
            unit = VXIsLowSurrogate(low) ? VXCombinedSurrogates(unit, low) : unit;
        }
        if (VXIsHighSurrogate(unit) || VXIsLowSurrogate(unit)) {
            fail("half of a UTF-16 pair stands alone");
        }
        VXAppendUTF8(m_decoded, unit);
    } else if (const std::size_t index = letters.find(character); index != std::string_view::npos) {
        m_decoded += controls[index];
    } else {
        m_decoded += character;
    }
}

/// One to three octal digits: a character of the NeXTSTEP character set.
char32_t PropertyListTextReader::readOctal() {
    char32_t code = 0;
    for (int digits = 0; digits < 3 && !atEnd() && *m_position >= '0' && *m_position <= '7'; ++digits) {
        code = code * 8 + static_cast<char32_t>(*m_position++ - '0');
    }
    if (code < 128) {
        return code;
    }
    if (code - 128 >= nextStepCharacters.size()) {
        fail("an octal escape stands for no character");
    }
    return nextStepCharacters[code - 128];
}

/// One to four hexadecimal digits: a unit of UTF-16.
char32_t PropertyListTextReader::readUnit() {
    char32_t unit = 0;
    int digits = 0;
    for (; digits < 4 && !atEnd() && VXHexadecimalDigit(*m_position) >= 0; ++digits) {
        unit = unit * 16 + static_cast<char32_t>(VXHexadecimalDigit(*m_position++));
    }
    if (digits == 0) {
        fail("\\U has no hexadecimal digit after it");
    }
    return unit;
}

void PropertyListTextReader::readAngled() {
    if (consume('*')) {
        readTyped();
    } else if (consume('[')) {
        readBase64();
    } else {
        readHexadecimal();
    }
}

/// `I3>` and its kin, the value quoted or not.
void PropertyListTextReader::readTyped() {
    if (atEnd()) {
        fail("a typed value does not end");
    }
    const char type = *m_position++;
    std::string_view content;
    if (!atEnd() && *m_position == '"') {
        content = readQuoted();
        if (!consume('>')) {
            fail("a typed value does not end");
        }
    } else {
        const std::string_view rest(m_position, static_cast<std::size_t>(m_end - m_position));
        const std::size_t end = rest.find('>');
        if (end == std::string_view::npos) {
            fail("a typed value does not end");
        }
        content = VXTrimmed(rest.substr(0, end));
        m_position += end + 1;
    }
    if (type == 'I') {
        if (std::optional<NSPropertyList> integer = VXParseInteger(content)) {
            m_builder.addValue(*std::move(integer));
            return;
        }
    } else if (type == 'R') {
        if (const std::optional<double> real = VXParseReal(content)) {
            m_builder.addValue(*real);
            return;
        }
    } else if (type == 'D') {
        if (const std::optional<NSDate> date = VXParseTextDate(content)) {
            m_builder.addValue(*date);
            return;
        }
    } else if (type == 'B' && (content == "Y" || content == "N")) {
        m_builder.addValue(content == "Y");
        return;
    }
    fail("a typed value is malformed");
}

void PropertyListTextReader::readHexadecimal() {
    NSData bytes;
    for (;;) {
        skipSpace();
        if (consume('>')) {
            m_builder.addValue(std::move(bytes));
            return;
        }
        const int high = atEnd() ? -1 : VXHexadecimalDigit(*m_position);
        if (high < 0) {
            fail(atEnd() ? "data does not end" : "data holds a character that is no hexadecimal digit");
        }
        ++m_position;
        skipSpace();
        const int low = atEnd() ? -1 : VXHexadecimalDigit(*m_position);
        if (low < 0) {
            fail("data has an odd number of hexadecimal digits");
        }
        ++m_position;
        bytes.push_back(static_cast<std::uint8_t>(high << 4 | low));
    }
}

void PropertyListTextReader::readBase64() {
    const std::string_view rest(m_position, static_cast<std::size_t>(m_end - m_position));
    const std::size_t end = rest.find("]>");
    std::optional<NSData> bytes = VXParseBase64(rest.substr(0, end));
    if (end == std::string_view::npos || !bytes) {
        fail("data is not in base 64");
    }
    m_position += end + 2;
    m_builder.addValue(*std::move(bytes));
}
