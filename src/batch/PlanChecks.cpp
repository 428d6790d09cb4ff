#include "batch/PlanChecks.h"

#include "run/RunSettings.h"

#include <QFileInfo>

namespace quillon {

namespace {

bool exists(const QString& path)
{
    return QFileInfo(path).exists() || QFileInfo(path).isSymLink();
}

} // namespace

QString nameSome(const QStringList& paths)
{
    constexpr qsizetype kNamed = 5;
    QStringList names;
    for (qsizetype i = 0; i < paths.size() && i < kNamed; ++i)
        names.append(QFileInfo(paths.at(i)).fileName());
    QString text = names.join(QStringLiteral(", "));
    if (paths.size() > kNamed)
        text += QStringLiteral(" and %1 more").arg(paths.size() - kNamed);
    return text;
}

QString planRefusal(const RunPlan& plan)
{
    const QStringList collisions = plan.collisions();
    if (!collisions.isEmpty())
        return QStringLiteral("Outputs would overwrite each other: ") + collisions.join(QStringLiteral(", "));
    QStringList taken;
    for (const QString& path : plan.interimOutputs()) {
        if (exists(path))
            taken.append(path);
    }
    if (!taken.isEmpty()) {
        return QStringLiteral("The output directory holds files this run would overwrite and delete: %1. "
                              "Move them or choose another directory.")
            .arg(nameSome(taken));
    }
    return {};
}

QStringList existingFinalOutputs(const RunPlan& plan)
{
    QStringList found;
    for (const QString& path : plan.finalOutputs()) {
        if (exists(path))
            found.append(path);
    }
    return found;
}

QString outputInsideInputWarning(const RunSettings& settings)
{
    if (settings.inputMode != InputMode::Directory || settings.sourcePath.isEmpty())
        return {};
    const QString input = QFileInfo(settings.sourcePath).canonicalFilePath();
    const QString output = QFileInfo(settings.outputPath).canonicalFilePath();
    if (input.isEmpty() || output.isEmpty())
        return {};
    if (output != input && !output.startsWith(input + QLatin1Char('/')))
        return {};
    return QStringLiteral("The output directory is inside the input directory: the images this run makes "
                          "will be inputs of the next run.");
}

} // namespace quillon
