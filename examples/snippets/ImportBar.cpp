// SPDX-License-Identifier: MIT
#include "ImportBar.h"

#include "Appearance.h"
#include "BarLayout.h"
#include "ElidedLabel.h"
#include "SnippetImporter.h"

#include <VXKit/controls/LTHUDProgressIndicator.h>

#include <QBoxLayout>
#include <QLocale>
#include <QPushButton>

namespace {

constexpr int indicatorLength = 20; // points

} // namespace

ImportBar::ImportBar(QWidget* parent)
    : QFrame(parent), m_indicator(new LTHUDProgressIndicator(this)), m_text(new ElidedLabel(this)),
      m_stop(new QPushButton(QStringLiteral("Stop"), this)) {
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::AlternateBase);
    setFrameShape(QFrame::NoFrame);

    m_indicator->setIndicatorStyle(NSProgressIndicatorSpinningStyle);
    m_indicator->setFixedSize(indicatorLength, indicatorLength);
    m_indicator->setAccessibleName(QStringLiteral("Progress of the import"));
    m_stop->setFocusPolicy(Qt::TabFocus);
    m_stop->setAccessibleName(QStringLiteral("Stop import"));
    m_stop->setToolTip(QStringLiteral("Stop the import and keep what has come in (Escape)"));
    usePushButtonSize(*m_stop);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(BarLayout::sideMargin, BarLayout::verticalMargin, BarLayout::sideMargin,
                               BarLayout::verticalMargin);
    layout->setSpacing(BarLayout::spacing);
    layout->addWidget(m_indicator);
    layout->addWidget(m_text, 1);
    layout->addWidget(m_stop);

    connect(m_stop, &QPushButton::clicked, this, &ImportBar::asksToStop);
    hide();
}

void ImportBar::showProgress(const SnippetImportProgress& progress) {
    const QLocale english(QLocale::English);
    const auto number = [&](std::size_t count) { return english.toString(static_cast<qulonglong>(count)); };
    m_indicator->setIndeterminate(progress.isLooking);
    if (progress.isLooking) {
        m_indicator->startAnimation(this);
        m_text->setText(QStringLiteral("Looking for files: %1 found").arg(number(progress.foundCount)));
    } else {
        m_indicator->stopAnimation(this);
        m_indicator->setMaxValue(static_cast<double>(progress.foundCount));
        m_indicator->setDoubleValue(static_cast<double>(progress.doneCount));
        m_text->setText(
            QStringLiteral("Importing: %1 of %2").arg(number(progress.doneCount), number(progress.foundCount)));
    }
    setVisible(true);
}

void ImportBar::end() {
    m_indicator->stopAnimation(this);
    hide();
}

QString ImportBar::text() const {
    return m_text->text();
}
