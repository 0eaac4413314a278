// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/database/_LTSnippet.h>
#include <VXKit/database/_LTSnippetTable.h>
#include <VXKit/platform/foundation/NSDate.h>

#include <QHash>

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

/// Which snippet IDs the records of one list have, which record is the first of an ID, and which instant below a taken
/// one is free.
///
/// Answers as a scan of the records would, without one: a hash that follows every change of a record's `snipID` field
/// tells the one record of an ID, or how many share it. Records that may answer snippetID in another way than with that
/// field (a subclass may) are kept apart and asked each time. A record is known here by that field of it, which never
/// moves within it.
///
/// The first of several records of an ID, or the first where some must be asked, only the order of the list can tell.
/// It is learnt in one pass, which asks every record once, and followed while records are added at the end and taken by
/// their ID; anything else that happens to the list makes the index forget it.
///
/// For the search of a free ID the taken ones are kept as runs too: all IDs a whole number of seconds apart lie on one
/// chain, and what is taken on it in unbroken succession is one run, so the search leaps over it. Runs cost something
/// to keep, so there are none until the first search that meets a taken ID.
class _LTSnippetIndex {
public:
    _LTSnippetIndex();
    ~_LTSnippetIndex();
    _LTSnippetIndex(const _LTSnippetIndex&) = delete;
    _LTSnippetIndex& operator=(const _LTSnippetIndex&) = delete;

    /// Counts `snippet` once more, at the end of the list where the order is known; the list that owns this index holds
    /// it until it is removed as often.
    void add(_LTSnippet& snippet);
    void remove(_LTSnippet& snippet);

    /// Whether a record has this ID.
    [[nodiscard]] bool contains(NSDate snippetID) const;

    /// Whether takeFirst can tell without learning the order (anew: a record that is asked may answer otherwise now).
    [[nodiscard]] bool knowsFirst(NSDate snippetID) const;
    /// Removes the first record of this ID, as remove does, and answers it; null where there is none. To be called
    /// where knowsFirst says so, or right after learnOrder.
    _LTSnippetIdentity* takeFirst(NSDate snippetID);

    /// `list` holds what was added here, in its order.
    void learnOrder(const std::vector<std::shared_ptr<_LTSnippet>>& list);
    void forgetOrder();

    /// What a record of the list is known by here.
    [[nodiscard]] static const _LTSnippetIdentity* identityOf(const _LTSnippet& snippet) { return &snippet.snipID; }

    /// `time`, in seconds since 1970, or the first free instant found by going back from it one second at a time; the
    /// infinitely early one, taken or not, where there is none.
    [[nodiscard]] double freeTimeAtOrBefore(double time);

    /// Called by the `snipID` field of a record in the list, once for each time that the list holds it, when it has
    /// changed from `old`.
    void identityChanged(_LTSnippetIdentity& identity, std::optional<NSDate> old);

    /// The instant one second before `time`, or where a double cannot tell the two apart the greatest one below it;
    /// nothing before the infinitely early one.
    [[nodiscard]] static std::optional<double> oneSecondBefore(double time);

private:
    using Link = std::pair<double, double>; // fraction of a second, whole seconds

    struct AskedRecord {
        _LTSnippet* snippet = nullptr;
        int count = 0;
        std::optional<NSDate> answer; // by which the order has it
    };
    struct Order;

    void appendToOrder(_LTSnippet& snippet);
    void release(_LTSnippetIdentity& identity);
    void count(NSDate snippetID, _LTSnippetIdentity& identity);
    void discount(NSDate snippetID);
    [[nodiscard]] bool anAskedRecordHas(NSDate snippetID) const;

    [[nodiscard]] static std::optional<Link> linkOf(double time);
    void buildRuns();
    void addToRuns(double time);
    void removeFromRuns(double time);

    _LTSnippetTable m_holders;   // the one record of each ID; null for those in m_shared
    QHash<double, int> m_shared; // how often an ID occurs that once was there several times
    QHash<const _LTSnippetIdentity*, AskedRecord> m_askedRecords;
    std::unique_ptr<Order> m_order;
    std::optional<std::map<Link, double>> m_runs; // the last taken second of a run, to its first
};
