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
    const QString text = QStringLiteral(R"(<?xml version="1.0" encoding="UTF-8"?>
<Filter>
  <Information name-en="%1" author="%2" description-en="A test filter."/>
  <Components>
    <Result><FilterType value="1"/></Result>
    <SliderControl id="amount"><Name value-en="Amount"/><DefaultValue value="0.5"/></SliderControl>
    <CheckboxControl id="invert"><Name value-en="Invert"/></CheckboxControl>
  </Components>
  <Presets>
    <Preset name-en="Default">
      <Settings variation="1" map_type="0" seamless="false"/>
      <Controls>
        <SliderControl id="amount"><Value value="0.500"/></SliderControl>
        <CheckboxControl id="invert"><Checked value="false"/></CheckboxControl>
      </Controls>
    </Preset>
    <Preset name-en="Strong">
      <Settings variation="7" map_type="0" seamless="false"/>
      <Controls>
        <SliderControl id="amount"><Value value="0.900"/></SliderControl>
        <CheckboxControl id="invert"><Checked value="true"/></CheckboxControl>
      </Controls>
    </Preset>
  </Presets>
</Filter>
)")
                             .arg(name, author);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return {};
    file.write(text.toUtf8());
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
