// SPDX-License-Identifier: MIT
#include "AboutWindow.h"

#include "Appearance.h"

#include <QBoxLayout>
#include <QCoreApplication>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>

namespace {

// Points.
constexpr int symbolSize = 96;
constexpr int nameFontSize = 24;
constexpr int textWidth = 360;
constexpr int arrowHeight = 14; // of the window's arrow, above its body
constexpr int margin = 24;
constexpr int spacing = 8;

QLabel* makeLabel(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(Qt::AlignHCenter);
    return label;
}

} // namespace

AboutWindow::AboutWindow(const NSSize& size)
    : LTWindow({NSZeroPoint, size}, NSBorderlessWindowMask, NSBackingStoreBuffered, false) {
    setWindowTitle(QStringLiteral("About Snippets"));
    auto* symbol = makeLabel({}, contentView());
    symbol->setPixmap(
        QIcon(QStringLiteral(":/images/Snippets.svg")).pixmap(QSize(symbolSize, symbolSize), devicePixelRatioF()));
    auto* name = makeLabel(QStringLiteral("Snippets"), contentView());
    QFont nameFont = name->font();
    nameFont.setPixelSize(nameFontSize);
    nameFont.setWeight(QFont::DemiBold);
    name->setFont(nameFont);
    const QString number = QCoreApplication::applicationVersion();
    auto* version = makeLabel(number.isEmpty() ? QString() : QStringLiteral("Version %1").arg(number), contentView());
    version->setForegroundRole(QPalette::PlaceholderText);
    auto* text = makeLabel(QStringLiteral("Keeps pieces of text within reach, in the status bar. An example of what is "
                                          "built with VXKit."),
                           contentView());
    text->setWordWrap(true);
    text->setFixedSize(textWidth, text->heightForWidth(textWidth));
    auto* back = new QPushButton(QStringLiteral("Back"), contentView());
    usePushButtonSize(*back);
    connect(back, &QPushButton::clicked, this, &AboutWindow::done);

    auto* layout = new QVBoxLayout(contentView());
    layout->setContentsMargins(margin, arrowHeight + margin, margin, margin);
    layout->setSpacing(spacing);
    layout->addStretch(1);
    layout->addWidget(symbol);
    layout->addSpacing(spacing);
    layout->addWidget(name);
    layout->addWidget(version);
    layout->addSpacing(spacing);
    layout->addWidget(text, 0, Qt::AlignHCenter);
    layout->addStretch(1);
    layout->addWidget(back, 0, Qt::AlignRight);
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
