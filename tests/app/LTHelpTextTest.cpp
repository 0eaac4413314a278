// SPDX-License-Identifier: MIT
#include "../MadeUpFile.h"
#include "HelpHost.h"

#include <QBuffer>
#include <QImage>
#include <QScrollBar>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

/// What holds for the text browser alone: what it cannot show, and how it keeps its limits.
class TextHelpWindow : public HelpWindow {};

} // namespace

TEST_F(TextHelpWindow, ShowsPicturesOfTheServerAndItsRedirects) {
    QImage dot(40, 30, QImage::Format_RGB32);
    dot.fill(Qt::red);
    QByteArray png;
    QBuffer buffer(&png);
    ASSERT_TRUE(buffer.open(QIODevice::WriteOnly));
    ASSERT_TRUE(dot.save(&buffer, "PNG"));
    server.put("/help", "<img src=moved.png>");
    server.putStatus("/moved.png", "302 Found", "Location: /dot.png\r\n");
    server.put("/dot.png", png, "image/png");
    show(server.url());
    const QImage picture = view().grab().toImage();
    int red = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            red += picture.pixelColor(x, y) == QColor(Qt::red) ? 1 : 0;
        }
    }
    EXPECT_EQ(red, 40 * 30);
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

TEST_F(TextHelpWindow, FailsForFilesThatAreNoPages) {
    server.put("/help", "PK", "application/zip");
    show(server.url());
    EXPECT_TRUE(isFailureShown());
    EXPECT_THAT(reason(), HasSubstr("application/zip"));
}

TEST_F(TextHelpWindow, RefusesDevicesWithoutWaitingForThem) {
    show(QUrl(QStringLiteral("file:///dev/zero")));
    EXPECT_TRUE(isFailureShown());
}

TEST_F(TextHelpWindow, OpensLinksToOtherHostsInTheBrowserAndStaysWhereItIs) {
    server.put("/help", "<p>Page</p>");
    show(server.url());
    auto& browser = *view().findChild<QTextBrowser*>();
    Q_EMIT browser.anchorClicked(QUrl(QStringLiteral("http://example.invalid/page")));
    Q_EMIT browser.anchorClicked(QUrl(QStringLiteral("mailto:someone@example.invalid")));
    Q_EMIT browser.anchorClicked(QUrl(QStringLiteral("file:///etc/passwd")));
    Q_EMIT browser.anchorClicked(QUrl(QStringLiteral("programs:start")));
    EXPECT_THAT(opened, ElementsAre(QUrl(QStringLiteral("http://example.invalid/page")),
                                    QUrl(QStringLiteral("mailto:someone@example.invalid"))));
    EXPECT_EQ(started, 1);
}

TEST_F(TextHelpWindow, FollowsLinksOfItsServerAndToPlacesInThePage) {
    QByteArray page = "<p>Top</p>";
    for (int line = 0; line < 200; ++line) {
        page += "<p>line</p>";
    }
    server.put("/help", page + "<p><a name=end>End</a></p>");
    server.put("/next", "<p>Next</p>");
    show(server.url());
    auto& browser = *view().findChild<QTextBrowser*>();
    Q_EMIT browser.anchorClicked(QUrl(QStringLiteral("#end")));
    EXPECT_EQ(started, 1);
    EXPECT_GT(browser.verticalScrollBar()->value(), 0);
    EXPECT_EQ(view().mainFrameURL().fragment(), QStringLiteral("end"));
    view().goBack();
    EXPECT_EQ(browser.verticalScrollBar()->value(), 0);
    EXPECT_TRUE(view().mainFrameURL().fragment().isEmpty());
    loads([&] { Q_EMIT browser.anchorClicked(QUrl(QStringLiteral("next"))); });
    EXPECT_EQ(text(), QStringLiteral("Next"));
}

TEST_F(TextHelpWindow, DrawsTextLargerThatNamesItsOwnSize) {
    server.put("/help", "<p style=\"font-size: 20px\">Page</p>");
    show(server.url());
    auto& browser = *view().findChild<QTextBrowser*>();
    const double before = browser.document()->size().height();
    for (int turn = 0; turn < 5; ++turn) {
        view().zoomPageIn();
    }
    EXPECT_EQ(view().pageSizeMultiplier(), 2);
    EXPECT_GT(browser.document()->size().height(), before + 20);
    view().resetPageZoom();
    EXPECT_EQ(browser.document()->size().height(), before);
}
