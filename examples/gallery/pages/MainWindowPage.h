// SPDX-License-Identifier: MIT
#pragma once

#include "../GalleryPage.h"

/// The main window under its status item.
class MainWindowPage : public GalleryPage {
public:
    MainWindowPage();
    ~MainWindowPage() override;

    void build(Stage& stage, SettingsPane& settings) override;
    void leave() override;
    void takePictures(PictureBook& book) override;
};
