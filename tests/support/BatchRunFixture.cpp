#include "support/BatchRunFixture.h"

#include <QDir>
#include <QEventLoop>
#include <QTimer>

namespace quillon::test {

void RecordingBatchDisplay::showRenderInfo(const QString& info)
{
    ++renderCount;
    shown += info.toUtf8();
    if (info.size() < 4096)
        renderLines.append(info);
    if (onRender)
        onRender(info);
}

void BatchRunFixture::SetUp()
{
    ASSERT_TRUE(m_temp.isValid());
    const QDir root(m_temp.path());
    for (const char* name : { "filters", "out", "in" })
        ASSERT_TRUE(root.mkpath(QLatin1String(name)));
    m_out = root.filePath(QStringLiteral("out"));
    m_in = root.filePath(QStringLiteral("in"));
    m_filters = root.filePath(QStringLiteral("filters"));
    m_controller.setStandardOutput([this](const QString& line) { m_stdout.append(line); });

    m_settings.toolPath = QStringLiteral(QUILLON_STANDIN_PATH);
    m_settings.outputPath = m_out;
    m_settings.format = QStringLiteral("PNG");
    m_settings.frameCountText = QStringLiteral("2");
    m_settings.outputPrefix = QStringLiteral("p_");
}

RecordPtr BatchRunFixture::filter(const QString& name)
{
    const QString path = writeBatchDefinition(
        m_filters, name + QStringLiteral(".ffxml"), name, QStringLiteral("Quillon Tests"));
    RecordPtr record = batchChainRecord(path);
    EXPECT_TRUE(record);
    return record;
}

RecordList BatchRunFixture::chain(const QStringList& names)
{
    RecordList records;
    for (const QString& name : names)
        records.push_back(filter(name));
    return records;
}

QString BatchRunFixture::input(const QString& name)
{
    const QString path = QDir(m_in).filePath(name);
    EXPECT_TRUE(writeBatchInputImage(path));
    return path;
}

void BatchRunFixture::useInputs(int count)
{
    m_settings.sourcePath = input(QStringLiteral("a.png"));
    m_settings.inputMode = InputMode::File;
    if (count > 1) {
        input(QStringLiteral("b.png"));
        m_settings.inputMode = InputMode::Directory;
        m_settings.sourcePath = m_in;
    }
}

void BatchRunFixture::start(const RecordList& chain)
{
    QString error;
    ASSERT_TRUE(m_controller.startBatchWithSender(chain, m_settings, &error)) << error.toStdString();
}

QString BatchRunFixture::refusalOf(const RecordList& chain, const RunSettings& settings)
{
    QString error;
    if (!m_controller.startBatchWithSender(chain, settings, &error))
        return error;
    waitForIdle();
    return m_controller.refusal();
}

bool BatchRunFixture::waitForIdle()
{
    if (!m_controller.isRunning())
        return true;
    QEventLoop loop;
    QObject::connect(&m_controller, &BatchController::runFinished, &loop, &QEventLoop::quit);
    QObject::connect(&m_controller, &BatchController::runRefused, &loop, &QEventLoop::quit);
    QTimer::singleShot(100000, &loop, &QEventLoop::quit); // a safety net, not a wait
    if (m_controller.isRunning())
        loop.exec();
    return !m_controller.isRunning();
}

} // namespace quillon::test
