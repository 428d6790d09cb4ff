#pragma once

#include "library/Record.h"

#include <QAbstractTableModel>

namespace quillon {

// The parameter rows of the selected chain filter: the very "Components"
// list of that record, so an edit here changes the chain.
class ParamTableModel final : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { filterParamActiveColumn, filterParamNameColumn, filterParamTypeColumn, ColumnCount };

    explicit ParamTableModel(QObject* parent = nullptr);

    // Shows another list (null: no rows).
    void setParams(RecordListPtr params);
    const RecordListPtr& params() const { return m_params; }

    // The row's texts changed (the editor stored new values).
    void refreshRow(int row);

    // Active: "ACTIVE" as an integer; name and type: their texts.
    QVariant objectValueForTableColumn(int column, int row) const;
    // Only the Active column takes edits: "ACTIVE" becomes 1 when the new
    // state is ticked (Qt::Checked or a true number), else 0.
    bool setObjectValue(const QVariant& value, int column, int row);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    // The user ticked or cleared the Active box of a row.
    void activeEdited(int row);

private:
    RecordPtr recordAt(int row) const;

    RecordListPtr m_params;
};

// "[Slider] Glow Amount": the kind tag and the name; empty without a kind.
QString paramNameText(const Record& param);
// "[Random] 0 - 360": the mode and the range; empty when a key is missing.
QString paramTypeText(const Record& param);
// A range bound of a real kind: at most two fraction digits, at least one
// integer digit (0.5, 360, 0).
QString rangeRealText(double value);
// A real in an editor field: %.15g, with ".0" when it reads as an integer.
QString fieldRealText(double value);

} // namespace quillon
