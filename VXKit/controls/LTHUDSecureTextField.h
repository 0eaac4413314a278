// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/controls/LTHUDLineEdit.h>

#include <QObject>

/// Whether the system draws a ring around the view with the keyboard. AppKit: `NSFocusRingType`.
enum NSFocusRingType {
    NSFocusRingTypeDefault = 0,  ///< as is usual for such a view
    NSFocusRingTypeNone = 1,     ///< no ring
    NSFocusRingTypeExterior = 2, ///< around the outside of the view
};

/// A field for a password on a dark panel: shows a dot for each character, and lets none of them be copied.
///
///     ╭──────────────────────────────╮
///     │ ●●●●●●●●                     │
///     ╰──────────────────────────────╯
///
/// The dots begin 10 points from the left and stand in the middle of the height. Otherwise as LTHUDTextField. The
/// parent owns it.
class VXKIT_EXPORT LTHUDSecureTextField : public LTHUDLineEdit {
    Q_OBJECT

public:
    /// A field without a frame, for a layout of Qt's.
    explicit LTHUDSecureTextField(QWidget* parent = nullptr);
    /// AppKit: `-initWithFrame:`.
    explicit LTHUDSecureTextField(const NSRect& frame, QWidget* parent = nullptr);

    /// None: the well tells by itself who has the keyboard. AppKit: `-focusRingType`.
    [[nodiscard]] NSFocusRingType focusRingType() const;
};
