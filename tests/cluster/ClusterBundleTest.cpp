// A bundle's elements, rendered one by one and collected, write what a local
// run writes; what the bundle refuses and what the collect counts.

#include "support/ClusterFixture.h"

#include <gtest/gtest.h>

namespace quillon {
namespace {

using test::batchDirectoryNames;
using test::CliResult;
using ClusterBundle = test::ClusterFixture;

TEST_F(ClusterBundle, ElementsRunOneByOneWriteWhatALocalRunWrites)
{
    runLocally();
    const QString bundle = m_temp.path() + "/bundle";
    const CliResult written = run(runFlags(m_out) + QStringList { "--slurm-bundle", bundle });
    ASSERT_EQ(written.exitCode, 0) << written.err.toStdString();
    EXPECT_TRUE(written.err.contains("bundle of 4 elements, 12 tool runs, 16 outputs"))
        << written.err.toStdString();
    EXPECT_TRUE(batchDirectoryNames(m_out).isEmpty()); // nothing ran
    // An element run twice (a re-run after a failure) writes the same files.
    for (const int element : { 0, 1, 2, 3, 2 }) {
        const CliResult part
            = runKeeping({ "--run-part", bundle, QString::number(element) }, folder("keep-cluster"));
        ASSERT_EQ(part.exitCode, 0) << part.err.toStdString();
    }
    const CliResult collect = run({ "--collect", bundle });
    EXPECT_EQ(collect.exitCode, 0) << collect.err.toStdString();
    EXPECT_TRUE(collect.err.contains("8 written, 0 missing, 0 not run")) << collect.err.toStdString();
    expectSameAsLocal(bundle);
    const QJsonObject report = readJson(bundle + "/report.json");
    EXPECT_EQ(report.value("written").toInt(), 8);
    EXPECT_EQ(report.value("failedToolRuns").toInt(), 0);
    EXPECT_EQ(report.value("plan")["toolRuns"][11]["exitCode"].toInt(-1), 0);
    // An element whose line names a parameter its step does not have runs nothing.
    QByteArray lines = test::fileBytes(bundle + "/elements.jsonl");
    const qsizetype name = lines.indexOf("\"values\":{\"") + 11;
    ASSERT_GT(name, 11);
    lines[name] = '#';
    writeFile(QStringLiteral("bundle/elements.jsonl"), lines);
    expectExit(run({ "--run-part", bundle, "0" }), 2, bundle + "/elements.jsonl is damaged");
}

TEST_F(ClusterBundle, EveryMapOfAFrameTakesTheFrameValuesInAnElement)
{
    // The first map kind of a frame carries its values, the others reuse them.
    const QStringList flags { "--filter", m_definition, "--tool", test::kTool, "--input-dir", m_in, "--frames", "2",
        "--seed", "11", "--format", "PNG", "--maps", "diffuse,bump" };
    const CliResult local = runKeeping(flags + QStringList { "--output", folder("local") }, folder("keep-local"));
    ASSERT_EQ(local.exitCode, 0) << local.err.toStdString();
    const QString bundle = m_temp.path() + "/bundle";
    ASSERT_EQ(run(flags + QStringList { "--output", m_out, "--slurm-bundle", bundle }).exitCode, 0);
    for (const int element : { 0, 1, 2, 3 })
        ASSERT_EQ(runKeeping({ "--run-part", bundle, QString::number(element) }, folder("keep-cluster")).exitCode, 0);
    EXPECT_EQ(byName(folder("keep-cluster")).size(), 16);
    EXPECT_TRUE(byName(folder("keep-cluster")) == byName(folder("keep-local")));
}

TEST_F(ClusterBundle, RefusesAndCountsWhatFailed)
{
    const QString bundle = m_temp.path() + "/bundle";
    // No input: one element.
    ASSERT_EQ(run(baseFlags() + QStringList { "--slurm-bundle", bundle }).exitCode, 0);
    EXPECT_EQ(readJson(bundle + "/bundle.json").value("elements").toInt(), 1);
    // The settings of the flags given and every default, in tests/cluster/data.
    test::expectGoldenFile(QStringLiteral("cluster/data/default-settings.json"),
        test::fileBytes(bundle + "/settings.json").replace(m_out.toUtf8(), "OUT").replace(test::kTool.toUtf8(), "TOOL"));
    // A bundle directory that is not empty is refused, the bundle kept.
    const CliResult again = run(baseFlags() + QStringList { "--slurm-bundle", bundle });
    EXPECT_EQ(again.exitCode, 2);
    EXPECT_TRUE(again.err.contains("is not empty")) << again.err.toStdString();
    // The element never ran: its outputs are not run, the collect says so.
    const CliResult collect = run({ "--collect", bundle });
    EXPECT_EQ(collect.exitCode, 3);
    EXPECT_TRUE(collect.err.contains("0 written, 0 missing, 2 not run")) << collect.err.toStdString();
    EXPECT_TRUE(collect.err.contains("element 0 (no input): not run: no report part"))
        << collect.err.toStdString();
    // A killed element leaves its task files; the collect removes them by its journal.
    QProcess killed;
    start(killed, { "--run-part", bundle, "0" }, { { "QUILLON_STANDIN_HANG", "1" } });
    readUntil(killed, "stand-in");
    killed.kill();
    killed.waitForFinished();
    EXPECT_EQ(batchDirectoryNames(m_out), QStringList { ".quillon" });
    const CliResult cleaned = run({ "--collect", bundle });
    EXPECT_TRUE(cleaned.out.contains("deleted " + m_out + "/.quillon/job-0/controlfile.xml"))
        << cleaned.out.toStdString();
    EXPECT_TRUE(batchDirectoryNames(m_out).isEmpty());
    // The tool fails: the element's report part says how, the collect counts it.
    QProcess failing;
    start(failing, { "--run-part", bundle, "0" }, { { "QUILLON_STANDIN_EXIT_CODE", "5" } });
    EXPECT_EQ(finish(failing).exitCode, 3);
    EXPECT_EQ(run({ "--collect", bundle }).exitCode, 3);
    const QJsonObject report = readJson(bundle + "/report.json");
    EXPECT_EQ(report.value("failedToolRuns").toInt(), 1);
    EXPECT_EQ(report.value("plan")["toolRuns"][0]["exitCode"].toInt(), 5);
    expectExit(run({ "--run-part", bundle, "1" }), 2, "The bundle has elements 0 to 0, not 1");
    // A bundle whose chain no longer reads runs nothing.
    writeFile(QStringLiteral("bundle/chain.qlch"), "damaged");
    expectExit(run({ "--run-part", bundle, "0" }), 2, "Cannot read the chain file " + bundle + "/chain.qlch");
}

} // namespace
} // namespace quillon
