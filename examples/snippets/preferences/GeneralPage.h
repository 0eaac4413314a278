// SPDX-License-Identifier: MIT
#pragma once

#include "PreferencesPage.h"

/// How the program behaves. Every change counts at once.
class GeneralPage : public PreferencesPage {
public:
    GeneralPage();

private:
    void addSwitch(const QString& title, const char* key, bool isOnWhere);
};
