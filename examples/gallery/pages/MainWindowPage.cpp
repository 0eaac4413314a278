// SPDX-License-Identifier: MIT
#include "MainWindowPage.h"

#include "../GalleryApplication.h"
#include "../PictureBook.h"
#include "../SettingsPane.h"
#include "../Stage.h"

#include <VXKit/app/LTApplicationProtocol.h>
#include <VXKit/app/LTStatusItemView.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>

namespace {

constexpr double translucent = 0.6;

/// What tells the status item that the host syncs.
void postSync(bool begins) {
    NSNotificationCenter::defaultCenter().postNotificationName(
        begins ? LTSyncManagerHasBegunSyncing : LTSyncManagerHasEndedSyncing, nullptr);
}

void setWindowSize(const NSSize& size) {
    LTWindow& window = GalleryApplication::shared().mainWindow();
    window.setFrame({window.frame().origin, size}, true);
    window.setFrame(window.frame(), true);
}

} // namespace

MainWindowPage::MainWindowPage()
    : GalleryPage(QStringLiteral("main-window"), QStringLiteral("Main window"),
                  QStringLiteral("Hangs under the status item, the application's symbol, and points at it. A click on "
                                 "the symbol toggles it."),
                  {QStringLiteral("LTWindow"), QStringLiteral("LTStatusItemView"), QStringLiteral("LTApplication"),
                   QStringLiteral("LTApplicationProtocol")}) {}

MainWindowPage::~MainWindowPage() = default;

void MainWindowPage::build(Stage& stage, SettingsPane& settings) {
    GalleryApplication& application = GalleryApplication::shared();
    stage.putText(NSMakeRect(0, 0, 420, 48),
                  QStringLiteral("The symbol is in the tray or the panel of the desktop, and in the corner of the "
                                 "screen where there is neither. The window closes when another application comes to "
                                 "the front."));
    const NSSize size = application.mainWindow().frame().size;
    settings.addButton(QStringLiteral("&Toggle Main Window"), [&application] { application.toggleMainWindow(); });
    settings.addCheckBox(QStringLiteral("Symbol highlighted"), false,
                         [&application](bool isOn) { application.statusItemView().setHighlighted(isOn); });
    settings.addCheckBox(QStringLiteral("Syncing: it pulses"), false, [](bool isOn) { postSync(isOn); });
    settings.addCheckBox(QStringLiteral("Closes when left"), application.shouldCloseMainWindowOnDeactivate(),
                         [&application](bool isOn) {
                             application.setClosesMainWindow(isOn);
                             application.mainWindow().display();
                         });
    settings.addSlider(QStringLiteral("Opacity"), 0.2, 1, static_cast<double>(application.mainWindowOpacity()),
                       [&application](double opacity) {
                           application.setMainWindowOpacity(static_cast<float>(opacity));
                           application.mainWindow().display();
                       });
    settings.addSlider(QStringLiteral("Width"), 160, 600, size.width, [&application](double width) {
        setWindowSize({width, application.mainWindow().frame().size.height});
    });
    settings.addSlider(QStringLiteral("Height"), 140, 500, size.height, [&application](double height) {
        setWindowSize({application.mainWindow().frame().size.width, height});
    });
}

void MainWindowPage::leave() {
    postSync(false);
    GalleryApplication::shared().closeMainWindow();
}

void MainWindowPage::takePictures(PictureBook& book) {
    GalleryApplication& application = GalleryApplication::shared();
    for (const bool isHighlighted : {false, true}) {
        const QString state = isHighlighted ? QStringLiteral("highlighted") : QStringLiteral("normal");
        book.addStates(QStringLiteral("status-item-") + state, QStringLiteral("Symbol ") + state,
                       [isHighlighted] {
                           auto* const view = new LTStatusItemView(NSMakeRect(0, 0, 30, 22));
                           view->setHighlighted(isHighlighted);
                           return view;
                       },
                       {ControlState::Normal});
    }
    const auto take = [&](const QString& name, const QString& caption) {
        application.toggleMainWindow();
        // With the symbol that it hangs under.
        book.addArea(
            name, caption,
            NSInsetRect(NSUnionRect(application.mainWindow().frame(), application.statusItemView().frameOfStatusItem()),
                        -24, -24));
        application.closeMainWindow();
    };
    take(QStringLiteral("main-window"), QStringLiteral("Main window"));
    // One that closes with the application is never seen through.
    application.setClosesMainWindow(false);
    application.setMainWindowOpacity(static_cast<float>(translucent));
    take(QStringLiteral("main-window-translucent"), QStringLiteral("Main window, translucent"));
    application.setMainWindowOpacity(1);
    application.setClosesMainWindow(true);
}
