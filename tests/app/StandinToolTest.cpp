#include <QByteArray>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

struct ToolRun {
    int exitCode = -1;
    QProcess::ExitStatus exitStatus = QProcess::CrashExit;
    QString out;
    QString err;
};

struct StandinTask {
    QString image;
    QString width;
    QString height;
    QString result;
    QString runFile;
};

class StandinTool : public ::testing::Test {
protected:
    QString path(const QString& name) const { return QDir(m_dir.path()).filePath(name); }

    static void writeFile(const QString& path, const QByteArray& bytes)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    // A run file as the step writes it: one DefaultPreset with the task's values.
    QString writeRunFile(const QString& name, int variation, const QString& glow, int mapType = 0)
    {
        const QString file = path(name);
        writeFile(file,
            QStringLiteral(R"(<?xml version="1.0" encoding="UTF-8"?>
<Filter>
  <Information name-en="Soft Glow" author="Quillon Tests"/>
  <Components>
    <SliderControl id="glow_amount"><Name value-en="Glow Amount"/></SliderControl>
    <CheckboxControl id="invert"><Name value-en="Invert"/></CheckboxControl>
  </Components>
  <Presets>
    <DefaultPreset>
      <Settings seamless="false" map_type="%1" variation="%2"/>
      <Controls>
        <SliderControl id="glow_amount"><Value value="%3"/></SliderControl>
        <CheckboxControl id="invert"><Checked value="false"/></CheckboxControl>
      </Controls>
    </DefaultPreset>
  </Presets>
</Filter>
)")
                .arg(mapType)
                .arg(variation)
                .arg(glow)
                .toUtf8());
        return file;
    }

    QString writeControlFile(const std::vector<StandinTask>& tasks, const QString& format)
    {
        QString text = QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Tasks>\n");
        for (const StandinTask& task : tasks) {
            text += QStringLiteral("  <Task>\n    <Image value=\"%1\" width=\"%2\" height=\"%3\" />\n"
                                   "    <Selection value=\"\" />\n    <Result path=\"%4\" />\n"
                                   "    <Preset value=\"0\" />\n    <Filter value=\"%5\" />\n  </Task>\n")
                        .arg(task.image, task.width, task.height, task.result, task.runFile);
        }
        text += QStringLiteral("  <GlobalSettings>\n    <RenderingOptions>\n      <Jitter value=\"0\" />\n"
                               "    </RenderingOptions>\n    <BitmapFormatOptions>\n"
                               "      <DefaultFormat value=\"%1\" />\n      <PFM />\n"
                               "    </BitmapFormatOptions>\n  </GlobalSettings>\n</Tasks>\n")
                    .arg(format);
        const QString file = path(QStringLiteral("controlfile.xml"));
        writeFile(file, text.toUtf8());
        return file;
    }

    static ToolRun runTool(const QStringList& arguments,
        const QProcessEnvironment& env = QProcessEnvironment::systemEnvironment())
    {
        QProcess process;
        process.setProcessEnvironment(env);
        process.start(QStringLiteral(QUILLON_STANDIN_PATH), arguments);
        ToolRun run;
        if (!process.waitForFinished(60000)) {
            process.kill();
            process.waitForFinished();
            return run;
        }
        run.exitCode = process.exitCode();
        run.exitStatus = process.exitStatus();
        run.out = QString::fromUtf8(process.readAllStandardOutput());
        run.err = QString::fromUtf8(process.readAllStandardError());
        return run;
    }

    static QByteArray fileHash(const QString& path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256);
    }

    QTemporaryDir m_dir;
};

} // namespace

TEST_F(StandinTool, RendersEachTaskAtItsSizeAndEachTaskDiffers)
{
    const QString runA = writeRunFile(QStringLiteral("bth-run-0.ffxml"), 1, QStringLiteral("0.500"));
    const QString runB = writeRunFile(QStringLiteral("bth-run-1.ffxml"), 2, QStringLiteral("0.750"));
    const QString runC = writeRunFile(QStringLiteral("bth-run-2.ffxml"), 2, QStringLiteral("0.750"), 4);
    const QString control = writeControlFile(
        {
            { QString(), QStringLiteral("64"), QStringLiteral("48"), path(QStringLiteral("a.png")), runA },
            { QString(), QStringLiteral("64"), QStringLiteral("48"), path(QStringLiteral("b.png")), runB },
            { QString(), QStringLiteral("64"), QStringLiteral("48"), path(QStringLiteral("c.png")), runC },
            { QString(), QStringLiteral("wide"), QString(), path(QStringLiteral("d.png")), runA },
        },
        QStringLiteral("PNG"));

    const ToolRun run = runTool({ control });
    ASSERT_EQ(run.exitStatus, QProcess::NormalExit) << run.err.toStdString();
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_TRUE(run.out.contains(QStringLiteral("Rendering task 1/4: ") + path(QStringLiteral("a.png"))));
    EXPECT_TRUE(run.out.contains(QStringLiteral("Rendering task 4/4: ") + path(QStringLiteral("d.png"))));
    EXPECT_TRUE(run.out.trimmed().endsWith(QStringLiteral("Done")));

    const QImage a(path(QStringLiteral("a.png")));
    const QImage b(path(QStringLiteral("b.png")));
    const QImage c(path(QStringLiteral("c.png")));
    ASSERT_FALSE(a.isNull());
    ASSERT_FALSE(b.isNull());
    ASSERT_FALSE(c.isNull());
    EXPECT_EQ(a.size(), QSize(64, 48));
    EXPECT_EQ(b.size(), QSize(64, 48));
    EXPECT_NE(a, b);
    EXPECT_NE(b, c) << "the map kind changes the picture";
    // Sizes that are not numbers give the default canvas.
    EXPECT_EQ(QImage(path(QStringLiteral("d.png"))).size(), QSize(600, 600));
}

TEST_F(StandinTool, InputImageGetsAVisibleEffectAndStaysUntouched)
{
    const QString input = path(QStringLiteral("stone.png"));
    QImage source(40, 30, QImage::Format_RGB32);
    source.fill(QColor(200, 120, 40));
    ASSERT_TRUE(source.save(input));
    const QByteArray inputHash = fileHash(input);

    const QString runFile = writeRunFile(QStringLiteral("bth-run-0.ffxml"), 9, QStringLiteral("0.250"));
    const QString result = path(QStringLiteral("stone-0001.png"));
    const QString control = writeControlFile(
        { { input, QStringLiteral("600"), QStringLiteral("600"), result, runFile } }, QStringLiteral("PNG"));

    const ToolRun run = runTool({ control });
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QImage rendered(result);
    ASSERT_FALSE(rendered.isNull());
    EXPECT_EQ(rendered.size(), source.size());
    EXPECT_NE(rendered.convertToFormat(QImage::Format_RGB32), source);
    EXPECT_EQ(fileHash(input), inputHash);
}

TEST_F(StandinTool, FormatsQtCannotWriteGetPngBytesAtTheResultPath)
{
    const QString runFile = writeRunFile(QStringLiteral("bth-run-0.ffxml"), 3, QStringLiteral("0.100"));
    const QString exr = path(QStringLiteral("frame.exr"));
    const QString control = writeControlFile(
        { { QString(), QStringLiteral("16"), QStringLiteral("8"), exr, runFile } }, QStringLiteral("EXR"));
    EXPECT_EQ(runTool({ control }).exitCode, 0);
    QImageReader reader(exr);
    EXPECT_EQ(reader.format(), QByteArray("png"));
    EXPECT_EQ(reader.size(), QSize(16, 8));

    const QString jpeg = path(QStringLiteral("frame.jpeg"));
    writeControlFile(
        { { QString(), QStringLiteral("16"), QStringLiteral("8"), jpeg, runFile } }, QStringLiteral("JPEG"));
    EXPECT_EQ(runTool({ control }).exitCode, 0);
    if (QImageReader::supportedImageFormats().contains("jpeg")) {
        EXPECT_EQ(QImageReader(jpeg).format(), QByteArray("jpeg"));
    }
    EXPECT_EQ(QImage(jpeg).size(), QSize(16, 8));
}

TEST_F(StandinTool, MissingOrUnreadableControlFileExitsWithOne)
{
    for (const QStringList& arguments : { QStringList { path(QStringLiteral("nothing.xml")) },
             QStringList { QString() }, QStringList {}, QStringList { m_dir.path() } }) {
        const ToolRun run = runTool(arguments);
        EXPECT_EQ(run.exitStatus, QProcess::NormalExit);
        EXPECT_EQ(run.exitCode, 1) << arguments.join(QLatin1Char(' ')).toStdString();
        EXPECT_FALSE(run.err.isEmpty());
    }
    const QString notXml = path(QStringLiteral("controlfile.xml"));
    writeFile(notXml, "this is not a task list");
    const ToolRun run = runTool({ notXml });
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_FALSE(run.err.isEmpty());
}

TEST_F(StandinTool, ExitCodeAndRecordSwitches)
{
    const QString runFile = writeRunFile(QStringLiteral("bth-run-0.ffxml"), 5, QStringLiteral("0.300"));
    const QString first = path(QStringLiteral("one.png"));
    const QString second = path(QStringLiteral("two.png"));
    const QString control
        = writeControlFile({ { QString(), QStringLiteral("8"), QStringLiteral("8"), first, runFile },
                               { QString(), QStringLiteral("8"), QStringLiteral("8"), second, runFile } },
            QStringLiteral("PNG"));
    const QString recordFile = path(QStringLiteral("record.txt"));
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QUILLON_STANDIN_EXIT_CODE"), QStringLiteral("7"));
    env.insert(QStringLiteral("QUILLON_STANDIN_RECORD"), recordFile);

    const ToolRun run = runTool({ control }, env);
    EXPECT_EQ(run.exitStatus, QProcess::NormalExit);
    EXPECT_EQ(run.exitCode, 7);
    EXPECT_TRUE(QFile::exists(first));
    EXPECT_TRUE(QFile::exists(second));

    QFile record(recordFile);
    ASSERT_TRUE(record.open(QIODevice::ReadOnly));
    const QStringList lines
        = QString::fromUtf8(record.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    EXPECT_EQ(lines,
        (QStringList { QStringLiteral("control ") + control, QStringLiteral("result ") + first,
            QStringLiteral("result ") + second }));

    env.remove(QStringLiteral("QUILLON_STANDIN_EXIT_CODE"));
    env.insert(QStringLiteral("QUILLON_STANDIN_CRASH"), QStringLiteral("1"));
    EXPECT_EQ(runTool({ control }, env).exitStatus, QProcess::CrashExit);
}
