#pragma once

// Shared fixtures of the step tests: a filter definition of our own, the
// records that go with it, and a readable dump of XML trees.

#include "library/DefinitionReader.h"
#include "library/Record.h"
#include "step/FilterProcessObject.h"
#include "support/BatchFixtures.h"
#include "support/StepTestParent.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <memory>


namespace quillon::steptest {

using test::fileBytes;
using test::writeFileBytes;

// A file of tests/step/golden; in the files the run writes, @IN@ and @OUT@
// stand for the fixture's in/ and out/ folders.
inline QByteArray golden(const char* name)
{
    return fileBytes(QStringLiteral(QUILLON_SOURCE_DIR "/tests/step/golden/") + QLatin1String(name));
}

// Compares `actual` with a listing of tests/step/golden; QUILLON_WRITE_GOLDEN=1
// rewrites the listing instead (review the diff before committing it).
inline void expectGolden(const char* name, const QString& actual)
{
    test::expectGoldenFile(QStringLiteral("step/golden/") + QLatin1String(name), actual.toUtf8());
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
    const QByteArray bytes = fileBytes(path);
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
        // Settings and one Value carry extra attributes so that the order of
        // rewritten attributes shows.
        ASSERT_TRUE(QFile::copy(
            QStringLiteral(QUILLON_SOURCE_DIR "/tests/step/golden/stone-glow.ffxml"), definitionPath));

        filter = Record::create();
        filter->setString(key::path, definitionPath);
        ASSERT_TRUE(loadXMLInfoWithFilterdata(filter));
        filter->list(key::Components)->back()->setInteger(key::ACTIVE, 0);
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
    QByteArray goldenRun(const char* name) const
    {
        return golden(name).replace("@IN@", inDir.toUtf8()).replace("@OUT@", outDir.toUtf8());
    }

    QTemporaryDir dir;
    QString inDir;
    QString outDir;
    QString definitionPath;
    RecordPtr filter;
    StepTestParent host;
};

} // namespace quillon::steptest
