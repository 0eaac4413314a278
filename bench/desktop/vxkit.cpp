// SPDX-License-Identifier: MIT
// The kit's side: a status item and a list in the kit's main window.
//
//     bench_desktop_vxkit [--closed] [--pulse]   --closed: without the window; --pulse: the symbol pulses
#include "Measured.h"

#include <VXKit/app/LTApplication.h>
#include <VXKit/app/LTStatusItemView.h>
#include <VXKit/app/LTWindow.h>
#include <VXKit/platform/appkit/NSStatusBar.h>
#include <VXKit/platform/appkit/NSStatusItem.h>

#include <memory>

namespace {

constexpr double itemWidth = 22;

class Host : public LTApplication, public LTApplicationController {
public:
    using LTApplication::LTApplication;

    LTApplicationController* applicationController() const override { return const_cast<Host*>(this); }
    NSStatusItem* statusItem() const override { return item.get(); }
    void toggleMainWindow() override { window->isVisible() ? closeMainWindow() : showMainWindow(); }
    void closeMainWindow() override { window->orderOut(nullptr); }
    void showMainWindow() { window->makeKeyAndOrderFront(nullptr); }

    std::shared_ptr<NSStatusItem> item;
    std::unique_ptr<LTWindow> window;
};

} // namespace

int main(int argc, char** argv) {
    Host host(argc, argv);
    NSStatusBar& bar = NSStatusBar::systemStatusBar();
    host.item = bar.statusItemWithLength(itemWidth);
    host.item->setView(std::make_unique<LTStatusItemView>(NSMakeRect(0, 0, itemWidth, bar.thickness())));

    if (!isAskedFor("--closed")) {
        const NSRect content = NSMakeRect(0, 0, measuredSize.width(), measuredSize.height());
        host.window = std::make_unique<LTWindow>(content, 0, NSBackingStoreBuffered, false);
        auto* list = new MeasuredList(host.window->contentView());
        list->setGeometry(10, 50, measuredSize.width() - 20, measuredSize.height() - 60);
        list->fill();
        host.window->awakeFromNib();
        host.activateIgnoringOtherApps(true);
        host.showMainWindow();
    }
    if (isAskedFor("--pulse")) {
        NSNotificationCenter::defaultCenter().postNotificationName(LTSyncManagerHasBegunSyncing, nullptr);
    }
    return host.run();
}
