// The stand-in render tool the other tests and the demo run, on the task
// files of tests/app/data/standin.

#include "support/BatchFixtures.h"

#include <QDir>
#include <QImage>
#include <QImageReader>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using quillon::test::batchSnapshot;

struct ToolRun {
    int exitCode = -1;
    QProcess::ExitStatus exitStatus = QProcess::CrashExit;
    QString out;
    QString err;
};

ToolRun runTool(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral(QUILLON_STANDIN_PATH), arguments);
    EXPECT_TRUE(process.waitForFinished(120000)); // the bound only ends a hang
    return { process.exitCode(), process.exitStatus(), QString::fromUtf8(process.readAllStandardOutput()),
        QString::fromUtf8(process.readAllStandardError()) };
}

TEST(StandinTool, RendersEachTaskAtItsSizeFromItsRunFileAndAsPngWhereQtCannotWriteTheFormat)
{
    QTemporaryDir temp;
    const QDir dir(temp.path());
    const QDir data(QStringLiteral(QUILLON_SOURCE_DIR "/tests/app/data/standin"));
    for (const QString& name : data.entryList(QDir::Files)) {
        QFile source(data.filePath(name)), copy(dir.filePath(name));
        ASSERT_TRUE(source.open(QIODevice::ReadOnly) && copy.open(QIODevice::WriteOnly));
        copy.write(source.readAll().replace("@DIR@", QFile::encodeName(temp.path())));
    }
    ASSERT_TRUE(quillon::test::writeBatchInputImage(dir.filePath(QStringLiteral("in.png"))));
    const auto input = batchSnapshot(temp.path()).value(dir.filePath(QStringLiteral("in.png")));
    const QString control = dir.filePath(QStringLiteral("controlfile.xml"));

    const ToolRun run = runTool({ control });
    ASSERT_EQ(run.exitStatus, QProcess::NormalExit) << run.err.toStdString();
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_TRUE(run.out.contains("Rendering task 1/6: " + dir.filePath(QStringLiteral("a.png"))));
    EXPECT_TRUE(run.out.trimmed().endsWith(QStringLiteral("Done")));
    const auto image = [&dir](const char* name) { return QImage(dir.filePath(QLatin1String(name))); };
    EXPECT_EQ(image("a.png").size(), QSize(64, 48));
    EXPECT_NE(image("a.png"), image("b.png")) << "the variation and values change the picture";
    EXPECT_NE(image("b.png"), image("c.png")) << "the map kind changes the picture";
    EXPECT_EQ(image("d.png").size(), QSize(600, 600)) << "sizes that are not numbers give the default canvas";
    // An input image gets a visible effect at its own size and stays as it was.
    EXPECT_EQ(image("e.png").size(), image("in.png").size());
    EXPECT_NE(image("e.png").convertToFormat(QImage::Format_RGB32),
        image("in.png").convertToFormat(QImage::Format_RGB32));
    EXPECT_EQ(batchSnapshot(temp.path()).value(dir.filePath(QStringLiteral("in.png"))), input);
    QImageReader exr(dir.filePath(QStringLiteral("f.exr")));
    EXPECT_EQ(exr.format(), QByteArray("png"));
    EXPECT_EQ(exr.size(), QSize(16, 8));
}

} // namespace
