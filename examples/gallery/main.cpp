// SPDX-License-Identifier: MIT
#include "../Complaint.h"
#include "GalleryApplication.h"
#include "GalleryPictures.h"
#include "GalleryWindow.h"
#include "PictureBook.h"

#include <VXKit/controls/LTHUDTableView.h>

#include <QCommandLineParser>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

namespace {

int takePictures(const QString& folder) {
    PictureBook book(folder);
    if (!book.open()) {
        complain(book.problem());
        return EXIT_FAILURE;
    }
    GalleryWindow window;
    if (!takeGalleryPictures(window, book)) {
        complain(book.problem());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication::setApplicationName(QStringLiteral("Gallery"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("VXKit Gallery"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Shows every window, control and effect of VXKit."));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption pictures(QStringLiteral("pictures"),
                                      QStringLiteral("Draws all of it into PNG files in <folder>, and ends."),
                                      QStringLiteral("folder"));
    const QCommandLineOption scale(QStringLiteral("scale"), QStringLiteral("Pixels for each point: 1 or 2."),
                                   QStringLiteral("scale"));
    const QCommandLineOption page(QStringLiteral("page"), QStringLiteral("Begins with the page <name>."),
                                  QStringLiteral("name"));
    parser.addOptions({pictures, scale, page});
    // Before there is an application object, which takes the scale from the environment.
    QStringList arguments;
    for (int index = 0; index < argc; ++index) {
        arguments.append(QString::fromLocal8Bit(argv[index]));
    }
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.parse(arguments);
    if (parser.isSet(help)) {
        std::printf("%s", parser.helpText().toUtf8().constData());
        return EXIT_SUCCESS;
    }
    if (parser.isSet(scale)) {
        const QString factor = parser.value(scale);
        if (factor != u"1" && factor != u"2") {
            complain(QStringLiteral("the scale is 1 or 2, not “%1”").arg(factor));
            return EXIT_FAILURE;
        }
        qputenv("QT_SCALE_FACTOR", factor.toLatin1());
    }

    GalleryApplication application(argc, argv);
    // Now that Qt has taken what is its own, such as -platform.
    if (!parser.parse(QCoreApplication::arguments())) {
        complain(parser.errorText());
        return EXIT_FAILURE;
    }
    if (parser.isSet(pictures)) {
        QTimer::singleShot(0, &application, [&] { QCoreApplication::exit(takePictures(parser.value(pictures))); });
        return application.run();
    }
    GalleryWindow window;
    QObject::connect(&window, &GalleryWindow::asksToQuit, &application, [&] { application.terminate(nullptr); });
    if (!parser.isSet(page)) {
        window.showPage(0);
    } else if (!window.showPageNamed(parser.value(page))) {
        complain(QStringLiteral("there is no page “%1”").arg(parser.value(page)));
        return EXIT_FAILURE;
    }
    QTimer::singleShot(0, &application, [&] {
        application.activateIgnoringOtherApps(true);
        window.makeKeyAndOrderFront(nullptr);
        window.makeFirstResponder(&window.list());
    });
    return application.run();
}
