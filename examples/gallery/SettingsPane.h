// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/NSView.h>

#include <QStringList>

#include <functional>
#include <vector>

class LTHUDButton;
class LTHUDCheckBox;
class LTHUDTextField;
class NSButton;
class NSTextField;
class QVBoxLayout;

/// The settings of a page, one below the other. Each calls what it is given with its new value as soon as the person
/// changes it, and not for the value that it begins with.
class SettingsPane : public NSView {
public:
    explicit SettingsPane(const NSRect& frame);

    LTHUDCheckBox& addCheckBox(const QString& title, bool value, const std::function<void(bool)>& change);
    /// One of several, as radio buttons where they are few.
    void addChoice(const QString& title, const QStringList& choices, int value, const std::function<void(int)>& change);
    /// A number from `least` to `most`; shown whole, or in hundredths where the range is narrow.
    void addSlider(const QString& title, double least, double most, double value,
                   const std::function<void(double)>& change);
    LTHUDTextField& addText(const QString& title, const QString& value,
                            const std::function<void(const QString&)>& change);
    /// Whether the buttons are enabled, and whether they look pressed.
    void addStates(const std::vector<NSButton*>& buttons);
    LTHUDButton& addButton(const QString& title, const std::function<void()>& action);
    /// A text that explains, or tells what has happened.
    NSTextField& addNote(const QString& text, int lines = 2);

private:
    NSTextField& addLine(const QString& text, int height);

    QVBoxLayout* m_rows; // owned as the layout
};
