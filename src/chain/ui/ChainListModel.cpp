#include "chain/ui/ChainListModel.h"

namespace quillon {

ChainListModel::ChainListModel(const RecordList* chain, QObject* parent)
    : RecordTableModel(parent)
    , m_chain(chain)
{
    resetRows();
}

int ChainListModel::numberOfRowsInTableView() const
{
    return static_cast<int>(m_chain->size());
}

QVariant ChainListModel::objectValueForTableColumn(int column, int row) const
{
    if (column != filterColumn || row < 0 || row >= numberOfRowsInTableView())
        return {};
    const RecordPtr& record = (*m_chain)[static_cast<size_t>(row)];
    return record ? record->string(key::name) : QString();
}

int ChainListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ChainListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || !isLiveRow(index.row()))
        return {};
    const QVariant name = objectValueForTableColumn(index.column(), index.row());
    switch (role) {
    case Qt::DisplayRole:
        return QStringLiteral("%1. %2").arg(index.row() + 1).arg(name.toString());
    case Qt::ToolTipRole: {
        const RecordPtr& record = (*m_chain)[static_cast<size_t>(index.row())];
        return record ? record->string(key::path) : QString();
    }
    default:
        return {};
    }
}

QVariant ChainListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role == Qt::DisplayRole && orientation == Qt::Horizontal && section == filterColumn)
        return tr("Filter chain (runs top to bottom)");
    return RecordTableModel::headerData(section, orientation, role);
}

LibraryListModel::LibraryListModel(const std::optional<RecordList>* library, QObject* parent)
    : RecordTableModel(parent)
    , m_library(library)
{
    resetRows();
}

int LibraryListModel::numberOfRowsInTableView() const
{
    return m_library->has_value() ? static_cast<int>((*m_library)->size()) : 0;
}

QVariant LibraryListModel::objectValueForTableColumn(int column, int row) const
{
    if (row < 0 || row >= numberOfRowsInTableView())
        return {};
    const RecordPtr& record = (**m_library)[static_cast<size_t>(row)];
    if (!record)
        return {};
    switch (column) {
    case adsFilterNameColumn:
        return record->string(key::name);
    case addFilterAuthorColumn:
        return record->string(key::author);
    default:
        return {};
    }
}

int LibraryListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant LibraryListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || !isLiveRow(index.row()) || role != Qt::DisplayRole)
        return {};
    return objectValueForTableColumn(index.column(), index.row());
}

QVariant LibraryListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role == Qt::DisplayRole && orientation == Qt::Horizontal) {
        if (section == adsFilterNameColumn)
            return tr("Name");
        if (section == addFilterAuthorColumn)
            return tr("Author");
    }
    return RecordTableModel::headerData(section, orientation, role);
}

} // namespace quillon
