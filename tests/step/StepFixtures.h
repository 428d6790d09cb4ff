#pragma once

// Shared fixtures of the step tests: a filter definition of our own, the
// records that go with it, and a readable dump of XML trees.

#include "library/Record.h"
#include "step/FilterProcessObject.h"
#include "support/StepTestParent.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <memory>
#include <ostream>

inline void PrintTo(const QString& text, std::ostream* os)
{
    *os << '"' << text.toStdString() << '"';
}

namespace quillon::steptest {

// Settings and one Value carry extra attributes so that the order of
// rewritten attributes shows.
inline const char* const kDefinition = R"(<?xml version="1.0" encoding="UTF-8"?>
<Filter><Information name-en="Stone Glow" author="Quillon Tests" description-en="Glow for stones"/>
<Components><Result><FilterType value="1"/></Result>
<SliderControl id="glow_amount"><Name value-en="Glow Amount"/><DefaultValue value="0.5"/></SliderControl>
<IntSliderControl id="radius"><Name value-en="Radius"/><RangeMax value="255"/></IntSliderControl>
<AngleControl id="angle"><Name value-en="Angle"/></AngleControl>
<CheckboxControl id="invert"><Name value-en="Invert"/></CheckboxControl></Components>
<Presets><Preset name-en="Default"><Settings variation="1" map_type="0" seamless="false"/><Controls>
<SliderControl id="glow_amount"><Value value="0.500"/></SliderControl>
<IntSliderControl id="radius"><Value value="12" unit="px"/></IntSliderControl>
<AngleControl id="angle"><Value value="45.000"/></AngleControl>
<CheckboxControl id="invert"><Checked value="false"/></CheckboxControl></Controls></Preset>
<Preset name-en="Strong" locked="true"><Settings variation="9" map_type="0" seamless="true"/><Controls>
<SliderControl id="glow_amount"><Value value="0.900"/></SliderControl>
<IntSliderControl id="radius"><Value value="40" unit="px"/></IntSliderControl>
<AngleControl id="angle"><Value value="90.000"/></AngleControl>
<CheckboxControl id="invert"><Checked value="true"/></CheckboxControl></Controls></Preset></Presets></Filter>
)";

inline bool writeText(const QString& path, const QByteArray& text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

inline QByteArray readText(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// One line per element: indentation, name, then the attributes in document
// order. Text content is shown as text="...".
inline QString dumpTree(pugi::xml_node node, int depth = 0)
{
    QString out;
    const QString indent(depth * 2, QLatin1Char(' '));
    for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling()) {
        if (child.type() == pugi::node_pcdata)
            out += indent + QStringLiteral("text=\"%1\"\n").arg(child.value());
        if (child.type() != pugi::node_element)
            continue;
        out += indent + QString::fromUtf8(child.name());
        for (pugi::xml_attribute a = child.first_attribute(); a; a = a.next_attribute())
            out += QStringLiteral(" %1=\"%2\"")
                       .arg(QString::fromUtf8(a.name()), QString::fromUtf8(a.value()));
        out += QLatin1Char('\n') + dumpTree(child, depth + 1);
    }
    return out;
}

inline bool load(pugi::xml_document& document, const QString& path)
{
    const QByteArray bytes = readText(path);
    return document.load_buffer(bytes.constData(), static_cast<size_t>(bytes.size()));
}

inline QString dumpFile(const QString& path)
{
    pugi::xml_document document;
    return load(document, path) ? dumpTree(document) : QStringLiteral("<unreadable>");
}

// The attribute an XPath query selects first; empty when there is none.
inline QString xpathValue(const QString& path, const char* query)
{
    pugi::xml_document document;
    load(document, path);
    return QString::fromUtf8(document.select_node(query).attribute().value());
}

// How many nodes an XPath query finds in a file; -1 when it is unreadable.
inline int countNodes(const QString& path, const char* query)
{
    pugi::xml_document document;
    return load(document, path) ? static_cast<int>(document.select_nodes(query).size()) : -1;
}

inline RecordPtr parameter(const Record& filter, const QString& id)
{
    if (const RecordListPtr list = filter.list(key::Components))
        for (const RecordPtr& p : *list)
            if (p->string(key::CONTROL_ID) == id)
                return p;
    return nullptr;
}

inline void activate(const Record& filter, const QString& id, qint64 mode)
{
    const RecordPtr p = parameter(filter, id);
    p->setInteger(key::ACTIVE, 1);
    p->setInteger(key::POPSTATE, mode);
}

// A temporary folder with in/ and out/, a definition file and a chain record
// for it whose parameters, as the definition reader gives them plus the
// Variations row last, are all inactive.
class StepTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QDir(dir.path()).mkpath(QStringLiteral("in")));
        ASSERT_TRUE(QDir(dir.path()).mkpath(QStringLiteral("out")));
        inDir = dir.filePath(QStringLiteral("in"));
        outDir = dir.filePath(QStringLiteral("out"));
        definitionPath = dir.filePath(QStringLiteral("stone-glow.ffxml"));
        ASSERT_TRUE(writeText(definitionPath, kDefinition));

        auto list = std::make_shared<RecordList>();
        list->push_back(makeParameterRecord(controlType::kTypeSlider, QStringLiteral("glow_amount")));
        list->push_back(makeParameterRecord(controlType::kTypeIntSlider, QStringLiteral("radius")));
        list->back()->setInteger(key::MAXVALUE, 255);
        list->push_back(makeParameterRecord(controlType::kTypeAngle, QStringLiteral("angle")));
        list->push_back(makeParameterRecord(controlType::kTypeCheckbox, QStringLiteral("invert")));
        list->push_back(generateVariationsSettings());
        list->back()->setInteger(key::ACTIVE, 0);
        filter = Record::create();
        filter->setString(key::name, QStringLiteral("Stone Glow"));
        filter->setString(key::author, QStringLiteral("Quillon Tests"));
        filter->setString(key::path, definitionPath);
        filter->setList(key::Components, list);
        filter->setInteger(key::ChoosenPreset, 0);

        host.settings.format = QStringLiteral("PNG");
        host.settings.nameStyle = FrameStyle::FourDigit;
        host.settings.frameCountText = QStringLiteral("2");
        host.prefix.clear();
    }

    std::unique_ptr<filterProcessObject> makeStep(RecordPtr record, bool isFirst, bool isLast, qint64 chainid,
        QStringList inFiles = {}, QStringList names = {})
    {
        auto step = std::make_unique<filterProcessObject>(
            std::move(record), inFiles, QStringList(), isFirst, isLast, chainid, &host, names);
        step->toolPath = QStringLiteral("/nonexistent/tool");
        step->outPath = outDir;
        return step;
    }

    QString out(const QString& name) const { return outDir + QLatin1Char('/') + name; }

    QTemporaryDir dir;
    QString inDir;
    QString outDir;
    QString definitionPath;
    RecordPtr filter;
    StepTestParent host;
};

} // namespace quillon::steptest
