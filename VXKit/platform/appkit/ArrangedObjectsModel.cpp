// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/ArrangedObjectsModel.h>

void NSTableView::ArrangedObjectsModel::setSource(NSArrayController* source) {
    beginResetModel();
    if (m_source) {
        m_source->disconnect(this);
    }
    m_source = source;
    if (source) {
        connect(source, &NSArrayController::contentWillChange, this, [this] { beginResetModel(); });
        connect(source, &NSArrayController::contentDidChange, this, [this] { endResetModel(); });
        connect(source, &NSArrayController::orderWillChange, this, [this] { Q_EMIT layoutAboutToBeChanged(); });
        connect(source, &NSArrayController::orderDidChange, this,
                [this](const std::vector<int>& order) { takeOrder(order); });
        connect(source, &NSArrayController::valueDidChange, this, [this](int row) {
            if (row < rowCount({}) && !m_columns.empty()) {
                Q_EMIT dataChanged(index(row, 0), index(row, columnCount({}) - 1));
            }
        });
        connect(source, &QObject::destroyed, this, [this] {
            beginResetModel();
            endResetModel();
        });
    }
    endResetModel();
}

void NSTableView::ArrangedObjectsModel::addColumn(const QString& identifier, const QString& title) {
    const int place = columnCount({});
    beginInsertColumns({}, place, place);
    m_columns.push_back({identifier.toStdString(), title});
    endInsertColumns();
}

const NSPropertyList* NSTableView::ArrangedObjectsModel::value(const QModelIndex& index) const {
    const auto row = static_cast<std::size_t>(index.row());
    if (!m_source || index.row() < 0 || row >= m_source->arrangedObjects().size()) {
        return nullptr;
    }
    const auto* const object = m_source->arrangedObjects()[row].as<NSDictionary>();
    return object ? object->objectForKey(identifier(index.column())) : nullptr;
}

int NSTableView::ArrangedObjectsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() || !m_source ? 0 : static_cast<int>(m_source->arrangedObjects().size());
}

int NSTableView::ArrangedObjectsModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_columns.size());
}

QVariant NSTableView::ArrangedObjectsModel::data(const QModelIndex& index, int role) const {
    const NSPropertyList* const object = value(index);
    if (m_table.isOfButtonCell(index.column())) {
        return role == Qt::CheckStateRole ? QVariant(object && NSIntValue(*object) != 0 ? Qt::Checked : Qt::Unchecked)
                                          : QVariant();
    }
    return role == Qt::DisplayRole && object ? QVariant(object->description()) : QVariant();
}

Qt::ItemFlags NSTableView::ArrangedObjectsModel::flags(const QModelIndex& index) const {
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    return m_table.isOfButtonCell(index.column()) ? flags | Qt::ItemIsUserCheckable : flags;
}

bool NSTableView::ArrangedObjectsModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::CheckStateRole || !m_source || !index.isValid() || !m_table.isOfButtonCell(index.column())) {
        return false;
    }
    return m_source->setValue(value.toInt() == Qt::Unchecked ? 0 : 1, identifier(index.column()),
                              static_cast<std::size_t>(index.row()));
}

QVariant NSTableView::ArrangedObjectsModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation == Qt::Vertical || role != Qt::DisplayRole || section >= columnCount({})) {
        return QAbstractTableModel::headerData(section, orientation, role);
    }
    return m_columns[static_cast<std::size_t>(section)].title;
}

void NSTableView::ArrangedObjectsModel::sort(int column, Qt::SortOrder order) {
    if (m_source && column >= 0 && column < columnCount({})) {
        m_source->sort(identifier(column), order == Qt::AscendingOrder);
    }
}

void NSTableView::ArrangedObjectsModel::takeOrder(const std::vector<int>& order) {
    std::vector<int> now(order.size());
    for (std::size_t place = 0; place < order.size(); ++place) {
        now[static_cast<std::size_t>(order[place])] = static_cast<int>(place);
    }
    const QModelIndexList before = persistentIndexList();
    QModelIndexList after;
    for (const QModelIndex& each : before) {
        const auto row = static_cast<std::size_t>(each.row());
        after.append(row < now.size() ? index(now[row], each.column()) : QModelIndex());
    }
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged();
}
