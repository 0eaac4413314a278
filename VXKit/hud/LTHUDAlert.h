// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QObject>
#include <QString>

#include <memory>
#include <optional>

class LTHUDButton;
class LTHUDTextField;
class LTHUDWindow;
class NSButton;
class NSTextField;
class NSWindow;

/// The tag of an alert's default button, and the result of a run that it ended.
inline constexpr int NSAlertDefaultReturn = 1;
/// The tag of an alert's alternate button, and the result of a run that it ended.
inline constexpr int NSAlertAlternateReturn = 0;
/// The tag of an alert's other button, and the result of a run that it ended.
inline constexpr int NSAlertOtherReturn = -1;

/// A question to the person, in the kit's dark look: a bold headline, an explanation, and up to three buttons.
///
///     ╭──────────────────────────────────────────────╮
///     │   Headline                                   │
///     │   What it means.  ┌────────────────────┐     │  an input alert only
///     │ ( Other )               ( Cancel )(   OK   ) │
///     ╰──────────────────────────────────────────────╯
///
/// Return presses the default button and Escape the alternate one. In place of the other button may stand a check box
/// that asks whether to be spared the question in future. It is made, set up, run once and asked for its answers; the
/// run pops it up in the middle of the screen, or slides it out over a window. Whoever makes an alert owns it; when it
/// is destroyed while it runs, the run ends.
class VXKIT_EXPORT LTHUDAlert : public QObject {
    Q_OBJECT

public:
    /// An alert without texts and titles.
    LTHUDAlert();
    ~LTHUDAlert() override;

    /// `informativeText` is shown as it is: it is not a format. A button whose title is empty is not shown, but for the
    /// default one.
    /// AppKit: `+alertWithMessageText:defaultButton:alternateButton:otherButton:informativeTextWithFormat:`.
    [[nodiscard]] static std::shared_ptr<LTHUDAlert>
    alertWithMessageText(const QString& message, const QString& defaultButton, const QString& alternateButton,
                         const QString& otherButton, const QString& informativeText);
    /// An alert that asks for a line of text, with `message` to tell what for and `initialValue`, selected, to begin
    /// with.
    [[nodiscard]] static std::shared_ptr<LTHUDAlert> inputAlertWithMessageText(const QString& message,
                                                                               const QString& initialValue);

    /// The headline, which is what screen readers and lists of windows call the alert, too.
    void setMessage(const QString& message);
    /// The explanation below the headline; empty: none.
    void setInformativeText(const QString& text);
    /// The title of the default button, which is shown even where that is empty.
    void setDefaultButtonTitle(const QString& title);
    /// The title of the alternate button; where it is empty, the button is not shown.
    void setAlternateButtonTitle(const QString& title);
    /// The title of the other button, or of the check box in its place; where it is empty, neither is shown.
    void setOtherButtonTitle(const QString& title);
    /// Whether the alert asks for a line of text. No. To be called before the alert is run.
    void setIsInput(bool flag) { _isInput = flag; }
    /// Puts a check box in the place of the other button, or a button again, with the same title. To be called before
    /// the alert is run.
    void setOtherButtonIsDontShowAgain(bool flag);
    /// Whether the check box is on; no where there is none.
    [[nodiscard]] bool dontShowAgainIsChecked() const;

    /// Lays the alert out: with 0 for an application-modal one, with 1 for a sheet, which is 20 points lower.
    void size(int sheet = 0);

    /// Ends the run with the tag of `sender`; what the buttons do. Not the default button of an input alert without
    /// text: that beeps.
    void buttonAction(const NSButton& sender);

    /// Pops the alert up in front of everything and runs it. Answers one of the results above.
    int runModal();
    /// The same as a sheet of `parent`; the alternate result also when that is closed meanwhile.
    int runSheetModalForWindow(NSWindow& parent);
    /// The same for an input alert: the text, or nothing where the default button did not end it.
    std::optional<QString> runInputSheetModalForWindow(NSWindow& parent);

    /// The alert's window. What an alert is made of is owned by it, and here for hosts that want to add to it.
    [[nodiscard]] LTHUDWindow& window() const { return *_alertWindow; }
    /// The headline.
    [[nodiscard]] NSTextField& messageField() const { return *_messageField; }
    /// The explanation.
    [[nodiscard]] NSTextField& informativeTextField() const { return *_informativeText; }
    /// Where the text is typed; null until the first layout of an input alert.
    [[nodiscard]] LTHUDTextField* inputField() const { return _inputField.get(); }
    /// The button that Return presses.
    [[nodiscard]] LTHUDButton& defaultButtonControl() const { return *defaultButton; }
    /// The button that Escape presses.
    [[nodiscard]] LTHUDButton& alternateButtonControl() const { return *alternateButton; }
    /// An LTHUDButton, or the LTHUDCheckBox in its place; another object after setOtherButtonIsDontShowAgain.
    [[nodiscard]] NSButton& otherButtonControl() const { return *otherButton; }

private:
    std::unique_ptr<LTHUDButton> makeButton(int tag);
    void placeButtons();
    void makeInputField(double wholeTextWidth);
    void takeKeys();

    std::unique_ptr<LTHUDWindow> _alertWindow;
    std::unique_ptr<NSTextField> _messageField;
    std::unique_ptr<NSTextField> _informativeText;
    std::unique_ptr<LTHUDTextField> _inputField;
    QString _initialText;
    std::unique_ptr<LTHUDButton> defaultButton;
    std::unique_ptr<NSButton> otherButton;
    std::unique_ptr<LTHUDButton> alternateButton;
    bool _isInput = false;
    int result = NSAlertAlternateReturn;
};
