// Chain files that come from elsewhere. Reading must give a clear refusal or
// usable records, never a crash or a hang; records of the wrong types must
// still run and save.

#include "chain/ChainFile.h"
#include "support/BatchFixtures.h"
#include "variations/ValueRule.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <plist/plist.h>

#include <sys/stat.h>

#include <memory>

using namespace quillon;

namespace {

QByteArray plistOf(const QByteArray& body)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n" + body + "\n</plist>\n";
}

// One parameter of each kind; apart from CONTROL_PROXY every key holds a
// value of a type it never has.
QByteArray wrongParameters()
{
    QByteArray params;
    const char* const ids[]
        = { "<integer>7</integer>", "<array/>", "<real>1.5</real>", "<true/>", "<dict/>" };
    for (int code = 0; code <= 4; ++code) {
        params += "<dict><key>CONTROL_PROXY</key><integer>" + QByteArray::number(code) + "</integer>"
            + "<key>CONTROL_ID</key>" + ids[code]
            + "<key>CONTROL_NAME</key><array><string>n</string></array>"
              "<key>CONTROL_MAX</key><date>2020-01-01T00:00:00Z</date>"
              "<key>ACTIVE</key><string>1</string>"
              "<key>POPSTATE</key><real>1.7</real>"
              "<key>STARTVALUE</key><string>fast</string>"
              "<key>MINVALUE</key><dict><key>x</key><integer>1</integer></dict>"
              "<key>MAXVALUE</key><data>AAEC</data>"
              "<key>CONTROL_TYPE</key><string>kTypeSlider</string></dict>";
    }
    return params;
}

// A filter entry whose every key but Components is of the wrong type; `path`
// is spliced in as given.
QByteArray wrongFilter(const QByteArray& pathValue)
{
    return "<dict><key>name</key><integer>12</integer>"
           "<key>author</key><array><integer>1</integer></array>"
           "<key>filtertype</key><dict/>"
           "<key>path</key>"
        + pathValue
        + "<key>Presets</key><string>three</string>"
          "<key>ChoosenPreset</key><string>2</string>"
          "<key>UseMaps</key><string>yes</string>"
          "<key>Maps</key><dict><key>0</key><true/></dict>"
          "<key>Components</key><array>"
        + wrongParameters() + "</array></dict>";
}

// A hand-made binary property list: the objects, one-byte offsets into them
// (from the start of the file) and a trailer with one-byte references.
QByteArray binaryPlist(const QByteArray& objects, const QByteArray& offsets)
{
    QByteArray bytes = "bplist00" + objects;
    const quint64 tableAt = static_cast<quint64>(bytes.size());
    bytes += offsets + QByteArray(6, '\0') + char(1) + char(1);
    for (quint64 value : { quint64(offsets.size()), quint64(0), tableAt })
        for (int shift = 56; shift >= 0; shift -= 8)
            bytes += char((value >> shift) & 0xFF);
    return bytes;
}

class HostileChain : public ::testing::Test {
protected:
    QString write(const QString& name, const QByteArray& bytes)
    {
        const QString path = m_dir.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
            ADD_FAILURE() << "cannot write " << path.toStdString();
        return path;
    }

    // Reads the bytes, or the file at `path`, as a chain file; a refusal must
    // say why and hold no chain.
    ChainReadResult read(const QByteArray& bytes)
    {
        return readPath(write(QStringLiteral("probe.qlch"), bytes));
    }
    static ChainReadResult readPath(const QString& path)
    {
        const ChainReadResult result = readChainFile(path);
        if (result.status == ChainReadResult::Refused) {
            EXPECT_FALSE(result.error.isEmpty());
            EXPECT_TRUE(result.chain.empty());
        }
        return result;
    }

    QTemporaryDir m_dir;
};

TEST_F(HostileChain, WrongTypesEverywhereGiveRecordsThatStillWork)
{
    const ChainReadResult result = read(plistOf("<array>" + wrongFilter("<real>3.5</real>") + "</array>"));
    ASSERT_EQ(result.status, ChainReadResult::Ok) << result.error.toStdString();
    ASSERT_EQ(result.chain.size(), 1u);
    const Record& filter = *result.chain.front();

    // Typed reads fall back instead of failing.
    EXPECT_EQ(filter.string(key::name), QString());
    EXPECT_EQ(filter.string(key::path), QString());
    EXPECT_EQ(presetCount(filter), 0);
    EXPECT_FALSE(filter.boolean(key::UseMaps));
    EXPECT_TRUE(filter.integers(key::Maps).isEmpty());

    const RecordListPtr params = filter.list(key::Components);
    ASSERT_TRUE(params);
    ASSERT_EQ(params->size(), 5u);
    const controlType kinds[] = { controlType::kTypeCheckbox, controlType::kTypeIntSlider,
        controlType::kTypeSlider, controlType::kTypeAngle, controlType::kTypeVariations };
    for (std::size_t i = 0; i < params->size(); ++i) {
        Record& parameter = *params->at(i);
        // The kind comes from the code alone, whatever CONTROL_TYPE said.
        EXPECT_EQ(parameter.type(), kinds[i]);
        EXPECT_FALSE(parameter.contains(key::CONTROL_PROXY));
        EXPECT_EQ(parameter.string(key::CONTROL_ID), QString());
        // The value rule meets strings, dates and dictionaries and goes on.
        for (int frame = 0; frame < 3; ++frame)
            nextVariationValue(parameter, 10.0, [] { return 500; });
    }

    // The odd records save and read back.
    const QString copy = m_dir.filePath(QStringLiteral("copy.qlch"));
    QString error;
    ASSERT_TRUE(writeChainFile(copy, result.chain, &error)) << error.toStdString();
    const ChainReadResult again = readChainFile(copy);
    ASSERT_EQ(again.status, ChainReadResult::Ok) << again.error.toStdString();
    EXPECT_EQ(again.chain.front()->keys(), filter.keys());
}

TEST_F(HostileChain, BinaryPropertyListsWholeCutAndDamaged)
{
    const QByteArray xml = plistOf("<array>" + wrongFilter("<string>/filters/x.ffxml</string>") + "</array>");
    plist_t node = nullptr;
    plist_from_xml(xml.constData(), static_cast<uint32_t>(xml.size()), &node);
    char* raw = nullptr;
    uint32_t length = 0;
    plist_to_bin(node, &raw, &length);
    plist_free(node);
    const QByteArray binary(raw, static_cast<qsizetype>(length));
    plist_to_bin_free(raw);
    ASSERT_TRUE(binary.startsWith("bplist00"));

    const ChainReadResult fromXml = read(xml);
    const ChainReadResult fromBinary = read(binary);
    ASSERT_EQ(fromBinary.status, ChainReadResult::Ok) << fromBinary.error.toStdString();
    ASSERT_EQ(fromBinary.chain.size(), 1u);
    EXPECT_EQ(fromBinary.chain.front()->keys(), fromXml.chain.front()->keys());
    EXPECT_EQ(fromBinary.chain.front()->list(key::Components)->size(), 5u);

    // Every shorter prefix, and every byte inverted in turn.
    for (qsizetype cut = 0; cut < binary.size(); ++cut)
        read(binary.left(cut));
    for (qsizetype at = 0; at < binary.size(); ++at) {
        QByteArray damaged = binary;
        damaged[at] = static_cast<char>(~damaged[at]);
        read(damaged);
    }
}

TEST_F(HostileChain, ExpandingCyclicDeepAndNulKeyedListsAreRefused)
{
    // Forty arrays, each holding the next one twice: 2^40 values once expanded.
    QByteArray objects;
    QByteArray offsets;
    for (int i = 0; i < 40; ++i) {
        offsets += char(8 + objects.size());
        objects += char(0xA2) + QByteArray(2, char(i + 1));
    }
    offsets += char(8 + objects.size());
    objects += char(0xA0);
    // [ { "a\0b": 5 } ]: an ASCII key with a NUL inside.
    const QByteArray nulKey = QByteArray("\xA1\x01\xD1\x02\x03\x53"
                                         "a\0b\x10\x05",
        11);

    const std::vector<std::tuple<const char*, QByteArray, const char*>> cases = {
        { "expanding", binaryPlist(objects, offsets), "too many" },
        { "an array that holds itself", binaryPlist(QByteArray("\xA1\x00", 2), QByteArray("\x08", 1)), "" },
        { "deep", plistOf(QByteArray("<array>").repeated(200000) + QByteArray("</array>").repeated(200000)),
            "nested" },
        { "NUL in a key", binaryPlist(nulKey, QByteArray("\x08\x0A\x0D\x11", 4)), "NUL" },
        // The NUL key as fuzzing first found it: a UTF-16 key deep in a filter entry.
        { "fuzzed",
            QByteArray::fromBase64(
                "YnBsaXN0MDChAdYCAwQFBgcICRkbHB1dQ2hvb3NlblByZXNldFpDb21wb25lbnRzVE1hcHNXUHJl"
                "c2V0c1RuYW1lVHdoZW5TdHdvoQrXCwwNDg8QERITFBUXFxhWQUNUSVZFWkNPTlRST0xfSURdQ09O"
                "VFJPTF9QUk9YWVhNQVhWQUxVRVhNSRMvZmlsdGVycy9HbG8AAGGAAAaLm1ZBTFVFCVFwEAKiFhQQ"
                "ARAARHRleHTRGhZRYaEWRGRhdGEzQcHeypKAAAAIChclMDU9QkdLTVxjbnyFjqOip6qll6yus7a4"
                "ur8AAAAAAAABAQAAAAAAAAAeAAAAAAAAAAAAAAAAAAAAyA=="),
            "" },
    };
    for (const auto& [name, bytes, reason] : cases) {
        SCOPED_TRACE(name);
        const ChainReadResult result = read(bytes);
        EXPECT_EQ(result.status, ChainReadResult::Refused);
        EXPECT_TRUE(result.error.contains(QLatin1String(reason))) << result.error.toStdString();
    }
}

TEST_F(HostileChain, DirectoryGigabyteFilePipeAndMissingFileAreRefusedUnread)
{
    // A "file" that is a directory, holding a gigabyte (sparse: no disk is used).
    const QString folder = m_dir.filePath(QStringLiteral("chain.qlch"));
    ASSERT_TRUE(QDir().mkpath(folder));
    QFile inside(folder + QStringLiteral("/data"));
    ASSERT_TRUE(inside.open(QIODevice::WriteOnly));
    ASSERT_TRUE(inside.resize(qint64(1) << 30));
    inside.close();
    const QString pipe = m_dir.filePath(QStringLiteral("pipe.qlch"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);

    for (const auto& [path, reason] :
        { std::pair { folder, "directory" }, std::pair { pipe, "regular" },
            std::pair { QStringLiteral("/dev/zero"), "" },
            std::pair { m_dir.filePath(QStringLiteral("missing.qlch")), "" }, std::pair { QString(), "" } }) {
        SCOPED_TRACE(path.toStdString());
        const ChainReadResult result = readPath(path);
        EXPECT_EQ(result.status, ChainReadResult::Refused);
        EXPECT_TRUE(result.error.contains(QLatin1String(reason))) << result.error.toStdString();
    }

    // A gigabyte file is refused by its size before anything is read.
    const QString big = m_dir.filePath(QStringLiteral("big.qlch"));
    ASSERT_TRUE(QFile::rename(inside.fileName(), big));
    const ChainReadResult fromBig = readPath(big);
    EXPECT_EQ(fromBig.status, ChainReadResult::Refused);
    EXPECT_TRUE(fromBig.error.contains(QStringLiteral("larger"))) << fromBig.error.toStdString();
}

} // namespace
