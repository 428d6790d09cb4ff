// Output names: the frame suffix, the base name of an input, the map suffix.

#include "step/FilterProcessObject.h"

#include "run/RunPlan.h"
#include "run/RunSettings.h"
#include <QStringView>

namespace quillon {

// ---- Output names -------------------------------------------------------------

QString filterProcessObject::getFileSuffixFor(qint64 index) const
{
    return frameSuffix(settings().nameStyle, index);
}

QString filterProcessObject::makeBaseNameFromPathWithPath(const QString& path)
{
    QStringView component(path);
    while (component.size() > 1 && component.endsWith(QLatin1Char('/')))
        component.chop(1);
    const qsizetype slash = component.lastIndexOf(QLatin1Char('/'));
    if (slash >= 0 && component.size() > 1)
        component = component.mid(slash + 1);
    const qsizetype dot = component.indexOf(QLatin1Char('.'));
    if (dot >= 0 && component.indexOf(QLatin1Char('.'), dot + 1) < 0)
        return component.left(dot).toString();
    return component.toString();
}

QString filterProcessObject::getMapNameWithMapindex(qint64 mapindex)
{
    return mapSuffix(mapindex);
}

} // namespace quillon
