#pragma once

#include "library/Record.h"

#include <QWidget>

class QComboBox;
class QGroupBox;
class QTabWidget;
class QTableView;

namespace quillon {

class ParamTableModel;
class RangeEditor;

// The parameter rows of the selected chain filter (`filterParamList`) and,
// for the selected active row, the editor group (`filterParamGroup`) with one
// page per kind: check box mode, integer range, real range (sliders and
// angles), variation number range. Every edit lands in the row's record.
class ParameterEditor final : public QWidget {
    Q_OBJECT
public:
    explicit ParameterEditor(QWidget* parent = nullptr);

    // Shows another list of rows (null: none) and hides the editor group.
    void setParams(RecordListPtr params);
    const RecordListPtr& params() const { return fp_ParamsArray; }

    QTableView* table() const { return m_table; }
    // Holds the row at one value: active, sweep mode, from, to and start
    // value all `value` (what a test strip's choice does).
    void holdRowAt(int row, const QVariant& value);
    ParamTableModel* model() const { return m_model; }

Q_SIGNALS:
    // "Test Strip…" on the selected row.
    void testStripRequested(int row);

public Q_SLOTS:
    // Refreshes the editor group for the selected row: hidden unless the row
    // is active, otherwise filled from the record.
    void filterParamListClick();
    // Stores the editor's values into the selected row (restarting its
    // sequence at from).
    void updateFilterValuesWithSender(QObject* sender = nullptr);
    void reallyUpdateFilterValues();

private:
    int selectedRow() const;
    RecordPtr selectedParamRecord() const;

    RecordListPtr fp_ParamsArray;
    ParamTableModel* m_model = nullptr;
    QTableView* m_table = nullptr;
    QGroupBox* m_group = nullptr;
    QTabWidget* m_pages = nullptr;
    QComboBox* m_checkboxMode = nullptr;
    RangeEditor* m_intRange = nullptr;
    RangeEditor* m_realRange = nullptr;
    RangeEditor* m_variationRange = nullptr;
};

} // namespace quillon
