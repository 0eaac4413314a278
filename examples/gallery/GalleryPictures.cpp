// SPDX-License-Identifier: MIT
#include "GalleryPictures.h"

#include "GalleryApplication.h"
#include "GalleryWindow.h"
#include "PictureBook.h"

#include <VXKit/controls/LTHUDTableView.h>
#include <VXKit/platform/desktop/MotionPreference.h>

#include <QScopeGuard>

bool takeGalleryPictures(GalleryWindow& window, PictureBook& book) {
    GalleryApplication& application = GalleryApplication::shared();
    const auto motion =
        qScopeGuard([before = prefersReducedMotion()] { GalleryApplication::setReducesMotion(before); });
    GalleryApplication::setReducesMotion(true);
    QApplication::setCursorFlashTime(0); // the caret of a field with the keyboard is always seen
    application.setShownActive(true);
    for (int index = 0; index < static_cast<int>(window.pages().size()) && book.problem().isNull(); ++index) {
        GalleryPage& page = *window.pages()[static_cast<std::size_t>(index)];
        window.showPage(index);
        window.makeKeyAndOrderFront(nullptr);
        window.makeFirstResponder(&window.list());
        book.addPage(page.name(), window);
        // Out of the way of what the page is about.
        window.orderOut(nullptr);
        book.beginSection(page.title());
        page.takePictures(book);
    }
    if (book.problem().isNull()) {
        book.writeContactSheet();
    }
    return book.problem().isNull();
}
