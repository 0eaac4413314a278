// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSButton.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <QObject>
#include <QString>
#include <QWidget>

#include <memory>

/// A tab of a preferences window in the HUD look: its name in white, on a dark plate while it is selected.
///
///      ╭─────────╮  1.5
///      │ General │   Accounts
///      ╰─────────╯  24.5 of 26
///
/// Wide enough for its name in bold, which it does not use, and 10 points. It does not select itself: see
/// LTPreferenceTabs. A name is written as a button's title is.
class VXKIT_EXPORT _LTPrefTab : public NSButton {
    Q_OBJECT

public:
    /// A tab without a name and frame.
    explicit _LTPrefTab(QWidget* parent = nullptr);
    ~_LTPrefTab() override;

    /// One of the size that `name` needs, at (0, 0). AppKit: `+tabWithName:`.
    [[nodiscard]] static std::unique_ptr<_LTPrefTab> tabWithName(const QString& name);

    /// Whether it is drawn selected. No. AppKit: `-isSelected`.
    [[nodiscard]] bool isSelected() const { return _selected; }
    /// Redraws the tab before it returns. AppKit: `-setSelected:`.
    void setSelected(bool flag);

    /// Draws the plate where the tab is selected, and the name.
    void drawRect(const NSRect& dirtyRect) override;

private:
    bool _selected = false;
};
