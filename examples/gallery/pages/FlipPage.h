// SPDX-License-Identifier: MIT
#pragma once

#include "../GalleryPage.h"

#include <memory>

class LTHUDWindow;

/// A window turns over to another one.
class FlipPage : public GalleryPage {
public:
    FlipPage();
    ~FlipPage() override;

    void build(Stage& stage, SettingsPane& settings) override;
    void leave() override;
    void takePictures(PictureBook& book) override;

private:
    void makeWindows();

    std::unique_ptr<LTHUDWindow> m_front;
    std::unique_ptr<LTHUDWindow> m_back;
    bool m_goesForward = true;
};
