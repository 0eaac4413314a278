// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QString>

/// `string` with everything as percent escapes of its UTF-8 that may not stand in a URL: spaces, control characters,
/// `"<>#%{}|\^[]`, the backquote and what is not ASCII. Whatever may stand there stays, the characters with a meaning
/// (`;/?:@&=+$,`) too: a value that holds one of them is not fit to be a part of a query. Half a surrogate pair
/// becomes a question mark. Never null. AppKit: `-stringByAddingPercentEscapesUsingEncoding:` of `NSString` with UTF-8.
[[nodiscard]] VXKIT_EXPORT QString NSStringByAddingPercentEscapes(const QString& string);
