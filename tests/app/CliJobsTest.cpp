// Several render tool processes at once make the same files as one.

#include "support/BatchFixtures.h"
#include "support/CliFixture.h"

#include <QFileInfo>

#include <gtest/gtest.h>

namespace quillon {
namespace {

using test::batchDirectoryNames;
using test::batchSnapshot;
using test::CliResult;
using test::kTool;
using test::writeBatchInputImage;
using CliJobs = test::CliFixture;

TEST_F(CliJobs, ThreeSlotsWriteWhatOneWrites)
{
    for (const char* name : { "a.png", "b.png", "c.png" })
        ASSERT_TRUE(writeBatchInputImage(m_in + QLatin1Char('/') + QLatin1String(name)));
    const QString second = test::writeBatchDefinition(
        m_temp.path(), QStringLiteral("second.ffxml"), QStringLiteral("Second"), {});
    const QStringList chains[] = {
        { "--filter", m_definition, second },
        { "--filter", m_definition, "--maps", "base,alpha,normal" },
    };
    // File name -> bytes of every file below `directory`.
    const auto byName = [](const QString& directory) {
        QMap<QString, QByteArray> files;
        const auto snapshot = batchSnapshot(directory);
        for (auto it = snapshot.cbegin(); it != snapshot.cend(); ++it)
            files.insert(QFileInfo(it.key()).fileName(), it.value());
        return files;
    };
    int run = 0;
    for (const QStringList& chain : chains) {
        QMap<QString, QByteArray> outputs[2];
        QMap<QString, QByteArray> runFiles[2];
        for (const int jobs : { 1, 3 }) {
            const QString out = m_temp.path() + QStringLiteral("/out%1").arg(++run);
            const QString keep = m_temp.path() + QStringLiteral("/keep%1").arg(run);
            QDir().mkpath(out);
            QDir().mkpath(keep);
            QProcess process;
            start(process,
                chain
                    + QStringList { "--tool", kTool, "--output", out, "--input-dir", m_in, "--frames", "2",
                        "--seed", "7", "--format", "PNG", "--jobs", QString::number(jobs) },
                { { "QUILLON_STANDIN_KEEP", keep } });
            const CliResult result = finish(process);
            ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
            const int slot = jobs == 1 ? 0 : 1;
            outputs[slot] = byName(out);
            runFiles[slot] = byName(keep);
            // Nothing of the slots stays: no task file, no folder.
            for (const QString& name : batchDirectoryNames(out))
                EXPECT_TRUE(name.endsWith(QLatin1String(".png"))) << name.toStdString();
        }
        EXPECT_EQ(outputs[0].keys(), outputs[1].keys());
        EXPECT_TRUE(outputs[0] == outputs[1]);
        // One run file per task, interim outputs' tasks included.
        EXPECT_GE(runFiles[0].size(), outputs[0].size());
        EXPECT_TRUE(runFiles[0] == runFiles[1]);
    }
}

} // namespace
} // namespace quillon
