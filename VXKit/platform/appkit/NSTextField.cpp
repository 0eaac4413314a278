// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSTextField.h>

#include <VXKit/platform/appkit/WrappedText.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>
#include <VXKit/platform/graphics/QtColor.h>

#include <QAction>
#include <QBrush>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QFocusEvent>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPalette>
#include <QPen>
#include <QToolTip>

template class ViewOf<QLabel>;

namespace {

constexpr double disabledStrength = 0.4; // of the text's colour, from 0 to 1

/// In the words that Qt has for the same in its own labels, in the person's language.
QString menuTitle(const char* title) {
    return QCoreApplication::translate("QWidgetTextControl", title);
}

bool isSelectionKey(const QKeyEvent& event) {
    return event.matches(QKeySequence::Copy) || event.matches(QKeySequence::SelectAll);
}

} // namespace

struct NSTextField::Private {
    TextRange selection;
    WrappedText wrapped; // for the text, font and size that it was last asked for
};

NSTextField::NSTextField(QWidget* parent) : ViewOf<QLabel>(parent), m_private(std::make_unique<Private>()) {
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setAlignment(Qt::AlignLeading | Qt::AlignTop);
    setFont(NSFont());
}

NSTextField::NSTextField(const NSRect& frame, QWidget* parent) : NSTextField(parent) {
    setFrame(frame);
}

NSTextField::~NSTextField() = default;

QString NSTextField::stringValue() const {
    return text();
}

void NSTextField::setStringValue(const QString& string) {
    m_private->selection = {};
    // For a text in a label that takes the keyboard, Qt makes a whole document, which nothing here needs.
    const Qt::FocusPolicy policy = focusPolicy();
    setFocusPolicy(Qt::NoFocus);
    setText(string);
    setFocusPolicy(policy);
    setNeedsDisplay(true);
}

void NSTextField::setFont(const NSFont& font) {
    m_font = font;
    // What it wants of a layout of Qt's follows from it.
    QLabel::setFont(font.qtFont());
    setNeedsDisplay(true);
}

void NSTextField::setTextColor(const NSColor& color) {
    m_textColor = color;
    setNeedsDisplay(true);
}

void NSTextField::setTextColor(const QColor& color) {
    setTextColor(NSColorFromQColor(color));
}

QColor NSTextField::widgetTextColor() const {
    return m_textColor.qtColor();
}

void NSTextField::setSelectable(bool flag) {
    m_isSelectable = flag;
    // Not by Tab: in a dialog the keyboard is to go from button to button.
    setFocusPolicy(flag ? Qt::ClickFocus : Qt::NoFocus);
    if (flag) {
        setCursor(Qt::IBeamCursor);
    } else {
        unsetCursor();
        select({});
    }
}

void NSTextField::selectText(QObject* /*sender*/) {
    if (m_isSelectable) {
        select(wrapped().everything());
    }
}

QString NSTextField::selectedText() const {
    return wrapped().text(m_private->selection);
}

NSAttributedString NSTextField::attributedStringValue() const {
    NSTextAttributes attributes;
    attributes.font = m_font;
    attributes.foregroundColor = m_textColor;
    return NSAttributedString(text(), attributes);
}

const WrappedText& NSTextField::wrapped() const {
    WrappedText& wrapped = m_private->wrapped;
    const NSSize size = bounds().size;
    if (!wrapped.isOf(text(), m_font, size)) {
        wrapped = WrappedText(text(), m_font, size);
    }
    return wrapped;
}

/// Never lower than the frame, of which the last line needs the whole.
QRect NSTextField::geometryForFrame(const QRectF& frame) const {
    QRect geometry = ViewOf::geometryForFrame(frame);
    const double missing = frame.height() - geometry.height();
    if (missing > 0 && missing < 1) {
        geometry.setHeight(geometry.height() + 1);
    }
    return geometry;
}

void NSTextField::drawRect(const NSRect& /*dirtyRect*/) {
    NSGraphicsContext* context = NSGraphicsContext::currentContext();
    if (!context || NSIsEmptyRect(bounds())) {
        return;
    }
    NSColor color = m_textColor;
    if (!isEnabled()) {
        color = color.colorWithAlphaComponent(color.alphaComponent() * disabledStrength);
    }
    const QPen pen(context->brush(color), 0);
    const NSRect area = rectFromWidget(QRectF(rect()));
    context->draw(NSRectToQRectF(area), [&](QPainter& painter) {
        painter.save();
        painter.translate(0, NSMaxY(area));
        painter.scale(1, -1);
        painter.setPen(pen);
        wrapped().draw(painter, m_private->selection, palette());
        painter.restore();
    });
}

bool NSTextField::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty() && wrapped().isCut()) {
        // Escaped, since tool tips take text for markup where it looks like that.
        QToolTip::showText(
            static_cast<const QHelpEvent*>(event)->globalPos(),
            QStringLiteral("<p style='white-space:pre-wrap'>") + text().toHtmlEscaped() + QStringLiteral("</p>"), this);
        return true;
    }
    if (event->type() == QEvent::ShortcutOverride && m_isSelectable &&
        isSelectionKey(static_cast<const QKeyEvent&>(*event))) {
        event->accept();
        return true;
    }
    return ViewOf::event(event);
}

void NSTextField::handleAsWidget(QEvent& event) {
    if (!m_isSelectable) {
        return ViewOf::handleAsWidget(event);
    }
    switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
        return selectByMouse(static_cast<QMouseEvent&>(event));
    case QEvent::KeyPress:
        return selectByKey(static_cast<QKeyEvent&>(event));
    case QEvent::FocusOut: {
        const Qt::FocusReason reason = static_cast<const QFocusEvent&>(event).reason();
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason) {
            select({});
        }
        break;
    }
    default:
        break;
    }
    ViewOf::handleAsWidget(event);
}

void NSTextField::selectByMouse(QMouseEvent& event) {
    const bool isHeld =
        event.type() == QEvent::MouseMove ? event.buttons().testFlag(Qt::LeftButton) : event.button() == Qt::LeftButton;
    if (!isHeld) {
        event.ignore();
        return;
    }
    const int position = wrapped().positionAt(event.position());
    switch (event.type()) {
    case QEvent::MouseButtonPress:
        select({event.modifiers().testFlag(Qt::ShiftModifier) ? m_private->selection.anchor : position, position});
        break;
    case QEvent::MouseButtonDblClick:
        select(wrapped().wordAt(position));
        break;
    case QEvent::MouseMove:
        select({m_private->selection.anchor, position});
        break;
    default:
        copy(QClipboard::Selection);
        break;
    }
}

void NSTextField::selectByKey(QKeyEvent& event) {
    const WrappedText& text = wrapped();
    const int position = m_private->selection.position;
    const auto extendTo = [this](int newPosition) { select({m_private->selection.anchor, newPosition}); };
    if (event.matches(QKeySequence::Copy)) {
        copy(QClipboard::Clipboard);
    } else if (event.matches(QKeySequence::SelectAll)) {
        select(text.everything());
    } else if (event.matches(QKeySequence::SelectNextChar)) {
        extendTo(text.nextCharacter(position));
    } else if (event.matches(QKeySequence::SelectPreviousChar)) {
        extendTo(text.previousCharacter(position));
    } else if (event.matches(QKeySequence::SelectNextWord)) {
        extendTo(text.nextWord(position));
    } else if (event.matches(QKeySequence::SelectPreviousWord)) {
        extendTo(text.previousWord(position));
    } else if (event.matches(QKeySequence::SelectStartOfLine)) {
        extendTo(text.startOfLine(position));
    } else if (event.matches(QKeySequence::SelectEndOfLine)) {
        extendTo(text.endOfLine(position));
    } else if (event.matches(QKeySequence::SelectStartOfDocument)) {
        extendTo(0);
    } else if (event.matches(QKeySequence::SelectEndOfDocument)) {
        extendTo(text.everything().last());
    } else {
        event.ignore();
    }
}

void NSTextField::select(const TextRange& range) {
    if (range != m_private->selection) {
        m_private->selection = range;
        setNeedsDisplay(true);
    }
}

void NSTextField::copy(QClipboard::Mode mode) const {
    QClipboard* clipboard = QGuiApplication::clipboard();
    if (!m_private->selection.isEmpty() && (mode != QClipboard::Selection || clipboard->supportsSelection())) {
        clipboard->setText(selectedText(), mode);
    }
}

void NSTextField::contextMenuEvent(QContextMenuEvent* event) {
    if (!m_isSelectable) {
        return ViewOf::contextMenuEvent(event);
    }
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QAction* copyAction = menu->addAction(menuTitle("&Copy"), this, [this] { copy(QClipboard::Clipboard); });
    copyAction->setShortcut(QKeySequence::Copy);
    copyAction->setEnabled(!m_private->selection.isEmpty());
    menu->addSeparator();
    QAction* allAction = menu->addAction(menuTitle("Select All"), this, [this] { selectText(nullptr); });
    allAction->setShortcut(QKeySequence::SelectAll);
    menu->popup(event->globalPos());
}
