// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QObject>

#include <memory>

class QAbstractNetworkCache;

/// What has been fetched from web servers and may be shown again without asking them.
///
/// Web views keep their answers here, each engine in its own way; what matters to the kit is that all of them forget at
/// once. Main thread only. Stands for AppKit's class of the same name.
class VXKIT_EXPORT NSURLCache : public QObject {
    Q_OBJECT

public:
    /// The cache of the process. AppKit: `+sharedURLCache`.
    [[nodiscard]] static NSURLCache& sharedURLCache();

    /// Forgets everything, so that what is loaded from now on is fetched afresh. AppKit: `-removeAllCachedResponses`.
    void removeAllCachedResponses();

    /// The cache for an access manager of Qt's: a window onto the files, in the user's folder for caches, that all of
    /// them share.
    [[nodiscard]] static std::unique_ptr<QAbstractNetworkCache> networkCache();

Q_SIGNALS:
    /// For engines that keep answers elsewhere.
    void removedAllCachedResponses();

private:
    NSURLCache() = default;
};
