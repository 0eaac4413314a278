// SPDX-License-Identifier: MIT
#include "PopAndZoomPage.h"

#include "../DemoPanel.h"
#include "../PictureBook.h"
#include "../SettingsPane.h"
#include "../Stage.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTLine.h>
#include <VXKit/hud/NSWindow+NSWindowAdditions.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/transitions/NSWindow+NoodleEffects.h>

namespace {

constexpr NSSize windowSize{360, 220}; // points
constexpr double halfWay = 0.5;

/// What lies at `share` of the way from one frame to another.
NSRect between(const NSRect& from, const NSRect& to, double share) {
    const auto mix = [share](double a, double b) { return a + (b - a) * share; };
    return {{mix(from.origin.x, to.origin.x), mix(from.origin.y, to.origin.y)},
            {mix(from.size.width, to.size.width), mix(from.size.height, to.size.height)}};
}

} // namespace

PopAndZoomPage::PopAndZoomPage()
    : GalleryPage(QStringLiteral("pop-and-zoom"), QStringLiteral("Pop and zoom"),
                  QStringLiteral("A window grows out of its middle, or of a place on the screen, and shrinks back into "
                                 "it."),
                  {QStringLiteral("NSWindow+NoodleEffects"), QStringLiteral("NoodleZoomWindow")}) {}

PopAndZoomPage::~PopAndZoomPage() = default;

void PopAndZoomPage::build(Stage& stage, SettingsPane& settings) {
    m_window = makeDemoPanel(windowSize, QStringLiteral("Pop and zoom"), QStringLiteral("Here I am."));
    m_from = &stage.put<LTLine>(NSMakeRect(0, 0, 120, 60));
    stage.putText(NSMakeRect(0, 68, 420, 16), QStringLiteral("The place that the window zooms out of, and into"));
    settings.addButton(QStringLiteral("&Pop"), [this] { pop(*m_window); });
    settings.addButton(QStringLiteral("Pop &Away"), [this] { popAway(*m_window); });
    settings.addButton(QStringLiteral("&Zoom On"), [this] { zoomOnFromRect(*m_window, zoomRect()); });
    settings.addButton(QStringLiteral("Zoom O&ff"), [this] { zoomOffToRect(*m_window, zoomRect()); });
    settings.addNote(QStringLiteral("The farther, the longer it takes; without motion where less of it is wished for."),
                     3);
}

NSRect PopAndZoomPage::zoomRect() const {
    return NSScreenRectFromGlobal(QRectF(m_from->mapToGlobal(QPoint()), QSizeF(m_from->size())));
}

void PopAndZoomPage::leave() {
    m_window.reset();
}

void PopAndZoomPage::takePictures(PictureBook& book) {
    const NSRect frame = m_window->frame();
    const auto take = [&](const QString& name, const QString& caption, const NSRect& from, bool hasShadow) {
        NoodleZoomWindow* const zoom = _createZoomWindowWithRect(*m_window, from);
        zoom->setFrame(between(from, frame, halfWay), true);
        zoom->orderFront(nullptr);
        if (hasShadow) {
            setUpWindowShadow(*zoom);
        }
        book.addArea(name, caption, NSInsetRect(NSUnionRect(from, frame), -40, -40));
        zoom->close();
    };
    take(QStringLiteral("pop-half"), QStringLiteral("Pop at 0.5"), NSMakeRect(NSMidX(frame), NSMidY(frame), 1, 1),
         true);
    take(QStringLiteral("zoom-half"), QStringLiteral("Zoom at 0.5"), zoomRect(), false);
    pop(*m_window);
    book.addWindow(QStringLiteral("pop-end"), QStringLiteral("Pop at its end"), *m_window, 40);
    popAway(*m_window);
}
