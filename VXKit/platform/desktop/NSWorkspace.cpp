// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/NSWorkspace.h>

#include <QDesktopServices>
#include <QProcess>

#include <utility>

namespace {

std::unique_ptr<NSWorkspace>& shared() {
    static std::unique_ptr<NSWorkspace> workspace;
    return workspace;
}

} // namespace

NSWorkspace::NSWorkspace() = default;

NSWorkspace::~NSWorkspace() = default;

NSWorkspace& NSWorkspace::sharedWorkspace() {
    if (!shared()) {
        shared() = std::make_unique<NSWorkspace>();
    }
    return *shared();
}

void NSWorkspace::setSharedWorkspace(std::unique_ptr<NSWorkspace> workspace) {
    shared() = std::move(workspace);
}

bool NSWorkspace::knowsApplications() const {
    return false;
}

std::optional<NSDictionary> NSWorkspace::activeApplication() const {
    return std::nullopt;
}

std::vector<NSDictionary> NSWorkspace::launchedApplications() const {
    return {};
}

bool NSWorkspace::launchApplication(const QString& path) {
    return !path.isEmpty() && QProcess::startDetached(path, {});
}

bool NSWorkspace::openURL(const QUrl& url) {
    return QDesktopServices::openUrl(url);
}

void NSWorkspace::setFrontProcess(ProcessSerialNumber /*process*/) {}

void SetFrontProcess(ProcessSerialNumber process) {
    NSWorkspace::sharedWorkspace().setFrontProcess(process);
}
