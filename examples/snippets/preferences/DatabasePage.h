// SPDX-License-Identifier: MIT
#pragma once

#include "PreferencesPage.h"

#include <QString>

#include <functional>

class LTHUDButton;
class NSTextField;

/// Where the snippets are kept.
class DatabasePage : public PreferencesPage {
public:
    /// `useStandard` is called by the button that goes back to the standard file.
    explicit DatabasePage(std::function<void()> useStandard);

    /// Shows `path`; the way back is offered where that is not the standard file.
    void show(const QString& path, bool isStandard);

private:
    void connectNib(NSNibConnections& nib) override;

    std::function<void()> m_useStandard;
    NSTextField* m_path = nullptr;
    LTHUDButton* m_standardButton = nullptr;
};
