// Output names: the frame suffix, the base name of an input, the map suffix.

#include "step/FilterProcessObject.h"

#include "run/RunSettings.h"
#include <QStringView>

namespace quillon {

// ---- Output names -------------------------------------------------------------

QString filterProcessObject::getFileSuffixFor(qint64 index) const
{
    switch (settings().nameStyle) {
    case FrameStyle::Plain:
        return QLatin1Char('-') + QString::number(index + 1);
    case FrameStyle::FourDigit:
        return QString::asprintf("-%04lld", static_cast<long long>(index + 1));
    case FrameStyle::Letter: {
        const qint64 code = 97 + index;
        const bool valid = code >= 0 && code <= 0x10FFFF && !(code >= 0xD800 && code <= 0xDFFF);
        if (!valid) // past the last character: fall back to the plain number
            return QLatin1Char('-') + QString::number(index + 1);
        const char32_t character = static_cast<char32_t>(code);
        return QLatin1Char('-') + QString::fromUcs4(&character, 1);
    }
    default:
        return {};
    }
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
    switch (mapindex) {
    case 1:
        return QStringLiteral("_alpha");
    case 2:
        return QStringLiteral("_diffuse");
    case 3:
        return QStringLiteral("_bump");
    case 4:
        return QStringLiteral("_normal");
    case 5:
        return QStringLiteral("_specstr");
    case 6:
        return QStringLiteral("_specexp");
    case 7:
        return QStringLiteral("_ao");
    case 8:
        return QStringLiteral("_ro");
    case 9:
        return QStringLiteral("_metallic");
    default:
        return QStringLiteral("_base");
    }
}

} // namespace quillon
