// SPDX-License-Identifier: MIT
#include "MergeHost.h"

#include <algorithm>
#include <random>

#include <gmock/gmock.h>

namespace {

using Snippets = std::vector<std::shared_ptr<_LTSnippet>>;

/// The store as its behaviour reads: every search a scan from index 0.
class PlainStore {
public:
    void addSnippet(const std::shared_ptr<_LTSnippet>& snippet) { (syncing ? layaway : list).push_back(snippet); }

    void removeSnippet(const std::shared_ptr<_LTSnippet>& snippet) {
        if (syncing) {
            removals.push_back(snippet);
        } else {
            std::erase_if(list, [&](const auto& candidate) { return candidate->isEqual(*snippet); });
        }
    }

    void notifyOfModificationForSnippet(const std::shared_ptr<_LTSnippet>& snippet) {
        if (syncing) {
            edits.push_back(snippet);
        }
    }

    /// Answers who was stamped, in order.
    Snippets syncingHasEnded() {
        Snippets stamped;
        const auto append = [&](const std::shared_ptr<_LTSnippet>& snippet) {
            list.push_back(snippet);
            stamped.push_back(snippet);
        };
        for (const auto& snippet : layaway) {
            append(snippet);
        }
        layaway.clear();
        for (const auto& snippet : edits) {
            removeFirstWithIDOf(*snippet);
            append(snippet);
        }
        edits.clear();
        for (const auto& snippet : removals) {
            removeFirstWithIDOf(*snippet);
        }
        return stamped;
    }

    bool syncing = false;
    Snippets list;

private:
    void removeFirstWithIDOf(const _LTSnippet& snippet) {
        for (std::size_t index = 0; index < list.size(); ++index) {
            if (snippet.snippetID() && list[index]->snippetID() == snippet.snippetID()) {
                list.erase(list.begin() + static_cast<std::ptrdiff_t>(index));
                return;
            }
        }
    }

    Snippets layaway;
    Snippets edits;
    Snippets removals;
};

} // namespace

/// The share of records of an overriding class, in tenths.
class MergeOfMixedRecords : public Merge, public testing::WithParamInterface<int> {};

/// Thousands of random operations; after each the list is the same, object by object, as that of the plain store.
TEST_P(MergeOfMixedRecords, LeavesTheListAsThePlainAlgorithmDoes) {
    std::mt19937 random(20261121U + static_cast<unsigned>(GetParam()));
    const auto pick = [&](std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
    };
    const auto identity = [&] { return double(pick(60)); };
    const auto make = [&]() -> std::shared_ptr<Note> {
        if (pick(10) < std::size_t(GetParam())) {
            const auto shifted = note<ShiftedNote>(identity());
            shifted->shift = double(pick(3));
            return shifted;
        }
        return note(identity());
    };
    PlainStore plain;
    std::vector<std::shared_ptr<Note>> pool;
    std::size_t merges = 0;
    for (int step = 0; step < 12000; ++step) {
        const std::size_t operation = pick(20);
        const auto any = [&] { return pool[pick(pool.size())]; };
        if (pool.empty() || operation < 4) {
            pool.push_back(make());
            store->addSnippet(pool.back());
            plain.addSnippet(pool.back());
        } else if (operation < 5) {
            const auto snippet = any();
            store->addSnippet(snippet);
            plain.addSnippet(snippet);
        } else if (operation < 11) {
            const std::shared_ptr<Note> edited = pick(3) ? any() : make();
            store->notifyOfModificationForSnippet(edited);
            plain.notifyOfModificationForSnippet(edited);
        } else if (operation < 14) {
            // Mostly outside a sync: a removal during one holds for all syncs to come.
            if (!plain.syncing || pick(20) == 0) {
                const auto removed = any();
                store->removeSnippet(removed);
                plain.removeSnippet(removed);
            }
        } else if (operation < 16) {
            const auto changed = any();
            if (auto* shifted = dynamic_cast<ShiftedNote*>(changed.get())) {
                shifted->shift = double(pick(3));
            }
            changed->setSnippetID(pick(15) ? std::optional(at(identity())) : std::nullopt);
        } else if (operation < 18) {
            plain.syncing = application.syncManager.syncing = true;
        } else if (operation == 18 && pick(3) == 0) {
            plain.syncing = false;
            const double before = NSDate::date().timeIntervalSince1970();
            endSync();
            ++merges;
            const Snippets stamped = plain.syncingHasEnded();
            // Of a record that was stamped several times, the last stamp is the one to see.
            double first = 0.0;
            for (std::size_t index = 0; index < stamped.size(); ++index) {
                const auto& snippet = stamped[index];
                if (std::find(stamped.begin() + static_cast<std::ptrdiff_t>(index) + 1, stamped.end(), snippet) !=
                    stamped.end()) {
                    continue;
                }
                const double stamp = stampOf(static_cast<const Note&>(*snippet)) - double(index);
                ASSERT_GE(stamp, before - 0.001);
                first = first == 0.0 ? stamp : first;
                ASSERT_NEAR(stamp, first, 0.001);
            }
        } else if (pick(60) == 0) {
            pool.erase(pool.begin(), pool.begin() + static_cast<std::ptrdiff_t>(pool.size() / 2));
        }
        ASSERT_EQ(Snippets(store->snippets().begin(), store->snippets().end()), plain.list) << "step " << step;
        const double asked = identity();
        ASSERT_EQ(store->existsItemWithID(at(asked)),
                  std::any_of(plain.list.begin(), plain.list.end(),
                              [&](const auto& snippet) { return snippet->snippetID() == at(asked); }))
            << "step " << step;
    }
    EXPECT_GT(merges, 100U);
}

INSTANTIATE_TEST_SUITE_P(Database, MergeOfMixedRecords, testing::Values(0, 1, 10));
