#include "library/DefinitionReader.h"

#include <QFile>
#include <QFileInfo>

#include <pugixml.hpp>

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>

namespace quillon {

namespace {

// Whitespace-only text between elements is dropped (pugixml's default).
// The library reader needs no text at all, so text is stored in its element
// rather than as a node of its own; what is accepted does not change.
constexpr unsigned int kDetailParseOptions = pugi::parse_default;
constexpr unsigned int kLibraryParseOptions = pugi::parse_default | pugi::parse_embed_pcdata;

bool isNamed(const pugi::xml_node& node, const char* name)
{
    return node.type() == pugi::node_element && std::strcmp(node.name(), name) == 0;
}

// Reads the file once and parses it in place; `bytes` must outlive `document`.
// Returns the root element when it is named "Filter", a null node otherwise.
pugi::xml_node openDefinition(
    const QString& path, unsigned int options, QByteArray& bytes, pugi::xml_document& document)
{
    if (!readDefinitionFile(path, bytes))
        return {};
    const pugi::xml_parse_result parsed
        = document.load_buffer_inplace(bytes.data(), static_cast<size_t>(bytes.size()), options);
    if (!parsed)
        return {};
    const pugi::xml_node root = document.document_element();
    if (!isNamed(root, "Filter"))
        return {};
    return root;
}

// An optional sign followed by decimal digits, nothing else, within qint64.
std::optional<qint64> parseDecimalInteger(const char* text)
{
    const char* p = text;
    bool negative = false;
    if (*p == '+' || *p == '-') {
        negative = *p == '-';
        ++p;
    }
    if (*p == '\0')
        return std::nullopt;
    // Accumulate negatively so that the minimum of qint64 fits.
    constexpr qint64 lowest = std::numeric_limits<qint64>::min();
    qint64 value = 0;
    for (; *p != '\0'; ++p) {
        if (*p < '0' || *p > '9')
            return std::nullopt;
        const int digit = *p - '0';
        if (value < (lowest + digit) / 10)
            return std::nullopt;
        value = value * 10 - digit;
    }
    if (negative)
        return value;
    if (value == lowest)
        return std::nullopt;
    return -value;
}

std::optional<controlType> controlKindOfElement(const pugi::xml_node& node)
{
    if (node.type() != pugi::node_element)
        return std::nullopt;
    const char* name = node.name();
    if (std::strcmp(name, "IntSliderControl") == 0)
        return controlType::kTypeIntSlider;
    if (std::strcmp(name, "SliderControl") == 0)
        return controlType::kTypeSlider;
    if (std::strcmp(name, "AngleControl") == 0)
        return controlType::kTypeAngle;
    if (std::strcmp(name, "CheckboxControl") == 0)
        return controlType::kTypeCheckbox;
    return std::nullopt;
}

RecordPtr parameterFromControl(const pugi::xml_node& control, controlType kind, const QString& id)
{
    RecordPtr parameter = makeParameterRecord(kind, id);
    for (const pugi::xml_node& child : control.children()) {
        if (isNamed(child, "Name")) {
            parameter->setString(key::CONTROL_NAME, getAttributeFromNodeWithInelement(child, "value-en"));
        } else if (kind == controlType::kTypeIntSlider && isNamed(child, "RangeMax")) {
            // A value that is not a decimal integer is passed over, so the
            // slider keeps its default range.
            if (const auto rangeMax = parseDecimalInteger(child.attribute("value").value())) {
                parameter->setInteger(key::CONTROL_MAX, *rangeMax);
                parameter->setInteger(key::MAXVALUE, *rangeMax);
            }
        }
    }
    return parameter;
}

bool fail(QString* error, const QString& message)
{
    if (error)
        *error = message;
    return false;
}

} // namespace

bool readDefinitionFile(const QString& path, QByteArray& bytes, QString* error)
{
    bytes.clear();
    if (path.isEmpty())
        return fail(error, QStringLiteral("no file was given"));
    const QFileInfo info(path);
    if (!info.exists())
        return fail(error, QStringLiteral("%1 does not exist").arg(path));
    if (!info.isFile())
        return fail(error, QStringLiteral("%1 is not a regular file").arg(path));
    const QString tooLarge
        = QStringLiteral("%1 is larger than %2 MB").arg(path).arg(kMaxDefinitionBytes / (1024 * 1024));
    if (info.size() > kMaxDefinitionBytes)
        return fail(error, tooLarge);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return fail(error, QStringLiteral("cannot open %1: %2").arg(path, file.errorString()));
    // In pieces: the file may have grown since it was measured.
    bytes.reserve(static_cast<qsizetype>(info.size()));
    while (bytes.size() <= kMaxDefinitionBytes) {
        char piece[64 * 1024];
        const qint64 got = file.read(piece, sizeof piece);
        if (got < 0)
            return fail(error, QStringLiteral("cannot read %1: %2").arg(path, file.errorString()));
        if (got == 0)
            break;
        bytes.append(piece, static_cast<qsizetype>(got));
    }
    if (bytes.size() > kMaxDefinitionBytes) {
        bytes.clear();
        return fail(error, tooLarge);
    }
    return true;
}

QString getAttributeFromNodeWithInelement(const pugi::xml_node& inelement, const char* attribute)
{
    // value() of a missing attribute is "".
    return QString::fromUtf8(inelement.attribute(attribute).value());
}

QString getIDFromNodeWithInelement(const pugi::xml_node& inelement)
{
    return getAttributeFromNodeWithInelement(inelement, "id");
}

void processInformationNodeWithInnode(const pugi::xml_node& innode, Record& filterInfo)
{
    filterInfo.setString(key::author, getAttributeFromNodeWithInelement(innode, "author"));
    filterInfo.setString(key::name, getAttributeFromNodeWithInelement(innode, "name-en"));
}

void processFilterTypeNodeWithInnode(const pugi::xml_node& innode, Record& filterInfo)
{
    for (const pugi::xml_node& result : innode.children("Result")) {
        if (result.type() != pugi::node_element)
            continue;
        for (const pugi::xml_node& filterType : result.children("FilterType")) {
            if (filterType.type() == pugi::node_element)
                filterInfo.setString(key::filtertype, getAttributeFromNodeWithInelement(filterType, "value"));
        }
    }
}

RecordListPtr processComponentsNodeWithInnode(const pugi::xml_node& innode)
{
    auto components = std::make_shared<RecordList>();
    for (const pugi::xml_node& child : innode.children()) {
        const std::optional<controlType> kind = controlKindOfElement(child);
        if (!kind)
            continue;
        const QString id = getIDFromNodeWithInelement(child);
        if (id.isEmpty())
            continue;
        components->push_back(parameterFromControl(child, *kind, id));
    }
    components->push_back(generateVariationsSettings());
    return components;
}

QVariantMap processPresetsNodeWithInnode(const pugi::xml_node& innode)
{
    qint64 count = 0;
    for (const pugi::xml_node& child : innode.children()) {
        if (child.type() == pugi::node_element)
            ++count;
    }
    QVariantMap presets;
    presets.insert(key::PresetCount, QVariant::fromValue<qint64>(count));
    return presets;
}

RecordPtr getFilterInfoWithPath(const QString& path)
{
    RecordPtr filterInfo = Record::create();
    QByteArray bytes;
    pugi::xml_document document;
    const pugi::xml_node root = openDefinition(path, kLibraryParseOptions, bytes, document);
    if (!root)
        return filterInfo;
    for (const pugi::xml_node& child : root.children()) {
        if (isNamed(child, "Information"))
            processInformationNodeWithInnode(child, *filterInfo);
        else if (isNamed(child, "Components"))
            processFilterTypeNodeWithInnode(child, *filterInfo);
    }
    return filterInfo;
}

QString definitionProblem(const QString& path)
{
    QByteArray bytes;
    QString error;
    if (!readDefinitionFile(path, bytes, &error))
        return error.startsWith(path) ? QStringLiteral("it") + error.mid(path.size()) : error;
    pugi::xml_document document;
    const pugi::xml_parse_result parsed
        = document.load_buffer(bytes.constData(), static_cast<size_t>(bytes.size()), kDetailParseOptions);
    if (!parsed) {
        const qsizetype offset = std::clamp<qsizetype>(parsed.offset, 0, bytes.size());
        const qsizetype line = std::count(bytes.constBegin(), bytes.constBegin() + offset, '\n') + 1;
        return QStringLiteral("it is not XML: %1 at line %2")
            .arg(QString::fromUtf8(parsed.description()))
            .arg(line);
    }
    const pugi::xml_node root = document.document_element();
    if (!isNamed(root, "Filter"))
        return QStringLiteral("its root element is %1, not Filter").arg(QString::fromUtf8(root.name()));
    for (const char* needed : { "Information", "Presets" }) {
        if (!root.child(needed))
            return QStringLiteral("it has no %1 element").arg(QLatin1String(needed));
    }
    return {};
}

bool loadXMLInfoWithFilterdata(Record& filterData)
{
    QByteArray bytes;
    pugi::xml_document document;
    const pugi::xml_node root
        = openDefinition(filterData.string(key::path), kDetailParseOptions, bytes, document);
    if (!root)
        return false;
    for (const pugi::xml_node& child : root.children()) {
        if (isNamed(child, "Presets"))
            filterData.set(key::Presets, processPresetsNodeWithInnode(child));
        else if (isNamed(child, "Components"))
            filterData.setList(key::Components, processComponentsNodeWithInnode(child));
    }
    filterData.setInteger(key::ChoosenPreset, 0);
    return true;
}

bool loadXMLInfoWithFilterdata(const RecordPtr& filterData)
{
    return filterData && loadXMLInfoWithFilterdata(*filterData);
}

QStringList presetNamesWithPath(const QString& path)
{
    QStringList names;
    QByteArray bytes;
    pugi::xml_document document;
    const pugi::xml_node root = openDefinition(path, kDetailParseOptions, bytes, document);
    for (const pugi::xml_node& presets : root.children("Presets")) {
        for (const pugi::xml_node& preset : presets.children()) {
            if (preset.type() == pugi::node_element)
                names.append(QString::fromUtf8(preset.attribute("name-en").value()).trimmed());
        }
        break;
    }
    return names;
}

} // namespace quillon
