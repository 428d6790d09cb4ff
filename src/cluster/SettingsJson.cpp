// The run settings of a cluster bundle as JSON: every field, so each
// element of the job array runs with exactly the settings of the plan.

#include "cluster/ClusterBundle.h"

#include <QJsonArray>

#include <algorithm>

namespace quillon {

namespace {

struct TextField {
    const char* name;
    QString RunSettings::*field;
};

struct IntField {
    const char* name;
    int RunSettings::*field;
};

const TextField kTexts[] = {
    { "toolPath", &RunSettings::toolPath },
    { "outputPath", &RunSettings::outputPath },
    { "sourcePath", &RunSettings::sourcePath },
    { "outputPrefix", &RunSettings::outputPrefix },
    { "frameCountText", &RunSettings::frameCountText },
    { "widthText", &RunSettings::widthText },
    { "heightText", &RunSettings::heightText },
    { "format", &RunSettings::format },
    { "jpegQualityText", &RunSettings::jpegQualityText },
};

const IntField kInts[] = {
    { "antiAlias", &RunSettings::antiAlias },
    { "multithread", &RunSettings::multithread },
    { "normalmapFlip", &RunSettings::normalmapFlip },
    { "dither", &RunSettings::dither },
    { "progressive", &RunSettings::progressive },
    { "toolLog", &RunSettings::toolLog },
    { "cleanup", &RunSettings::cleanup },
    { "jpegFullPrecision", &RunSettings::jpegFullPrecision },
    { "pngIncludeTrans", &RunSettings::pngIncludeTrans },
    { "tiffIncludeTrans", &RunSettings::tiffIncludeTrans },
    { "tiffFloatFormat", &RunSettings::tiffFloatFormat },
    { "tgaIncludeTrans", &RunSettings::tgaIncludeTrans },
    { "tgaFlipOrder", &RunSettings::tgaFlipOrder },
    { "pngBitDepth", &RunSettings::pngBitDepth },
    { "pngCompression", &RunSettings::pngCompression },
    { "tiffBitDepth", &RunSettings::tiffBitDepth },
    { "tiffCompression", &RunSettings::tiffCompression },
    { "tgaBitDepth", &RunSettings::tgaBitDepth },
    { "presetIndex", &RunSettings::presetIndex },
    { "activateMaps", &RunSettings::activateMaps },
    { "toolJobs", &RunSettings::toolJobs },
};

} // namespace

QJsonObject settingsToJson(const RunSettings& settings)
{
    QJsonObject json;
    for (const TextField& entry : kTexts)
        json.insert(QLatin1String(entry.name), settings.*entry.field);
    for (const IntField& entry : kInts)
        json.insert(QLatin1String(entry.name), settings.*entry.field);
    json.insert(QStringLiteral("inputMode"), static_cast<int>(settings.inputMode));
    json.insert(QStringLiteral("nameStyle"), static_cast<int>(settings.nameStyle));
    QJsonArray maps;
    for (const int box : settings.mapBoxes)
        maps.append(box);
    json.insert(QStringLiteral("mapBoxes"), maps);
    // 64 bits do not fit a JSON number.
    if (settings.seed)
        json.insert(QStringLiteral("seed"), QString::number(*settings.seed));
    return json;
}

RunSettings settingsFromJson(const QJsonObject& json)
{
    RunSettings settings;
    for (const TextField& entry : kTexts) {
        if (const QJsonValue value = json.value(QLatin1String(entry.name)); value.isString())
            settings.*entry.field = value.toString();
    }
    for (const IntField& entry : kInts) {
        if (const QJsonValue value = json.value(QLatin1String(entry.name)); value.isDouble())
            settings.*entry.field = value.toInt();
    }
    settings.inputMode
        = static_cast<InputMode>(std::clamp(json.value(QStringLiteral("inputMode")).toInt(), 0, 2));
    settings.nameStyle
        = static_cast<FrameStyle>(std::clamp(json.value(QStringLiteral("nameStyle")).toInt(), 0, 2));
    const QJsonArray maps = json.value(QStringLiteral("mapBoxes")).toArray();
    for (qsizetype i = 0; i < maps.size() && i < static_cast<qsizetype>(settings.mapBoxes.size()); ++i)
        settings.mapBoxes[static_cast<size_t>(i)] = maps.at(i).toInt();
    bool ok = false;
    const quint64 seed = json.value(QStringLiteral("seed")).toString().toULongLong(&ok);
    if (ok)
        settings.seed = seed;
    return settings;
}

} // namespace quillon
