// SPDX-License-Identifier: MIT
// A little of everything of the kit, as a program that has only the installed package sees it. It takes Qt as Qt comes,
// with its keywords and with text from literals, which the kit's own sources do without. Prints one line where all of
// it works, and what does not otherwise.
#include "Greeting.h"

#include <VXKit/VXKit.h>

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QImage>
#include <QSet>
#include <QTemporaryDir>
#include <QTimer>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace {

void require(bool holds, const char* what) {
    if (!holds) {
        throw std::runtime_error(what);
    }
}

class Consumer : public LTApplication {
public:
    using LTApplication::LTApplication;

    [[nodiscard]] float mainWindowOpacity() const override { return 0.5F; }
};

class Note : public _LTSnippet {
public:
    [[nodiscard]] static std::shared_ptr<_LTSnippet> emptySnippet() { return std::make_shared<Note>(); }

    void setTitle(const QString& title) { _name = title; }

    [[nodiscard]] std::optional<NSDictionary> dictionaryRepresentation() const override {
        return NSDictionary{{"title", _name.toStdString()}};
    }
    void loadFromDictionary(const NSDictionary& dictionary) override {
        if (const auto* title = dictionary.objectOfType<std::string>("title")) {
            _name = QString::fromStdString(*title);
        }
    }
};

class NotesDatabase : public LTDatabase {
protected:
    [[nodiscard]] _LTSnippetClass snippetClass() const override { return _LTSnippetClass::of<Note>(); }
};

/// How many colours a picture has.
int coloursOf(const QImage& picture) {
    QSet<QRgb> colours;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            colours.insert(picture.pixel(x, y));
        }
    }
    return int(colours.size());
}

void tryHooks() {
    require(VXApplicationHooks().mainWindowOpacity() == 0.5F, "the kit asks the application of this program");
}

void tryImages() {
    const std::shared_ptr<NSImage> image = VXKitImage("HUDCheckboxNormal");
    require(image->isValid() && coloursOf(image->imageForScale(1)) > 1, "an image of the kit");
    try {
        (void)VXKitImage("NoSuchImage");
        require(false, "a missing image is told of");
    } catch (const NSException& exception) {
        require(exception.name() == NSInvalidArgumentException, "the name of an exception of the kit's");
    }
}

void tryNib() {
    const Greeting greeting;
    greeting.window().makeKeyAndOrderFront(nullptr);
    require(coloursOf(greeting.button().grab().toImage()) > 2, "a button draws itself");
    greeting.button().performClick(nullptr);
    // It looks pressed for a moment first.
    const QDeadlineTimer patience(std::chrono::seconds(10));
    while (greeting.timesGreeted() == 0 && !patience.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    require(greeting.timesGreeted() == 1, "a button sends its action");
    greeting.window().orderOut(nullptr);
}

void tryAlert(Consumer& application) {
    const auto alert = LTHUDAlert::alertWithMessageText("Remove it?", "Remove", "Cancel", {}, "There is no undo.");
    QTimer press;
    QObject::connect(&press, &QTimer::timeout, [&] {
        if (application.modalWindow() == &alert->window()) {
            press.stop();
            alert->alternateButtonControl().performClick(nullptr);
        }
    });
    press.start(1);
    require(alert->runModal() == NSAlertAlternateReturn, "an alert answers which button was pressed");
}

void tryDatabase(const QTemporaryDir& folder) {
    const QString path = folder.filePath("Notes.plist");
    {
        const auto database = LTDatabase::alloc<NotesDatabase>();
        database->initWithFile(path);
        const auto note = std::make_shared<Note>();
        note->setTitle("Grüße");
        database->addSnippet(note);
        database->saveDB();
    }
    const auto database = LTDatabase::alloc<NotesDatabase>();
    database->initWithFile(path);
    require(database->snippets().count() == 1 && database->snippets().objectAtIndex(0)->title() == "Grüße",
            "a database keeps a record");
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication::setApplicationName("consumer");
    const QTemporaryDir folder; // which the databases need until the application has ended
    Consumer application(argc, argv);
    int status = EXIT_FAILURE;
    QTimer::singleShot(0, &application, [&] {
        try {
            tryHooks();
            tryImages();
            tryNib();
            tryAlert(application);
            tryDatabase(folder);
            std::printf("consumer: all works\n");
            status = EXIT_SUCCESS;
        } catch (const std::exception& exception) {
            std::fprintf(stderr, "consumer: not so: %s\n", exception.what());
        }
        application.terminate(nullptr);
    });
    application.run();
    return status;
}
