// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/NSImage.h>

#include <VXKit/platform/foundation/NSBundle.h>
#include <VXKit/platform/foundation/NSLog.h>

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QPainter>
#include <QSvgRenderer>
#include <QXmlStreamReader>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <unordered_map>
#include <utility>

namespace {

constexpr QLatin1String vectorSuffix("svg");
constexpr QLatin1String doubleScaleMark("@2x");
constexpr int doubleScale = 2;

// Logs why an image shows nothing.
void logUnusable(const QString& path, const QString& reason) {
    NSLog("%@ is no image that can be shown: %@", path, reason);
}

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

// The number of whole pixels that `length` points take at `pixelRatio`; at least one, so that nothing vanishes.
std::optional<int> wholePixels(double length, double pixelRatio) {
    const double pixels = std::max(1.0, std::round(length * pixelRatio));
    if (!(pixels < std::numeric_limits<int>::max())) {
        return std::nullopt;
    }
    return static_cast<int>(pixels);
}

} // namespace

// What was read from the file. Either the drawing or the raster is there; neither for an invalid image.
struct NSImage::Source {
    explicit Source(const QString& path);

    QSizeF size;
    std::unique_ptr<QSvgRenderer> drawing;
    QImage raster;
    QImage doubleScaleRaster;
};

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
            size = drawing->defaultSize();
        }
    } else {
        raster = readRaster(*bytes, reason);
        size = raster.size();
    }
    if (!drawing && raster.isNull()) {
        logUnusable(path, reason);
        size = {0, 0};
        return;
    }
    if (drawing) {
        return;
    }
    if (QFileInfo(path).completeBaseName().endsWith(doubleScaleMark)) {
        size /= doubleScale;
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

NSImage::NSImage(QString path) : m_path(std::move(path)) {}

NSImage::~NSImage() = default;

std::shared_ptr<NSImage> NSImage::initByReferencingFile(const QString& path) {
    return std::shared_ptr<NSImage>(new NSImage(path));
}

std::shared_ptr<NSImage> NSImage::imageNamed(const QString& name) {
    const QString path = NSBundle::mainBundle().pathForImageResource(name);
    if (path.isNull()) {
        return nullptr;
    }
    // Never destroyed: views that outlive main() may still hold images of it.
    static auto* const imagesByPath = new std::unordered_map<QString, std::shared_ptr<NSImage>>;
    std::shared_ptr<NSImage>& image = (*imagesByPath)[path];
    if (!image) {
        image = initByReferencingFile(path);
    }
    return image;
}

QSizeF NSImage::size() const {
    return source().size;
}

bool NSImage::isValid() const {
    return !source().size.isEmpty();
}

QImage NSImage::imageForScale(double pixelRatio) const {
    if (!(pixelRatio > 0) || !isValid()) {
        return {};
    }
    if (const auto found = m_imagesByPixelRatio.find(pixelRatio); found != m_imagesByPixelRatio.end()) {
        return found->second;
    }
    const std::optional<int> width = wholePixels(size().width(), pixelRatio);
    const std::optional<int> height = wholePixels(size().height(), pixelRatio);
    QImage image = width && height ? renderAtPixelSize({*width, *height}) : QImage();
    if (image.isNull()) {
        logUnusable(m_path, QStringLiteral("too large at %1 pixels a point").arg(pixelRatio));
    } else {
        image.setDevicePixelRatio(pixelRatio);
    }
    m_imagesByPixelRatio.emplace(pixelRatio, image);
    return image;
}

const NSImage::Source& NSImage::source() const {
    if (!m_source) {
        m_source = std::make_unique<const Source>(m_path);
    }
    return *m_source;
}

QImage NSImage::renderAtPixelSize(QSize pixelSize) const {
    const Source& from = source();
    if (!from.drawing) {
        const bool wantsDetail = pixelSize.width() > from.raster.width() || pixelSize.height() > from.raster.height();
        const QImage& raster = wantsDetail && !from.doubleScaleRaster.isNull() ? from.doubleScaleRaster : from.raster;
        return raster.scaled(pixelSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
    QImage image(pixelSize, QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) {
        return image;
    }
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    from.drawing->render(&painter, QRectF(QPointF(0, 0), QSizeF(pixelSize)));
    return image;
}
