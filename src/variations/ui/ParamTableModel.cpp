#include "variations/ui/ParamTableModel.h"

#include <QCoreApplication>

#include <cmath>
#include <cstdio>

namespace quillon {

QString rangeRealText(double value)
{
    if (!std::isfinite(value))
        return QString::number(value);
    char buffer[64];
    // glibc rounds exact halves to even, as a number formatter does.
    std::snprintf(buffer, sizeof buffer, "%.2f", value);
    QString text = QString::fromLatin1(buffer);
    while (text.endsWith(QLatin1Char('0')))
        text.chop(1);
    if (text.endsWith(QLatin1Char('.')))
        text.chop(1);
    if (text == QLatin1String("-0"))
        text = QStringLiteral("0");
    return text;
}

QString fieldRealText(double value)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.15g", value);
    QString text = QString::fromLatin1(buffer);
    if (std::isfinite(value) && !text.contains(QLatin1Char('.')) && !text.contains(QLatin1Char('e')))
        text += QStringLiteral(".0");
    return text;
}

QString paramNameText(const Record& param)
{
    const std::optional<controlType> kind = param.type();
    if (!kind)
        return {};
    return controlTypeTag(*kind) + param.string(key::CONTROL_NAME);
}

QString paramTypeText(const Record& param)
{
    const std::optional<controlType> kind = param.type();
    if (!kind || !param.contains(key::MINVALUE) || !param.contains(key::MAXVALUE))
        return {};
    QString prefix;
    if (param.integer(key::POPSTATE) == 0)
        prefix = QCoreApplication::translate("quillon::ParamTableModel", "[Random] ");
    else if (*kind == controlType::kTypeCheckbox)
        prefix = QCoreApplication::translate("quillon::ParamTableModel", "[Toggle] ");
    else
        prefix = QCoreApplication::translate("quillon::ParamTableModel", "[Sweep] ");
    const auto bound = [&](const QString& key) {
        return isRealKind(*kind) ? rangeRealText(param.real(key)) : QString::number(param.integer(key));
    };
    return prefix + bound(key::MINVALUE) + QStringLiteral(" - ") + bound(key::MAXVALUE);
}

ParamTableModel::ParamTableModel(QObject* parent)
    : QAbstractTableModel(parent)
{
}

void ParamTableModel::setParams(RecordListPtr params)
{
    beginResetModel();
    m_params = std::move(params);
    endResetModel();
}

void ParamTableModel::refreshRow(int row)
{
    if (row >= 0 && row < rowCount())
        Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

int ParamTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() || !m_params ? 0 : static_cast<int>(m_params->size());
}

RecordPtr ParamTableModel::recordAt(int row) const
{
    if (row < 0 || row >= rowCount())
        return nullptr;
    return (*m_params)[static_cast<size_t>(row)];
}

QVariant ParamTableModel::objectValueForTableColumn(int column, int row) const
{
    const RecordPtr param = recordAt(row);
    if (!param)
        return {};
    switch (column) {
    case filterParamActiveColumn:
        return param->contains(key::ACTIVE) ? QVariant(param->integer(key::ACTIVE)) : QVariant();
    case filterParamNameColumn:
        return paramNameText(*param);
    case filterParamTypeColumn:
        return paramTypeText(*param);
    default:
        return {};
    }
}

bool ParamTableModel::setObjectValue(const QVariant& value, int column, int row)
{
    const RecordPtr param = recordAt(row);
    if (!param || column != filterParamActiveColumn)
        return false;
    // The view sends Qt::Checked; a data-source caller may send 1 (on).
    const int state = value.toInt();
    const bool ticked = state == Qt::Checked || state == 1;
    param->setInteger(key::ACTIVE, ticked ? 1 : 0);
    Q_EMIT dataChanged(index(row, filterParamActiveColumn), index(row, ColumnCount - 1));
    Q_EMIT activeEdited(row);
    return true;
}

int ParamTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ParamTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || !checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    if (index.column() == filterParamActiveColumn) {
        // A screen reader names each box after its parameter.
        if (role == Qt::AccessibleTextRole || role == Qt::ToolTipRole) {
            return tr("Active: %1")
                .arg(objectValueForTableColumn(filterParamNameColumn, index.row()).toString().trimmed());
        }
        if (role != Qt::CheckStateRole)
            return {};
        return objectValueForTableColumn(index.column(), index.row()).toLongLong() == 1 ? Qt::Checked
                                                                                        : Qt::Unchecked;
    }
    if (role != Qt::DisplayRole)
        return {};
    return objectValueForTableColumn(index.column(), index.row());
}

bool ParamTableModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || role != Qt::CheckStateRole || !checkIndex(index, CheckIndexOption::IndexIsValid))
        return false;
    return setObjectValue(value, index.column(), index.row());
}

Qt::ItemFlags ParamTableModel::flags(const QModelIndex& index) const
{
    Qt::ItemFlags result = QAbstractTableModel::flags(index);
    if (index.isValid() && index.column() == filterParamActiveColumn)
        result |= Qt::ItemIsUserCheckable;
    return result;
}

QVariant ParamTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role == Qt::DisplayRole && orientation == Qt::Horizontal) {
        switch (section) {
        case filterParamActiveColumn:
            return tr("Active");
        case filterParamNameColumn:
            return tr("Parameter");
        case filterParamTypeColumn:
            return tr("Variation");
        default:
            break;
        }
    }
    return QAbstractTableModel::headerData(section, orientation, role);
}

} // namespace quillon
