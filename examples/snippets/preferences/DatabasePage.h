// SPDX-License-Identifier: MIT
#pragma once

#include "PreferencesPage.h"

#include <QString>

#include <functional>

class LTHUDButton;

/// Where the snippets are kept.
class DatabasePage : public PreferencesPage {
public:
    /// `useStandard` is called by the button that goes back to the standard file.
    explicit DatabasePage(std::function<void()> useStandard);

    /// Shows `path`; the way back is offered where that is not the standard file.
    void show(const QString& path, bool isStandard);

private:
    NSTextField& m_path;
    LTHUDButton& m_useStandard;
};
