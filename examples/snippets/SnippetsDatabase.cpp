// SPDX-License-Identifier: MIT
#include "SnippetsDatabase.h"

#include "Snippet.h"

#include <VXKit/platform/foundation/NSNotificationCenter.h>

#include <QFile>
#include <QScopedValueRollback>

#include <algorithm>
#include <array>
#include <set>
#include <sys/stat.h>

namespace {

/// Differs after every atomic write of the file.
std::array<std::int64_t, 3> stampOf(const QString& path) {
    struct stat status {};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0) {
        return {};
    }
    return {static_cast<std::int64_t>(status.st_ino), status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

} // namespace

std::shared_ptr<SnippetsDatabase> SnippetsDatabase::shared() {
    return std::dynamic_pointer_cast<SnippetsDatabase>(sharedDB<SnippetsDatabase>());
}

void SnippetsDatabase::reloadFromStandardFile() {
    reloadFromDefaultDB<SnippetsDatabase>();
}

bool SnippetsDatabase::save() {
    if (!_dirty) {
        return true;
    }
    const auto before = stampOf(_path);
    saveDB();
    return stampOf(_path) != before;
}

std::shared_ptr<Snippet> SnippetsDatabase::putBack(const std::shared_ptr<Snippet>& snippet) {
    const bool isRemovedAgain =
        std::any_of(_layawayRemovals.begin(), _layawayRemovals.end(), [&](const std::shared_ptr<_LTSnippet>& removed) {
            return removed->snippetID() == snippet->snippetID();
        });
    std::shared_ptr<Snippet> added = isRemovedAgain ? copyUnderFreeIdentity(*snippet) : snippet;
    addSnippet(added);
    return added;
}

void SnippetsDatabase::mendIdentities() {
    std::set<double> taken;
    for (const std::shared_ptr<_LTSnippet>& snippet : snippets()) {
        const std::optional<NSDate> identity = snippet->snippetID();
        if (identity && taken.insert(identity->timeIntervalSince1970()).second) {
            continue;
        }
        const double time = _freeTimeAtOrBefore((identity ? *identity : NSDate::date()).timeIntervalSince1970());
        snippet->setSnippetID(NSDate::dateWithTimeIntervalSince1970(time));
        taken.insert(time);
        notifyOfModificationForSnippet(snippet);
    }
}

bool SnippetsDatabase::holds(const _LTSnippet& snippet) const {
    const auto isSnippet = [&](const std::shared_ptr<_LTSnippet>& other) { return other.get() == &snippet; };
    const bool isHere = std::any_of(snippets().begin(), snippets().end(), isSnippet) ||
                        std::any_of(_layaway.begin(), _layaway.end(), isSnippet);
    return isHere && !isLeaving(snippet);
}

void SnippetsDatabase::addSnippet(const std::shared_ptr<_LTSnippet>& snippet) {
    const QScopedValueRollback<Change> change(m_change, {Change::Kind::Addition, snippet.get()});
    LTDatabase::addSnippet(snippet);
}

void SnippetsDatabase::removeSnippet(const std::shared_ptr<_LTSnippet>& snippet) {
    const QScopedValueRollback<Change> change(m_change, {Change::Kind::Removal, snippet.get()});
    LTDatabase::removeSnippet(snippet);
}

void SnippetsDatabase::notifyOfModificationForSnippet(const std::shared_ptr<_LTSnippet>& snippet) {
    const QScopedValueRollback<Change> change(m_change, {Change::Kind::Modification, snippet.get()});
    const std::size_t heldBackCount = _layawayEdits.size();
    LTDatabase::notifyOfModificationForSnippet(snippet);
    if (_layawayEdits.size() > heldBackCount) {
        // The list waits for the end of the sync; the record has changed already, and is shown as it is.
        NSNotificationCenter::defaultCenter().postNotificationName(LTSnippetDBWasModifiedNotification, this);
    }
}

bool SnippetsDatabase::isLeaving(const _LTSnippet& snippet) const {
    return std::any_of(_layawayRemovals.begin(), _layawayRemovals.end(),
                       [&](const std::shared_ptr<_LTSnippet>& removed) { return removed.get() == &snippet; });
}

bool SnippetsDatabase::hasLeavingSnippets() const {
    return std::any_of(_layawayRemovals.begin(), _layawayRemovals.end(), [this](const auto& removed) {
        const std::optional<NSDate> identity = removed->snippetID();
        return !identity || existsItemWithID(*identity);
    });
}

std::shared_ptr<Snippet> SnippetsDatabase::copyUnderFreeIdentity(const Snippet& snippet) {
    double realID = 0;
    std::shared_ptr<Snippet> copy =
        _LTSnippet::emptySnippetWithUniqueIDStartingDate<Snippet>(NSDate::date().timeIntervalSince1970(), &realID);
    *copy = snippet;
    copy->setSnippetID(NSDate::dateWithTimeIntervalSince1970(realID));
    return copy;
}

QString SnippetsDatabase::databaseFileName() const {
    return QStringLiteral("Snippets.plist");
}

QString SnippetsDatabase::databaseName() const {
    return QStringLiteral("Snippets");
}

_LTSnippetClass SnippetsDatabase::snippetClass() const {
    return _LTSnippetClass::of<Snippet>();
}
