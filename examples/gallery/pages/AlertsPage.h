// SPDX-License-Identifier: MIT
#pragma once

#include "../GalleryPage.h"

#include <memory>

class LTHUDAlert;

/// Questions to the person.
class AlertsPage : public GalleryPage {
public:
    AlertsPage();
    ~AlertsPage() override;

    void build(Stage& stage, SettingsPane& settings) override;
    void takePictures(PictureBook& book) override;

private:
    [[nodiscard]] std::shared_ptr<LTHUDAlert> makeAlert() const;

    QString m_message = QStringLiteral("Remove the snippet?");
    QString m_information = QStringLiteral("It goes from this computer and from the server. There is no undo.");
    int m_buttons = 2;
    bool m_asksToBeSpared = false;
    bool m_isInput = false;
};
