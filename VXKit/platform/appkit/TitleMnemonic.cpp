// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/TitleMnemonic.h>

#include <QChar>

#include <optional>
#include <utility>

NSAttributedString titleWithMnemonicUnderlined(const QString& title, NSTextAttributes attributes) {
    constexpr QChar mark(u'&');
    QString text;
    text.reserve(title.size());
    attributes.underlinedCharacter = std::nullopt;
    bool isMarked = false;
    for (const QChar character : title) {
        if (character == mark && !isMarked) {
            isMarked = true;
            continue;
        }
        if (isMarked && character != mark && !attributes.underlinedCharacter) {
            attributes.underlinedCharacter = static_cast<int>(text.size());
        }
        isMarked = false;
        text.append(character);
    }
    return NSAttributedString(std::move(text), std::move(attributes));
}
