// SPDX-License-Identifier: MIT
#pragma once

#include "../GalleryPage.h"

/// What tells of an unexpected exception.
class ExceptionReporterPage : public GalleryPage {
public:
    ExceptionReporterPage();
    ~ExceptionReporterPage() override;

    void build(Stage& stage, SettingsPane& settings) override;
    void takePictures(PictureBook& book) override;

private:
    QString m_reason = QStringLiteral("The index 12 is beyond the end of a list of 3.");
};
