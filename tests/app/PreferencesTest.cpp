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

TEST_F(PreferencesTest, UnsetKeysGiveTheirResetValueAndTheUsersStoreIsTheNativeFile)
{
    Preferences prefs(storePath());
    EXPECT_EQ(prefs.value(pref::JPEG_QUALITY), QVariant(qint64(80)));
    EXPECT_FALSE(prefs.set(pref::JPEG_QUALITY, QStringLiteral("high")));
    EXPECT_TRUE(prefs.set(pref::JPEG_QUALITY, QStringLiteral("90")));
    EXPECT_TRUE(prefs.set(pref::OUTPUT_DIR, QStringLiteral("/out")));
    EXPECT_EQ(prefs.value(pref::JPEG_QUALITY), QVariant(qint64(90)));
    EXPECT_FALSE(prefs.value(pref::INPUT_MODE).isValid());
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

    // Found in the build tree, relative to the programs as in an install: the
    // sample filters and the stand-in tool.
    const DemoLocations found = findDemoLocations(QFileInfo(QStringLiteral(QUILLON_CLI_PATH)).absolutePath());
    EXPECT_TRUE(QFileInfo(found.filtersDir).isDir()) << found.filtersDir.toStdString();
    EXPECT_TRUE(QFileInfo(found.toolPath).isExecutable()) << found.toolPath.toStdString();
    EXPECT_TRUE(found.settingsFile.endsWith(QStringLiteral("Quillon/demo.conf")));
}

} // namespace
} // namespace quillon
