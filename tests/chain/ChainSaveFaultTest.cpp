// Saving a chain when the disk is full or the folder cannot be written: the
// save fails, the previous chain file stays byte for byte, and no temporary
// file is left beside it.

#include "chain/ChainFile.h"
#include "support/NothingLost.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

using namespace quillon;
using quillon::test::FileSizeLimit;
using quillon::test::fillFileSystem;
using quillon::test::leftoverTemporaryFiles;
using quillon::test::TestMount;

namespace {

QByteArray readBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

RecordPtr chainFilter(const QString& name, int parameters)
{
    auto filter = Record::create();
    filter->setString(key::name, name);
    filter->setString(key::author, QStringLiteral("Quillon Tests"));
    filter->setString(key::path, QStringLiteral("/filters/") + name + QStringLiteral(".ffxml"));
    auto params = std::make_shared<RecordList>();
    for (int i = 0; i < parameters; ++i) {
        auto slider = makeParameterRecord(controlType::kTypeSlider, QStringLiteral("amount_%1").arg(i));
        slider->setString(key::CONTROL_NAME, QStringLiteral("Amount %1").arg(i));
        slider->setReal(key::STARTVALUE, 0.25 + i);
        params->push_back(slider);
    }
    params->push_back(generateVariationsSettings());
    filter->setList(key::Components, params);
    return filter;
}

class ChainSaveFault : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_temp.isValid());
        m_dir = QDir(m_temp.path()).filePath(QStringLiteral("chains"));
        ASSERT_TRUE(QDir().mkpath(m_dir));
        m_file = QDir(m_dir).filePath(QStringLiteral("mine.qlch"));
    }

    // Saves the small chain that the failing save must leave in place.
    void savePrevious()
    {
        ASSERT_TRUE(writeChainFile(m_file, m_small, nullptr));
        m_previous = readBytes(m_file);
        ASSERT_FALSE(m_previous.isEmpty());
    }

    void expectPreviousIntact() const
    {
        EXPECT_TRUE(readBytes(m_file) == m_previous) << "the previous chain file changed";
        EXPECT_EQ(readChainFile(m_file).status, ChainReadResult::Ok);
        const QStringList temporaries = leftoverTemporaryFiles(m_dir);
        EXPECT_TRUE(temporaries.isEmpty()) << temporaries.join(QLatin1Char(' ')).toStdString();
        QStringList names = QDir(m_dir).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        names.removeAll(QStringLiteral("filler.bin"));
        EXPECT_EQ(names, QStringList { "mine.qlch" });
    }

    QTemporaryDir m_temp;
    QString m_dir;
    QString m_file;
    QByteArray m_previous;
    const RecordList m_small { chainFilter(QStringLiteral("Small"), 1) };
    // Far larger than the previous file and than the file size limit below.
    const RecordList m_large { chainFilter(QStringLiteral("Large"), 200),
        chainFilter(QStringLiteral("More"), 200) };
};

TEST_F(ChainSaveFault, AFileSizeLimitFailsTheSaveAndKeepsThePreviousFile)
{
    savePrevious();
    QString error;
    bool saved = true;
    {
        const FileSizeLimit limit(static_cast<rlim_t>(m_previous.size()) + 16);
        ASSERT_TRUE(limit.active());
        ::testing::internal::CaptureStdout();
        saved = saveChainAndReport(m_file, m_large, &error);
        EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Saveres=false\n");
    }
    EXPECT_FALSE(saved);
    EXPECT_FALSE(error.isEmpty());
    expectPreviousIntact();
    // The same save succeeds once there is room again.
    EXPECT_TRUE(writeChainFile(m_file, m_large, nullptr));
    EXPECT_EQ(readChainFile(m_file).chain.size(), 2u);
}

TEST_F(ChainSaveFault, AFullDiskFailsTheSaveAndKeepsThePreviousFile)
{
    TestMount mount = TestMount::tmpfs(m_dir, 128 * 1024);
    if (!mount.active())
        GTEST_SKIP() << "a small tmpfs cannot be mounted here: " << mount.why().toStdString();
    savePrevious();
    ASSERT_FALSE(fillFileSystem(m_dir, QStringLiteral("filler.bin")).isEmpty());

    QString error;
    EXPECT_FALSE(writeChainFile(m_file, m_large, &error));
    EXPECT_FALSE(error.isEmpty());
    // Even the small chain, whose file already exists, needs room for its
    // temporary copy.
    EXPECT_FALSE(writeChainFile(m_file, m_small, &error));
    expectPreviousIntact();
}

TEST_F(ChainSaveFault, AReadOnlyFolderFailsTheSaveAndKeepsThePreviousFile)
{
    savePrevious();
    const bool root = ::geteuid() == 0;
    std::optional<TestMount> mount;
    if (root) {
        // Permissions do not stop root; a read-only bind mount does.
        mount.emplace(TestMount::readOnlyBind(m_dir));
        if (!mount->active())
            GTEST_SKIP() << "running as root without the right to mount: " << mount->why().toStdString();
    } else {
        ASSERT_TRUE(QFile::setPermissions(m_dir, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
    }

    QString error;
    EXPECT_FALSE(writeChainFile(m_file, m_large, &error));
    EXPECT_FALSE(error.isEmpty());
    expectPreviousIntact();
    if (!root)
        QFile::setPermissions(
            m_dir, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

} // namespace
