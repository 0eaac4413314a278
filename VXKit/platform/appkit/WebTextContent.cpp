// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/WebTextContent.h>

#include <VXKit/platform/foundation/AtomicFile.h>

#include <QFile>
#include <QFileInfo>
#include <QFont>
#include <QRegularExpression>
#include <QStringDecoder>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFragment>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

constexpr int mostDepth = 256; // of elements: Qt's own reader is quadratic in it

/// The value of a parameter of a content type, without quotes.
QByteArray parameterOf(const QByteArray& contentType, const QByteArray& name) {
    const QList<QByteArray> parts = contentType.split(';');
    for (const QByteArray& part : parts.mid(1)) {
        const qsizetype equals = part.indexOf('=');
        if (equals > 0 && part.left(equals).trimmed().toLower() == name) {
            QByteArray value = part.mid(equals + 1).trimmed();
            value.replace('"', "");
            return value;
        }
    }
    return {};
}

} // namespace

bool WebTextContent::isOnTheWeb(const QUrl& url) {
    return url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
}

bool WebTextContent::isLocal(const QUrl& url) {
    return url.scheme() == QLatin1String("file") || url.scheme() == QLatin1String("qrc");
}

QString WebTextContent::tooLarge() {
    return QStringLiteral("The page is too large.");
}

std::optional<QByteArray> WebTextContent::readLocalFile(const QUrl& url, qint64 mostBytes, QString* reason) {
    const QString path = url.scheme() == QLatin1String("qrc") ? QLatin1Char(':') + url.path() : url.toLocalFile();
    if (QFileInfo(path).size() > mostBytes) {
        *reason = tooLarge();
        return std::nullopt;
    }
    if (path.startsWith(QLatin1Char(':'))) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            *reason = file.errorString();
            return std::nullopt;
        }
        return file.readAll();
    }
    NSError error;
    const std::optional<std::string> content = VXReadFile(path, &error, static_cast<std::size_t>(mostBytes));
    if (!content) {
        *reason = error.localizedDescription;
        return std::nullopt;
    }
    return QByteArray::fromStdString(*content);
}

QString WebTextContent::decoded(const QByteArray& content, const QByteArray& contentType) {
    QStringDecoder decoder(parameterOf(contentType, "charset").constData());
    if (!decoder.isValid()) {
        decoder = QStringDecoder::decoderForHtml(content);
    }
    return decoder.decode(content);
}

QString WebTextContent::asQtReadsIt(const QString& html) {
    static const QRegularExpression tag(
        QStringLiteral(
            R"(<(link|base|area|col|embed|input|param|source|track|wbr)\b((?:[^>"']|"[^"]*"|'[^']*')*?)\s*/?>)"),
        QRegularExpression::CaseInsensitiveOption);
    QString result;
    qsizetype copied = 0;
    for (auto tags = tag.globalMatch(html); tags.hasNext();) {
        const QRegularExpressionMatch match = tags.next();
        const QStringView attributes = match.capturedView(2);
        const bool isStyleSheet = attributes.contains(u"stylesheet", Qt::CaseInsensitive);
        result += QStringView(html).mid(copied, match.capturedStart() - copied);
        result += QLatin1Char('<') + match.captured(1) + match.captured(2);
        if (isStyleSheet && !attributes.contains(u"text/css", Qt::CaseInsensitive)) {
            result += QStringLiteral(" type=\"text/css\"");
        }
        result += QStringLiteral(" />");
        copied = match.capturedEnd();
    }
    return result + html.mid(copied);
}

bool WebTextContent::isTooDeep(const QString& html) {
    int depth = 0;
    int deepest = 0;
    for (qsizetype at = html.indexOf(QLatin1Char('<')); at >= 0 && at + 1 < html.size();
         at = html.indexOf(QLatin1Char('<'), at + 1)) {
        const QStringView rest = QStringView(html).mid(at + 1);
        const bool nests =
            rest.startsWith(u"table", Qt::CaseInsensitive) || rest.startsWith(u"div", Qt::CaseInsensitive) ||
            rest.startsWith(u"ul", Qt::CaseInsensitive) || rest.startsWith(u"ol", Qt::CaseInsensitive) ||
            rest.startsWith(u"blockquote", Qt::CaseInsensitive) || rest.startsWith(u"span", Qt::CaseInsensitive) ||
            rest.startsWith(u"font", Qt::CaseInsensitive);
        if (nests) {
            deepest = std::max(deepest, ++depth);
        } else if (rest.startsWith(u'/')) {
            depth = std::max(0, depth - 1);
        }
    }
    return deepest > mostDepth;
}

void WebTextContent::scaleText(QTextDocument& document, double factor) {
    std::vector<QTextCursor> pieces;
    std::vector<QTextCharFormat> formats;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto each = block.begin(); !each.atEnd(); ++each) {
            const QTextFragment fragment = each.fragment();
            QTextCharFormat format = fragment.charFormat();
            const bool hasOwnSize =
                format.hasProperty(QTextFormat::FontPixelSize) || format.hasProperty(QTextFormat::FontPointSize);
            const int adjustment = hasOwnSize ? 0 : format.intProperty(QTextFormat::FontSizeAdjustment);
            format.clearProperty(QTextFormat::FontSizeAdjustment);
            QFont font = format.font().resolve(document.defaultFont());
            if (adjustment != 0) {
                // As much for each step as Qt has it, roughly.
                font.setPixelSize(qRound(document.defaultFont().pixelSize() * (1 + 0.2 * adjustment)));
            }
            const double pixels = font.pixelSize() > 0 ? font.pixelSize() : font.pointSizeF() * 96 / 72;
            font.setPixelSize(std::max(1, static_cast<int>(std::lround(pixels * factor))));
            format.setProperty(QTextFormat::FontPixelSize, font.pixelSize());
            format.clearProperty(QTextFormat::FontPointSize);
            if (format.isImageFormat()) {
                QTextImageFormat image = format.toImageFormat();
                if (image.width() > 0) {
                    image.setWidth(image.width() * factor);
                }
                if (image.height() > 0) {
                    image.setHeight(image.height() * factor);
                }
                format = image;
            }
            QTextCursor cursor(&document);
            cursor.setPosition(fragment.position());
            cursor.setPosition(fragment.position() + fragment.length(), QTextCursor::KeepAnchor);
            pieces.push_back(cursor);
            formats.push_back(format);
        }
    }
    QTextCursor all(&document);
    all.beginEditBlock(); // so that the document is laid out once
    for (std::size_t index = 0; index < pieces.size(); ++index) {
        pieces[index].setCharFormat(formats[index]);
    }
    all.endEditBlock();
}
