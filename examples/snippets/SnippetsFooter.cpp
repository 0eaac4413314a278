// SPDX-License-Identifier: MIT
#include "SnippetsFooter.h"

#include "Appearance.h"
#include "ElidedLabel.h"
#include "StopTimer.h"

#include <VXKit/platform/foundation/NSTimer.h>

#include <QBoxLayout>
#include <QPushButton>

namespace {

// Points.
constexpr int footerSideMargin = 12;
constexpr int footerMargin = 10;
constexpr int buttonSpacing = 8;

constexpr double statusTime = 2.5; // seconds that a note stays

} // namespace

SnippetsFooter::SnippetsFooter(QWidget* parent) : QWidget(parent), m_status(new ElidedLabel(this)) {
    m_status->setForegroundRole(QPalette::PlaceholderText);
    auto* const about = addButton(QStringLiteral("i"), QStringLiteral("Turn the window over, to what this program is"));
    about->setAccessibleName(QStringLiteral("About Snippets"));
    about->setMinimumWidth(0);
    about->setFixedWidth(about->height());
    auto* const add =
        addButton(QStringLiteral("Add from Clipboard"), QStringLiteral("Add the text on the clipboard (Ctrl+V)"));
    m_rename = addButton(QStringLiteral("Rename"), QStringLiteral("Give the selected snippet another title (F2)"));
    m_remove = addButton(QStringLiteral("Remove"), QStringLiteral("Remove the selected snippet (Delete)"));
    m_copy = addButton(QStringLiteral("Copy"), QStringLiteral("Copy the selected snippet (Return copies and closes)"));

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(footerSideMargin, footerMargin, footerSideMargin, footerMargin);
    layout->setSpacing(buttonSpacing);
    for (QPushButton* button : m_buttons) {
        layout->addWidget(button);
    }
    layout->insertWidget(1, m_status, 1);

    connect(about, &QPushButton::clicked, this, &SnippetsFooter::asksWhatItIs);
    connect(add, &QPushButton::clicked, this, &SnippetsFooter::asksToAdd);
    connect(m_rename, &QPushButton::clicked, this, &SnippetsFooter::asksToRename);
    connect(m_remove, &QPushButton::clicked, this, &SnippetsFooter::asksToRemove);
    connect(m_copy, &QPushButton::clicked, this, &SnippetsFooter::asksToCopy);
}

SnippetsFooter::~SnippetsFooter() {
    stopTimer(m_statusTimer);
}

QPushButton* SnippetsFooter::addButton(const QString& title, const QString& toolTip) {
    auto* const button = new QPushButton(title, this);
    button->setToolTip(toolTip);
    // A click on one leaves the keyboard where it was.
    button->setFocusPolicy(Qt::TabFocus);
    button->setAccessibleName(title);
    usePushButtonSize(*button);
    m_buttons.push_back(button);
    return button;
}

void SnippetsFooter::setCount(const QString& count) {
    m_count = count;
    stopTimer(m_statusTimer);
    m_status->setText(count);
}

void SnippetsFooter::sayForAWhile(const QString& status) {
    stopTimer(m_statusTimer);
    m_status->setText(status);
    m_statusTimer = NSTimer::scheduledTimerWithTimeInterval(statusTime, NSTimerRepeats::No,
                                                            [this](NSTimer&) { m_status->setText(m_count); });
}

QString SnippetsFooter::text() const {
    return m_status->text();
}

void SnippetsFooter::setHasSelection(bool hasSelection) {
    for (QPushButton* button : {m_rename, m_remove, m_copy}) {
        button->setEnabled(hasSelection);
    }
}
