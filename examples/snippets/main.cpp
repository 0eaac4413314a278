// SPDX-License-Identifier: MIT
#include "SnippetsApplication.h"
#include "SnippetsTour.h"

#include <QCommandLineParser>
#include <QTimer>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

namespace {

/// Whether the arguments ask for a text alone, which needs no display.
bool asksForText(int argc, char** argv) {
    constexpr std::array<std::string_view, 5> questions{"-h", "--help", "--help-all", "-v", "--version"};
    return std::any_of(argv + 1, argv + argc, [&](const char* argument) {
        return std::find(questions.begin(), questions.end(), argument) != questions.end();
    });
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication::setApplicationName(QStringLiteral("snippets"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Snippets"));
    QCoreApplication::setApplicationVersion(QStringLiteral(SNIPPETS_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Keeps pieces of text within reach, in the status bar."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption tourOption(
        QStringLiteral("tour"), QStringLiteral("Shows what the program can do, with pictures in <folder>, and ends."),
        QStringLiteral("folder"));
    parser.addOption(tourOption);
    const QCommandLineOption backgroundOption(
        QStringLiteral("background"),
        QStringLiteral("Starts with the window closed, as at the beginning of a session."));
    parser.addOption(backgroundOption);
    parser.addPositionalArgument(QStringLiteral("files"),
                                 QStringLiteral("Text files, and folders of them, to make snippets of."),
                                 QStringLiteral("[files…]"));
    if (asksForText(argc, argv)) {
        const QCoreApplication application(argc, argv);
        parser.process(application);
    }

    SnippetsApplication application(argc, argv);
    parser.process(application);
    if (!application.start()) {
        return EXIT_FAILURE;
    }
    if (!parser.positionalArguments().isEmpty()) {
        application.importPaths(parser.positionalArguments());
    }
    if (!parser.isSet(backgroundOption)) {
        QTimer::singleShot(0, &application, [&] { application.showMainWindow(); });
    }
    if (parser.isSet(tourOption)) {
        QTimer::singleShot(0, &application, [&] {
            if (SnippetsTour(application, parser.value(tourOption)).run()) {
                application.terminate(nullptr);
            } else {
                QCoreApplication::exit(EXIT_FAILURE);
            }
        });
    }
    return application.run();
}
