#include "app/ui/PlanPreview.h"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>
#include <QVBoxLayout>

namespace quillon {

namespace {

QString valuesText(const QStringList& names, const ParameterValues& values)
{
    QStringList parts;
    for (const auto& [index, value] : values) {
        if (index >= names.size())
            continue;
        parts.append(QStringLiteral("%1=%2").arg(names.at(index), plannedValueText(value)));
    }
    return parts.join(QStringLiteral(", "));
}

} // namespace

PlanPreview::PlanPreview(const RunPlan& plan, const QString& format, QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("planPreviewSheet"));
    setWindowTitle(tr("Preview Run"));
    setWindowModality(Qt::WindowModal);
    setAttribute(Qt::WA_DeleteOnClose);

    m_table = new QTableWidget(static_cast<int>(plan.outputCount()), 4, this);
    m_table->setObjectName(QStringLiteral("planPreviewTable"));
    m_table->setHorizontalHeaderLabels({ tr("Output"), tr("Input"), tr("Step"), tr("Values") });
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->horizontalHeader()->setStretchLastSection(true);
    int row = 0;
    for (const PlannedToolRun& run : plan.toolRuns) {
        ParameterValues values;
        for (qsizetype t = 0; t < run.tasks.size(); ++t) {
            if (run.tasks.at(t).carriesValues)
                values = run.values(t);
            const QString input = run.input.isEmpty() ? tr("<no source>") : QFileInfo(run.input).fileName();
            const QStringList cells { QFileInfo(run.resultPath(t)).fileName(), input,
                QString::number(run.step + 1), valuesText(plan.stepParameters.value(run.step), values) };
            for (int column = 0; column < cells.size(); ++column)
                m_table->setItem(row, column, new QTableWidgetItem(cells.at(column)));
            ++row;
        }
    }
    m_table->resizeColumnsToContents();

    auto* summary = new QLabel(tr("%1 tool runs, %2 outputs. Output format: %3")
                                   .arg(plan.toolRunCount())
                                   .arg(plan.outputCount())
                                   .arg(format),
        this);
    summary->setObjectName(QStringLiteral("planPreviewSummary"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_table);
    layout->addWidget(summary);
    layout->addWidget(buttons);
    resize(760, 420);
}

} // namespace quillon
