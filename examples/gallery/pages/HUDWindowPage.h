// SPDX-License-Identifier: MIT
#pragma once

#include "../GalleryPage.h"

#include <memory>

class LTHUDWindow;
class NSWindow;

/// The dark panel, by itself and as a sheet.
class HUDWindowPage : public GalleryPage {
public:
    HUDWindowPage();
    ~HUDWindowPage() override;

    void build(Stage& stage, SettingsPane& settings) override;
    void leave() override;
    void takePictures(PictureBook& book) override;

private:
    void runSheet(NSWindow& parent);

    std::unique_ptr<LTHUDWindow> m_window;
    bool m_hasLane = true;
};
