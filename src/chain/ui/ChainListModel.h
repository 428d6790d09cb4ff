#pragma once

#include "library/Record.h"

#include <QAbstractTableModel>

#include <optional>

namespace quillon {

// The chain list: owns the chain, one row per position with the filter's
// name; the row headers number the positions in run order ("1."), so the
// order of the run reads from top to bottom.
class ChainListModel final : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { filterColumn, ColumnCount };

    explicit ChainListModel(QObject* parent = nullptr);

    const RecordList& records() const { return m_chain; }
    // Replaces the whole chain (a chain file was opened).
    void setRecords(RecordList chain);
    void append(const RecordList& records);
    void removeRecord(int row);
    // Moves the record at `row` one place up (-1) or down (+1).
    void moveRecord(int row, int by);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    // Any change of the chain's content or order.
    void chainChanged();

private:
    // The numbers shown from `row` on follow a change above them.
    void renumberFrom(int row);

    RecordList m_chain;
};

// The add-filter list: owns the library, in its own order, name and author.
// No rows while the library is absent (not scanned yet).
class LibraryListModel final : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { adsFilterNameColumn, addFilterAuthorColumn, ColumnCount };

    explicit LibraryListModel(QObject* parent = nullptr);

    const std::optional<RecordList>& library() const { return m_library; }
    void setLibrary(RecordList library);
    RecordPtr recordAt(int row) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    std::optional<RecordList> m_library;
};

} // namespace quillon
