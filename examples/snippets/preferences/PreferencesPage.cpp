// SPDX-License-Identifier: MIT
#include "PreferencesPage.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/platform/appkit/NSTextField.h>
#include <VXKit/platform/graphics/NSColor.h>

namespace {

// Points.
constexpr double headHeight = 62; // of title bar and tabs, with room below
constexpr double rowGap = 10;
constexpr double textFontSize = 11;

} // namespace

PreferencesPage::PreferencesPage(const NSSize& size) : m_size(size), m_nextY(size.height - headHeight) {
    restoreSize();
}

void PreferencesPage::restoreSize() {
    setFrame({frame().origin, m_size});
}

/// Everything keeps its distance from the upper edge, where the tabs are.
void PreferencesPage::add(ViewCore& view) {
    view.setAutoresizingMask(NSViewMinYMargin);
    addSubview(view.widget());
}

NSRect PreferencesPage::nextRow(double height) {
    const NSRect row = NSMakeRect(margin, m_nextY - height, bounds().size.width - 2 * margin, height);
    m_nextY = NSMinY(row) - rowGap;
    return row;
}

NSTextField& PreferencesPage::addText(const NSRect& frame, const QString& text) {
    auto* field = new NSTextField(frame, this);
    field->setFont(NSFont::systemFontOfSize(textFontSize));
    field->setTextColor(NSColor::whiteColor());
    field->setStringValue(text);
    add(*field);
    return *field;
}

LTHUDCheckBox& PreferencesPage::addCheckBox(const NSRect& frame, const QString& title, bool isOn) {
    auto* box = new LTHUDCheckBox(frame, this);
    box->setTitle(title);
    box->setState(isOn ? NSOnState : NSOffState);
    add(*box);
    return *box;
}

LTHUDButton& PreferencesPage::addButton(const NSRect& frame, const QString& title) {
    auto* button = new LTHUDButton(frame, this);
    button->setTitle(title);
    add(*button);
    return *button;
}
