// SPDX-License-Identifier: MIT
#pragma once

#include "../GalleryPage.h"

#include <QPointer>
#include <QWidget>

/// A name on a dark ground.
class NameTagPage : public GalleryPage {
public:
    NameTagPage();
    ~NameTagPage() override;

    void build(Stage& stage, SettingsPane& settings) override;
    void takePictures(PictureBook& book) override;

private:
    void showTags(Stage& stage);

    QString m_tagName = QStringLiteral("Ada Lovelace");
    QPointer<QWidget> m_small;
    QPointer<QWidget> m_large;
};
