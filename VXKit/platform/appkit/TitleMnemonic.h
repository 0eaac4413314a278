// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <QString>

/// `title` as it is drawn and measured, by Qt's rule for the titles of buttons: an ampersand marks the character behind
/// it and is not drawn itself, two of them are one that is, and one at the end is nothing. The first marked character
/// is the mnemonic, which is underlined; all else of the looks is `attributes`.
[[nodiscard]] VXKIT_EXPORT NSAttributedString titleWithMnemonicUnderlined(const QString& title,
                                                                          NSTextAttributes attributes = {});
