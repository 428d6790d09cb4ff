#include "support/BatchRunFixture.h"

#include <QDir>

namespace quillon::test {

void RecordingBatchDisplay::showErrorAlert(const QString& message)
{
    alerts.append(message);
    events.append(QStringLiteral("alert:") + message);
}

void RecordingBatchDisplay::beginProgressSheet()
{
    events.append(QStringLiteral("begin"));
}

void RecordingBatchDisplay::endProgressSheet()
{
    events.append(QStringLiteral("end"));
    deletionList = m_controller->interimFiles();
}

void RecordingBatchDisplay::showFilterInfo(const QString& name, const QString& author)
{
    events.append(QStringLiteral("filter:%1|%2").arg(name, author));
}

void RecordingBatchDisplay::showSourceInfo(const QString& source)
{
    sources.append(source);
    events.append(QStringLiteral("source:") + source);
}

void RecordingBatchDisplay::showRenderInfo(const QString& info)
{
    ++renderCount;
    shown += info.toUtf8();
    if (info.size() < 4096)
        renderLines.append(info);
    if (onRender)
        onRender(info);
}

void RecordingBatchDisplay::runFinished(bool aborted)
{
    events.append(aborted ? QStringLiteral("finished:aborted") : QStringLiteral("finished"));
}

void BatchRunFixture::SetUp()
{
    ASSERT_TRUE(m_temp.isValid());
    const QDir root(m_temp.path());
    ASSERT_TRUE(root.mkpath(QStringLiteral("filters")));
    ASSERT_TRUE(root.mkpath(QStringLiteral("out")));
    ASSERT_TRUE(root.mkpath(QStringLiteral("in")));
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

QString BatchRunFixture::input(const QString& name)
{
    const QString path = QDir(m_in).filePath(name);
    EXPECT_TRUE(writeBatchInputImage(path));
    return path;
}

bool BatchRunFixture::isTaskFile(const QString& name)
{
    return name == QLatin1String("controlfile.xml") || name.endsWith(QLatin1String(".ffxml"));
}

QStringList BatchRunFixture::taskFilesLeft() const
{
    QStringList left;
    for (const QString& name : batchDirectoryNames(m_out)) {
        if (isTaskFile(name))
            left.append(name);
    }
    return left;
}

} // namespace quillon::test
