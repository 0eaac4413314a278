// SPDX-License-Identifier: MIT
// What is dragged into the window and out of it.
#include "SnippetsWindowHost.h"

#include <DropMark.h>
#include <SnippetMimeData.h>

#include <VXKit/platform/appkit/BlockingAnimation.h>

#include <QDragEnterEvent>
#include <QDragLeaveEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>
#include <QUrl>

#include <gmock/gmock.h>

namespace {

class SnippetsDragging : public SnippetsWindowHost {
protected:
    DropMark* mark() const { return view<DropMark>(); }
    SnippetsFooter* footer() const { return window->findChild<SnippetsFooter*>(); }

    bool enter(const QMimeData& data, Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction) {
        QDragEnterEvent event(QPoint(100, 200), actions, &data, Qt::LeftButton, Qt::NoModifier);
        event.ignore();
        QCoreApplication::sendEvent(window.get(), &event);
        if (event.isAccepted()) {
            EXPECT_EQ(event.dropAction(), Qt::CopyAction) << "others keep what they drag here";
        }
        return event.isAccepted();
    }
    void drop(const QMimeData& data) {
        ASSERT_TRUE(enter(data));
        QDropEvent event(QPointF(100, 200), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(window.get(), &event);
        EXPECT_TRUE(event.isAccepted());
        EXPECT_EQ(event.dropAction(), Qt::CopyAction);
    }
};

TEST_F(SnippetsDragging, DroppedTextBecomesASnippet) {
    QMimeData data;
    data.setText(QStringLiteral("Dropped title\nand more"));
    drop(data);
    EXPECT_EQ(totalCount(), 4);
    EXPECT_EQ(selectedTitle(), "Dropped title");
    EXPECT_EQ(window->selectedSnippet()->text(), QStringLiteral("Dropped title\nand more"));
    EXPECT_EQ(footer()->text(), QStringLiteral("Added “Dropped title”"));
}

TEST_F(SnippetsDragging, ShowsThatItTakesWhatHoversOverIt) {
    QMimeData text;
    text.setText(QStringLiteral("Text"));
    ASSERT_TRUE(enter(text));
    EXPECT_TRUE(mark()->isVisible());
    EXPECT_EQ(mark()->text(), QStringLiteral("Drop to add a snippet"));
    EXPECT_EQ(mark()->accessibleName(), mark()->text());
    EXPECT_TRUE(mark()->geometry().contains(list()->mapTo(window->contentView(), QPoint(5, 5))));
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(window.get(), &leave);
    EXPECT_FALSE(mark()->isVisible());
    drop(text);
    EXPECT_FALSE(mark()->isVisible());
}

TEST_F(SnippetsDragging, DroppedFilesAreImported) {
    const QSignalSpy asked(window.get(), &SnippetsWindow::asksToImport);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QStringLiteral("/tmp/a b.txt")), QUrl(QStringLiteral("https://example.org/page")),
                  QUrl::fromLocalFile(QStringLiteral("/tmp/c"))});
    ASSERT_TRUE(enter(data));
    EXPECT_EQ(mark()->text(), QStringLiteral("Drop to import 2 files"));
    drop(data);
    ASSERT_EQ(asked.count(), 1);
    EXPECT_EQ(asked.at(0).at(0).toStringList(),
              (QStringList{QStringLiteral("/tmp/a b.txt"), QStringLiteral("/tmp/c")}));
    EXPECT_EQ(totalCount(), 3) << "no snippet of the names";
}

TEST_F(SnippetsDragging, ADroppedAddressBecomesASnippet) {
    QMimeData data;
    data.setUrls({QUrl(QStringLiteral("https://example.org/page"))});
    drop(data);
    EXPECT_EQ(window->selectedSnippet()->text(), QStringLiteral("https://example.org/page"));
}

TEST_F(SnippetsDragging, RefusesWhatHasNoText) {
    QMimeData image;
    image.setData(QStringLiteral("image/png"), "picture");
    EXPECT_FALSE(enter(image));
    EXPECT_FALSE(enter(QMimeData()));
    QMimeData text;
    text.setText(QStringLiteral("Text"));
    EXPECT_FALSE(enter(text, Qt::MoveAction)) << "it takes a copy or nothing";
    EXPECT_FALSE(mark()->isVisible());
}

TEST_F(SnippetsDragging, BlanksAreNoSnippet) {
    QMimeData blank;
    blank.setText(QStringLiteral(" \n\t"));
    drop(blank);
    EXPECT_EQ(totalCount(), 3);
    EXPECT_EQ(footer()->text(), QStringLiteral("There is no text to add"));
}

TEST_F(SnippetsDragging, TakesNothingWhileAQuestionIsOpen) {
    const AnimationDurationsForTesting none(0);
    setAsks(true);
    QMimeData text;
    text.setText(QStringLiteral("Text"));
    bool wasTaken = true;
    whenNextModalRunHasBegun(application, [&] {
        wasTaken = enter(text);
        pressInSheet(Qt::Key_Escape);
    });
    press(Qt::Key_Delete);
    EXPECT_FALSE(wasTaken);
}

TEST_F(SnippetsDragging, ARowIsTheTextOfItsSnippet) {
    const std::unique_ptr<QMimeData> text = mimeDataOf(*makeSnippet(1, "Title", "  some\ntext "));
    EXPECT_EQ(text->text(), QStringLiteral("  some\ntext "));
    EXPECT_EQ(text->formats(), QStringList{QStringLiteral("text/plain")});

    const std::unique_ptr<QMimeData> link = mimeDataOf(*makeSnippet(1, "Title", "https://example.org/a?b=c\n"));
    EXPECT_EQ(link->text(), QStringLiteral("https://example.org/a?b=c\n"));
    EXPECT_EQ(link->urls(), QList<QUrl>{QUrl(QStringLiteral("https://example.org/a?b=c"))});

    EXPECT_EQ(window->model().supportedDragActions(), Qt::CopyAction);
    EXPECT_TRUE(window->model().flags(window->model().index(0)).testFlag(Qt::ItemIsDragEnabled));
    EXPECT_FALSE(list()->dragPicture(QStringLiteral("Title")).isNull());
}

TEST_F(SnippetsDragging, TheWindowStaysUnderADragAndGoesAfterIt) {
    const QSignalSpy left(window.get(), &SnippetsWindow::left);
    const std::shared_ptr<Snippet> newest = window->selectedSnippet();
    Q_EMIT list()->dragBegan();
    // As when the keyboard goes to the program that it is dragged to.
    window->orderOut(nullptr);
    EXPECT_TRUE(window->isVisible());
    Q_EMIT list()->dragEnded(newest, true);
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(left.count(), 1);
    EXPECT_EQ(newest->useCount(), 1);

    show();
    Q_EMIT list()->dragBegan();
    Q_EMIT list()->dragEnded(newest, false);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(newest->useCount(), 1) << "nobody took it";
}

TEST_F(SnippetsDragging, ADragOfARowBeginsAndEnds) {
    application.activateIgnoringOtherApps(true);
    const QSignalSpy began(list(), &SnippetsListView::dragBegan);
    const QSignalSpy ended(list(), &SnippetsListView::dragEnded);
    const QPoint row = list()->viewport()->mapTo(window.get(), list()->visualRect(window->model().index(1)).center());
    QTest::mousePress(window->windowHandle(), Qt::LeftButton, {}, row);
    for (int step = 1; step <= 4; ++step) {
        QTest::mouseMove(window->windowHandle(), row + QPoint(step * 10, 0));
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return ended.count() == 1; }));
    QTest::mouseRelease(window->windowHandle(), Qt::LeftButton, {}, row + QPoint(40, 0));
    EXPECT_EQ(began.count(), 1);
    EXPECT_EQ(selectedTitle(), "Middle") << "which is what was dragged";
    EXPECT_EQ(totalCount(), 3) << "its own rows are no text to add";
}

} // namespace
