// SPDX-License-Identifier: MIT
#pragma once

#include "../GalleryPage.h"

/// Tabs for the views of a preferences window.
class PreferenceTabsPage : public GalleryPage {
public:
    PreferenceTabsPage();
    ~PreferenceTabsPage() override;

    void build(Stage& stage, SettingsPane& settings) override;
    void takePictures(PictureBook& book) override;
};
