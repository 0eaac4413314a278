// SPDX-License-Identifier: MIT
// Exchanges between computers by way of a real server.
#include "Computer.h"
#include "DavServer.h"
#include "FaultyProxy.h"

#include <sync/SyncRun.h>

#include <QCoreApplication>
#include <QFile>
#include <QSignalSpy>
#include <QTest>

#include <map>
#include <random>
#include <set>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

namespace {

std::vector<std::string> toldBy(const SyncOutcome& outcome) {
    std::vector<std::string> notes;
    for (const QString& note : outcome.notes) {
        notes.push_back(note.toStdString());
    }
    return notes;
}

class Syncing : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(server.start());
        one.server = two.server = &server;
    }

    QUrl address() const { return server.address(); }

    QString pathOnServer(double identity) const { return server.files().filePath(SyncedFile::nameFor(at(identity))); }

    std::vector<std::string> filesOnServer() const {
        std::vector<std::string> names;
        for (const QString& file : server.files().entryList(QDir::Files)) {
            names.push_back(file.toStdString());
        }
        return names;
    }

    QByteArray bytesOnServer(double identity) const {
        QFile file(pathOnServer(identity));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void write(const QString& path, const QByteArray& bytes) const {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }

    int argc = 1;
    char name[5] = "test";
    char* argv[2] = {name, nullptr};
    QCoreApplication application{argc, argv};
    DavServer server;
    Computer one{1000};
    Computer two{2000};
};

} // namespace

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

TEST_F(Syncing, GivesUpOnAFileThatOthersKeepChangingAndGoesOnWithTheRest) {
    const double contested = one.add("contested");
    one.sync(address());
    one.sync(address());
    one.edit(contested, "edited");
    one.add("calm");
    FaultyProxy proxy(server.port());
    proxy.setPolicy([&](const ProxiedRequest& request) {
        return request.method == "PUT" && request.path.endsWith("/1000.plist") ? ProxyFault::status(412) : ProxyFault();
    });
    const SyncOutcome outcome = one.sync(proxy.addressFor(address()));
    EXPECT_EQ(outcome.problem, QString());
    EXPECT_THAT(toldBy(outcome), ElementsAre("“Title” could not be written, because it keeps being changed elsewhere"));
    EXPECT_EQ(outcome.uploadCount, 1);
    one.sync(address());
    two.sync(address());
    EXPECT_THAT(two.texts(), UnorderedElementsAre("edited", "calm"));
}

TEST_F(Syncing, RefusesToWriteToAServerThatDoesNotTellVersionsApart) {
    const double identity = one.add("common");
    one.sync(address());
    FaultyProxy proxy(server.port());
    proxy.setAnswerFilter(
        [](QByteArray answer) { return answer.replace("ETag:", "NoTg:").replace("getetag", "getetoo"); });
    two.sync(proxy.addressFor(address()));
    EXPECT_EQ(two.textOf(identity), "common");
    two.edit(identity, "edited");
    EXPECT_THAT(two.sync(proxy.addressFor(address())).problem.toStdString(), HasSubstr("ETag"));
    one.sync(address());
    EXPECT_EQ(one.textOf(identity), "common");
}

TEST_F(Syncing, SurvivesAnAnswerThatIsLostAfterTheServerDidWhatItWasAsked) {
    const double identity = one.add("first");
    one.sync(address());
    one.sync(address());
    one.edit(identity, "edited");
    FaultyProxy proxy(server.port());
    proxy.setPolicy([&](const ProxiedRequest& request) {
        return ProxyFault::of(request.method == "PUT" ? ProxyFault::Kind::LoseAnswer : ProxyFault::Kind::None);
    });
    EXPECT_THAT(one.sync(proxy.addressFor(address())).problem.toStdString(), HasSubstr("The server cannot be reached"));
    EXPECT_THAT(toldBy(one.sync(address())), IsEmpty());
    two.sync(address());
    EXPECT_THAT(one.texts(), ElementsAre("edited"));
    EXPECT_THAT(two.texts(), ElementsAre("edited"));
}

TEST_F(Syncing, TakesNothingFromHalfAnAnswer) {
    one.add("text");
    one.sync(address());
    for (const char* method : {"PROPFIND", "GET"}) {
        FaultyProxy proxy(server.port());
        proxy.setPolicy([&](const ProxiedRequest& request) {
            return ProxyFault::of(request.method == method ? ProxyFault::Kind::HalfAnswer : ProxyFault::Kind::None);
        });
        EXPECT_NE(two.sync(proxy.addressFor(address())).problem, QString()) << method;
        EXPECT_THAT(two.texts(), IsEmpty());
    }
    two.sync(address());
    EXPECT_THAT(two.texts(), ElementsAre("text"));
}

TEST_F(Syncing, WaitsForASlowServer) {
    one.add("slow");
    FaultyProxy proxy(server.port());
    proxy.setPolicy(
        [](const ProxiedRequest&) { return ProxyFault{.kind = ProxyFault::Kind::None, .answer = {}, .delay = 300}; });
    EXPECT_EQ(one.sync(proxy.addressFor(address()), 5000).problem, QString());
    two.sync(address());
    EXPECT_THAT(two.texts(), ElementsAre("slow"));
}

TEST_F(Syncing, GivesUpOnASilentServerAfterItsTime) {
    one.add("text");
    FaultyProxy proxy(server.port());
    proxy.setPolicy([](const ProxiedRequest&) { return ProxyFault::of(ProxyFault::Kind::NeverAnswer); });
    EXPECT_EQ(one.sync(proxy.addressFor(address()), 200).problem, QStringLiteral("The server did not answer in time"));
}

TEST_F(Syncing, SaysThatThereIsNoServer) {
    one.add("text");
    server.kill();
    EXPECT_THAT(one.sync(address()).problem.toStdString(), HasSubstr("The server cannot be reached"));
    EXPECT_THAT(one.texts(), ElementsAre("text"));
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

/// What the server answers to one method, and what the user reads of it.
struct BadAnswer {
    const char* name;
    const char* method;
    ProxyFault fault;
    const char* told;
    bool endsTheSync;
};

class SyncingWithABadServer : public Syncing, public testing::WithParamInterface<BadAnswer> {};

TEST_P(SyncingWithABadServer, TellsWhatIsWrongAndLosesNothing) {
    const BadAnswer& bad = GetParam();
    const double shared = one.add("shared");
    one.sync(address());
    two.sync(address());
    one.add("of one");
    one.sync(address());
    two.add("of two");
    two.edit(shared, "edited");
    FaultyProxy proxy(server.port());
    proxy.setPolicy(
        [&](const ProxiedRequest& request) { return request.method == bad.method ? bad.fault : ProxyFault(); });
    const SyncOutcome outcome = two.sync(proxy.addressFor(address()));
    const QString told = outcome.problem + outcome.notes.join(QLatin1Char('\n'));
    EXPECT_THAT(told.toStdString(), HasSubstr(bad.told));
    EXPECT_EQ(!outcome.problem.isEmpty(), bad.endsTheSync) << outcome.problem.toStdString();
    EXPECT_THAT(two.texts(), testing::IsSupersetOf({"edited", "of two"}));

    two.sync(address());
    two.sync(address());
    one.sync(address());
    EXPECT_THAT(one.texts(), UnorderedElementsAre("edited", "of one", "of two"));
    EXPECT_EQ(one.texts(), two.texts());
}

const BadAnswer badAnswers[] = {
    {"Unauthorized", "PROPFIND", ProxyFault::status(401, "", "WWW-Authenticate: Basic realm=\"x\"\r\n"),
     "does not accept the name and password", true},
    {"UnauthorizedPut", "PUT", ProxyFault::status(401, "", "WWW-Authenticate: Basic realm=\"x\"\r\n"),
     "does not accept the name and password", true},
    {"Forbidden", "PROPFIND", ProxyFault::status(403), "forbids", true},
    {"Moved", "PROPFIND", ProxyFault::status(301, "", "Location: http://127.0.0.1/elsewhere\r\n"),
     "has moved to http://127.0.0.1/elsewhere", true},
    {"MovedPut", "PUT", ProxyFault::status(302, "", "Location: http://127.0.0.1/elsewhere\r\n"), "has moved", false},
    {"NoDav", "PROPFIND", ProxyFault::status(405), "is not one of a WebDAV folder", true},
    {"ConflictPut", "PUT", ProxyFault::status(409), "is not there", false},
    {"TroubleList", "PROPFIND", ProxyFault::status(500), "in trouble (500", true},
    {"TroublePut", "PUT", ProxyFault::status(500), "in trouble (500", false},
    {"TroubleGet", "GET", ProxyFault::status(503), "in trouble (503", false},
    {"LockedPut", "PUT", ProxyFault::status(423), "locked", false},
    {"FullPut", "PUT", ProxyFault::status(507), "no room", true},
    {"HtmlList", "PROPFIND", ProxyFault::status(200, "<html>Welcome to the hotel</html>"), "is not a WebDAV folder",
     true},
    {"GarbageList", "PROPFIND", ProxyFault::status(207, "\x01\x02 no xml at all"), "is not a WebDAV folder", true},
    {"BrokenList", "PROPFIND", ProxyFault::status(207, "<multistatus xmlns=\"DAV:\"><response><href>/x"),
     "is not a WebDAV folder", true},
    {"EmptyList", "PROPFIND", ProxyFault::status(207, "<multistatus xmlns=\"DAV:\"/>"), "is not a WebDAV folder", true},
    {"HtmlFile", "GET", ProxyFault::status(200, "<html>Welcome to the hotel</html>"), "is not a snippet", false},
    {"NoHttp",
     "PROPFIND",
     {.kind = ProxyFault::Kind::Answer, .answer = "rubbish\r\n\r\n", .delay = 0},
     "cannot be reached",
     true},
    {"NoAnswer", "PUT", ProxyFault::of(ProxyFault::Kind::CloseAtOnce), "cannot be reached", true},
    {"HalfListing", "PROPFIND", ProxyFault::of(ProxyFault::Kind::HalfAnswer), "The server", true},
};
INSTANTIATE_TEST_SUITE_P(Every, SyncingWithABadServer, testing::ValuesIn(badAnswers),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(Syncing, GivesUpOnAServerThatFailsAgainAndAgain) {
    for (int index = 0; index < 20; ++index) {
        one.add("text");
    }
    FaultyProxy proxy(server.port());
    int putCount = 0;
    proxy.setPolicy([&](const ProxiedRequest& request) {
        putCount += request.method == "PUT";
        return request.method == "PUT" ? ProxyFault::status(500) : ProxyFault();
    });
    EXPECT_THAT(one.sync(proxy.addressFor(address())).problem.toStdString(), HasSubstr("in trouble"));
    EXPECT_LT(putCount, 10);
}

TEST_F(Syncing, ConvergesAfterRandomChangesOnBothSidesWhateverGoesWrongMeanwhile) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto chance = [&](unsigned oneIn) { return random() % oneIn == 0; };
    FaultyProxy proxy(server.port());
    bool isFaulty = true;
    proxy.setPolicy([&](const ProxiedRequest&) {
        if (!isFaulty || !chance(6)) {
            return ProxyFault();
        }
        switch (random() % 5) {
        case 0:
            return ProxyFault::status(500);
        case 1:
            return ProxyFault::status(409);
        case 2:
            return ProxyFault::of(ProxyFault::Kind::CloseAtOnce);
        case 3:
            return ProxyFault::of(ProxyFault::Kind::HalfAnswer);
        default:
            return ProxyFault::of(ProxyFault::Kind::LoseAnswer);
        }
    });
    // A text that nobody has edited away or removed while it was before them must be somewhere at the end.
    std::set<std::string> written;
    std::set<std::string> givenUp;
    int count = 0;
    const auto changeSomething = [&](Computer& computer) {
        const std::string text = "text " + std::to_string(++count);
        auto chosen = computer.snippets.begin();
        if (computer.snippets.empty() || chance(3)) {
            computer.add(text.c_str());
            written.insert(text);
            return;
        }
        std::advance(chosen, random() % computer.snippets.size());
        const double identity = chosen->first;
        givenUp.insert(computer.textOf(identity));
        if (chance(3)) {
            computer.remove(identity);
        } else {
            computer.edit(identity, text.c_str());
            written.insert(text);
        }
    };
    for (int round = 0; round < 12; ++round) {
        for (Computer* computer : {&one, &two}) {
            for (auto changes = random() % 5; changes > 0; --changes) {
                changeSomething(*computer);
            }
            computer->sync(proxy.addressFor(address()));
        }
    }
    isFaulty = false;
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(one.sync(address()).problem, QString());
        EXPECT_EQ(two.sync(address()).problem, QString());
    }
    EXPECT_EQ(one.texts(), two.texts());
    const std::vector<std::string> texts = one.texts();
    for (const std::string& text : written) {
        if (!givenUp.contains(text)) {
            EXPECT_THAT(texts, testing::Contains(text));
        }
    }
}
