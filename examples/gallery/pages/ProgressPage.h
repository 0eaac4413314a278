// SPDX-License-Identifier: MIT
#pragma once

#include "../GalleryPage.h"

/// How far something is, as a bar, a wheel and a pie.
class ProgressPage : public GalleryPage {
public:
    ProgressPage();

    void build(Stage& stage, SettingsPane& settings) override;
    void takePictures(PictureBook& book) override;
};
