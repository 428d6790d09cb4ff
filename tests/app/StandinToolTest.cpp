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
        writeFile(path(name),
            QStringLiteral(
                "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Filter>\n"
                "<Components><SliderControl id=\"glow_amount\"/></Components>\n<Presets><DefaultPreset>"
                "<Settings seamless=\"false\" map_type=\"%1\" variation=\"%2\"/><Controls>"
                "<SliderControl id=\"glow_amount\"><Value value=\"%3\"/></SliderControl>"
                "</Controls></DefaultPreset></Presets>\n</Filter>\n")
                .arg(mapType)
                .arg(variation)
                .arg(glow)
                .toUtf8());
        return path(name);
    }

    QString writeControlFile(
        const std::vector<StandinTask>& tasks, const QString& format = QStringLiteral("PNG"))
    {
        QString text = QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Tasks>\n");
        for (const StandinTask& task : tasks)
            text += QStringLiteral(
                "<Task><Image value=\"%1\" width=\"%2\" height=\"%3\" /><Selection value=\"\" />"
                "<Result path=\"%4\" /><Preset value=\"0\" /><Filter value=\"%5\" /></Task>\n")
                        .arg(task.image, task.width, task.height, task.result, task.runFile);
        text += QStringLiteral(
            "<GlobalSettings><RenderingOptions><Jitter value=\"0\" /></RenderingOptions>"
            "<BitmapFormatOptions><DefaultFormat value=\"%1\" /><PFM /></BitmapFormatOptions>"
            "</GlobalSettings>\n</Tasks>\n")
                    .arg(format);
        writeFile(path(QStringLiteral("controlfile.xml")), text.toUtf8());
        return path(QStringLiteral("controlfile.xml"));
    }

    static ToolRun runTool(const QStringList& arguments,
        const QProcessEnvironment& env = QProcessEnvironment::systemEnvironment())
    {
        QProcess process;
        process.setProcessEnvironment(env);
        process.start(QStringLiteral(QUILLON_STANDIN_PATH), arguments);
        if (!process.waitForFinished(60000)) {
            process.kill();
            process.waitForFinished();
            return {};
        }
        return { process.exitCode(), process.exitStatus(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError()) };
    }

    QTemporaryDir m_dir;
};

} // namespace

TEST_F(StandinTool, RendersEachTaskAtItsSizeAndHonoursTheTestSwitches)
{
    const QString runA = writeRunFile(QStringLiteral("bth-run-0.ffxml"), 1, QStringLiteral("0.500"));
    const QString runB = writeRunFile(QStringLiteral("bth-run-1.ffxml"), 2, QStringLiteral("0.750"));
    const QString runC = writeRunFile(QStringLiteral("bth-run-2.ffxml"), 2, QStringLiteral("0.750"), 4);
    const QString a = path(QStringLiteral("a.png"));
    const QString d = path(QStringLiteral("d.png"));
    const QString control = writeControlFile({
        { QString(), "64", "48", a, runA },
        { QString(), "64", "48", path(QStringLiteral("b.png")), runB },
        { QString(), "64", "48", path(QStringLiteral("c.png")), runC },
        { QString(), "wide", QString(), d, runA },
    });
    const QString recordFile = path(QStringLiteral("record.txt"));
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QUILLON_STANDIN_EXIT_CODE"), QStringLiteral("7"));
    env.insert(QStringLiteral("QUILLON_STANDIN_RECORD"), recordFile);

    const ToolRun run = runTool({ control }, env);
    ASSERT_EQ(run.exitStatus, QProcess::NormalExit) << run.err.toStdString();
    EXPECT_EQ(run.exitCode, 7) << run.err.toStdString();
    EXPECT_TRUE(run.out.contains(QStringLiteral("Rendering task 1/4: ") + a));
    EXPECT_TRUE(run.out.contains(QStringLiteral("Rendering task 4/4: ") + d));
    EXPECT_TRUE(run.out.trimmed().endsWith(QStringLiteral("Done")));
    QFile record(recordFile);
    ASSERT_TRUE(record.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(record.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts),
        (QStringList { QStringLiteral("control ") + control, QStringLiteral("result ") + a,
            QStringLiteral("result ") + path(QStringLiteral("b.png")),
            QStringLiteral("result ") + path(QStringLiteral("c.png")), QStringLiteral("result ") + d }));

    const QImage imageA(a);
    const QImage imageB(path(QStringLiteral("b.png")));
    EXPECT_EQ(imageA.size(), QSize(64, 48));
    EXPECT_EQ(imageB.size(), QSize(64, 48));
    EXPECT_NE(imageA, imageB);
    EXPECT_NE(imageB, QImage(path(QStringLiteral("c.png")))) << "the map kind changes the picture";
    // Sizes that are not numbers give the default canvas.
    EXPECT_EQ(QImage(d).size(), QSize(600, 600));

    env.remove(QStringLiteral("QUILLON_STANDIN_EXIT_CODE"));
    env.insert(QStringLiteral("QUILLON_STANDIN_CRASH"), QStringLiteral("1"));
    EXPECT_EQ(runTool({ control }, env).exitStatus, QProcess::CrashExit);
}

TEST_F(StandinTool, InputImageGetsAVisibleEffectAndStaysUntouched)
{
    const QString input = path(QStringLiteral("stone.png"));
    QImage source(40, 30, QImage::Format_RGB32);
    source.fill(QColor(200, 120, 40));
    ASSERT_TRUE(source.save(input));
    const auto hash = [&input] {
        QFile file(input);
        return file.open(QIODevice::ReadOnly)
            ? QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256)
            : QByteArray();
    };
    const QByteArray before = hash();
    const QString result = path(QStringLiteral("stone-0001.png"));
    const QString runFile = writeRunFile(QStringLiteral("bth-run-0.ffxml"), 9, QStringLiteral("0.250"));

    EXPECT_EQ(runTool({ writeControlFile({ { input, "600", "600", result, runFile } }) }).exitCode, 0);
    const QImage rendered(result);
    EXPECT_EQ(rendered.size(), source.size());
    EXPECT_NE(rendered.convertToFormat(QImage::Format_RGB32), source);
    EXPECT_EQ(hash(), before);
}

TEST_F(StandinTool, FormatsQtCannotWriteGetPngBytesAtTheResultPath)
{
    const QString runFile = writeRunFile(QStringLiteral("bth-run-0.ffxml"), 3, QStringLiteral("0.100"));
    const QString exr = path(QStringLiteral("frame.exr"));
    EXPECT_EQ(runTool({ writeControlFile({ { QString(), "16", "8", exr, runFile } }, "EXR") }).exitCode, 0);
    QImageReader reader(exr);
    EXPECT_EQ(reader.format(), QByteArray("png"));
    EXPECT_EQ(reader.size(), QSize(16, 8));

    const QString jpeg = path(QStringLiteral("frame.jpeg"));
    EXPECT_EQ(runTool({ writeControlFile({ { QString(), "16", "8", jpeg, runFile } }, "JPEG") }).exitCode, 0);
    if (QImageReader::supportedImageFormats().contains("jpeg")) {
        EXPECT_EQ(QImageReader(jpeg).format(), QByteArray("jpeg"));
    }
    EXPECT_EQ(QImage(jpeg).size(), QSize(16, 8));
}

TEST_F(StandinTool, MissingOrUnreadableControlFileExitsWithOne)
{
    const QString notXml = path(QStringLiteral("controlfile.xml"));
    writeFile(notXml, "this is not a task list");
    for (const QStringList& arguments :
        { QStringList { path(QStringLiteral("nothing.xml")) }, QStringList { QString() }, QStringList {},
            QStringList { m_dir.path() }, QStringList { notXml } }) {
        const ToolRun run = runTool(arguments);
        EXPECT_EQ(run.exitStatus, QProcess::NormalExit);
        EXPECT_EQ(run.exitCode, 1) << arguments.join(QLatin1Char(' ')).toStdString();
        EXPECT_FALSE(run.err.isEmpty());
    }
}
