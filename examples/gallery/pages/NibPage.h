// SPDX-License-Identifier: MIT
#pragma once

#include "../GalleryPage.h"

#include <memory>

class CardLoader;

/// A view that was made with Qt Designer.
class NibPage : public GalleryPage {
public:
    NibPage();
    ~NibPage() override;

    void build(Stage& stage, SettingsPane& settings) override;
    void leave() override;

private:
    std::shared_ptr<CardLoader> m_loader;
};
