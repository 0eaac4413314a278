// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/NSNib.h>
#include <VXKit/platform/appkit/NSView.h>

#include <QString>

/// One page of the preferences window, as large as the whole window is while it is shown. What it has comes from a nib,
/// which leaves room above for title bar and tabs, and below for the button lane.
class PreferencesPage : public NSView, public NSNibOwner {
public:
    PreferencesPage();

    /// Takes its own size again, after it left the window and took that of the page that came.
    void restoreSize();

    using NSView::awakeFromNib; // the view's, of the two

protected:
    /// Fills the page from the nib `name`, which sets its size. To be called at the beginning of a subclass's life.
    void load(const QString& name);

private:
    NSSize m_size;
};
