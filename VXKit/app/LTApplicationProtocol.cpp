// SPDX-License-Identifier: MIT
#include <VXKit/app/LTApplicationProtocol.h>

#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <QGuiApplication>

namespace {

constexpr const char* closeMainWindowKey = "VXCloseMainWindowOnDeactivate";
constexpr float opaque = 1.0F;

} // namespace

LTApplicationController::~LTApplicationController() = default;

LTSyncManagerClass::~LTSyncManagerClass() = default;

LTApplicationProtocol::LTApplicationProtocol() = default;

LTApplicationProtocol::~LTApplicationProtocol() = default;

QUrl LTApplicationProtocol::helpURL() const {
    return {};
}

bool LTApplicationProtocol::supportsSwitchingBackToPreviousApplication() const {
    return true;
}

bool LTApplicationProtocol::shouldSwitchBackGracefully() const {
    return true;
}

LTApplicationController* LTApplicationProtocol::applicationController() const {
    return nullptr;
}

LTSyncManagerClass* LTApplicationProtocol::syncManagerClass() const {
    return nullptr;
}

bool LTApplicationProtocol::shouldCloseMainWindowOnDeactivate() const {
    const std::optional<NSPropertyList> value = NSUserDefaults::standardUserDefaults().objectForKey(closeMainWindowKey);
    return !value || value->boolValue();
}

float LTApplicationProtocol::mainWindowOpacity() const {
    return opaque;
}

LTApplicationProtocol& VXApplicationHooks() {
    static LTApplicationProtocol defaults;
    auto* hooks = dynamic_cast<LTApplicationProtocol*>(QCoreApplication::instance());
    return hooks ? *hooks : defaults;
}

bool VXApplicationIsActive() {
    if (const NSApplication* application = NSApplication::sharedApplication()) {
        return application->isActive();
    }
    return QGuiApplication::applicationState() == Qt::ApplicationActive;
}
