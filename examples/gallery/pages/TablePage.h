// SPDX-License-Identifier: MIT
#pragma once

#include "../GalleryPage.h"

#include <memory>

class NSArrayController;

/// The table of dark panels, and scroll bars.
class TablePage : public GalleryPage {
public:
    TablePage();
    ~TablePage() override;

    void build(Stage& stage, SettingsPane& settings) override;
    void takePictures(PictureBook& book) override;

private:
    std::unique_ptr<NSArrayController> m_rows;
};
