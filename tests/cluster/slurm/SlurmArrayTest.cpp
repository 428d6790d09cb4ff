// The bundle's job array on a real Slurm cluster (one node, started by
// tests/cluster/slurm-single-node.sh) writes what a local run writes.

#include "support/ClusterFixture.h"

#include <QEventLoop>
#include <QFileSystemWatcher>
#include <QTimer>

#include <gtest/gtest.h>

namespace quillon {
namespace {

using test::CliResult;
using SlurmArray = test::ClusterFixture;

TEST_F(SlurmArray, SubmittedBundleWritesWhatALocalRunWrites)
{
    if (qEnvironmentVariableIsEmpty("SLURM_CONF"))
        GTEST_SKIP() << "needs the cluster of tests/cluster/slurm-single-node.sh";
    runLocally();
    const QString bundle = m_temp.path() + "/bundle";
    const CliResult written = run(
        runFlags(m_out) + QStringList { "--slurm-bundle", bundle, "--slurm-option=--job-name=quillon-test" });
    ASSERT_EQ(written.exitCode, 0) << written.err.toStdString();

    // The collect's status file appears once the collect job is over.
    QFileSystemWatcher watcher({ bundle });
    QEventLoop loop;
    const QString status = bundle + "/collect.status";
    QObject::connect(&watcher, &QFileSystemWatcher::directoryChanged, &loop, [&] {
        if (QFileInfo::exists(status))
            loop.quit();
    });
    QProcess submit;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("QUILLON_STANDIN_KEEP", folder("keep-cluster")); // the jobs inherit it
    env.insert("QUILLON_SBATCH_OPTIONS", "--comment=quillon --nice=1");
    submit.setProcessEnvironment(env);
    submit.start(bundle + "/submit.sh", {});
    const CliResult submitted = finish(submit);
    ASSERT_EQ(submitted.exitCode, 0) << submitted.err.toStdString();
    EXPECT_TRUE(submitted.out.contains("job array ") && submitted.out.contains("collect job "));
    bool timedOut = false;
    // A failure guard only: the collect ends the wait.
    QTimer::singleShot(240000, &loop, [&] {
        timedOut = true;
        loop.quit();
    });
    if (!QFileInfo::exists(status))
        loop.exec();
    QByteArray logs; // the jobs' output, to see why when they did not end
    for (const QByteArray& bytes : test::batchSnapshot(bundle + "/logs"))
        logs += bytes;
    ASSERT_FALSE(timedOut) << "the collect job did not end; " << submitted.out.toStdString()
                           << logs.toStdString();
    expectSameAsLocal(bundle);
}

} // namespace
} // namespace quillon
