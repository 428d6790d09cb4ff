// Saving a chain when a write fails midway (a file size limit, as on a full
// disk) or the folder cannot be written: the save fails, the previous chain
// file stays byte for byte, and no temporary file is left beside it.

#include "chain/ChainFile.h"
#include "support/BatchFixtures.h"
#include "support/NothingLost.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include <unistd.h>

using namespace quillon;
using quillon::test::fileBytes;
using quillon::test::FileSizeLimit;
using quillon::test::TestMount;

namespace {

RecordPtr chainFilter(const QString& name, int parameters)
{
    auto filter = Record::create();
    filter->setString(key::name, name);
    filter->setString(key::path, QStringLiteral("/filters/") + name + QStringLiteral(".ffxml"));
    auto params = std::make_shared<RecordList>();
    for (int i = 0; i < parameters; ++i) {
        auto slider = makeParameterRecord(controlType::kTypeSlider, QStringLiteral("amount_%1").arg(i));
        slider->setReal(key::STARTVALUE, 0.25 + i);
        params->push_back(slider);
    }
    params->push_back(generateVariationsSettings());
    filter->setList(key::Components, params);
    return filter;
}

} // namespace

TEST(ChainSaveFault, AFileSizeLimitOrAReadOnlyFolderFailsTheSaveAndKeepsThePreviousFile)
{
    const RecordList small { chainFilter(QStringLiteral("Small"), 1) };
    // Far larger than the previous file and than the file size limit below.
    const RecordList large { chainFilter(QStringLiteral("Large"), 200), chainFilter(QStringLiteral("More"), 200) };
    const bool root = ::geteuid() == 0; // permissions do not stop root; a read-only bind mount does
    for (const std::string fault : { "file size limit", "read-only folder" }) {
        SCOPED_TRACE(fault);
        QTemporaryDir temp;
        const QString dir = temp.filePath(QStringLiteral("chains"));
        const QString file = dir + QStringLiteral("/mine.qlch");
        ASSERT_TRUE(QDir().mkpath(dir));
        std::optional<TestMount> mount;
        ASSERT_TRUE(writeChainFile(file, small, nullptr));
        const QByteArray previous = fileBytes(file);
        std::optional<FileSizeLimit> limit;
        if (fault == "file size limit") {
            limit.emplace(static_cast<rlim_t>(previous.size()) + 16);
            ASSERT_TRUE(limit->active());
        } else if (fault == "read-only folder" && root) {
            mount.emplace(TestMount::readOnlyBind(dir));
        } else if (fault == "read-only folder") {
            ASSERT_TRUE(QFile::setPermissions(dir, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
        }
        if (mount && !mount->active()) { // root without the right to mount
            std::cout << "[ SKIPPED  ] " << fault << ": " << mount->why().toStdString() << '\n';
            continue;
        }

        QString error;
        ::testing::internal::CaptureStdout();
        EXPECT_FALSE(saveChainAndReport(file, large, &error));
        EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Saveres=false\n");
        EXPECT_FALSE(error.isEmpty());
        EXPECT_TRUE(fileBytes(file) == previous) << "the previous chain file changed";
        // No temporary file is left beside it.
        EXPECT_EQ(test::batchDirectoryNames(dir), QStringList { "mine.qlch" });

        // The large save succeeds once the fault is gone.
        limit.reset();
        mount.reset();
        QFile::setPermissions(dir, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        EXPECT_TRUE(writeChainFile(file, large, nullptr));
        EXPECT_EQ(readChainFile(file).chain.size(), 2u);
    }
}
