#pragma once

// quillon-cli as a child process in a temporary tree: out/, in/ and one
// filter definition; runs with the stand-in render tool.

#include "support/BatchFixtures.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
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
using Env = QMap<QString, QString>;
// Debian's Python, where python3-jsonschema is.
inline const QString kPython = QStringLiteral("/usr/bin/python3");

class CliFixture : public ::testing::Test {
protected:
    void SetUp() override
    {
        const QDir root(m_temp.path());
        ASSERT_TRUE(root.mkpath(QStringLiteral("out")) && root.mkpath(QStringLiteral("in")));
        m_out = root.filePath(QStringLiteral("out"));
        m_in = root.filePath(QStringLiteral("in"));
        m_definition = writeDefinition(
            QStringLiteral("glow.ffxml"), QStringLiteral("Glow"), QStringLiteral("Quillon Tests"));
        ASSERT_FALSE(m_definition.isEmpty());
    }

    QString writeDefinition(const QString& file, const QString& name, const QString& author = {}) const
    {
        return writeBatchDefinition(m_temp.path(), file, name, author);
    }

    QStringList baseFlags() const
    {
        return { "--filter", m_definition, "--tool", kTool, "--output", m_out, "--format", "PNG", "--frames",
            "2", "--seed", "3" };
    }

    // The bound only ends a run that hangs.
    static CliResult finish(QProcess& process)
    {
        EXPECT_TRUE(process.waitForFinished(120000));
        return { process.exitCode(), process.exitStatus(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError()) };
    }

    // Starts `program` (quillon-cli unless given) with `variables` added to the environment.
    static void start(QProcess& process, const QStringList& flags, const Env& variables = {},
        const QString& program = QStringLiteral(QUILLON_CLI_PATH))
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (auto it = variables.cbegin(); it != variables.cend(); ++it)
            env.insert(it.key(), it.value());
        process.setProcessEnvironment(env);
        process.start(program, flags);
    }

    static CliResult run(const QStringList& flags, const Env& variables = {})
    {
        QProcess process;
        start(process, flags, variables);
        return finish(process);
    }

    // The run ended with `code`, its standard error holding `message`.
    static void expectExit(const CliResult& result, int code, const QString& message = {})
    {
        EXPECT_EQ(result.exitCode, code) << result.err.toStdString();
        EXPECT_TRUE(result.err.contains(message)) << result.err.toStdString();
    }

    // Reads the process's standard output until it holds `text`.
    static void readUntil(QProcess& process, const QByteArray& text)
    {
        QByteArray seen;
        while (!seen.contains(text) && process.waitForReadyRead(120000))
            seen += process.readAllStandardOutput();
        EXPECT_TRUE(seen.contains(text)) << seen.toStdString();
    }

    QString writeFile(const QString& name, const QByteArray& bytes) const
    {
        const QString path = QDir(m_temp.path()).filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        return path;
    }

    // A file of tests/app/data written into the tree, the fixture's filter
    // definition where it says @DEFINITION@.
    QString writeDataFile(const QString& name) const
    {
        QFile data(QStringLiteral(QUILLON_SOURCE_DIR "/tests/app/data/") + name);
        EXPECT_TRUE(data.open(QIODevice::ReadOnly)) << name.toStdString();
        return writeFile(name, data.readAll().replace("@DEFINITION@", m_definition.toUtf8()));
    }

    // The JSON object of a file (a run report, a bundle's description); a
    // plan or report is checked against its schema on the way.
    static QJsonObject readJson(const QString& path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return {};
        const QByteArray bytes = file.readAll();
        const QJsonObject object = QJsonDocument::fromJson(bytes).object();
        if (object.contains(QStringLiteral("schema"))) {
            EXPECT_EQ(validateJson(bytes), QString()) << path.toStdString();
        }
        return object;
    }

    // The schema errors of a plan or report (schemas/*.schema.json): empty
    // when it is valid or python3-jsonschema is missing (schemaValidatorMissing).
    static QString validateJson(const QByteArray& json)
    {
        QProcess python;
        python.start(kPython,
            { QStringLiteral(QUILLON_SOURCE_DIR "/tests/support/validate-json.py"),
                QStringLiteral(QUILLON_SOURCE_DIR "/schemas"), QStringLiteral("-") });
        python.write(json);
        python.closeWriteChannel();
        if (!python.waitForFinished(60000) || python.exitStatus() != QProcess::NormalExit)
            return QStringLiteral("the validator did not run");
        return python.exitCode() == 0 || python.exitCode() == 77
            ? QString()
            : QString::fromUtf8(python.readAllStandardError());
    }

    static bool schemaValidatorMissing()
    {
        return QProcess::execute(kPython, { QStringLiteral("-c"), QStringLiteral("import jsonschema") }) != 0;
    }

    // File name -> bytes of every file below `directory`: outputs and run
    // files compared apart from their folder.
    static QMap<QString, QByteArray> byName(const QString& directory)
    {
        QMap<QString, QByteArray> files;
        const auto snapshot = batchSnapshot(directory);
        for (auto it = snapshot.cbegin(); it != snapshot.cend(); ++it)
            files.insert(QFileInfo(it.key()).fileName(), it.value());
        return files;
    }

    QTemporaryDir m_temp;
    QString m_out;
    QString m_in;
    QString m_definition;
};

} // namespace quillon::test
