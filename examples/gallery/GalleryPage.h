// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QStringList>

#include <memory>
#include <vector>

class PictureBook;
class SettingsPane;
class Stage;

/// A page of the gallery: what it is about on a stage, live, with its settings beside it.
///
/// A page is built anew each time it is shown, and keeps no view of a stage beyond that; windows that it opens are its
/// own, and go when it is left.
class GalleryPage : public QObject {
public:
    /// `name` is what pictures of the page are called by, `title` what the list says, `text` a line about it, and
    /// `subjects` are the classes and headers of the kit that it shows.
    GalleryPage(QString name, QString title, QString text, QStringList subjects);
    ~GalleryPage() override;

    [[nodiscard]] const QString& name() const { return m_name; }
    [[nodiscard]] const QString& title() const { return m_title; }
    [[nodiscard]] const QString& text() const { return m_text; }
    [[nodiscard]] const QStringList& subjects() const { return m_subjects; }

    virtual void build(Stage& stage, SettingsPane& settings) = 0;
    /// The stage and the settings are about to go. Here: nothing.
    virtual void leave();
    /// Adds what the page is about, in each of its states, to `book`. The page is shown meanwhile. Here: nothing.
    virtual void takePictures(PictureBook& book);

private:
    QString m_name;
    QString m_title;
    QString m_text;
    QStringList m_subjects;
};

/// All pages, in the order of the list.
[[nodiscard]] std::vector<std::unique_ptr<GalleryPage>> makeGalleryPages();
