// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSPasteboard.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QStringDecoder>
#include <QStringEncoder>

#include <memory>
#include <optional>

namespace {

constexpr QLatin1String plainTextFormat("text/plain");
constexpr QLatin1String utf8PlainTextFormat("text/plain;charset=utf-8");
constexpr QLatin1String utf16PlainTextFormat("text/plain;charset=utf-16");
constexpr QLatin1String stringType(NSStringPboardType);
constexpr QLatin1String utf8PlainTextType("public.utf8-plain-text");
constexpr QLatin1String plainTextType("public.plain-text");

QClipboard* clipboard() {
    return qGuiApp ? QGuiApplication::clipboard() : nullptr;
}

const QMimeData* clipboardContents() {
    const QClipboard* board = clipboard();
    return board ? board->mimeData() : nullptr;
}

// The value of the charset parameter of a MIME type, or nothing where it has none.
std::optional<QString> charsetOfFormat(const QString& format) {
    const QStringList parts = format.split(QLatin1Char(';'));
    for (qsizetype index = 1; index < parts.size(); ++index) {
        const QString name = parts[index].section(QLatin1Char('='), 0, 0).trimmed();
        if (name.compare(QLatin1String("charset"), Qt::CaseInsensitive) == 0) {
            return parts[index].section(QLatin1Char('='), 1).remove(QLatin1Char('"')).trimmed();
        }
    }
    return std::nullopt;
}

QString typeOfFormat(const QString& format) {
    const QString essence = format.section(QLatin1Char(';'), 0, 0).trimmed();
    if (essence.compare(plainTextFormat, Qt::CaseInsensitive) != 0) {
        return format;
    }
    if (!format.contains(QLatin1Char(';'))) {
        return stringType;
    }
    const std::optional<QString> charset = charsetOfFormat(format);
    if (!charset) {
        return format;
    }
    const bool isUtf8 = charset->compare(QLatin1String("utf-8"), Qt::CaseInsensitive) == 0;
    return isUtf8 ? utf8PlainTextType : plainTextType;
}

QString formatToWriteForType(const QString& type) {
    if (type == stringType) {
        return plainTextFormat;
    }
    if (type == utf8PlainTextType) {
        return utf8PlainTextFormat;
    }
    if (type == plainTextType) {
        return utf16PlainTextFormat;
    }
    return type;
}

// The format under which the clipboard holds `type`; null where it does not.
QString formatToReadForType(const QMimeData* contents, const QString& type) {
    if (!contents) {
        return {};
    }
    const QStringList formats = contents->formats();
    for (const QString& format : formats) {
        if (typeOfFormat(format) == type) {
            return format;
        }
    }
    return {};
}

bool isTextType(const QString& type) {
    return !type.contains(QLatin1Char('/')) || type.startsWith(QLatin1String("text/"), Qt::CaseInsensitive);
}

QString decodeUtf8OrLatin1(const QByteArray& bytes) {
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    const QString text = decoder.decode(bytes);
    return decoder.hasError() ? QString::fromLatin1(bytes) : text;
}

QString decode(const QByteArray& bytes, const std::optional<QString>& charset) {
    QStringDecoder decoder;
    if (charset) {
        decoder = QStringDecoder(charset->toLatin1().constData());
    }
    // An empty text is a text: null would say that there is none.
    const QString text = decoder.isValid() ? QString(decoder.decode(bytes)) : decodeUtf8OrLatin1(bytes);
    return text.isNull() ? QStringLiteral("") : text;
}

QByteArray encode(const QString& string, const QString& type) {
    if (type != plainTextType) {
        return string.toUtf8();
    }
    // The byte order mark tells readers the byte order, which the charset's name leaves open.
    QStringEncoder encoder(QStringConverter::Utf16, QStringConverter::Flag::WriteBom);
    return encoder.encode(string);
}

} // namespace

NSPasteboard::NSPasteboard() = default;

NSPasteboard::~NSPasteboard() = default;

NSPasteboard& NSPasteboard::generalPasteboard() {
    // Never destroyed: objects that outlive main() may still hold it.
    static auto* const pasteboard = new NSPasteboard;
    return *pasteboard;
}

QStringList NSPasteboard::types() const {
    QStringList types;
    const QMimeData* contents = clipboardContents();
    if (!contents) {
        return types;
    }
    const QStringList formats = contents->formats();
    for (const QString& format : formats) {
        types.append(typeOfFormat(format));
    }
    types.removeDuplicates();
    return types;
}

QString NSPasteboard::stringForType(const QString& type) const {
    const QMimeData* contents = clipboardContents();
    const QString format = formatToReadForType(contents, type);
    if (format.isNull() || !isTextType(type)) {
        return {};
    }
    return decode(contents->data(format), charsetOfFormat(format));
}

QByteArray NSPasteboard::dataForType(const QString& type) const {
    const QMimeData* contents = clipboardContents();
    const QString format = formatToReadForType(contents, type);
    return format.isNull() ? QByteArray() : contents->data(format);
}

void NSPasteboard::clearContents() {
    if (QClipboard* board = clipboard()) {
        board->clear();
    }
    m_written = nullptr;
}

bool NSPasteboard::setString(const QString& string, const QString& type) {
    return isTextType(type) && setData(encode(string, type), type);
}

bool NSPasteboard::setData(const QByteArray& data, const QString& type) {
    QClipboard* board = clipboard();
    if (!board || type.isEmpty()) {
        return false;
    }
    // The clipboard takes contents as a whole and tells other programs once: a new type means all of it anew.
    auto contents = std::make_unique<QMimeData>();
    if (m_written && board->mimeData() == m_written) {
        const QStringList formats = m_written->formats();
        for (const QString& format : formats) {
            contents->setData(format, m_written->data(format));
        }
    }
    contents->setData(formatToWriteForType(type), data);
    m_written = contents.get();
    board->setMimeData(contents.release());
    return true;
}
