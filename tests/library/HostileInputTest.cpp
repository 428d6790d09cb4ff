// Filter definitions that were not written by a friend: entity bombs, deep
// nesting, huge attributes, broken encodings, cut-off files, pipes and
// oversized files. Each must give an empty record, a clean failure or a
// plain result, without a crash, a hang or an unbounded allocation; the
// user's file is never changed. Large inputs are made at test time.

#include "library/DefinitionReader.h"
#include "library/FilterScan.h"
#include "step/FilterProcessObject.h"
#include "support/StepTestParent.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <sys/stat.h>

#include <memory>

using namespace quillon;

namespace {

// The body of a small, complete definition: one slider "amount", one preset.
const QByteArray kBody = "  <Components>\n"
                         "    <Result><FilterType value=\"1\"/></Result>\n"
                         "    <SliderControl id=\"amount\"><Name value-en=\"Amount\"/></SliderControl>\n"
                         "  </Components>\n"
                         "  <Presets>\n"
                         "    <Preset><Settings variation=\"1\"/><Controls>"
                         "<SliderControl id=\"amount\"><Value value=\"0.500\"/></SliderControl>"
                         "</Controls></Preset>\n"
                         "  </Presets>\n";

QByteArray definitionWithInformation(const QByteArray& information)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Filter>\n  " + information + "\n" + kBody
        + "</Filter>\n";
}

QByteArray digest(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(&file);
    return hash.result();
}

class HostileDefinition : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        ASSERT_TRUE(QDir(m_dir.path()).mkpath(QStringLiteral("out")));
        m_out = m_dir.filePath(QStringLiteral("out"));
        m_host.settings.format = QStringLiteral("PNG");
        m_host.settings.frameCountText = QStringLiteral("1");
        m_host.settings.seed = 7;
        m_host.prefix = QStringLiteral("p");
    }

    QString write(const QString& name, const QByteArray& content)
    {
        const QString path = m_dir.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            ADD_FAILURE() << "cannot write " << path.toStdString();
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

    // Runs the ordinary task writer once. Returns the control file's path,
    // or an empty string when the step refused the definition.
    QString writeTasks(const RecordPtr& filter)
    {
        filterProcessObject step(filter, {}, {}, true, true, 0, &m_host, {});
        step.outPath = m_out;
        step.randomDraw = [] { return 500; };
        return step.createBatchFileNoFile();
    }

    QString runFile() const { return QDir(m_out).filePath(QStringLiteral("bth-run-0.ffxml")); }

    QStringList outputNames() const
    {
        return QDir(m_out).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
    }

    QTemporaryDir m_dir;
    QString m_out;
    StepTestParent m_host;
};

TEST_F(HostileDefinition, BillionLaughsEntityBlockIsNeverExpanded)
{
    // Ten levels of ten references: 10^10 "lol"s if anything expanded them.
    QByteArray entities = "  <!ENTITY lol0 \"lol\">\n";
    for (int level = 1; level < 10; ++level) {
        QByteArray value;
        for (int i = 0; i < 10; ++i)
            value += "&lol" + QByteArray::number(level - 1) + ";";
        entities += "  <!ENTITY lol" + QByteArray::number(level) + " \"" + value + "\">\n";
    }
    const QByteArray content = "<?xml version=\"1.0\"?>\n<!DOCTYPE Filter [\n" + entities + "]>\n<Filter>\n"
        + "  <Information name-en=\"&lol9;\" author=\"&lol5; &amp; co\"/>\n" + kBody + "</Filter>\n";
    const QString path = write(QStringLiteral("laughs.ffxml"), content);
    const QByteArray before = digest(path);

    const RecordPtr info = getFilterInfoWithPath(path);
    EXPECT_LT(info->string(key::name).size(), 100) << "an entity was expanded";
    EXPECT_LT(info->string(key::author).size(), 100);
    EXPECT_EQ(info->string(key::filtertype), QStringLiteral("1"));

    const RecordPtr filter = chainRecord(path);
    ASSERT_TRUE(filter->list(key::Components));
    EXPECT_EQ(filter->list(key::Components)->size(), 2u);

    ASSERT_FALSE(writeTasks(filter).isEmpty());
    // The run file is the definition again, not its expansion.
    EXPECT_LT(QFileInfo(runFile()).size(), 4 * content.size());
    EXPECT_EQ(digest(path), before);
}

TEST_F(HostileDefinition, HundredThousandNestedElements)
{
    constexpr int depth = 100000;
    const QByteArray open = QByteArray("<n>").repeated(depth);
    const QByteArray close = QByteArray("</n>").repeated(depth);

    // Deep inside Components, next to a real control.
    const QByteArray inComponents = "<Filter>\n  <Information name-en=\"Deep\" author=\"x\"/>\n"
                                    "  <Components>\n    <SliderControl id=\"amount\"/>\n"
        + open + close
        + "\n  </Components>\n  <Presets>\n    <Preset><Settings variation=\"1\"/>"
          "<Controls><SliderControl id=\"amount\"><Value value=\"0.5\"/></SliderControl>"
          "</Controls></Preset>\n"
          "    <Preset><Settings variation=\"2\"/><Controls>"
        + open + close + "</Controls></Preset>\n  </Presets>\n</Filter>\n";
    const QString deep = write(QStringLiteral("deep.ffxml"), inComponents);
    const QByteArray before = digest(deep);

    const RecordPtr info = getFilterInfoWithPath(deep);
    EXPECT_EQ(info->string(key::name), QStringLiteral("Deep"));
    const RecordPtr filter = chainRecord(deep);
    ASSERT_TRUE(filter->list(key::Components));
    EXPECT_EQ(filter->list(key::Components)->size(), 2u); // amount and the Variations row

    // Preset 0 is taken; the deep second preset is dropped from the run file.
    m_host.settings.presetIndex = 0;
    ASSERT_FALSE(writeTasks(filter).isEmpty());
    EXPECT_TRUE(QFileInfo(runFile()).isFile());
    // Preset 1 carries the nesting into the run file itself.
    m_host.settings.presetIndex = 1;
    const QString control = writeTasks(filter);
    EXPECT_FALSE(control.isEmpty());
    pugi::xml_document again;
    EXPECT_TRUE(again.load_file(runFile().toLocal8Bit().constData())) << "the run file does not parse";
    EXPECT_EQ(digest(deep), before);

    // The same nesting never closed: not a definition at all.
    const QString unclosed
        = write(QStringLiteral("open.ffxml"), "<Filter><Information name-en=\"Open\"/>" + open);
    EXPECT_TRUE(getFilterInfoWithPath(unclosed)->isEmpty());
    const RecordPtr unread = chainRecord(unclosed);
    EXPECT_FALSE(unread->contains(key::Components));
    EXPECT_TRUE(writeTasks(unread).isEmpty());
}

TEST_F(HostileDefinition, FiftyMegabyteAttribute)
{
    constexpr qsizetype size = qsizetype(50) * 1024 * 1024;
    QByteArray content = definitionWithInformation("<Information name-en=\"Big\" author=\""
        + QByteArray(size, 'a') + "\" description-en=\"" + QByteArray(size / 5, 'b') + "\"/>");
    const QString path = write(QStringLiteral("big.ffxml"), content);
    content.clear();
    content.squeeze();
    const QByteArray before = digest(path);

    const RecordPtr info = getFilterInfoWithPath(path);
    EXPECT_EQ(info->string(key::name), QStringLiteral("Big"));
    EXPECT_EQ(info->string(key::author).size(), size);

    const RecordPtr filter = chainRecord(path);
    ASSERT_TRUE(filter->list(key::Components));
    EXPECT_EQ(filter->list(key::Components)->size(), 2u);
    ASSERT_FALSE(writeTasks(filter).isEmpty());
    EXPECT_GT(QFileInfo(runFile()).size(), size);
    EXPECT_EQ(digest(path), before);
}

TEST_F(HostileDefinition, InvalidUtf8IsReadWithReplacementCharacters)
{
    // A lone continuation byte, an overlong form, a surrogate and a cut-off
    // sequence, in names, ids and text.
    const QByteArray bad = "\x80 \xC0\xAF \xED\xA0\x80 \xE2\x82";
    const QByteArray content = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Filter>\n"
                               "  <Information name-en=\"A"
        + bad + "Z\" author=\"" + bad + "\">" + bad
        + "</Information>\n  <Components>\n"
          "    <SliderControl id=\"s"
        + bad + "\"><Name value-en=\"" + bad
        + "\"/></SliderControl>\n"
          "    <CheckboxControl id=\"ok\"><Name value-en=\"OK\"/></CheckboxControl>\n"
          "  </Components>\n  <Presets><Preset><Settings variation=\"1\"/><Controls>"
          "<SliderControl id=\"s"
        + bad
        + "\"><Value value=\"1\"/></SliderControl>"
          "<CheckboxControl id=\"ok\"><Checked value=\"false\"/></CheckboxControl>"
          "</Controls></Preset></Presets>\n</Filter>\n";
    const QString path = write(QStringLiteral("utf8.ffxml"), content);

    const RecordPtr info = getFilterInfoWithPath(path);
    const QString name = info->string(key::name);
    EXPECT_TRUE(name.startsWith(QLatin1Char('A')) && name.endsWith(QLatin1Char('Z'))) << name.toStdString();
    EXPECT_TRUE(name.contains(QChar::ReplacementCharacter));

    const RecordPtr filter = chainRecord(path);
    ASSERT_TRUE(filter->list(key::Components));
    ASSERT_EQ(filter->list(key::Components)->size(), 3u);
    EXPECT_TRUE(
        filter->list(key::Components)->at(0)->string(key::CONTROL_ID).contains(QChar::ReplacementCharacter));

    // The writer still writes; the check box it can name gets its value.
    ASSERT_FALSE(writeTasks(filter).isEmpty());
    pugi::xml_document run;
    ASSERT_TRUE(run.load_file(runFile().toLocal8Bit().constData()));
    EXPECT_TRUE(run.select_node("//CheckboxControl[@id='ok']/Checked[@value]"));

    // UTF-16 declared by a byte-order mark but cut in the middle of a unit.
    const QString odd
        = write(QStringLiteral("utf16.ffxml"), QByteArray("\xFF\xFE<\0F\0i\0l\0t\0e\0r\0>\0<", 19));
    EXPECT_TRUE(getFilterInfoWithPath(odd)->isEmpty());
    EXPECT_FALSE(chainRecord(odd)->contains(key::Components));
}

TEST_F(HostileDefinition, TruncatedFileIsNotADefinition)
{
    QFile sample(QStringLiteral(QUILLON_DATA_DIR "/filters/Blur/Blur.ffxml"));
    ASSERT_TRUE(sample.open(QIODevice::ReadOnly));
    const QByteArray whole = sample.readAll();
    const qsizetype end = whole.lastIndexOf("</Filter>");
    ASSERT_GT(end, 0);

    const QString path = m_dir.filePath(QStringLiteral("cut.ffxml"));
    for (qsizetype cut = 0; cut < end; cut += 7) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        ASSERT_EQ(file.write(whole.left(cut)), cut);
        file.close();
        EXPECT_TRUE(getFilterInfoWithPath(path)->isEmpty()) << "cut at " << cut;
        Record filter;
        filter.setString(key::path, path);
        EXPECT_FALSE(loadXMLInfoWithFilterdata(filter)) << "cut at " << cut;
        EXPECT_EQ(filter.keys(), QStringList { key::path });
    }

    // A definition cut after the chain was built: the writer refuses the task
    // and leaves no run file behind.
    const QString full = write(QStringLiteral("whole.ffxml"), whole);
    const RecordPtr filter = chainRecord(full);
    ASSERT_TRUE(filter->list(key::Components));
    write(QStringLiteral("whole.ffxml"), whole.left(end / 2));
    EXPECT_TRUE(writeTasks(filter).isEmpty());
    EXPECT_FALSE(outputNames().contains(QStringLiteral("bth-run-0.ffxml")));
}

TEST_F(HostileDefinition, PipeOrOversizedFileIsNotRead)
{
    // A pipe would block the open until someone writes to it.
    const QString pipe = m_dir.filePath(QStringLiteral("pipe.ffxml"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    EXPECT_TRUE(getFilterInfoWithPath(pipe)->isEmpty());
    Record fromPipe;
    fromPipe.setString(key::path, pipe);
    EXPECT_FALSE(loadXMLInfoWithFilterdata(fromPipe));
    QByteArray bytes;
    QString error;
    EXPECT_FALSE(readDefinitionFile(pipe, bytes, &error));
    EXPECT_TRUE(error.contains(QStringLiteral("not a regular file"))) << error.toStdString();

    // A sparse file past the limit is refused by its size, not read.
    const QString huge = m_dir.filePath(QStringLiteral("huge.ffxml"));
    QFile file(huge);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(file.resize(kMaxDefinitionBytes + 1));
    file.close();
    EXPECT_TRUE(getFilterInfoWithPath(huge)->isEmpty());
    EXPECT_FALSE(readDefinitionFile(huge, bytes, &error));
    EXPECT_TRUE(error.contains(QStringLiteral("larger"))) << error.toStdString();
    EXPECT_TRUE(bytes.isEmpty());

    // The scan of a folder holding both still lists the good definition.
    write(QStringLiteral("good.ffxml"),
        definitionWithInformation("<Information name-en=\"Good\" author=\"x\"/>"));
    const RecordList library = scanFilterDirectory(m_dir.path());
    ASSERT_EQ(library.size(), 1u);
    EXPECT_EQ(library.front()->string(key::name), QStringLiteral("Good"));

    // The writer refuses a definition that has turned into a pipe.
    const RecordPtr filter = chainRecord(m_dir.filePath(QStringLiteral("good.ffxml")));
    filter->setString(key::path, pipe);
    EXPECT_TRUE(writeTasks(filter).isEmpty());
}

} // namespace
