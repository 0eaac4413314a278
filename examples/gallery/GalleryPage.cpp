// SPDX-License-Identifier: MIT
#include "GalleryPage.h"

#include <utility>

GalleryPage::GalleryPage(QString name, QString title, QString text, QStringList subjects)
    : m_name(std::move(name)), m_title(std::move(title)), m_text(std::move(text)), m_subjects(std::move(subjects)) {}

GalleryPage::~GalleryPage() = default;

void GalleryPage::leave() {}

void GalleryPage::takePictures(PictureBook& /*book*/) {}
