// Chain files that come from elsewhere: every value of the wrong type, binary
// property lists (whole, cut short, damaged byte by byte), files that are
// directories, pipes or a gigabyte long. Reading must give a clear refusal
// or usable records, never a crash or a hang; records of the wrong types
// must still run and save.

#include "chain/ChainFile.h"
#include "support/BatchFixtures.h"
#include "variations/ValueRule.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <plist/plist.h>

#include <sys/stat.h>

#include <memory>

using namespace quillon;

namespace {

struct PlistFree {
    void operator()(void* node) const { plist_free(static_cast<plist_t>(node)); }
};
using Plist = std::unique_ptr<void, PlistFree>;

const QByteArray kHeader = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">\n";

QByteArray plistOf(const QByteArray& body)
{
    return kHeader + body + "\n</plist>\n";
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

QByteArray digest(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(&file);
    return hash.result();
}

QByteArray toBinary(const QByteArray& xml)
{
    plist_t raw = nullptr;
    plist_from_xml(xml.constData(), static_cast<uint32_t>(xml.size()), &raw);
    const Plist node(raw);
    if (!node)
        return {};
    char* bytes = nullptr;
    uint32_t length = 0;
    plist_to_bin(node.get(), &bytes, &length);
    const QByteArray binary(bytes, static_cast<qsizetype>(length));
    plist_to_bin_free(bytes);
    return binary;
}

class HostileChain : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(m_dir.isValid()); }

    QString write(const QString& name, const QByteArray& bytes)
    {
        const QString path = m_dir.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
            ADD_FAILURE() << "cannot write " << path.toStdString();
        return path;
    }

    // Reads the bytes as a chain file; a refusal must say why and hold no chain.
    ChainReadResult read(const QByteArray& bytes)
    {
        const ChainReadResult result = readChainFile(write(QStringLiteral("probe.qlch"), bytes));
        if (result.status == ChainReadResult::Refused) {
            EXPECT_FALSE(result.error.isEmpty());
            EXPECT_TRUE(result.chain.empty());
        }
        return result;
    }

    struct CliResult {
        QProcess::ExitStatus status = QProcess::CrashExit;
        int exitCode = -1;
        QString err;
    };

    CliResult runCli(const QString& chain, const QString& out)
    {
        QProcess process;
        process.start(QStringLiteral(QUILLON_CLI_PATH),
            { "--chain", chain, "--tool", QStringLiteral(QUILLON_STANDIN_PATH), "--output", out, "--format",
                "PNG", "--frames", "2", "--seed", "3", "--prefix", "p" });
        EXPECT_TRUE(process.waitForStarted());
        EXPECT_TRUE(process.waitForFinished(90000));
        return { process.exitStatus(), process.exitCode(),
            QString::fromUtf8(process.readAllStandardError()) };
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

TEST_F(HostileChain, WrongTypesEverywhereRunFromTheCommandLine)
{
    const QString definition = test::writeBatchDefinition(
        m_dir.path(), QStringLiteral("glow.ffxml"), QStringLiteral("Glow"), QStringLiteral("Quillon Tests"));
    ASSERT_FALSE(definition.isEmpty());
    const QByteArray before = digest(definition);
    const QString out = m_dir.filePath(QStringLiteral("out"));
    ASSERT_TRUE(QDir().mkpath(out));

    // A usable path among wrong types: the run goes through or stops with a
    // message, and leaves no task files.
    const QString usable = write(QStringLiteral("usable.qlch"),
        plistOf("<array>" + wrongFilter("<string>" + definition.toUtf8() + "</string>") + "</array>"));
    const CliResult run = runCli(usable, out);
    EXPECT_EQ(run.status, QProcess::NormalExit);
    EXPECT_TRUE(run.exitCode == 0 || !run.err.isEmpty()) << run.exitCode;
    EXPECT_FALSE(QFile::exists(QDir(out).filePath(QStringLiteral("controlfile.xml"))));
    EXPECT_TRUE(QDir(out).entryList({ QStringLiteral("bth-run-*") }, QDir::Files).isEmpty());
    EXPECT_EQ(digest(definition), before);

    // A path that is a number: no definition to read, no crash.
    const QString pathless = write(QStringLiteral("pathless.qlch"),
        plistOf("<array>" + wrongFilter("<integer>5</integer>") + "</array>"));
    const CliResult refused = runCli(pathless, out);
    EXPECT_EQ(refused.status, QProcess::NormalExit);
    EXPECT_TRUE(refused.exitCode == 0 || !refused.err.isEmpty()) << refused.exitCode;
    EXPECT_FALSE(QFile::exists(QDir(out).filePath(QStringLiteral("controlfile.xml"))));
}

TEST_F(HostileChain, WrongShapesAreRefusedWithAReason)
{
    const QByteArray param = "<dict><key>CONTROL_ID</key><string>a</string>";
    const QByteArray cases[] = {
        plistOf("<dict><key>Components</key><array/></dict>"), // root not an array
        plistOf("<string>chain</string>"),
        plistOf("<array><string>filter</string></array>"), // entry not a dictionary
        plistOf("<array><array/></array>"),
        plistOf("<array><dict><key>name</key><string>x</string></dict></array>"), // no Components
        plistOf("<array><dict><key>Components</key><string>none</string></dict></array>"),
        plistOf("<array><dict><key>Components</key><dict/></dict></array>"),
        plistOf("<array><dict><key>Components</key><array><string>p</string></array></dict></array>"),
        plistOf("<array><dict><key>Components</key><array>" + param + "</dict></array></dict></array>"),
        plistOf("<array><dict><key>Components</key><array>" + param
            + "<key>CONTROL_PROXY</key><string>2</string></dict></array></dict></array>"),
        plistOf("<array><dict><key>Components</key><array>" + param
            + "<key>CONTROL_PROXY</key><real>2.0</real></dict></array></dict></array>"),
        plistOf("<array><dict><key>Components</key><array>" + param
            + "<key>CONTROL_PROXY</key><true/></dict></array></dict></array>"),
        plistOf("<array><dict><key>Components</key><array>" + param
            + "<key>CONTROL_PROXY</key><array><integer>2</integer></array></dict></array></dict></array>"),
        "<?xml version=\"1.0\"?><plist version=\"1.0\"><array><dict>", // cut short
        "not a property list at all",
    };
    for (const QByteArray& bytes : cases) {
        const ChainReadResult result = read(bytes);
        EXPECT_EQ(result.status, ChainReadResult::Refused) << bytes.toStdString();
    }

    // Integer codes out of range stop the read as an unknown kind.
    for (const char* code : { "-1", "5", "18446744073709551615", "-9223372036854775808" }) {
        const ChainReadResult result = read(plistOf("<array><dict><key>Components</key><array>" + param
            + "<key>CONTROL_PROXY</key><integer>" + code + "</integer></dict></array></dict></array>"));
        EXPECT_NE(result.status, ChainReadResult::Ok) << code;
        EXPECT_TRUE(result.chain.empty()) << code;
    }
}

TEST_F(HostileChain, BinaryPropertyListsWholeCutAndDamaged)
{
    const QByteArray xml = plistOf("<array>" + wrongFilter("<string>/filters/x.ffxml</string>") + "</array>");
    const QByteArray binary = toBinary(xml);
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

TEST_F(HostileChain, BinaryKeyWithNulIsRefused)
{
    // [ { "a\0b": 5 } ]: an ASCII key with a NUL inside.
    QByteArray objects = QByteArray("\xA1\x01", 2) + QByteArray("\xD1\x02\x03", 3)
        + QByteArray("\x53"
                     "a\0b",
            4)
        + QByteArray("\x10\x05", 2);
    QByteArray bytes = "bplist00" + objects;
    const char offsets[] = { 8, 10, 13, 17 };
    const qsizetype tableAt = bytes.size();
    bytes += QByteArray(offsets, 4);
    QByteArray trailer(6, '\0');
    trailer += char(1); // offset size
    trailer += char(1); // reference size
    for (quint64 value : { quint64(4), quint64(0), quint64(tableAt) })
        for (int shift = 56; shift >= 0; shift -= 8)
            trailer += char((value >> shift) & 0xFF);
    const ChainReadResult ascii = read(bytes + trailer);
    EXPECT_EQ(ascii.status, ChainReadResult::Refused);
    EXPECT_TRUE(ascii.error.contains(QStringLiteral("NUL"))) << ascii.error.toStdString();

    // The same as fuzzing first found it: a UTF-16 key deep in a filter entry.
    const QByteArray found = QByteArray::fromBase64(
        "YnBsaXN0MDChAdYCAwQFBgcICRkbHB1dQ2hvb3NlblByZXNldFpDb21wb25lbnRzVE1hcHNXUHJl"
        "c2V0c1RuYW1lVHdoZW5TdHdvoQrXCwwNDg8QERITFBUXFxhWQUNUSVZFWkNPTlRST0xfSURdQ09O"
        "VFJPTF9QUk9YWVhNQVhWQUxVRVhNSRMvZmlsdGVycy9HbG8AAGGAAAaLm1ZBTFVFCVFwEAKiFhQQ"
        "ARAARHRleHTRGhZRYaEWRGRhdGEzQcHeypKAAAAIChclMDU9QkdLTVxjbnyFjqOip6qll6yus7a4"
        "ur8AAAAAAAABAQAAAAAAAAAeAAAAAAAAAAAAAAAAAAAAyA==");
    const ChainReadResult fuzzed = read(found);
    EXPECT_EQ(fuzzed.status, ChainReadResult::Refused);
}

TEST_F(HostileChain, DirectoryGigabyteFileAndPipeAreRefusedUnread)
{
    // A "file" that is a directory, holding a gigabyte.
    const QString folder = m_dir.filePath(QStringLiteral("chain.qlch"));
    ASSERT_TRUE(QDir().mkpath(folder));
    QFile inside(folder + QStringLiteral("/data"));
    ASSERT_TRUE(inside.open(QIODevice::WriteOnly));
    ASSERT_TRUE(inside.resize(qint64(1) << 30)); // sparse: no disk is used
    inside.close();
    const ChainReadResult fromFolder = readChainFile(folder);
    EXPECT_EQ(fromFolder.status, ChainReadResult::Refused);
    EXPECT_TRUE(fromFolder.error.contains(QStringLiteral("directory"))) << fromFolder.error.toStdString();

    // A gigabyte file is refused by its size before anything is read.
    const QString big = m_dir.filePath(QStringLiteral("big.qlch"));
    ASSERT_TRUE(QFile::rename(inside.fileName(), big));
    const ChainReadResult fromBig = readChainFile(big);
    EXPECT_EQ(fromBig.status, ChainReadResult::Refused);
    EXPECT_TRUE(fromBig.error.contains(QStringLiteral("larger"))) << fromBig.error.toStdString();

    // A pipe would block the open until someone writes to it.
    const QString pipe = m_dir.filePath(QStringLiteral("pipe.qlch"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    const ChainReadResult fromPipe = readChainFile(pipe);
    EXPECT_EQ(fromPipe.status, ChainReadResult::Refused);
    EXPECT_TRUE(fromPipe.error.contains(QStringLiteral("regular"))) << fromPipe.error.toStdString();

    // A device that never ends.
    EXPECT_EQ(readChainFile(QStringLiteral("/dev/zero")).status, ChainReadResult::Refused);
}

} // namespace
