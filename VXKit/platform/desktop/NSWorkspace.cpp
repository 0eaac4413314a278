// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/NSWorkspace.h>

#include <VXKit/platform/desktop/X11Connection.h>
#include <VXKit/platform/desktop/X11Workspace.h>

#include <QDesktopServices>
#include <QProcess>

#include <utility>

namespace {

/// The workspace that was put in the place of the platform's own, if any.
std::unique_ptr<NSWorkspace>& replacementWorkspace() {
    static std::unique_ptr<NSWorkspace> workspace;
    return workspace;
}

/// Chosen at every call, since the platform is known only while there is an application object.
NSWorkspace& platformWorkspace() {
    static NSWorkspace unknown;
    static X11Workspace x11;
    return X11Connection::shared() ? x11 : unknown;
}

} // namespace

NSWorkspace::NSWorkspace() = default;

NSWorkspace::~NSWorkspace() = default;

NSWorkspace& NSWorkspace::sharedWorkspace() {
    return replacementWorkspace() ? *replacementWorkspace() : platformWorkspace();
}

void NSWorkspace::setSharedWorkspace(std::unique_ptr<NSWorkspace> workspace) {
    replacementWorkspace() = std::move(workspace);
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
