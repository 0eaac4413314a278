// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/PlainLineEdit.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <QObject>
#include <QPointer>
#include <QString>

#include <memory>

class NSButton;
class NSImage;

/// What the text fields of dark panels have in common: the dark well with a light hairline and a soft shadow around a
/// white text, the grey placeholder, and the keys that they take for themselves. Hosts use LTHUDTextField and
/// LTHUDSecureTextField.
///
/// Return and Enter press the target and nothing else; Tab, whatever is held with it, goes to the next key view.
/// Nothing of what a field is linked to is owned.
class VXKIT_EXPORT LTHUDLineEdit : public PlainLineEdit {
    Q_OBJECT
    Q_PROPERTY(QString placeholderText READ placeholderString WRITE setPlaceholderText)

public:
    /// The button that Return and Enter press; without one, and when it is gone, they do nothing here. A key that is
    /// held down presses it once.
    void setTarget(NSButton* target);
    /// The button that was set; null where there is none, or it is gone.
    [[nodiscard]] NSButton* target() const;

    /// The view that gets the keyboard on Tab, and on Shift-Tab too; without one, the window itself gets it. In a plain
    /// window of Qt's, Tab without a next view goes where Qt takes it. AppKit: the outlet of that name.
    void setNextKeyView(QWidget* view) override { m_nextKeyView = view; }
    /// The view that was set; null where there is none, or it is gone. AppKit: `-nextKeyView`.
    [[nodiscard]] QWidget* nextKeyView() const { return m_nextKeyView; }

    /// What stands in the field while it is empty and does not have the keyboard; nothing where it is null. A screen
    /// reader is told of it as the description of the field, where that has none of its own.
    void setPlaceholderString(const QString& placeholder);
    /// What was set; null at first.
    [[nodiscard]] QString placeholderString() const { return m_placeholder; }
    /// The same, as code made from a form calls it. Hides that of QLineEdit, whose placeholder would be drawn
    /// besides, in its own looks.
    void setPlaceholderText(const QString& placeholder) { setPlaceholderString(placeholder); }

    /// Moved to where the text is laid out, except while the field paints its background.
    [[nodiscard]] NSRect bounds() const override;

    /// Takes over the target that a nib tells by the property `target`, the name of the button. The fields send no
    /// actions themselves.
    void awakeFromNib() override;

    /// Redraws at once, so that the placeholder is not seen beside the caret.
    bool becomeFirstResponder() override;
    /// Redraws, so that the placeholder shows again.
    bool resignFirstResponder() override;
    /// Takes Return, Enter and Tab as the class note says; all else is the line edit's.
    void keyDown(const NSEvent& event) override;
    /// Answers Return and Enter while the field has the keyboard and a target, which a default button of the window
    /// would take otherwise.
    bool performKeyEquivalent(const NSEvent& event) override;
    /// Draws the well, the text with selection and caret, and the placeholder where it is to be seen.
    void drawRect(const NSRect& dirtyRect) override;

protected:
    /// In what the two kinds of field differ.
    struct Style {
        double shadowBlurRadius; ///< of the well's shadow, in points
        NSPoint boundsShift;     ///< of bounds() to where the text is laid out, in points
    };

    /// A field of that style without a frame.
    LTHUDLineEdit(const Style& style, QWidget* parent);

    bool event(QEvent* event) override;

private:
    void drawWell();
    void drawPlaceholder() const;
    void pressTarget(const NSEvent& event);
    void selectNextKeyView(const NSEvent& event);

    Style m_style;
    bool m_drawing = false;          // its own background
    std::shared_ptr<NSImage> m_well; // as it was painted last
    double m_wellPixelRatio = 0;
    QPointer<NSButton> m_target;
    QPointer<QWidget> m_nextKeyView;
    QString m_placeholder;
};
