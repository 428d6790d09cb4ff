#include "SettingsWindowFixture.h"

#include "app/RunSettings.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPushButton>
#include <QUrl>

namespace quillon::test {
namespace {

class SettingsPaneTest : public SettingsWindowTest {
protected:
    QTabWidget* formats() { return widget<QTabWidget>("formatTabControl"); }
    QString formatIdentifier() { return formats()->currentWidget()->property("identifier").toString(); }
    void selectFormat(const QString& identifier)
    {
        for (int i = 0; i < formats()->count(); ++i) {
            if (formats()->widget(i)->property("identifier").toString() == identifier)
                formats()->setCurrentIndex(i);
        }
    }
    // Types into a field and leaves it, as the user does.
    void typeInto(const char* name, const QString& text)
    {
        QLineEdit* edit = field(name);
        edit->setText(text);
        Q_EMIT edit->editingFinished();
    }
    void relaunch()
    {
        closeDelegate();
        m_delegate = std::make_unique<AppDelegate>();
        m_delegate->setPreferences(std::make_unique<Preferences>(storePath()));
        m_delegate->applicationDidFinishLaunching();
    }
};

TEST_F(SettingsPaneTest, FirstLaunchWritesTheFactoryValuesAndShowsThem)
{
    delegate().applicationDidFinishLaunching();

    const auto saved = savedStore();
    EXPECT_EQ(saved->stringForKey(pref::PREF_RESET), QStringLiteral("YES"));
    for (const PreferenceKey& row : Preferences::table()) {
        if (row.resetValue) {
            EXPECT_TRUE(saved->contains(row.key)) << row.key.toStdString();
        }
    }
    // The start-up pass applied source type and suffix, storing both.
    EXPECT_EQ(saved->stringForKey(pref::INPUT_MODE), QStringLiteral("IMAGE"));
    EXPECT_EQ(saved->stringForKey(pref::OUTPUT_SUFFIX), QStringLiteral("0"));

    EXPECT_EQ(field("imageWidthField")->text(), QStringLiteral("600"));
    EXPECT_EQ(field("imageHeightField")->text(), QStringLiteral("600"));
    EXPECT_EQ(field("numberOfFramesField")->text(), QStringLiteral("10"));
    EXPECT_EQ(field("maxFramesField")->text(), QStringLiteral("999"));
    EXPECT_EQ(field("outputFilenamePrefixField")->text(), QStringLiteral("my-export"));
    EXPECT_EQ(widget<QSlider>("f_jpgQualitySlider")->value(), 80);
    EXPECT_EQ(field("f_jpgQualityField")->text(), QStringLiteral("80"));
    EXPECT_EQ(formatIdentifier(), QStringLiteral("JPEG"));

    for (const char* on : { "antiAliasCB", "multithreadCB", "progressiveCB", "cleanupAfterCB",
             "f_jpgFullPrecisionCB", "f_tiffIncludeTransCB", "f_tgaIncludeTransCB" })
        EXPECT_TRUE(box(on)->isChecked()) << on;
    for (const char* off : { "normalmapFlipCB", "ditherCB", "toollogCB", "f_pngIncludeTransCB",
             "f_tiffFloatFormatCB", "f_tgaFlipOrderCB" })
        EXPECT_FALSE(box(off)->isChecked()) << off;
    for (const char* on : { "f_pngBitDepth8RB", "f_pngCompressionNoneRB", "f_tiffBitDepth8RB",
             "f_tiffCompressionNoneRB", "f_tgaBitDepth24RB" })
        EXPECT_TRUE(radio(on)->isChecked()) << on;

    EXPECT_EQ(field("renderToolPathField")->text(), QString());
    EXPECT_EQ(field("filtersPathField")->text(), QString());
    EXPECT_EQ(field("outputDirectoryPathField")->text(), QString());
    EXPECT_EQ(field("sourcePathField")->text(), QStringLiteral("not set"));
    EXPECT_FALSE(field("imageWidthField")->isEnabled());
    EXPECT_EQ(popup("sourceTypePopup"), delegate().inputTypePopup());
}

TEST_F(SettingsPaneTest, EveryChangeIsStoredAtOnceAndComesBackAfterARestart)
{
    delegate().applicationDidFinishLaunching();

    box("ditherCB")->click();
    box("antiAliasCB")->click();
    EXPECT_EQ(savedStore()->integerForKey(pref::CB_DITHER), 1);
    EXPECT_EQ(savedStore()->integerForKey(pref::CB_ANTIALIAS), 0);
    typeInto("imageWidthField", QStringLiteral("1024"));
    typeInto("numberOfFramesField", QStringLiteral("12"));
    typeInto("outputFilenamePrefixField", QStringLiteral("night-sky"));
    EXPECT_EQ(savedStore()->stringForKey(pref::SET_WIDTH), QStringLiteral("1024"));
    EXPECT_EQ(savedStore()->stringForKey(pref::NUM_FRAMES), QStringLiteral("12"));
    EXPECT_EQ(savedStore()->stringForKey(pref::OUT_PREFIX), QStringLiteral("night-sky"));

    choose(popup("sourceTypePopup"), 1);
    choose(popup("outputFilenameSuffixPopup"), 1);
    radio("f_pngBitDepth16RB")->click();
    radio("f_tiffCompressionDeflateRB")->click();
    box("f_tgaFlipOrderCB")->click();
    selectFormat(QStringLiteral("TIFF"));
    typeInto("f_jpgQualityField", QStringLiteral("55"));
    // The format tab and the quality are saved by the store's own flush.
    prefs().sync();

    relaunch();

    EXPECT_TRUE(box("ditherCB")->isChecked());
    EXPECT_FALSE(box("antiAliasCB")->isChecked());
    EXPECT_EQ(field("imageWidthField")->text(), QStringLiteral("1024"));
    EXPECT_EQ(field("numberOfFramesField")->text(), QStringLiteral("12"));
    EXPECT_EQ(field("outputFilenamePrefixField")->text(), QStringLiteral("night-sky"));
    EXPECT_EQ(popup("sourceTypePopup")->currentIndex(), 1);
    EXPECT_EQ(popup("outputFilenameSuffixPopup")->currentIndex(), 1);
    EXPECT_EQ(field("maxFramesField")->text(), QStringLiteral("9999"));
    EXPECT_TRUE(radio("f_pngBitDepth16RB")->isChecked());
    EXPECT_FALSE(radio("f_pngBitDepth8RB")->isChecked());
    EXPECT_TRUE(radio("f_tiffCompressionDeflateRB")->isChecked());
    EXPECT_EQ(delegate().getPNGBitDepth(), QStringLiteral("16"));
    EXPECT_EQ(delegate().getTIFFCompression(), QStringLiteral("DEFLATE"));
    EXPECT_TRUE(box("f_tgaFlipOrderCB")->isChecked());
    EXPECT_EQ(formatIdentifier(), QStringLiteral("TIFF"));
    EXPECT_EQ(widget<QSlider>("f_jpgQualitySlider")->value(), 55);
    EXPECT_EQ(field("f_jpgQualityField")->text(), QStringLiteral("55"));
    // The input itself is never restored.
    EXPECT_EQ(field("sourcePathField")->text(), QStringLiteral("not set"));
}

TEST_F(SettingsPaneTest, NoInputIsNotRememberedAcrossARestart)
{
    delegate().applicationDidFinishLaunching();
    choose(popup("sourceTypePopup"), 1);
    choose(popup("sourceTypePopup"), 2);
    EXPECT_EQ(savedStore()->stringForKey(pref::INPUT_MODE), QStringLiteral("DIR"));

    relaunch();
    EXPECT_EQ(popup("sourceTypePopup")->currentIndex(), 1);
}

TEST_F(SettingsPaneTest, ResetCommandRestoresFactoryValuesButKeepsSourceTypeAndSuffix)
{
    {
        Preferences configured(storePath());
        configured.prefsReset();
        configured.setString(pref::TOOL_PATH, QStringLiteral("/opt/tool"));
        configured.setString(pref::FILTERS_PATH, m_dir.path());
        configured.setString(pref::OUTPUT_DIR, m_dir.path());
        configured.setString(pref::INPUT_MODE, QStringLiteral("DIR"));
        configured.setString(pref::OUTPUT_SUFFIX, QStringLiteral("2"));
        configured.setString(pref::SET_WIDTH, QStringLiteral("77"));
        configured.setInteger(pref::JPEG_QUALITY, 12);
        configured.sync();
    }
    delegate().applicationDidFinishLaunching();
    EXPECT_EQ(field("renderToolPathField")->text(), QStringLiteral("/opt/tool"));
    EXPECT_EQ(delegate().toolPath, QStringLiteral("/opt/tool"));
    EXPECT_EQ(field("imageWidthField")->text(), QStringLiteral("77"));

    delegate().window()->findChild<QAction*>(QStringLiteral("actionResetPreferences"))->trigger();

    const auto saved = savedStore();
    EXPECT_EQ(saved->stringForKey(pref::TOOL_PATH), QString());
    EXPECT_EQ(saved->stringForKey(pref::INPUT_MODE), QStringLiteral("DIR"));
    EXPECT_EQ(saved->stringForKey(pref::OUTPUT_SUFFIX), QStringLiteral("2"));
    EXPECT_EQ(field("renderToolPathField")->text(), QString());
    EXPECT_EQ(field("filtersPathField")->text(), QString());
    EXPECT_EQ(field("outputDirectoryPathField")->text(), QString());
    EXPECT_TRUE(delegate().toolPath.isEmpty());
    EXPECT_TRUE(delegate().filterPath.isEmpty());
    EXPECT_TRUE(delegate().outputPath.isEmpty());
    EXPECT_EQ(popup("sourceTypePopup")->currentIndex(), 1);
    EXPECT_EQ(popup("outputFilenameSuffixPopup")->currentIndex(), 2);
    EXPECT_EQ(field("imageWidthField")->text(), QStringLiteral("600"));
    EXPECT_EQ(widget<QSlider>("f_jpgQualitySlider")->value(), 80);
    // The scan of the (now empty) Filters path is under way.
    EXPECT_FALSE(widget<QPushButton>("addFilterButton")->isEnabled());
}

TEST_F(SettingsPaneTest, RadioGroupsStoreTheirCodesAndTheGettersGiveTheirTexts)
{
    delegate().applicationDidFinishLaunching();

    radio("f_tiffBitDepth24RB")->click();
    EXPECT_EQ(delegate().getTIFFBitDepth(), QStringLiteral("24"));
    EXPECT_EQ(delegate().tiff_bitdepth, 2);
    EXPECT_EQ(savedStore()->integerForKey(pref::TIFF_BITDEPTH), 2);
    EXPECT_FALSE(radio("f_tiffBitDepth8RB")->isChecked());
    EXPECT_FALSE(radio("f_tiffBitDepth16RB")->isChecked());
    EXPECT_TRUE(radio("f_tiffBitDepth24RB")->isChecked());

    // Clicking the button that is already on leaves it on.
    radio("f_tiffBitDepth24RB")->click();
    EXPECT_TRUE(radio("f_tiffBitDepth24RB")->isChecked());

    radio("f_tgaBitDepth32RB")->click();
    EXPECT_EQ(delegate().getTGABitDepth(), QStringLiteral("32"));
    EXPECT_EQ(savedStore()->integerForKey(pref::TGA_BITDEPTH), 1);
    radio("f_tgaBitDepth24RB")->click();
    EXPECT_EQ(delegate().getTGABitDepth(), QStringLiteral("24"));

    radio("f_pngCompressionFastRB")->click();
    EXPECT_EQ(delegate().getPNGCompression(), QStringLiteral("FAST"));
    radio("f_pngCompressionBestRB")->click();
    EXPECT_EQ(delegate().getPNGCompression(), QStringLiteral("BEST"));
    EXPECT_FALSE(radio("f_pngCompressionFastRB")->isChecked());
    radio("f_tiffCompressionLZWRB")->click();
    EXPECT_EQ(delegate().getTIFFCompression(), QStringLiteral("LZW"));
    EXPECT_EQ(delegate().getPNGBitDepth(), QStringLiteral("8"));

    const RunSettings settings = delegate().captureRunSettings();
    EXPECT_EQ(settings.tiffBitDepth, 2);
    EXPECT_EQ(settings.tgaBitDepth, 0);
    EXPECT_EQ(settings.pngCompression, 2);
    EXPECT_EQ(settings.tiffCompression, 1);
}

TEST_F(SettingsPaneTest, AStoredCodeOutsideTheGroupTurnsNoRadioOn)
{
    {
        Preferences configured(storePath());
        configured.prefsReset();
        configured.setInteger(pref::PNG_BITDEPTH, 7);
        configured.sync();
    }
    delegate().applicationDidFinishLaunching();
    EXPECT_EQ(delegate().png_bitdepth, 7);
    EXPECT_FALSE(radio("f_pngBitDepth8RB")->isChecked());
    EXPECT_FALSE(radio("f_pngBitDepth16RB")->isChecked());
    EXPECT_EQ(delegate().getPNGBitDepth(), QStringLiteral("16"));
}

TEST_F(SettingsPaneTest, LetterStyleCapsTheFrameCountAtTwentyFive)
{
    delegate().applicationDidFinishLaunching();
    field("numberOfFramesField")->setText(QStringLiteral("30"));

    choose(popup("outputFilenameSuffixPopup"), 2);
    EXPECT_EQ(field("numberOfFramesField")->text(), QStringLiteral("25"));
    EXPECT_EQ(field("maxFramesField")->text(), QStringLiteral("25"));
    EXPECT_EQ(delegate().frameMaxValue, 25);
    EXPECT_EQ(savedStore()->stringForKey(pref::OUTPUT_SUFFIX), QStringLiteral("2"));

    choose(popup("outputFilenameSuffixPopup"), 0);
    EXPECT_EQ(field("maxFramesField")->text(), QStringLiteral("999"));
    EXPECT_EQ(field("numberOfFramesField")->text(), QStringLiteral("25"));

    choose(popup("outputFilenameSuffixPopup"), 1);
    EXPECT_EQ(field("maxFramesField")->text(), QStringLiteral("9999"));
    EXPECT_EQ(delegate().captureRunSettings().nameStyle, 1);
}

TEST_F(SettingsPaneTest, SourceTypeChangesForgetTheInputAndSwitchTheControls)
{
    delegate().applicationDidFinishLaunching();
    choose(popup("sourceTypePopup"), 1);
    FileDialogs::instance().setNextFileName(m_dir.path());
    widget<QPushButton>("locateSourceButton")->click();
    EXPECT_EQ(delegate().sourcePath, m_dir.path());
    EXPECT_EQ(field("sourcePathField")->text(), m_dir.path());

    choose(popup("sourceTypePopup"), 2);
    EXPECT_EQ(savedStore()->stringForKey(pref::INPUT_MODE), QStringLiteral("DIR"));
    EXPECT_TRUE(delegate().sourcePath.isEmpty());
    EXPECT_EQ(field("sourcePathField")->text(), QStringLiteral("not set"));
    EXPECT_TRUE(field("sourcePathField")->isHidden());
    EXPECT_TRUE(widget<QPushButton>("locateSourceButton")->isHidden());
    EXPECT_TRUE(widget<QPushButton>("clearSourceButton")->isHidden());
    EXPECT_TRUE(field("imageWidthField")->isEnabled());
    EXPECT_TRUE(field("imageHeightField")->isEnabled());
    EXPECT_EQ(delegate().captureRunSettings().inputMode, 2);

    choose(popup("sourceTypePopup"), 0);
    EXPECT_EQ(savedStore()->stringForKey(pref::INPUT_MODE), QStringLiteral("IMAGE"));
    EXPECT_FALSE(field("sourcePathField")->isHidden());
    EXPECT_FALSE(field("imageWidthField")->isEnabled());
}

TEST_F(SettingsPaneTest, LocateDialogsAskAsTheyShouldAndStoreTheChoice)
{
    delegate().applicationDidFinishLaunching();
    const FileDialogs& dialogs = FileDialogs::instance();
    const QString tool = m_dir.filePath(QStringLiteral("render-tool"));

    FileDialogs::instance().setNextFileName(tool);
    widget<QPushButton>("locateRenderToolButton")->click();
    EXPECT_EQ(dialogs.lastRequest().prompt, QStringLiteral("Locate it"));
    EXPECT_EQ(dialogs.lastRequest().message,
        QStringLiteral("Quillon needs you to locate to FilterForge Batch tool"));
    EXPECT_TRUE(dialogs.lastRequest().canChooseFiles);
    EXPECT_FALSE(dialogs.lastRequest().canChooseDirectories);
    EXPECT_EQ(savedStore()->stringForKey(pref::TOOL_PATH), tool);
    EXPECT_EQ(delegate().toolPath, tool);
    EXPECT_EQ(field("renderToolPathField")->text(), tool);

    FileDialogs::instance().setNextFileName(QString()); // cancelled
    widget<QPushButton>("locateRenderToolButton")->click();
    EXPECT_EQ(delegate().toolPath, tool);

    FileDialogs::instance().setNextFileName(m_dir.path());
    widget<QPushButton>("locateFiltersButton")->click();
    EXPECT_EQ(
        dialogs.lastRequest().message, QStringLiteral("Quillon needs you to locate the Filters directory"));
    EXPECT_FALSE(dialogs.lastRequest().canChooseFiles);
    EXPECT_TRUE(dialogs.lastRequest().canChooseDirectories);
    EXPECT_EQ(delegate().filterPath, m_dir.path());
    EXPECT_EQ(savedStore()->stringForKey(pref::FILTERS_PATH), m_dir.path());

    FileDialogs::instance().setNextFileName(m_dir.path());
    widget<QPushButton>("locateOutputButton")->click();
    EXPECT_EQ(dialogs.lastRequest().prompt, QStringLiteral("This one"));
    EXPECT_EQ(dialogs.lastRequest().message,
        QStringLiteral("Quillon needs you to locate or create the output directory"));
    EXPECT_TRUE(dialogs.lastRequest().canCreateDirectories);
    EXPECT_EQ(delegate().outputPath, m_dir.path());
    EXPECT_EQ(field("outputDirectoryPathField")->text(), m_dir.path());

    FileDialogs::instance().setNextFileName(tool);
    widget<QPushButton>("locateSourceButton")->click();
    EXPECT_EQ(dialogs.lastRequest().message, QStringLiteral("Quillon needs you to locate an input image"));
    EXPECT_EQ(savedStore()->stringForKey(pref::INPUT_PATH), tool);

    // Clearing shows an empty field and leaves the stored input alone.
    widget<QPushButton>("clearSourceButton")->click();
    EXPECT_EQ(field("sourcePathField")->text(), QString());
    EXPECT_TRUE(delegate().sourcePath.isEmpty());
    EXPECT_EQ(savedStore()->stringForKey(pref::INPUT_PATH), tool);

    choose(popup("sourceTypePopup"), 1);
    FileDialogs::instance().setNextFileName(QString());
    delegate().locateImagePathWithSender();
    EXPECT_EQ(
        dialogs.lastRequest().message, QStringLiteral("Quillon needs you to locate an input directory"));
    EXPECT_TRUE(dialogs.lastRequest().canChooseDirectories);

    choose(popup("sourceTypePopup"), 2);
    FileDialogs::instance().setNextFileName(QString());
    delegate().locateImagePathWithSender();
    EXPECT_EQ(dialogs.lastRequest().message, QString());
    EXPECT_EQ(dialogs.lastRequest().prompt, QStringLiteral("This one"));
}

TEST_F(SettingsPaneTest, JpegQualityControlsFollowEachOtherAndKeepWhatWasTyped)
{
    delegate().applicationDidFinishLaunching();
    widget<QSlider>("f_jpgQualitySlider")->setValue(42);
    EXPECT_EQ(field("f_jpgQualityField")->text(), QStringLiteral("42"));
    EXPECT_EQ(prefs().integerForKey(pref::JPEG_QUALITY), 42);

    typeInto("f_jpgQualityField", QStringLiteral("150"));
    EXPECT_EQ(prefs().integerForKey(pref::JPEG_QUALITY), 150);
    EXPECT_EQ(widget<QSlider>("f_jpgQualitySlider")->value(), 100);
    EXPECT_EQ(field("f_jpgQualityField")->text(), QStringLiteral("150"));
    EXPECT_EQ(delegate().captureRunSettings().jpegQualityText, QStringLiteral("150"));
}

TEST_F(SettingsPaneTest, FormatTabsCarryTheFormatNamesAndTheChoiceIsStored)
{
    delegate().applicationDidFinishLaunching();
    QStringList identifiers;
    for (int i = 0; i < formats()->count(); ++i)
        identifiers.append(formats()->widget(i)->property("identifier").toString());
    EXPECT_EQ(identifiers,
        (QStringList { QStringLiteral("JPEG"), QStringLiteral("PNG"), QStringLiteral("TIFF"),
            QStringLiteral("TGA"), QStringLiteral("BMP"), QStringLiteral("EXR"), QStringLiteral("PFM") }));

    selectFormat(QStringLiteral("EXR"));
    EXPECT_EQ(prefs().stringForKey(pref::EXPORT_FORMAT), QStringLiteral("EXR"));
    EXPECT_EQ(delegate().captureRunSettings().format, QStringLiteral("EXR"));
    selectFormat(QStringLiteral("JPEG"));
    EXPECT_EQ(prefs().stringForKey(pref::EXPORT_FORMAT), QStringLiteral("JPEG"));

    box("f_pngIncludeTransCB")->click();
    EXPECT_EQ(savedStore()->integerForKey(pref::PNG_INCLUDETRANS), 1);
    box("f_tiffFloatFormatCB")->click();
    EXPECT_EQ(savedStore()->integerForKey(pref::TIFF_FLOATFORMAT), 1);
    box("f_jpgFullPrecisionCB")->click();
    EXPECT_EQ(savedStore()->integerForKey(pref::JPEG_FULLPRECISION), 0);
    const RunSettings settings = delegate().captureRunSettings();
    EXPECT_EQ(settings.pngIncludeTrans, 1);
    EXPECT_EQ(settings.tiffFloatFormat, 1);
    EXPECT_EQ(settings.jpegFullPrecision, 0);
}

TEST_F(SettingsPaneTest, HelpOpensTheShippedPdfAndDonationItsPage)
{
    delegate().applicationDidFinishLaunching();
    const QString help = AppDelegate::helpDocumentPath();
    ASSERT_FALSE(help.isEmpty()) << "Help.pdf is built with quillon_ui";
    EXPECT_TRUE(help.endsWith(QStringLiteral("/share/quillon/Help.pdf")));
    QFile pdf(help);
    ASSERT_TRUE(pdf.open(QIODevice::ReadOnly));
    EXPECT_TRUE(pdf.read(5).startsWith("%PDF-"));

    delegate().window()->findChild<QAction*>(QStringLiteral("actionHelp"))->trigger();
    delegate().window()->findChild<QAction*>(QStringLiteral("actionDonate"))->trigger();
    ASSERT_EQ(m_openedUrls.size(), 2);
    EXPECT_EQ(m_openedUrls[0], QUrl::fromLocalFile(help));
    EXPECT_EQ(m_openedUrls[1], AppDelegate::donationUrl());
    EXPECT_EQ(m_openedUrls[1].scheme(), QStringLiteral("https"));
}

} // namespace
} // namespace quillon::test
