// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QString>

#include <vector>

/// Many pictures on one, in rows under the titles of their sections, each with a caption below it. Large ones are made
/// smaller.
class ContactSheet {
public:
    void beginSection(const QString& title);
    /// What follows begins a row, where the last one has anything.
    void beginRow();
    void add(const QString& caption, const QImage& picture);

    [[nodiscard]] QImage picture() const;

private:
    struct Entry {
        QString caption;
        QImage picture;
        QSizeF size; // on the sheet, in points
    };
    struct Section {
        QString title;
        std::vector<std::vector<Entry>> rows;
    };
    struct Row;

    [[nodiscard]] std::vector<Row> rows() const;

    std::vector<Section> m_sections;
};
