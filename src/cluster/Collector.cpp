#include "cluster/Collector.h"

#include "batch/RunJournal.h"
#include "batch/RunReport.h"
#include "cluster/ClusterBundle.h"
#include "cluster/ElementPlan.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>

#include <algorithm>
#include <limits>

namespace quillon {

namespace {

const QString kNotRun = QStringLiteral("not run");

// The plan's shape (steps, inputs, result paths) from its JSON: enough to
// tell the elements apart.
RunPlan planShape(const QJsonObject& json)
{
    RunPlan plan;
    plan.steps = json.value(QStringLiteral("steps")).toInt();
    for (const QJsonValue& value : json.value(QStringLiteral("toolRuns")).toArray()) {
        const QJsonObject object = value.toObject();
        PlannedToolRun run;
        run.step = object.value(QStringLiteral("step")).toInt();
        run.input = object.value(QStringLiteral("input")).toString();
        for (const QJsonValue& task : object.value(QStringLiteral("tasks")).toArray()) {
            PlannedTask planned;
            planned.skipped = task.toObject().value(QStringLiteral("skipped")).toBool();
            run.givenPaths.append(task.toObject().value(QStringLiteral("result")).toString());
            run.appendTask(planned);
        }
        plan.toolRuns.append(run);
    }
    return plan;
}

QString elementStatus(const QJsonObject& part)
{
    if (part.isEmpty())
        return kNotRun;
    switch (part.value(QStringLiteral("exitCode")).toInt(-1)) {
    case 0:
        return QStringLiteral("done");
    case 2:
        return QStringLiteral("refused");
    case 3:
        return QStringLiteral("incomplete");
    default:
        return QStringLiteral("aborted");
    }
}

QJsonObject readPart(const QString& path, QStringList* problems)
{
    QFile file(path);
    if (!file.exists())
        return {};
    if (!file.open(QIODevice::ReadOnly)) {
        problems->append(QStringLiteral("cannot read %1: %2").arg(path, file.errorString()));
        return {};
    }
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    if (!document.isObject())
        problems->append(QStringLiteral("%1 is damaged").arg(path));
    return document.object();
}

} // namespace

QString CollectOutcome::line() const
{
    const qint64 seconds = elapsedMs / 1000;
    return QStringLiteral("%1 written, %2 missing, %3 not run in %4:%5 -> %6")
        .arg(written)
        .arg(missing)
        .arg(notRun)
        .arg(seconds / 60)
        .arg(seconds % 60, 2, 10, QLatin1Char('0'))
        .arg(outputPath);
}

bool collectClusterParts(const QString& bundleDirectory, CollectOutcome* outcome, QString* error)
{
    ClusterBundle bundle;
    if (!loadClusterBundle(bundleDirectory, &bundle, error))
        return false;
    CollectOutcome result;
    result.outputPath = bundle.settings.outputPath;
    const RunPlan shape = planShape(bundle.plan);
    const QList<QList<qsizetype>> elements = elementToolRuns(shape);
    // An element that ended cleanly leaves nothing in .quillon/: only the
    // elements named there (a lock, a journal, a job folder) are looked at.
    const QDir state(QDir(result.outputPath).filePath(RunJournal::kFolderName));
    const QStringList stateEntries = state.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    QSet<int> leftBehind;
    for (const QString& entry : stateEntries) {
        bool number = false;
        const int element = entry.section(QLatin1Char('-'), 1).section(QLatin1Char('.'), 0, 0).toInt(&number);
        if (number)
            leftBehind.insert(element);
    }

    QHash<QString, QString> statuses;
    QHash<qsizetype, ToolRunOutcome> ends;
    QJsonArray elementList;
    bool aborted = false;
    qint64 firstStart = std::numeric_limits<qint64>::max();
    qint64 lastEnd = 0;
    for (qsizetype k = 0; k < elements.size(); ++k) {
        const int element = static_cast<int>(k);
        const QJsonObject part = readPart(bundle.partReportPath(element), &result.problems);
        const QJsonObject outputs = part.value(QStringLiteral("outputs")).toObject();
        for (auto it = outputs.constBegin(); it != outputs.constEnd(); ++it)
            statuses.insert(it.key(), it.value().toString());
        for (const QJsonValue& run : part.value(QStringLiteral("toolRuns")).toArray()) {
            const qsizetype index = run.toObject().value(QStringLiteral("index")).toInteger(-1);
            if (elements.at(k).contains(index))
                ends.insert(index, toolRunOutcomeFromJson(run.toObject()));
        }
        if (!part.isEmpty()) {
            firstStart = std::min(firstStart, part.value(QStringLiteral("startedMs")).toInteger());
            lastEnd = std::max(lastEnd, part.value(QStringLiteral("endedMs")).toInteger());
            aborted = aborted || part.value(QStringLiteral("aborted")).toBool();
        }

        // What a killed element left, by its journal; a held lock is an
        // element still running (or on a node that went down).
        RunJournal journal;
        if (leftBehind.contains(element)
            && journal.beginPart(result.outputPath, element, &result.deleted) == RunJournal::Begin::Busy)
            result.problems.append(
                QStringLiteral("element %1 still holds %2/part-%1.lock in the output directory; "
                               "its files are left as they are")
                    .arg(element)
                    .arg(RunJournal::kFolderName));
        journal.end();

        const QString input = shape.toolRuns.value(elements.at(k).value(0)).input;
        const QString status = elementStatus(part);
        if (status != QLatin1String("done") && status != QLatin1String("incomplete"))
            ++result.unfinishedElements;
        if (status != QLatin1String("done")) {
            QString why = part.value(QStringLiteral("problem")).toString();
            if (part.isEmpty())
                why = QStringLiteral("no report part; see %1/%2/part-%3.out")
                          .arg(bundle.directory, bundle::kLogs)
                          .arg(element);
            result.problems.append(
                QStringLiteral("element %1 (%2): %3%4")
                    .arg(element)
                    .arg(input.isEmpty() ? QStringLiteral("no input") : QFileInfo(input).fileName(), status,
                        why.isEmpty() ? QString() : QStringLiteral(": ") + why));
        }
        elementList.append(QJsonObject { { QStringLiteral("element"), element },
            { QStringLiteral("input"), input }, { QStringLiteral("status"), status },
            { QStringLiteral("host"), part.value(QStringLiteral("host")) },
            { QStringLiteral("exitCode"), part.value(QStringLiteral("exitCode")) } });
    }

    // The plan with what became of each output and each tool run; a tool run
    // no element reported never started.
    QList<ToolRunOutcome> outcomes;
    for (qsizetype r = 0; r < shape.toolRuns.size(); ++r)
        outcomes.append(ends.value(r));
    QHash<QString, QString> interim;
    addInterimStatuses(shape, outcomes, &interim);
    QJsonArray runs = bundle.plan.value(QStringLiteral("toolRuns")).toArray();
    for (qsizetype r = 0; r < runs.size(); ++r) {
        QJsonObject run = runs.at(r).toObject();
        insertToolRunOutcome(run, outcomes.value(r));
        const bool last = run.value(QStringLiteral("step")).toInt() == shape.steps - 1;
        QJsonArray tasks = run.value(QStringLiteral("tasks")).toArray();
        for (qsizetype t = 0; t < tasks.size(); ++t) {
            QJsonObject task = tasks.at(t).toObject();
            const QString path = task.value(QStringLiteral("result")).toString();
            QString status = (last ? statuses : interim).value(path, kNotRun);
            if (task.value(QStringLiteral("skipped")).toBool())
                status = kNotRun;
            if (last) {
                result.written += status == QLatin1String("written") ? 1 : 0;
                result.missing += status == QLatin1String("missing") ? 1 : 0;
                result.notRun += status == kNotRun ? 1 : 0;
            }
            task.insert(QStringLiteral("status"), status);
            tasks[t] = task;
        }
        run.insert(QStringLiteral("tasks"), tasks);
        runs[r] = run;
    }
    QJsonObject plan = bundle.plan;
    plan.insert(QStringLiteral("toolRuns"), runs);
    result.failedToolRuns = failedToolRuns(ends.values());
    result.elapsedMs = lastEnd > firstStart ? lastEnd - firstStart : 0;

    const QJsonObject root { { QStringLiteral("schema"), QStringLiteral("quillon-report/1") },
        { QStringLiteral("written"), result.written }, { QStringLiteral("missing"), result.missing },
        { QStringLiteral("notRun"), result.notRun },
        { QStringLiteral("failedToolRuns"), result.failedToolRuns }, { QStringLiteral("aborted"), aborted },
        { QStringLiteral("elapsedMs"), result.elapsedMs },
        { QStringLiteral("chain"), runReportChain(bundle.chain) },
        { QStringLiteral("settings"), runReportSettings(bundle.settings) }, { QStringLiteral("plan"), plan },
        { QStringLiteral("elements"), elementList } };
    result.report = QJsonDocument(root).toJson(QJsonDocument::Indented);
    if (!saveBundleFile(QDir(bundle.directory).filePath(bundle::kReport), result.report, error))
        return false;
    if (!bundle.reportFile.isEmpty() && !saveBundleFile(bundle.reportFile, result.report, error))
        return false;
    *outcome = std::move(result);
    return true;
}

} // namespace quillon
