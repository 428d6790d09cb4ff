#pragma once

#include "library/Record.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

namespace quillon::test {

// Writes the small filter definition of support/data (one slider, one check
// box, two presets) named `name` into `directory` and returns its path.
QString writeBatchDefinition(
    const QString& directory, const QString& fileName, const QString& name, const QString& author);

// Writes a small real PNG image.
bool writeBatchInputImage(const QString& path);

// A chain record as the window makes it: the library record of the
// definition ("path" added) filled by the detail reader.
RecordPtr batchChainRecord(const QString& definitionPath);

// The bytes of a file; empty when it cannot be read.
QByteArray fileBytes(const QString& path);

// Writes `bytes` to `path`, making its folder first; false when that fails.
bool writeFileBytes(const QString& path, const QByteArray& bytes);

// Compares `actual` with the golden file tests/`name` of the source tree;
// QUILLON_WRITE_GOLDEN=1 rewrites the file instead (review the diff before
// committing it).
void expectGoldenFile(const QString& name, const QByteArray& actual);

// Names of the entries directly in `directory`, sorted.
QStringList batchDirectoryNames(const QString& directory);

// Path -> bytes of every file under `directory` (deep).
QMap<QString, QByteArray> batchSnapshot(const QString& directory);

// Sets an environment variable for the lifetime of the guard (children
// started meanwhile inherit it).
class BatchEnvGuard final {
public:
    BatchEnvGuard(const char* name, const QByteArray& value);
    ~BatchEnvGuard();
    BatchEnvGuard(const BatchEnvGuard&) = delete;
    BatchEnvGuard& operator=(const BatchEnvGuard&) = delete;

private:
    QByteArray m_name;
    QByteArray m_old;
    bool m_hadOld = false;
};

} // namespace quillon::test
