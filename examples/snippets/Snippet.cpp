// SPDX-License-Identifier: MIT
#include "Snippet.h"

#include "TitleText.h"

#include <QStringView>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr qsizetype longestTitle = 80;      // characters of a title made from a text
constexpr qsizetype longestShownLine = 240; // characters
constexpr qsizetype bytesLookedAtFirst = 4096;

// The years 1 to 9999, which are those that an XML date can tell; seconds since 1970.
constexpr double earliestDate = -62135596800.0;
constexpr double dateAfterLatest = 253402300800.0;

/// A field of the dictionary that is kept as a date and, beside it, as a real number.
struct DateKeys {
    const char* date;
    const char* seconds;
};

constexpr DateKeys identityKeys{"id", "idSeconds"};
constexpr DateKeys modificationKeys{"modified", "modifiedSeconds"};
constexpr DateKeys lastUseKeys{"lastUsed", "lastUsedSeconds"};
constexpr const char* titleKey = "title";
constexpr const char* textKey = "text";
constexpr const char* useCountKey = "useCount";

bool canBeKept(double seconds) {
    return seconds >= earliestDate && seconds < dateAfterLatest;
}

void putDate(NSDictionary& dictionary, const DateKeys& keys, const std::optional<NSDate>& date) {
    // One date that the file cannot hold would keep all the others from being saved.
    if (!date || !canBeKept(date->timeIntervalSince1970())) {
        return;
    }
    dictionary.setObject(*date, keys.date);
    dictionary.setObject(date->timeIntervalSince1970(), keys.seconds);
}

std::optional<NSDate> dateIn(const NSDictionary& dictionary, const DateKeys& keys) {
    const NSPropertyList* number = dictionary.objectForKey(keys.seconds);
    if (number && (number->as<double>() || number->as<std::int64_t>()) && canBeKept(number->doubleValue())) {
        return NSDate::dateWithTimeIntervalSince1970(number->doubleValue());
    }
    const auto* date = dictionary.objectOfType<NSDate>(keys.date);
    if (date && canBeKept(date->timeIntervalSince1970())) {
        return *date;
    }
    return std::nullopt;
}

/// Whether an XML property list can hold `text`, UTF-8, as it is.
bool isXMLText(const QByteArray& text) {
    const bool hasControls = std::any_of(text.begin(), text.end(), [](char byte) {
        return static_cast<unsigned char>(byte) < 0x20 && byte != '\t' && byte != '\n' && byte != '\r';
    });
    return !hasControls && !text.contains("\xEF\xBF\xBE") && !text.contains("\xEF\xBF\xBF");
}

void putText(NSDictionary& dictionary, const char* key, const QByteArray& text) {
    if (isXMLText(text)) {
        dictionary.setObject(std::string_view(text.data(), static_cast<std::size_t>(text.size())), key);
    } else {
        dictionary.setObject(NSData(text.begin(), text.end()), key);
    }
}

/// UTF-8.
std::optional<QByteArray> textIn(const NSDictionary& dictionary, const char* key) {
    if (const auto* text = dictionary.objectOfType<std::string>(key)) {
        return QByteArray::fromStdString(*text);
    }
    if (const auto* bytes = dictionary.objectOfType<NSData>(key)) {
        // By way of a text, because anything may be in there.
        return QString::fromUtf8(
                   QByteArray(reinterpret_cast<const char*>(bytes->data()), static_cast<qsizetype>(bytes->size())))
            .toUtf8();
    }
    return std::nullopt;
}

/// The text that `bytes`, UTF-8, begin with, up to `length` bytes of it.
QString beginningOfText(const QByteArray& bytes, qsizetype length) {
    if (bytes.size() <= length) {
        return QString::fromUtf8(bytes);
    }
    constexpr unsigned char following = 0x80; // the two high bits of a byte that goes on a character
    while (length > 0 && (static_cast<unsigned char>(bytes[length]) & 0xC0) == following) {
        --length;
    }
    return QString::fromUtf8(bytes.first(length));
}

/// The first line of `text` with more than blanks in it that is not `unwanted`, without the blanks around it.
QStringView lineOtherThan(QStringView unwanted, QStringView text) {
    while (!text.isEmpty()) {
        const auto lineEnd = std::find_if(text.begin(), text.end(), [](QChar character) {
            return character == u'\n' || character == u'\r' || character == QChar::LineSeparator ||
                   character == QChar::ParagraphSeparator;
        });
        const qsizetype length = lineEnd - text.begin();
        const QStringView line = text.first(length).trimmed();
        if (!line.isEmpty() && line != unwanted) {
            return line;
        }
        text = text.sliced(std::min(length + 1, text.size()));
    }
    return {};
}

/// `title` with a blank for each line break and each other control character.
QString inOneLine(QString title) {
    std::replace_if(
        title.begin(), title.end(),
        [](QChar character) {
            return character.category() == QChar::Other_Control || character == QChar::LineSeparator ||
                   character == QChar::ParagraphSeparator;
        },
        QChar::fromLatin1(' '));
    return title;
}

} // namespace

void Snippet::setTitle(const QString& title) {
    _name = inOneLine(title);
}

QString Snippet::shownTitle() const {
    return beginning(title(), longestShownLine).toString();
}

bool Snippet::isTitleMadeOfText() const {
    return _name == titleForText(text());
}

void Snippet::rename(const QString& title, NSDate date) {
    setTitle(title);
    modificationDate = date;
}

void Snippet::changeText(const QString& text, NSDate date, TitleFollows titleFollows) {
    const bool follows =
        titleFollows == TitleFollows::Yes || (titleFollows == TitleFollows::IfMadeOfText && isTitleMadeOfText());
    setText(text);
    modificationDate = date;
    const QString title = follows ? titleForText(text) : QString();
    if (!title.isEmpty()) {
        setTitle(title);
    }
}

void Snippet::noteUse(NSDate date) {
    m_lastUsed = date;
    if (m_useCount < std::numeric_limits<std::int64_t>::max()) {
        ++m_useCount;
    }
}

void Snippet::setText(const QString& text) {
    m_text = text.toUtf8();
    m_text.squeeze(); // Qt takes room for three bytes a character
}

void Snippet::takeUsesOf(const Snippet& other) {
    m_useCount = std::max(m_useCount, other.m_useCount);
    if (other.m_lastUsed &&
        (!m_lastUsed || m_lastUsed->timeIntervalSince1970() < other.m_lastUsed->timeIntervalSince1970())) {
        m_lastUsed = other.m_lastUsed;
    }
}

QString Snippet::firstLine() const {
    // Nearly always near the beginning; and a list asks for it with every row that it paints.
    const QString near = beginningOfText(m_text, bytesLookedAtFirst);
    const QStringView line = lineOtherThan(_name, near);
    const bool isWhole = m_text.size() <= bytesLookedAtFirst || line.size() > longestShownLine ||
                         (!line.isEmpty() && QStringView(line.end(), near.cend()).contains(QLatin1Char('\n')));
    if (isWhole) {
        return beginning(line, longestShownLine).toString();
    }
    return beginning(lineOtherThan(_name, text()), longestShownLine).toString();
}

QString Snippet::titleForText(const QString& text) {
    const QStringView line = lineOtherThan({}, text);
    if (line.size() <= longestTitle) {
        return inOneLine(line.toString());
    }
    return inOneLine(beginning(line, longestTitle - 1).trimmed().toString()) + QChar(u'…');
}

std::optional<NSDictionary> Snippet::dictionaryRepresentation() const {
    NSDictionary dictionary;
    putDate(dictionary, identityKeys, snipID);
    putDate(dictionary, modificationKeys, modificationDate);
    putDate(dictionary, lastUseKeys, m_lastUsed);
    putText(dictionary, titleKey, _name.toUtf8());
    putText(dictionary, textKey, m_text);
    dictionary.setObject(m_useCount, useCountKey);
    return dictionary;
}

void Snippet::loadFromDictionary(const NSDictionary& dictionary) {
    if (const std::optional<NSDate> date = dateIn(dictionary, identityKeys)) {
        snipID = date;
    }
    if (const std::optional<NSDate> date = dateIn(dictionary, modificationKeys)) {
        modificationDate = date;
    }
    if (const std::optional<NSDate> date = dateIn(dictionary, lastUseKeys)) {
        m_lastUsed = date;
    }
    if (const std::optional<QByteArray> title = textIn(dictionary, titleKey)) {
        setTitle(QString::fromUtf8(*title));
    }
    if (const std::optional<QByteArray> text = textIn(dictionary, textKey)) {
        m_text = *text;
        m_text.squeeze();
    }
    if (const auto* count = dictionary.objectOfType<std::int64_t>(useCountKey)) {
        m_useCount = std::max<std::int64_t>(*count, 0);
    }
}

std::shared_ptr<_LTSnippet> Snippet::copy() const {
    return std::make_shared<Snippet>(*this);
}

std::shared_ptr<_LTSnippet> Snippet::emptySnippet() {
    return std::make_shared<Snippet>();
}
