// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/NSImageSource.h>

#include <VXKit/platform/foundation/NSLog.h>

#include <QBuffer>
#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QXmlStreamReader>

#include <optional>

namespace {

constexpr QLatin1String vectorSuffix("svg");
constexpr QLatin1String doubleScaleMark("@2x");
constexpr int doubleScale = 2;

// The whole file at `path`, or nothing with the reason in `reason`.
std::optional<QByteArray> readFile(const QString& path, QString& reason) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        reason = file.errorString();
        return std::nullopt;
    }
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        reason = file.errorString();
        return std::nullopt;
    }
    return bytes;
}

// The vector renderer complains to the log by itself, and vaguely, when it is given something else than a drawing.
bool isVectorDrawing(const QByteArray& bytes, QString& reason) {
    QXmlStreamReader reader(bytes);
    if (reader.readNextStartElement() && reader.name() != vectorSuffix) {
        reason = QStringLiteral("its root element is <%1>, not <svg>").arg(reader.name());
        return false;
    }
    while (!reader.atEnd()) {
        reader.readNext();
    }
    if (reader.hasError()) {
        reason = QStringLiteral("line %1: %2").arg(reader.lineNumber()).arg(reader.errorString());
        return false;
    }
    return true;
}

std::unique_ptr<QSvgRenderer> readVectorDrawing(const QByteArray& bytes, QString& reason) {
    if (!isVectorDrawing(bytes, reason)) {
        return nullptr;
    }
    auto renderer = std::make_unique<QSvgRenderer>();
    if (!renderer->load(bytes) || renderer->defaultSize().isEmpty()) {
        reason = QStringLiteral("the drawing has no size");
        return nullptr;
    }
    // A stretched button body must stretch, not shrink to keep its proportions.
    renderer->setAspectRatioMode(Qt::IgnoreAspectRatio);
    return renderer;
}

QImage readRaster(QByteArray bytes, QString& reason) {
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    const QImage image = reader.read();
    if (image.isNull()) {
        reason = reader.errorString();
    }
    return image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

QString doubleScaleSibling(const QString& path) {
    const QString suffix = QFileInfo(path).suffix();
    const qsizetype stem = suffix.isEmpty() ? path.size() : path.size() - suffix.size() - 1;
    return path.left(stem) + doubleScaleMark + path.mid(stem);
}

} // namespace

NSImage::Source::Source(const QString& path) {
    QString reason;
    const std::optional<QByteArray> bytes = readFile(path, reason);
    if (!bytes) {
        logUnusable(path, reason);
        return;
    }
    if (QFileInfo(path).suffix().compare(vectorSuffix, Qt::CaseInsensitive) == 0) {
        drawing = readVectorDrawing(*bytes, reason);
        if (drawing) {
            size = NSSizeFromQSizeF(drawing->defaultSize());
        }
    } else {
        raster = readRaster(*bytes, reason);
        size = NSSizeFromQSizeF(raster.size());
    }
    if (!drawing && raster.isNull()) {
        logUnusable(path, reason);
        size = NSZeroSize;
        return;
    }
    if (drawing) {
        return;
    }
    if (QFileInfo(path).completeBaseName().endsWith(doubleScaleMark)) {
        size = {size.width / doubleScale, size.height / doubleScale};
        return;
    }
    const QString sibling = doubleScaleSibling(path);
    if (QFileInfo(sibling).isFile()) {
        const std::optional<QByteArray> siblingBytes = readFile(sibling, reason);
        doubleScaleRaster = siblingBytes ? readRaster(*siblingBytes, reason) : QImage();
        if (doubleScaleRaster.isNull()) {
            logUnusable(sibling, reason);
        }
    }
}

const QImage& NSImage::Source::rasterFor(const QSizeF& pixels) const {
    const bool wantsDetail = pixels.width() > raster.width() || pixels.height() > raster.height();
    return wantsDetail && !doubleScaleRaster.isNull() ? doubleScaleRaster : raster;
}

void NSImage::Source::logUnusable(const QString& path, const QString& reason) {
    NSLog("%@ is no image that can be shown: %@", path, reason);
}
