// A planned tool run's tasks: their names, made from the run's naming when
// asked for, and their values, kept as flat cells of the run.

#include "run/RunPlan.h"

#include <algorithm>

namespace quillon {

namespace {

PlannedValue cellFor(const ParameterValue& value, QVariantList& others)
{
    PlannedValue cell;
    cell.parameter = static_cast<qint32>(value.index);
    if (value.value.typeId() == QMetaType::Double) {
        cell.kind = PlannedValue::Real;
        cell.real = value.value.toDouble();
    } else if (value.value.typeId() == QMetaType::LongLong) {
        cell.kind = PlannedValue::Integer;
        cell.integer = value.value.toLongLong();
    } else {
        cell.kind = PlannedValue::Other;
        cell.integer = others.size();
        others.append(value.value);
    }
    return cell;
}

bool sameCell(const PlannedValue& a, const PlannedValue& b)
{
    return a.parameter == b.parameter && a.kind == b.kind && a.integer == b.integer;
}

} // namespace

QString frameSuffix(FrameStyle style, qint64 index)
{
    switch (style) {
    case FrameStyle::Plain:
        return QLatin1Char('-') + QString::number(index + 1);
    case FrameStyle::FourDigit:
        return QString::asprintf("-%04lld", static_cast<long long>(index + 1));
    case FrameStyle::Letter: {
        const qint64 code = 97 + index;
        const bool valid = code >= 0 && code <= 0x10FFFF && !(code >= 0xD800 && code <= 0xDFFF);
        if (!valid) // past the last character: fall back to the plain number
            return QLatin1Char('-') + QString::number(index + 1);
        const char32_t character = static_cast<char32_t>(code);
        return QLatin1Char('-') + QString::fromUcs4(&character, 1);
    }
    default:
        return {};
    }
}

QString mapSuffix(qint64 mapKind)
{
    switch (mapKind) {
    case 1:
        return QStringLiteral("_alpha");
    case 2:
        return QStringLiteral("_diffuse");
    case 3:
        return QStringLiteral("_bump");
    case 4:
        return QStringLiteral("_normal");
    case 5:
        return QStringLiteral("_specstr");
    case 6:
        return QStringLiteral("_specexp");
    case 7:
        return QStringLiteral("_ao");
    case 8:
        return QStringLiteral("_ro");
    case 9:
        return QStringLiteral("_metallic");
    default:
        return QStringLiteral("_base");
    }
}

void PlannedToolRun::appendTask(PlannedTask task, const ParameterValues& values)
{
    task.valueStart = static_cast<quint32>(valueCells.size());
    task.valueCount = 0;
    if (task.carriesValues && !values.isEmpty()) {
        for (const ParameterValue& value : values)
            valueCells.append(cellFor(value, otherValues));
        task.valueCount = static_cast<quint32>(values.size());
        // Values that did not change since the task before share its cells.
        for (auto it = tasks.crbegin(); it != tasks.crend(); ++it) {
            if (!it->carriesValues)
                continue;
            const auto begin = valueCells.cbegin();
            if (it->valueCount == task.valueCount
                && std::equal(begin + it->valueStart, begin + it->valueStart + it->valueCount,
                    begin + task.valueStart, sameCell)) {
                valueCells.resize(task.valueStart);
                task.valueStart = it->valueStart;
            }
            break;
        }
    }
    tasks.append(task);
}

QString PlannedToolRun::resultPath(qsizetype t) const
{
    if (!givenPaths.isEmpty())
        return givenPaths.value(t);
    const PlannedTask& task = tasks.at(t);
    QString path = naming.head;
    if (naming.numbered)
        path += frameSuffix(naming.style, task.index);
    if (task.map >= 0)
        path += mapSuffix(task.map);
    return path + naming.extension;
}

ParameterValues PlannedToolRun::values(qsizetype t) const
{
    ParameterValues result;
    const PlannedTask& task = tasks.at(t);
    if (!task.carriesValues)
        return result;
    result.reserve(task.valueCount);
    for (quint32 i = task.valueStart; i < task.valueStart + task.valueCount; ++i) {
        const PlannedValue& cell = valueCells.at(i);
        switch (cell.kind) {
        case PlannedValue::Real:
            result.append({ cell.parameter, QVariant::fromValue<double>(cell.real) });
            break;
        case PlannedValue::Integer:
            result.append({ cell.parameter, QVariant::fromValue<qint64>(cell.integer) });
            break;
        case PlannedValue::Other:
            result.append({ cell.parameter, otherValues.value(cell.integer) });
            break;
        }
    }
    return result;
}

ParameterValues PlannedToolRun::madeWith(qsizetype t) const
{
    for (qsizetype i = t; i >= 0; --i) {
        if (tasks.at(i).carriesValues)
            return values(i);
    }
    return {};
}

bool PlannedToolRun::hasWork() const
{
    // A tool run without any task still starts the tool: its control file
    // holds only the global settings.
    return tasks.isEmpty()
        || std::any_of(tasks.cbegin(), tasks.cend(), [](const PlannedTask& task) { return !task.skipped; });
}

} // namespace quillon
