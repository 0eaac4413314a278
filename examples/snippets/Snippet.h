// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/database/_LTSnippet.h>

#include <QByteArray>

#include <cstdint>

/// A piece of text that the user keeps: the record class of this program.
///
/// Its creation date is its identity (snippetID). Every date survives a save to the last bit: the XML form of a
/// property list holds whole seconds only, so beside each date the dictionary has the same instant as a real number.
/// Text that the XML form cannot hold (an escape sequence copied from a terminal, say) goes into the file as data,
/// because one such character would otherwise keep the whole database from being written.
class Snippet : public _LTSnippet {
public:
    /// The title, never with line breaks or other control characters in it.
    void setTitle(const QString& title);
    /// The title as far as any list shows it: to draw a line takes as long as the whole of it.
    [[nodiscard]] QString shownTitle() const;
    /// Whether the title is what a snippet of this text would be called.
    [[nodiscard]] bool isTitleMadeOfText() const;

    [[nodiscard]] QString text() const { return QString::fromUtf8(m_text); }
    void setText(const QString& text);
    /// The same text as the record holds it, which costs no conversion.
    [[nodiscard]] const QByteArray& utf8Text() const { return m_text; }

    /// When the record was last changed by its owner; nil for one that never was. A use is no change.
    [[nodiscard]] std::optional<NSDate> dateOfModification() const { return modificationDate; }

    /// When the text was last copied back; nil for one that never was.
    [[nodiscard]] std::optional<NSDate> dateOfLastUse() const { return m_lastUsed; }

    /// How many times the text was copied back; never below 0.
    [[nodiscard]] std::int64_t useCount() const { return m_useCount; }

    /// Gives the record another title, as a change of its owner's at `date`.
    void rename(const QString& title, NSDate date);

    /// Whether the title becomes another one with the text.
    enum class TitleFollows { No, Yes, IfMadeOfText };
    /// Gives the record another text, as a change of its owner's at `date`. A title that follows it does so as long as
    /// there is something to make it from.
    void changeText(const QString& text, NSDate date, TitleFollows titleFollows = TitleFollows::IfMadeOfText);

    /// Counts one use, at `date`.
    void noteUse(NSDate date);

    /// Takes over what is known of the uses of another version of this snippet, where that is more.
    void takeUsesOf(const Snippet& other);

    /// The first line with more than blanks in it that is not the title itself, without the blanks around it and cut at
    /// a length no list shows; empty where there is none.
    [[nodiscard]] QString firstLine() const;

    /// What to call a snippet of this text where nothing else names it: its first line with more than blanks in it,
    /// shortened; empty where there is none.
    [[nodiscard]] static QString titleForText(const QString& text);

    [[nodiscard]] std::optional<NSDictionary> dictionaryRepresentation() const override;

    /// Takes what is there. Keys that are missing, hold another type or a number that makes no sense leave their field
    /// as it is.
    void loadFromDictionary(const NSDictionary& dictionary) override;

    [[nodiscard]] std::shared_ptr<_LTSnippet> copy() const override;

    [[nodiscard]] static std::shared_ptr<_LTSnippet> emptySnippet();

private:
    QByteArray m_text; // UTF-8, which for most texts takes half the room
    std::optional<NSDate> m_lastUsed;
    std::int64_t m_useCount = 0;
};
