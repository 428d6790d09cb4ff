// Saving a chain when the disk is full or the folder cannot be written: the
// save fails, the previous chain file stays byte for byte, and no temporary
// file is left beside it.

#include "chain/ChainFile.h"
#include "support/NothingLost.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <memory>
#include <string>

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
public: // the fault table's set-ups reach the folder and the previous file
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

// Each fault is set up in a fresh chains folder holding the previous file;
// the guard it returns takes the fault away again.
TEST_F(ChainSaveFault, AFileSizeLimitAFullDiskOrAReadOnlyFolderFailsTheSaveAndKeepsThePreviousFile)
{
    struct Fault {
        const char* name;
        std::function<std::shared_ptr<void>(ChainSaveFault&)> set; // null: cannot be set up here
    };
    const Fault faults[] = {
        { "file size limit",
            [](ChainSaveFault& t) -> std::shared_ptr<void> {
                auto limit = std::make_shared<FileSizeLimit>(static_cast<rlim_t>(t.m_previous.size()) + 16);
                return limit->active() ? limit : nullptr;
            } },
        { "full disk",
            [](ChainSaveFault& t) -> std::shared_ptr<void> {
                auto mount = std::make_shared<TestMount>(TestMount::tmpfs(t.m_dir, 128 * 1024));
                if (!mount->active())
                    return nullptr;
                t.savePrevious();
                return fillFileSystem(t.m_dir, QStringLiteral("filler.bin")).isEmpty() ? nullptr : mount;
            } },
        { "read-only folder",
            [](ChainSaveFault& t) -> std::shared_ptr<void> {
                if (::geteuid() == 0) { // permissions do not stop root; a read-only bind mount does
                    auto mount = std::make_shared<TestMount>(TestMount::readOnlyBind(t.m_dir));
                    return mount->active() ? mount : nullptr;
                }
                if (!QFile::setPermissions(t.m_dir, QFileDevice::ReadOwner | QFileDevice::ExeOwner))
                    return nullptr;
                return std::shared_ptr<void>(t.m_dir.data(), [dir = t.m_dir](void*) {
                    QFile::setPermissions(
                        dir, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
                });
            } },
    };
    for (const Fault& fault : faults) {
        SCOPED_TRACE(fault.name);
        ASSERT_TRUE(QDir(m_dir).removeRecursively() && QDir().mkpath(m_dir));
        savePrevious();
        const std::shared_ptr<void> guard = fault.set(*this);
        if (!guard) {
            // Only a mount may be out of reach (root without the right to mount).
            EXPECT_NE(fault.name, std::string("file size limit"));
            std::cout << "[ SKIPPED  ] " << fault.name << ": cannot be set up here\n";
            continue;
        }
        QString error;
        ::testing::internal::CaptureStdout();
        EXPECT_FALSE(saveChainAndReport(m_file, m_large, &error));
        EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Saveres=false\n");
        EXPECT_FALSE(error.isEmpty());
        expectPreviousIntact();
    }
    // A full disk fails even the small chain, whose file already exists: its
    // temporary copy needs room too.
    ASSERT_TRUE(QDir(m_dir).removeRecursively() && QDir().mkpath(m_dir));
    if (const auto full = faults[1].set(*this)) {
        EXPECT_FALSE(writeChainFile(m_file, m_small, nullptr));
        expectPreviousIntact();
    }
    // The large save succeeds once there is room again.
    EXPECT_TRUE(writeChainFile(m_file, m_large, nullptr));
    EXPECT_EQ(readChainFile(m_file).chain.size(), 2u);
}

} // namespace
