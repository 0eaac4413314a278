// SPDX-License-Identifier: MIT
#include "GalleryPictures.h"
#include "GalleryHost.h"
#include "PictureBook.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <algorithm>
#include <map>

namespace {

/// A class of the kit's and what it derives from, as its header says.
using Bases = std::map<QString, QString>;

QString textOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return QString::fromUtf8(file.readAll());
}

Bases basesInHeaders() {
    static const QRegularExpression declaration(QStringLiteral("class VXKIT_EXPORT (\\w+) (?:final )?: public (\\w+)"));
    Bases bases;
    QDirIterator headers(QStringLiteral(VXKIT_SOURCE_ROOT "/VXKit"), {QStringLiteral("*.h")}, QDir::Files,
                         QDirIterator::Subdirectories);
    while (headers.hasNext()) {
        QRegularExpressionMatchIterator matches = declaration.globalMatch(textOf(headers.next()));
        while (matches.hasNext()) {
            const QRegularExpressionMatch match = matches.next();
            bases[match.captured(1)] = match.captured(2);
        }
    }
    return bases;
}

bool isWidget(const QString& name, const Bases& bases) {
    if (name == u"NSView" || name == u"ViewOf" || name == u"NSWindow") {
        return true;
    }
    const auto found = bases.find(name);
    return found != bases.end() && isWidget(found->second, bases);
}

/// The headers of the folders of controls and windows, by what they are called in the header of the whole kit.
QStringList headersOfTheKit() {
    static const QRegularExpression include(
        QStringLiteral("#include <VXKit/((?:app|controls|hud|transitions)/[^>]+)\\.h>"));
    QStringList headers;
    QRegularExpressionMatchIterator matches =
        include.globalMatch(textOf(QStringLiteral(VXKIT_SOURCE_ROOT "/VXKit/VXKit.h")));
    while (matches.hasNext()) {
        headers.append(matches.next().captured(1));
    }
    return headers;
}

int colorsIn(const QImage& image, int enough) {
    QSet<QRgb> colors;
    for (int y = 0; y < image.height() && colors.size() < enough; ++y) {
        for (int x = 0; x < image.width() && colors.size() < enough; ++x) {
            colors.insert(image.pixel(x, y));
        }
    }
    return static_cast<int>(colors.size());
}

class GalleryPicturesTest : public GalleryHost {
protected:
    QTemporaryDir folder;
};

} // namespace

TEST_F(GalleryPicturesTest, ShowEveryPageAndEveryViewAndWindowOfTheKit) {
    PictureBook book(folder.path());
    ASSERT_TRUE(book.open());
    GalleryWindow window;
    ASSERT_TRUE(takeGalleryPictures(window, book)) << qPrintable(book.problem());

    const QDir pictures(folder.path());
    QStringList expected{QStringLiteral("contact-sheet")};
    for (const std::unique_ptr<GalleryPage>& page : window.pages()) {
        expected.append(QStringLiteral("page-") + page->name());
    }
    for (const char* control : {"push-button", "flat-button", "check-box-on", "radio-button-off", "tab"}) {
        for (const char* state : {"normal", "focused", "pressed", "disabled", "inactive"}) {
            expected.append(
                QStringLiteral("state-%1-%2").arg(QString::fromLatin1(control), QString::fromLatin1(state)));
        }
    }
    for (const char* other : {"flip-forward-first-half", "pop-half", "alert-three", "hud-sheet", "main-window",
                              "effect-shadow", "help-window", "exception-reporter", "copy-pop-up"}) {
        expected.append(QString::fromLatin1(other));
    }
    for (const QString& name : expected) {
        EXPECT_TRUE(pictures.exists(name + QStringLiteral(".png"))) << qPrintable(name);
    }
    for (const QFileInfo& file : pictures.entryInfoList({QStringLiteral("*.png")})) {
        const QImage image(file.filePath());
        EXPECT_GE(colorsIn(image, 8), 8) << qPrintable(file.fileName());
    }

    // What a picture has shown counts, and for what is no view the pages' own word.
    const Bases bases = basesInHeaders();
    QSet<QString> shown;
    for (QString name : book.shownClasses()) {
        while (!name.isEmpty() && !shown.contains(name)) {
            shown.insert(name);
            const auto found = bases.find(name);
            name = found == bases.end() ? QString() : found->second;
        }
    }
    QStringList told;
    for (const std::unique_ptr<GalleryPage>& page : window.pages()) {
        told += page->subjects();
    }
    const QStringList headers = headersOfTheKit();
    ASSERT_FALSE(headers.isEmpty());
    static const QRegularExpression declaration(QStringLiteral("class VXKIT_EXPORT (\\w+) (?:final )?: public"));
    for (const QString& header : headers) {
        const QString text = textOf(QStringLiteral(VXKIT_SOURCE_ROOT "/VXKit/%1.h").arg(header));
        QRegularExpressionMatchIterator classes = declaration.globalMatch(text);
        while (classes.hasNext()) {
            const QString name = classes.next().captured(1);
            EXPECT_TRUE(!isWidget(name, bases) || shown.contains(name)) << qPrintable(name) << " is in no picture";
        }
        EXPECT_TRUE(told.contains(QFileInfo(header).fileName())) << qPrintable(header) << " is on no page";
    }
}

TEST_F(GalleryPicturesTest, AreTheSameEachTime) {
    std::map<QString, QImage> first;
    for (int round = 0; round < 2; ++round) {
        PictureBook book(folder.path());
        ASSERT_TRUE(book.open());
        GalleryWindow window;
        ASSERT_TRUE(takeGalleryPictures(window, book));
        for (const QFileInfo& file : QDir(folder.path()).entryInfoList({QStringLiteral("*.png")})) {
            const QString name = file.completeBaseName();
            // The stack in the reporter is that of this run, and so is the sheet, which shows it.
            if (name == u"exception-reporter" || name == u"contact-sheet") {
                continue;
            }
            const QImage now(file.filePath());
            if (round == 0) {
                first[name] = now;
            } else {
                EXPECT_TRUE(now == first[name]) << qPrintable(name);
            }
        }
    }
    EXPECT_FALSE(first.empty());
}

TEST_F(GalleryPicturesTest, EndAtTheFirstThatCannotBeWritten) {
    const QString path = folder.filePath(QStringLiteral("page-buttons.png"));
    ASSERT_TRUE(QDir().mkdir(path));
    PictureBook book(folder.path());
    ASSERT_TRUE(book.open());
    GalleryWindow window;
    EXPECT_FALSE(takeGalleryPictures(window, book));
    EXPECT_EQ(book.problem(), path + QStringLiteral(": cannot be written"));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 0);
}

namespace {

struct Ending {
    int status;
    QString error;
};

Ending runGallery(const QStringList& arguments) {
    QProcess process;
    process.start(QStringLiteral(GALLERY_PROGRAM), arguments);
    EXPECT_TRUE(process.waitForFinished(120'000));
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardError())};
}

} // namespace

TEST(GalleryProgram, TellsOfAFolderThatCannotBeMade) {
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("file")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const QString below = file.fileName() + QStringLiteral("/below");
    const Ending ending = runGallery({QStringLiteral("--pictures"), below});
    EXPECT_EQ(ending.status, 1);
    EXPECT_TRUE(
        ending.error.contains(QStringLiteral("gallery: %1: cannot create the folder of the pictures").arg(below)))
        << qPrintable(ending.error);
}

TEST(GalleryProgram, DrawsPicturesOfTwicePixels) {
    const QTemporaryDir folder;
    const Ending ending =
        runGallery({QStringLiteral("--pictures"), folder.path(), QStringLiteral("--scale"), QStringLiteral("2")});
    EXPECT_EQ(ending.status, 0) << qPrintable(ending.error);
    // A page is the window, 880 by 580 points, and 40 around it.
    EXPECT_EQ(QImage(folder.filePath(QStringLiteral("page-buttons.png"))).size(), QSize(1920, 1320));
}

TEST(GalleryProgram, TakesNoOtherScaleAndNoUnknownPage) {
    EXPECT_EQ(runGallery({QStringLiteral("--scale"), QStringLiteral("3")}).status, 1);
    EXPECT_EQ(runGallery({QStringLiteral("--page"), QStringLiteral("nowhere")}).status, 1);
}

TEST(GalleryProgram, TakesQtsArgumentsAndNoUnknownOnes) {
    const Ending ofQt = runGallery({QStringLiteral("-platform"), QStringLiteral("offscreen"), QStringLiteral("--page"),
                                    QStringLiteral("nowhere")});
    EXPECT_EQ(ofQt.status, 1);
    EXPECT_TRUE(ofQt.error.contains(QStringLiteral("there is no page “nowhere”"))) << qPrintable(ofQt.error);
    const Ending unknown = runGallery({QStringLiteral("--pages"), QStringLiteral("buttons")});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_TRUE(unknown.error.contains(QStringLiteral("pages"))) << qPrintable(unknown.error);
}
