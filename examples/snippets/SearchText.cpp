// SPDX-License-Identifier: MIT
#include "SearchText.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr bool isAscii(char byte) {
    return static_cast<unsigned char>(byte) < 0x80;
}

} // namespace

void appendFolded(QByteArray& result, QByteArrayView text) {
    const char* at = text.begin();
    while (at != text.end()) {
        const char* const asciiEnd = std::find_if_not(at, text.end(), isAscii);
        const qsizetype begin = result.size();
        result.resize(begin + (asciiEnd - at));
        std::transform(at, asciiEnd, result.begin() + begin, [](char byte) {
            return static_cast<char>(byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte);
        });
        at = std::find_if(asciiEnd, text.end(), isAscii);
        if (at != asciiEnd) {
            QString bare = QString::fromUtf8(asciiEnd, at - asciiEnd).normalized(QString::NormalizationForm_KD);
            bare.removeIf([](QChar character) { return character.isMark(); });
            // By way of capitals, which alone make two letters of a sharp s; to lower case first, for the capital one.
            result += bare.toLower().toUpper().toLower().toUtf8();
        }
    }
}

QByteArrayList foldedWords(const QString& search) {
    QByteArray folded;
    appendFolded(folded, search.simplified().toUtf8());
    QByteArrayList words = folded.split(' ');
    words.removeAll(QByteArray());
    return words;
}

bool containsText(const QByteArray& text, const QByteArray& word) {
    return ::memmem(text.constData(), static_cast<std::size_t>(text.size()), word.constData(),
                    static_cast<std::size_t>(word.size())) != nullptr;
}

bool imply(const QByteArrayList& words, const QByteArrayList& others) {
    return std::all_of(others.begin(), others.end(), [&](const QByteArray& other) {
        return std::any_of(words.begin(), words.end(),
                           [&](const QByteArray& word) { return containsText(word, other); });
    });
}
