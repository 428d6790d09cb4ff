#include "chain/ChainFile.h"

#include <QDir>
#include <QFile>
#include <QPoint>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <plist/plist.h>

#include <cmath>
#include <memory>
#include <unistd.h>

using namespace quillon;

namespace {

struct PlistFree {
    void operator()(void* node) const { plist_free(static_cast<plist_t>(node)); }
};
using Plist = std::unique_ptr<void, PlistFree>;

QByteArray readBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeBytes(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

Plist parsePlist(const QByteArray& bytes)
{
    plist_t node = nullptr;
    plist_from_memory(bytes.constData(), static_cast<uint32_t>(bytes.size()), &node);
    return Plist(node);
}

QByteArray xmlPlist(const QByteArray& body)
{
    return QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                      "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                      "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">\n")
        + body + "\n</plist>\n";
}

// A filter entry of a chain file with the given parameter dictionaries.
QByteArray filterEntry(const QByteArray& name, const QByteArray& params)
{
    return "<dict><key>name</key><string>" + name + "</string><key>Components</key><array>" + params
        + "</array></dict>";
}

QByteArray paramEntry(const QByteArray& id, const QByteArray& proxyValue)
{
    return "<dict><key>CONTROL_ID</key><string>" + id + "</string><key>CONTROL_PROXY</key>" + proxyValue
        + "<key>ACTIVE</key><integer>0</integer></dict>";
}

// A chain record as the detail reader builds it: a slider, a check box and
// the Variations row, plus the keys a run adds.
RecordPtr makeChainFilter(const QString& name)
{
    auto filter = Record::create();
    filter->setString(key::name, name);
    filter->setString(key::author, QStringLiteral("Quillon Tests"));
    filter->setString(key::path, QStringLiteral("/filters/") + name + QStringLiteral(".ffxml"));
    filter->setString(key::filtertype, QStringLiteral("1"));
    filter->set(key::Presets, QVariantMap { { key::PresetCount, QVariant::fromValue<qint64>(3) } });
    filter->setInteger(key::ChoosenPreset, 2);

    auto params = std::make_shared<RecordList>();
    auto slider = makeParameterRecord(controlType::kTypeSlider, QStringLiteral("glow_amount"));
    slider->setString(key::CONTROL_NAME, QStringLiteral("Glow Amount"));
    slider->setReal(key::STARTVALUE, 0.25);
    slider->setInteger(key::ACTIVE, 1);
    params->push_back(slider);
    auto checkbox = makeParameterRecord(controlType::kTypeCheckbox, QStringLiteral("invert"));
    checkbox->setString(key::CONTROL_NAME, QStringLiteral("Invert"));
    params->push_back(checkbox);
    params->push_back(generateVariationsSettings());
    filter->setList(key::Components, params);
    return filter;
}

class ChainFileTest : public ::testing::Test {
protected:
    QString path(const QString& name) const { return m_dir.filePath(name); }
    QTemporaryDir m_dir;
};

} // namespace

TEST_F(ChainFileTest, RoundTripKeepsEveryKeyAndKind)
{
    RecordPtr filter = makeChainFilter(QStringLiteral("Soft Glow"));
    filter->setBoolean(key::UseMaps, true);
    filter->set(key::Maps, QVariantList { QVariant::fromValue<qint64>(0), QVariant::fromValue<qint64>(4) });
    filter->setString(QStringLiteral("ExtraNote"), QStringLiteral("kept as it is"));
    filter->set(QStringLiteral("ExtraNested"),
        QVariantMap { { QStringLiteral("list"), QVariantList { QStringLiteral("a"), 2.5, false } } });
    filter->list(key::Components)->front()->setInteger(QStringLiteral("PARAM_EXTRA"), -12);
    const RecordList chain { filter };

    const QString file = path(QStringLiteral("glow.qlch"));
    QString error;
    ASSERT_TRUE(writeChainFile(file, chain, &error)) << error.toStdString();

    // The file: codes instead of kinds.
    const QByteArray bytes = readBytes(file);
    EXPECT_FALSE(bytes.contains("CONTROL_TYPE"));
    EXPECT_TRUE(bytes.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
    const Plist root = parsePlist(bytes);
    ASSERT_TRUE(root);
    ASSERT_EQ(plist_get_node_type(root.get()), PLIST_ARRAY);
    ASSERT_EQ(plist_array_get_size(root.get()), 1u);
    plist_t components = plist_dict_get_item(plist_array_get_item(root.get(), 0), "Components");
    ASSERT_EQ(plist_array_get_size(components), 3u);
    uint64_t code = 99;
    plist_get_uint_val(plist_dict_get_item(plist_array_get_item(components, 0), "CONTROL_PROXY"), &code);
    EXPECT_EQ(code, 2u);
    plist_get_uint_val(plist_dict_get_item(plist_array_get_item(components, 1), "CONTROL_PROXY"), &code);
    EXPECT_EQ(code, 0u);
    plist_get_uint_val(plist_dict_get_item(plist_array_get_item(components, 2), "CONTROL_PROXY"), &code);
    EXPECT_EQ(code, 4u);

    // The chain in memory is untouched.
    EXPECT_EQ(filter->list(key::Components)->front()->type(), controlType::kTypeSlider);
    EXPECT_FALSE(filter->list(key::Components)->front()->contains(key::CONTROL_PROXY));

    // Reading it back restores every key with its value and kind.
    const ChainReadResult read = readChainFile(file);
    ASSERT_EQ(read.status, ChainReadResult::Ok) << read.error.toStdString();
    ASSERT_EQ(read.chain.size(), 1u);
    const RecordPtr& opened = read.chain.front();
    EXPECT_NE(opened, filter);
    EXPECT_EQ(opened->keys(), filter->keys());
    for (const QString& name : filter->keys()) {
        if (name != key::Components) {
            EXPECT_EQ(opened->value(name), filter->value(name)) << name.toStdString();
        }
    }
    EXPECT_EQ(opened->value(key::UseMaps).typeId(), QMetaType::Bool);
    EXPECT_EQ(opened->integers(key::Maps), (QList<qint64> { 0, 4 }));
    EXPECT_EQ(presetCount(*opened), 3);
    EXPECT_EQ(opened->integer(key::ChoosenPreset), 2);

    const RecordListPtr before = filter->list(key::Components);
    const RecordListPtr after = opened->list(key::Components);
    ASSERT_TRUE(after);
    ASSERT_EQ(after->size(), before->size());
    for (std::size_t i = 0; i < before->size(); ++i) {
        const Record& original = *(*before)[i];
        const Record& restored = *(*after)[i];
        EXPECT_FALSE(restored.contains(key::CONTROL_PROXY));
        EXPECT_EQ(restored.keys(), original.keys());
        EXPECT_EQ(restored.type(), original.type());
        for (const QString& name : original.keys())
            EXPECT_EQ(restored.value(name), original.value(name)) << name.toStdString();
    }
    EXPECT_TRUE(after->at(0)->holdsReal(key::STARTVALUE));
    EXPECT_DOUBLE_EQ(after->at(0)->real(key::STARTVALUE), 0.25);
    EXPECT_EQ(after->at(1)->type(), controlType::kTypeCheckbox);
    EXPECT_EQ(after->at(2)->string(key::CONTROL_ID), kVariationsId);
}

TEST_F(ChainFileTest, EmptyChainIsAnEmptyArray)
{
    const QString file = path(QStringLiteral("empty.qlch"));
    ASSERT_TRUE(writeChainFile(file, {}, nullptr));
    const Plist root = parsePlist(readBytes(file));
    ASSERT_TRUE(root);
    ASSERT_EQ(plist_get_node_type(root.get()), PLIST_ARRAY);
    EXPECT_EQ(plist_array_get_size(root.get()), 0u);

    const ChainReadResult read = readChainFile(file);
    EXPECT_EQ(read.status, ChainReadResult::Ok);
    EXPECT_TRUE(read.chain.empty());
}

TEST_F(ChainFileTest, OneFilterAddedTwiceOpensAsTwoIndependentRecords)
{
    const RecordPtr shared = makeChainFilter(QStringLiteral("Twice"));
    const RecordList chain { shared, shared };

    const QVariantList storable = cleanFilterArray(chain);
    ASSERT_EQ(storable.size(), 2);
    EXPECT_EQ(storable.at(0), storable.at(1));
    EXPECT_FALSE(
        storable.at(0).toMap().value(key::Components).toList().front().toMap().contains(key::CONTROL_TYPE));

    const QString file = path(QStringLiteral("twice.qlch"));
    ASSERT_TRUE(writeChainFile(file, chain, nullptr));
    const ChainReadResult read = readChainFile(file);
    ASSERT_EQ(read.status, ChainReadResult::Ok);
    ASSERT_EQ(read.chain.size(), 2u);
    ASSERT_NE(read.chain[0], read.chain[1]);
    ASSERT_NE(read.chain[0]->list(key::Components), read.chain[1]->list(key::Components));

    read.chain[0]->list(key::Components)->front()->setReal(key::STARTVALUE, 0.75);
    read.chain[0]->setInteger(key::ChoosenPreset, 0);
    EXPECT_DOUBLE_EQ(read.chain[1]->list(key::Components)->front()->real(key::STARTVALUE), 0.25);
    EXPECT_EQ(read.chain[1]->integer(key::ChoosenPreset), 2);
    EXPECT_DOUBLE_EQ(shared->list(key::Components)->front()->real(key::STARTVALUE), 0.25);
}

TEST_F(ChainFileTest, UnknownCodeKeepsTheFiltersBeforeIt)
{
    const QString file = path(QStringLiteral("code7.qlch"));
    writeBytes(file,
        xmlPlist("<array>" + filterEntry("First", paramEntry("a", "<integer>2</integer>"))
            + filterEntry(
                "Second", paramEntry("b", "<integer>0</integer>") + paramEntry("c", "<integer>7</integer>"))
            + filterEntry("Third", paramEntry("d", "<integer>1</integer>")) + "</array>"));

    const ChainReadResult read = readChainFile(file);
    EXPECT_EQ(read.status, ChainReadResult::UnknownCode);
    ASSERT_EQ(read.chain.size(), 1u);
    EXPECT_EQ(read.chain.front()->string(key::name), QStringLiteral("First"));
    EXPECT_EQ(read.chain.front()->list(key::Components)->front()->type(), controlType::kTypeSlider);

    ::testing::internal::CaptureStdout();
    reportUnknownChainCode();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Fuckdata in save\n");
}

TEST_F(ChainFileTest, BinaryPropertyListOfTheRightShapeIsAccepted)
{
    const QString xmlFile = path(QStringLiteral("source.qlch"));
    ASSERT_TRUE(writeChainFile(xmlFile, { makeChainFilter(QStringLiteral("Bin")) }, nullptr));
    const Plist root = parsePlist(readBytes(xmlFile));
    char* raw = nullptr;
    uint32_t length = 0;
    plist_to_bin(root.get(), &raw, &length);
    const QString binFile = path(QStringLiteral("binary.qlch"));
    writeBytes(binFile, QByteArray(raw, static_cast<qsizetype>(length)));
    plist_to_bin_free(raw);

    const ChainReadResult read = readChainFile(binFile);
    ASSERT_EQ(read.status, ChainReadResult::Ok) << read.error.toStdString();
    ASSERT_EQ(read.chain.size(), 1u);
    EXPECT_EQ(read.chain.front()->list(key::Components)->size(), 3u);
}

TEST_F(ChainFileTest, DamagedFilesAreRefused)
{
    const QByteArray goodParam = paramEntry("a", "<integer>2</integer>");
    const std::vector<std::pair<const char*, QByteArray>> cases = {
        { "empty file", QByteArray() },
        { "not a plist", "just some text, no property list\n" },
        { "broken xml", xmlPlist("<array><dict><key>name</key>") },
        { "root dict", xmlPlist("<dict><key>name</key><string>x</string></dict>") },
        { "entry a string", xmlPlist("<array><string>filter</string></array>") },
        { "missing Components", xmlPlist("<array><dict><key>name</key><string>x</string></dict></array>") },
        { "Components a dict", xmlPlist("<array><dict><key>Components</key><dict/></dict></array>") },
        { "parameter a string", xmlPlist("<array>" + filterEntry("x", "<string>p</string>") + "</array>") },
        { "missing CONTROL_PROXY",
            xmlPlist("<array>" + filterEntry("x", "<dict><key>CONTROL_ID</key><string>a</string></dict>")
                + "</array>") },
        { "code a string",
            xmlPlist("<array>" + filterEntry("x", paramEntry("a", "<string>2</string>")) + "</array>") },
        { "code a real",
            xmlPlist("<array>" + filterEntry("x", paramEntry("a", "<real>2.0</real>")) + "</array>") },
        { "damage after an unknown code",
            xmlPlist("<array>" + filterEntry("x", paramEntry("a", "<integer>9</integer>"))
                + "<string>y</string></array>") },
        { "good first entry, damaged second",
            xmlPlist("<array>" + filterEntry("x", goodParam) + "<integer>3</integer></array>") },
    };
    for (const auto& [name, bytes] : cases) {
        const QString file = path(QString::fromLatin1(name) + QStringLiteral(".qlch"));
        writeBytes(file, bytes);
        const ChainReadResult read = readChainFile(file);
        EXPECT_EQ(read.status, ChainReadResult::Refused) << name;
        EXPECT_TRUE(read.chain.empty()) << name;
        EXPECT_FALSE(read.error.isEmpty()) << name;
    }
}

TEST_F(ChainFileTest, HostileFilesAreRefusedWithoutHarm)
{
    // Binary property list whose root is a dictionary.
    Plist dict(plist_new_dict());
    plist_dict_set_item(dict.get(), "Components", plist_new_array());
    char* raw = nullptr;
    uint32_t length = 0;
    plist_to_bin(dict.get(), &raw, &length);
    const QString wrongShape = path(QStringLiteral("dict.bin.qlch"));
    writeBytes(wrongShape, QByteArray(raw, static_cast<qsizetype>(length)));
    plist_to_bin_free(raw);
    EXPECT_EQ(readChainFile(wrongShape).status, ChainReadResult::Refused);

    auto binary = [](const QByteArray& objects, const QByteArray& offsets, quint64 count, int offsetSize) {
        QByteArray bytes = "bplist00" + objects;
        const quint64 tableAt = static_cast<quint64>(bytes.size());
        bytes += offsets;
        QByteArray trailer(6, '\0');
        trailer += char(offsetSize);
        trailer += char(1);
        for (quint64 value : { count, quint64(0), tableAt })
            for (int shift = 56; shift >= 0; shift -= 8)
                trailer += char((value >> shift) & 0xFF);
        return bytes + trailer;
    };
    // An array that holds itself.
    const QString cycle = path(QStringLiteral("cycle.qlch"));
    writeBytes(cycle, binary(QByteArray("\xA1\x00", 2), QByteArray("\x08", 1), 1, 1));
    EXPECT_EQ(readChainFile(cycle).status, ChainReadResult::Refused);

    // Forty arrays, each holding the next one twice: 2^40 values once expanded.
    QByteArray objects;
    QByteArray offsets;
    for (int i = 0; i < 40; ++i) {
        offsets += char(8 + objects.size());
        objects += char(0xA2);
        objects += char(i + 1);
        objects += char(i + 1);
    }
    offsets += char(8 + objects.size());
    objects += char(0xA0);
    const QString laughs = path(QStringLiteral("laughs.qlch"));
    writeBytes(laughs, binary(objects, offsets, 41, 1));
    const ChainReadResult laughsRead = readChainFile(laughs);
    EXPECT_EQ(laughsRead.status, ChainReadResult::Refused);
    EXPECT_TRUE(laughsRead.error.contains(QStringLiteral("too many"))) << laughsRead.error.toStdString();

    // Deep nesting in XML.
    const QString deep = path(QStringLiteral("deep.qlch"));
    writeBytes(
        deep, xmlPlist(QByteArray("<array>").repeated(200000) + QByteArray("</array>").repeated(200000)));
    const ChainReadResult deepRead = readChainFile(deep);
    EXPECT_EQ(deepRead.status, ChainReadResult::Refused);
    EXPECT_TRUE(deepRead.error.contains(QStringLiteral("nested"))) << deepRead.error.toStdString();

    // A directory, a missing file, an oversized file.
    ASSERT_TRUE(QDir(m_dir.path()).mkdir(QStringLiteral("folder.qlch")));
    const ChainReadResult folder = readChainFile(path(QStringLiteral("folder.qlch")));
    EXPECT_EQ(folder.status, ChainReadResult::Refused);
    EXPECT_TRUE(folder.error.contains(QStringLiteral("directory")));
    EXPECT_EQ(readChainFile(path(QStringLiteral("missing.qlch"))).status, ChainReadResult::Refused);
    EXPECT_EQ(readChainFile(QString()).status, ChainReadResult::Refused);

    QFile big(path(QStringLiteral("big.qlch")));
    ASSERT_TRUE(big.open(QIODevice::WriteOnly));
    ASSERT_TRUE(big.resize(kMaxChainFileBytes + 1));
    big.close();
    const ChainReadResult bigRead = readChainFile(big.fileName());
    EXPECT_EQ(bigRead.status, ChainReadResult::Refused);
    EXPECT_TRUE(bigRead.error.contains(QStringLiteral("larger"))) << bigRead.error.toStdString();
}

TEST_F(ChainFileTest, FailedWriteKeepsThePreviousFile)
{
    const QString file = path(QStringLiteral("kept.qlch"));
    const RecordList chain { makeChainFilter(QStringLiteral("Kept")) };
    ASSERT_TRUE(writeChainFile(file, chain, nullptr));
    const QByteArray previous = readBytes(file);

    // A value a property list cannot hold.
    const RecordPtr odd = makeChainFilter(QStringLiteral("Odd"));
    odd->set(QStringLiteral("Where"), QPoint(1, 2));
    QString error;
    EXPECT_FALSE(writeChainFile(file, { odd }, &error));
    EXPECT_TRUE(error.contains(QStringLiteral("Where"))) << error.toStdString();
    EXPECT_EQ(readBytes(file), previous);

    const RecordPtr notFinite = makeChainFilter(QStringLiteral("NaN"));
    notFinite->list(key::Components)->front()->setReal(key::STARTVALUE, std::nan(""));
    EXPECT_FALSE(writeChainFile(file, { notFinite }, &error));
    EXPECT_EQ(readBytes(file), previous);

    // A parameter without a kind cannot be stored.
    const RecordPtr kindless = makeChainFilter(QStringLiteral("Kindless"));
    kindless->list(key::Components)->front()->remove(key::CONTROL_TYPE);
    EXPECT_FALSE(writeChainFile(file, { kindless }, &error));
    EXPECT_EQ(readBytes(file), previous);

    // A directory that cannot be written to (a path below a regular file
    // fails even for root; a read-only directory only for other users).
    ::testing::internal::CaptureStdout();
    EXPECT_FALSE(saveChainAndReport(path(QStringLiteral("kept.qlch/inner.qlch")), chain, &error));
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Saveres=false\n");
    EXPECT_FALSE(error.isEmpty());
    if (::geteuid() != 0) {
        const QString locked = path(QStringLiteral("locked"));
        ASSERT_TRUE(QDir().mkpath(locked));
        const QString lockedFile = locked + QStringLiteral("/chain.qlch");
        ASSERT_TRUE(writeChainFile(lockedFile, chain, nullptr));
        const QByteArray lockedPrevious = readBytes(lockedFile);
        QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
        EXPECT_FALSE(writeChainFile(lockedFile, {}, &error));
        QFile::setPermissions(
            locked, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        EXPECT_EQ(readBytes(lockedFile), lockedPrevious);
    }
    EXPECT_EQ(readBytes(file), previous);

    ::testing::internal::CaptureStdout();
    EXPECT_TRUE(saveChainAndReport(file, chain, nullptr));
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Saveres=true\n");
}

TEST_F(ChainFileTest, RecordWithoutComponentsIsStoredWithAnEmptyList)
{
    auto bare = Record::create();
    bare->setString(key::name, QStringLiteral("Unreadable"));
    const QString file = path(QStringLiteral("bare.qlch"));
    ASSERT_TRUE(writeChainFile(file, { bare }, nullptr));
    EXPECT_FALSE(bare->contains(key::Components));

    const ChainReadResult read = readChainFile(file);
    ASSERT_EQ(read.status, ChainReadResult::Ok);
    ASSERT_EQ(read.chain.size(), 1u);
    ASSERT_TRUE(read.chain.front()->list(key::Components));
    EXPECT_TRUE(read.chain.front()->list(key::Components)->empty());
}
