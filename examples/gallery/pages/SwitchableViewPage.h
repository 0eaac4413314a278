// SPDX-License-Identifier: MIT
#pragma once

#include "../GalleryPage.h"

#include <VXKit/transitions/LTSwitchableView.h>

#include <QPointer>

#include <memory>

class LTHUDWindow;

/// A view slides in as another slides out.
class SwitchableViewPage : public GalleryPage {
public:
    SwitchableViewPage();
    ~SwitchableViewPage() override;

    void build(Stage& stage, SettingsPane& settings) override;
    void leave() override;
    void takePictures(PictureBook& book) override;

private:
    void makeWindow();
    void switchView();

    std::unique_ptr<LTHUDWindow> m_window;
    QPointer<LTSwitchableView> m_container;
    int m_direction = 0;
    bool m_adjustsWindow = true;
    int m_shown = -1; // number of views that were shown
};
