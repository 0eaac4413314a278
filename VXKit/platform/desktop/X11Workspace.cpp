// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/X11Workspace.h>

#include <VXKit/platform/desktop/X11Connection.h>
#include <VXKit/platform/foundation/NSProcessInfo.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSysInfo>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <limits>

#include <signal.h>
#include <unistd.h>

namespace {

/// What the kernel adds to the path of a program whose file was replaced or taken away.
constexpr QLatin1String deletedMark(" (deleted)");

QStringView firstLabel(QStringView hostName) {
    const qsizetype dot = hostName.indexOf(u'.');
    return dot < 0 ? hostName : hostName.left(dot);
}

/// Whether a client machine is this one. Some clients give the full name of the machine and others the short one.
bool isThisMachine(const QString& clientMachine) {
    const QString own = QSysInfo::machineHostName();
    if (clientMachine == own || clientMachine == QLatin1String("localhost")) {
        return true;
    }
    const bool isOneShort = !clientMachine.contains(u'.') || !own.contains(u'.');
    return isOneShort && firstLabel(clientMachine) == firstLabel(own);
}

bool isRunning(std::uint32_t process) {
    return kill(static_cast<pid_t>(process), 0) == 0 || errno == EPERM;
}

/// The local process that a client window belongs to, or 0. The two hints are the client's word only: without its
/// machine it counts as local.
std::uint32_t processOf(const X11Connection& x11, xcb_window_t window) {
    const std::uint32_t process = x11.wordOfProperty(window, "_NET_WM_PID", XCB_ATOM_CARDINAL).value_or(0);
    if (process == 0 || process > static_cast<std::uint32_t>(std::numeric_limits<pid_t>::max())) {
        return 0;
    }
    const QByteArray machine = x11.bytesOfProperty(window, "WM_CLIENT_MACHINE");
    if (!machine.isEmpty() && !isThisMachine(QString::fromLocal8Bit(machine))) {
        return 0;
    }
    return isRunning(process) ? process : 0;
}

/// The path of a process's program; empty where the kernel does not tell it to this user.
QString programOf(std::uint32_t process) {
    QString path = QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(process));
    if (path.endsWith(deletedMark) && !QFileInfo::exists(path)) {
        path.chop(deletedMark.size());
    }
    return path;
}

/// The kernel's short name of a process, for one whose program is not told.
QString shortNameOf(std::uint32_t process) {
    QFile file(QStringLiteral("/proc/%1/comm").arg(process));
    return file.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(file.readAll()).trimmed() : QString();
}

NSDictionary describe(std::uint32_t process) {
    const bool isThisOne = process == static_cast<std::uint32_t>(getpid());
    const QString path = isThisOne ? QCoreApplication::applicationFilePath() : programOf(process);
    QString name = isThisOne ? NSProcessInfo::processInfo().processName() : QFileInfo(path).fileName();
    if (name.isEmpty()) {
        name = shortNameOf(process);
    }
    NSDictionary description;
    description.setObject(name, NSApplicationNameKey);
    if (!path.isEmpty()) {
        description.setObject(path, NSApplicationPathKey);
    }
    description.setObject(0, NSApplicationProcessSerialNumberHighKey);
    description.setObject(process, NSApplicationProcessSerialNumberLowKey);
    return description;
}

bool isHidden(const X11Connection& x11, xcb_window_t window) {
    const std::vector<std::uint32_t> states = x11.wordsOfProperty(window, "_NET_WM_STATE", XCB_ATOM_ATOM);
    return std::find(states.begin(), states.end(), x11.atom("_NET_WM_STATE_HIDDEN")) != states.end();
}

/// The client windows from the topmost downwards, as far as the window manager tells their order.
std::vector<std::uint32_t> clientsFromTheTop(const X11Connection& x11) {
    std::vector<std::uint32_t> clients = x11.wordsOfProperty(x11.root(), "_NET_CLIENT_LIST_STACKING", XCB_ATOM_WINDOW);
    if (clients.empty()) {
        clients = x11.wordsOfProperty(x11.root(), "_NET_CLIENT_LIST", XCB_ATOM_WINDOW);
    }
    std::reverse(clients.begin(), clients.end());
    return clients;
}

/// The window that brings `process` forward, or XCB_NONE.
xcb_window_t windowToActivate(const X11Connection& x11, std::uint32_t process) {
    xcb_window_t hidden = XCB_NONE;
    for (const xcb_window_t window : clientsFromTheTop(x11)) {
        if (processOf(x11, window) != process) {
            continue;
        }
        if (!isHidden(x11, window)) {
            return window;
        }
        hidden = hidden == XCB_NONE ? window : hidden;
    }
    return hidden;
}

/// The processes with client windows, each once, in the order of the window manager's list.
std::vector<std::uint32_t> processes(const X11Connection& x11) {
    std::vector<std::uint32_t> found;
    for (const xcb_window_t window : x11.wordsOfProperty(x11.root(), "_NET_CLIENT_LIST", XCB_ATOM_WINDOW)) {
        const std::uint32_t process = processOf(x11, window);
        if (process != 0 && std::find(found.begin(), found.end(), process) == found.end()) {
            found.push_back(process);
        }
    }
    return found;
}

} // namespace

bool X11Workspace::knowsApplications() const {
    const X11Connection* x11 = X11Connection::shared();
    return x11 && x11->windowManagerSupports("_NET_ACTIVE_WINDOW") && x11->windowManagerSupports("_NET_CLIENT_LIST");
}

std::optional<NSDictionary> X11Workspace::activeApplication() const {
    const X11Connection* x11 = X11Connection::shared();
    if (!x11) {
        return std::nullopt;
    }
    if (x11->hasKeyboard()) {
        return describe(static_cast<std::uint32_t>(getpid()));
    }
    const auto window = x11->wordOfProperty(x11->root(), "_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW);
    const std::uint32_t process = window ? processOf(*x11, *window) : 0;
    return process != 0 ? std::optional(describe(process)) : std::nullopt;
}

std::vector<NSDictionary> X11Workspace::launchedApplications() const {
    const X11Connection* x11 = X11Connection::shared();
    if (!x11) {
        return {};
    }
    std::vector<NSDictionary> applications;
    for (const std::uint32_t process : processes(*x11)) {
        applications.push_back(describe(process));
    }
    return applications;
}

bool X11Workspace::launchApplication(const QString& path) {
    const X11Connection* x11 = X11Connection::shared();
    if (!x11 || path.isEmpty()) {
        return NSWorkspace::launchApplication(path);
    }
    // The kernel tells the program without the links on the way to it.
    const QString program = QFileInfo(path).canonicalFilePath();
    for (const std::uint32_t process : processes(*x11)) {
        const QString running = programOf(process);
        if (!running.isEmpty() && (running == path || running == program)) {
            setFrontProcess({.highLongOfPSN = 0, .lowLongOfPSN = process});
            return true;
        }
    }
    return NSWorkspace::launchApplication(path);
}

void X11Workspace::setFrontProcess(ProcessSerialNumber process) {
    const X11Connection* x11 = X11Connection::shared();
    if (!x11 || process.highLongOfPSN != 0 || process.lowLongOfPSN == 0) {
        return;
    }
    const xcb_window_t window = windowToActivate(*x11, process.lowLongOfPSN);
    if (window != XCB_NONE) {
        x11->sendToRoot(window, "_NET_ACTIVE_WINDOW", {x11SourcePager, x11->latestTime(), XCB_NONE, 0, 0});
    }
}
