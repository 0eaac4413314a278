// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/WebViewEngine.h>

#include <VXKit/platform/appkit/WebTextEngine.h>
#include <VXKit/platform/foundation/NSLog.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPluginLoader>
#include <QStringList>

#include <cerrno>
#include <dlfcn.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr const char* pluginPathVariable = "VXKIT_PLUGIN_PATH";

/// Whether a process of its own may have user and process namespaces, of which the engine's sandbox is built. Some
/// systems allow the first and then nothing within it.
bool canMakeNamespaces() {
    const pid_t child = ::fork();
    if (child == 0) {
        // Nothing but system calls, since other threads may have held locks.
        ::_exit(::unshare(CLONE_NEWUSER) == 0 && ::unshare(CLONE_NEWPID | CLONE_NEWNET) == 0 ? 0 : 1);
    }
    int status = 1;
    pid_t ended = -1;
    do {
        ended = ::waitpid(child, &status, 0);
    } while (ended < 0 && errno == EINTR);
    return child > 0 && ended == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool isSandboxOff() {
    return qgetenv("QTWEBENGINE_DISABLE_SANDBOX") == "1" ||
           qgetenv("QTWEBENGINE_CHROMIUM_FLAGS").split(' ').contains("--no-sandbox") ||
           QCoreApplication::arguments().contains(QStringLiteral("--no-sandbox"));
}

/// The engine ends the process where it cannot build its sandbox. Whoever opens a help page has not asked for that.
bool canRunBrowserEngine() {
    return QCoreApplication::testAttribute(Qt::AA_ShareOpenGLContexts) &&
           (isSandboxOff() || (::geteuid() != 0 && canMakeNamespaces()));
}

/// The folder of the library that this code is in.
QString folderOfLibrary() {
    Dl_info info{};
    if (::dladdr(reinterpret_cast<const void*>(&folderOfLibrary), &info) == 0 || !info.dli_fname) {
        return QCoreApplication::applicationDirPath();
    }
    return QFileInfo(QFile::decodeName(info.dli_fname)).absolutePath();
}

QStringList pluginFolders() {
    if (qEnvironmentVariableIsSet(pluginPathVariable)) {
        return qEnvironmentVariable(pluginPathVariable).split(QDir::listSeparator(), Qt::SkipEmptyParts);
    }
    QStringList folders{folderOfLibrary() + QStringLiteral("/VXKit/plugins")};
    for (const QString& folder : QCoreApplication::libraryPaths()) {
        folders += folder + QStringLiteral("/VXKit");
    }
    return folders;
}

/// The files of plugins, the one to be preferred first.
QStringList plugins() {
    QStringList paths;
    for (const QString& folder : pluginFolders()) {
        const QString path = folder + QStringLiteral("/libVXKitWebEngine.so");
        if (QFile::exists(path)) {
            paths += path;
        }
    }
    return paths;
}

/// Null where there is none. One that is broken is told of, once.
WebViewEnginePlugin* loadPlugin() {
    for (const QString& path : plugins()) {
        QPluginLoader loader(path);
        if (auto* plugin = qobject_cast<WebViewEnginePlugin*>(loader.instance())) {
            return plugin;
        }
        NSLog("The web engine cannot be loaded, pages are shown without it: %@",
              loader.isLoaded() ? path + QStringLiteral(": is no plugin of this kind") : loader.errorString());
    }
    return nullptr;
}

} // namespace

WebViewEngine::WebViewEngine() = default;

WebViewEngine::~WebViewEngine() = default;

WebViewEnginePlugin::WebViewEnginePlugin() = default;

WebViewEnginePlugin::~WebViewEnginePlugin() = default;

bool VXHasWebEnginePlugin() {
    return !plugins().isEmpty();
}

std::unique_ptr<WebViewEngine> VXMakeWebViewEngine(QWidget& parent) {
    static const bool canRun = canRunBrowserEngine();
    if (canRun) {
        static WebViewEnginePlugin* const plugin = loadPlugin();
        if (auto engine = plugin ? plugin->makeEngine(parent) : nullptr) {
            return engine;
        }
    }
    return std::make_unique<WebTextEngine>(parent);
}
