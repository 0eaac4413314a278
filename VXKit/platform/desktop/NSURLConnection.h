// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSError.h>

#include <QByteArray>
#include <QUrl>

#include <cstdint>
#include <optional>

/// Whether an answer may come out of a cache. The values are AppKit's.
enum class NSURLRequestCachePolicy : std::uint8_t {
    UseProtocolCachePolicy = 0,       ///< where the protocol allows it
    ReloadIgnoringLocalCacheData = 1, ///< never: the server is asked
};

/// What is asked of a server. Stands for AppKit's class of the same name.
struct NSURLRequest {
    QUrl url; ///< of what is asked for
    /// Whether a kept answer will do.
    NSURLRequestCachePolicy cachePolicy = NSURLRequestCachePolicy::UseProtocolCachePolicy;
    double timeoutInterval = 60;                      ///< seconds without a byte after which it is given up
    QByteArray httpMethod = QByteArrayLiteral("GET"); ///< "GET", "POST" and so on
    QByteArray httpBody;                              ///< sent as a form ("application/x-www-form-urlencoded")
};

/// Exchanges over HTTP. Stands for AppKit's class of the same name.
namespace NSURLConnection {

/// Sends `request` and blocks the calling thread until the answer is there: no event is handled meanwhile, no window
/// repainted. Redirections are followed. Needs an application object.
///
/// The body of the answer, whatever its status; nothing, with `error` told what is wrong, where no whole answer came.
/// AppKit: `+sendSynchronousRequest:returningResponse:error:`.
[[nodiscard]] VXKIT_EXPORT std::optional<QByteArray> sendSynchronousRequest(const NSURLRequest& request,
                                                                            NSError* error = nullptr);

} // namespace NSURLConnection
