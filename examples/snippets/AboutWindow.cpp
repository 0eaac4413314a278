// SPDX-License-Identifier: MIT
#include "AboutWindow.h"

#include "Appearance.h"

#include <QCoreApplication>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>

#include <memory>
#include <vector>

namespace {

// Points.
constexpr int symbolSize = 96;
constexpr int nameFontSize = 24;

} // namespace

AboutWindow::AboutWindow(const NSSize& size)
    : LTWindow({NSZeroPoint, size}, NSBorderlessWindowMask, NSBackingStoreBuffered, false) {
    setWindowTitle(QStringLiteral("About Snippets"));
    std::vector<std::unique_ptr<QWidget>> views;
    NSNib(QStringLiteral("About")).instantiateNibWithOwner(*this, &views);
    setContentView(views.front().release());

    m_symbol->setPixmap(
        QIcon(QStringLiteral(":/images/Snippets.svg")).pixmap(QSize(symbolSize, symbolSize), devicePixelRatioF()));
    QFont nameFont = m_nameField->font();
    nameFont.setPixelSize(nameFontSize);
    nameFont.setWeight(QFont::DemiBold);
    m_nameField->setFont(nameFont);
    m_versionField->setForegroundRole(QPalette::PlaceholderText);
    if (const QString number = QCoreApplication::applicationVersion(); !number.isEmpty()) {
        m_versionField->setText(QStringLiteral("Version %1").arg(number));
    }
    usePushButtonSize(*m_backButton);
}

void AboutWindow::connectNib(NSNibConnections& nib) {
    nib.outlet(QStringLiteral("symbol"), m_symbol);
    nib.outlet(QStringLiteral("nameField"), m_nameField);
    nib.outlet(QStringLiteral("versionField"), m_versionField);
    nib.outlet(QStringLiteral("backButton"), m_backButton);
    nib.action(QStringLiteral("done:"), [this](QObject* /*sender*/) { Q_EMIT done(); });
}

void AboutWindow::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Escape:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        Q_EMIT done();
        break;
    default:
        LTWindow::keyPressEvent(event);
    }
}
