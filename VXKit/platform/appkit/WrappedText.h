// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/foundation/NSGeometry.h>
#include <VXKit/platform/graphics/NSFont.h>

#include <QString>

#include <memory>

class QPainter;
class QPalette;
class QPointF;
class QTextLayout;

/// A selection, from where it began to where it is now, which may lie before that. Positions are in units of UTF-16.
struct TextRange {
    int anchor = 0;
    int position = 0;

    [[nodiscard]] int first() const { return anchor < position ? anchor : position; }
    [[nodiscard]] int last() const { return anchor < position ? position : anchor; }
    [[nodiscard]] bool isEmpty() const { return anchor == position; }

    friend bool operator==(const TextRange&, const TextRange&) = default;
};

/// Plain text broken into the lines of an area, one line height below the other, and made to fit into it: in a font
/// down to two points smaller, and beyond that with an ellipsis at the end of its last line.
///
/// Its coordinates have their origin at the top left of the area, y growing downwards. Private to platform/appkit;
/// NSTextField shows it.
class WrappedText {
public:
    WrappedText();
    WrappedText(QString string, const NSFont& font, const NSSize& size);
    WrappedText(WrappedText&& other) noexcept;
    WrappedText& operator=(WrappedText&& other) noexcept;
    WrappedText(const WrappedText&) = delete;
    WrappedText& operator=(const WrappedText&) = delete;
    ~WrappedText();

    /// Whether it was made of these.
    [[nodiscard]] bool isOf(const QString& string, const NSFont& font, const NSSize& size) const;

    /// Whether there is more of the text than the area shows.
    [[nodiscard]] bool isCut() const { return m_isCut; }

    /// Draws it in the painter's pen, what is selected in the colours of `palette`.
    void draw(QPainter& painter, const TextRange& selection, const QPalette& palette) const;

    /// The position between two characters next to `point`.
    [[nodiscard]] int positionAt(const QPointF& point) const;
    /// The word around a position, or what stands between two words there.
    [[nodiscard]] TextRange wordAt(int position) const;
    /// All of it.
    [[nodiscard]] TextRange everything() const;

    /// Steps from a position; the end where there is none in that direction. Lines are those on the screen.
    [[nodiscard]] int nextCharacter(int position) const;
    [[nodiscard]] int previousCharacter(int position) const;
    [[nodiscard]] int nextWord(int position) const;
    [[nodiscard]] int previousWord(int position) const;
    [[nodiscard]] int startOfLine(int position) const;
    [[nodiscard]] int endOfLine(int position) const;

    /// The text of a selection; of one that reaches into an ellipsis, with all that the ellipsis stands for.
    [[nodiscard]] QString text(const TextRange& selection) const;

private:
    QString m_string; // as it was given, which tells whether it is still right
    NSFont m_font;
    NSSize m_size;
    QString m_text; // with one character for every end of a line
    bool m_isCut = false;
    int m_keptLength = 0; // how much of the text is shown
    std::unique_ptr<QTextLayout> m_layout;
};
