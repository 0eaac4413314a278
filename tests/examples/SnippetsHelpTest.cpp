// SPDX-License-Identifier: MIT
#include "../LoopbackServer.h"
#include "SnippetsHost.h"

#include <VXKit/app/LTHelpLoader.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <QTest>

namespace {

class SnippetsHelp : public SnippetsHost {
protected:
    static bool isShown(const QString& title) {
        const WebView& page = *LTHelpLoader::loader().textView();
        return QTest::qWaitFor([&] { return page.isVisible() && page.mainFrameTitle() == title; }, 15000);
    }
};

} // namespace

TEST_F(SnippetsHelp, IsTheProgramsOwn) {
    application.showHelp(nullptr);
    EXPECT_TRUE(isShown(QStringLiteral("Snippets Help")));
}

TEST_F(SnippetsHelp, CanBeElsewhereAndIsFetchedAfreshEachTime) {
    const LoopbackServer server([](int number, const LoopbackRequest&) {
        return LoopbackAnswer::status(
            200, "<html><head><title>Number " + QByteArray::number(number) + "</title></head><body>Help</body></html>",
            "Content-Type: text/html\r\nCache-Control: max-age=3600\r\n");
    });
    NSUserDefaults::standardUserDefaults().setObject(QStringLiteral("http://%1/help").arg(server.host()), "HelpURL");
    application.showHelp(nullptr);
    EXPECT_TRUE(isShown(QStringLiteral("Number 1")));
    application.showHelp(nullptr);
    EXPECT_TRUE(isShown(QStringLiteral("Number 2")));
}
