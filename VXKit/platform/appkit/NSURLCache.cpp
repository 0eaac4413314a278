// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSURLCache.h>

#include <QNetworkDiskCache>
#include <QStandardPaths>

namespace {

constexpr qint64 mostBytes = qint64{16} * 1024 * 1024;

} // namespace

NSURLCache& NSURLCache::sharedURLCache() {
    static NSURLCache cache;
    return cache;
}

void NSURLCache::removeAllCachedResponses() {
    networkCache()->clear();
    Q_EMIT removedAllCachedResponses();
}

std::unique_ptr<QAbstractNetworkCache> NSURLCache::networkCache() {
    auto cache = std::make_unique<QNetworkDiskCache>();
    cache->setCacheDirectory(QStandardPaths::writableLocation(QStandardPaths::CacheLocation) +
                             QStringLiteral("/NSURLCache"));
    cache->setMaximumCacheSize(mostBytes);
    return cache;
}
