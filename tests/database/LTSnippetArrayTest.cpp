// SPDX-License-Identifier: MIT
#include "TestRecords.h"

#include <VXKit/platform/foundation/NSException.h>

#include <algorithm>
#include <map>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace {

bool scan(const LTSnippetArray& list, NSDate snippetID) {
    return std::any_of(list.begin(), list.end(),
                       [&](const auto& snippet) { return snippet->snippetID() == snippetID; });
}

double searchByScan(const LTSnippetArray& list, double time) {
    while (scan(list, at(time))) {
        time -= 1.0;
    }
    return time;
}

class SnippetArray : public testing::Test {
protected:
    // Noted before any record is stored, as a database does that names the class.
    SnippetArray() { static_cast<void>(_LTSnippetClass::of<Note>()); }

    LTSnippetArray list;
};

} // namespace

TEST_F(SnippetArray, RefusesNilAndIndexesBeyondItsEnd) {
    list.addObject(std::make_shared<Note>(1.0));
    EXPECT_THROW(list.addObject(nullptr), NSException);
    EXPECT_THROW(list.insertObject(nullptr, 0), NSException);
    EXPECT_THROW(list.insertObject(std::make_shared<Note>(), 2), NSException);
    EXPECT_THROW(list.replaceObjectAtIndex(0, nullptr), NSException);
    EXPECT_THROW(list.replaceObjectAtIndex(1, std::make_shared<Note>()), NSException);
    EXPECT_THROW(list.removeObjectAtIndex(1), NSException);
    EXPECT_THROW(static_cast<void>(list.objectAtIndex(1)), NSException);
    EXPECT_EQ(list.count(), 1U);
}

TEST_F(SnippetArray, FollowsARecordWhoseFieldChangesWhileItIsStored) {
    const auto note = std::make_shared<Note>(1.0);
    list.addObject(note);
    note->setSnippetID(at(2.0));
    EXPECT_FALSE(list.containsSnippetID(at(1.0)));
    EXPECT_TRUE(list.containsSnippetID(at(2.0)));
    note->changeFieldTo(at(3.0));
    EXPECT_FALSE(list.containsSnippetID(at(2.0)));
    EXPECT_TRUE(list.containsSnippetID(at(3.0)));
    note->loadFromDictionary({{"id", 4.0}});
    EXPECT_TRUE(list.containsSnippetID(at(4.0)));
    note->setSnippetID(std::nullopt);
    EXPECT_FALSE(list.containsSnippetID(at(4.0)));
    *note = Note(5.0);
    EXPECT_TRUE(list.containsSnippetID(at(5.0)));
}

TEST_F(SnippetArray, ForgetsARecordThatIsGone) {
    const auto note = std::make_shared<Note>(1.0);
    {
        LTSnippetArray other;
        other.addObject(note);
    }
    list.addObject(note);
    list.addObject(note);
    list.removeObjectAtIndex(0);
    EXPECT_TRUE(list.containsSnippetID(at(1.0)));
    list.removeObject(*note);
    EXPECT_FALSE(list.containsSnippetID(at(1.0)));
    note->setSnippetID(at(2.0));
    EXPECT_FALSE(list.containsSnippetID(at(2.0)));
}

TEST_F(SnippetArray, DoesNotFollowTheCopyOfAStoredRecord) {
    const auto note = std::make_shared<Note>(1.0);
    list.addObject(note);
    const std::shared_ptr<_LTSnippet> copy = note->copy();
    copy->setSnippetID(at(2.0));
    EXPECT_TRUE(list.containsSnippetID(at(1.0)));
    EXPECT_FALSE(list.containsSnippetID(at(2.0)));
}

TEST_F(SnippetArray, GoesByTheAnswerOfASubclassThatOverridesSnippetID) {
    const auto note = std::make_shared<ShiftedNote>(1.0);
    list.addObject(note);
    EXPECT_TRUE(list.containsSnippetID(at(1.0)));
    note->shift = 10.0;
    EXPECT_FALSE(list.containsSnippetID(at(1.0)));
    EXPECT_TRUE(list.containsSnippetID(at(11.0)));
    EXPECT_EQ(list.freeTimeAtOrBefore(11.0), 10.0);
}

TEST_F(SnippetArray, GoesByTheAnswerOfAClassThatWasNeverNoted) {
    class Unknown : public Note {
    public:
        using Note::Note;
    };
    const auto note = std::make_shared<Unknown>(1.0);
    list.addObject(note);
    EXPECT_TRUE(list.containsSnippetID(at(1.0)));
    static_cast<void>(_LTSnippetClass::of<Unknown>());
    note->setSnippetID(at(2.0));
    EXPECT_TRUE(list.containsSnippetID(at(2.0)));
    list.addObject(note);
    list.removeAllObjects();
    EXPECT_FALSE(list.containsSnippetID(at(2.0)));
}

TEST_F(SnippetArray, LeapsOverTakenTimesAndFindsThoseFreedAgain) {
    std::vector<std::shared_ptr<Note>> notes;
    for (int step = 0; step < 1000; ++step) {
        const double time = list.freeTimeAtOrBefore(5000.125);
        EXPECT_EQ(time, 5000.125 - step);
        notes.push_back(std::make_shared<Note>(time));
        list.addObject(notes.back());
    }
    list.removeObject(*notes[500]);
    EXPECT_EQ(list.freeTimeAtOrBefore(5000.125), 4500.125);
    list.addObject(notes[500]);
    EXPECT_EQ(list.freeTimeAtOrBefore(5000.125), 4000.125);
    list.removeObject(*notes[0]);
    EXPECT_EQ(list.freeTimeAtOrBefore(5000.125), 5000.125);
    EXPECT_EQ(list.freeTimeAtOrBefore(4999.125), 4000.125);
    list.removeObject(*notes[999]);
    EXPECT_EQ(list.freeTimeAtOrBefore(4999.125), 4001.125);
}

TEST_F(SnippetArray, FindsEveryIDAmongThousandsThatComeAndGo) {
    std::mt19937 random(20261121);
    // Seconds, days and fractions, so that many IDs differ in a few bits only.
    const auto time = [&] {
        static constexpr double steps[] = {1.0, 86400.0, 0.001, 1048576.0};
        return 1.0e9 + steps[random() % std::size(steps)] * double(random() % 4000);
    };
    std::map<double, std::vector<std::shared_ptr<Note>>> there;
    for (int step = 0; step < 60000; ++step) {
        // It grows to thousands and shrinks to none, twice.
        const bool grows = step / 15000 % 2 == 0;
        if (random() % 10 < (grows ? 8U : 3U)) {
            const auto note = std::make_shared<Note>(time());
            there[note->snippetID()->timeIntervalSince1970()].push_back(note);
            list.addObject(note);
        } else if (!there.empty()) {
            auto entry = there.lower_bound(time());
            entry = entry == there.end() ? there.begin() : entry;
            ASSERT_TRUE(list.removeFirstObjectWithSnippetID(at(entry->first)));
            entry->second.erase(entry->second.begin());
            if (entry->second.empty()) {
                there.erase(entry);
            }
        }
        const double asked = time();
        ASSERT_EQ(list.containsSnippetID(at(asked)), there.contains(asked)) << "step " << step;
        if (step % 5000 == 0) {
            for (const auto& [identity, notes] : there) {
                ASSERT_TRUE(list.containsSnippetID(at(identity)));
            }
        }
    }
    std::size_t count = 0;
    for (const auto& [identity, notes] : there) {
        ASSERT_TRUE(std::equal(notes.begin(), notes.end(), notes.begin(), [&](const auto& left, const auto& right) {
            return left == right && std::find(list.begin(), list.end(), left) != list.end();
        }));
        count += notes.size();
    }
    EXPECT_EQ(list.count(), count);
}

TEST_F(SnippetArray, RemovesTheFirstOfAnIDAndShowsItselfClosedUpAfterEachRemoval) {
    const auto twice = std::make_shared<Note>(1.0, QStringLiteral("twice"));
    for (const auto& note : {twice, std::make_shared<Note>(2.0), twice, std::make_shared<Note>(1.0), twice}) {
        list.addObject(note);
    }
    EXPECT_FALSE(list.removeFirstObjectWithSnippetID(at(3.0)));
    EXPECT_TRUE(list.removeFirstObjectWithSnippetID(at(1.0)));
    EXPECT_EQ(list.count(), 4U);
    EXPECT_TRUE(list.removeFirstObjectWithSnippetID(at(2.0)));
    list.addObject(twice);
    EXPECT_EQ(list[0], twice);
    EXPECT_NE(list[1], twice);
    EXPECT_EQ(list.objectAtIndex(2), twice);
    EXPECT_EQ(list.objectAtIndex(3), twice);
    EXPECT_TRUE(list.removeFirstObjectWithSnippetID(at(1.0)));
    EXPECT_THROW(list.removeObjectAtIndex(3), NSException);
    list.removeObjectAtIndex(0);
    EXPECT_EQ(list.count(), 2U);
    EXPECT_TRUE(list.removeFirstObjectWithSnippetID(at(1.0)));
    list.insertObject(std::make_shared<Note>(5.0), 0);
    EXPECT_TRUE(list.removeFirstObjectWithSnippetID(at(1.0)));
    EXPECT_EQ(list.end() - list.begin(), 1);
    EXPECT_TRUE(list.removeFirstObjectWithSnippetID(at(5.0)));
    EXPECT_TRUE(list.isEmpty());
    EXPECT_EQ(list.begin(), list.end());
}

/// Thousands of random changes by every road there is; after each the list answers as a scan of it does.
TEST_F(SnippetArray, AnswersAsAPlainScanWhateverIsDoneToTheList) {
    std::mt19937 random(20261121);
    const auto pick = [&](std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
    };
    // Few different times, so that they collide, on both sides of 1970 and around the limits of whole seconds.
    const auto time = [&] {
        static constexpr double bases[] = {0.0, -4.0, 1000000.0, 1000000.25, 0.1, -3.7, 9007199254740993.0, -0.0};
        return bases[pick(std::size(bases))] + double(pick(6));
    };
    std::vector<std::shared_ptr<Note>> pool;
    LTSnippetArray otherList;
    for (int step = 0; step < 20000; ++step) {
        switch (pick(12)) {
        case 0:
        case 1:
        case 2: {
            const auto note = pick(4) ? std::make_shared<Note>(time()) : std::make_shared<ShiftedNote>(time());
            pool.push_back(note);
            list.addObject(note);
            break;
        }
        case 3:
            if (!pool.empty()) {
                list.insertObject(pool[pick(pool.size())], pick(list.count() + 1));
            }
            break;
        case 4:
            if (!list.isEmpty()) {
                list.removeObjectAtIndex(pick(list.count()));
            }
            break;
        case 5:
            if (!pool.empty()) {
                list.removeObject(*pool[pick(pool.size())]);
            }
            break;
        case 6:
            if (!list.isEmpty() && !pool.empty()) {
                list.replaceObjectAtIndex(pick(list.count()), pool[pick(pool.size())]);
            }
            break;
        case 7:
        case 8:
            if (!pool.empty()) {
                const auto& note = pool[pick(pool.size())];
                pick(2) ? note->setSnippetID(at(time())) : note->changeFieldTo(at(time()));
            }
            break;
        case 9:
            if (!pool.empty()) {
                if (auto* shifted = dynamic_cast<ShiftedNote*>(pool[pick(pool.size())].get())) {
                    shifted->shift = double(pick(3));
                }
            }
            break;
        case 10:
            if (!pool.empty()) {
                otherList.addObject(pool[pick(pool.size())]);
            }
            break;
        default:
            if (list.count() > 40) {
                list.removeAllObjects();
                pool.clear();
            } else if (!list.isEmpty() && pick(20) == 0) {
                list.objectAtIndex(pick(list.count()))->setSnippetID(std::nullopt);
            }
        }
        const double asked = time();
        ASSERT_EQ(list.containsSnippetID(at(asked)), scan(list, at(asked))) << "step " << step << ", time " << asked;
        if (std::abs(asked) < 1.0e9) {
            ASSERT_EQ(list.freeTimeAtOrBefore(asked), searchByScan(list, asked)) << "step " << step << ", " << asked;
        }
    }
}
