#include "batch/BatchController.h"
#include "batch/RunPlanner.h"
#include "support/StepFixture.h"

#include <QMap>

using namespace quillon;
using namespace quillon::steptest;

namespace {

constexpr quint64 kSeed = 20261123;

// The files of every tool run (control file and run files by path), in the
// order the run writes them.
using Written = QList<QMap<QString, QByteArray>>;

class PlanBothWays : public StepTest {
protected:
    // Writes the task files of every tool run of `chain` over `inputs`, step
    // after step as a run does, with names and values from `plan` or, without
    // one, worked out by the writers as they go.
    Written writeRun(const RecordList& chain, const QStringList& inputs, const RunPlan* plan)
    {
        Written written;
        RunRandom random(kSeed);
        QStringList names;
        for (const QString& input : inputs)
            names.append(BatchController::inputBaseName(input));
        QStringList stepInputs = inputs;
        qsizetype next = 0;
        for (size_t i = 0; i < chain.size(); ++i) {
            auto step = makeStep(chain[i], i == 0, i + 1 == chain.size(), static_cast<qint64>(i), stepInputs, names);
            step->randomDraw = random.drawFunction();
            for (qsizetype j = 0; j < stepInputs.size(); ++j) {
                step->plannedRun = plan ? &plan->toolRuns.at(next++) : nullptr;
                const QString control = step->createBatchFileWithFilepath(stepInputs[j], names.value(j));
                EXPECT_FALSE(control.isEmpty());
                QMap<QString, QByteArray> files;
                for (const QString& path : step->filesToRemove)
                    files.insert(path, fileBytes(path));
                written.append(files);
            }
            stepInputs = step->outFiles;
            if (i == 0)
                names = step->realFileNames;
        }
        return written;
    }

    // A record's values as the run leaves them.
    static QStringList startValues(const RecordList& chain)
    {
        QStringList values;
        for (const RecordPtr& filter : chain)
            for (const RecordPtr& p : *filter->list(key::Components))
                values.append(p->value(key::STARTVALUE).toString());
        return values;
    }
};

} // namespace

// Sweeps, toggles and random values over three steps (the first and last
// share one record) and two inputs, and maps over one step: the files the
// tool receives are the same whether the writers take the plan's names and
// values or work them out as they go, and so are the values left in the
// records.
TEST_F(PlanBothWays, TheToolReceivesTheSameFilesWithAndWithoutThePlan)
{
    host.prefix = host.settings.outputPrefix = QStringLiteral("p_");
    host.settings.outputPath = outDir;
    host.settings.frameCountText = QStringLiteral("3");
    activate(*filter, QStringLiteral("glow_amount"), 1);
    activate(*filter, QStringLiteral("radius"), 0);
    activate(*filter, kVariationsId, 0);
    RecordPtr second = copyChain({ filter }).front();
    activate(*second, QStringLiteral("angle"), 0);
    activate(*second, QStringLiteral("invert"), 1);
    const QStringList inputs { inDir + QStringLiteral("/stone.png"), inDir + QStringLiteral("/moss.jpg") };

    struct Case {
        const char* name;
        RecordList chain;
        bool maps;
    };
    for (const Case& c : { Case { "three steps", { filter, second, filter }, false },
             Case { "maps", { second }, true } }) {
        SCOPED_TRACE(c.name);
        host.settings.activateMaps = c.maps ? 1 : 0;
        host.settings.mapBoxes = { 1, 1, 0, 0, 1, 0, 0, 0, 0, 0 };
        RunSettings settings = host.settings;
        settings.seed = kSeed;
        const RunPlan plan = planRun(c.chain, settings, inputs, kSeed);

        const RecordList planned = copyChain(c.chain);
        const RecordList unplanned = copyChain(c.chain);
        for (const RecordList* chain : { &planned, &unplanned })
            for (const RecordPtr& step : *chain)
                applyMapChoice(*step, settings, c.maps);
        const Written withPlan = writeRun(planned, inputs, &plan);
        const Written withoutPlan = writeRun(unplanned, inputs, nullptr);
        ASSERT_EQ(withPlan.size(), plan.toolRuns.size());
        EXPECT_EQ(withPlan, withoutPlan);
        EXPECT_EQ(startValues(planned), startValues(unplanned));
    }
}
