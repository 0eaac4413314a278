// SPDX-License-Identifier: MIT
#pragma once

#include "../GalleryPage.h"

/// Push buttons, with and without images.
class ButtonsPage : public GalleryPage {
public:
    ButtonsPage();

    void build(Stage& stage, SettingsPane& settings) override;
    void takePictures(PictureBook& book) override;
};
