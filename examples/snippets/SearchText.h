// SPDX-License-Identifier: MIT
// Texts in the form in which they are searched: UTF-8 without case and accents.
#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QByteArrayView>
#include <QString>

/// Appends `text`, UTF-8, in that form. Most text is ASCII, which is folded here far faster than Qt can; so the first
/// search through thousands of long texts is no pause.
void appendFolded(QByteArray& result, QByteArrayView text);

/// The words of a search in that form.
[[nodiscard]] QByteArrayList foldedWords(const QString& search);

[[nodiscard]] bool containsText(const QByteArray& text, const QByteArray& word);

/// Whether every text that has all of `words` has all of `others` too.
[[nodiscard]] bool imply(const QByteArrayList& words, const QByteArrayList& others);
