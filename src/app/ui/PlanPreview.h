#pragma once

#include "run/RunPlan.h"

#include <QDialog>

class QTableWidget;

namespace quillon {

// A sheet listing a run's plan: one row per output with its name, input,
// step and parameter values, before anything is written or run.
class PlanPreview final : public QDialog {
    Q_OBJECT
public:
    PlanPreview(const RunPlan& plan, const QString& format, QWidget* parent);

    QTableWidget* table() const { return m_table; }

private:
    QTableWidget* m_table = nullptr;
};

} // namespace quillon
