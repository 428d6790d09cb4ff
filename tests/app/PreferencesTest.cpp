#include "app/Preferences.h"
#include "app/DemoProfile.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace quillon {
namespace {

class PreferencesTest : public ::testing::Test {
protected:
    QString storePath() const { return m_dir.filePath(QStringLiteral("prefs.conf")); }

    QTemporaryDir m_dir;
};

TEST_F(PreferencesTest, GettersReadTextAndNumbersAlikeAndSetKeepsTheTablesType)
{
    Preferences prefs(storePath());
    prefs.setInteger(pref::NUM_FRAMES, 10);
    prefs.setString(pref::OUTPUT_SUFFIX, QStringLiteral("1"));
    prefs.setString(pref::SET_WIDTH, QStringLiteral("wide"));
    EXPECT_EQ(prefs.integerForKey(pref::SET_WIDTH), 0);
    EXPECT_FALSE(prefs.stringForKey(pref::INPUT_MODE));
    EXPECT_EQ(prefs.integerForKey(pref::INPUT_MODE), 0);
    EXPECT_TRUE(prefs.sync());
    Preferences reread(storePath());
    EXPECT_EQ(reread.stringForKey(pref::NUM_FRAMES), QStringLiteral("10"));
    EXPECT_EQ(reread.integerForKey(pref::NUM_FRAMES), 10);
    EXPECT_EQ(reread.integerForKey(pref::OUTPUT_SUFFIX), 1);

    // Nothing stored: the reset value, or nothing for a key without one.
    EXPECT_EQ(reread.value(pref::JPEG_QUALITY), QVariant(qint64(80)));
    EXPECT_EQ(reread.value(pref::OUT_PREFIX), QVariant(QStringLiteral("my-export")));
    EXPECT_FALSE(reread.value(pref::INPUT_MODE).isValid());
    EXPECT_TRUE(reread.set(pref::JPEG_QUALITY, QStringLiteral("55")));
    EXPECT_FALSE(reread.set(pref::JPEG_QUALITY, QStringLiteral("high")));
    EXPECT_FALSE(reread.set(QStringLiteral("NO_SUCH_KEY"), 1));
    EXPECT_TRUE(reread.set(pref::SET_WIDTH, 640));
    EXPECT_EQ(reread.value(pref::JPEG_QUALITY), QVariant(qint64(55)));
    EXPECT_EQ(reread.value(pref::SET_WIDTH), QVariant(QStringLiteral("640")));
    EXPECT_FALSE(reread.contains(QStringLiteral("NO_SUCH_KEY")));
    // The user's own store is the native file in the user's config location.
    const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    EXPECT_EQ(Preferences().fileName(), QDir(config).filePath(QStringLiteral("Quillon/Quillon.conf")));
}

TEST_F(PreferencesTest, DemoProfilePointsAtItsOwnStoreAndCreatesTheOutputFolder)
{
    DemoLocations locations;
    locations.filtersDir = m_dir.filePath(QStringLiteral("filters"));
    locations.toolPath = m_dir.filePath(QStringLiteral("tool"));
    locations.outputDir = m_dir.filePath(QStringLiteral("out/demo"));
    locations.settingsFile = m_dir.filePath(QStringLiteral("config/demo.conf"));
    QString error;
    auto prefs = openDemoPreferences(locations, &error);
    ASSERT_TRUE(prefs) << error.toStdString();
    EXPECT_TRUE(QDir(locations.outputDir).exists());
    EXPECT_EQ(prefs->stringForKey(pref::PREF_RESET), QStringLiteral("YES"));
    EXPECT_EQ(prefs->stringForKey(pref::FILTERS_PATH), locations.filtersDir);
    EXPECT_EQ(prefs->stringForKey(pref::OUTPUT_DIR), locations.outputDir);
    EXPECT_EQ(prefs->fileName(), locations.settingsFile);

    // A second launch keeps the demo's own changes but renews the paths.
    prefs->setString(pref::SET_WIDTH, QStringLiteral("321"));
    prefs->setString(pref::TOOL_PATH, QStringLiteral("/elsewhere"));
    prefs->sync();
    prefs.reset();
    auto again = openDemoPreferences(locations, &error);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->stringForKey(pref::SET_WIDTH), QStringLiteral("321"));
    EXPECT_EQ(again->stringForKey(pref::TOOL_PATH), locations.toolPath);

    // Found in the build tree: the sample filters and the stand-in tool.
    const DemoLocations found = findDemoLocations(m_dir.path());
    EXPECT_TRUE(QFileInfo(found.filtersDir).isDir()) << found.filtersDir.toStdString();
    EXPECT_TRUE(QFileInfo(found.toolPath).isExecutable()) << found.toolPath.toStdString();
    EXPECT_TRUE(found.settingsFile.endsWith(QStringLiteral("Quillon/demo.conf")));
}

} // namespace
} // namespace quillon
