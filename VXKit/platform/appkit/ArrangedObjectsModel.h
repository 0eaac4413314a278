// SPDX-License-Identifier: MIT
// Private to NSTableView.
#pragma once

#include <VXKit/platform/appkit/NSArrayController.h>
#include <VXKit/platform/appkit/NSTableView.h>
#include <VXKit/platform/foundation/NSPropertyList.h>

#include <QAbstractTableModel>
#include <QPointer>
#include <QString>
#include <QVariant>

#include <string>
#include <vector>

/// The rows of a data source, as Qt's views want them. Belongs to its table.
class NSTableView::ArrangedObjectsModel : public QAbstractTableModel {
public:
    explicit ArrangedObjectsModel(NSTableView& table) : QAbstractTableModel(&table), m_table(table) {}

    /// Borrowed; null takes it away.
    void setSource(NSArrayController* source);

    void addColumn(const QString& identifier, const QString& title);

    [[nodiscard]] const std::string& identifier(int column) const {
        return m_columns[static_cast<std::size_t>(column)].identifier;
    }

    /// What the object of a row has under the identifier of a column; null where that is nothing.
    [[nodiscard]] const NSPropertyList* value(const QModelIndex& index) const;

    int rowCount(const QModelIndex& parent) const override;
    int columnCount(const QModelIndex& parent) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    /// Of a check box, by whom Qt's accessibility asks, too.
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    void sort(int column, Qt::SortOrder order) override;

private:
    struct Column {
        std::string identifier;
        QString title;
    };

    void takeOrder(const std::vector<int>& order);

    NSTableView& m_table;
    QPointer<NSArrayController> m_source;
    std::vector<Column> m_columns;
};
