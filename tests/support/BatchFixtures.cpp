#include "support/BatchFixtures.h"

#include "library/DefinitionReader.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QSaveFile>

namespace quillon::test {

QString writeBatchDefinition(
    const QString& directory, const QString& fileName, const QString& name, const QString& author)
{
    const QString path = QDir(directory).filePath(fileName);
    QFile sample(QStringLiteral(QUILLON_SOURCE_DIR "/tests/support/data/batch-definition.ffxml"));
    if (!sample.open(QIODevice::ReadOnly))
        return {};
    const QByteArray text = sample.readAll().replace("@NAME@", name.toUtf8()).replace("@AUTHOR@", author.toUtf8());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return {};
    file.write(text);
    return file.commit() ? path : QString();
}

bool writeBatchInputImage(const QString& path)
{
    // An 8 x 6 PNG of one blue, written without QtGui so core tests need none.
    const QByteArray png = QByteArray::fromBase64("iVBORw0KGgoAAAANSUhEUgAAAAgAAAAGCAIAAABxZ0isAAAAEUlEQVR42m"
                                                  "PQqDiBFTEMpAQAqjNDgUtm74wAAAAASUVORK5CYII=");
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(png) == png.size();
}

RecordPtr batchChainRecord(const QString& definitionPath)
{
    RecordPtr record = getFilterInfoWithPath(definitionPath);
    if (!record)
        return nullptr;
    record->setString(key::path, definitionPath);
    return loadXMLInfoWithFilterdata(record) ? record : nullptr;
}

QStringList batchDirectoryNames(const QString& directory)
{
    QStringList names = QDir(directory).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    names.sort();
    return names;
}

QMap<QString, QByteArray> batchSnapshot(const QString& directory)
{
    QMap<QString, QByteArray> files;
    QDirIterator it(
        directory, QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        QFile file(path);
        files.insert(path, file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>"));
    }
    return files;
}

BatchEnvGuard::BatchEnvGuard(const char* name, const QByteArray& value)
    : m_name(name)
    , m_old(qgetenv(name))
    , m_hadOld(qEnvironmentVariableIsSet(name))
{
    qputenv(name, value);
}

BatchEnvGuard::~BatchEnvGuard()
{
    if (m_hadOld)
        qputenv(m_name.constData(), m_old);
    else
        qunsetenv(m_name.constData());
}

} // namespace quillon::test
