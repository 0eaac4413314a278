// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSButtonCell.h>

#include <VXKit/platform/appkit/NSButton.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/appkit/TitleMnemonic.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>

#include <QApplication>
#include <QFont>
#include <QFontMetrics>
#include <QPainter>
#include <QSize>
#include <QStyle>
#include <QStyleOptionButton>
#include <QWidget>

namespace {

/// How the desktop's style names a kind of button.
struct StyleKind {
    QStyle::ControlElement element;
    QStyle::ContentsType contents;
};

StyleKind styleKindOf(const NSButton* button) {
    if (!button || !button->isCheckable()) {
        return {QStyle::CE_PushButton, QStyle::CT_PushButton};
    }
    return button->autoExclusive() ? StyleKind{QStyle::CE_RadioButton, QStyle::CT_RadioButton}
                                   : StyleKind{QStyle::CE_CheckBox, QStyle::CT_CheckBox};
}

QStyleOptionButton styleOptionOf(const NSButtonCell& cell, const QWidget* widget) {
    QStyleOptionButton option;
    if (widget) {
        option.initFrom(widget);
    }
    option.text = cell.title();
    option.state.setFlag(QStyle::State_Enabled, cell.isEnabled());
    option.state.setFlag(QStyle::State_Sunken, cell.isHighlighted());
    option.state.setFlag(QStyle::State_Raised, !cell.isHighlighted());
    option.state.setFlag(QStyle::State_On, cell.state() == NSOnState);
    option.state.setFlag(QStyle::State_Off, cell.state() == NSOffState);
    const NSButton* button = cell.controlView();
    option.state.setFlag(QStyle::State_HasFocus, button && button->showsFirstResponder());
    return option;
}

} // namespace

NSButtonCell::NSButtonCell() = default;

NSButtonCell::~NSButtonCell() = default;

QString NSButtonCell::title() const {
    return m_controlView ? m_controlView->title() : m_title;
}

void NSButtonCell::setTitle(const QString& title) {
    if (m_controlView) {
        m_controlView->setTitle(title);
        return;
    }
    m_title = title;
}

NSAttributedString NSButtonCell::attributedDisplayTitle(const NSTextAttributes& attributes) const {
    return titleWithMnemonicUnderlined(title(), attributes);
}

int NSButtonCell::state() const {
    return m_controlView ? m_controlView->state() : m_state;
}

void NSButtonCell::setState(int state) {
    if (m_controlView) {
        m_controlView->setState(state);
        return;
    }
    m_state = state == NSOffState ? NSOffState : NSOnState;
}

void NSButtonCell::setIntValue(int value) {
    setState(value);
}

bool NSButtonCell::isEnabled() const {
    return m_controlView ? m_controlView->isEnabled() : m_isEnabled;
}

void NSButtonCell::setEnabled(bool flag) {
    if (m_controlView) {
        m_controlView->setEnabled(flag);
        return;
    }
    m_isEnabled = flag;
}

bool NSButtonCell::isHighlighted() const {
    return m_controlView ? m_controlView->isDown() : m_isHighlighted;
}

void NSButtonCell::setHighlighted(bool flag) {
    if (m_controlView) {
        m_controlView->setDown(flag);
        return;
    }
    m_isHighlighted = flag;
}

void NSButtonCell::performClick(QObject* sender) {
    if (m_controlView) {
        m_controlView->performClick(sender);
    } else if (m_isEnabled) {
        m_state = m_state == NSOnState ? NSOffState : NSOnState;
    }
}

NSSize NSButtonCell::cellSize() const {
    const QStyle& style = m_controlView ? *m_controlView->style() : *QApplication::style();
    const QFont font = m_controlView ? m_controlView->font() : QApplication::font();
    const QSize textSize = QFontMetrics(font).size(Qt::TextShowMnemonic, title());
    const QStyleOptionButton option = styleOptionOf(*this, m_controlView);
    const QSize size = style.sizeFromContents(styleKindOf(m_controlView).contents, &option, textSize, m_controlView);
    return NSSizeFromQSizeF(size);
}

void NSButtonCell::drawWithFrame(const NSRect& cellFrame, ViewCore& controlView) {
    NSGraphicsContext* context = NSGraphicsContext::currentContext();
    if (!context || NSIsEmptyRect(cellFrame)) {
        return;
    }
    const QWidget& widget = *controlView.widget();
    QStyleOptionButton option = styleOptionOf(*this, &widget);
    option.rect = NSRectToQRectF(cellFrame).toRect();
    context->draw(NSRectToQRectF(cellFrame), [&](QPainter& painter) {
        painter.save();
        if (!context->isFlipped()) {
            // The style draws downwards.
            painter.translate(0, NSMinY(cellFrame) + NSMaxY(cellFrame));
            painter.scale(1, -1);
        }
        painter.setFont(widget.font());
        widget.style()->drawControl(styleKindOf(m_controlView).element, &option, &painter, &widget);
        painter.restore();
    });
}
