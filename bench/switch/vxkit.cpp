// SPDX-License-Identifier: MIT
// The kit's side: a switchable view.
//
//     bench_switch_vxkit
#include "Measured.h"

#include <VXKit/app/LTApplication.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/appkit/SnapshotWindow.h>
#include <VXKit/transitions/LTSwitchableView.h>

#include <array>

namespace {

NSView* makePage(const QString& title) {
    auto* const page = new NSView;
    page->setFrame(NSMakeRect(0, 0, measuredWidth, measuredHeight));
    fillPage(*page, title);
    return page;
}

} // namespace

int main(int argc, char** argv) {
    const LTApplication application(argc, argv);
    NSWindow window(NSMakeRect(200, 200, measuredWidth, measuredHeight), NSTitledWindowMask, NSBackingStoreBuffered,
                    false);
    auto* const container = new LTSwitchableView(NSMakeRect(0, 0, measuredWidth, measuredHeight));
    ViewCore::of(window.contentView())->addSubview(container);
    const std::array<NSView*, 2> pages{makePage(QStringLiteral("General")), makePage(QStringLiteral("Accounts"))};
    container->setANewView(pages[0], 0);
    window.orderFront(nullptr);
    waitUntilShown(window);
    std::size_t shown = 0;
    const Switches switches([&] {
        shown = 1 - shown;
        container->setANewView(pages[shown], static_cast<int>(1 - shown));
        return pages[shown];
    });
    return QCoreApplication::exec();
}
