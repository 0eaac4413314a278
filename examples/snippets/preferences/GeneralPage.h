// SPDX-License-Identifier: MIT
#pragma once

#include "PreferencesPage.h"

class LTHUDCheckBox;

/// How the program behaves. Every change counts at once.
class GeneralPage : public PreferencesPage {
public:
    GeneralPage();

private:
    void connectNib(NSNibConnections& nib) override;
    void tie(LTHUDCheckBox& box, const char* key, bool isOnWhere);

    LTHUDCheckBox* m_asks = nullptr;
    LTHUDCheckBox* m_reducesMotion = nullptr;
    LTHUDCheckBox* m_logs = nullptr;
};
