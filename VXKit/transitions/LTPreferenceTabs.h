// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/foundation/NSGeometry.h>
#include <VXKit/transitions/LTSwitchableView.h>

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <optional>
#include <vector>

class QEvent;
class QKeyEvent;
class _LTPrefTab;

/// The row of tabs of a preferences window in the HUD look. Choosing one slides the view that belongs to it into an
/// LTSwitchableView: from the right for a later tab, from the left for an earlier one.
///
///     │ ╭─────────╮                      │
///     │ │ General │  Accounts   Keys     │
///     │ ╰─────────╯                      │
///      5           5
///
/// The tabs are its subviews, in order. Where one has the keyboard, Left and Right select its neighbours, Home and End
/// the first and the last, and Space and Return press it.
class VXKIT_EXPORT LTPreferenceTabs : public NSView {
    Q_OBJECT
    Q_PROPERTY(QStringList tabTitles READ tabTitles WRITE setTabTitles)

public:
    /// A row without a frame, for a form or a layout of Qt's.
    explicit LTPreferenceTabs(QWidget* parent = nullptr);
    /// AppKit: `-initWithFrame:`.
    explicit LTPreferenceTabs(const NSRect& frame, QWidget* parent = nullptr);
    /// Deletes those of its views that have no superview.
    ~LTPreferenceTabs() override;

    /// Adds a tab for each name, from the left edge on, and selects the first tab of all. Those that there are stay:
    /// called again, the new ones lie on the old. Throws NSRangeException where there is no tab then. AppKit:
    /// `-setTabNames:`.
    void setTabNames(const QStringList& names);
    /// The names of the tabs, in their order.
    [[nodiscard]] QStringList tabTitles() const;
    /// Puts a tab for each title in place of those that there are, as a form has it set again and again; none leaves
    /// the row empty.
    void setTabTitles(const QStringList& titles);
    /// The views of the tabs, in their order, and shows that of the selected tab. It keeps the views: one that has no
    /// superview is deleted when it is replaced, or with the row. AppKit: `-setTabViews:`.
    void setTabViews(std::vector<QWidget*> views);

    /// The index of the first selected tab; 0 where there is none. AppKit: `-indexOfSelectedTab`.
    [[nodiscard]] int indexOfSelectedTab() const;
    /// Selects the tab `index` and none else, and shows its view. Throws NSRangeException where the tab has no view.
    /// AppKit: `-setSelectionIndex:`.
    void setSelectionIndex(int index);
    /// What every tab does when it is clicked: selects the tab `sender`. AppKit: `-switchViews:`.
    void switchViews(QWidget* sender);

    /// Draws nothing.
    void drawRect(const NSRect& dirtyRect) override;

    /// The container of the views, connected by whoever makes the window before tabs are selected; an outlet, which has
    /// no setter. Not owned. Where it is not there, tabs are selected and nothing else happens.
    QPointer<LTSwitchableView> _switchView;

protected:
    /// The keys that its tabs get.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool takeKey(_LTPrefTab* tab, const QKeyEvent& event);
    void releaseViews(const std::vector<QWidget*>& kept);

    std::optional<std::vector<QPointer<QWidget>>> _views; // not set at first
};
