// SPDX-License-Identifier: MIT
#include "../Complaint.h"
#include "SnippetsApplication.h"
#include "SnippetsTour.h"

#include <VXKit/platform/desktop/RunningInstance.h>

#include <QCommandLineParser>
#include <QFileInfo>
#include <QTimer>

#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

namespace {

using Answer = RunningInstance::Answer;
using Request = RunningInstance::Request;

/// What the program is started for.
class CommandLine {
public:
    CommandLine() {
        m_parser.setApplicationDescription(
            QStringLiteral("Keeps pieces of text within reach, in the status bar. Where it is running already, a "
                           "further start shows its window, or hands the files over."));
        m_parser.addHelpOption();
        m_parser.addVersionOption();
        m_parser.addOptions({m_toggle, m_background, m_tour});
        m_parser.addPositionalArgument(QStringLiteral("files"),
                                       QStringLiteral("Text files, and folders of them, to make snippets of."),
                                       QStringLiteral("[files…]"));
    }

    /// False where the arguments make no sense, or are some that Qt takes for itself once there is a display.
    [[nodiscard]] bool parse() { return m_parser.parse(QCoreApplication::arguments()); }
    /// Ends the process where the arguments make no sense, and where all they ask for is a text.
    void process() { m_parser.process(*QCoreApplication::instance()); }

    /// What is wrong with the options together; null where nothing is.
    [[nodiscard]] QString conflict() const {
        if (toggles() && (isInBackground() || m_parser.isSet(m_tour) || !files().isEmpty())) {
            return QStringLiteral("--toggle goes with no other argument");
        }
        return {};
    }

    [[nodiscard]] bool toggles() const { return m_parser.isSet(m_toggle); }
    [[nodiscard]] bool isInBackground() const { return m_parser.isSet(m_background); }
    [[nodiscard]] QStringList files() const { return m_parser.positionalArguments(); }
    /// The folder of its pictures; nothing where no tour is asked for.
    [[nodiscard]] std::optional<QString> tour() const {
        return m_parser.isSet(m_tour) ? std::optional(m_parser.value(m_tour)) : std::nullopt;
    }

    /// What an instance that is running is to do instead of this one.
    [[nodiscard]] Request request() const {
        QList<QUrl> urls;
        QStringList uris;
        for (const QString& file : files()) {
            if (!file.isEmpty()) {
                // The other one may be in another folder.
                urls.push_back(QUrl::fromLocalFile(QFileInfo(file).absoluteFilePath()));
                uris.push_back(QString::fromLatin1(urls.back().toEncoded()));
            }
        }
        if (toggles()) {
            return Request::action(QString::fromLatin1(SnippetsApplication::toggleAction));
        }
        if (isInBackground()) {
            return urls.isEmpty() ? Request::look()
                                  : Request::action(QString::fromLatin1(SnippetsApplication::importAction), {uris});
        }
        return urls.isEmpty() ? Request::activate() : Request::open(urls);
    }

private:
    const QCommandLineOption m_toggle{
        QStringLiteral("toggle"),
        QStringLiteral("Shows the window, or hides it where it is shown; to be bound to a key.")};
    const QCommandLineOption m_background{
        QStringLiteral("background"),
        QStringLiteral("Starts with the window closed, as at the beginning of a session.")};
    const QCommandLineOption m_tour{
        QStringLiteral("tour"), QStringLiteral("Shows what the program can do, with pictures in <folder>, and ends."),
        QStringLiteral("folder")};
    QCommandLineParser m_parser;
};

/// The exit status, where the instance that is running was asked; nothing where none is running.
std::optional<int> askRunningInstance(const CommandLine& commandLine) {
    QString problem;
    switch (RunningInstance::ask(QString::fromLatin1(SnippetsApplication::busName), commandLine.request(), &problem)) {
    case Answer::Done:
        return EXIT_SUCCESS;
    case Answer::Failed:
        complain(problem);
        return EXIT_FAILURE;
    case Answer::NobodyThere:
        break;
    }
    return std::nullopt;
}

/// What can be done without a display: answers a question about the program itself, or has the running instance do what
/// is asked. The exit status, where that was all.
std::optional<int> runWithoutDisplay(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    CommandLine commandLine;
    if (!commandLine.parse()) {
        return std::nullopt;
    }
    commandLine.process();
    if (const QString conflict = commandLine.conflict(); !conflict.isNull()) {
        complain(conflict);
        return EXIT_FAILURE;
    }
    return commandLine.tour() ? std::nullopt : askRunningInstance(commandLine);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication::setApplicationName(QStringLiteral("snippets"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Snippets"));
    QCoreApplication::setApplicationVersion(QStringLiteral(SNIPPETS_VERSION));

    if (const std::optional<int> status = runWithoutDisplay(argc, argv)) {
        return *status;
    }

    SnippetsApplication application(argc, argv);
    CommandLine commandLine;
    commandLine.process();
    const QString conflict = commandLine.conflict();
    if (!conflict.isNull()) {
        complain(conflict);
        return EXIT_FAILURE;
    }
    const std::optional<QString> tour = commandLine.tour();
    std::unique_ptr<RunningInstance> instance;
    // The tour takes part in nothing that the person does.
    if (!tour) {
        instance = std::make_unique<RunningInstance>(QString::fromLatin1(SnippetsApplication::busName),
                                                     SnippetsApplication::actions());
        while (instance->claim() == RunningInstance::Claim::Taken) {
            // By another start at the same time, or one that was not asked because of Qt's own arguments.
            if (const std::optional<int> status = askRunningInstance(commandLine)) {
                return *status;
            }
        }
    }
    if (!application.start()) {
        return EXIT_FAILURE;
    }
    if (instance) {
        application.answer(std::move(instance));
    }
    if (!commandLine.files().isEmpty()) {
        application.importPaths(commandLine.files());
    }
    if (!commandLine.isInBackground()) {
        QTimer::singleShot(0, &application, [&] { application.showMainWindow(); });
    }
    if (tour) {
        QTimer::singleShot(0, &application, [&] {
            if (SnippetsTour(application, *tour).run()) {
                application.terminate(nullptr);
            } else {
                QCoreApplication::exit(EXIT_FAILURE);
            }
        });
    }
    return application.run();
}
