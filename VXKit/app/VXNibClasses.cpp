// SPDX-License-Identifier: MIT
#include <VXKit/app/VXNibClasses.h>

#include <VXKit/app/LTStatusItemView.h>
#include <VXKit/app/LTWindow.h>
#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDFlatButton.h>
#include <VXKit/controls/LTHUDRadioButton.h>
#include <VXKit/controls/LTHUDSecureTextField.h>
#include <VXKit/controls/LTHUDTextField.h>
#include <VXKit/controls/LTLeftResizeCorner.h>
#include <VXKit/controls/LTNameTag.h>
#include <VXKit/controls/LTResizeCorner.h>
#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/NSNib.h>
#include <VXKit/platform/appkit/WebView.h>
#include <VXKit/transitions/LTPreferenceTabs.h>
#include <VXKit/transitions/LTSwitchableView.h>

#include <QString>

void VXRegisterNibClasses() {
    static const bool once = [] {
        NSNib::registerClass<LTHUDButton>(QStringLiteral("LTHUDButton"));
        NSNib::registerClass<LTHUDCheckBox>(QStringLiteral("LTHUDCheckBox"));
        NSNib::registerClass<LTHUDFlatButton>(QStringLiteral("LTHUDFlatButton"));
        NSNib::registerClass<LTHUDRadioButton>(QStringLiteral("LTHUDRadioButton"));
        NSNib::registerClass<LTHUDSecureTextField>(QStringLiteral("LTHUDSecureTextField"));
        NSNib::registerClass<LTHUDTextField>(QStringLiteral("LTHUDTextField"));
        NSNib::registerClass<LTHUDWindow>(QStringLiteral("LTHUDWindow"));
        NSNib::registerClass<LTLeftResizeCorner>(QStringLiteral("LTLeftResizeCorner"));
        NSNib::registerClass<LTNameTag>(QStringLiteral("LTNameTag"));
        NSNib::registerClass<LTPreferenceTabs>(QStringLiteral("LTPreferenceTabs"));
        NSNib::registerClass<LTResizeCorner>(QStringLiteral("LTResizeCorner"));
        NSNib::registerClass<LTStatusItemView>(QStringLiteral("LTStatusItemView"));
        NSNib::registerClass<LTSwitchableView>(QStringLiteral("LTSwitchableView"));
        NSNib::registerClass<LTWindow>(QStringLiteral("LTWindow"));
        NSNib::registerClass<WebView>(QStringLiteral("WebView"));
        return true;
    }();
    static_cast<void>(once);
}
