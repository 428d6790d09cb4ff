// The settings side of the controller: the settings pane (paths, source,
// naming, rendering switches, output format), the preferences store and the
// start-up pass, Start with the progress sheet, and the Help menu.
#include "app/ui/AppDelegate.h"

#include "app/Preferences.h"
#include "run/RunSettings.h"
#include "app/ui/DialogSeams.h"
#include "app/ui/ProgressSheet.h"
#include "app/ui/WindowBatchDisplay.h"
#include "batch/BatchController.h"

#include "ui_MainWindow.h"
#include "ui_ProgressSheet.h"
#include "ui_SettingsPane.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QMainWindow>
#include <QSignalBlocker>
#include <QStatusBar>
#include <QUrl>

#include <algorithm>
#include <limits>

namespace quillon {

namespace {

const QString kNotSet = QStringLiteral("not set");
const QString kLocateIt = QStringLiteral("Locate it");
const QString kThisOne = QStringLiteral("This one");

// Input modes of the source-type pop-up.
constexpr int kSourceImage = 0;
constexpr int kSourceDirectory = 1;
constexpr int kSourceNone = 2;

int toIntCode(qint64 value)
{
    return static_cast<int>(
        std::clamp<qint64>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

// A check box's state as the store and the run keep it: 1 on, 0 off, -1 mixed.
int stateOf(const QCheckBox* box)
{
    switch (box->checkState()) {
    case Qt::Checked:
        return 1;
    case Qt::Unchecked:
        return 0;
    default:
        return -1;
    }
}

void setStateOf(QCheckBox* box, qint64 state)
{
    if (state < 0) {
        box->setTristate(true);
        box->setCheckState(Qt::PartiallyChecked);
    } else {
        box->setCheckState(state == 0 ? Qt::Unchecked : Qt::Checked);
    }
}

qint64 integerValueOf(const QLineEdit* field)
{
    return leadingInteger(field->text()).value_or(0);
}

} // namespace

// ---- Ownership ----

void AppDelegate::SettingsSideDeleter::operator()(Ui::SettingsPane* p) const
{
    delete p;
}

void AppDelegate::SettingsSideDeleter::operator()(Preferences* p) const
{
    delete p;
}

void AppDelegate::SettingsSideDeleter::operator()(WindowBatchDisplay* p) const
{
    delete p;
}

void AppDelegate::SettingsSideDeleter::operator()(BatchController* p) const
{
    delete p;
}

void AppDelegate::setupSettingsSide()
{
    m_settingsUi.reset(new Ui::SettingsPane);
    auto* pane = new QWidget(m_ui->settingsPage);
    m_settingsUi->setupUi(pane);
    m_ui->settingsPageLayout->addWidget(pane);

    m_progressSheet = new ProgressSheet(m_window);
    m_batchDisplay.reset(new WindowBatchDisplay(
        m_progressSheet, [this](const QString& message) { showApplicationErrorAlertWithMessage(message); },
        [this](const QString& status) { m_window->statusBar()->showMessage(status); }));
    m_batch.reset(new BatchController(m_batchDisplay.get()));

    Ui::SettingsPane& s = *m_settingsUi;
    const auto onClick = [this](QAbstractButton* button, void (AppDelegate::*action)(QObject*)) {
        connect(button, &QAbstractButton::clicked, this, [this, button, action] { (this->*action)(button); });
    };
    const auto onEdited = [this](QLineEdit* field, void (AppDelegate::*action)(QObject*)) {
        connect(field, &QLineEdit::editingFinished, this, [this, field, action] { (this->*action)(field); });
    };
    const auto onChosen = [this](QComboBox* popup, void (AppDelegate::*action)(QObject*)) {
        // activated: the user's choice only, not a selection made from code.
        connect(popup, &QComboBox::activated, this, [this, popup, action] { (this->*action)(popup); });
    };

    onClick(s.locateRenderToolButton, &AppDelegate::locateRenderToolWithSender);
    onClick(s.locateFiltersButton, &AppDelegate::locateFilterDirectoryWithSender);
    onClick(s.locateOutputButton, &AppDelegate::locateCreateOutputDirectoryWithSender);
    onClick(s.locateSourceButton, &AppDelegate::locateImagePathWithSender);
    onClick(s.clearSourceButton, &AppDelegate::clearImagePathWithSender);
    onChosen(s.sourceTypePopup, &AppDelegate::changeSourceModeWithSender);
    onChosen(s.outputFilenameSuffixPopup, &AppDelegate::changeOutputSuffixWithSender);

    for (QCheckBox* box : { s.antiAliasCB, s.multithreadCB, s.normalmapFlipCB, s.ditherCB, s.progressiveCB,
             s.cleanupAfterCB, s.toollogCB })
        onClick(box, &AppDelegate::settingsSaverWithSender);
    for (QLineEdit* field :
        { s.imageWidthField, s.imageHeightField, s.outputFilenamePrefixField, s.numberOfFramesField })
        onEdited(field, &AppDelegate::settingsSaverWithSender);

    for (QRadioButton* radio : pngBitDepthGroup())
        onClick(radio, &AppDelegate::pngBitDepthClickWithSender);
    for (QRadioButton* radio : pngCompressionGroup())
        onClick(radio, &AppDelegate::pngCompressionClickWithSender);
    for (QRadioButton* radio : tiffBitDepthGroup())
        onClick(radio, &AppDelegate::tiffBitDepthClickWithSender);
    for (QRadioButton* radio : tiffCompressionGroup())
        onClick(radio, &AppDelegate::tiffCompressionClickWithSender);
    for (QRadioButton* radio : tgaBitDepthGroup())
        onClick(radio, &AppDelegate::tgaBitDepthClickWithSender);

    onClick(s.f_jpgFullPrecisionCB, &AppDelegate::jpgPrecisionSwitchWithSender);
    onClick(s.f_pngIncludeTransCB, &AppDelegate::pngTransSwitchWithSender);
    onClick(s.f_tiffIncludeTransCB, &AppDelegate::tiffTransSwitchWithSender);
    onClick(s.f_tiffFloatFormatCB, &AppDelegate::tiffFloatFormatSwitchWithSender);
    onClick(s.f_tgaIncludeTransCB, &AppDelegate::tgaTransSwitchWithSender);
    onClick(s.f_tgaFlipOrderCB, &AppDelegate::tgaFlipOrderWithSender);

    connect(s.f_jpgQualitySlider, &QSlider::valueChanged, this,
        [this] { jpegQualityChangeWithSender(m_settingsUi->f_jpgQualitySlider); });
    onEdited(s.f_jpgQualityField, &AppDelegate::jpegQualityTextChangeWithSender);
    connect(s.formatTabControl, &QTabWidget::currentChanged, this, &AppDelegate::formatTabDidSelectItem);

    onClick(m_ui->startButton, &AppDelegate::startBatchWithSender);
    connect(m_progressSheet, &ProgressSheet::abortRequested, this,
        [this] { abortProcessWithSender(m_progressSheet->ui()->abortButton); });
    connect(m_ui->actionResetPreferences, &QAction::triggered, this,
        [this] { resetPreferencesWithSender(m_ui->actionResetPreferences); });
    connect(m_ui->actionHelp, &QAction::triggered, this, [this] { showHelpWithSender(m_ui->actionHelp); });
    connect(
        m_ui->actionDonate, &QAction::triggered, this, [this] { ppDonationWithSender(m_ui->actionDonate); });
}

void AppDelegate::shutdownSettingsSide()
{
    // A run still going is aborted and wound down while the sheet it reports
    // to still exists.
    m_batch.reset();
    m_batchDisplay.reset();
}

void AppDelegate::setPreferences(std::unique_ptr<Preferences> prefs)
{
    m_prefs.reset(prefs.release());
}

Preferences& AppDelegate::preferences()
{
    if (!m_prefs)
        m_prefs.reset(new Preferences);
    return *m_prefs;
}

QComboBox* AppDelegate::inputTypePopup() const
{
    return m_settingsUi->sourceTypePopup;
}

void AppDelegate::selectSourceMode(int mode)
{
    if (mode < 0 || mode >= m_settingsUi->sourceTypePopup->count())
        return;
    m_settingsUi->sourceTypePopup->setCurrentIndex(mode);
    changeSourceModeWithSender(m_settingsUi->sourceTypePopup);
}

// ---- Start-up and preferences ----

void AppDelegate::applicationDidFinishLaunching()
{
    if (!preferences().stringForKey(pref::PREF_RESET))
        prefsReset();
    startupGUI();
    setupMapsCheckboxesDefaults();
}

void AppDelegate::prefsReset()
{
    preferences().prefsReset();
}

void AppDelegate::resetPreferencesWithSender(QObject* /*sender*/)
{
    prefsReset();
    startupGUI();
}

void AppDelegate::startupGUI()
{
    Preferences& prefs = preferences();
    Ui::SettingsPane& s = *m_settingsUi;

    if (const auto tool = prefs.stringForKey(pref::TOOL_PATH)) {
        s.renderToolPathField->setText(*tool);
        toolPath = *tool;
    } else {
        toolPath.clear();
    }
    // The end of the scan enables the button again.
    m_ui->addFilterButton->setEnabled(false);
    if (const auto filters = prefs.stringForKey(pref::FILTERS_PATH)) {
        s.filtersPathField->setText(*filters);
        filterPath = *filters;
        launchFilterFetcher();
    } else {
        filterPath.clear();
    }
    if (const auto output = prefs.stringForKey(pref::OUTPUT_DIR)) {
        s.outputDirectoryPathField->setText(*output);
        outputPath = *output;
    } else {
        outputPath.clear();
    }

    const QString mode = prefs.stringForKey(pref::INPUT_MODE).value_or(QString());
    if (mode == QLatin1String("IMAGE"))
        s.sourceTypePopup->setCurrentIndex(kSourceImage);
    else if (mode == QLatin1String("DIR"))
        s.sourceTypePopup->setCurrentIndex(kSourceDirectory);

    s.imageWidthField->setText(prefs.stringForKey(pref::SET_WIDTH).value_or(QStringLiteral("600")));
    s.imageHeightField->setText(prefs.stringForKey(pref::SET_HEIGHT).value_or(QStringLiteral("600")));
    s.numberOfFramesField->setText(prefs.stringForKey(pref::NUM_FRAMES).value_or(QStringLiteral("10")));
    // The prefix comes back too, so a restart names its outputs as before.
    if (const auto prefix = prefs.stringForKey(pref::OUT_PREFIX))
        s.outputFilenamePrefixField->setText(*prefix);

    const qint64 suffix = prefs.integerForKey(pref::OUTPUT_SUFFIX);
    if (suffix >= 0 && suffix < s.outputFilenameSuffixPopup->count())
        s.outputFilenameSuffixPopup->setCurrentIndex(static_cast<int>(suffix));

    s.antiAliasCB->setChecked(prefs.integerForKey(pref::CB_ANTIALIAS) == 1);
    s.multithreadCB->setChecked(prefs.integerForKey(pref::CB_MT) == 1);
    s.normalmapFlipCB->setChecked(prefs.integerForKey(pref::CB_NORMALFLIP) == 1);
    s.ditherCB->setChecked(prefs.integerForKey(pref::CB_DITHER) == 1);
    s.progressiveCB->setChecked(prefs.integerForKey(pref::CB_PROGRESSIVE) == 1);
    s.cleanupAfterCB->setChecked(prefs.integerForKey(pref::CB_CLEANUP) == 1);
    s.toollogCB->setChecked(prefs.integerForKey(pref::CB_TOOLLOG) == 1);

    filterListClick();
    changeSourceModeWithSender(s.sourceTypePopup);
    changeOutputSuffixWithSender(s.outputFilenameSuffixPopup);

    const QString format = prefs.stringForKey(pref::EXPORT_FORMAT).value_or(QString());
    for (int i = 0; i < s.formatTabControl->count(); ++i) {
        if (s.formatTabControl->widget(i)->property("identifier").toString() == format) {
            s.formatTabControl->setCurrentIndex(i);
            break;
        }
    }

    setStateOf(s.f_jpgFullPrecisionCB, prefs.integerForKey(pref::JPEG_FULLPRECISION));
    setStateOf(s.f_pngIncludeTransCB, prefs.integerForKey(pref::PNG_INCLUDETRANS));
    setStateOf(s.f_tiffIncludeTransCB, prefs.integerForKey(pref::TIFF_INCLUDETRANS));
    setStateOf(s.f_tiffFloatFormatCB, prefs.integerForKey(pref::TIFF_FLOATFORMAT));
    setStateOf(s.f_tgaIncludeTransCB, prefs.integerForKey(pref::TGA_INCLUDETRANS));
    setStateOf(s.f_tgaFlipOrderCB, prefs.integerForKey(pref::TGA_FLIPORDER));

    png_bitdepth = prefs.integerForKey(pref::PNG_BITDEPTH);
    selectRadio(pngBitDepthGroup(), png_bitdepth);
    png_compression = prefs.integerForKey(pref::PNG_COMPRESSION);
    selectRadio(pngCompressionGroup(), png_compression);
    tiff_bitdepth = prefs.integerForKey(pref::TIFF_BITDEPTH);
    selectRadio(tiffBitDepthGroup(), tiff_bitdepth);
    tiff_compression = prefs.integerForKey(pref::TIFF_COMPRESSION);
    selectRadio(tiffCompressionGroup(), tiff_compression);
    tga_bitdepth = prefs.integerForKey(pref::TGA_BITDEPTH);
    selectRadio(tgaBitDepthGroup(), tga_bitdepth);

    {
        const QSignalBlocker blocker(s.f_jpgQualitySlider);
        s.f_jpgQualitySlider->setValue(toIntCode(prefs.integerForKey(pref::JPEG_QUALITY)));
    }
    s.f_jpgQualityField->setText(QString::number(s.f_jpgQualitySlider->value()));

    prefs.sync();
}

void AppDelegate::settingsSaverWithSender(QObject* /*sender*/)
{
    Preferences& prefs = preferences();
    const Ui::SettingsPane& s = *m_settingsUi;
    prefs.setInteger(pref::CB_ANTIALIAS, s.antiAliasCB->isChecked() ? 1 : 0);
    prefs.setInteger(pref::CB_MT, s.multithreadCB->isChecked() ? 1 : 0);
    prefs.setInteger(pref::CB_NORMALFLIP, s.normalmapFlipCB->isChecked() ? 1 : 0);
    prefs.setInteger(pref::CB_DITHER, s.ditherCB->isChecked() ? 1 : 0);
    prefs.setInteger(pref::CB_PROGRESSIVE, s.progressiveCB->isChecked() ? 1 : 0);
    prefs.setInteger(pref::CB_CLEANUP, s.cleanupAfterCB->isChecked() ? 1 : 0);
    prefs.setInteger(pref::CB_TOOLLOG, s.toollogCB->isChecked() ? 1 : 0);
    prefs.setString(pref::SET_WIDTH, s.imageWidthField->text());
    prefs.setString(pref::SET_HEIGHT, s.imageHeightField->text());
    prefs.setString(pref::OUT_PREFIX, s.outputFilenamePrefixField->text());
    prefs.setString(pref::NUM_FRAMES, s.numberOfFramesField->text());
    prefs.sync();
}

// ---- Locate dialogs ----

void AppDelegate::locateRenderToolWithSender(QObject* /*sender*/)
{
    FileDialogRequest request;
    request.canChooseFiles = true;
    request.canChooseDirectories = false;
    request.canCreateDirectories = false;
    request.prompt = kLocateIt;
    request.message = QStringLiteral("Quillon needs you to locate to FilterForge Batch tool");
    FileDialogs::instance().open(m_window, request, [this](const QString& path) {
        preferences().setString(pref::TOOL_PATH, path);
        toolPath = path;
        m_settingsUi->renderToolPathField->setText(path);
    });
    preferences().sync();
}

void AppDelegate::locateFilterDirectoryWithSender(QObject* /*sender*/)
{
    FileDialogRequest request;
    request.canChooseFiles = false;
    request.canChooseDirectories = true;
    request.canCreateDirectories = false;
    request.prompt = kLocateIt;
    request.message = QStringLiteral("Quillon needs you to locate the Filters directory");
    FileDialogs::instance().open(m_window, request, [this](const QString& path) {
        preferences().setString(pref::FILTERS_PATH, path);
        filterPath = path;
        m_settingsUi->filtersPathField->setText(path);
        m_ui->addFilterButton->setEnabled(false);
        launchFilterFetcher();
    });
    preferences().sync();
}

void AppDelegate::locateCreateOutputDirectoryWithSender(QObject* /*sender*/)
{
    FileDialogRequest request;
    request.canChooseFiles = false;
    request.canChooseDirectories = true;
    request.canCreateDirectories = true;
    request.prompt = kThisOne;
    request.message = QStringLiteral("Quillon needs you to locate or create the output directory");
    FileDialogs::instance().open(m_window, request, [this](const QString& path) {
        preferences().setString(pref::OUTPUT_DIR, path);
        outputPath = path;
        m_settingsUi->outputDirectoryPathField->setText(path);
    });
    preferences().sync();
}

void AppDelegate::locateImagePathWithSender(QObject* /*sender*/)
{
    FileDialogRequest request;
    request.canCreateDirectories = false;
    request.prompt = kThisOne;
    switch (m_settingsUi->sourceTypePopup->currentIndex()) {
    case kSourceImage:
        request.canChooseFiles = true;
        request.canChooseDirectories = false;
        request.message = QStringLiteral("Quillon needs you to locate an input image");
        break;
    case kSourceDirectory:
        request.canChooseFiles = false;
        request.canChooseDirectories = true;
        request.message = QStringLiteral("Quillon needs you to locate an input directory");
        break;
    default:
        // No message, and the dialog's own choices.
        break;
    }
    FileDialogs::instance().open(m_window, request, [this](const QString& path) {
        preferences().setString(pref::INPUT_PATH, path);
        sourcePath = path;
        m_settingsUi->sourcePathField->setText(path);
    });
    preferences().sync();
}

void AppDelegate::clearImagePathWithSender(QObject* /*sender*/)
{
    sourcePath.clear();
    m_settingsUi->sourcePathField->setText(QString());
}

// ---- Source type and frame suffix ----

void AppDelegate::changeSourceModeWithSender(QObject* /*sender*/)
{
    Ui::SettingsPane& s = *m_settingsUi;
    const int mode = s.sourceTypePopup->currentIndex();
    const bool hasInput = mode != kSourceNone;
    s.imageWidthField->setEnabled(!hasInput);
    s.imageHeightField->setEnabled(!hasInput);
    s.sourcePathField->setVisible(hasInput);
    s.clearSourceButton->setVisible(hasInput);
    s.locateSourceButton->setVisible(hasInput);
    s.sourcePathLabel->setVisible(hasInput);
    if (mode == kSourceImage)
        preferences().setString(pref::INPUT_MODE, QStringLiteral("IMAGE"));
    else if (mode == kSourceDirectory)
        preferences().setString(pref::INPUT_MODE, QStringLiteral("DIR"));

    sourcePath.clear();
    s.sourcePathField->setText(kNotSet);
    preferences().sync();
}

void AppDelegate::changeOutputSuffixWithSender(QObject* /*sender*/)
{
    Ui::SettingsPane& s = *m_settingsUi;
    const int style = s.outputFilenameSuffixPopup->currentIndex();
    preferences().setString(pref::OUTPUT_SUFFIX, QString::number(style));
    switch (style) {
    case 0:
        frameMaxValue = 999;
        break;
    case 1:
        frameMaxValue = 9999;
        break;
    case 2:
        frameMaxValue = 25; // the letters a to y
        break;
    default:
        break;
    }
    s.maxFramesField->setText(QString::number(frameMaxValue));
    if (integerValueOf(s.numberOfFramesField) > frameMaxValue)
        s.numberOfFramesField->setText(QString::number(frameMaxValue));
    preferences().sync();
}

// ---- Output format ----

QList<QRadioButton*> AppDelegate::pngBitDepthGroup() const
{
    return { m_settingsUi->f_pngBitDepth8RB, m_settingsUi->f_pngBitDepth16RB };
}

QList<QRadioButton*> AppDelegate::pngCompressionGroup() const
{
    return { m_settingsUi->f_pngCompressionNoneRB, m_settingsUi->f_pngCompressionFastRB,
        m_settingsUi->f_pngCompressionBestRB };
}

QList<QRadioButton*> AppDelegate::tiffBitDepthGroup() const
{
    return { m_settingsUi->f_tiffBitDepth8RB, m_settingsUi->f_tiffBitDepth16RB,
        m_settingsUi->f_tiffBitDepth24RB };
}

QList<QRadioButton*> AppDelegate::tiffCompressionGroup() const
{
    return { m_settingsUi->f_tiffCompressionNoneRB, m_settingsUi->f_tiffCompressionLZWRB,
        m_settingsUi->f_tiffCompressionDeflateRB };
}

QList<QRadioButton*> AppDelegate::tgaBitDepthGroup() const
{
    return { m_settingsUi->f_tgaBitDepth24RB, m_settingsUi->f_tgaBitDepth32RB };
}

void AppDelegate::radioClick(
    QObject* sender, const QList<QRadioButton*>& group, qint64& variable, const QString& key)
{
    auto* clicked = qobject_cast<QRadioButton*>(sender);
    if (!clicked || !group.contains(clicked))
        return;
    variable = clicked->property("tag").toLongLong();
    preferences().setInteger(key, variable);
    for (QRadioButton* radio : group)
        radio->setChecked(false);
    clicked->setChecked(true);
    preferences().sync();
}

void AppDelegate::selectRadio(const QList<QRadioButton*>& group, qint64 code)
{
    // A code no button carries leaves the whole group off.
    for (QRadioButton* radio : group)
        radio->setChecked(radio->property("tag").toLongLong() == code);
}

void AppDelegate::pngBitDepthClickWithSender(QObject* sender)
{
    radioClick(sender, pngBitDepthGroup(), png_bitdepth, pref::PNG_BITDEPTH);
}

void AppDelegate::pngCompressionClickWithSender(QObject* sender)
{
    radioClick(sender, pngCompressionGroup(), png_compression, pref::PNG_COMPRESSION);
}

void AppDelegate::tiffBitDepthClickWithSender(QObject* sender)
{
    radioClick(sender, tiffBitDepthGroup(), tiff_bitdepth, pref::TIFF_BITDEPTH);
}

void AppDelegate::tiffCompressionClickWithSender(QObject* sender)
{
    radioClick(sender, tiffCompressionGroup(), tiff_compression, pref::TIFF_COMPRESSION);
}

void AppDelegate::tgaBitDepthClickWithSender(QObject* sender)
{
    radioClick(sender, tgaBitDepthGroup(), tga_bitdepth, pref::TGA_BITDEPTH);
}

QString AppDelegate::getPNGBitDepth() const
{
    return quillon::getPNGBitDepth(toIntCode(png_bitdepth));
}

QString AppDelegate::getPNGCompression() const
{
    return quillon::getPNGCompression(toIntCode(png_compression));
}

QString AppDelegate::getTIFFBitDepth() const
{
    return quillon::getTIFFBitDepth(toIntCode(tiff_bitdepth));
}

QString AppDelegate::getTIFFCompression() const
{
    return quillon::getTIFFCompression(toIntCode(tiff_compression));
}

QString AppDelegate::getTGABitDepth() const
{
    return quillon::getTGABitDepth(toIntCode(tga_bitdepth));
}

void AppDelegate::switchClick(QObject* sender, const QString& key)
{
    auto* box = qobject_cast<QCheckBox*>(sender);
    if (!box)
        return;
    preferences().setInteger(key, stateOf(box));
    preferences().sync();
}

void AppDelegate::jpgPrecisionSwitchWithSender(QObject* sender)
{
    switchClick(sender, pref::JPEG_FULLPRECISION);
}

void AppDelegate::pngTransSwitchWithSender(QObject* sender)
{
    switchClick(sender, pref::PNG_INCLUDETRANS);
}

void AppDelegate::tiffTransSwitchWithSender(QObject* sender)
{
    switchClick(sender, pref::TIFF_INCLUDETRANS);
}

void AppDelegate::tiffFloatFormatSwitchWithSender(QObject* sender)
{
    switchClick(sender, pref::TIFF_FLOATFORMAT);
}

void AppDelegate::tgaTransSwitchWithSender(QObject* sender)
{
    switchClick(sender, pref::TGA_INCLUDETRANS);
}

void AppDelegate::tgaFlipOrderWithSender(QObject* sender)
{
    switchClick(sender, pref::TGA_FLIPORDER);
}

void AppDelegate::jpegQualityChangeWithSender(QObject* /*sender*/)
{
    const int quality = m_settingsUi->f_jpgQualitySlider->value();
    preferences().setInteger(pref::JPEG_QUALITY, quality);
    m_settingsUi->f_jpgQualityField->setText(QString::number(quality));
}

void AppDelegate::jpegQualityTextChangeWithSender(QObject* /*sender*/)
{
    // The field keeps what was typed; the slider shows it within its range.
    const qint64 quality = integerValueOf(m_settingsUi->f_jpgQualityField);
    preferences().setInteger(pref::JPEG_QUALITY, quality);
    const QSignalBlocker blocker(m_settingsUi->f_jpgQualitySlider);
    m_settingsUi->f_jpgQualitySlider->setValue(toIntCode(quality));
}

QString AppDelegate::selectedFormatIdentifier() const
{
    const QWidget* page = m_settingsUi->formatTabControl->currentWidget();
    return page ? page->property("identifier").toString() : QString();
}

void AppDelegate::formatTabDidSelectItem(int /*index*/)
{
    preferences().setString(pref::EXPORT_FORMAT, selectedFormatIdentifier());
}

// ---- The run ----

RunSettings AppDelegate::captureRunSettings() const
{
    const Ui::SettingsPane& s = *m_settingsUi;
    RunSettings settings;
    settings.toolPath = toolPath;
    settings.outputPath = outputPath;
    settings.sourcePath = sourcePath;
    settings.inputMode = static_cast<InputMode>(std::clamp(s.sourceTypePopup->currentIndex(), 0, 2));

    settings.outputPrefix = s.outputFilenamePrefixField->text();
    settings.nameStyle = static_cast<FrameStyle>(std::clamp(s.outputFilenameSuffixPopup->currentIndex(), 0, 2));
    settings.frameCountText = s.numberOfFramesField->text();
    settings.widthText = s.imageWidthField->text();
    settings.heightText = s.imageHeightField->text();

    settings.antiAlias = stateOf(s.antiAliasCB);
    settings.multithread = stateOf(s.multithreadCB);
    settings.normalmapFlip = stateOf(s.normalmapFlipCB);
    settings.dither = stateOf(s.ditherCB);
    settings.progressive = stateOf(s.progressiveCB);
    settings.toolLog = stateOf(s.toollogCB);
    settings.cleanup = stateOf(s.cleanupAfterCB);

    settings.format = selectedFormatIdentifier();
    settings.jpegQualityText = s.f_jpgQualityField->text();
    settings.jpegFullPrecision = stateOf(s.f_jpgFullPrecisionCB);
    settings.pngIncludeTrans = stateOf(s.f_pngIncludeTransCB);
    settings.tiffIncludeTrans = stateOf(s.f_tiffIncludeTransCB);
    settings.tiffFloatFormat = stateOf(s.f_tiffFloatFormatCB);
    settings.tgaIncludeTrans = stateOf(s.f_tgaIncludeTransCB);
    settings.tgaFlipOrder = stateOf(s.f_tgaFlipOrderCB);
    settings.pngBitDepth = toIntCode(png_bitdepth);
    settings.pngCompression = toIntCode(png_compression);
    settings.tiffBitDepth = toIntCode(tiff_bitdepth);
    settings.tiffCompression = toIntCode(tiff_compression);
    settings.tgaBitDepth = toIntCode(tga_bitdepth);

    settings.presetIndex = std::max(0, m_ui->filterPresetPopup->currentIndex());
    settings.activateMaps = stateOf(m_ui->t_activateMaps);
    const QCheckBox* maps[] = { m_ui->t_defaultMap, m_ui->t_alphaMap, m_ui->t_diffuseMap, m_ui->t_bumppMap,
        m_ui->t_normalMap, m_ui->t_specStrengthMap, m_ui->t_specComponentMap, m_ui->t_AOMap, m_ui->t_ROMap,
        m_ui->t_metallicMap };
    for (std::size_t i = 0; i < settings.mapBoxes.size(); ++i)
        settings.mapBoxes[i] = stateOf(maps[i]);
    return settings;
}

void AppDelegate::startBatchWithSender(QObject* /*sender*/)
{
    outputPrefix = m_settingsUi->outputFilenamePrefixField->text();
    const RunSettings settings = captureRunSettings();
    m_batch->startBatchWithSender(filterArray, settings);
}

void AppDelegate::abortProcessWithSender(QObject* /*sender*/)
{
    m_batch->abortProcessWithSender();
}

// ---- Help menu ----

QString AppDelegate::helpDocumentPath()
{
    const QDir appDir(QCoreApplication::applicationDirPath());
    QStringList candidates { appDir.filePath(QStringLiteral("../share/quillon/Help.pdf")) };
#ifdef QUILLON_HELP_BUILD_PATH
    candidates.append(QStringLiteral(QUILLON_HELP_BUILD_PATH));
#endif
    for (const QString& candidate : candidates) {
        if (QFileInfo(candidate).isFile())
            return QDir::cleanPath(QFileInfo(candidate).absoluteFilePath());
    }
    return {};
}

QUrl AppDelegate::donationUrl()
{
    return QUrl(QStringLiteral("https://quillon.org/donate"));
}

void AppDelegate::setUrlOpener(std::function<bool(const QUrl&)> opener)
{
    m_urlOpener = std::move(opener);
}

void AppDelegate::showHelpWithSender(QObject* /*sender*/)
{
    const QString path = helpDocumentPath();
    if (path.isEmpty())
        return;
    const QUrl url = QUrl::fromLocalFile(path);
    if (m_urlOpener)
        m_urlOpener(url);
    else
        QDesktopServices::openUrl(url);
}

void AppDelegate::ppDonationWithSender(QObject* /*sender*/)
{
    if (m_urlOpener)
        m_urlOpener(donationUrl());
    else
        QDesktopServices::openUrl(donationUrl());
}

} // namespace quillon
