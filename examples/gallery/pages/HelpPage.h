// SPDX-License-Identifier: MIT
#pragma once

#include "../GalleryPage.h"

/// The help window.
class HelpPage : public GalleryPage {
public:
    HelpPage();
    ~HelpPage() override;

    void build(Stage& stage, SettingsPane& settings) override;
    void leave() override;
    void takePictures(PictureBook& book) override;
};
