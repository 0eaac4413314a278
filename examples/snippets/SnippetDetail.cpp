// SPDX-License-Identifier: MIT
#include "SnippetDetail.h"

#include "DateText.h"
#include "ElidedLabel.h"
#include "NumberText.h"
#include "SnippetKindTag.h"
#include "SnippetTextEdit.h"
#include "StopTimer.h"

#include <VXKit/platform/foundation/NSTimer.h>

#include <QBoxLayout>
#include <QFontInfo>
#include <QLabel>
#include <QPainter>
#include <QScopedValueRollback>

#include <algorithm>
#include <utility>

namespace {

// Points.
constexpr int detailMargin = 12;
constexpr int detailSpacing = 8;
constexpr int titleFontGrowth = 3;
constexpr int keyboardMarkWidth = 2;
constexpr int keyboardMarkDistance = 8; // from the text

constexpr double keepingPause = 1.0; // seconds without typing after which it is kept

/// Longer texts are shown up to here, so that moving through the list never stops at one; the rest comes with the
/// keyboard.
constexpr qsizetype longestPreview = 100'000; // characters
/// What is longer still is edited up to there.
constexpr qsizetype longestEdited = 1'000'000;
/// A paragraph is laid out at once.
constexpr qsizetype longestParagraph = 200'000;

bool hasLongParagraph(QStringView text) {
    while (text.size() > longestParagraph) {
        const qsizetype end = text.indexOf(u'\n');
        if (end < 0 || end > longestParagraph) {
            return true;
        }
        text = text.sliced(end + 1);
    }
    return false;
}

QString datesText(const Snippet& snippet) {
    QStringList parts;
    if (const std::optional<NSDate> created = snippet.snippetID()) {
        parts += QStringLiteral("Created ") + fullDateText(*created);
    }
    const std::optional<NSDate> modified = snippet.dateOfModification();
    // A batch of snippets gets identities that go back from the instant it was made, second by second; only a date that
    // reads otherwise tells something.
    if (modified && (!snippet.snippetID() || fullDateText(*modified) != fullDateText(*snippet.snippetID()))) {
        parts += QStringLiteral("Modified ") + fullDateText(*modified);
    }
    if (snippet.useCount() > 0) {
        QString use = QStringLiteral("Used ") + numbered(snippet.useCount(), "time", "times");
        if (const std::optional<NSDate> used = snippet.dateOfLastUse()) {
            use += QStringLiteral(", last ") + fullDateText(*used);
        }
        parts += use;
    } else {
        parts += QStringLiteral("Never used");
    }
    return parts.join(QStringLiteral("  ·  "));
}

} // namespace

SnippetDetail::SnippetDetail(std::shared_ptr<SnippetsDatabase> database, QWidget* parent)
    : QWidget(parent), m_database(std::move(database)), m_title(new ElidedLabel(this)), m_dates(new QLabel(this)),
      m_text(new SnippetTextEdit(this)) {
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
    QFont titleFont = m_title->font();
    titleFont.setPixelSize(QFontInfo(titleFont).pixelSize() + titleFontGrowth);
    titleFont.setWeight(QFont::DemiBold);
    m_title->setFont(titleFont);
    m_dates->setTextFormat(Qt::PlainText);
    m_dates->setWordWrap(true);
    m_dates->setForegroundRole(QPalette::PlaceholderText);
    m_dates->setContentsMargins(0, 0, detailMargin, 0);
    m_text->setObjectName(QStringLiteral("preview"));
    m_text->setAccessibleName(QStringLiteral("Text of the selected snippet"));

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(detailMargin + detailSpacing / 2, detailMargin, 0, 0);
    layout->setSpacing(detailSpacing / 2);
    m_titleLayout = new QHBoxLayout;
    m_titleLayout->setContentsMargins(0, 0, detailMargin, 0);
    m_titleLayout->setSpacing(detailSpacing);
    m_titleLayout->addWidget(m_title, 1);
    layout->addLayout(m_titleLayout);
    layout->addWidget(m_dates);
    layout->addSpacing(detailSpacing);
    layout->addWidget(m_text, 1);

    connect(m_text, &QPlainTextEdit::textChanged, this, &SnippetDetail::textHasChanged);
    connect(m_text, &SnippetTextEdit::entered, this, &SnippetDetail::showHidden);
    connect(m_text, &SnippetTextEdit::wasLeft, this, &SnippetDetail::keep);
    connect(m_text, &SnippetTextEdit::entered, this, qOverload<>(&QWidget::update));
    connect(m_text, &SnippetTextEdit::wasLeft, this, qOverload<>(&QWidget::update));
    load();
}

SnippetDetail::~SnippetDetail() {
    const QSignalBlocker quiet(this);
    keep();
    stopTimer(m_pause);
}

void SnippetDetail::paintEvent(QPaintEvent* event) {
    QWidget::paintEvent(event);
    if (m_text->hasFocus() && !m_text->isReadOnly()) {
        QRect mark = m_text->geometry();
        mark.moveLeft(mark.left() - keyboardMarkDistance - keyboardMarkWidth);
        mark.setWidth(keyboardMarkWidth);
        QPainter(this).fillRect(mark, palette().color(QPalette::Highlight).lighter());
    }
}

void SnippetDetail::showSnippet(const std::shared_ptr<Snippet>& snippet) {
    if (snippet == m_snippet) {
        followRecord();
        return;
    }
    endEditing();
    m_snippet = snippet;
    load();
}

void SnippetDetail::load() {
    m_textBefore.reset();
    m_edited = EditedText(m_snippet ? m_snippet->text() : QString(), longestPreview);
    m_base = m_snippet ? m_snippet->utf8Text() : QByteArray();
    {
        const QScopedValueRollback<bool> loading(m_isLoading, true);
        m_text->setPlainText(m_edited.shown());
        m_text->document()->setModified(false);
    }
    m_text->setReadOnly(!m_snippet);
    if (m_text->hasFocus()) {
        showHidden();
    }
    updateLabels();
}

/// Takes over what somebody else has made of the record.
void SnippetDetail::followRecord() {
    if (m_snippet && m_snippet->utf8Text() != m_base) {
        const QString typed = m_edited.text();
        if (m_text->document()->isModified() && typed.toUtf8() != m_snippet->utf8Text() && typed.toUtf8() != m_base) {
            const std::shared_ptr<Snippet> other = SnippetsDatabase::copyUnderFreeIdentity(*m_snippet);
            other->setTitle(m_snippet->title() + QStringLiteral(" (other version)"));
            noteTextBefore(QString::fromUtf8(m_base));
            // The title came in as well.
            noteTitle();
            changeText(typed);
            m_database->notifyOfModificationForSnippet(m_snippet);
            m_database->addSnippet(other);
            Q_EMIT otherVersionWasKept(other);
        } else if (m_text->document()->isUndoAvailable() || m_text->document()->isRedoAvailable()) {
            // What is typed from now on is typed into what came in.
            tellEdited(QString::fromUtf8(m_base));
            m_edited = EditedText(m_snippet->text(), m_edited.hasHidden() ? longestPreview : m_snippet->text().size());
            m_base = m_snippet->utf8Text();
            const QScopedValueRollback<bool> loading(m_isLoading, true);
            m_text->changeText(m_edited.shown());
            m_text->document()->setModified(false);
        } else {
            load();
        }
        stopTimer(m_pause);
    }
    updateLabels();
}

bool SnippetDetail::keep() {
    stopTimer(m_pause);
    if (!m_snippet || !m_text->document()->isModified()) {
        return false;
    }
    const QString text = m_edited.text();
    m_text->document()->setModified(false);
    if (text.toUtf8() == m_snippet->utf8Text()) {
        return false;
    }
    noteTextBefore(m_snippet->text());
    changeText(text);
    if (m_database->holds(*m_snippet)) {
        m_database->notifyOfModificationForSnippet(m_snippet);
    } else {
        // A removal that the one who typed knew nothing of.
        m_snippet = m_database->putBack(m_snippet);
        Q_EMIT wasBroughtBack(m_snippet);
    }
    updateLabels();
    return true;
}

void SnippetDetail::endEditing() {
    keep();
    if (m_snippet) {
        tellEdited(m_snippet->text());
    }
}

/// Tells of all that was typed and kept, which has led to the text `after`.
void SnippetDetail::tellEdited(const QString& after) {
    const std::optional<QString> before = std::exchange(m_textBefore, std::nullopt);
    if (before && *before != after) {
        Q_EMIT edited(m_snippet, *before, after);
    }
}

void SnippetDetail::noteTextBefore(const QString& before) {
    if (!m_textBefore) {
        m_textBefore = before;
        noteTitle();
    }
}

void SnippetDetail::noteTitle() {
    m_titleOfText = m_snippet->isTitleMadeOfText() ? std::optional(m_snippet->title()) : std::nullopt;
}

/// Gives the record what was typed. A title that was made of the text when the typing began follows it all along,
/// wherever a pause comes.
void SnippetDetail::changeText(const QString& text) {
    const bool follows = m_titleOfText == m_snippet->title();
    m_snippet->changeText(text, NSDate::date(), follows ? Snippet::TitleFollows::Yes : Snippet::TitleFollows::No);
    if (follows) {
        m_titleOfText = m_snippet->title();
    }
    takeBase();
}

/// What the record and the editor have is one now, but for what UTF-8 cannot hold.
void SnippetDetail::takeBase() {
    m_base = m_snippet->utf8Text();
    m_text->document()->setModified(false);
}

void SnippetDetail::textHasChanged() {
    if (m_isLoading || !m_snippet) {
        return;
    }
    m_edited.setShown(m_text->text());
    stopTimer(m_pause);
    if (!m_text->document()->isModified()) {
        return;
    }
    m_pause = NSTimer::scheduledTimerWithTimeInterval(keepingPause, NSTimerRepeats::No, [this](NSTimer&) { keep(); });
    Q_EMIT typed();
}

/// Whoever comes to edit a text may want to do so at its end.
void SnippetDetail::showHidden() {
    if (!m_edited.hasHidden() || m_text->document()->isUndoAvailable() || m_text->document()->isModified() ||
        m_edited.hiddenLength() > longestEdited || hasLongParagraph(m_edited.shown()) ||
        hasLongParagraph(m_edited.hidden())) {
        return;
    }
    const QScopedValueRollback<bool> loading(m_isLoading, true);
    m_text->appendHidden(m_edited.hidden());
    m_text->document()->setModified(false);
    m_edited.showHidden();
    updateLabels();
}

void SnippetDetail::updateLabels() {
    if (!m_snippet) {
        m_title->clear();
        m_dates->clear();
        updateKindTag(std::nullopt);
        return;
    }
    const QString title = m_snippet->shownTitle();
    m_title->setText(title.isEmpty() ? QStringLiteral("Untitled") : title);
    QString dates = datesText(*m_snippet);
    if (m_edited.hasHidden()) {
        dates += QStringLiteral("  ·  Beginning of ") +
                 numbered(m_edited.shown().size() + m_edited.hiddenLength(), "character", "characters");
    }
    m_dates->setText(dates);
    updateKindTag(kindOfText(m_edited.shown()));
}

void SnippetDetail::updateKindTag(std::optional<SnippetKind> kind) {
    if ((m_kindTag ? std::optional(m_kindTag->kind()) : std::nullopt) == kind) {
        return;
    }
    delete std::exchange(m_kindTag, nullptr);
    if (kind) {
        m_kindTag = new SnippetKindTag(*kind);
        m_titleLayout->addWidget(m_kindTag, 0, Qt::AlignVCenter);
    }
}
