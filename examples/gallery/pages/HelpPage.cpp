// SPDX-License-Identifier: MIT
#include "HelpPage.h"

#include "../GalleryApplication.h"
#include "../PictureBook.h"
#include "../SettingsPane.h"
#include "../Stage.h"

#include <VXKit/app/LTHelpLoader.h>
#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/appkit/WebView.h>

#include <QEventLoop>
#include <QTimer>

namespace {

constexpr int longestLoad = 10'000; // milliseconds

NSWindow* helpWindow() {
    WebView* const view = LTHelpLoader::exists() ? LTHelpLoader::loader().textView() : nullptr;
    return view ? view->ViewCore::window() : nullptr;
}

} // namespace

HelpPage::HelpPage()
    : GalleryPage(
          QStringLiteral("help"), QStringLiteral("Help window"),
          QStringLiteral("Shows the page at the address that the host names, in a web engine or as text. Escape "
                         "closes it."),
          {QStringLiteral("LTHelpLoader"), QStringLiteral("WebView")}) {}

HelpPage::~HelpPage() = default;

void HelpPage::build(Stage& stage, SettingsPane& settings) {
    stage.putText(NSMakeRect(0, 0, 420, 32), QStringLiteral("The page is the gallery's own help."));
    settings.addButton(QStringLiteral("Show &Help"), [] { GalleryApplication::shared().showHelp(nullptr); });
    settings.addSlider(QStringLiteral("Size of the text, in steps"), -2, 4, 0, [](double steps) {
        if (!LTHelpLoader::exists()) {
            return;
        }
        WebView& view = *LTHelpLoader::loader().textView();
        view.resetPageZoom();
        for (int step = 0; step < static_cast<int>(steps); ++step) {
            view.zoomPageIn();
        }
        for (int step = 0; step > static_cast<int>(steps); --step) {
            view.zoomPageOut();
        }
    });
}

void HelpPage::leave() {
    if (NSWindow* window = helpWindow()) {
        window->orderOut(nullptr);
    }
}

void HelpPage::takePictures(PictureBook& book) {
    QEventLoop loop;
    WebView* const view = LTHelpLoader::loader().textView();
    QObject::connect(view, &WebView::loadingFinished, &loop, &QEventLoop::quit);
    QTimer::singleShot(longestLoad, &loop, &QEventLoop::quit);
    LTHelpLoader::pop();
    if (view->isLoading()) {
        loop.exec();
    }
    book.addWindow(QStringLiteral("help-window"), QStringLiteral("Help window"), *helpWindow(), 8);
    helpWindow()->orderOut(nullptr);
}
