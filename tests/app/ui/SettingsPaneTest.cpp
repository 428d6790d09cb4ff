// The Settings page: what it shows at first, what it stores and when, and
// what reaches the run settings.

#include "support/WindowFixture.h"

#include "app/CliOptions.h"
#include "cluster/ClusterBundle.h"
#include "run/RunSettings.h"
#include "run/SettingTable.h"

#include <QAction>
#include <QJsonArray>
#include <QJsonDocument>

namespace quillon::test {
namespace {

class SettingsPaneTest : public SettingsWindowTest {
protected:
    void SetUp() override
    {
        SettingsWindowTest::SetUp();
        delegate().applicationDidFinishLaunching();
    }

    QTabWidget* formats() { return widget<QTabWidget>("formatTabControl"); }
    QString formatIdentifier() { return formats()->currentWidget()->property("identifier").toString(); }
    void selectFormat(const QString& identifier)
    {
        for (int i = 0; i < formats()->count(); ++i) {
            if (formats()->widget(i)->property("identifier").toString() == identifier)
                formats()->setCurrentIndex(i);
        }
    }
};

TEST_F(SettingsPaneTest, FirstLaunchWritesTheFactoryValues)
{
    // Every value a first launch stores, as a listing in tests/app/data
    // (QUILLON_WRITE_GOLDEN=1 rewrites it).
    const auto saved = savedStore();
    QString listing;
    for (const PreferenceKey& row : Preferences::table()) {
        EXPECT_TRUE(!row.resetValue || saved->contains(row.key)) << row.key.toStdString();
        const QJsonArray value { QJsonValue::fromVariant(saved->value(row.key)) };
        listing += row.key + QLatin1Char('=') + QString::fromUtf8(QJsonDocument(value).toJson(QJsonDocument::Compact)) + QLatin1Char('\n');
    }
    test::expectGoldenFile(QStringLiteral("app/data/factory-values.txt"), listing.toUtf8());
    // The start-up pass applied source type and suffix, storing both.
    EXPECT_EQ(saved->stringForKey(pref::INPUT_MODE), QStringLiteral("IMAGE"));
    EXPECT_EQ(saved->stringForKey(pref::OUTPUT_SUFFIX), QStringLiteral("0"));
    EXPECT_EQ(formatIdentifier(), QStringLiteral("JPEG"));
    EXPECT_FALSE(field("imageWidthField")->isEnabled());
}

TEST_F(SettingsPaneTest, EveryChangeIsStoredAtOnceAndComesBackAfterARestart)
{
    box("ditherCB")->click();
    box("antiAliasCB")->click();
    typeInto("imageWidthField", QStringLiteral("1024"));
    typeInto("numberOfFramesField", QStringLiteral("12"));
    typeInto("outputFilenamePrefixField", QStringLiteral("night-sky"));
    EXPECT_EQ(savedStore()->integerForKey(pref::CB_DITHER), 1);
    EXPECT_EQ(savedStore()->stringForKey(pref::OUT_PREFIX), QStringLiteral("night-sky"));
    choose(popup("sourceTypePopup"), 1);
    choose(popup("sourceTypePopup"), 2); // no input is not remembered
    EXPECT_EQ(savedStore()->stringForKey(pref::INPUT_MODE), QStringLiteral("DIR"));
    choose(popup("outputFilenameSuffixPopup"), 1);
    radio("f_pngBitDepth16RB")->click();
    radio("f_tiffCompressionDeflateRB")->click();
    box("f_tgaFlipOrderCB")->click();
    selectFormat(QStringLiteral("TIFF"));
    typeInto("f_jpgQualityField", QStringLiteral("55"));
    // The format tab and the quality are saved by the store's own flush.
    prefs().sync();

    relaunch();
    // The input itself is never restored.
    EXPECT_EQ(shown({ "ditherCB", "antiAliasCB", "imageWidthField", "numberOfFramesField",
                  "outputFilenamePrefixField", "sourceTypePopup", "outputFilenameSuffixPopup",
                  "maxFramesField", "f_pngBitDepth16RB", "f_tiffCompressionDeflateRB", "f_tgaFlipOrderCB",
                  "f_jpgQualitySlider", "sourcePathField" }),
        (QStringList {
            "on", "off", "1024", "12", "night-sky", "1", "1", "9999", "on", "on", "on", "55", "[not set]" }));
    EXPECT_EQ(delegate().captureRunSettings().tiffCompression, 2);
    EXPECT_EQ(formatIdentifier(), QStringLiteral("TIFF"));
}

TEST_F(SettingsPaneTest, AWindowsToolRunsWithWineUnlessTurnedOff)
{
    typeInto("renderToolPathField", QStringLiteral("/opt/ff/FFBatch.EXE"));
    EXPECT_EQ(delegate().captureRunSettings().toolWine, 1);
    box("toolWineCB")->click();
    relaunch();
    EXPECT_EQ(shown({ "toolWineCB" }), QStringList { "off" });
    EXPECT_EQ(delegate().captureRunSettings().toolWine, 0);
    box("toolWineCB")->click();
    typeInto("renderToolPathField", QStringLiteral("/opt/ff/ffbatch"));
    EXPECT_EQ(shown({ "toolWineCB" }), QStringList { "off" });
}

TEST_F(SettingsPaneTest, ResetCommandRestoresFactoryValuesButKeepsSourceTypeAndSuffix)
{
    typeInto("renderToolPathField", QStringLiteral("/opt/tool"));
    typeInto("filtersPathField", m_dir.path());
    typeInto("outputDirectoryPathField", m_dir.path());
    choose(popup("sourceTypePopup"), 1);
    choose(popup("outputFilenameSuffixPopup"), 2);
    typeInto("imageWidthField", QStringLiteral("77"));
    typeInto("f_jpgQualityField", QStringLiteral("12"));

    QAction* reset = delegate().window()->findChild<QAction*>(QStringLiteral("actionResetPreferences"));
    reset->trigger(); // answered No: nothing changes
    EXPECT_EQ(field("renderToolPathField")->text(), QStringLiteral("/opt/tool"));
    MessageBoxes::instance().setNextAnswer(true);
    reset->trigger();

    const auto saved = savedStore();
    EXPECT_EQ(saved->stringForKey(pref::TOOL_PATH), QString());
    EXPECT_EQ(saved->stringForKey(pref::INPUT_MODE), QStringLiteral("DIR"));
    EXPECT_EQ(saved->stringForKey(pref::OUTPUT_SUFFIX), QStringLiteral("2"));
    EXPECT_EQ(shown({ "renderToolPathField", "filtersPathField", "outputDirectoryPathField",
                  "sourceTypePopup", "outputFilenameSuffixPopup", "imageWidthField", "f_jpgQualitySlider" }),
        (QStringList { "[the FilterForge Batch tool]", "[the directory of filter definitions]",
            "[where the images go]", "1", "2", "600", "80" }));
    // Without a Filters directory there is nothing to add.
    EXPECT_FALSE(widget<QPushButton>("addFilterButton")->isEnabled());
}

TEST_F(SettingsPaneTest, RadioGroupsStoreTheirCodesForTheRun)
{
    const struct {
        const char* button;
        QString key;
        int code;
        int RunSettings::*setting;
    } rows[] = {
        { "f_tiffBitDepth16RB", pref::TIFF_BITDEPTH, 1, &RunSettings::tiffBitDepth },
        { "f_tgaBitDepth32RB", pref::TGA_BITDEPTH, 1, &RunSettings::tgaBitDepth },
        { "f_pngCompressionBestRB", pref::PNG_COMPRESSION, 2, &RunSettings::pngCompression },
        { "f_tiffCompressionLZWRB", pref::TIFF_COMPRESSION, 1, &RunSettings::tiffCompression },
        { "f_pngBitDepth8RB", pref::PNG_BITDEPTH, 0, &RunSettings::pngBitDepth },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.button);
        radio(row.button)->click();
        EXPECT_TRUE(radio(row.button)->isChecked());
        EXPECT_EQ(delegate().captureRunSettings().*row.setting, row.code);
        EXPECT_EQ(savedStore()->integerForKey(row.key), row.code);
    }
    EXPECT_EQ(shown({ "f_tiffBitDepth24RB", "f_pngCompressionFastRB" }), (QStringList { "off", "off" }));
}

TEST_F(SettingsPaneTest, LetterStyleCapsTheFrameCountAtTwentyFive)
{
    field("numberOfFramesField")->setText(QStringLiteral("30"));
    choose(popup("outputFilenameSuffixPopup"), 2);
    EXPECT_EQ(shown({ "numberOfFramesField", "maxFramesField" }), (QStringList { "25", "25" }));
    choose(popup("outputFilenameSuffixPopup"), 0);
    EXPECT_EQ(shown({ "numberOfFramesField", "maxFramesField" }), (QStringList { "25", "999" }));
    choose(popup("outputFilenameSuffixPopup"), 1);
    EXPECT_EQ(field("maxFramesField")->text(), QStringLiteral("9999"));
    EXPECT_EQ(delegate().captureRunSettings().nameStyle, FrameStyle::FourDigit);
}

TEST_F(SettingsPaneTest, SourceTypeChangesForgetTheInputAndSwitchTheControls)
{
    const FileDialogs& dialogs = FileDialogs::instance();
    choose(popup("sourceTypePopup"), 1);
    locate("locateSourceButton", m_dir.path());
    EXPECT_TRUE(dialogs.lastRequest().canChooseDirectories);
    EXPECT_EQ(field("sourcePathField")->text(), m_dir.path());
    EXPECT_EQ(savedStore()->stringForKey(pref::INPUT_PATH), m_dir.path());
    // Clearing shows an empty field and leaves the stored input alone.
    click("clearSourceButton");
    EXPECT_EQ(field("sourcePathField")->text(), QString());
    EXPECT_TRUE(delegate().settingsPane()->sourcePath().isEmpty());
    EXPECT_EQ(savedStore()->stringForKey(pref::INPUT_PATH), m_dir.path());
    locate("locateSourceButton", m_dir.path());

    choose(popup("sourceTypePopup"), 2);
    EXPECT_TRUE(delegate().settingsPane()->sourcePath().isEmpty());
    EXPECT_EQ(shown({ "sourcePathField" }), QStringList { "[not set]" }) << "a placeholder, no text";
    for (const char* name : { "sourcePathField", "locateSourceButton", "clearSourceButton" })
        EXPECT_TRUE(widget<QWidget>(name)->isHidden()) << name;
    EXPECT_TRUE(field("imageWidthField")->isEnabled() && field("imageHeightField")->isEnabled());

    choose(popup("sourceTypePopup"), 0);
    EXPECT_EQ(savedStore()->stringForKey(pref::INPUT_MODE), QStringLiteral("IMAGE"));
    EXPECT_FALSE(field("sourcePathField")->isHidden());
    EXPECT_FALSE(field("imageWidthField")->isEnabled());
}

TEST_F(SettingsPaneTest, ExportControlsAreStoredAndReachTheRunSettings)
{
    selectFormat(QStringLiteral("EXR"));

    // The quality field keeps what was typed; the slider clamps.
    widget<QSlider>("f_jpgQualitySlider")->setValue(42);
    EXPECT_EQ(field("f_jpgQualityField")->text(), QStringLiteral("42"));
    typeInto("f_jpgQualityField", QStringLiteral("150"));
    EXPECT_EQ(prefs().integerForKey(pref::JPEG_QUALITY), 150);
    EXPECT_EQ(widget<QSlider>("f_jpgQualitySlider")->value(), 100);

    box("f_pngIncludeTransCB")->click();
    box("f_tiffFloatFormatCB")->click();
    box("f_jpgFullPrecisionCB")->click();
    const RunSettings settings = delegate().captureRunSettings();
    EXPECT_EQ(settings.format, QStringLiteral("EXR"));
    EXPECT_EQ(settings.jpegQualityText, QStringLiteral("150"));
    EXPECT_EQ(std::tuple(settings.pngIncludeTrans, settings.tiffFloatFormat, settings.jpegFullPrecision),
        std::tuple(1, 1, 0));
}

// A value of each kind that differs from the row's default.
QVariant sampleOf(const SettingDefinition& row)
{
    switch (row.kind) {
    case SettingKind::Path:
    case SettingKind::Text:
        return QStringLiteral("/sample/") + row.key;
    case SettingKind::WholeNumber:
        return QStringLiteral("7");
    case SettingKind::Integer:
        return 3;
    case SettingKind::Switch:
    case SettingKind::MixedSwitch:
    case SettingKind::Choice:
        return row.defaultValue.toInt() == 0 ? 1 : 0;
    case SettingKind::Name:
        return row.choices.value(1);
    case SettingKind::Maps:
        return QVariantList { 0, 1, 0, 0, 0, 0, 0, 0, 0, 1 };
    case SettingKind::Seed:
        break;
    }
    return QVariant::fromValue<qulonglong>(42);
}

// Every row of the setting table: preferences -> the page -> RunSettings ->
// bundle JSON -> RunSettings, and its flag -> RunSettings.
TEST_F(SettingsPaneTest, EverySettingRoundTripsThroughItsTable)
{
    // The input is chosen anew at each start, so its stored path is not shown.
    const auto onThePage = [](const SettingDefinition& row) {
        return !row.preferenceKey.isEmpty() && row.resets && row.key != QLatin1String("sourcePath");
    };
    for (const SettingDefinition& row : settingTable()) {
        SCOPED_TRACE(row.key.toStdString());
        const QVariant sample = sampleOf(row);
        RunSettings sampled;
        EXPECT_EQ(row.get(sampled), row.defaultValue);
        row.set(sampled, sample);
        ASSERT_EQ(row.get(sampled), sample);
        if (onThePage(row))
            prefs().set(row.preferenceKey, row.preferenceValue(sample));
        if (!row.jsonName.isEmpty()) {
            EXPECT_EQ(row.get(settingsFromJson(settingsToJson(sampled))), sample);
        }
        if (row.flag.isEmpty() || row.parseFlag)
            continue; // flags with a reading of their own: CliOptionsTest
        // --wine-binary goes with --wine.
        QStringList flag { QStringLiteral("quillon-cli"), QStringLiteral("--wine"),
            QStringLiteral("--") + row.flag };
        if (row.kind == SettingKind::Choice) {
            flag.append(row.choices.value(sample.toInt()));
        } else if (row.kind == SettingKind::Switch || row.kind == SettingKind::MixedSwitch) {
            flag.append(sample.toInt() == 1 ? QStringLiteral("on") : QStringLiteral("off"));
        } else {
            flag.append(sample.toString());
        }
        if (row.flagValueName.isEmpty())
            flag.removeLast(); // a flag that turns its setting on
        CliOptions options;
        ASSERT_EQ(parseCliArguments(flag, &options, nullptr), CliParseResult::Run);
        EXPECT_EQ(row.get(options.settings), sample);
    }
    prefs().sync();
    relaunch();
    const RunSettings shown = delegate().captureRunSettings();
    for (const SettingDefinition& row : settingTable()) {
        if (onThePage(row)) {
            EXPECT_EQ(row.get(shown), sampleOf(row)) << row.key.toStdString();
        }
    }
}

} // namespace
} // namespace quillon::test
