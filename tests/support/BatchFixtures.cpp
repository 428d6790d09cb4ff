#include "support/BatchFixtures.h"

#include "library/DefinitionReader.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <gtest/gtest.h>

namespace quillon::test {

QString writeBatchDefinition(
    const QString& directory, const QString& fileName, const QString& name, const QString& author)
{
    const QString path = QDir(directory).filePath(fileName);
    const QString sample = QStringLiteral(QUILLON_SOURCE_DIR "/tests/support/data/batch-definition.ffxml");
    const QByteArray text
        = fileBytes(sample).replace("@NAME@", name.toUtf8()).replace("@AUTHOR@", author.toUtf8());
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
    return writeFileBytes(path, png);
}

RecordPtr batchChainRecord(const QString& definitionPath)
{
    RecordPtr record = getFilterInfoWithPath(definitionPath);
    if (!record)
        return nullptr;
    record->setString(key::path, definitionPath);
    return loadXMLInfoWithFilterdata(record) ? record : nullptr;
}

QByteArray fileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFileBytes(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).absolutePath()) && file.open(QIODevice::WriteOnly)
        && file.write(bytes) == bytes.size();
}

void expectGoldenFile(const QString& name, const QByteArray& actual)
{
    const QString path = QStringLiteral(QUILLON_SOURCE_DIR "/tests/") + name;
    QSaveFile file(path);
    if (qEnvironmentVariableIsSet("QUILLON_WRITE_GOLDEN") && file.open(QIODevice::WriteOnly)) {
        file.write(actual);
        file.commit();
    }
    // As std::string, so that a failure shows a line diff.
    EXPECT_EQ(actual.toStdString(), fileBytes(path).toStdString()) << name.toStdString();
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
