// Chain files that come from elsewhere, kept as data in tests/chain/golden.
// Reading must give a clear refusal or usable records, never a crash or a
// hang; records of the wrong types must still run and save. Cut and damaged
// copies of these files are left to the chain-file fuzzer, whose seeds
// (fuzz/corpus/chain_file) include them.

#include "chain/ChainFile.h"
#include "variations/ValueRule.h"
#include "support/BatchFixtures.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace quillon;

namespace {

const QString kGolden = QStringLiteral(QUILLON_SOURCE_DIR "/tests/chain/golden/");

QStringList goldenFiles(const QString& folder)
{
    QStringList paths;
    for (const QFileInfo& info : QDir(kGolden + folder).entryInfoList({ QStringLiteral("*.qlch") }, QDir::Files))
        paths.append(info.filePath());
    return paths;
}

void expectRefused(const QString& path, const QString& reason = QString())
{
    SCOPED_TRACE(path.toStdString());
    const ChainReadResult read = readChainFile(path);
    EXPECT_EQ(read.status, ChainReadResult::Refused);
    EXPECT_TRUE(read.chain.empty());
    EXPECT_FALSE(read.error.isEmpty());
    EXPECT_TRUE(read.error.contains(reason)) << read.error.toStdString();
}

} // namespace

TEST(DamagedChainFile, IsRefusedWithAReasonAndNoChain)
{
    // Each file's reason is in golden/refused-reasons.txt (QUILLON_WRITE_GOLDEN=1
    // rewrites it): where the damage is of one kind, the reason names it.
    const QStringList files = goldenFiles(QStringLiteral("refused"));
    ASSERT_GE(files.size(), 23);
    QString reasons;
    for (const QString& path : files) {
        expectRefused(path);
        reasons += QFileInfo(path).fileName() + QStringLiteral(": ")
            + readChainFile(path).error.replace(path, QStringLiteral("FILE")) + QLatin1Char('\n');
    }
    test::expectGoldenFile(QStringLiteral("chain/golden/refused-reasons.txt"), reasons.toUtf8());

    QTemporaryDir dir;
    const QString deep = dir.filePath(QStringLiteral("deep.qlch"));
    QFile file(deep);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n"
        + QByteArray("<array>").repeated(200000) + QByteArray("</array>").repeated(200000) + "\n</plist>\n");
    file.close();
    expectRefused(deep, QStringLiteral("nested"));
}

TEST(DamagedChainFile, AnUnknownCodeKeepsOnlyTheFiltersBeforeIt)
{
    const ChainReadResult read = readChainFile(kGolden + QStringLiteral("unknown-code/seven-in-the-second-filter.qlch"));
    EXPECT_EQ(read.status, ChainReadResult::UnknownCode);
    ASSERT_EQ(read.chain.size(), 1u);
    EXPECT_EQ(read.chain.front()->string(key::name), QStringLiteral("First"));
    EXPECT_EQ(read.chain.front()->list(key::Components)->front()->type(), controlType::kTypeSlider);

    ::testing::internal::CaptureStdout();
    reportUnknownChainCode();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Fuckdata in save\n");

    // Codes out of range in the first filter stop the read as well.
    for (const QString& path : goldenFiles(QStringLiteral("unknown-code"))) {
        if (path.endsWith(QLatin1String("seven-in-the-second-filter.qlch")))
            continue;
        const ChainReadResult result = readChainFile(path);
        EXPECT_EQ(result.status, ChainReadResult::UnknownCode) << path.toStdString();
        EXPECT_TRUE(result.chain.empty()) << path.toStdString();
    }
}

TEST(HostileChain, WrongTypesEverywhereGiveRecordsThatStillWork)
{
    // Apart from CONTROL_PROXY every key holds a value of a type it never has;
    // the two files are the same chain as XML and as a binary property list.
    QStringList keys;
    for (const char* name : { "wrong-types.qlch", "wrong-types-binary.qlch" }) {
        SCOPED_TRACE(name);
        const ChainReadResult result = readChainFile(kGolden + QLatin1String(name));
        ASSERT_EQ(result.status, ChainReadResult::Ok) << result.error.toStdString();
        ASSERT_EQ(result.chain.size(), 1u);
        const Record& filter = *result.chain.front();
        if (keys.isEmpty())
            keys = filter.keys();
        EXPECT_EQ(filter.keys(), keys);

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
        QTemporaryDir dir;
        const QString copy = dir.filePath(QStringLiteral("copy.qlch"));
        QString error;
        ASSERT_TRUE(writeChainFile(copy, result.chain, &error)) << error.toStdString();
        const ChainReadResult again = readChainFile(copy);
        ASSERT_EQ(again.status, ChainReadResult::Ok) << again.error.toStdString();
        EXPECT_EQ(again.chain.front()->keys(), filter.keys());
        // Each kind is written back as its own code.
        for (std::size_t i = 0; i < params->size(); ++i)
            EXPECT_EQ(again.chain.front()->list(key::Components)->at(i)->type(), kinds[i]);
    }
}

TEST(HostileChain, DirectoryGigabyteFilePipeAndMissingFileAreRefusedUnread)
{
    // A "file" that is a directory, holding a gigabyte (sparse: no disk is used).
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("chain.qlch"));
    ASSERT_TRUE(QDir().mkpath(folder));
    QFile inside(folder + QStringLiteral("/data"));
    ASSERT_TRUE(inside.open(QIODevice::WriteOnly));
    ASSERT_TRUE(inside.resize(qint64(1) << 30));
    inside.close();
    const QString pipe = dir.filePath(QStringLiteral("pipe.qlch"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);

    expectRefused(folder, QStringLiteral("directory"));
    expectRefused(pipe, QStringLiteral("regular"));
    expectRefused(QStringLiteral("/dev/zero"));
    expectRefused(dir.filePath(QStringLiteral("missing.qlch")));
    expectRefused(QString());
    // A gigabyte file is refused by its size before anything is read.
    const QString big = dir.filePath(QStringLiteral("big.qlch"));
    ASSERT_TRUE(QFile::rename(inside.fileName(), big));
    expectRefused(big, QStringLiteral("larger"));
}
