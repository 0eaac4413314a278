// SPDX-License-Identifier: MIT
#pragma once

#include "../GalleryPage.h"

#include <memory>

class LTHUDWindow;

/// Grips that resize a window without a frame.
class ResizeCornersPage : public GalleryPage {
public:
    ResizeCornersPage();
    ~ResizeCornersPage() override;

    void build(Stage& stage, SettingsPane& settings) override;
    void leave() override;
    void takePictures(PictureBook& book) override;

private:
    void makeWindow();

    std::unique_ptr<LTHUDWindow> m_window;
};
