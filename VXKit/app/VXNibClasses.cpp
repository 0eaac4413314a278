// SPDX-License-Identifier: MIT
#include <VXKit/app/VXNibClasses.h>

#include <VXKit/app/LTStatusItemView.h>
#include <VXKit/app/LTWindow.h>
#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDFlatButton.h>
#include <VXKit/controls/LTHUDProgressIndicator.h>
#include <VXKit/controls/LTHUDRadioButton.h>
#include <VXKit/controls/LTHUDScrollBar.h>
#include <VXKit/controls/LTHUDSecureTextField.h>
#include <VXKit/controls/LTHUDTableView.h>
#include <VXKit/controls/LTHUDTextField.h>
#include <VXKit/controls/LTLeftResizeCorner.h>
#include <VXKit/controls/LTLine.h>
#include <VXKit/controls/LTNameTag.h>
#include <VXKit/controls/LTResizeCorner.h>
#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/NSBox.h>
#include <VXKit/platform/appkit/NSNib.h>
#include <VXKit/platform/appkit/NSProgressIndicator.h>
#include <VXKit/platform/appkit/NSScroller.h>
#include <VXKit/platform/appkit/NSTableView.h>
#include <VXKit/platform/appkit/WebView.h>
#include <VXKit/transitions/LTPreferenceTabs.h>
#include <VXKit/transitions/LTSwitchableView.h>

#include <QString>

void VXRegisterNibClasses() {
    static const bool once = [] {
        NSNib::registerClass<LTHUDButton>(QStringLiteral("LTHUDButton"));
        NSNib::registerClass<LTHUDCheckBox>(QStringLiteral("LTHUDCheckBox"));
        NSNib::registerClass<LTHUDFlatButton>(QStringLiteral("LTHUDFlatButton"));
        NSNib::registerClass<LTHUDProgressIndicator>(QStringLiteral("LTHUDProgressIndicator"));
        NSNib::registerClass<LTHUDRadioButton>(QStringLiteral("LTHUDRadioButton"));
        NSNib::registerClass<LTHUDScrollBar>(QStringLiteral("LTHUDScrollBar"));
        NSNib::registerClass<LTHUDSecureTextField>(QStringLiteral("LTHUDSecureTextField"));
        NSNib::registerClass<LTHUDTableView>(QStringLiteral("LTHUDTableView"));
        NSNib::registerClass<LTHUDTextField>(QStringLiteral("LTHUDTextField"));
        NSNib::registerClass<LTHUDWindow>(QStringLiteral("LTHUDWindow"));
        NSNib::registerClass<LTLine>(QStringLiteral("LTLine"));
        NSNib::registerClass<LTLeftResizeCorner>(QStringLiteral("LTLeftResizeCorner"));
        NSNib::registerClass<LTNameTag>(QStringLiteral("LTNameTag"));
        NSNib::registerClass<LTPreferenceTabs>(QStringLiteral("LTPreferenceTabs"));
        NSNib::registerClass<LTResizeCorner>(QStringLiteral("LTResizeCorner"));
        NSNib::registerClass<LTStatusItemView>(QStringLiteral("LTStatusItemView"));
        NSNib::registerClass<LTSwitchableView>(QStringLiteral("LTSwitchableView"));
        NSNib::registerClass<LTWindow>(QStringLiteral("LTWindow"));
        NSNib::registerClass<WebView>(QStringLiteral("WebView"));
        NSNib::registerClass<NSBox>(QStringLiteral("NSBox"));
        NSNib::registerClass<NSProgressIndicator>(QStringLiteral("NSProgressIndicator"));
        NSNib::registerClass<NSScroller>(QStringLiteral("NSScroller"));
        NSNib::registerClass<NSTableView>(QStringLiteral("NSTableView"));
        return true;
    }();
    static_cast<void>(once);
}
