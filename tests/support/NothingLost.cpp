#include "support/NothingLost.h"

#include "support/BatchFixtures.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <sys/mount.h>
#include <unistd.h>

namespace quillon::test {

namespace {

QString canonicalDirWithSlash(const QString& directory)
{
    const QString canonical = QFileInfo(directory).canonicalFilePath();
    if (canonical.isEmpty())
        return {};
    return canonical.endsWith(QLatin1Char('/')) ? canonical : canonical + QLatin1Char('/');
}

// The path with its parent resolved (the file itself may be gone).
QString resolvedParentJoined(const QString& path)
{
    const QFileInfo info(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
    const QString parent = QFileInfo(info.absolutePath()).canonicalFilePath();
    return parent.isEmpty() ? QDir::cleanPath(info.absoluteFilePath())
                            : QDir(parent).filePath(info.fileName());
}

// Files below `directory` (deep) whose names are those of the temporary
// files of atomic writes.
QStringList leftoverTemporaryFiles(const QString& directory)
{
    // QSaveFile's "<name>.XXXXXX", QTemporaryFile's "qt_temp.XXXXXX", and the
    // task writers' own "<name>.quillon-<pid>-<n>".
    static const QRegularExpression atomicTemporary(
        QStringLiteral(R"(^(.+\.[^.]+\.[A-Za-z0-9]{6}|qt_temp\..*|.*\.tmp|.+\.quillon-\d+-\d+)$)"));
    QStringList found;
    QDirIterator it(directory, QDir::Files | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
        QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        if (atomicTemporary.match(QFileInfo(path).fileName()).hasMatch())
            found.append(path);
    }
    return found;
}

} // namespace

NothingLost::NothingLost(QString outputDir, QStringList inputRoots)
    : m_outputDir(std::move(outputDir))
    , m_inputRoots(std::move(inputRoots))
    , m_inputs(inputsNow())
    , m_outputBefore(batchSnapshot(m_outputDir))
    , m_canonicalOutputDir(canonicalDirWithSlash(m_outputDir))
{
}

QMap<QString, QByteArray> NothingLost::inputsNow() const
{
    QMap<QString, QByteArray> inputs;
    for (const QString& root : m_inputRoots) {
        QFile file(root);
        if (QFileInfo(root).isFile())
            inputs.insert(root, file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>"));
        else
            inputs.insert(batchSnapshot(root));
    }
    return inputs;
}

void NothingLost::expectNothingLost(const QStringList& lastStepOutputs, const QStringList& deletionList) const
{
    // The user's inputs, byte for byte.
    const QMap<QString, QByteArray> inputsAfter = inputsNow();
    EXPECT_EQ(inputsAfter.keys(), m_inputs.keys()) << "the inputs changed";
    for (auto it = m_inputs.begin(); it != m_inputs.end(); ++it)
        EXPECT_TRUE(inputsAfter.value(it.key()) == it.value()) << "input changed: " << it.key().toStdString();

    // What lay in the output directory before the run.
    for (auto it = m_outputBefore.begin(); it != m_outputBefore.end(); ++it) {
        QFile file(it.key());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << "lost: " << it.key().toStdString();
        EXPECT_TRUE(file.readAll() == it.value()) << "changed: " << it.key().toStdString();
    }

    // The last step's outputs.
    for (const QString& path : lastStepOutputs) {
        const QFileInfo info(path);
        EXPECT_TRUE(info.isFile() && info.size() > 0) << "last step output lost: " << path.toStdString();
    }

    // No temporary file of an atomic write.
    const QStringList temporaries = leftoverTemporaryFiles(m_outputDir);
    EXPECT_TRUE(temporaries.isEmpty()) << temporaries.join(QLatin1Char(' ')).toStdString();

    // The deletion list: generated paths inside the output directory only.
    const QString& inside = m_canonicalOutputDir;
    for (const QString& path : deletionList) {
        const QString resolved = resolvedParentJoined(path);
        EXPECT_TRUE(resolved.startsWith(inside) && resolved.size() > inside.size())
            << "outside the output directory: " << path.toStdString();
        EXPECT_FALSE(m_inputs.contains(path) || m_inputs.contains(resolved))
            << "an input is on the deletion list: " << path.toStdString();
        EXPECT_FALSE(m_outputBefore.contains(path) || m_outputBefore.contains(resolved))
            << "a file that was there before is on the deletion list: " << path.toStdString();
        EXPECT_FALSE(lastStepOutputs.contains(path) || lastStepOutputs.contains(resolved))
            << "a last step output is on the deletion list: " << path.toStdString();
    }
}

QStringList journalEntries(const QString& journalPath, const QString& kind)
{
    QFile file(journalPath);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QString prefix = kind + QLatin1Char(' ');
    QStringList values;
    for (const QByteArray& line : file.readAll().split('\n')) {
        const QString text = QString::fromUtf8(line);
        if (text.startsWith(prefix))
            values.append(text.mid(prefix.size()));
    }
    return values;
}

FileSizeLimit::FileSizeLimit(rlim_t bytes)
{
    if (::getrlimit(RLIMIT_FSIZE, &m_old) != 0)
        return;
    m_oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limited = m_old;
    limited.rlim_cur = bytes;
    m_active = ::setrlimit(RLIMIT_FSIZE, &limited) == 0;
    if (!m_active)
        std::signal(SIGXFSZ, m_oldHandler);
}

FileSizeLimit::~FileSizeLimit()
{
    if (!m_active)
        return;
    ::setrlimit(RLIMIT_FSIZE, &m_old);
    std::signal(SIGXFSZ, m_oldHandler);
}

TestMount TestMount::tmpfs(const QString& directory, qint64 bytes)
{
    TestMount mount;
    const QByteArray target = QFile::encodeName(directory);
    const QByteArray options = "size=" + QByteArray::number(bytes) + ",mode=0755";
    if (::mount("tmpfs", target.constData(), "tmpfs", MS_NOSUID | MS_NODEV, options.constData()) == 0)
        mount.m_target = directory;
    else
        mount.m_why = QStringLiteral("cannot mount a tmpfs: ") + QString::fromLocal8Bit(std::strerror(errno));
    return mount;
}

TestMount TestMount::readOnlyBind(const QString& directory)
{
    TestMount mount;
    const QByteArray target = QFile::encodeName(directory);
    if (::mount(target.constData(), target.constData(), nullptr, MS_BIND, nullptr) != 0) {
        mount.m_why = QStringLiteral("cannot bind-mount: ") + QString::fromLocal8Bit(std::strerror(errno));
        return mount;
    }
    mount.m_target = directory;
    if (::mount(nullptr, target.constData(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) != 0) {
        mount.m_why = QStringLiteral("cannot make the bind mount read-only: ")
            + QString::fromLocal8Bit(std::strerror(errno));
        ::umount2(target.constData(), MNT_DETACH);
        mount.m_target.clear();
    }
    return mount;
}

TestMount::TestMount(TestMount&& other) noexcept
    : m_target(std::exchange(other.m_target, QString()))
    , m_why(std::move(other.m_why))
{
}

TestMount::~TestMount()
{
    if (!m_target.isEmpty())
        ::umount2(QFile::encodeName(m_target).constData(), MNT_DETACH);
}

QString fillFileSystem(const QString& directory, const QString& name)
{
    const QString path = QDir(directory).filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return {};
    const QByteArray block(64 * 1024, 'f');
    qint64 total = 0;
    while (file.write(block) == block.size())
        total += block.size();
    // Top up the last partial block byte by byte.
    while (file.write("f", 1) == 1)
        ++total;
    file.close();
    return total > 0 ? path : QString();
}

} // namespace quillon::test
