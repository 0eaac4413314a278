// SPDX-License-Identifier: MIT
#include "MessageBar.h"

#include "Appearance.h"
#include "BarLayout.h"
#include "ElidedLabel.h"

#include <QBoxLayout>
#include <QIcon>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolButton>

#include <algorithm>

namespace {

constexpr int mostDetailLines = 8; // more are scrolled

} // namespace

MessageBar::MessageBar(QWidget* parent)
    : QFrame(parent), m_text(new ElidedLabel(this)), m_action(new QPushButton(this)),
      m_detailsButton(new QPushButton(QStringLiteral("Details"), this)), m_close(new QToolButton(this)),
      m_details(new QPlainTextEdit(this)) {
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::AlternateBase);
    setFrameShape(QFrame::NoFrame);

    m_action->hide();
    m_detailsButton->setCheckable(true);
    usePushButtonSize(*m_detailsButton);
    m_close->setIcon(QIcon(QStringLiteral(":/images/Close.svg")));
    m_close->setAutoRaise(true);
    m_close->setAccessibleName(QStringLiteral("Dismiss message"));
    m_close->setToolTip(QStringLiteral("Dismiss"));
    for (QAbstractButton* button : std::initializer_list<QAbstractButton*>{m_action, m_detailsButton, m_close}) {
        button->setFocusPolicy(Qt::TabFocus);
    }
    m_details->setReadOnly(true);
    m_details->setFrameShape(QFrame::NoFrame);
    m_details->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_details->setTabChangesFocus(true);
    useHUDScrollBars(*m_details);
    m_details->setAccessibleName(QStringLiteral("Details of the message"));
    m_details->hide();

    auto* line = new QHBoxLayout;
    line->setSpacing(BarLayout::spacing);
    line->addWidget(m_text, 1);
    line->addWidget(m_action);
    line->addWidget(m_detailsButton);
    line->addWidget(m_close);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(BarLayout::sideMargin, BarLayout::verticalMargin, BarLayout::sideMargin,
                               BarLayout::verticalMargin);
    layout->setSpacing(BarLayout::verticalMargin);
    layout->addLayout(line);
    layout->addWidget(m_details);

    connect(m_action, &QPushButton::clicked, this, &MessageBar::actionTriggered);
    connect(m_detailsButton, &QPushButton::toggled, this, &MessageBar::unfold);
    connect(m_close, &QToolButton::clicked, this, [this] {
        hide();
        Q_EMIT dismissed();
    });
    hide();
}

void MessageBar::showMessage(const QString& text, const QStringList& details) {
    m_text->setText(text);
    m_details->setPlainText(details.join(QLatin1Char('\n')));
    const int lines = static_cast<int>(std::min<qsizetype>(details.size(), mostDetailLines)) + 1;
    m_details->setFixedHeight(lines * m_details->fontMetrics().lineSpacing() + 2 * BarLayout::verticalMargin);
    m_detailsButton->setVisible(!details.isEmpty());
    m_detailsButton->setChecked(false);
    setVisible(true);
}

void MessageBar::setAction(const QString& title, const QString& accessibleName) {
    m_action->setText(title);
    m_action->setAccessibleName(accessibleName);
    usePushButtonSize(*m_action);
    m_action->setVisible(true);
}

QString MessageBar::text() const {
    return m_text->text();
}

QString MessageBar::details() const {
    return m_details->toPlainText();
}

void MessageBar::unfold(bool unfolded) {
    m_details->setVisible(unfolded);
}
