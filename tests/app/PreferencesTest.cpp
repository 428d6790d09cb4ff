#include "app/Preferences.h"
#include "app/DemoProfile.h"

#include <QDir>
#include <QFile>
#include <QSet>
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

TEST_F(PreferencesTest, ResetSavesTheFactoryValuesToDisk)
{
    {
        Preferences prefs(storePath());
        EXPECT_FALSE(prefs.stringForKey(pref::PREF_RESET));
        prefs.prefsReset();
    }
    // A fresh store object reads what the reset saved (the window's first
    // launch shows every value).
    Preferences prefs(storePath());
    EXPECT_EQ(prefs.stringForKey(pref::PREF_RESET), QStringLiteral("YES"));
    EXPECT_EQ(prefs.integerForKey(pref::NUM_FRAMES), 10);
    EXPECT_EQ(prefs.stringForKey(pref::EXPORT_FORMAT), QStringLiteral("JPEG"));
    // The empty paths are present: start-up takes the "stored" branch.
    for (const QString& key : { pref::TOOL_PATH, pref::FILTERS_PATH, pref::OUTPUT_DIR, pref::INPUT_PATH })
        EXPECT_EQ(prefs.stringForKey(key), QString()) << key.toStdString();
    // A reset never chooses the source type or the frame suffix.
    EXPECT_FALSE(prefs.contains(pref::INPUT_MODE));
    EXPECT_FALSE(prefs.contains(pref::OUTPUT_SUFFIX));
}

TEST_F(PreferencesTest, TheUsersStoreIsTheNativeFileInTheUsersConfigLocation)
{
    const Preferences prefs; // only looked at, never written
    const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    EXPECT_EQ(prefs.fileName(), QDir(config).filePath(QStringLiteral("Quillon/Quillon.conf")));
}

TEST_F(PreferencesTest, TypedGettersReadTextAndNumbersAlike)
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
}

TEST_F(PreferencesTest, ValueFallsBackToTheTableAndSetKeepsTheTablesType)
{
    Preferences prefs(storePath());
    // Nothing stored: the reset value, or nothing for a key without one.
    EXPECT_EQ(prefs.value(pref::JPEG_QUALITY), QVariant(qint64(80)));
    EXPECT_EQ(prefs.value(pref::OUT_PREFIX), QVariant(QStringLiteral("my-export")));
    EXPECT_FALSE(prefs.value(pref::INPUT_MODE).isValid());

    EXPECT_TRUE(prefs.set(pref::JPEG_QUALITY, QStringLiteral("55")));
    EXPECT_FALSE(prefs.set(pref::JPEG_QUALITY, QStringLiteral("high")));
    EXPECT_FALSE(prefs.set(QStringLiteral("NO_SUCH_KEY"), 1));
    EXPECT_TRUE(prefs.set(pref::SET_WIDTH, 640));
    EXPECT_EQ(prefs.value(pref::JPEG_QUALITY), QVariant(qint64(55)));
    EXPECT_EQ(prefs.value(pref::SET_WIDTH), QVariant(QStringLiteral("640")));
    EXPECT_FALSE(prefs.contains(QStringLiteral("NO_SUCH_KEY")));
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
}

TEST_F(PreferencesTest, DemoLocationsFindTheBuildTreesSampleFiltersAndStandIn)
{
    const DemoLocations locations = findDemoLocations(m_dir.path());
    EXPECT_TRUE(QFileInfo(locations.filtersDir).isDir()) << locations.filtersDir.toStdString();
    EXPECT_TRUE(QFileInfo(locations.toolPath).isExecutable()) << locations.toolPath.toStdString();
    EXPECT_TRUE(locations.settingsFile.endsWith(QStringLiteral("Quillon/demo.conf")));
}

} // namespace
} // namespace quillon
