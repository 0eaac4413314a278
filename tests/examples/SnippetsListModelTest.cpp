// SPDX-License-Identifier: MIT
#include "SnippetsHost.h"

#include <SnippetsListModel.h>
#include <SnippetsListView.h>

#include <QItemSelectionModel>
#include <QSet>
#include <QSignalSpy>
#include <QTest>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A record that counts how often its title is asked for.
class CountingSnippet : public Snippet {
public:
    QString title() const override {
        ++askedCount;
        return Snippet::title();
    }

    static inline int askedCount = 0;
};

/// A model that notes which rows a view asks about.
class CountingModel : public SnippetsListModel {
public:
    using SnippetsListModel::SnippetsListModel;

    QVariant data(const QModelIndex& index, int role) const override {
        askedRows.insert(index.row());
        return SnippetsListModel::data(index, role);
    }

    mutable QSet<int> askedRows;
};

class SnippetsListModelTest : public SnippetsHost {
protected:
    static std::vector<std::string> titles(const SnippetsListModel& model) {
        std::vector<std::string> list;
        for (int row = 0; row < model.rowCount(); ++row) {
            list.push_back(model.index(row).data().toString().toStdString());
        }
        return list;
    }

    std::vector<std::string> found(SnippetsListModel& model, const char* search) {
        model.setSearch(QString::fromUtf8(search));
        return titles(model);
    }

    int totalAdded = 0;
};

TEST_F(SnippetsListModelTest, ListsTheNewestFirst) {
    add(2.0, "second");
    add(3.5, "newest");
    add(1.0, "oldest");
    database->addSnippet(std::make_shared<Snippet>());
    const SnippetsListModel model(database);
    EXPECT_THAT(titles(model), ElementsAre("newest", "second", "oldest", "Untitled"));
}

TEST_F(SnippetsListModelTest, TellsTheFieldsOfARow) {
    const std::shared_ptr<Snippet> snippet =
        add(NSDate::date().timeIntervalSince1970(), "Title", "Title\nFirst line\n");
    snippet->noteUse(NSDate::date());
    const SnippetsListModel model(database);
    EXPECT_EQ(model.index(0).data(SnippetsListModel::FirstLineRole).toString(), QStringLiteral("First line"));
    EXPECT_EQ(model.index(0).data(SnippetsListModel::DateRole).toString(), QStringLiteral("Just now"));
    EXPECT_EQ(model.index(0).data(SnippetsListModel::UseCountRole).toInt(), 1);
}

TEST_F(SnippetsListModelTest, FindsEveryWordInTitleOrText) {
    add(3.0, "Invoice", "payable within thirty days");
    add(2.0, "Thirty", "an invoice number");
    add(1.0, "Greeting", "hello");
    SnippetsListModel model(database);

    EXPECT_THAT(found(model, "thirty invoice"), ElementsAre("Invoice", "Thirty"));
    EXPECT_THAT(found(model, "  days   invo "), ElementsAre("Invoice"));
    EXPECT_THAT(found(model, "thirty hello"), IsEmpty());
    EXPECT_THAT(found(model, " "), ElementsAre("Invoice", "Thirty", "Greeting"));
}

TEST_F(SnippetsListModelTest, FindsWhateverTheCaseAndTheAccents) {
    add(5.0, "CAFÉ");
    add(4.0, "cafe\u0301");
    add(3.0, "Straße");
    add(2.0, "Ωμέγα");
    add(1.0, "ﬁnal");
    SnippetsListModel model(database);

    EXPECT_THAT(found(model, "cafe"), ElementsAre("CAFÉ", "cafe\u0301"));
    EXPECT_THAT(found(model, "Café"), ElementsAre("CAFÉ", "cafe\u0301"));
    EXPECT_THAT(found(model, "STRASSE"), ElementsAre("Straße"));
    EXPECT_THAT(found(model, "STRAẞE"), ElementsAre("Straße"));
    EXPECT_THAT(found(model, "ωμεγα"), ElementsAre("Ωμέγα"));
    EXPECT_THAT(found(model, "FINAL"), ElementsAre("ﬁnal"));
}

TEST_F(SnippetsListModelTest, FollowsTheDatabaseRowByRow) {
    add(1.0, "one");
    const std::shared_ptr<Snippet> two = add(2.0, "two");
    add(3.0, "three");
    SnippetsListModel model(database);
    QItemSelectionModel selection(&model);
    selection.select(model.indexOf(*two), QItemSelectionModel::Select);
    const QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    const QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    const QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);

    const std::shared_ptr<Snippet> between = add(2.5, "between");
    database->removeSnippet(std::shared_ptr<_LTSnippet>(database->snippets()[0]));

    EXPECT_THAT(titles(model), ElementsAre("three", "between", "two"));
    EXPECT_EQ(resets.count(), 0);
    ASSERT_EQ(inserted.count(), 1);
    EXPECT_EQ(inserted.at(0).at(1).toInt(), 1);
    ASSERT_EQ(removed.count(), 1);
    EXPECT_EQ(removed.at(0).at(1).toInt(), 3);
    ASSERT_EQ(selection.selectedIndexes().size(), 1);
    EXPECT_EQ(model.snippetAt(selection.selectedIndexes().first()), two);
}

TEST_F(SnippetsListModelTest, FollowsARecordThatIsInTheListTwice) {
    const std::shared_ptr<Snippet> twice = add(1.0, "twice");
    SnippetsListModel model(database);
    database->addSnippet(twice);
    EXPECT_THAT(titles(model), ElementsAre("twice", "twice"));
    database->removeSnippet(twice);
    EXPECT_THAT(titles(model), IsEmpty());
}

TEST_F(SnippetsListModelTest, SearchingKeepsWhatStaysSelected) {
    for (int index = 0; index < 100; ++index) {
        add(index, index % 3 == 0 ? "fizz" : "other");
    }
    SnippetsListModel model(database);
    QItemSelectionModel selection(&model);
    const std::shared_ptr<Snippet> fizz = model.snippetAt(model.index(99 - 33));
    selection.select(model.indexOf(*fizz), QItemSelectionModel::Select);
    const QSignalSpy resets(&model, &QAbstractItemModel::modelReset);

    model.setSearch(QStringLiteral("fi"));
    EXPECT_EQ(model.rowCount(), 34);
    model.setSearch(QStringLiteral("f"));
    model.setSearch({});

    EXPECT_EQ(model.rowCount(), 100);
    EXPECT_EQ(resets.count(), 0);
    ASSERT_EQ(selection.selectedIndexes().size(), 1);
    EXPECT_EQ(model.snippetAt(selection.selectedIndexes().first()), fizz);
}

TEST_F(SnippetsListModelTest, WhatIsAddedDuringASearchMustMatchIt) {
    SnippetsListModel model(database);
    model.setSearch(QStringLiteral("wanted"));
    add(1.0, "wanted");
    add(2.0, "other");
    EXPECT_THAT(titles(model), ElementsAre("wanted"));
    EXPECT_EQ(model.totalCount(), 2);
}

TEST_F(SnippetsListModelTest, FollowsARecordThatWasChanged) {
    const std::shared_ptr<Snippet> snippet = add(1.0, "before");
    add(2.0, "other");
    SnippetsListModel model(database);
    model.setSearch(QStringLiteral("before"));
    const QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);

    snippet->noteUse(dateAt(10.0));
    database->notifyOfModificationForSnippet(snippet);
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed.at(0).at(0).toModelIndex().row(), 0);

    snippet->setTitle(QStringLiteral("after"));
    snippet->updateModificationDateWithDate(dateAt(11.0));
    database->notifyOfModificationForSnippet(snippet);
    EXPECT_THAT(titles(model), IsEmpty());
    EXPECT_THAT(found(model, "after"), ElementsAre("after"));
}

TEST_F(SnippetsListModelTest, FindsTheSameHoweverASearchIsComeTo) {
    const std::vector<const char*> texts{"alpha beta", "alphabet", "beta gamma", "Gamma Álpha", "", "bet", "lphabe"};
    for (std::size_t index = 0; index < 210; ++index) {
        add(static_cast<double>(index), "", texts[index * index % texts.size()]);
    }
    SnippetsListModel model(database);
    QItemSelectionModel selection(&model);
    selection.select(model.index(100), QItemSelectionModel::Select);
    for (const char* search : {"a", "al", "alp", "alp b", "alp be", "be", "b", "b gam", "gam", "", "x", "xa", "a",
                               "lpha", "alphabet", "et", "", "beta alpha", "alpha"}) {
        const std::vector<std::string> after = found(model, search);
        SnippetsListModel fresh(database);
        EXPECT_EQ(after, found(fresh, search)) << search;
    }
}

TEST_F(SnippetsListModelTest, ManyRowsThatComeAndGoAreToldOfInAFewSteps) {
    for (int index = 0; index < 2000; ++index) {
        add(index, index % 2 == 0 ? "even" : "odd");
    }
    SnippetsListModel model(database);
    QItemSelectionModel selection(&model);
    const std::shared_ptr<Snippet> even = model.snippetAt(model.index(999));
    ASSERT_EQ(even->title(), QStringLiteral("even"));
    selection.select(model.indexOf(*even), QItemSelectionModel::Select);
    const QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    const QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
    const QSignalSpy selected(&selection, &QItemSelectionModel::selectionChanged);
    model.setSearch(QStringLiteral("even"));
    EXPECT_EQ(model.rowCount(), 1000);
    model.setSearch({});
    EXPECT_EQ(model.rowCount(), 2000);
    EXPECT_LE(inserted.count() + removed.count(), 8);
    for (const QList<QVariant>& change : selected) {
        EXPECT_TRUE(change[0].value<QItemSelection>().isEmpty() && change[1].value<QItemSelection>().isEmpty())
            << "what is selected stays so, and only has another row";
    }
    EXPECT_EQ(model.snippetAt(selection.selectedIndexes().first()), even);
}

TEST_F(SnippetsListModelTest, FollowsWhatIsDoneByThoseItTells) {
    add(1.0, "one");
    const std::shared_ptr<Snippet> two = add(2.0, "two");
    SnippetsListModel model(database);
    QObject::connect(&model, &QAbstractItemModel::rowsAboutToBeRemoved, &model, [&] {
        if (totalAdded++ == 0) {
            add(3.0, "three");
        }
    });
    database->removeSnippet(two);
    EXPECT_THAT(titles(model), ElementsAre("three", "one"));
    EXPECT_EQ(model.totalCount(), 2);
}

TEST_F(SnippetsListModelTest, KeepsTheRowOfWhatIsHeldUntilAnotherSearch) {
    const std::shared_ptr<Snippet> held = add(1.0, "wanted");
    const std::shared_ptr<Snippet> other = add(2.0, "wanted too");
    SnippetsListModel model(database);
    model.setSearch(QStringLiteral("want"));
    model.setHeld(held);
    for (const std::shared_ptr<Snippet>& snippet : {held, other}) {
        snippet->rename(QStringLiteral("renamed"), dateAt(5.0));
        database->notifyOfModificationForSnippet(snippet);
    }
    EXPECT_THAT(titles(model), ElementsAre("renamed"));
    EXPECT_TRUE(model.indexOf(*held).isValid());
    model.setSearch(QStringLiteral("wan"));
    EXPECT_THAT(titles(model), IsEmpty());
    EXPECT_THAT(found(model, ""), ElementsAre("renamed", "renamed"));
}

TEST_F(SnippetsListModelTest, PreparesTheSearchInSlices) {
    for (int index = 0; index < 1000; ++index) {
        auto snippet = std::make_shared<CountingSnippet>();
        snippet->setSnippetID(dateAt(index));
        snippet->setTitle(QStringLiteral("Snippet %1").arg(index));
        database->addSnippet(snippet);
    }
    SnippetsListModel model(database);
    CountingSnippet::askedCount = 0;
    EXPECT_TRUE(model.prepareSearch(0));
    EXPECT_LT(CountingSnippet::askedCount, 1000);
    while (model.prepareSearch(0)) {
    }
    EXPECT_EQ(CountingSnippet::askedCount, 1000);
    EXPECT_EQ(found(model, "snippet 99").size(), 19U);
    EXPECT_EQ(CountingSnippet::askedCount - 1000, 19) << "for the titles of the rows alone";
}

TEST_F(SnippetsListModelTest, AnswersTheNewestWhateverTheSearch) {
    add(1.0, "one");
    const std::shared_ptr<Snippet> two = add(2.0, "two");
    const std::shared_ptr<Snippet> three = add(3.0, "three");
    SnippetsListModel model(database);
    model.setSearch(QStringLiteral("one"));
    EXPECT_THAT(model.newest(2), ElementsAre(three, two));
    EXPECT_EQ(model.newest(9).size(), 3U);
}

TEST_F(SnippetsListModelTest, AsksRecordsForNothingBeforeTheyAreShown) {
    for (int index = 0; index < 10'000; ++index) {
        auto snippet = std::make_shared<CountingSnippet>();
        snippet->setSnippetID(dateAt(index));
        snippet->setTitle(QStringLiteral("Snippet %1").arg(index));
        database->snippets().addObject(snippet);
    }
    CountingSnippet::askedCount = 0;
    CountingModel model(database);
    SnippetsListView view;
    view.resize(300, 400);
    view.setModel(&model);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    QCoreApplication::processEvents();

    EXPECT_EQ(model.rowCount(), 10'000);
    EXPECT_FALSE(model.askedRows.isEmpty());
    EXPECT_LE(model.askedRows.size(), 20);
    EXPECT_LE(CountingSnippet::askedCount, 200);

    // Once a record at the first search, and never again for the following ones.
    CountingSnippet::askedCount = 0;
    model.setSearch(QStringLiteral("snippet"));
    const int atFirstSearch = CountingSnippet::askedCount;
    EXPECT_EQ(atFirstSearch, 10'000);
    model.setSearch(QStringLiteral("snippet 99"));
    EXPECT_EQ(CountingSnippet::askedCount, atFirstSearch);
    EXPECT_EQ(model.rowCount(), 280);
}

} // namespace
