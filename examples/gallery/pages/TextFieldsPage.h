// SPDX-License-Identifier: MIT
#pragma once

#include "../GalleryPage.h"

/// Fields for text and for a password, and text that nobody types.
class TextFieldsPage : public GalleryPage {
public:
    TextFieldsPage();

    void build(Stage& stage, SettingsPane& settings) override;
    void takePictures(PictureBook& book) override;
};
