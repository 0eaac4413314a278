// SPDX-License-Identifier: MIT
#include <VXKit/app/LTApplication.h>

#include <VXKit/app/LTHelpLoader.h>
#include <VXKit/app/VXNibClasses.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/appkit/NSStatusBar.h>
#include <VXKit/platform/desktop/NSWorkspace.h>
#include <VXKit/platform/desktop/WindowEffects.h>
#include <VXKit/platform/foundation/NSProcessInfo.h>

#include <QCursor>

#include <cstdint>

namespace {

/// The text under `key`; a null string where there is none, which equals no text.
QString textOf(const NSDictionary& application, const char* key) {
    const auto* text = application.objectOfType<std::string>(key);
    return text ? QString::fromStdString(*text) : QString();
}

std::uint32_t wordOf(const NSDictionary& application, const char* key) {
    const NSPropertyList* number = application.objectForKey(key);
    return number ? static_cast<std::uint32_t>(number->integerValue()) : 0;
}

/// Equality of two strings of which either may be nil, which equals nothing, itself included.
bool areEqualStrings(const QString& left, const QString& right) {
    return !left.isNull() && !right.isNull() && left == right;
}

} // namespace

LTApplication::LTApplication(int& argc, char** argv) : NSApplication(argc, argv) {
    VXRegisterNibClasses();
    WindowEffects& effects = WindowEffects::sharedEffects();
    connect(&effects, &WindowEffects::pressedElsewhere, this, &LTApplication::mouseWasPressedElsewhere);
    NSNotificationCenter& centre = NSNotificationCenter::defaultCenter();
    m_didBecomeActive =
        centre.addObserverForName(NSApplicationDidBecomeActiveNotification, this, [this](const NSNotification&) {
            WindowEffects::sharedEffects().setWatchesPresses(*this, true);
        });
    m_didResignActive =
        centre.addObserverForName(NSApplicationDidResignActiveNotification, this, [this](const NSNotification&) {
            WindowEffects::sharedEffects().setWatchesPresses(*this, false);
        });
}

LTApplication::~LTApplication() = default;

void LTApplication::awakeFromNib() {
    m_willResignActive = NSNotificationCenter::defaultCenter().addObserverForName(
        NSApplicationWillResignActiveNotification, nullptr,
        [this](const NSNotification& notification) { _unsetActive(notification); });
}

void LTApplication::activateIgnoringOtherApps(bool flag) {
    _isActive = true;
    if (supportsSwitchingBackToPreviousApplication()) {
        const NSDictionary frontmost = NSWorkspace::sharedWorkspace().activeApplication().value_or(NSDictionary());
        // The other's display name against this process's name, on purpose: where an application's two names differ it
        // notes itself, and its hosts count on that.
        if (!areEqualStrings(textOf(frontmost, NSApplicationNameKey), NSProcessInfo::processInfo().processName())) {
            _theOtherApp = textOf(frontmost, NSApplicationPathKey);
        }
    }
    NSApplication::activateIgnoringOtherApps(flag);
}

void LTApplication::switchBackToApp() {
    if (!supportsSwitchingBackToPreviousApplication()) {
        return;
    }
    NSWorkspace& workspace = NSWorkspace::sharedWorkspace();
    if (!shouldSwitchBackGracefully()) {
        workspace.launchApplication(_theOtherApp);
        return;
    }
    // Asked afresh for every entry, since bringing one forward may change the list; and never stopping at the first
    // match, so that of several running processes the last one ends frontmost.
    for (std::int32_t index = 0;; ++index) {
        const std::vector<NSDictionary> applications = workspace.launchedApplications();
        if (static_cast<std::size_t>(index) >= applications.size()) {
            return;
        }
        const NSDictionary& application = applications[static_cast<std::size_t>(index)];
        if (areEqualStrings(textOf(application, NSApplicationPathKey), _theOtherApp)) {
            SetFrontProcess({.highLongOfPSN = wordOf(application, NSApplicationProcessSerialNumberHighKey),
                             .lowLongOfPSN = wordOf(application, NSApplicationProcessSerialNumberLowKey)});
        }
    }
}

void LTApplication::showHelp(QObject* /*sender*/) {
    if (helpURL().isEmpty()) {
        return;
    }
    LTHelpLoader::loader();
    LTHelpLoader::pop();
}

/// A press on the bare desktop or on a panel gives the keyboard to nobody, and one on another window does so only after
/// a while; a window that closes when the application is left closes at the press.
void LTApplication::mouseWasPressedElsewhere() {
    const NSPoint pointer = NSScreenPointFromGlobal(QCursor::pos());
    // A press on the status item, where a panel shows it, will be told by that: it toggles the window.
    if (shouldCloseMainWindowOnDeactivate() && !NSStatusBar::systemStatusBar().hasStatusItemAtPoint(pointer)) {
        deactivate();
    }
}

void LTApplication::_unsetActive(const NSNotification& /*notification*/) {
    _isActive = false;
}
