// SPDX-License-Identifier: MIT
#pragma once

#include "../GalleryPage.h"

#include <memory>

class NSWindow;

/// Lines between the parts of a window.
class LinePage : public GalleryPage {
public:
    LinePage();
    ~LinePage() override;

    void build(Stage& stage, SettingsPane& settings) override;
    void leave() override;
    void takePictures(PictureBook& book) override;

private:
    std::unique_ptr<NSWindow> m_plainWindow;
};
