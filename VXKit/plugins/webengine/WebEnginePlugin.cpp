// SPDX-License-Identifier: MIT
#include <VXKit/plugins/webengine/WebEnginePlugin.h>

#include <VXKit/plugins/webengine/WebPageEngine.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QOpenGLContext>

QT_BEGIN_NAMESPACE
// Exported by Qt for this very purpose, and declared in none of its public headers.
Q_GUI_EXPORT void qt_gl_set_global_share_context(QOpenGLContext* context);
QT_END_NAMESPACE

namespace {

/// Without its helper program the engine ends the process.
bool hasHelperProgram() {
    const QString named = qEnvironmentVariable("QTWEBENGINEPROCESS_PATH");
    return QFileInfo(named.isEmpty() ? QLibraryInfo::path(QLibraryInfo::LibraryExecutablesPath) +
                                           QStringLiteral("/QtWebEngineProcess")
                                     : named)
        .isExecutable();
}

/// The engine draws into the windows of the program by way of a context that all of them share. The application object
/// has been kept from making it at its start, see NSApplication.
void provideSharedContext() {
    if (QOpenGLContext::globalShareContext()) {
        return;
    }
    static std::unique_ptr<QOpenGLContext> context;
    context = std::make_unique<QOpenGLContext>();
    // Valid or not: the engine draws without the graphics hardware where it is not, and refuses only to have none.
    context->create();
    qt_gl_set_global_share_context(context.get());
    qAddPostRoutine([] {
        qt_gl_set_global_share_context(nullptr);
        context.reset();
    });
}

} // namespace

std::unique_ptr<WebViewEngine> WebEnginePlugin::makeEngine(QWidget& parent) {
    if (!hasHelperProgram()) {
        return nullptr;
    }
    provideSharedContext();
    return std::make_unique<WebPageEngine>(parent);
}
