// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/foundation/PropertyListBuilder.h>

#include <QString>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Reads the binary form of a property list, version `00`.
///
/// The form is a table of objects that refer to one another by number, so a few bytes may describe a value of any size.
/// Three limits keep that in hand: a container inside itself is refused; each object that is copied out is paid for
/// from a count of values; and the bytes of its text or data from a count of bytes. Both counts are set by the size of
/// the file (see the source), far above what a writer that shares equal objects reaches.
///
/// No length and no offset is believed before the bytes it speaks of have been found to be there.
class PropertyListBinaryReader {
public:
    /// `bytes` begin with `bplist` and outlive the reader.
    explicit PropertyListBinaryReader(std::string_view bytes);

    /// The value at the top. Throws a PropertyListSyntaxError that names the byte offset.
    [[nodiscard]] NSPropertyList read();

private:
    /// A container whose references are being followed.
    struct Container {
        std::uint64_t object;
        std::uint64_t references; ///< offset of the first reference; the values of a dictionary follow its keys
        std::uint64_t count;
        std::uint64_t next;
    };
    /// The first bytes of an object: its marker, and the count of its bytes or references.
    struct Head {
        unsigned kind;
        unsigned detail;
        std::uint64_t count;
        std::uint64_t content; ///< offset of what follows
    };

    [[noreturn]] static void fail(std::uint64_t offset, const QString& reason);
    [[nodiscard]] std::uint64_t number(std::uint64_t offset, unsigned width) const;
    void requireBytes(std::uint64_t offset, std::uint64_t count) const;
    void chargeValues(std::uint64_t offset, std::uint64_t count);
    void chargeBytes(std::uint64_t offset, std::uint64_t count);

    void readTrailer();
    [[nodiscard]] std::uint64_t offsetOfObject(std::uint64_t object, std::uint64_t askedAt) const;
    [[nodiscard]] Head readHead(std::uint64_t offset) const;

    void readObject(std::uint64_t object, std::uint64_t askedAt);
    void readNumber(std::uint64_t offset, const Head& head);
    void readDate(std::uint64_t offset, const Head& head);
    void readKey(std::uint64_t object, std::uint64_t askedAt);
    void openContainer(std::uint64_t object, std::uint64_t offset, const Head& head);
    void continueContainer();
    [[nodiscard]] std::string_view text(std::uint64_t offset, const Head& head);
    [[nodiscard]] std::string_view decodeUTF16(std::uint64_t offset, std::uint64_t count);

    std::string_view m_bytes;
    std::uint64_t m_objectsEnd = 0; ///< where the offset table begins and no object may reach
    std::uint64_t m_objectCount = 0;
    std::uint64_t m_topObject = 0;
    unsigned m_offsetWidth = 0;
    unsigned m_referenceWidth = 0;
    std::uint64_t m_valuesLeft;
    std::uint64_t m_bytesLeft;
    std::vector<bool> m_isOpen;
    std::vector<Container> m_containers;
    PropertyListBuilder m_builder;
    std::string m_decoded;
};
