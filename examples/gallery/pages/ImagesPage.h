// SPDX-License-Identifier: MIT
#pragma once

#include "../GalleryPage.h"

/// The images that the kit brings along.
class ImagesPage : public GalleryPage {
public:
    ImagesPage();
    ~ImagesPage() override;

    void build(Stage& stage, SettingsPane& settings) override;
};
