#pragma once

#include <QAbstractTableModel>

namespace quillon {

// A table over a list of records owned elsewhere. The list is changed by its
// owner, then reload() brings the view in line the way a table's reloadData
// does: rows appear or disappear at the end, every cell is refreshed, and
// the selection keeps its row numbers.
class RecordTableModel : public QAbstractTableModel {
    Q_OBJECT
public:
    using QAbstractTableModel::QAbstractTableModel;

    void reload();

    // The data-source question: how many rows the list has right now.
    virtual int numberOfRowsInTableView() const = 0;

    int rowCount(const QModelIndex& parent = {}) const override;

protected:
    // True when the row is one the view knows and the list still holds.
    bool isLiveRow(int row) const { return row >= 0 && row < m_rows && row < numberOfRowsInTableView(); }
    // For owners that swap the whole list: a full reset.
    void resetRows();

private:
    // The row count the view was last told about.
    int m_rows = 0;
};

} // namespace quillon
