#include "chain/ui/ChainListModel.h"

namespace quillon {

ChainListModel::ChainListModel(QObject* parent)
    : QAbstractTableModel(parent)
{
}

void ChainListModel::setRecords(RecordList chain)
{
    beginResetModel();
    m_chain = std::move(chain);
    endResetModel();
    Q_EMIT chainChanged();
}

void ChainListModel::append(const RecordList& records)
{
    if (records.empty())
        return;
    const int first = rowCount();
    beginInsertRows({}, first, first + static_cast<int>(records.size()) - 1);
    m_chain.insert(m_chain.end(), records.begin(), records.end());
    endInsertRows();
    Q_EMIT chainChanged();
}

void ChainListModel::removeRecord(int row)
{
    if (row < 0 || row >= rowCount())
        return;
    beginRemoveRows({}, row, row);
    m_chain.erase(m_chain.begin() + row);
    endRemoveRows();
    renumberFrom(row);
    Q_EMIT chainChanged();
}

void ChainListModel::moveRecord(int row, int by)
{
    const int target = row + by;
    if (row < 0 || row >= rowCount() || target < 0 || target >= rowCount() || by == 0)
        return;
    // beginMoveRows names the row the moved one lands before.
    beginMoveRows({}, row, row, {}, by > 0 ? target + 1 : target);
    std::swap(m_chain[static_cast<size_t>(row)], m_chain[static_cast<size_t>(target)]);
    endMoveRows();
    renumberFrom(std::min(row, target));
    Q_EMIT chainChanged();
}

void ChainListModel::renumberFrom(int row)
{
    if (row < rowCount())
        Q_EMIT headerDataChanged(Qt::Vertical, row, rowCount() - 1);
}

int ChainListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_chain.size());
}

int ChainListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ChainListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const RecordPtr& record = m_chain[static_cast<size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
        return record ? record->string(key::name) : QString();
    case Qt::ToolTipRole:
        return record ? record->string(key::path) : QString();
    default:
        return {};
    }
}

QVariant ChainListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole)
        return {};
    if (orientation == Qt::Vertical)
        return QStringLiteral("%1.").arg(section + 1);
    return section == filterColumn ? tr("Filter chain (runs top to bottom)") : QVariant();
}

LibraryListModel::LibraryListModel(QObject* parent)
    : QAbstractTableModel(parent)
{
}

void LibraryListModel::setLibrary(RecordList library)
{
    beginResetModel();
    m_library = std::move(library);
    endResetModel();
}

RecordPtr LibraryListModel::recordAt(int row) const
{
    if (!m_library || row < 0 || row >= rowCount())
        return nullptr;
    return (*m_library)[static_cast<size_t>(row)];
}

int LibraryListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() || !m_library ? 0 : static_cast<int>(m_library->size());
}

int LibraryListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant LibraryListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid) || role != Qt::DisplayRole)
        return {};
    const RecordPtr record = recordAt(index.row());
    if (!record)
        return {};
    return index.column() == adsFilterNameColumn ? record->string(key::name) : record->string(key::author);
}

QVariant LibraryListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role == Qt::DisplayRole && orientation == Qt::Horizontal) {
        if (section == adsFilterNameColumn)
            return tr("Name");
        if (section == addFilterAuthorColumn)
            return tr("Author");
    }
    return QAbstractTableModel::headerData(section, orientation, role);
}

} // namespace quillon
