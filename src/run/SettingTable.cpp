#include "run/SettingTable.h"

#include "run/RunSettings.h"
#include "run/SettingFlags.h"

#include <algorithm>
#include <type_traits>
#include <vector>

namespace quillon {

namespace {

using Kind = SettingKind;
using namespace settingflags;

// ---- Reading and writing a RunSettings field as a QVariant ----

template <auto Field> QVariant getField(const RunSettings& settings)
{
    const auto& value = settings.*Field;
    using T = std::decay_t<decltype(value)>;
    if constexpr (std::is_enum_v<T>) {
        return static_cast<int>(value);
    } else if constexpr (std::is_same_v<T, std::optional<quint64>>) {
        return value ? QVariant::fromValue<qulonglong>(*value) : QVariant();
    } else if constexpr (std::is_same_v<T, std::array<int, 10>>) {
        QVariantList boxes;
        for (const int box : value)
            boxes.append(box);
        return boxes;
    } else {
        return QVariant::fromValue(value);
    }
}

template <auto Field> void setField(RunSettings& settings, const QVariant& from)
{
    auto& value = settings.*Field;
    using T = std::decay_t<decltype(value)>;
    if constexpr (std::is_enum_v<T>) {
        value = static_cast<T>(std::clamp(from.toInt(), 0, 2));
    } else if constexpr (std::is_same_v<T, std::optional<quint64>>) {
        value = from.isValid() ? std::optional<quint64>(from.toULongLong()) : std::nullopt;
    } else if constexpr (std::is_same_v<T, std::array<int, 10>>) {
        const QVariantList boxes = from.toList();
        for (qsizetype i = 0; i < boxes.size() && i < static_cast<qsizetype>(value.size()); ++i)
            value[static_cast<size_t>(i)] = boxes.at(i).toInt();
    } else if constexpr (std::is_same_v<T, QString>) {
        value = from.toString();
    } else {
        value = from.toInt();
    }
}

QJsonValue reportInputMode(const RunSettings& settings)
{
    static const char* const kModes[] = { "file", "directory", "none" };
    return QLatin1String(kModes[static_cast<int>(settings.inputMode)]);
}

QJsonValue reportMaps(const RunSettings& settings)
{
    return settings.activateMaps == 1;
}

// ---- Building the rows ----

class Row {
public:
    template <auto Field> static Row of(const char* key, Kind kind, QVariant defaultValue)
    {
        Row row;
        row.m_d.key = QLatin1String(key);
        row.m_d.kind = kind;
        row.m_d.defaultValue = std::move(defaultValue);
        row.m_d.get = &getField<Field>;
        row.m_d.set = &setField<Field>;
        return row;
    }
    // Stored in the preferences as text (else as an integer); `resets`:
    // Reset Preferences writes the default.
    Row& pref(const QString& key, bool text, bool resets = true)
    {
        m_d.preferenceKey = key;
        m_d.preferenceIsText = text;
        m_d.resets = resets;
        return *this;
    }
    Row& flag(const char* name, const char* valueName, const char* help, FlagValue value = FlagValue::Text,
        QStringList choices = {})
    {
        m_d.flag = QLatin1String(name);
        m_d.flagValueName = QLatin1String(valueName);
        m_d.flagHelp = QLatin1String(help);
        m_d.flagValue = value;
        m_d.choices = std::move(choices);
        return *this;
    }
    // An on|off flag.
    Row& onOff(const char* name)
    {
        return flag(
            name, "on|off", "Switch.", FlagValue::Choice, { QStringLiteral("on"), QStringLiteral("off") });
    }
    // A flag taking one of `choices`, stored as its index.
    Row& choice(const char* name, QStringList choices)
    {
        const QByteArray help = choices.join(QLatin1Char('|')).toLatin1();
        flag(name, "VALUE", help.constData(), FlagValue::Choice, std::move(choices));
        return *this;
    }
    Row& parse(bool (*parser)(RunSettings&, const QString&, QString*))
    {
        m_d.parseFlag = parser;
        return *this;
    }
    Row& json() { return json(m_d.key); }
    Row& json(const QString& name)
    {
        m_d.jsonName = name;
        return *this;
    }
    Row& report(const char* name, QJsonValue (*value)(const RunSettings&) = nullptr)
    {
        m_d.reportName = QLatin1String(name);
        m_d.reportValue = value;
        return *this;
    }
    SettingDefinition take() { return std::move(m_d); }

private:
    SettingDefinition m_d;
};

// The rows in the order quillon-cli lists their flags; rows without a flag
// follow.
std::vector<SettingDefinition> makeTable()
{
    using F = FlagValue;
    using RS = RunSettings;
    Row rows[] = {
        Row::of<&RS::toolPath>("toolPath", Kind::Path, QString())
            .pref(pref::TOOL_PATH, true)
            .flag("tool", "PATH", "The render tool executable; a name without a slash is looked up on PATH.",
                F::Command)
            .json()
            .report("tool"),
        Row::of<&RS::winePrefix>("winePrefix", Kind::Path, QString())
            .flag("wine", "PREFIX",
                "Run the render tool, a Windows program (.exe), under Wine: --wine alone in the user's "
                "prefix ($WINEPREFIX, else ~/.wine), --wine=PREFIX in that one. The tool gets every path in "
                "its Windows form.",
                F::Directory)
            .parse(parseWine),
        Row::of<&RS::wineBinary>("wineBinary", Kind::Path, QString())
            .flag(
                "wine-binary", "PATH", "With --wine: the wine launcher (default: wine on PATH).", F::Command),
        Row::of<&RS::outputPath>("outputPath", Kind::Path, QString())
            .pref(pref::OUTPUT_DIR, true)
            .flag("output", "DIR", "The output directory (also holds the task files and the log).",
                F::Directory)
            .json()
            .report("output"),
        Row::of<&RS::sourcePath>("sourcePath", Kind::Path, QString())
            .pref(pref::INPUT_PATH, true)
            .flag("input", "FILE", "Render one input image.", F::File)
            .parse(parseInputFile)
            .json()
            .report("source"),
        // Stored as IMAGE or DIR by the source pop-up, which a reset leaves alone.
        Row::of<&RS::inputMode>("inputMode", Kind::Choice, static_cast<int>(InputMode::File))
            .pref(pref::INPUT_MODE, true, false)
            .flag("input-dir", "DIR",
                "Render every entry under DIR, files and subdirectories, at any depth, sorted by path; "
                "entries whose path inside DIR begins with \".\" are skipped.",
                F::Directory)
            .parse(parseInputDirectory)
            .json()
            .report("inputMode", reportInputMode),
        // The field's text, as typed; the run reads its leading number.
        Row::of<&RS::frameCountText>("frameCountText", Kind::WholeNumber, QStringLiteral("10"))
            .pref(pref::NUM_FRAMES, true)
            .flag("frames", "N", "Frames per input (default 10).")
            .json()
            .report("frames"),
        Row::of<&RS::widthText>("widthText", Kind::WholeNumber, QStringLiteral("600"))
            .pref(pref::SET_WIDTH, true)
            .flag("width", "W", "Width without input (default 600).")
            .json()
            .report("width"),
        Row::of<&RS::heightText>("heightText", Kind::WholeNumber, QStringLiteral("600"))
            .pref(pref::SET_HEIGHT, true)
            .flag("height", "H", "Height without input (default 600).")
            .json()
            .report("height"),
        Row::of<&RS::outputPrefix>("outputPrefix", Kind::Text, QStringLiteral("my-export"))
            .pref(pref::OUT_PREFIX, true)
            .flag("prefix", "TEXT", "Output name prefix (default my-export).")
            .json()
            .report("prefix"),
        // Written by its pop-up only; a reset keeps the user's choice.
        Row::of<&RS::nameStyle>("nameStyle", Kind::Choice, static_cast<int>(FrameStyle::Plain))
            .pref(pref::OUTPUT_SUFFIX, true, false)
            .flag("frame-style", "STYLE", "Frame numbering: plain (default), four-digit or letter.",
                F::Choice,
                { QStringLiteral("plain"), QStringLiteral("four-digit"), QStringLiteral("letter") })
            .json()
            .report("frameStyle"),
        Row::of<&RS::format>("format", Kind::Name, QStringLiteral("JPEG"))
            .pref(pref::EXPORT_FORMAT, true)
            .flag("format", "FORMAT", "JPEG, PNG, TIFF, TGA, BMP, EXR or PFM (default JPEG).", F::Choice,
                { QStringLiteral("JPEG"), QStringLiteral("PNG"), QStringLiteral("TIFF"),
                    QStringLiteral("TGA"), QStringLiteral("BMP"), QStringLiteral("EXR"),
                    QStringLiteral("PFM") })
            .parse(parseFormat)
            .json()
            .report("format"),
        // The selected item of the preset pop-up, kept with the chain.
        Row::of<&RS::presetIndex>("presetIndex", Kind::Integer, 0)
            .flag("preset", "K", "Zero-based preset index for every step (default 0).")
            .parse(parsePreset)
            .json()
            .report("preset"),
        // Map boxes in map-index order, kept with the chain.
        Row::of<&RS::mapBoxes>("mapBoxes", Kind::Maps, QVariantList { 1, 0, 0, 0, 0, 0, 0, 0, 0, 0 })
            .flag("maps", "LIST",
                "Render maps (one-filter chains): "
                "base,alpha,diffuse,bump,normal,specstr,specexp,ao,ro,metallic.",
                F::Choice,
                { QStringLiteral("base"), QStringLiteral("alpha"), QStringLiteral("diffuse"),
                    QStringLiteral("bump"), QStringLiteral("normal"), QStringLiteral("specstr"),
                    QStringLiteral("specexp"), QStringLiteral("ao"), QStringLiteral("ro"),
                    QStringLiteral("metallic") })
            .parse(parseMaps)
            .json(),
        Row::of<&RS::toolLog>("toolLog", Kind::Switch, 0)
            .pref(pref::CB_TOOLLOG, false)
            .flag("log", "", "Write the tool's output to qlrn_logfile.txt in the output directory.", F::None)
            .json(),
        Row::of<&RS::seed>("seed", Kind::Seed, QVariant())
            .flag("seed", "N", "Seed of the run's random values.")
            .parse(parseSeed)
            .json(),
        Row::of<&RS::antiAlias>("antiAlias", Kind::Switch, 1)
            .pref(pref::CB_ANTIALIAS, false)
            .onOff("antialias")
            .json(),
        Row::of<&RS::multithread>("multithread", Kind::Switch, 1)
            .pref(pref::CB_MT, false)
            .onOff("multithread")
            .json(),
        Row::of<&RS::dither>("dither", Kind::Switch, 0).pref(pref::CB_DITHER, false).onOff("dither").json(),
        Row::of<&RS::progressive>("progressive", Kind::Switch, 1)
            .pref(pref::CB_PROGRESSIVE, false)
            .onOff("progressive")
            .json(),
        Row::of<&RS::normalmapFlip>("normalmapFlip", Kind::Switch, 0)
            .pref(pref::CB_NORMALFLIP, false)
            .onOff("normal-flip")
            .json(),
        Row::of<&RS::jpegFullPrecision>("jpegFullPrecision", Kind::MixedSwitch, 1)
            .pref(pref::JPEG_FULLPRECISION, false)
            .onOff("jpeg-full-precision")
            .json(),
        Row::of<&RS::pngIncludeTrans>("pngIncludeTrans", Kind::MixedSwitch, 0)
            .pref(pref::PNG_INCLUDETRANS, false)
            .onOff("png-transparency")
            .json(),
        Row::of<&RS::tiffIncludeTrans>("tiffIncludeTrans", Kind::MixedSwitch, 1)
            .pref(pref::TIFF_INCLUDETRANS, false)
            .onOff("tiff-transparency")
            .json(),
        Row::of<&RS::tiffFloatFormat>("tiffFloatFormat", Kind::MixedSwitch, 0)
            .pref(pref::TIFF_FLOATFORMAT, false)
            .onOff("tiff-float")
            .json(),
        Row::of<&RS::tgaIncludeTrans>("tgaIncludeTrans", Kind::MixedSwitch, 1)
            .pref(pref::TGA_INCLUDETRANS, false)
            .onOff("tga-transparency")
            .json(),
        Row::of<&RS::tgaFlipOrder>("tgaFlipOrder", Kind::MixedSwitch, 0)
            .pref(pref::TGA_FLIPORDER, false)
            .onOff("tga-flip")
            .json(),
        Row::of<&RS::jpegQualityText>("jpegQualityText", Kind::WholeNumber, QStringLiteral("80"))
            .pref(pref::JPEG_QUALITY, false)
            .flag("jpeg-quality", "Q", "JPEG quality (default 80).")
            .json(),
        Row::of<&RS::pngBitDepth>("pngBitDepth", Kind::Choice, 0)
            .pref(pref::PNG_BITDEPTH, false)
            .choice("png-bitdepth", { QStringLiteral("8"), QStringLiteral("16") })
            .json(),
        Row::of<&RS::pngCompression>("pngCompression", Kind::Choice, 0)
            .pref(pref::PNG_COMPRESSION, false)
            .choice(
                "png-compression", { QStringLiteral("none"), QStringLiteral("fast"), QStringLiteral("best") })
            .json(),
        Row::of<&RS::tiffBitDepth>("tiffBitDepth", Kind::Choice, 0)
            .pref(pref::TIFF_BITDEPTH, false)
            .choice("tiff-bitdepth", { QStringLiteral("8"), QStringLiteral("16"), QStringLiteral("24") })
            .json(),
        Row::of<&RS::tiffCompression>("tiffCompression", Kind::Choice, 0)
            .pref(pref::TIFF_COMPRESSION, false)
            .choice("tiff-compression",
                { QStringLiteral("none"), QStringLiteral("lzw"), QStringLiteral("deflate") })
            .json(),
        Row::of<&RS::tgaBitDepth>("tgaBitDepth", Kind::Choice, 0)
            .pref(pref::TGA_BITDEPTH, false)
            .choice("tga-bitdepth", { QStringLiteral("24"), QStringLiteral("32") })
            .json(),
        // The window keeps the field's text; the run its number.
        Row::of<&RS::toolJobs>("toolJobs", Kind::Integer, 1)
            .pref(pref::TOOL_JOBS, true)
            .flag("jobs", "N",
                "Render tool processes at once (default 1): the inputs of a step are spread over N slots; 0 "
                "uses one per core.")
            .parse(parseJobs)
            .json(),
        // The tool is a Windows program run under Wine (--wine turns it on).
        Row::of<&RS::toolWine>("toolWine", Kind::Switch, 0).pref(pref::TOOL_WINE, false),
        Row::of<&RS::cleanup>("cleanup", Kind::Switch, 1).pref(pref::CB_CLEANUP, false).json(),
        // On when the chain's maps box is; --maps turns it on.
        Row::of<&RS::activateMaps>("activateMaps", Kind::Switch, 0).json().report("maps", reportMaps),
    };
    std::vector<SettingDefinition> table;
    for (Row& row : rows)
        table.push_back(row.take());
    return table;
}

template <class Match> const SettingDefinition* findRow(Match match)
{
    for (const SettingDefinition& row : settingTable()) {
        if (match(row))
            return &row;
    }
    return nullptr;
}

} // namespace

std::span<const SettingDefinition> settingTable()
{
    static const std::vector<SettingDefinition> table = makeTable();
    return table;
}

const SettingDefinition* findSetting(const QString& key)
{
    return findRow([&key](const SettingDefinition& row) { return row.key == key; });
}

const SettingDefinition* findSettingByPreference(const QString& preferenceKey)
{
    return findRow(
        [&preferenceKey](const SettingDefinition& row) { return row.preferenceKey == preferenceKey; });
}

const SettingDefinition* findSettingByFlag(const QString& flag)
{
    return findRow([&flag](const SettingDefinition& row) { return !flag.isEmpty() && row.flag == flag; });
}

} // namespace quillon
