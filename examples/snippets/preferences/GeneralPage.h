// SPDX-License-Identifier: MIT
#pragma once

#include "LoginItem.h"
#include "PreferencesPage.h"

#include <functional>

class LTHUDCheckBox;
class NSTextField;
class QSlider;

/// How the program behaves. Every change counts at once.
class GeneralPage : public PreferencesPage {
public:
    /// What the running program is told.
    struct Actions {
        /// The window is to be of this opacity, from leastWindowOpacity to fullWindowOpacity.
        std::function<void(double opacity)> setWindowOpacity;
        /// Whether the window closes when it is left has changed.
        std::function<void()> applyClosing;
    };

    explicit GeneralPage(Actions actions);

    /// Shows what others may have changed meanwhile.
    void reload();

private:
    void connectNib(NSNibConnections& nib) override;
    void tie(LTHUDCheckBox& box, const char* key, bool isOnWhere);
    void followClosing(bool closes);
    void opacityHasChanged();
    void startAtLogin(bool starts);

    Actions m_actions;
    LoginItem m_loginItem = LoginItem::ofThisProgram();
    LTHUDCheckBox* m_closes = nullptr;
    NSTextField* m_opacityLabel = nullptr;
    QSlider* m_opacity = nullptr;
    NSTextField* m_opacityValue = nullptr;
    LTHUDCheckBox* m_asks = nullptr;
    LTHUDCheckBox* m_reducesMotion = nullptr;
    LTHUDCheckBox* m_startsAtLogin = nullptr;
    LTHUDCheckBox* m_logs = nullptr;
};
