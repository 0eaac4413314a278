// SPDX-License-Identifier: MIT
#pragma once

#include "../GalleryPage.h"

/// What tells that something was copied.
class CopyPopUpPage : public GalleryPage {
public:
    CopyPopUpPage();
    ~CopyPopUpPage() override;

    void build(Stage& stage, SettingsPane& settings) override;
    void takePictures(PictureBook& book) override;
};
