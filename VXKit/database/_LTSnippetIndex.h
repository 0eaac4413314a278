// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/foundation/NSDate.h>

#include <QHash>

#include <map>
#include <optional>
#include <utility>

class _LTSnippet;

/// Which snippet IDs the records of one list have, and which instant below a taken one is free.
///
/// Answers as a scan of the records would, without one: IDs are counted in a hash that follows every change of a
/// record's `snipID` field. Records that may answer snippetID in another way than with that field (a subclass may) are
/// kept apart and asked each time.
///
/// For the search of a free ID the taken ones are kept as runs too: all IDs a whole number of seconds apart lie on one
/// chain, and what is taken on it in unbroken succession is one run, so the search leaps over it. Runs cost something
/// to keep, so there are none until the first search that meets a taken ID.
class _LTSnippetIndex {
public:
    _LTSnippetIndex() = default;
    _LTSnippetIndex(const _LTSnippetIndex&) = delete;
    _LTSnippetIndex& operator=(const _LTSnippetIndex&) = delete;

    /// Counts `snippet` once more; the list that owns this index holds it until it is removed as often.
    void add(_LTSnippet& snippet);
    void remove(_LTSnippet& snippet);

    /// Whether a record has this ID.
    [[nodiscard]] bool contains(NSDate snippetID) const;

    /// `time`, in seconds since 1970, or the first free instant found by going back from it one second at a time; the
    /// infinitely early one, taken or not, where there is none.
    [[nodiscard]] double freeTimeAtOrBefore(double time);

    /// Called by the `snipID` field of a record in the list, once for each time that the list holds it.
    void identityChanged(std::optional<NSDate> from, std::optional<NSDate> to);

    /// The instant one second before `time`, or where a double cannot tell the two apart the greatest one below it;
    /// nothing before the infinitely early one.
    [[nodiscard]] static std::optional<double> oneSecondBefore(double time);

private:
    using Link = std::pair<double, double>; // fraction of a second, whole seconds

    void count(NSDate snippetID);
    void discount(NSDate snippetID);
    [[nodiscard]] bool anAskedRecordHas(NSDate snippetID) const;

    [[nodiscard]] static std::optional<Link> linkOf(double time);
    void buildRuns();
    void addToRuns(double time);
    void removeFromRuns(double time);

    QHash<double, int> m_counts;
    QHash<_LTSnippet*, int> m_askedRecords;
    std::optional<std::map<Link, double>> m_runs; // the last taken second of a run, to its first
};
