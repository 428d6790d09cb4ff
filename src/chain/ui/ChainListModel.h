#pragma once

#include "chain/ui/RecordTableModel.h"
#include "library/Record.h"

namespace quillon {

// The chain list: one row per chain position, numbered in run order
// ("1. Soft Glow"), so the order of the run reads from top to bottom.
class ChainListModel final : public RecordTableModel {
    Q_OBJECT
public:
    enum Column { filterColumn, ColumnCount };

    explicit ChainListModel(const RecordList* chain, QObject* parent = nullptr);

    int numberOfRowsInTableView() const override;
    // The cell's value: the record's "name".
    QVariant objectValueForTableColumn(int column, int row) const;

    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    const RecordList* m_chain;
};

// The add-filter list: the library in its own order, name and author.
class LibraryListModel final : public RecordTableModel {
    Q_OBJECT
public:
    enum Column { adsFilterNameColumn, addFilterAuthorColumn, ColumnCount };

    explicit LibraryListModel(const std::optional<RecordList>* library, QObject* parent = nullptr);

    // 0 while the library is absent.
    int numberOfRowsInTableView() const override;
    QVariant objectValueForTableColumn(int column, int row) const;

    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    const std::optional<RecordList>* m_library;
};

} // namespace quillon
