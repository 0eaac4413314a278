// SPDX-License-Identifier: MIT
#pragma once

#include "../GalleryPage.h"

/// Check boxes and radio buttons.
class CheckBoxesPage : public GalleryPage {
public:
    CheckBoxesPage();

    void build(Stage& stage, SettingsPane& settings) override;
    void takePictures(PictureBook& book) override;
};
