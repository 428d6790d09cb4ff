#include "batch/RunLog.h"

#include "run/SafeFile.h"

#include <QDir>
#include <QFile>
#include <QMutexLocker>

#include <unistd.h>

namespace quillon {

const QString RunLog::kFileName = QStringLiteral("qlrn_logfile.txt");
const QString RunLog::kTitle = QStringLiteral("Quillon log");

RunLog::RunLog() = default;

RunLog::~RunLog()
{
    close();
}

bool RunLog::open(const QString& outputDir, QString* why)
{
    close();
    // A new file takes the name and stays open, so the appends go to that
    // file whatever comes to the name later.
    const int fd = createFileAtomically(QDir(outputDir).filePath(kFileName), kTitle.toUtf8(), why);
    if (fd < 0)
        return false;
    auto file = std::make_unique<QFile>();
    if (!file->open(fd, QIODevice::WriteOnly | QIODevice::Append, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        if (why)
            *why = file->errorString();
        return false;
    }
    const QMutexLocker lock(&m_mutex);
    m_file = std::move(file);
    return true;
}

void RunLog::write(const QString& text)
{
    const QMutexLocker lock(&m_mutex);
    if (text.isEmpty() || !m_file || !m_file->isOpen())
        return;
    m_file->write(text.toUtf8());
    m_file->flush();
}

void RunLog::close()
{
    const QMutexLocker lock(&m_mutex);
    if (!m_file)
        return;
    m_file->flush();
    m_file->close();
    m_file.reset();
}

bool RunLog::isOpen() const
{
    const QMutexLocker lock(&m_mutex);
    return m_file && m_file->isOpen();
}

} // namespace quillon
