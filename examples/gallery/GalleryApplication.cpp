// SPDX-License-Identifier: MIT
#include "GalleryApplication.h"

#include "Appearance.h"

#include <VXKit/app/LTStatusItemView.h>
#include <VXKit/platform/appkit/NSStatusBar.h>
#include <VXKit/platform/appkit/NSStatusItem.h>
#include <VXKit/platform/appkit/NSTextField.h>
#include <VXKit/platform/desktop/MotionPreference.h>
#include <VXKit/platform/foundation/NSPropertyList.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>
#include <VXKit/support/VXExceptionReporter.h>

#include <QShortcut>
#include <QUrl>

namespace {

// Points.
constexpr double statusItemWidth = 30;
constexpr NSSize mainWindowSize{320, 220};

} // namespace

GalleryApplication::GalleryApplication(int& argc, char** argv) : LTApplication(argc, argv) {
    applyAppearance();
    VXReportUncaughtExceptions();
    makeStatusItem();
    makeMainWindow();
}

GalleryApplication::~GalleryApplication() = default;

GalleryApplication& GalleryApplication::shared() {
    return static_cast<GalleryApplication&>(*sharedApplication());
}

QUrl GalleryApplication::helpURL() const {
    return QUrl(QStringLiteral("qrc:/help.html"));
}

LTApplicationController* GalleryApplication::applicationController() const {
    // The hook gives the controller away to be sent commands, and this object is its own.
    return const_cast<GalleryApplication*>(this);
}

void GalleryApplication::makeStatusItem() {
    NSStatusBar& bar = NSStatusBar::systemStatusBar();
    m_statusItem = bar.statusItemWithLength(statusItemWidth);
    m_statusItem->setTitle(applicationDisplayName());
    m_statusItem->setToolTip(QStringLiteral("The gallery's main window"));
    m_statusItemView = new LTStatusItemView(NSMakeRect(0, 0, statusItemWidth, bar.thickness()));
    m_statusItem->setView(std::unique_ptr<NSView>(m_statusItemView));
}

void GalleryApplication::makeMainWindow() {
    m_mainWindow = std::make_unique<LTWindow>(NSRect{NSZeroPoint, mainWindowSize}, NSBorderlessWindowMask,
                                              NSBackingStoreBuffered, false);
    m_mainWindow->setWindowTitle(QStringLiteral("Main window"));
    m_mainWindow->awakeFromNib();
    constexpr NSRect textFrame{{24, 70}, {272, 80}};
    auto* const text = new NSTextField(textFrame, m_mainWindow->contentView());
    text->setAutoresizingMask(NSViewWidthSizable | NSViewMinYMargin);
    text->setStringValue(QStringLiteral("The main window hangs under its status item and points at it, wherever the "
                                        "desktop shows the item."));
    text->setTextColor(NSColor::whiteColor());
    connect(new QShortcut(Qt::Key_Escape, m_mainWindow.get()), &QShortcut::activated, this, [this] {
        closeMainWindow();
        switchBackToApp();
    });
}

void GalleryApplication::toggleMainWindow() {
    if (m_mainWindow->isVisible()) {
        closeMainWindow();
    } else if (!modalWindow()) {
        activateIgnoringOtherApps(true);
        m_statusItemView->setHighlighted(true);
        m_mainWindow->makeKeyAndOrderFront(nullptr);
    }
}

void GalleryApplication::closeMainWindow() {
    if (m_mainWindow->isVisible()) {
        m_mainWindow->orderOut(nullptr);
        m_statusItemView->setHighlighted(false);
    }
}

void GalleryApplication::setReducesMotion(bool flag) {
    NSUserDefaults::standardUserDefaults().registerDefaults({{VXReduceMotion, flag}});
}
