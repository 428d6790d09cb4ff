// The run-file writer fed an arbitrary definition: the step writes the
// control file and one run file per task (ordinary tasks, and map tasks,
// which copy the frame's first run file). Whatever the definition holds, the
// writer must not crash, must leave the definition as it was, and every run
// file it reports as written must parse again with exactly one preset,
// `DefaultPreset`.
//
// The definition is the whole input; its last byte also picks the preset
// index (bits 0-1), map tasks (bit 2) and the variation modes (bits 3-4).

#include "FuzzFiles.h"

#include "run/RunSettings.h"
#include "library/DefinitionReader.h"
#include "step/FilterProcessObject.h"
#include "step/SilentStepParent.h"
#include "step/XmlFiles.h"

#include <QDir>
#include <QFile>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

using namespace quillon;

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

[[noreturn]] void fail(const char* what, const QString& path)
{
    std::fprintf(stderr, "%s: %s\n", what, qPrintable(path));
    std::abort();
}

// A run file the writer reported as written.
void checkRunFile(const QString& path)
{
    pugi::xml_document document;
    QString error;
    if (!loadXmlFile(document, path, &error))
        fail("run file does not parse again", error);
    const pugi::xml_node presets = document.document_element().child("Presets");
    int count = 0;
    for (pugi::xml_node child = presets.first_child(); child; child = child.next_sibling()) {
        if (child.type() == pugi::node_element) {
            ++count;
            if (std::strcmp(child.name(), "DefaultPreset") != 0 || child.first_attribute())
                fail("run file preset is not a bare DefaultPreset", path);
        }
    }
    if (count != 1)
        fail("run file does not hold exactly one preset", path);
}

void runStep(SilentStepParent& parent, const RecordPtr& filter, const QString& outDir)
{
    filterProcessObject step(
        filter, { QStringLiteral("/nowhere/in.png") }, {}, true, true, 0, &parent, { QStringLiteral("in") });
    step.outPath = outDir;
    int draws = 0;
    step.randomDraw = [&draws] { return (draws++ * 379) % 1000; };
    const QString control = step.createBatchFileWithFilepath(
        QStringLiteral("/nowhere/in.png"), QStringLiteral("/nowhere/in.png"));
    if (control.isEmpty())
        return;
    pugi::xml_document document;
    QString error;
    if (!loadXmlFile(document, control, &error))
        fail("control file does not parse again", error);
    for (const QString& path : step.filesToRemove) {
        if (path != control)
            checkRunFile(path);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const unsigned options = size > 0 ? data[size - 1] : 0;
    const QString definition = fuzz::writeScratchFile(QStringLiteral("definition.ffxml"), data, size);
    const QString outDir = fuzz::scratchDirectory() + QStringLiteral("/out");
    QDir().mkpath(outDir);

    SilentStepParent parent;
    parent.settings.outputPath = outDir;
    parent.settings.frameCountText = QStringLiteral("2");
    parent.settings.presetIndex = static_cast<int>(options & 3);
    parent.settings.seed = 1;

    RecordPtr filter = Record::create();
    filter->setString(key::path, definition);
    loadXMLInfoWithFilterdata(filter);
    if (const RecordListPtr components = filter->list(key::Components)) {
        int i = 0;
        for (const RecordPtr& parameter : *components) {
            parameter->setInteger(key::ACTIVE, 1);
            parameter->setInteger(key::POPSTATE, ((options >> 3) + i++) % 3);
        }
    }
    if (options & 4) {
        filter->setBoolean(key::UseMaps, true);
        filter->set(key::Maps, QVariantList { 0, 4 });
    }

    runStep(parent, filter, outDir);

    // The user's definition is never written to.
    const QByteArray after = readAll(definition);
    if (after.size() != static_cast<qsizetype>(size)
        || (size > 0 && std::memcmp(after.constData(), data, size) != 0))
        fail("the definition was changed", definition);
    return 0;
}
