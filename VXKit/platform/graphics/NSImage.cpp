// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/NSImage.h>

#include <VXKit/platform/foundation/NSBundle.h>
#include <VXKit/platform/foundation/NSLog.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>
#include <VXKit/platform/graphics/NSImageSource.h>
#include <VXKit/platform/graphics/PainterGeometry.h>

#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

// Renderings in other sizes and parts than imageForScale() keeps: how many are kept, and up to how many pixels each.
constexpr std::size_t keptRenderings = 8;
constexpr qint64 largestKeptRendering = qint64{1} << 21;

// Beyond so many pixels only those that can be seen are rendered.
constexpr qint64 largestWholeRendering = qint64{1} << 22;

// Far beyond every surface, and small enough to compute with.
constexpr double farthestPixel = 1 << 28;

// The number of whole pixels that `length` points take at `pixelRatio`; at least one, so that nothing vanishes.
std::optional<int> wholePixels(double length, double pixelRatio) {
    const double pixels = std::max(1.0, std::round(length * pixelRatio));
    if (!(pixels < std::numeric_limits<int>::max())) {
        return std::nullopt;
    }
    return static_cast<int>(pixels);
}

std::optional<QSize> wholePixels(const NSSize& size, double pixelRatio) {
    const std::optional<int> width = wholePixels(size.width, pixelRatio);
    const std::optional<int> height = wholePixels(size.height, pixelRatio);
    if (!width || !height) {
        return std::nullopt;
    }
    return QSize(*width, *height);
}

QImage transparentImage(QSize pixels) {
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

bool isFinite(const NSRect& rect) {
    return std::isfinite(NSMinX(rect)) && std::isfinite(NSMinY(rect)) && std::isfinite(NSMaxX(rect)) &&
           std::isfinite(NSMaxY(rect));
}

int nearestPixel(double side) {
    return static_cast<int>(std::floor(std::clamp(side, -farthestPixel, farthestPixel) + 0.5));
}

// The pixels between those nearest to the sides of `rect`; at least one in each direction.
QRect nearestPixels(const QRectF& rect) {
    const int left = nearestPixel(rect.left());
    const int top = nearestPixel(rect.top());
    return {left, top, std::max(1, nearestPixel(rect.right()) - left), std::max(1, nearestPixel(rect.bottom()) - top)};
}

qint64 pixelCount(QSize pixels) {
    return qint64{pixels.width()} * pixels.height();
}

bool isOnePixelOff(QSizeF size, QSize pixels) {
    return std::abs(size.width() - pixels.width()) <= 1 && std::abs(size.height() - pixels.height()) <= 1;
}

double pixelRatioForFocus() {
    if (const NSGraphicsContext* context = NSGraphicsContext::currentContext()) {
        return context->pixelRatio();
    }
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? screen->devicePixelRatio() : 1;
}

} // namespace

// What is painted into, by the locks of focus in force.
struct NSImage::Focus {
    // `focusPixels` tell by their device pixel ratio how many of them a point takes.
    Focus(QImage focusPixels, bool focusIsLost)
        : pixels(std::move(focusPixels)), isLost(focusIsLost), painter(&pixels) {}
    Focus(const Focus&) = delete;
    Focus& operator=(const Focus&) = delete;
    ~Focus() {
        while (!contexts.empty()) {
            pop();
        }
    }

    void push(bool flipped) {
        painter.save();
        painter.resetTransform();
        painter.setClipping(false);
        // The bottom of the area is the bottom of the lowest pixels, also where a point more takes half a pixel.
        const double height = pixels.height() / pixels.devicePixelRatio();
        contexts.push_back(std::make_unique<NSGraphicsContext>(painter, height, flipped));
    }

    void pop() {
        contexts.pop_back();
        painter.restore();
    }

    QImage pixels;
    bool isLost;
    QPainter painter;
    std::vector<std::unique_ptr<NSGraphicsContext>> contexts;
};

NSImage::NSImage(QString path) : m_path(std::move(path)) {}

NSImage::NSImage(std::unique_ptr<const Source> source) : m_source(std::move(source)) {}

NSImage::~NSImage() = default;

std::shared_ptr<NSImage> NSImage::initByReferencingFile(const QString& path) {
    return std::shared_ptr<NSImage>(new NSImage(path));
}

std::shared_ptr<NSImage> NSImage::imageNamed(const QString& name) {
    // Never destroyed: views that outlive main() may still hold images of it.
    static auto* const imagesByPath = new std::unordered_map<QString, std::shared_ptr<NSImage>>;
    // A view asks in every drawing, and the way from a name to a file leads through a dozen names of files.
    static auto* const imagesByName = new std::unordered_map<QString, std::shared_ptr<NSImage>>;
    if (const auto known = imagesByName->find(name); known != imagesByName->end()) {
        return known->second;
    }
    const QString path = NSBundle::mainBundle().pathForImageResource(name);
    if (path.isNull()) {
        return nullptr;
    }
    std::shared_ptr<NSImage>& image = (*imagesByPath)[path];
    if (!image) {
        image = initByReferencingFile(path);
    }
    imagesByName->emplace(name, image);
    return image;
}

std::shared_ptr<NSImage> NSImage::initWithSize(const NSSize& size) {
    const bool isUsable = size.width > 0 && size.height > 0;
    return std::shared_ptr<NSImage>(
        new NSImage(std::make_unique<const Source>(isUsable ? size : NSZeroSize, QImage())));
}

std::shared_ptr<NSImage> NSImage::initWithQImage(const QImage& pixels) {
    const NSSize size = NSSizeFromQSizeF(pixels.deviceIndependentSize());
    QImage raster = pixels.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    return std::shared_ptr<NSImage>(new NSImage(std::make_unique<const Source>(size, std::move(raster))));
}

NSSize NSImage::size() const {
    return isValid() ? m_size.value_or(source().size) : NSZeroSize;
}

void NSImage::setSize(const NSSize& size) {
    if (!(size.width > 0 && size.height > 0)) {
        NSLog("An image cannot have the size %@.", NSStringFromSize(size));
        return;
    }
    if (m_size != size) {
        m_size = size;
        forgetRenderings();
    }
}

void NSImage::setScalesWhenResized(bool scales) {
    if (m_scalesWhenResized != scales) {
        m_scalesWhenResized = scales;
        forgetRenderings();
    }
}

bool NSImage::isValid() const {
    return source().size.width > 0 && source().size.height > 0;
}

void NSImage::lockFocus() {
    lockFocus(pixelRatioForFocus());
}

void NSImage::lockFocus(double pixelRatio) {
    if (!m_focus) {
        const double ratio = pixelRatio > 0 && std::isfinite(pixelRatio) ? pixelRatio : 1;
        QImage pixels = imageForScale(ratio);
        const bool isLost = pixels.isNull();
        if (isLost) {
            NSLog("What is drawn into an image of the size %@ at %@ pixels a point is lost.", NSStringFromSize(size()),
                  ratio);
            pixels = transparentImage({1, 1});
        }
        forgetRenderings(); // or the first stroke would copy all pixels, for the sake of the one that is kept
        m_focus = std::make_unique<Focus>(std::move(pixels), isLost);
    }
    m_focus->push(m_flipped);
}

void NSImage::unlockFocus() {
    if (!m_focus) {
        NSLog("An image whose focus is not locked cannot be unlocked.");
        return;
    }
    m_focus->pop();
    if (!m_focus->contexts.empty()) {
        return;
    }
    m_focus->painter.end();
    if (!m_focus->isLost) {
        const NSSize paintedSize = size();
        m_source = std::make_unique<const Source>(paintedSize, m_focus->pixels);
        m_size.reset();
        forgetRenderings();
    }
    m_focus.reset();
}

void NSImage::drawAtPoint(const NSPoint& point, const NSRect& fromRect, NSCompositingOperation operation,
                          double fraction) const {
    const NSSize drawnSize = fromRect == NSZeroRect ? size() : fromRect.size;
    drawInRect({point, drawnSize}, fromRect, operation, fraction);
}

void NSImage::drawInRect(const NSRect& rect, const NSRect& fromRect, NSCompositingOperation operation,
                         double fraction) const {
    NSGraphicsContext* context = NSGraphicsContext::currentContext();
    if (context == nullptr || NSIsEmptyRect(rect) || !isFinite(rect) || !isFinite(fromRect) || !isValid()) {
        return;
    }
    const NSRect part = fromRect == NSZeroRect ? NSRect{NSZeroPoint, size()} : fromRect;
    if (NSIsEmptyRect(part)) {
        return;
    }
    // From the top left downwards, as pixels are.
    const double top = m_flipped || fromRect == NSZeroRect ? NSMinY(part) : size().height - NSMaxY(part);
    const QRectF source(NSMinX(part), top, NSWidth(part), NSHeight(part));
    const double opacity = fraction > 0 ? std::min(fraction, 1.0) : 0;
    const QRectF target = NSRectToQRectF(rect);
    context->draw(target, operation, [&](QPainter& painter) {
        painter.save();
        painter.setOpacity(painter.opacity() * opacity);
        if (painter.deviceTransform().type() <= QTransform::TxScale) {
            drawOnPixels(painter, target, source);
        } else {
            drawTransformed(painter, target, source);
        }
        painter.restore();
    });
}

QImage NSImage::imageForScale(double pixelRatio) const {
    if (!(pixelRatio > 0) || !isValid()) {
        return {};
    }
    if (const auto found = m_imagesByPixelRatio.find(pixelRatio); found != m_imagesByPixelRatio.end()) {
        return found->second;
    }
    const std::optional<QSize> pixels = wholePixels(size(), pixelRatio);
    QImage image = pixels ? render(*pixels, pictureFrame(QRectF({0, 0}, *pixels))) : QImage();
    if (image.isNull()) {
        Source::logUnusable(m_path, QStringLiteral("too large at %1 pixels a point").arg(pixelRatio));
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

void NSImage::forgetRenderings() {
    m_imagesByPixelRatio.clear();
    m_renderings.clear();
}

// Draws `part` of the image, in points from its top left, into the whole pixels nearest to `target`.
void NSImage::drawOnPixels(QPainter& painter, const QRectF& target, const QRectF& part) const {
    QRect area = nearestPixels(painter.deviceTransform().mapRect(target));
    const double scaleX = area.width() / part.width();
    const double scaleY = area.height() / part.height();
    QRectF frame(area.x() - part.x() * scaleX, area.y() - part.y() * scaleY, size().width * scaleX,
                 size().height * scaleY);

    // Where a point takes up a pixel and a half, the same picture is a pixel wider at one place than at another; its
    // pixels are not to be blurred for that.
    const QSize rasterSize = source().rasterFor(frame.size()).size();
    const bool isWholeInItsSize = target.size() == NSSizeToQSizeF(size()) && part == QRectF({0, 0}, target.size());
    if (isWholeInItsSize && pictureFrame(frame) == frame && isOnePixelOff(frame.size(), rasterSize)) {
        area = QRect(QPoint(area.left(), area.top() + area.height() - rasterSize.height()), rasterSize);
        frame = area;
    }

    if (pixelCount(area.size()) > largestWholeRendering) {
        area &= reachablePixels(painter);
    }
    if (area.isEmpty()) {
        return;
    }
    const QImage pixels = keptRendering(area.size(), pictureFrame(frame.translated(-area.topLeft())));
    painter.setTransform(logicalToDevice(painter).inverted());
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.drawImage(area, pixels);
}

// The same where the context is turned or slanted, so that there are no pixels to be sharp on.
void NSImage::drawTransformed(QPainter& painter, const QRectF& target, const QRectF& part) const {
    const double stretch = std::max(target.width() / part.width(), target.height() / part.height());
    const double ratio = std::sqrt(std::abs(painter.deviceTransform().determinant())) * stretch;
    const std::optional<QSize> pixelSize = wholePixels(size(), ratio);
    const QRectF drawnPart = part & QRectF({0, 0}, NSSizeToQSizeF(size()));
    if (!pixelSize || drawnPart.isEmpty()) {
        return;
    }
    const QImage pixels = render(*pixelSize, pictureFrame(QRectF({0, 0}, *pixelSize)));
    const QTransform pointsToPixels =
        QTransform::fromScale(pixelSize->width() / size().width, pixelSize->height() / size().height);
    if (!NSGraphicsContext::currentContext()->isFlipped()) {
        painter.translate(0, target.top() + target.bottom());
        painter.scale(1, -1);
    }
    painter.translate(target.topLeft());
    painter.scale(target.width() / part.width(), target.height() / part.height());
    painter.drawImage(drawnPart.translated(-part.topLeft()), pixels, pointsToPixels.mapRect(drawnPart));
}

// Where the picture lies, in the y-down coordinates in which the image lies in `imageFrame`.
QRectF NSImage::pictureFrame(const QRectF& imageFrame) const {
    if (!m_size || m_scalesWhenResized) {
        return imageFrame;
    }
    const double width = imageFrame.width() * source().size.width / m_size->width;
    const double height = imageFrame.height() * source().size.height / m_size->height;
    return {imageFrame.left(), imageFrame.bottom() - height, width, height};
}

// An image of `pixels`, with the picture where `pictureFrame` says; that may reach beyond. Null when there is not the
// memory for it. Its device pixel ratio means nothing.
QImage NSImage::render(QSize pixels, const QRectF& pictureFrame) const {
    const Source& from = source();
    const QImage& raster = from.rasterFor(pictureFrame.size());
    const QRect wholeFrame = pictureFrame.toRect();
    const bool isOnPixels = QRectF(wholeFrame) == pictureFrame;
    if (!raster.isNull() && isOnPixels && wholeFrame.size() == raster.size()) {
        const QRect wanted(-wholeFrame.topLeft(), pixels);
        return wanted == raster.rect() ? raster : raster.copy(wanted);
    }
    if (!raster.isNull() && wholeFrame == QRect({0, 0}, pixels) && isOnPixels) {
        return raster.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
    QImage image = transparentImage(pixels);
    if (image.isNull()) {
        return image;
    }
    QPainter painter(&image);
    if (from.drawing) {
        painter.setRenderHint(QPainter::Antialiasing);
        from.drawing->render(&painter, pictureFrame);
    } else if (!raster.isNull()) {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(pictureFrame, raster);
    }
    return image;
}

QImage NSImage::keptRendering(QSize pixels, const QRectF& pictureFrame) const {
    const auto found = std::find_if(m_renderings.begin(), m_renderings.end(), [&](const Rendering& rendering) {
        return rendering.pixels == pixels && rendering.pictureFrame == pictureFrame;
    });
    if (found != m_renderings.end()) {
        return found->image;
    }
    QImage image = render(pixels, pictureFrame);
    if (pixelCount(pixels) <= largestKeptRendering) {
        m_renderings.push_front({pixels, pictureFrame, image});
        m_renderings.resize(std::min(m_renderings.size(), keptRenderings));
    }
    return image;
}
