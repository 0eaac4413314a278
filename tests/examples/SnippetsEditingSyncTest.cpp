// SPDX-License-Identifier: MIT
// What is edited in the window while somebody else, a sync above all, changes the same snippets.
#include "SnippetsEditingHost.h"

#include <VXKit/app/LTApplicationProtocol.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>

#include <QSignalSpy>

#include <functional>

#include <gmock/gmock.h>

namespace {

using testing::UnorderedElementsAre;

/// A sync that begins and ends as a test wants it.
class SwitchedSync : public LTSyncManagerClass {
public:
    bool isSyncInProgress() const override { return isInProgress; }
    void enableSyncing() override {}
    void disableSyncing() override {}

    bool isInProgress = false;
};

class SnippetsEditingDuringSync : public SnippetsEditingHost {
protected:
    void SetUp() override {
        application.otherSyncManager = &sync;
        SnippetsEditingHost::SetUp();
    }
    void TearDown() override { window.reset(); }

    void beginSync() { sync.isInProgress = true; }
    void endSync(const std::function<void()>& apply = {}) {
        sync.isInProgress = false;
        if (apply) {
            apply();
        }
        NSNotificationCenter::defaultCenter().postNotificationName(LTSyncManagerHasEndedSyncing, nullptr);
    }

    void changeElsewhere(const std::shared_ptr<Snippet>& snippet, const char* text) const {
        snippet->setText(QString::fromUtf8(text));
        snippet->updateModificationDate();
        database->notifyOfModificationForSnippet(snippet);
    }

    SwitchedSync sync;
};

TEST_F(SnippetsEditingDuringSync, UndoLeavesWhatCameInAfterTheTypingWasKept) {
    edit();
    type("mine ");
    press(Qt::Key_Escape);
    const std::shared_ptr<Snippet> edited = selected();
    changeElsewhere(edited, "theirs");
    window->selectRow(1);
    undo();
    EXPECT_EQ(edited->text(), QStringLiteral("theirs"));
    EXPECT_EQ(footer()->text(), QStringLiteral("“Newest” has been changed since"));
}

TEST_F(SnippetsEditingDuringSync, UndoesWhatIsTypedIntoWhatCameIn) {
    edit();
    type("mine ");
    press(Qt::Key_Escape);
    changeElsewhere(selected(), "theirs");
    edit();
    press(Qt::Key_Home, Qt::ControlModifier);
    type("not ");
    press(Qt::Key_Escape);
    EXPECT_EQ(selectedText(), "not theirs");
    undo();
    EXPECT_EQ(selectedText(), "theirs");
}

TEST_F(SnippetsEditingDuringSync, UndoesWhatWasBeingTypedWhenAChangeCameIn) {
    edit();
    type("mine ");
    changeElsewhere(selected(), "theirs");
    press(Qt::Key_Escape);
    EXPECT_EQ(selectedText(), "mine newest text");
    undo();
    EXPECT_EQ(selectedText(), "newest text");
    EXPECT_THAT(texts(), UnorderedElementsAre("oldest text", "middle text", "newest text", "theirs"));
}

TEST_F(SnippetsEditingDuringSync, ShowsATextThatIsUndoneAtOnce) {
    edit();
    type("mine ");
    press(Qt::Key_Escape);
    beginSync();
    undo();
    EXPECT_EQ(previewedText(), QStringLiteral("newest text"));
    redo();
    EXPECT_EQ(previewedText(), QStringLiteral("mine newest text"));
    undo();
    edit();
    press(Qt::Key_End, Qt::ControlModifier);
    type("!");
    endSync();
    EXPECT_FALSE(messageBar()->isVisible()) << "nobody else has changed it";
    press(Qt::Key_Escape);
    EXPECT_THAT(texts(), UnorderedElementsAre("oldest text", "middle text", "newest text!"));
}

TEST_F(SnippetsEditingDuringSync, ShowsAndFindsANewTitleAtOnce) {
    window->setSearch(QStringLiteral("newest"));
    window->setSearch(QString());
    const QSignalSpy drawnAgain(&window->model(), &QAbstractItemModel::dataChanged);
    beginSync();
    rename("Renamed");
    EXPECT_GE(drawnAgain.count(), 1);
    EXPECT_EQ(window->model().index(0).data().toString(), QStringLiteral("Renamed"));
    window->setSearch(QStringLiteral("renamed"));
    EXPECT_EQ(selectedTitle(), "Renamed");
    endSync();
    EXPECT_EQ(selectedTitle(), "Renamed");
    EXPECT_EQ(totalCount(), 3);
}

TEST_F(SnippetsEditingDuringSync, RenamesNothingThatWentAwayDuringTheQuestion) {
    const AnimationDurationsForTesting none(0);
    const std::shared_ptr<Snippet> removed = selected();
    beginSync();
    whenNextModalRunHasBegun(application, [&] {
        endSync([&] { database->removeSnippet(removed); });
        application.modalWindow()->findChild<QLineEdit*>()->setText(QStringLiteral("Renamed"));
        pressInSheet(Qt::Key_Return);
    });
    press(Qt::Key_F2);
    EXPECT_EQ(removed->title(), QStringLiteral("Newest"));
    EXPECT_EQ(footer()->text(), QStringLiteral("“Newest” is no longer here"));
    EXPECT_FALSE(window->canUndo());
    EXPECT_EQ(totalCount(), 2);
}

TEST_F(SnippetsEditingDuringSync, LeavesTheSearchWhereWhatCameBackIsNotListedYet) {
    press(Qt::Key_Delete);
    type("oldest");
    beginSync();
    window->undo();
    EXPECT_EQ(footer()->text(), QStringLiteral("“Newest” comes back when the sync has ended"));
    EXPECT_EQ(search()->text(), QStringLiteral("oldest"));
    EXPECT_EQ(selectedTitle(), "Oldest");
    endSync();
    EXPECT_EQ(totalCount(), 3);
}

} // namespace
