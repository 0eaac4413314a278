// SPDX-License-Identifier: MIT
// Exchanges between computers by way of a real server.
#include "FaultyProxy.h"
#include "SyncRunTestSupport.h"

#include <QFile>
#include <QTest>

#include <utility>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

TEST_F(Syncing, MakesTheFolderAndPutsEachSnippetIntoAFileOfItsOwn) {
    one.add("first");
    one.add("second");
    const SyncOutcome outcome = one.sync(address());
    EXPECT_EQ(outcome.problem, QString());
    EXPECT_EQ(outcome.uploadCount, 2);
    EXPECT_THAT(filesOnServer(), ElementsAre("1000.plist", "1001.plist"));
}

TEST_F(Syncing, BringsWhatOthersHaveAdded) {
    one.add("from one");
    two.add("from two");
    one.sync(address());
    two.sync(address());
    one.sync(address());
    EXPECT_THAT(one.texts(), ElementsAre("from one", "from two"));
    EXPECT_EQ(one.texts(), two.texts());
}

TEST_F(Syncing, BringsEveryFieldToTheLastBit) {
    auto snippet = std::make_shared<Snippet>();
    snippet->setSnippetID(at(1763755566.1234567));
    snippet->setTitle(QStringLiteral("Grüße – 你好"));
    snippet->setText(QStringLiteral("a\r\nb\tc\u0007\U0001F600"));
    snippet->updateModificationDateWithDate(at(1763755570.7654321));
    snippet->noteUse(at(1763755580.5));
    one.snippets[1763755566.1234567] = snippet;
    one.sync(address());
    two.sync(address());
    ASSERT_THAT(two.snippets, SizeIs(1));
    EXPECT_EQ(SyncedFile::fingerprintOf(two.snippets.begin()->second.get()), SyncedFile::fingerprintOf(snippet.get()));
}

TEST_F(Syncing, AsksOnlyForTheListWhereNothingHasChanged) {
    one.add("first");
    one.add("second");
    one.sync(address());
    one.sync(address());
    FaultyProxy proxy(server.port());
    std::vector<std::string> methods;
    proxy.setPolicy([&](const ProxiedRequest& request) {
        methods.push_back(request.method.toStdString());
        return ProxyFault();
    });
    one.sync(proxy.addressFor(address()));
    EXPECT_THAT(methods, ElementsAre("PROPFIND"));
}

TEST_F(Syncing, BringsAnEditToTheOthers) {
    const double identity = one.add("old");
    one.sync(address());
    two.sync(address());
    two.edit(identity, "new");
    EXPECT_EQ(two.sync(address()).problem, QString());
    one.sync(address());
    EXPECT_EQ(one.textOf(identity), "new");
}

TEST_F(Syncing, WaitsUntilTheServerVouchesForAVersionThatWasChangedWithinTheSecond) {
    one.server = two.server = nullptr;
    const double identity = one.add("1");
    one.sync(address());
    for (const char* text : {"2", "3"}) {
        two.sync(address());
        two.edit(identity, text);
        const SyncOutcome outcome = two.sync(address());
        EXPECT_EQ(outcome.problem, QString());
        EXPECT_THAT(toldBy(outcome), IsEmpty());
        EXPECT_EQ(outcome.uploadCount, 1);
    }
    one.sync(address());
    EXPECT_EQ(one.textOf(identity), "3");
}

TEST_F(Syncing, MarksARemovalOnTheServerAndRemovesElsewhere) {
    const double identity = one.add("gone");
    one.add("stays");
    one.sync(address());
    two.sync(address());
    one.remove(identity);
    const SyncOutcome outcome = one.sync(address());
    EXPECT_THAT(outcome.settledRemovals, ElementsAre(SyncedFile::nameFor(at(identity))));
    EXPECT_THAT(one.removed, IsEmpty());
    EXPECT_THAT(bytesOnServer(identity).toStdString(), testing::Not(HasSubstr("gone")));
    two.sync(address());
    EXPECT_THAT(two.texts(), ElementsAre("stays"));
    // And for good.
    one.sync(address());
    EXPECT_THAT(one.texts(), ElementsAre("stays"));
}

TEST_F(Syncing, SettlesARemovalThatNobodyElseHasHeardOf) {
    const double identity = one.add("never sent");
    one.remove(identity);
    one.sync(address());
    EXPECT_THAT(one.removed, IsEmpty());
    EXPECT_FALSE(QFile::exists(pathOnServer(identity)));
}

TEST_F(Syncing, SendsASnippetAgainThatWasRemovedAndMadeAnew) {
    const double identity = one.add("first life");
    one.sync(address());
    two.sync(address());
    one.remove(identity);
    one.sync(address());
    two.sync(address());
    auto anew = std::make_shared<Snippet>();
    anew->setSnippetID(at(identity));
    anew->setText(QStringLiteral("second life"));
    one.snippets[identity] = anew;
    one.removed.insert(SyncedFile::nameFor(at(identity)));
    one.sync(address());
    EXPECT_THAT(one.removed, IsEmpty());
    two.sync(address());
    EXPECT_EQ(two.textOf(identity), "second life");
}

TEST_F(Syncing, KeepsBothVersionsOfASnippetChangedOnBothSides) {
    const double identity = one.add("common");
    one.sync(address());
    two.sync(address());
    one.edit(identity, "from one");
    two.edit(identity, "from two");
    one.sync(address());
    const SyncOutcome outcome = two.sync(address());
    EXPECT_EQ(outcome.problem, QString());
    EXPECT_THAT(toldBy(outcome), ElementsAre("“Title” was changed here and elsewhere; both versions are kept"));
    two.sync(address());
    one.sync(address());
    EXPECT_THAT(one.texts(), UnorderedElementsAre("from one", "from two"));
    EXPECT_EQ(one.texts(), two.texts());
    EXPECT_EQ(one.textOf(identity), "from one");
}

TEST_F(Syncing, TakesTheSameChangeOnBothSidesForOne) {
    const double identity = one.add("common");
    one.sync(address());
    two.sync(address());
    one.edit(identity, "the same");
    two.edit(identity, "the same");
    one.sync(address());
    EXPECT_THAT(toldBy(two.sync(address())), IsEmpty());
    EXPECT_THAT(two.texts(), ElementsAre("the same"));
}

TEST_F(Syncing, PutsTheUsesOfBothSidesTogetherWithoutAConflict) {
    const double identity = one.add("text");
    one.sync(address());
    two.sync(address());
    const auto usedOnce = std::make_shared<Snippet>(*one.snippets.at(identity));
    usedOnce->noteUse(at(5000));
    one.snippets[identity] = usedOnce;
    const auto usedTwice = std::make_shared<Snippet>(*two.snippets.at(identity));
    usedTwice->noteUse(at(3000));
    usedTwice->noteUse(at(4000));
    two.snippets[identity] = usedTwice;
    one.sync(address());
    EXPECT_THAT(toldBy(two.sync(address())), IsEmpty());
    one.sync(address());
    for (const Computer* computer : {&one, &two}) {
        ASSERT_THAT(computer->snippets, SizeIs(1));
        EXPECT_EQ(computer->snippets.at(identity)->useCount(), 2);
        EXPECT_EQ(computer->snippets.at(identity)->dateOfLastUse(), at(5000));
    }
}

TEST_F(Syncing, KeepsBothWhereTwoHaveTheSameIdentityAndNothingInCommon) {
    Computer three{1000};
    one.add("of one");
    three.add("of three");
    one.sync(address());
    three.sync(address());
    three.sync(address());
    one.sync(address());
    EXPECT_THAT(one.texts(), UnorderedElementsAre("of one", "of three"));
    EXPECT_EQ(one.texts(), three.texts());
}

TEST_F(Syncing, KeepsAChangedSnippetThatWasRemovedElsewhere) {
    const double identity = one.add("common");
    one.sync(address());
    two.sync(address());
    one.remove(identity);
    two.edit(identity, "changed");
    one.sync(address());
    EXPECT_THAT(toldBy(two.sync(address())),
                ElementsAre("“Title” was removed elsewhere, but has been changed here since, and stays"));
    one.sync(address());
    EXPECT_THAT(one.texts(), ElementsAre("changed"));
    EXPECT_THAT(two.texts(), ElementsAre("changed"));
}

TEST_F(Syncing, BringsBackARemovedSnippetThatWasChangedElsewhere) {
    const double identity = one.add("common");
    one.sync(address());
    two.sync(address());
    two.edit(identity, "changed");
    two.sync(address());
    one.remove(identity);
    EXPECT_THAT(toldBy(one.sync(address())),
                ElementsAre("“Title” was removed here, but has been changed elsewhere since, and is back"));
    EXPECT_THAT(one.texts(), ElementsAre("changed"));
    EXPECT_THAT(one.removed, IsEmpty());
}

TEST_F(Syncing, SendsAgainWhatTheServerHasLost) {
    one.add("precious");
    one.sync(address());
    two.sync(address());
    ASSERT_TRUE(server.files().removeRecursively());
    two.sync(address());
    one.sync(address());
    EXPECT_THAT(one.texts(), ElementsAre("precious"));
    EXPECT_THAT(two.texts(), ElementsAre("precious"));
    EXPECT_THAT(filesOnServer(), ElementsAre("1000.plist"));
}

TEST_F(Syncing, BringsAgainWhatWasLostHereWithoutHavingBeenRemoved) {
    one.add("precious");
    one.sync(address());
    one.sync(address());
    one.snippets.clear();
    one.sync(address());
    EXPECT_THAT(one.texts(), ElementsAre("precious"));
}

TEST_F(Syncing, LosesNothingWithoutTheMemoryOfEarlierSyncs) {
    const double identity = one.add("common");
    one.sync(address());
    two.sync(address());
    two.edit(identity, "changed");
    two.sync(address());
    one.state = SyncState();
    one.sync(address());
    EXPECT_THAT(one.texts(), UnorderedElementsAre("common", "changed"));
}

TEST_F(Syncing, LeavesOtherFilesInTheFolderAlone) {
    one.add("snippet");
    one.sync(address());
    for (const char* other : {"notes.txt", "1000.5.plist.bak", "abc.plist", "1e3.plist", "01000.plist"}) {
        write(server.files().filePath(QString::fromLatin1(other)), "mine");
    }
    ASSERT_TRUE(server.files().mkdir(QStringLiteral("3000.plist")));
    const SyncOutcome outcome = two.sync(address());
    EXPECT_EQ(outcome.problem, QString());
    EXPECT_THAT(toldBy(outcome), IsEmpty());
    EXPECT_THAT(two.texts(), ElementsAre("snippet"));
    EXPECT_THAT(filesOnServer(), SizeIs(6));
}

TEST_F(Syncing, LeavesAFileThatIsNoSnippetAloneAndSaysSo) {
    const double identity = one.add("snippet");
    one.add("another");
    one.sync(address());
    write(pathOnServer(identity), "<html>garbage</html>");
    const SyncOutcome outcome = two.sync(address());
    EXPECT_EQ(outcome.problem, QString());
    EXPECT_THAT(toldBy(outcome), ElementsAre("1000.plist on the server is not a snippet and was left alone"));
    EXPECT_THAT(two.texts(), ElementsAre("another"));
    one.edit(identity, "edited");
    one.sync(address());
    EXPECT_EQ(bytesOnServer(identity), "<html>garbage</html>");
    EXPECT_EQ(one.textOf(identity), "edited");
}

TEST_F(Syncing, LeavesASnippetUnderTheNameOfAnotherAlone) {
    const double identity = one.add("snippet");
    one.sync(address());
    ASSERT_TRUE(QFile::copy(pathOnServer(identity), pathOnServer(5000)));
    const SyncOutcome outcome = two.sync(address());
    EXPECT_THAT(toldBy(outcome), ElementsAre("5000.plist on the server is not a snippet and was left alone"));
    EXPECT_THAT(two.texts(), ElementsAre("snippet"));
}

TEST_F(Syncing, NeverWritesOverAVersionThatItHasNotSeen) {
    const double identity = one.add("common");
    one.sync(address());
    two.sync(address());
    two.sync(address());
    two.edit(identity, "from two");
    FaultyProxy proxy(server.port());
    bool hasIntervened = false;
    proxy.setPolicy([&](const ProxiedRequest& request) {
        // The other computer is quicker, by the blink of an eye.
        if (request.method == "PUT" && !std::exchange(hasIntervened, true)) {
            one.edit(identity, "from one");
            one.sync(address());
        }
        return ProxyFault();
    });
    const SyncOutcome outcome = two.sync(proxy.addressFor(address()));
    EXPECT_EQ(outcome.problem, QString());
    two.sync(address());
    one.sync(address());
    EXPECT_THAT(one.texts(), UnorderedElementsAre("from one", "from two"));
    EXPECT_EQ(one.texts(), two.texts());
}

TEST_F(Syncing, NeverWritesANewFileOverOneThatHasJustComeUp) {
    Computer three{1000};
    one.add("from one");
    FaultyProxy proxy(server.port());
    bool hasIntervened = false;
    proxy.setPolicy([&](const ProxiedRequest& request) {
        if (request.method == "PUT" && !std::exchange(hasIntervened, true)) {
            three.add("from three");
            three.sync(address());
        }
        return ProxyFault();
    });
    one.sync(proxy.addressFor(address()));
    one.sync(address());
    three.sync(address());
    EXPECT_THAT(one.texts(), UnorderedElementsAre("from one", "from three"));
    EXPECT_EQ(one.texts(), three.texts());
}

TEST_F(Syncing, EndsEarlyWithWhatItHasComeToBy) {
    one.add("text");
    SyncInput input;
    input.snippets.push_back(one.snippets.begin()->second);
    SyncRun run(std::make_unique<WebDavFolder>(address(), WebDavFolder::Credentials{}), std::move(input));
    int ends = 0;
    QString problem;
    QObject::connect(&run, &SyncRun::finished, &run, [&](const SyncOutcome& outcome) {
        ++ends;
        problem = outcome.problem;
    });
    run.start();
    run.stop(QStringLiteral("enough"));
    run.stop(QStringLiteral("again"));
    QTest::qWait(100);
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(problem, QStringLiteral("enough"));
}
