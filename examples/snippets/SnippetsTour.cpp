// SPDX-License-Identifier: MIT
#include "SnippetsTour.h"

#include "AboutWindow.h"
#include "ImportBar.h"
#include "MessageBar.h"
#include "SnippetQuestions.h"
#include "SnippetsApplication.h"
#include "SnippetsListModel.h"
#include "SnippetsWindow.h"

#include <VXKit/app/LTHelpLoader.h>
#include <VXKit/platform/appkit/NSPasteboard.h>
#include <VXKit/support/NSPasteboard+VXKitAdditions.h>

#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QDragEnterEvent>
#include <QEventLoop>
#include <QFile>
#include <QKeyEvent>
#include <QMimeData>
#include <QPointer>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QTemporaryDir>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <utility>

namespace {

constexpr int waitingTime = 5000;   // milliseconds for a window to be shown
constexpr int importTime = 120'000; // milliseconds for what is to be shown to come in
constexpr int popUpTime = 1000;     // milliseconds that a pop-up is there for certain
constexpr int pictureInterval = 20; // milliseconds between two looks at the screen
constexpr int searchedRow = 3;      // whose title is searched for
constexpr int selectedRow = 2;
constexpr QChar escape(0x1B);
constexpr int importedFiles = 40;
constexpr std::size_t stoppedAfter = 12; // of these

// The screen shows a window when its pixels are the window's own, but for a caret that has blinked meanwhile.
constexpr int channelTolerance = 12; // of 255
constexpr int differingPixels = 60;

/// Runs the event loop until `condition` holds; false where it does not in time.
bool waitFor(const std::function<bool()>& condition, int milliseconds, int interval) {
    const QDeadlineTimer deadline(milliseconds);
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        QEventLoop loop;
        QTimer::singleShot(interval, &loop, &QEventLoop::quit);
        loop.exec();
    }
    return true;
}

bool areAlike(QRgb left, QRgb right) {
    return std::abs(qRed(left) - qRed(right)) <= channelTolerance &&
           std::abs(qGreen(left) - qGreen(right)) <= channelTolerance &&
           std::abs(qBlue(left) - qBlue(right)) <= channelTolerance;
}

/// Whether `screen`, a picture of the whole screen, shows `content` at `place`; all in pixels.
bool shows(const QImage& screen, const QImage& content, QPoint place) {
    int different = 0;
    const QRect visible = QRect(place, content.size()).intersected(screen.rect());
    for (int y = visible.top(); y <= visible.bottom() && different <= differingPixels; ++y) {
        for (int x = visible.left(); x <= visible.right(); ++x) {
            const QRgb painted = content.pixel(x - place.x(), y - place.y());
            // Where the window is translucent, the screen shows what is behind it as well.
            different += qAlpha(painted) < 255 || areAlike(screen.pixel(x, y), painted) ? 0 : 1;
        }
    }
    return !visible.isEmpty() && different <= differingPixels;
}

/// Whether a picture has anything on it. Desktops that let no program see the screen give none, or a black one.
bool isEmpty(const QImage& picture) {
    if (picture.isNull()) {
        return true;
    }
    const QRgb first = picture.pixel(0, 0);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixel(x, y) != first) {
                return false;
            }
        }
    }
    return true;
}

/// Presses and releases a key in a window, whatever has the keyboard there.
void press(const QWidget& window, QChar character) {
    int key = character.toUpper().unicode();
    if (character == QLatin1Char('\r')) {
        key = Qt::Key_Return;
    } else if (character == escape) {
        key = Qt::Key_Escape;
    }
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, Qt::NoModifier, character);
        QCoreApplication::sendEvent(window.windowHandle(), &event);
    }
}

QImage pictureOfScreen(const QScreen& screen) {
    return const_cast<QScreen&>(screen).grabWindow(0).toImage().convertToFormat(QImage::Format_RGB32);
}

} // namespace

SnippetsTour::SnippetsTour(SnippetsApplication& application, QString folder)
    : m_application(application), m_folder(std::move(folder)) {}

bool SnippetsTour::run() {
    if (!QDir().mkpath(m_folder)) {
        return fail(QStringLiteral("%1: cannot create the folder of the pictures").arg(m_folder));
    }
    const QString clipboard = stringValue(NSPasteboard::generalPasteboard());
    const bool succeeded = showList() && showSearch() && showSelection() && showImport() && showAdded() &&
                           showRenamed() && showEdited() && showCopied() && showRemoved() && showDragged() &&
                           showExport() && showPreferences() && showAbout() && showHelp() && tellFile();
    if (!clipboard.isNull()) {
        NSPasteboard::generalPasteboard().clearContents();
        NSPasteboard::generalPasteboard().setString(clipboard, QString::fromLatin1(NSStringPboardType));
    }
    return succeeded;
}

bool SnippetsTour::showList() {
    SnippetsWindow& window = m_application.window();
    m_application.showMainWindow();
    if (!waitFor([this] { return !m_application.importRun().isRunning(); }, importTime, pictureInterval)) {
        return fail(QStringLiteral("the import of the snippets to show does not end"));
    }
    if (window.model().rowCount() == 0) {
        return fail(QStringLiteral("there are no snippets to show; name some text files"));
    }
    window.selectRow(0);
    return takePicture(window, QStringLiteral("01-list"));
}

bool SnippetsTour::showSearch() {
    SnippetsWindow& window = m_application.window();
    const int row = std::min(searchedRow, window.model().rowCount() - 1);
    const std::shared_ptr<Snippet> searched = window.model().snippetAt(window.model().index(row));
    static const QRegularExpression notWords(QStringLiteral("\\W+"), QRegularExpression::UseUnicodePropertiesOption);
    const QStringList words = searched->title().toLower().split(notWords, Qt::SkipEmptyParts);
    window.setSearch(words.join(QLatin1Char(' ')));
    if (!window.model().indexOf(*searched).isValid()) {
        return fail(QStringLiteral("a search for the words of its title does not find a snippet"));
    }
    return takePicture(window, QStringLiteral("02-search"));
}

bool SnippetsTour::showSelection() {
    SnippetsWindow& window = m_application.window();
    window.setSearch({});
    const int row = std::min(selectedRow, window.model().rowCount() - 1);
    window.selectRow(row);
    if (window.selectedSnippet() != window.model().snippetAt(window.model().index(row))) {
        return fail(QStringLiteral("row %1 cannot be selected").arg(row));
    }
    return takePicture(window, QStringLiteral("03-selected"));
}

/// Imports more files than anybody waits for, and stops that. What has come in goes again.
bool SnippetsTour::showImport() {
    SnippetsWindow& window = m_application.window();
    const QTemporaryDir folder;
    for (int number = 1; number <= importedFiles; ++number) {
        QFile file(folder.filePath(QStringLiteral("Note %1.txt").arg(number, 2, 10, QLatin1Char('0'))));
        if (!file.open(QIODevice::WriteOnly) || file.write("A note among many.\n") < 0) {
            return fail(QStringLiteral("%1: cannot be written").arg(file.fileName()));
        }
    }
    const auto all = [&] { return window.model().newest(static_cast<std::size_t>(window.model().totalCount())); };
    const std::vector<std::shared_ptr<Snippet>> before = all();
    SnippetImportRun& run = m_application.importRun();
    run.setPace({.slice = {}, .patience = {}});
    bool isTold = false;
    const QMetaObject::Connection watch =
        QObject::connect(&run, &SnippetImportRun::progressed, &run, [&](const SnippetImportProgress& progress) {
            auto* const stop = window.findChild<ImportBar*>()->findChild<QPushButton*>();
            // The import waits for the picture.
            if (progress.doneCount == stoppedAfter) {
                isTold = takePicture(window, QStringLiteral("04-importing"));
                stop->click();
            }
        });
    m_application.importPaths({folder.path()});
    const bool ended = waitFor([&] { return !run.isRunning(); }, waitingTime, pictureInterval);
    QObject::disconnect(watch);
    run.setPace({});

    std::vector<std::shared_ptr<Snippet>> imported = all();
    std::erase_if(imported, [&](const std::shared_ptr<Snippet>& snippet) {
        return std::find(before.begin(), before.end(), snippet) != before.end();
    });
    if (!ended || !isTold || imported.size() != stoppedAfter) {
        return fail(QStringLiteral("an import cannot be stopped"));
    }
    const bool isShown = takePicture(window, QStringLiteral("05-stopped"));
    for (const std::shared_ptr<Snippet>& snippet : imported) {
        m_application.database().removeSnippet(snippet);
    }
    window.findChild<MessageBar*>(QStringLiteral("messageBar"))->hide();
    return isShown;
}

bool SnippetsTour::showAdded() {
    SnippetsWindow& window = m_application.window();
    const QString text =
        QStringLiteral("Added from the clipboard\n\nA snippet of what was copied in another window.\n");
    NSPasteboard& pasteboard = NSPasteboard::generalPasteboard();
    pasteboard.clearContents();
    pasteboard.setString(text, QString::fromLatin1(NSStringPboardType));
    const int before = window.model().totalCount();
    if (!window.addFromClipboard() || window.model().totalCount() != before + 1 ||
        window.selectedSnippet()->text() != text) {
        return fail(QStringLiteral("the text on the clipboard does not become a snippet"));
    }
    return takePicture(window, QStringLiteral("06-added"));
}

bool SnippetsTour::showRenamed() {
    SnippetsWindow& window = m_application.window();
    const QString title = QStringLiteral("A title of its own");
    // The sheet has the old title selected, so that the first letter replaces it.
    const bool isAnswered =
        answerSheet([&] { window.renameSelected(); }, QStringLiteral("07-renaming"), title + QLatin1Char('\r'));
    if (!isAnswered || window.selectedSnippet()->title() != title) {
        return fail(QStringLiteral("the selected snippet cannot be renamed"));
    }
    return true;
}

/// Calls `ask`, which shows a sheet and returns when that is answered; takes a picture of it before `typed` answers it.
bool SnippetsTour::answerSheet(const std::function<void()>& ask, const QString& picture, const QString& typed) {
    bool succeeded = false;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, &watch, [&] {
        const NSWindow* sheet = m_application.modalWindow();
        if (!sheet) {
            return;
        }
        watch.stop();
        succeeded = takePicture(*m_application.modalWindow(), picture);
        for (const QChar character : typed) {
            press(*sheet, character);
        }
    });
    watch.start(pictureInterval);
    ask();
    return succeeded;
}

/// Types into the text of the one that was added, and undoes that again.
bool SnippetsTour::showEdited() {
    SnippetsWindow& window = m_application.window();
    const QString before = window.selectedSnippet()->text();
    window.editSelected();
    const QString typed = QStringLiteral("Typed right here. ");
    for (const QChar character : typed) {
        press(window, character);
    }
    if (!takePicture(window, QStringLiteral("08-editing"))) {
        return false;
    }
    QWidget* const editor = QApplication::focusWidget();
    press(window, escape);
    if (window.selectedSnippet()->text() != typed + before || QApplication::focusWidget() == editor) {
        return fail(QStringLiteral("the text of the selected snippet cannot be edited"));
    }
    window.undo();
    return window.selectedSnippet()->text() == before || fail(QStringLiteral("what was typed cannot be undone"));
}

/// The one that was added, whose uses nobody misses.
bool SnippetsTour::showCopied() {
    const auto popUp = []() -> NSWindow* {
        for (NSWindow* window : NSWindow::windows()) {
            if (window->ignoresMouseEvents() && window->isVisible()) {
                return window;
            }
        }
        return nullptr;
    };
    SnippetsWindow& window = m_application.window();
    if (!window.copySelected() || stringValue(NSPasteboard::generalPasteboard()) != window.selectedSnippet()->text() ||
        !waitFor([&] { return popUp() != nullptr; }, waitingTime, pictureInterval)) {
        return fail(QStringLiteral("the selected snippet cannot be copied"));
    }
    if (!takePicture(*popUp(), QStringLiteral("09-copied"), popUpTime)) {
        return false;
    }
    // The next picture is not about it any more.
    return waitFor([&] { return popUp() == nullptr; }, waitingTime, pictureInterval) ||
           fail(QStringLiteral("the pop-up stays"));
}

bool SnippetsTour::showRemoved() {
    SnippetsWindow& window = m_application.window();
    const int before = window.model().totalCount();
    if (asksBeforeRemoving()) {
        if (!answerSheet([&] { window.askToRemoveSelected(); }, QStringLiteral("10-removing"), QStringLiteral("\r"))) {
            return false;
        }
    } else {
        window.removeSelected();
    }
    if (window.model().totalCount() != before - 1 || !window.canUndo()) {
        return fail(QStringLiteral("the selected snippet cannot be removed"));
    }
    return takePicture(window, QStringLiteral("11-removed"));
}

/// As it looks while a text hovers over the window. It is not dropped.
bool SnippetsTour::showDragged() {
    SnippetsWindow& window = m_application.window();
    QMimeData data;
    data.setText(QStringLiteral("Dragged here"));
    QDragEnterEvent enter(window.rect().center(), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&window, &enter);
    const bool isShown = enter.isAccepted() && takePicture(window, QStringLiteral("12-dragging"));
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(&window, &leave);
    return isShown || fail(QStringLiteral("the window does not take a text that is dragged to it"));
}

/// Asks how to export, and leaves it at that.
bool SnippetsTour::showExport() {
    return answerSheet([this] { m_application.window().exportSnippets(); }, QStringLiteral("13-exporting"),
                       QString(escape));
}

bool SnippetsTour::showPreferences() {
    using Page = PreferencesWindow::Page;
    for (const auto& [page, name] : {std::pair(Page::General, "14-preferences"), std::pair(Page::Sync, "15-sync"),
                                     std::pair(Page::Database, "16-database")}) {
        m_application.showPreferences(page);
        if (!takePicture(m_application.preferences(), QString::fromLatin1(name))) {
            return false;
        }
    }
    m_application.preferences().orderOut(nullptr);
    return true;
}

bool SnippetsTour::showAbout() {
    m_application.showAbout();
    if (!m_application.about() || !m_application.about()->isVisible() || m_application.window().isVisible()) {
        return fail(QStringLiteral("the window does not turn over"));
    }
    if (!takePicture(*m_application.about(), QStringLiteral("17-about"))) {
        return false;
    }
    m_application.leaveAbout();
    return m_application.window().isVisible() || fail(QStringLiteral("the window does not turn back"));
}

bool SnippetsTour::showHelp() {
    m_application.showHelp(nullptr);
    const WebView* page = LTHelpLoader::exists() ? LTHelpLoader::loader().textView() : nullptr;
    if (!page || !page->isVisible()) {
        return fail(QStringLiteral("there is no help"));
    }
    const auto isLoaded = [page] { return !page->isLoading(); };
    if (!waitFor(isLoaded, waitingTime, pictureInterval) || !page->isVisible()) {
        return fail(QStringLiteral("the help cannot be loaded"));
    }
    return takePicture(*LTHelpLoader::loader().window(), QStringLiteral("18-help"));
}

/// Counts what is in the file, not what is in memory.
bool SnippetsTour::tellFile() const {
    m_application.database().saveDB();
    const QString path = m_application.database().path();
    const std::optional<NSDictionary> content = NSDictionary::dictionaryWithContentsOfFile(path);
    const NSArray* records = content ? content->objectOfType<NSArray>("contents") : nullptr;
    if (!records) {
        return fail(QStringLiteral("%1: holds no snippets").arg(path));
    }
    std::printf("%s: %zu records\n", path.toUtf8().constData(), records->size());
    std::fflush(stdout);
    return true;
}

/// Waits until the screen shows what `window` has painted. Where it never does, because the desktop makes windows
/// translucent or lets nobody see the screen, goes on after a while.
bool SnippetsTour::takePicture(QWidget& window, const QString& name, int longestWait) {
    const auto isExposed = [&] { return window.windowHandle() && window.windowHandle()->isExposed(); };
    if (!waitFor(isExposed, waitingTime, pictureInterval)) {
        return fail(QStringLiteral("%1: the window is not shown").arg(name));
    }
    const QScreen& screen = *window.screen();
    const double ratio = screen.devicePixelRatio();
    // A pop-up goes by itself.
    const QPointer<QWidget> shown(&window);
    QImage content;
    QImage picture;
    waitFor(
        [&] {
            if (!shown) {
                return true;
            }
            content = window.grab().toImage().convertToFormat(QImage::Format_ARGB32);
            picture = pictureOfScreen(screen);
            const QPointF place = QPointF(window.mapToGlobal(QPoint()) - screen.geometry().topLeft()) * ratio;
            return isEmpty(picture) || shows(picture, content, place.toPoint());
        },
        longestWait, pictureInterval);
    if (!shown) {
        return fail(QStringLiteral("%1: the window is gone").arg(name));
    }

    const QString path = QDir(m_folder).filePath(name + QStringLiteral(".png"));
    if (!(isEmpty(picture) ? content : picture).save(path)) {
        return fail(QStringLiteral("%1: cannot be written").arg(path));
    }
    std::printf("%s\n", path.toUtf8().constData());
    std::fflush(stdout);
    return true;
}

bool SnippetsTour::fail(const QString& reason) {
    std::fprintf(stderr, "tour: %s\n", reason.toUtf8().constData());
    return false;
}
