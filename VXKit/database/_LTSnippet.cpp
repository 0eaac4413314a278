// SPDX-License-Identifier: MIT
#include <VXKit/database/_LTSnippet.h>

#include <VXKit/database/LTDatabase.h>
#include <VXKit/platform/foundation/NSException.h>

_LTSnippet::_LTSnippet() = default;

_LTSnippet::_LTSnippet(const _LTSnippet& other) = default;

_LTSnippet& _LTSnippet::operator=(const _LTSnippet& other) = default;

_LTSnippet::~_LTSnippet() = default;

std::optional<NSDate> _LTSnippet::snippetID() const {
    return snipID;
}

void _LTSnippet::setSnippetID(std::optional<NSDate> snippetID) {
    snipID = snippetID;
}

QString _LTSnippet::title() const {
    return _name;
}

void _LTSnippet::updateModificationDate() {
    modificationDate = NSDate::date();
}

void _LTSnippet::updateModificationDateWithDate(std::optional<NSDate> date) {
    modificationDate = date;
}

std::optional<NSDictionary> _LTSnippet::dictionaryRepresentation() const {
    return std::nullopt;
}

void _LTSnippet::loadFromDictionary(const NSDictionary& /*dictionary*/) {}

QString _LTSnippet::description() const {
    const std::optional<NSDictionary> dictionary = dictionaryRepresentation();
    return dictionary ? NSPropertyList(*dictionary).description() : QStringLiteral("(null)");
}

std::shared_ptr<_LTSnippet> _LTSnippet::copy() const {
    throw NSException(NSInvalidArgumentException, QStringLiteral("A concrete record class must supply copy"));
}

bool _LTSnippet::isEqual(const _LTSnippet& other) const {
    return this == &other;
}

std::shared_ptr<_LTSnippet> _LTSnippet::emptySnippet() {
    return nullptr;
}

double _LTSnippet::uniqueTimeAtOrBefore(double startTime) {
    return LTDatabase::sharedDB()->_freeTimeAtOrBefore(startTime);
}
