#include "support/StepFixture.h"

using namespace quillon;
using namespace quillon::steptest;

namespace {

class RunFile : public StepTest {
protected:
    // Writes task 0 (no input) and gives the preset part of its run file.
    QString presetOfOneTask(RandomDraw draw = {})
    {
        auto step = makeStep(filter, true, true, 0);
        if (draw)
            step->randomDraw = draw;
        pugi::xml_document doc;
        QString error;
        step->createTaskSettingFor(0, QString(), QString(), &error, doc.append_child("Tasks"));
        const QString tree = dumpFile(out(QStringLiteral("bth-run-0.ffxml")));
        return tree.mid(tree.indexOf(QStringLiteral("  Presets\n")));
    }
};

} // namespace

TEST_F(RunFile, InactiveOrUnknownParametersKeepThePresetValues)
{
    for (const RecordPtr& p : *filter->list(key::Components))
        p->setInteger(key::POPSTATE, 1);
    expectGolden("preset-default.txt", presetOfOneTask());
    EXPECT_EQ(parameter(*filter, QStringLiteral("radius"))->integer(key::STARTVALUE), 1);

    auto ghost = makeParameterRecord(controlType::kTypeSlider, QStringLiteral("no_such_control"));
    filter->list(key::Components)->insert(filter->list(key::Components)->begin(), ghost);
    activate(*filter, ghost->string(key::CONTROL_ID), 1);
    expectGolden("preset-default.txt", presetOfOneTask());
    EXPECT_DOUBLE_EQ(ghost->real(key::STARTVALUE), 0.5); // the rule still advanced it

    filter->remove(key::Components);
    expectGolden("preset-default.txt", presetOfOneTask());
}

TEST_F(RunFile, ActiveValuesAreWrittenAndRewrittenAttributesGoLast)
{
    host.settings.frameCountText = QStringLiteral("4");
    activate(*filter, QStringLiteral("glow_amount"), 1); // 0.25 steps
    activate(*filter, QStringLiteral("radius"), 1);
    const RecordPtr radius = parameter(*filter, QStringLiteral("radius"));
    radius->setInteger(key::MINVALUE, 3);
    radius->setInteger(key::MAXVALUE, 31); // d = 7
    radius->setInteger(key::STARTVALUE, 0);
    activate(*filter, QStringLiteral("angle"), 0);
    activate(*filter, QStringLiteral("invert"), 1);
    activate(*filter, kVariationsId, 1);
    int draws = 0;
    const QString tree = presetOfOneTask([&draws] {
        ++draws;
        return 500;
    });
    EXPECT_EQ(draws, 1);
    expectGolden("preset-active-values.txt", tree);
}

TEST_F(RunFile, ValuesAdvanceOncePerTaskAcrossInputFiles)
{
    host.settings.frameCountText = QStringLiteral("10");
    activate(*filter, QStringLiteral("glow_amount"), 1);
    auto step = makeStep(filter, true, true, 0);
    const auto glowIn = [this](int run) {
        return xpathValue(out(QStringLiteral("bth-run-%1.ffxml").arg(run)), "//SliderControl/Value/@value");
    };
    step->createBatchFileWithFilepath(inDir + QStringLiteral("/a.png"), QStringLiteral("a"));
    EXPECT_EQ(glowIn(9), QStringLiteral("1.000"));
    step->createBatchFileWithFilepath(inDir + QStringLiteral("/b.png"), QStringLiteral("b"));
    // 1.0 + 0.1 passes the top and starts again at 0.
    EXPECT_EQ(glowIn(0), QStringLiteral("0.000"));
    EXPECT_EQ(glowIn(3), QStringLiteral("0.300"));
}

TEST_F(RunFile, ABrokenDefinitionAbandonsTheControlFileAndKeepsTheRecordedNames)
{
    const QByteArray oneEmptyPreset
        = "<Filter><Presets><Preset><Settings/><Controls/></Preset></Presets></Filter>";
    const struct {
        QByteArray text; // null: no file
        int presetIndex;
        const char* reason; // part of the console line; empty when nothing is printed
    } cases[] = {
        { QByteArray(), 0, "" },
        { "<Filter><Presets><Preset></Filter", 0, "" },
        { "", 0, "" },
        { "<Filter><Components/></Filter>", 0, "Presets" },
        { oneEmptyPreset, 1, "index 1" },
        { oneEmptyPreset, -1, "index -1" },
        { "<Filter><Presets><Preset><Controls/></Preset></Presets></Filter>", 0, "Settings" },
        { "<Filter><Presets><Preset><Settings/></Preset></Presets></Filter>", 0, "Controls" },
    };
    activate(*filter, QStringLiteral("glow_amount"), 1);
    for (const auto& broken : cases) {
        SCOPED_TRACE(broken.text.isNull() ? "<missing>" : broken.text.toStdString());
        QFile::remove(definitionPath);
        if (!broken.text.isNull()) {
            ASSERT_TRUE(writeFileBytes(definitionPath, broken.text));
        }
        host.settings.presetIndex = broken.presetIndex;
        auto step = makeStep(filter, true, true, 0);
        step->filesToRemove = QStringList({ QStringLiteral("stale") });

        testing::internal::CaptureStdout();
        const QString control = step->createBatchFileWithFilepath(
            inDir + QStringLiteral("/stone.png"), QStringLiteral("stone"));
        const QString printed = QString::fromStdString(testing::internal::GetCapturedStdout());

        // No control file, nothing left in out/, the names recorded; the
        // parameters do not advance for a task that was not written.
        const QStringList left = QDir(outDir).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
        EXPECT_EQ((QStringList { control, left.join(' '), step->filesToRemove.join(' '),
                      step->outFiles.join(' '), step->realFileNames.join(' '),
                      parameter(*filter, QStringLiteral("glow_amount"))->value(key::STARTVALUE).toString() }),
            (QStringList { "", "", "", out(QStringLiteral("stone-0001.png")), "stone-0001.png", "0" }));
        EXPECT_EQ(printed.count(QLatin1Char('\n')), *broken.reason ? 1 : 0) << printed.toStdString();
        if (*broken.reason) {
            EXPECT_TRUE(printed.contains(definitionPath) && printed.contains(QLatin1String(broken.reason)))
                << printed.toStdString();
        }
    }
}

TEST_F(RunFile, AnUnwritableRunFileIsReportedAndTheTaskDropped)
{
    ASSERT_TRUE(QDir(outDir).mkdir(QStringLiteral("bth-run-1.ffxml")));
    auto step = makeStep(filter, true, true, 0);
    testing::internal::CaptureStdout();
    EXPECT_TRUE(step->createBatchFileNoFile().isEmpty());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "HILFE!! - Could not create runfile.\n");
    EXPECT_EQ(step->filesToRemove,
        QStringList({ out(QStringLiteral("bth-run-0.ffxml")), out(QStringLiteral("bth-run-1.ffxml")) }));
    EXPECT_EQ(step->outFiles.size(), 2);
    EXPECT_FALSE(QFile::exists(out(QStringLiteral("controlfile.xml"))));
}

TEST_F(RunFile, CommentsAndInstructionsOfTheDefinitionAreKept)
{
    QByteArray definition = fileBytes(definitionPath);
    definition.replace("<Filter>", "<?render-hint fast?>\n<!-- made by hand -->\n<Filter>");
    definition.replace("<Controls>", "<Controls><!-- tuned -->");
    ASSERT_TRUE(writeFileBytes(definitionPath, definition));
    activate(*filter, QStringLiteral("glow_amount"), 1);
    presetOfOneTask();
    const QByteArray runFile = fileBytes(out(QStringLiteral("bth-run-0.ffxml")));
    EXPECT_TRUE(runFile.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<?render-hint fast?>\n"
                                   "<!-- made by hand -->\n<Filter>"))
        << runFile.left(200).toStdString();
    EXPECT_EQ(runFile.count("<?xml "), 1);
    EXPECT_EQ(runFile.count("<!-- tuned -->"), 1);
}
