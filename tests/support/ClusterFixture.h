#pragma once

// A run planned as a cluster bundle and the same run made locally: a chain
// of two steps with a sweep and random values, over four inputs, seeded.

#include "chain/ChainFile.h"
#include "support/BatchFixtures.h"
#include "support/CliFixture.h"


namespace quillon::test {

class ClusterFixture : public CliFixture {
protected:
    void SetUp() override
    {
        CliFixture::SetUp();
        for (const char* name : { "a.png", "b.png", "c.png", "d.png" })
            ASSERT_TRUE(writeBatchInputImage(m_in + QLatin1Char('/') + QLatin1String(name)));
        RecordPtr sweep = batchChainRecord(m_definition);
        RecordPtr random
            = batchChainRecord(writeBatchDefinition(m_temp.path(), "second.ffxml", "Second", {}));
        ASSERT_TRUE(sweep && random);
        // Step 1 sweeps its slider; step 2 draws its slider and check box.
        for (const auto& [record, mode] : { std::pair { sweep, 1 }, std::pair { random, 0 } }) {
            for (const RecordPtr& parameter : *record->list(key::Components)) {
                parameter->setInteger(key::ACTIVE, 1);
                parameter->setInteger(key::POPSTATE, mode);
                parameter->setReal(key::MINVALUE, 0.0);
                parameter->setReal(key::MAXVALUE, 1.0);
            }
        }
        m_chain = QDir(m_temp.path()).filePath("chain.qlch");
        ASSERT_TRUE(writeChainFile(m_chain, { sweep, random }));
    }

    QStringList runFlags(const QString& out) const
    {
        return { "--chain", m_chain, "--tool", kTool, "--output", out, "--input-dir", m_in, "--frames", "2",
            "--seed", "11", "--format", "PNG" };
    }

    // quillon-cli with the stand-in copying every run file into `keep`.
    CliResult runKeeping(const QStringList& flags, const QString& keep)
    {
        QProcess process;
        start(process, flags, { { "QUILLON_STANDIN_KEEP", keep } });
        return finish(process);
    }

    QString folder(const QString& name) const
    {
        const QString path = QDir(m_temp.path()).filePath(name);
        QDir().mkpath(path);
        return path;
    }

    // The local run's outputs and run files (local/, keep-local/).
    void runLocally()
    {
        const CliResult local = runKeeping(runFlags(folder("local")), folder("keep-local"));
        ASSERT_EQ(local.exitCode, 0) << local.err.toStdString();
        ASSERT_EQ(byName(folder("local")).size(), 8);
    }

    // The cluster run's outputs and run files match the local run's, and
    // nothing of the elements is left in the output directory.
    void expectSameAsLocal(const QString& bundle)
    {
        EXPECT_TRUE(byName(m_out) == byName(folder("local")));
        EXPECT_TRUE(byName(folder("keep-cluster")) == byName(folder("keep-local")));
        EXPECT_EQ(byName(folder("keep-local")).size(), 16);
        EXPECT_EQ(batchDirectoryNames(m_out).size(), 8) << batchDirectoryNames(m_out).join(' ').toStdString();
        QFile status(bundle + "/collect.status");
        EXPECT_TRUE(status.open(QIODevice::ReadOnly));
        EXPECT_EQ(status.readAll(), "0\n");
    }

    QString m_chain;
};

} // namespace quillon::test
