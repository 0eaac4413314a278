// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/controls/LTHUDLineEdit.h>
#include <VXKit/platform/graphics/NSColor.h>

#include <QObject>

/// A field for one line of text on a dark panel.
///
///     ╭──────────────────────────────╮
///     │ Name of the snippet          │  dark, with a light hairline and a soft shadow; 22 points high is what suits it
///     ╰──────────────────────────────╯
///
/// The text begins 10 points from the left and 4 from the top, and is always white, whatever was pasted. Return and
/// Enter press the target, Tab goes to the next key view; everything else is a line edit of Qt's, signals included. The
/// parent owns it. For passwords see LTHUDSecureTextField, for text that nobody types NSTextField.
class VXKIT_EXPORT LTHUDTextField : public LTHUDLineEdit {
    Q_OBJECT

public:
    /// A field without a frame, for a layout of Qt's.
    explicit LTHUDTextField(QWidget* parent = nullptr);
    /// AppKit: `-initWithFrame:`.
    explicit LTHUDTextField(const NSRect& frame, QWidget* parent = nullptr);

    /// The colour of the caret: white, always. AppKit: `-insertionPointColor`.
    [[nodiscard]] NSColor insertionPointColor() const;

    /// Inserts the text of the clipboard. `sender` is not looked at. AppKit: `-paste:`.
    void paste(QObject* sender);

    /// Pastes on Command-V, where that is on the keyboard's layout whatever else is held.
    void keyDown(const NSEvent& event) override;
};
