#include "StepFixtures.h"

#include <QDir>

using namespace quillon;
using namespace quillon::steptest;

namespace {

class RunFile : public StepTest {
protected:
    void activate(const QString& id, qint64 mode)
    {
        auto p = parameter(*filter, id);
        p->setInteger(key::ACTIVE, 1);
        p->setInteger(key::POPSTATE, mode);
    }

    // The preset part of run file `index`, as a readable tree.
    QString presetTree(int index = 0) const
    {
        const QString tree = dumpFile(out(QStringLiteral("bth-run-%1.ffxml").arg(index)));
        return tree.mid(tree.indexOf(QStringLiteral("  Presets\n")));
    }

    // Writes one task (task index 0, no input) into a fresh control document.
    QString writeOneTask(filterProcessObject& step, QString* error)
    {
        pugi::xml_document doc;
        pugi::xml_node tasks = doc.append_child("Tasks");
        const pugi::xml_node task = step.createTaskSettingFor(0, QString(), QString(), error, tasks);
        EXPECT_EQ(static_cast<bool>(task), !tasks.first_child().empty());
        return dumpTree(doc);
    }
};

const QString kDefaultPresetUnchanged
    = QStringLiteral("  Presets\n"
                     "    DefaultPreset\n"
                     "      Settings variation=\"1\" map_type=\"0\" seamless=\"false\"\n"
                     "      Controls\n"
                     "        SliderControl id=\"glow_amount\"\n"
                     "          Value value=\"0.500\"\n"
                     "        IntSliderControl id=\"radius\"\n"
                     "          Value value=\"12\" unit=\"px\"\n"
                     "        AngleControl id=\"angle\"\n"
                     "          Value value=\"45.000\"\n"
                     "        CheckboxControl id=\"invert\"\n"
                     "          Checked value=\"false\"\n");

} // namespace

TEST_F(RunFile, InactiveParametersKeepThePresetValues)
{
    for (const RecordPtr& p : *filter->list(key::Components))
        p->setInteger(key::POPSTATE, 1);
    auto step = makeStep(filter, true, true, 0);
    QString error;
    writeOneTask(*step, &error);
    EXPECT_EQ(presetTree(), kDefaultPresetUnchanged);
    EXPECT_EQ(parameter(*filter, QStringLiteral("radius"))->integer(key::STARTVALUE), 1);
}

TEST_F(RunFile, ActiveValuesAreWrittenAndRewrittenAttributesGoLast)
{
    host.settings.frameCountText = QStringLiteral("4");
    activate(QStringLiteral("glow_amount"), 1); // 0.25 steps
    activate(QStringLiteral("radius"), 1);
    parameter(*filter, QStringLiteral("radius"))->setInteger(key::MINVALUE, 3);
    parameter(*filter, QStringLiteral("radius"))->setInteger(key::MAXVALUE, 31); // d = 7
    parameter(*filter, QStringLiteral("radius"))->setInteger(key::STARTVALUE, 0);
    activate(QStringLiteral("angle"), 0);
    activate(QStringLiteral("invert"), 1);
    activate(kVariationsId, 1);
    host.settings.frameCountText = QStringLiteral("4");
    int draws = 0;
    auto step = makeStep(filter, true, true, 0);
    step->randomDraw = [&draws] {
        ++draws;
        return 500;
    };

    QString error;
    writeOneTask(*step, &error);
    EXPECT_EQ(draws, 1);
    EXPECT_EQ(presetTree(),
        QStringLiteral("  Presets\n"
                       "    DefaultPreset\n"
                       "      Settings map_type=\"0\" seamless=\"false\" variation=\"7501\"\n"
                       "      Controls\n"
                       "        SliderControl id=\"glow_amount\"\n"
                       "          Value value=\"0.250\"\n"
                       "        IntSliderControl id=\"radius\"\n"
                       "          Value unit=\"px\" value=\"7\"\n"
                       "        AngleControl id=\"angle\"\n"
                       "          Value value=\"180.000\"\n"
                       "        CheckboxControl id=\"invert\"\n"
                       "          Checked value=\"true\"\n"));
}

TEST_F(RunFile, TheChosenPresetComesFromTheSettingsAndLosesItsAttributes)
{
    host.settings.presetIndex = 1;
    filter->setInteger(key::ChoosenPreset, 0);
    auto step = makeStep(filter, true, true, 0);
    QString error;
    writeOneTask(*step, &error);
    const QString tree = presetTree();
    EXPECT_TRUE(
        tree.startsWith(QStringLiteral("  Presets\n    DefaultPreset\n      Settings variation=\"9\"")))
        << tree.toStdString();
    EXPECT_TRUE(tree.contains(QStringLiteral("Value value=\"40\" unit=\"px\""))) << tree.toStdString();
    EXPECT_EQ(countNodes(out(QStringLiteral("bth-run-0.ffxml")), "/Filter/Presets/*"), 1);
}

TEST_F(RunFile, AnUnknownControlIdChangesNothing)
{
    auto ghost = makeParameterRecord(controlType::kTypeSlider, QStringLiteral("no_such_control"));
    ghost->setInteger(key::ACTIVE, 1);
    ghost->setInteger(key::POPSTATE, 1);
    filter->list(key::Components)->insert(filter->list(key::Components)->begin(), ghost);
    auto step = makeStep(filter, true, true, 0);
    QString error;
    writeOneTask(*step, &error);
    EXPECT_EQ(presetTree(), kDefaultPresetUnchanged);
    EXPECT_DOUBLE_EQ(ghost->real(key::STARTVALUE), 0.5); // the rule still advanced it
}

TEST_F(RunFile, ARecordWithoutComponentsWritesThePresetAsItIs)
{
    filter->remove(key::Components);
    auto step = makeStep(filter, true, true, 0);
    QString error;
    writeOneTask(*step, &error);
    EXPECT_EQ(presetTree(), kDefaultPresetUnchanged);
}

TEST_F(RunFile, ValuesAdvanceOncePerTaskAcrossInputFiles)
{
    host.settings.frameCountText = QStringLiteral("10");
    activate(QStringLiteral("glow_amount"), 1);
    auto step = makeStep(filter, true, true, 0);
    step->createBatchFileWithFilepath(inDir + QStringLiteral("/a.png"), QStringLiteral("a"));
    EXPECT_EQ(xpathValue(out(QStringLiteral("bth-run-9.ffxml")), "//SliderControl/Value/@value"),
        QStringLiteral("1.000"));
    step->createBatchFileWithFilepath(inDir + QStringLiteral("/b.png"), QStringLiteral("b"));
    // 1.0 + 0.1 passes the top and starts again at 0.
    EXPECT_EQ(xpathValue(out(QStringLiteral("bth-run-0.ffxml")), "//SliderControl/Value/@value"),
        QStringLiteral("0.000"));
    EXPECT_EQ(xpathValue(out(QStringLiteral("bth-run-3.ffxml")), "//SliderControl/Value/@value"),
        QStringLiteral("0.300"));
}

// ---- Failures -----------------------------------------------------------------

struct BrokenDefinition {
    const char* label;
    QByteArray text;
    int presetIndex;
    const char* reason; // part of the console line; empty when nothing is printed
};

class RunFileFailure : public RunFile, public ::testing::WithParamInterface<BrokenDefinition> { };

TEST_P(RunFileFailure, AbandonsTheControlFileAndKeepsTheRecordedNames)
{
    const BrokenDefinition& broken = GetParam();
    if (broken.text.isNull())
        QFile::remove(definitionPath);
    else
        ASSERT_TRUE(writeText(definitionPath, broken.text));
    host.settings.presetIndex = broken.presetIndex;
    activate(QStringLiteral("glow_amount"), 1);
    auto step = makeStep(filter, true, true, 0);
    step->filesToRemove = QStringList({ QStringLiteral("stale") });

    testing::internal::CaptureStdout();
    const QString control
        = step->createBatchFileWithFilepath(inDir + QStringLiteral("/stone.png"), QStringLiteral("stone"));
    const QString printed = QString::fromStdString(testing::internal::GetCapturedStdout());

    EXPECT_TRUE(control.isEmpty());
    EXPECT_FALSE(QFile::exists(out(QStringLiteral("controlfile.xml"))));
    EXPECT_FALSE(QFile::exists(out(QStringLiteral("bth-run-0.ffxml"))));
    EXPECT_TRUE(step->filesToRemove.isEmpty());
    EXPECT_EQ(step->outFiles, QStringList({ out(QStringLiteral("stone-0001.png")) }));
    EXPECT_EQ(step->realFileNames, QStringList({ QStringLiteral("stone-0001.png") }));
    // The parameters do not advance for a task that was not written.
    EXPECT_DOUBLE_EQ(parameter(*filter, QStringLiteral("glow_amount"))->real(key::STARTVALUE), 0.0);
    if (*broken.reason) {
        EXPECT_EQ(printed.count(QLatin1Char('\n')), 1) << printed.toStdString();
        EXPECT_TRUE(printed.contains(definitionPath)) << printed.toStdString();
        EXPECT_TRUE(printed.contains(QString::fromUtf8(broken.reason))) << printed.toStdString();
    } else {
        EXPECT_TRUE(printed.isEmpty()) << printed.toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Definitions, RunFileFailure,
    ::testing::Values(BrokenDefinition { "Missing", QByteArray(), 0, "" },
        BrokenDefinition { "Unparsable", "<Filter><Presets><Preset></Filter", 0, "" },
        BrokenDefinition { "Empty", "", 0, "" },
        BrokenDefinition { "NoPresets", "<Filter><Components/></Filter>", 0, "Presets" },
        BrokenDefinition { "IndexAtEnd",
            "<Filter><Presets><Preset><Settings/><Controls/></Preset></Presets></Filter>", 1, "index 1" },
        BrokenDefinition { "NegativeIndex",
            "<Filter><Presets><Preset><Settings/><Controls/></Preset></Presets></Filter>", -1, "index -1" },
        BrokenDefinition {
            "NoSettings", "<Filter><Presets><Preset><Controls/></Preset></Presets></Filter>", 0, "Settings" },
        BrokenDefinition { "NoControls", "<Filter><Presets><Preset><Settings/></Preset></Presets></Filter>",
            0, "Controls" }),
    [](const ::testing::TestParamInfo<BrokenDefinition>& info) { return std::string(info.param.label); });

TEST_F(RunFile, AnUnwritableRunFileIsReportedAndTheTaskDropped)
{
    ASSERT_TRUE(QDir(outDir).mkdir(QStringLiteral("bth-run-1.ffxml")));
    auto step = makeStep(filter, true, true, 0);
    testing::internal::CaptureStdout();
    const QString control = step->createBatchFileNoFile();
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(control.isEmpty());
    EXPECT_EQ(printed, "HILFE!! - Could not create runfile.\n");
    EXPECT_EQ(step->filesToRemove,
        QStringList({ out(QStringLiteral("bth-run-0.ffxml")), out(QStringLiteral("bth-run-1.ffxml")) }));
    EXPECT_EQ(step->outFiles.size(), 2);
    EXPECT_FALSE(QFile::exists(out(QStringLiteral("controlfile.xml"))));

    pugi::xml_document doc;
    pugi::xml_node tasks = doc.append_child("Tasks");
    QString error;
    EXPECT_FALSE(step->createTaskSettingFor(1, QString(), QString(), &error, tasks));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_TRUE(tasks.first_child().empty());
}

TEST_F(RunFile, CommentsAndInstructionsOfTheDefinitionAreKept)
{
    QByteArray definition(kDefinition);
    definition.replace("<Filter>", "<?render-hint fast?>\n<!-- made by hand -->\n<Filter>");
    definition.replace("<Controls>", "<Controls><!-- tuned -->");
    ASSERT_TRUE(writeText(definitionPath, definition));
    activate(QStringLiteral("glow_amount"), 1);
    auto step = makeStep(filter, true, true, 0);
    QString error;
    writeOneTask(*step, &error);
    const QByteArray runFile = readText(out(QStringLiteral("bth-run-0.ffxml")));
    EXPECT_TRUE(runFile.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<?render-hint fast?>\n"
                                   "<!-- made by hand -->\n<Filter>"))
        << runFile.left(200).toStdString();
    EXPECT_EQ(runFile.count("<?xml "), 1);
    EXPECT_EQ(runFile.count("<!-- tuned -->"), 1);
    EXPECT_EQ(countNodes(out(QStringLiteral("bth-run-0.ffxml")), "/Filter/Presets/*"), 1);
    EXPECT_EQ(xpathValue(out(QStringLiteral("bth-run-0.ffxml")),
                  "/Filter/Presets/DefaultPreset/Controls/SliderControl[@id='glow_amount']/Value/@value"),
        QStringLiteral("0.500"));
}

// ---- Preset helpers -------------------------------------------------------------

TEST(PresetHelpers, MakeDefaultPresetMovesEveryChildInOrder)
{
    pugi::xml_document doc;
    ASSERT_TRUE(
        doc.load_string("<F><Presets><P a=\"1\"><Settings/><Extra x=\"y\"/><Controls/></P></Presets></F>"));
    pugi::xml_node preset = doc.child("F").child("Presets").child("P");
    const pugi::xml_node wrapped = filterProcessObject::makeDefaultPresetFromPreset(preset);
    EXPECT_TRUE(preset.first_child().empty());
    filterProcessObject::setPresetWithPreset(wrapped, doc.child("F"));
    EXPECT_EQ(dumpTree(doc),
        QStringLiteral("F\n"
                       "  Presets\n"
                       "    DefaultPreset\n"
                       "      Settings\n"
                       "      Extra x=\"y\"\n"
                       "      Controls\n"));
}

TEST(PresetHelpers, SetPresetWithoutPresetsPrintsAndChangesNothing)
{
    pugi::xml_document doc;
    ASSERT_TRUE(doc.load_string("<F><Other><P/></Other></F>"));
    pugi::xml_node wrapped
        = filterProcessObject::makeDefaultPresetFromPreset(doc.child("F").child("Other").child("P"));
    testing::internal::CaptureStdout();
    filterProcessObject::setPresetWithPreset(wrapped, doc.child("F"));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Replace preset failed!\n");
    EXPECT_EQ(dumpTree(doc.child("F")), QStringLiteral("Other\n  P\n"));
}
