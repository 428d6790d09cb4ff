#include "chain/ui/PresetTitles.h"

#include "library/DefinitionReader.h"

#include <QDateTime>
#include <QFileInfo>

#include <algorithm>

namespace quillon {

QStringList PresetTitles::titlesFor(const Record& filter)
{
    const QString path = filter.string(key::path);
    const QString version
        = path + QLatin1Char('\n') + QFileInfo(path).lastModified().toString(Qt::ISODateWithMs);
    auto names = m_names.constFind(version);
    if (names == m_names.constEnd())
        names = m_names.insert(version, presetNamesWithPath(path));

    QStringList titles;
    const qint64 count = std::max<qint64>(0, presetCount(filter));
    for (qint64 i = 0; i < count; ++i) {
        const QString name = names->value(i);
        titles.append(name.isEmpty() ? tr("Preset %1").arg(i) : tr("Preset %1 — %2").arg(i).arg(name));
    }
    return titles;
}

} // namespace quillon
