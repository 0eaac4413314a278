// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/SnapshotWindow.h>

#include <VXKit/platform/appkit/NSImageView.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>
#include <VXKit/platform/graphics/NSImage.h>

#include <QEventLoop>
#include <QImage>
#include <QTimer>
#include <QWindow>

#include <chrono>
#include <utility>

namespace {

constexpr std::chrono::milliseconds longestWait(250);

/// Ends a loop when what it watches is on the screen.
class ExposeWatcher : public QObject {
public:
    explicit ExposeWatcher(QEventLoop& loop) : m_loop(loop) {}

    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() == QEvent::Expose) {
            // Later, when the window has answered the event by painting itself.
            QMetaObject::invokeMethod(&m_loop, &QEventLoop::quit, Qt::QueuedConnection);
        }
        return false;
    }

private:
    QEventLoop& m_loop;
};

} // namespace

std::shared_ptr<NSImage> snapshotOfWindow(NSWindow& window) {
    const double pixelRatio = window.devicePixelRatioF();
    QImage pixels((QSizeF(window.size()) * pixelRatio).toSize(), QImage::Format_ARGB32_Premultiplied);
    if (pixels.isNull()) {
        return nullptr;
    }
    pixels.setDevicePixelRatio(pixelRatio);
    pixels.fill(Qt::transparent);
    // A window without a compositing manager's help is invisible by being cut to nothing.
    const bool isInvisible = !window.mask().isEmpty() && !window.mask().intersects(window.rect());
    QWidget::RenderFlags flags = QWidget::DrawWindowBackground | QWidget::DrawChildren;
    flags.setFlag(QWidget::IgnoreMask, isInvisible);
    // Qt paints what is left of a window that is cut at the offset itself, as if it began there.
    const QPoint corner = isInvisible || window.mask().isEmpty() ? QPoint() : window.mask().boundingRect().topLeft();
    window.render(&pixels, corner, QRegion(), flags);
    return NSImage::initWithQImage(pixels);
}

void waitUntilShown(NSWindow& window) {
    QWindow* const handle = window.windowHandle();
    if (!handle || !window.isVisible() || handle->isExposed()) {
        return;
    }
    QEventLoop loop;
    ExposeWatcher watcher(loop);
    handle->installEventFilter(&watcher);
    QObject::connect(handle, &QObject::destroyed, &loop, &QEventLoop::quit);
    QTimer::singleShot(longestWait, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

SnapshotWindow::SnapshotWindow(const NSRect& frame, const NSRect& stage, std::shared_ptr<NSImage> picture)
    : NSWindow(stage, NSBorderlessWindowMask, NSBackingStoreBuffered, true), m_stage(stage), m_pictureFrame(frame) {
    setManagement(NSWindowManagement::Bypassing);
    setOpaque(false);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setBackgroundColor(NSColor::clearColor());
    auto pictureView = std::make_unique<NSImageView>(pictureOnStage());
    pictureView->setImage(std::move(picture));
    pictureView->setImageScaling(NSScaleToFit);
    m_pictureView = pictureView.get();
    ViewCore::of(contentView())->addSubview(pictureView.release());
}

NSRect SnapshotWindow::pictureOnStage() const {
    return NSOffsetRect(m_pictureFrame, -m_stage.origin.x, -m_stage.origin.y);
}

void SnapshotWindow::setFrame(const NSRect& frame, bool display) {
    const NSRect before = std::exchange(m_pictureFrame, frame);
    m_pictureView->setFrame(pictureOnStage());
    if (QWidget::isVisible()) { // if not, it is cut when it is shown
        updateShape();
    }
    announceChange(before, m_pictureFrame);
    if (display) {
        this->display();
    }
}

NSRect SnapshotWindow::constrainFrameRect(const NSRect& /*frame*/) const {
    return m_stage;
}

void SnapshotWindow::drawCoverage() const {
    if (const auto& picture = m_pictureView->image()) {
        picture->drawInRect(pictureOnStage(), NSZeroRect, NSCompositeSourceOver, 1);
    }
}
