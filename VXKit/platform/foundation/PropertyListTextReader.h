// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/foundation/PropertyListBuilder.h>

#include <QString>

#include <string>
#include <string_view>

/// Reads old-style text: `{ key = value; }`, `( a, b )`, `<0fbd 777f>`, quoted and bare strings, comments, and the
/// pairs without braces of a strings file.
///
/// Everything but containers and data is a string, except in GNUstep's typed values: `<*I3>`, `<*R1.5>`, `<*BY>`,
/// `<*D2026-11-20 12:00:00 +0000>`, and `<[base 64]>` is data.
class PropertyListTextReader {
public:
    /// `text` is valid UTF-8 without a byte-order mark and outlives the reader.
    explicit PropertyListTextReader(std::string_view text);

    /// The value. Throws a PropertyListSyntaxError that names the line.
    [[nodiscard]] NSPropertyList read();

private:
    [[noreturn]] void fail(const char* reason) const;
    [[nodiscard]] bool atEnd() const { return m_position == m_end; }
    [[nodiscard]] bool startsComment() const;

    void skipSpace();
    bool skipComment();
    bool consume(char character);

    [[nodiscard]] bool beginsWithPair();
    void readStep();
    void readKey();
    void readValue();
    void openContainer(bool opened);
    [[nodiscard]] bool consumeContainerEnd();
    void readSeparator();

    std::string_view readString();
    std::string_view readQuoted();
    void appendEscape();
    char32_t readOctal();
    char32_t readUnit();
    void readAngled();
    void readTyped();
    void readHexadecimal();
    void readBase64();

    std::string_view m_text;
    const char* m_position;
    const char* m_end;
    bool m_isStringsFile = false;
    PropertyListBuilder m_builder;
    std::string m_decoded;
};
