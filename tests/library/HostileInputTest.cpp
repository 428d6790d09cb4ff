// Filter definitions that were not written by a friend. Each must give an
// empty record, a clean failure or a plain result, without a crash, a hang or
// an unbounded allocation; the user's file is never changed. Small hostile
// files (an entity bomb, a cut UTF-16 file) are seeds of the definition
// fuzzers instead (fuzz/corpus/library_reader, detail_reader, run_file);
// invalid UTF-8 and a cut file are in the readers' golden listing
// (golden/BadUtf8.ffxml, golden/Truncated.ffxml), and a definition that
// breaks after the chain was built is in the step tests
// (RunFile.ABrokenDefinitionAbandonsTheControlFileAndKeepsTheRecordedNames).

#include "library/DefinitionReader.h"
#include "library/FilterScan.h"
#include "step/FilterProcessObject.h"
#include "support/BatchFixtures.h"
#include "support/StepTestParent.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <sys/stat.h>

using namespace quillon;

namespace {

class HostileDefinition : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QDir(m_dir.path()).mkpath(QStringLiteral("out")));
        m_host.settings.format = QStringLiteral("PNG");
        m_host.settings.frameCountText = QStringLiteral("1");
        m_host.settings.seed = 7;
        m_host.prefix = QStringLiteral("p");
    }

    QString write(const QString& name, const QByteArray& content)
    {
        const QString path = m_dir.filePath(name);
        EXPECT_TRUE(test::writeFileBytes(path, content)) << path.toStdString();
        return path;
    }

    // The detail reader's record for a file, with every parameter active.
    static RecordPtr chainRecord(const QString& path)
    {
        RecordPtr filter = Record::create();
        filter->setString(key::path, path);
        loadXMLInfoWithFilterdata(filter);
        if (const RecordListPtr components = filter->list(key::Components)) {
            for (const RecordPtr& parameter : *components)
                parameter->setInteger(key::ACTIVE, 1);
        }
        return filter;
    }

    // Runs the ordinary task writer once; empty when the step refused.
    QString writeTasks(const RecordPtr& filter)
    {
        filterProcessObject step(filter, {}, {}, true, true, 0, &m_host, {});
        step.outPath = m_dir.filePath(QStringLiteral("out"));
        step.randomDraw = [] { return 500; };
        return step.createBatchFileNoFile();
    }

    QString runFile() const { return m_dir.filePath(QStringLiteral("out/bth-run-0.ffxml")); }

    QTemporaryDir m_dir;
    StepTestParent m_host;
};

// A plain result: the attribute whole, the nesting written without the
// indentation that would take some 20 GB.
TEST_F(HostileDefinition, AFiftyMegabyteAttributeAndAHundredThousandNestedElements)
{
    constexpr qsizetype size = qsizetype(50) * 1024 * 1024;
    const QByteArray nested = QByteArray("<n>").repeated(100000) + QByteArray("</n>").repeated(100000);
    const QString path = write(QStringLiteral("big.ffxml"),
        "<Filter><Information name-en=\"Big\" author=\"" + QByteArray(size, 'a')
            + "\"/><Components><SliderControl id=\"amount\"/>" + nested
            + "</Components><Presets><Preset><Settings variation=\"1\"/>"
              "<Controls><SliderControl id=\"amount\"><Value "
              "value=\"0.5\"/></SliderControl></Controls></Preset>"
              "<Preset><Settings variation=\"2\"/><Controls>"
            + nested + "</Controls></Preset></Presets></Filter>\n");
    const RecordPtr info = getFilterInfoWithPath(path);
    EXPECT_EQ(info->string(key::name), QStringLiteral("Big"));
    EXPECT_EQ(info->string(key::author).size(), size);
    // Preset 1 carries the nesting into the run file itself; the user's file
    // stays as it was.
    m_host.settings.presetIndex = 1;
    const QByteArray before = test::fileBytes(path);
    const RecordPtr filter = chainRecord(path);
    ASSERT_TRUE(filter->list(key::Components));
    EXPECT_EQ(filter->list(key::Components)->size(), 2u); // amount and the Variations row
    EXPECT_FALSE(writeTasks(filter).isEmpty());
    EXPECT_TRUE(test::fileBytes(path) == before) << "the user's file changed";
    pugi::xml_document again;
    EXPECT_TRUE(again.load_file(runFile().toLocal8Bit().constData())) << "the run file does not parse";
    EXPECT_GT(QFileInfo(runFile()).size(), size);
}

TEST_F(HostileDefinition, PipeOrOversizedFileIsNotRead)
{
    // A pipe would block the open until someone writes to it.
    const QString pipe = m_dir.filePath(QStringLiteral("pipe.ffxml"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    // A sparse file past the limit is refused by its size, not read.
    const QString huge = m_dir.filePath(QStringLiteral("huge.ffxml"));
    QFile file(huge);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(file.resize(kMaxDefinitionBytes + 1));
    file.close();

    for (const auto& [path, reason] :
        { std::pair { pipe, "not a regular file" }, std::pair { huge, "larger" } }) {
        SCOPED_TRACE(reason);
        EXPECT_TRUE(getFilterInfoWithPath(path)->isEmpty());
        Record filter;
        filter.setString(key::path, path);
        EXPECT_FALSE(loadXMLInfoWithFilterdata(filter));
        QByteArray bytes;
        QString error;
        EXPECT_FALSE(readDefinitionFile(path, bytes, &error));
        EXPECT_TRUE(error.contains(QLatin1String(reason))) << error.toStdString();
        EXPECT_TRUE(bytes.isEmpty());
    }

    // The scan of a folder holding both still lists the good definition.
    const QString good = m_dir.filePath(QStringLiteral("good.ffxml"));
    ASSERT_TRUE(QFile::copy(QStringLiteral(QUILLON_DATA_DIR "/filters/Blur/Blur.ffxml"), good));
    EXPECT_EQ(scanFilterDirectory(m_dir.path()).size(), 1u);

    // The writer refuses a definition that has turned into a pipe.
    const RecordPtr filter = chainRecord(good);
    ASSERT_FALSE(writeTasks(filter).isEmpty());
    filter->setString(key::path, pipe);
    EXPECT_TRUE(writeTasks(filter).isEmpty());
}

} // namespace
