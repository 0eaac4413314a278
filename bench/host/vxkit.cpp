// SPDX-License-Identifier: MIT
// The example host's window over a database of thousands of snippets.
//
//     bench_host_vxkit --write    makes the database, in the home folder
//     bench_host_vxkit            opens it, searches, and changes it
#include "Measured.h"

#include <SnippetTextEdit.h>
#include <SnippetsApplication.h>
#include <SnippetsListModel.h>
#include <SnippetsListView.h>
#include <SnippetsWindow.h>

#include <QAbstractScrollArea>
#include <QTableView>

#include <cstring>
#include <functional>
#include <memory>

namespace {

constexpr double firstIdentity = 1'700'000'000.0; // seconds since 1970
constexpr int changes = 200;

std::shared_ptr<Snippet> measuredSnippet(int number) {
    auto snippet = std::make_shared<Snippet>();
    const QString text = measuredText(number);
    snippet->setSnippetID(NSDate::dateWithTimeIntervalSince1970(firstIdentity + number));
    snippet->setTitle(measuredTitle(number, text));
    snippet->setText(text);
    return snippet;
}

int writeDatabase() {
    const std::shared_ptr<SnippetsDatabase> database = SnippetsDatabase::shared();
    qint64 characters = 0;
    for (int number = 0; number < measuredSnippets; ++number) {
        const std::shared_ptr<Snippet> snippet = measuredSnippet(number);
        characters += snippet->text().size();
        database->addSnippet(snippet);
    }
    tellFigure("characters", static_cast<double>(characters));
    return database->save() ? 0 : 1;
}

/// Milliseconds for `change`, and for the window to paint what came of it: the median and the worst.
void tellChanges(const char* what, const std::function<void(int number)>& change, QWidget& painted) {
    std::vector<double> times;
    for (int number = 0; number < changes; ++number) {
        QElapsedTimer clock;
        clock.start();
        change(number);
        painted.repaint();
        times.push_back(milliseconds(clock));
    }
    tellMedianAndWorst(what, times);
}

} // namespace

int main(int argc, char** argv) {
    SnippetsApplication application(argc, argv);
    if (argc > 1 && std::strcmp(argv[1], "--write") == 0) {
        return writeDatabase();
    }
    QElapsedTimer clock;
    clock.start();
    const std::shared_ptr<SnippetsDatabase> database = SnippetsDatabase::shared();
    tellFigure("load_database", milliseconds(clock));
    if (database->snippets().count() != measuredSnippets) {
        std::fprintf(stderr, "there is no database of %d snippets: --write makes it\n", measuredSnippets);
        return 1;
    }
    SnippetsWindow window(database);
    window.makeKeyAndOrderFront(nullptr);
    waitUntilExposed(window);
    window.repaint();
    tellFigure("load", milliseconds(clock));

    auto* const list = window.findChild<QTableView*>();
    // As at a person's first key, a moment after the window came up.
    QElapsedTimer moment;
    for (moment.start(); moment.elapsed() < 300;) {
        QCoreApplication::processEvents();
    }
    tellSearches([&](const QString& search) {
        window.setSearch(search);
        list->viewport()->repaint();
    });

    std::vector<std::shared_ptr<Snippet>> added;
    tellChanges(
        "add",
        [&](int number) {
            added.push_back(measuredSnippet(measuredSnippets + number));
            database->addSnippet(added.back());
        },
        *list->viewport());
    tellChanges(
        "use",
        [&](int number) {
            added[static_cast<std::size_t>(number)]->noteUse(NSDate::date());
            database->notifyOfModificationForSnippet(added[static_cast<std::size_t>(number)]);
        },
        *list->viewport());
    tellChanges(
        "remove", [&](int number) { database->removeSnippet(added[static_cast<std::size_t>(number)]); },
        *list->viewport());
    tellChanges(
        "select", [&](int number) { window.selectRow(number); }, *list->viewport());
    return 0;
}
