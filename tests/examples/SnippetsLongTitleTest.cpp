// SPDX-License-Identifier: MIT
// Titles that nobody would give a snippet, and that come in with a list.
#include "SnippetsWindowHost.h"

#include <TitleText.h>

#include <VXKit/platform/appkit/BlockingAnimation.h>

#include <QLabel>

namespace {

constexpr qsizetype endlessLength = 5'000'000;
constexpr qsizetype longestShown = 1000;

class SnippetsLongTitle : public SnippetsWindowHost {
protected:
    void SetUp() override {
        SnippetsWindowHost::SetUp();
        endless = std::make_shared<Snippet>();
        endless->setSnippetID(dateAt(4.0));
        endless->setTitle(QString(endlessLength, u'x'));
        database->addSnippet(endless);
        window->selectRow(0);
    }

    std::shared_ptr<Snippet> endless;
};

TEST_F(SnippetsLongTitle, IsDrawnAsFarAsThereIsRoom) {
    ASSERT_EQ(window->selectedSnippet(), endless);
    EXPECT_LT(window->model().index(0).data().toString().size(), longestShown);
    for (const QLabel* label : window->findChildren<QLabel*>()) {
        EXPECT_LT(label->text().size(), longestShown);
    }
    EXPECT_EQ(endless->title().size(), endlessLength);
}

TEST_F(SnippetsLongTitle, StaysWhereItIsNotReplaced) {
    const AnimationDurationsForTesting none(0);
    whenAsked(Qt::Key_Return);
    press(Qt::Key_F2);
    EXPECT_EQ(questions, 1);
    EXPECT_EQ(endless->title().size(), endlessLength);
    EXPECT_FALSE(window->canUndo());
}

TEST(TitleText, EndsWithAWholeCharacter) {
    const QString smile = QStringLiteral("\U0001F600");
    const QString before(38, u'x');
    EXPECT_EQ(shortTitle(before + smile), before + smile);
    EXPECT_EQ(shortTitle(before + smile + smile), before + QChar(u'…'));
    EXPECT_EQ(quotedTitle(QString(41, u'x')), QStringLiteral("“") + QString(39, u'x') + QStringLiteral("…”"));
}

} // namespace
