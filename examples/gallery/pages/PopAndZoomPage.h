// SPDX-License-Identifier: MIT
#pragma once

#include "../GalleryPage.h"

#include <VXKit/platform/foundation/NSGeometry.h>

#include <QPointer>
#include <QWidget>

#include <memory>

class LTHUDWindow;

/// Windows come into view and leave it.
class PopAndZoomPage : public GalleryPage {
public:
    PopAndZoomPage();
    ~PopAndZoomPage() override;

    void build(Stage& stage, SettingsPane& settings) override;
    void leave() override;
    void takePictures(PictureBook& book) override;

private:
    [[nodiscard]] NSRect zoomRect() const;

    std::unique_ptr<LTHUDWindow> m_window;
    QPointer<QWidget> m_from; // what the window zooms out of
};
