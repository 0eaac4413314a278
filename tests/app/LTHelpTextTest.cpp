// SPDX-License-Identifier: MIT
#include "../MadeUpFile.h"
#include "HelpHost.h"

#include <QBuffer>
#include <QClipboard>
#include <QFile>
#include <QImage>
#include <QMenu>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTextBlock>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

/// What holds for the text browser alone: what it cannot show, and how it keeps its limits.
class TextHelpWindow : public HelpWindow {
protected:
    static QTextBrowser& browser() { return *view().findChild<QTextBrowser*>(); }

    static int redPixels() {
        const QImage shown = view().grab().toImage();
        int red = 0;
        for (int y = 0; y < shown.height(); ++y) {
            for (int x = 0; x < shown.width(); ++x) {
                red += shown.pixelColor(x, y) == QColor(Qt::red) ? 1 : 0;
            }
        }
        return red;
    }
    /// The height of the letters of each line of the page, in pixels.
    static std::vector<int> sizesOfLines() {
        std::vector<int> sizes;
        for (QTextBlock line = browser().document()->begin(); line.isValid(); line = line.next()) {
            sizes.push_back(line.begin().fragment().charFormat().font().pixelSize());
        }
        return sizes;
    }
};

QByteArray redPicture(const QSize& size = {40, 30}, const char* format = "PNG") {
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(Qt::red);
    QByteArray content;
    QBuffer buffer(&content);
    EXPECT_TRUE(buffer.open(QIODevice::WriteOnly) && picture.save(&buffer, format));
    return content;
}

void write(const QString& path, const QByteArray& content) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
}

QByteArray pageOfManyLines(const QByteArray& end = {}) {
    return "<p>Top</p>" + QByteArray("<p>line</p>").repeated(200) + end;
}

} // namespace

TEST_F(HelpWindow, FailsForFilesThatAreNoPages) {
    server.put("/help", "PK", "application/zip");
    show(server.url());
    EXPECT_TRUE(isFailureShown());
    EXPECT_TRUE(eventually([] { return reason().find("application/zip") != std::string::npos; })) << reason();
    // Which the person's browser can keep, where it is not known before that it is one.
    EXPECT_EQ(opened, usesTextBrowser() ? std::vector<QUrl>() : std::vector{server.url()});
}

TEST_F(HelpWindow, FollowsLinksOfItsServerAndLeavesOthersToTheBrowser) {
    server.put("/help", "<h1><a href=next>Another page of it</a></h1>");
    server.put("/next", "<h1><a href='http://example.invalid/page'>A page of others</a></h1>");
    show(server.url());
    loads([] { clickPage(); });
    EXPECT_EQ(text(), QStringLiteral("A page of others"));
    clickPage();
    EXPECT_TRUE(eventually([&] { return !opened.empty(); }));
    EXPECT_THAT(opened, ElementsAre(QUrl(QStringLiteral("http://example.invalid/page"))));
    EXPECT_EQ(started, 2);
}

TEST_F(HelpWindow, LeavesLinksThatWantAWindowOfTheirOwnToTheBrowser) {
    server.put("/help", "<h1><a target=_blank href='http://example.invalid/page'>A page of others</a></h1>");
    show(server.url());
    clickPage();
    EXPECT_TRUE(eventually([&] { return !opened.empty(); }));
    EXPECT_THAT(opened, ElementsAre(QUrl(QStringLiteral("http://example.invalid/page"))));
}

TEST_F(HelpWindow, LetsScriptsNeitherAskNorOpenWindows) {
    server.put("/help", "<p id=page>Page</p><script>alert('Halt'); window.open('http://example.invalid/page');"
                        "if (confirm('Yes?') || prompt('What?') !== null) page.textContent = 'Answered';</script>");
    show(server.url());
    EXPECT_EQ(text(), QStringLiteral("Page"));
    EXPECT_THAT(opened, IsEmpty());
}

TEST_F(HelpWindow, OffersNoMoreInItsMenuThanThereIsAUseFor) {
    server.put("/help", "<h1>Page with a title</h1>");
    show(server.url());
    press(Qt::Key_A, Qt::ControlModifier);
    clickPage(Qt::RightButton);
    const auto menu = [] { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); };
    ASSERT_TRUE(eventually([&] { return menu() != nullptr; }));
    for (QAction* action : menu()->actions()) {
        EXPECT_THAT(action->text().toLower().toStdString(),
                    Not(testing::AnyOf(HasSubstr("save"), HasSubstr("source"))));
    }
    menu()->actions().first()->trigger();
    EXPECT_TRUE(eventually([] { return QApplication::clipboard()->text() == QStringLiteral("Page with a title"); }));
    menu()->close();
}

TEST_F(TextHelpWindow, ShowsPicturesOfTheServerAndItsRedirects) {
    server.put("/help", "<img src=moved.png>");
    server.putStatus("/moved.png", "302 Found", "Location: /dot.png\r\n");
    server.put("/dot.png", redPicture(), "image/png");
    show(server.url());
    EXPECT_EQ(redPixels(), 40 * 30);
}

TEST_F(TextHelpWindow, ShowsPicturesBesidePagesOfFiles) {
    const QTemporaryDir folder;
    write(folder.filePath(QStringLiteral("page.html")), "<img src=dot.png>");
    write(folder.filePath(QStringLiteral("dot.png")), redPicture());
    show(QUrl::fromLocalFile(folder.filePath(QStringLiteral("page.html"))));
    EXPECT_EQ(redPixels(), 40 * 30);
}

TEST_F(TextHelpWindow, ShowsPicturesThatAreThePage) {
    server.put("/help", redPicture(), "image/png");
    show(server.url());
    EXPECT_EQ(redPixels(), 40 * 30);
}

TEST_F(TextHelpWindow, ShowsPagesWithoutPicturesThatAreTooLarge) {
    server.put("/help", "<p>Page</p><img src=large.bmp>");
    server.put("/large.bmp", redPicture({2000, 1500}, "BMP"), "image/bmp");
    show(server.url());
    EXPECT_FALSE(isFailureShown());
    EXPECT_EQ(text(), QStringLiteral("Page"));
    EXPECT_EQ(redPixels(), 0);
}

TEST_F(TextHelpWindow, DoesNotWaitForThePicturesOfAPageThatItLeaves) {
    server.put("/help", "<p>Page</p><img src=slow.png>");
    server.putAnswer("/slow.png", "");
    server.put("/next", "<p>Next</p>");
    application.help = server.url();
    application.showHelp(nullptr);
    ASSERT_TRUE(eventually([&] { return server.requestsFor("/slow.png") == 1; }));
    show(server.url(QStringLiteral("/next")));
    EXPECT_EQ(text(), QStringLiteral("Next"));
    EXPECT_EQ(finished, 1);
    EXPECT_TRUE(eventually([&] { return server.findChildren<QTcpSocket*>().isEmpty(); })) << "a connection stays open";
}

TEST_F(TextHelpWindow, ReadsPagesInTheEncodingOfTheirServerOrTheirOwn) {
    server.put("/help",
               "<p>Gr\xFC\xDF"
               "e</p>",
               "text/html; charset=\"ISO-8859-1\"");
    show(server.url());
    EXPECT_EQ(text(), QStringLiteral("Grüße"));
    server.put("/help",
               "<meta charset=iso-8859-1><p>Gr\xFC\xDF"
               "e</p>",
               "text/html");
    show(server.url());
    EXPECT_EQ(text(), QStringLiteral("Grüße"));
    server.put("/help", "<p>Grüße</p>", "text/html");
    show(server.url());
    EXPECT_EQ(text(), QStringLiteral("Grüße"));
}

TEST_F(TextHelpWindow, ShowsPlainTextAsItIs) {
    server.put("/help", "<b>1 & 2\n  3", "text/plain");
    show(server.url());
    EXPECT_EQ(text(), QStringLiteral("<b>1 & 2\n  3"));
}

TEST_F(TextHelpWindow, FailsForPagesWithoutAnEnd) {
    server.put("/help", QByteArray(5 * 1024 * 1024, 'x'));
    show(server.url());
    EXPECT_TRUE(isFailureShown());
    EXPECT_EQ(reason(), "The page is too large.");
}

TEST_F(TextHelpWindow, FailsForPagesThatAreTooLargeOnceUnpacked) {
    const QByteArray packed = qCompress(QByteArray(5 * 1024 * 1024, 'x')).mid(4); // without Qt's own header
    server.putAnswer("/help", "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Encoding: deflate\r\n"
                              "Content-Length: " +
                                  QByteArray::number(packed.size()) + "\r\nConnection: close\r\n\r\n" + packed);
    show(server.url());
    EXPECT_TRUE(isFailureShown());
    EXPECT_EQ(reason(), "The page is too large.");
}

TEST_F(TextHelpWindow, FailsForFilesThatAreTooLarge) {
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("page.html")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.resize(5 * 1024 * 1024));
    show(QUrl::fromLocalFile(file.fileName()));
    EXPECT_TRUE(isFailureShown());
    EXPECT_EQ(reason(), "The page is too large.");
}

TEST_F(TextHelpWindow, FailsForFilesWithoutAnEnd) {
    const MadeUpFile file;
    show(QUrl::fromLocalFile(QString::fromLatin1(MadeUpFile::path)));
    EXPECT_TRUE(isFailureShown());
    EXPECT_THAT(reason(), HasSubstr("cannot read so much")) << "and not all of it first";
}

TEST_F(TextHelpWindow, FailsForElementsThatLieTooDeep) {
    QByteArray deep;
    for (int depth = 0; depth < 10000; ++depth) {
        deep += "<table><tr><td>";
    }
    server.put("/help", deep);
    show(server.url());
    EXPECT_TRUE(isFailureShown());
}

TEST_F(TextHelpWindow, ShowsGarbageWithoutFalling) {
    QByteArray garbage;
    unsigned state = 1;
    for (int count = 0; count < 200000; ++count) {
        state = state * 1103515245U + 12345U;
        garbage += static_cast<char>(state >> 16U);
    }
    server.put("/help", garbage);
    show(server.url());
    EXPECT_FALSE(view().isLoading());
}

TEST_F(TextHelpWindow, RefusesDevicesWithoutWaitingForThem) {
    show(QUrl(QStringLiteral("file:///dev/zero")));
    EXPECT_TRUE(isFailureShown());
}

TEST_F(TextHelpWindow, OpensLinksToOtherHostsInTheBrowserAndStaysWhereItIs) {
    server.put("/help", "<p>Page</p>");
    show(server.url());
    Q_EMIT browser().anchorClicked(QUrl(QStringLiteral("http://example.invalid/page")));
    Q_EMIT browser().anchorClicked(QUrl(QStringLiteral("mailto:someone@example.invalid")));
    Q_EMIT browser().anchorClicked(QUrl(QStringLiteral("file:///etc/passwd")));
    Q_EMIT browser().anchorClicked(QUrl(QStringLiteral("programs:start")));
    EXPECT_THAT(opened, ElementsAre(QUrl(QStringLiteral("http://example.invalid/page")),
                                    QUrl(QStringLiteral("mailto:someone@example.invalid"))));
    EXPECT_EQ(started, 1);
}

TEST_F(TextHelpWindow, FollowsLinksOfItsServerAndToPlacesInThePage) {
    server.put("/help", pageOfManyLines("<p><a name=end>End</a></p>"));
    server.put("/next", "<p>Next</p>");
    show(server.url());
    Q_EMIT browser().anchorClicked(QUrl(QStringLiteral("#end")));
    EXPECT_EQ(started, 1);
    EXPECT_GT(browser().verticalScrollBar()->value(), 0);
    EXPECT_EQ(view().mainFrameURL().fragment(), QStringLiteral("end"));
    view().goBack();
    EXPECT_EQ(browser().verticalScrollBar()->value(), 0);
    EXPECT_TRUE(view().mainFrameURL().fragment().isEmpty());
    loads([&] { Q_EMIT browser().anchorClicked(QUrl(QStringLiteral("next"))); });
    EXPECT_EQ(text(), QStringLiteral("Next"));
}

TEST_F(TextHelpWindow, StaysOnThePageWhenItGoesBackInItBeforeAnotherHasCome) {
    server.put("/help", pageOfManyLines("<p><a name=end>End</a></p>"));
    server.putAnswer("/slow", "");
    show(server.url());
    Q_EMIT browser().anchorClicked(QUrl(QStringLiteral("#end")));
    Q_EMIT browser().anchorClicked(QUrl(QStringLiteral("slow")));
    ASSERT_TRUE(eventually([&] { return server.requestsFor("/slow") == 1; }));
    loads([] { view().goBack(); });
    EXPECT_FALSE(view().isLoading());
    EXPECT_EQ(view().mainFrameURL(), server.url());
    EXPECT_TRUE(eventually([&] { return server.findChildren<QTcpSocket*>().isEmpty(); })) << "a connection stays open";
}

TEST_F(TextHelpWindow, StillGetsThePicturesOfThePageWhenItGoesBackInIt) {
    server.put("/help", "<img src=dot.png><p><a name=end>End</a></p>");
    server.putAnswer("/dot.png", "");
    application.help = server.url();
    application.showHelp(nullptr);
    ASSERT_TRUE(eventually([&] { return server.requestsFor("/dot.png") == 1; }));
    Q_EMIT browser().anchorClicked(QUrl(QStringLiteral("#end")));
    view().goBack();
    EXPECT_EQ(view().mainFrameURL(), server.url());
    ASSERT_TRUE(view().isLoading());
    loads([&] { server.answerLate("image/png", redPicture()); });
    EXPECT_EQ(redPixels(), 40 * 30);
}

TEST_F(TextHelpWindow, KeepsItsPlaceInThePageWhenTheSizeChanges) {
    server.put("/help", pageOfManyLines());
    show(server.url());
    QScrollBar& bar = *browser().verticalScrollBar();
    const int before = bar.maximum();
    bar.setValue(before / 2);
    view().zoomPageIn();
    EXPECT_GT(bar.maximum(), before);
    EXPECT_NEAR(bar.value(), bar.maximum() / 2.0, 2);
}

TEST_F(TextHelpWindow, MakesPicturesLargerWithTheText) {
    server.put("/help", "<img src=dot.png width=40 height=30>");
    server.put("/dot.png", redPicture(), "image/png");
    show(server.url());
    for (int turn = 0; turn < 5; ++turn) {
        view().zoomPageIn();
    }
    EXPECT_EQ(view().pageSizeMultiplier(), 2);
    EXPECT_EQ(redPixels(), 80 * 60);
}

TEST_F(TextHelpWindow, DrawsTextLargerThatIsLargeBesideOther) {
    server.put("/help", "<p>Page</p><p><small>Small</small></p><p><big>Large</big></p>");
    show(server.url());
    EXPECT_THAT(sizesOfLines(), ElementsAre(14, 11, 17));
    for (int turn = 0; turn < 5; ++turn) {
        view().zoomPageIn();
    }
    EXPECT_EQ(view().pageSizeMultiplier(), 2);
    EXPECT_THAT(sizesOfLines(), ElementsAre(28, 22, 34));
}

TEST_F(TextHelpWindow, DrawsTextLargerThatNamesItsOwnSize) {
    server.put("/help", "<p style=\"font-size: 20px\">Page</p>");
    show(server.url());
    const double before = browser().document()->size().height();
    for (int turn = 0; turn < 5; ++turn) {
        view().zoomPageIn();
    }
    EXPECT_EQ(view().pageSizeMultiplier(), 2);
    EXPECT_GT(browser().document()->size().height(), before + 20);
    view().resetPageZoom();
    EXPECT_EQ(browser().document()->size().height(), before);
}
