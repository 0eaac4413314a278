// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <functional>
#include <optional>

class QWidget;
class SnippetsApplication;

/// Shows what the program can do, step by step on the real screen, and takes a picture after each step.
///
/// It uses the program's own window and the user's own data, and leaves the data as it found it, but for the snippets
/// that were imported for it. Needs some snippets to show.
class SnippetsTour {
public:
    /// The pictures go into `folder`, which is made where it is missing.
    SnippetsTour(SnippetsApplication& application, QString folder);

    /// Goes through all steps and prints the path of each picture, then that of the database's file with the number of
    /// records in it. False, after the reason was printed on standard error, when a step did not do what it shows.
    /// Needs the event loop's application to be running, and runs the event loop itself while it waits.
    [[nodiscard]] bool run();

private:
    static constexpr int pictureTime = 2000; // milliseconds for the screen to show what the window has painted

    [[nodiscard]] bool showList();
    [[nodiscard]] bool showSearch();
    [[nodiscard]] bool showSelection();
    [[nodiscard]] bool showImport();
    [[nodiscard]] bool showAdded();
    [[nodiscard]] bool showRenamed();
    [[nodiscard]] bool showEdited();
    [[nodiscard]] bool showCopied();
    [[nodiscard]] bool showRemoved();
    [[nodiscard]] bool showDragged();
    [[nodiscard]] bool showExport();
    [[nodiscard]] bool answerSheet(const std::function<void()>& ask, const QString& picture, const QString& typed);
    [[nodiscard]] bool showPreferences();
    [[nodiscard]] bool showAbout();
    [[nodiscard]] bool showHelp();
    [[nodiscard]] bool tellFile() const;
    [[nodiscard]] bool takePicture(QWidget& window, const QString& name, int longestWait = pictureTime);
    [[nodiscard]] static bool fail(const QString& reason);

    SnippetsApplication& m_application;
    QString m_folder;
};
