// SPDX-License-Identifier: MIT
// Exchanges between computers whose server, or the way to it, fails.
#include "FaultyProxy.h"
#include "SyncRunTestSupport.h"

#include <iterator>
#include <ostream>
#include <random>
#include <set>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

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

/// What the server answers to one method, and what the user reads of it.
struct BadAnswer {
    const char* name;
    const char* method;
    ProxyFault fault;
    const char* told;
    bool endsTheSync;
};

void PrintTo(const BadAnswer& bad, std::ostream* out) {
    *out << bad.method << " answered badly";
}

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
