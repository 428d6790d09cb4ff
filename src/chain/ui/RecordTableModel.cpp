#include "chain/ui/RecordTableModel.h"

namespace quillon {

int RecordTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_rows;
}

void RecordTableModel::reload()
{
    const int rows = numberOfRowsInTableView();
    if (rows > m_rows) {
        beginInsertRows({}, m_rows, rows - 1);
        m_rows = rows;
        endInsertRows();
    } else if (rows < m_rows) {
        beginRemoveRows({}, rows, m_rows - 1);
        m_rows = rows;
        endRemoveRows();
    }
    if (m_rows > 0 && columnCount() > 0)
        Q_EMIT dataChanged(index(0, 0), index(m_rows - 1, columnCount() - 1));
}

void RecordTableModel::resetRows()
{
    beginResetModel();
    m_rows = numberOfRowsInTableView();
    endResetModel();
}

} // namespace quillon
