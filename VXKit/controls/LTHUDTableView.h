// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSTableView.h>
#include <VXKit/platform/foundation/NSGeometry.h>
#include <VXKit/platform/graphics/NSColor.h>

#include <QObject>

#include <vector>

/// The table of HUD panels: white text on dark rows, a brown highlight, and the kit's scroll bars.
///
/// Each object of its data source tells by its value "enabled" what the row's check box shows: 0 off, -1 that the row
/// is installed already and cannot be toggled (LTHUDCheckBoxCell), any other number on. Without a data source its check
/// boxes are those of any table.
class VXKIT_EXPORT LTHUDTableView : public NSTableView {
    Q_OBJECT

public:
    /// A table without a frame, for a layout of Qt's.
    explicit LTHUDTableView(QWidget* parent = nullptr);
    /// AppKit: `-initWithFrame:`.
    explicit LTHUDTableView(const NSRect& frame, QWidget* parent = nullptr);
    ~LTHUDTableView() override;

    /// Two greys, which let a little through in a HUD window.
    [[nodiscard]] std::vector<NSColor> _alternatingRowBackgroundColors() const override;
    /// A brown, whatever `cell` is.
    [[nodiscard]] NSColor _highlightColorForCell(const NSCell* cell) const override;
    /// Gives a button cell the value "enabled" of the row's object; 0 where there is none.
    [[nodiscard]] NSCell* preparedCellAtColumn(int column, int row) override;

protected:
    /// Stores it in the data source under "enabled"; without a data source, as any table does.
    void setIntValueOfCell(int value, int column, int row) override;

private:
    void setUp();
};
