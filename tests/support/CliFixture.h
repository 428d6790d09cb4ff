#pragma once

// quillon-cli as a child process in a temporary tree: out/, in/ and one
// filter definition; runs with the stand-in render tool.

#include "support/BatchFixtures.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace quillon::test {

struct CliResult {
    int exitCode = -1;
    QProcess::ExitStatus status = QProcess::CrashExit;
    QString out;
    QString err;
};

inline const QString kTool = QStringLiteral(QUILLON_STANDIN_PATH);

class CliFixture : public ::testing::Test {
protected:
    void SetUp() override
    {
        const QDir root(m_temp.path());
        ASSERT_TRUE(root.mkpath(QStringLiteral("out")) && root.mkpath(QStringLiteral("in")));
        m_out = root.filePath(QStringLiteral("out"));
        m_in = root.filePath(QStringLiteral("in"));
        m_definition = test::writeBatchDefinition(m_temp.path(), QStringLiteral("glow.ffxml"),
            QStringLiteral("Glow"), QStringLiteral("Quillon Tests"));
        ASSERT_FALSE(m_definition.isEmpty());
    }

    QStringList baseFlags() const
    {
        return { "--filter", m_definition, "--tool", kTool, "--output", m_out, "--format", "PNG", "--frames",
            "2", "--seed", "3" };
    }

    static CliResult finish(QProcess& process)
    {
        EXPECT_TRUE(process.waitForFinished(90000));
        return { process.exitCode(), process.exitStatus(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError()) };
    }

    static CliResult run(const QStringList& flags)
    {
        QProcess process;
        process.start(QStringLiteral(QUILLON_CLI_PATH), flags);
        return finish(process);
    }

    // Starts quillon-cli with `variables` added to the environment.
    static void start(
        QProcess& process, const QStringList& flags, const QMap<QString, QString>& variables = {})
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (auto it = variables.cbegin(); it != variables.cend(); ++it)
            env.insert(it.key(), it.value());
        process.setProcessEnvironment(env);
        process.start(QStringLiteral(QUILLON_CLI_PATH), flags);
    }

    // Reads the process's standard output until it holds `text`; returns
    // what was read.
    static QByteArray readUntil(QProcess& process, const QByteArray& text)
    {
        QByteArray seen;
        while (!seen.contains(text) && process.waitForReadyRead(30000))
            seen += process.readAllStandardOutput();
        EXPECT_TRUE(seen.contains(text)) << seen.toStdString();
        return seen;
    }

    QString writeFile(const QString& name, const QByteArray& bytes) const
    {
        const QString path = QDir(m_temp.path()).filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        return path;
    }

    QTemporaryDir m_temp;
    QString m_out;
    QString m_in;
    QString m_definition;
};

} // namespace quillon::test
