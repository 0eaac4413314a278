// SPDX-License-Identifier: MIT
#pragma once

#include "../GalleryPage.h"

#include <memory>

class NSWindow;

/// What a window asks of the desktop.
class WindowEffectsPage : public GalleryPage {
public:
    WindowEffectsPage();
    ~WindowEffectsPage() override;

    void build(Stage& stage, SettingsPane& settings) override;
    void leave() override;
    void takePictures(PictureBook& book) override;

private:
    void makeWindow();

    std::unique_ptr<NSWindow> m_window;
};
