#include "app/ui/SettingsPane.h"

#include "app/Preferences.h"
#include "app/ui/DialogSeams.h"
#include "app/ui/FieldCorrection.h"
#include "run/RunSettings.h"
#include "run/SettingTable.h"

#include "ui_SettingsPane.h"

#include <QDir>
#include <QFileInfo>
#include <QSignalBlocker>
#include <QStyle>

#include <algorithm>
#include <limits>

namespace quillon {

namespace {

// The largest image side the size fields take.
constexpr qint64 kMaxImageSide = 65535;
// The most render tool processes at once.
constexpr qint64 kMaxToolJobs = 1024;

// The row of a setting the page shows; every one is in the table.
const SettingDefinition* setting(const char* key)
{
    const SettingDefinition* row = findSetting(QLatin1String(key));
    Q_ASSERT(row);
    return row;
}

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

qint64 integerOf(const QVariant& value)
{
    return leadingInteger(value.toString()).value_or(0);
}

// Where a dialog for `path` opens: the path's folder, or the home folder.
QString startDirectoryFor(const QString& path)
{
    const QFileInfo info(path);
    if (!path.isEmpty() && info.isDir())
        return info.absoluteFilePath();
    if (!path.isEmpty() && info.absoluteDir().exists())
        return info.absolutePath();
    return QDir::homePath();
}

} // namespace

SettingsPane::SettingsPane(QWidget* parent)
    : QWidget(parent)
    , m_ui(std::make_unique<Ui::SettingsPane>())
{
    m_ui->setupUi(this);
    Ui::SettingsPane& s = *m_ui;

    m_paths = { { s.renderToolPathField, &m_toolPath, pref::TOOL_PATH },
        { s.filtersPathField, &m_filterPath, pref::FILTERS_PATH },
        { s.outputDirectoryPathField, &m_outputPath, pref::OUTPUT_DIR },
        { s.sourcePathField, &m_sourcePath, pref::INPUT_PATH } };
    m_radios = { { { s.f_pngBitDepth8RB, s.f_pngBitDepth16RB }, &m_pngBitDepth, setting("pngBitDepth") },
        { { s.f_pngCompressionNoneRB, s.f_pngCompressionFastRB, s.f_pngCompressionBestRB }, &m_pngCompression,
            setting("pngCompression") },
        { { s.f_tiffBitDepth8RB, s.f_tiffBitDepth16RB, s.f_tiffBitDepth24RB }, &m_tiffBitDepth,
            setting("tiffBitDepth") },
        { { s.f_tiffCompressionNoneRB, s.f_tiffCompressionLZWRB, s.f_tiffCompressionDeflateRB },
            &m_tiffCompression, setting("tiffCompression") },
        { { s.f_tgaBitDepth24RB, s.f_tgaBitDepth32RB }, &m_tgaBitDepth, setting("tgaBitDepth") } };
    m_switches = { { s.antiAliasCB, setting("antiAlias") }, { s.multithreadCB, setting("multithread") },
        { s.normalmapFlipCB, setting("normalmapFlip") }, { s.ditherCB, setting("dither") },
        { s.progressiveCB, setting("progressive") }, { s.cleanupAfterCB, setting("cleanup") },
        { s.toollogCB, setting("toolLog") }, { s.toolWineCB, setting("toolWine") },
        { s.f_jpgFullPrecisionCB, setting("jpegFullPrecision") },
        { s.f_pngIncludeTransCB, setting("pngIncludeTrans") },
        { s.f_tiffIncludeTransCB, setting("tiffIncludeTrans") },
        { s.f_tiffFloatFormatCB, setting("tiffFloatFormat") },
        { s.f_tgaIncludeTransCB, setting("tgaIncludeTrans") },
        { s.f_tgaFlipOrderCB, setting("tgaFlipOrder") } };
    m_texts = { { s.imageWidthField, setting("widthText") }, { s.imageHeightField, setting("heightText") },
        { s.outputFilenamePrefixField, setting("outputPrefix") },
        { s.numberOfFramesField, setting("frameCountText") }, { s.toolJobsField, setting("toolJobs") } };

    // Each field is named by its label for screen readers and Alt+letter.
    const std::pair<QLabel*, QWidget*> buddies[] = { { s.renderToolLabel, s.renderToolPathField },
        { s.filtersLabel, s.filtersPathField }, { s.outputLabel, s.outputDirectoryPathField },
        { s.sourceTypeLabel, s.sourceTypePopup }, { s.sourcePathLabel, s.sourcePathField },
        { s.sizeLabel, s.imageWidthField }, { s.prefixLabel, s.outputFilenamePrefixField },
        { s.suffixLabel, s.outputFilenameSuffixPopup }, { s.framesLabel, s.numberOfFramesField },
        { s.maxFramesLabel, s.maxFramesField }, { s.jpegQualityLabel, s.f_jpgQualitySlider },
        { s.toolJobsLabel, s.toolJobsField } };
    for (const auto& [label, buddy] : buddies)
        label->setBuddy(buddy);
    s.imageWidthField->setAccessibleName(tr("Width"));
    s.imageHeightField->setAccessibleName(tr("Height"));
    s.maxFramesField->setAccessibleName(tr("Most frames"));
    s.f_jpgQualitySlider->setAccessibleName(tr("JPEG quality"));
    s.f_jpgQualityField->setAccessibleName(tr("JPEG quality value"));
    s.formatTabControl->setAccessibleName(tr("Output format"));

    connect(s.locateRenderToolButton, &QPushButton::clicked, this, [this] { locateRenderToolWithSender(); });
    connect(
        s.locateFiltersButton, &QPushButton::clicked, this, [this] { locateFilterDirectoryWithSender(); });
    connect(s.locateOutputButton, &QPushButton::clicked, this,
        [this] { locateCreateOutputDirectoryWithSender(); });
    connect(s.locateSourceButton, &QPushButton::clicked, this, [this] { locateImagePathWithSender(); });
    connect(s.clearSourceButton, &QPushButton::clicked, this, [this] { clearImagePathWithSender(); });
    // activated: the user's choice only, not a selection made from code.
    connect(s.sourceTypePopup, &QComboBox::activated, this, [this] { changeSourceModeWithSender(); });
    connect(
        s.outputFilenameSuffixPopup, &QComboBox::activated, this, [this] { changeOutputSuffixWithSender(); });

    // A typed or pasted path counts as chosen; Start checks it as any other.
    for (const PathBinding& binding : std::as_const(m_paths)) {
        connect(binding.field, &QLineEdit::editingFinished, this, [this, binding] {
            const QString typed = binding.field->text().trimmed();
            if (typed != *binding.value)
                choosePath(binding, typed);
        });
    }
    for (const SwitchBinding& binding : std::as_const(m_switches))
        connect(binding.box, &QCheckBox::clicked, this, [this, binding] { switchClick(binding); });
    // Whole-number fields show the number the run takes, corrected on leaving.
    const auto stored
        = [this](const QString& key) { return [this, key] { return integerOf(prefs().value(key)); }; };
    const auto fixed = [](qint64 value) { return [value] { return value; }; };
    m_integerRules = { { s.imageWidthField, { 1, fixed(kMaxImageSide), stored(pref::SET_WIDTH) } },
        { s.imageHeightField, { 1, fixed(kMaxImageSide), stored(pref::SET_HEIGHT) } },
        { s.numberOfFramesField, { 1, [this] { return m_frameMaxValue; }, stored(pref::NUM_FRAMES) } },
        { s.toolJobsField, { 1, fixed(kMaxToolJobs), stored(pref::TOOL_JOBS) } } };
    for (const auto& [field, rule] : std::as_const(m_integerRules))
        acceptDigitsOnly(field);
    acceptDigitsOnly(s.f_jpgQualityField);
    bindRunValues();
    for (const auto& text : std::as_const(m_texts)) {
        connect(text.first, &QLineEdit::editingFinished, this, [this, field = text.first] {
            for (const auto& [ruled, rule] : std::as_const(m_integerRules)) {
                if (ruled == field)
                    correctIntegerField(field, rule);
            }
            settingsSaverWithSender();
        });
    }
    for (const RadioBinding& binding : std::as_const(m_radios)) {
        for (QRadioButton* radio : binding.group)
            connect(
                radio, &QRadioButton::clicked, this, [this, radio, binding] { radioClick(radio, binding); });
    }

    connect(s.f_jpgQualitySlider, &QSlider::valueChanged, this, [this] { jpegQualityChangeWithSender(); });
    connect(s.f_jpgQualityField, &QLineEdit::editingFinished, this,
        [this] { jpegQualityTextChangeWithSender(); });
    connect(s.formatTabControl, &QTabWidget::currentChanged, this, &SettingsPane::formatTabDidSelectItem);
}

SettingsPane::~SettingsPane() = default;

Preferences& SettingsPane::prefs() const
{
    return m_prefs();
}

void SettingsPane::restore()
{
    Preferences& p = prefs();
    Ui::SettingsPane& s = *m_ui;

    for (const PathBinding& binding : std::as_const(m_paths)) {
        // The input is chosen anew after each start (the source type shows "not set").
        if (binding.key == pref::INPUT_PATH)
            continue;
        *binding.value = p.value(binding.key).toString();
        binding.field->setText(*binding.value);
    }
    Q_EMIT filterPathChanged(m_filterPath);

    const QString mode = p.value(pref::INPUT_MODE).toString();
    if (mode == QLatin1String("IMAGE"))
        s.sourceTypePopup->setCurrentIndex(static_cast<int>(InputMode::File));
    else if (mode == QLatin1String("DIR"))
        s.sourceTypePopup->setCurrentIndex(static_cast<int>(InputMode::Directory));

    for (const auto& [field, row] : std::as_const(m_texts))
        field->setText(p.value(row->preferenceKey).toString());
    const qint64 suffix = integerOf(p.value(pref::OUTPUT_SUFFIX));
    if (suffix >= 0 && suffix < s.outputFilenameSuffixPopup->count())
        s.outputFilenameSuffixPopup->setCurrentIndex(static_cast<int>(suffix));

    for (const SwitchBinding& binding : std::as_const(m_switches)) {
        const qint64 state = integerOf(p.value(binding.setting->preferenceKey));
        if (binding.keepsMixed())
            setStateOf(binding.box, state);
        else
            binding.box->setChecked(state == 1);
    }

    changeSourceModeWithSender();
    changeOutputSuffixWithSender();

    const QString format = p.value(pref::EXPORT_FORMAT).toString();
    for (int i = 0; i < s.formatTabControl->count(); ++i) {
        if (s.formatTabControl->widget(i)->property("identifier").toString() == format) {
            s.formatTabControl->setCurrentIndex(i);
            break;
        }
    }

    for (const RadioBinding& binding : std::as_const(m_radios)) {
        *binding.code = toIntCode(integerOf(p.value(binding.setting->preferenceKey)));
        // A code no button carries leaves the whole group off.
        for (QRadioButton* radio : binding.group)
            radio->setChecked(radio->property("tag").toLongLong() == *binding.code);
    }

    {
        const QSignalBlocker blocker(s.f_jpgQualitySlider);
        s.f_jpgQualitySlider->setValue(toIntCode(integerOf(p.value(pref::JPEG_QUALITY))));
    }
    s.f_jpgQualityField->setText(QString::number(s.f_jpgQualitySlider->value()));
    showChosenFormat();
    p.sync();
}

void SettingsPane::settingsSaverWithSender(QObject* /*sender*/)
{
    Preferences& p = prefs();
    for (const SwitchBinding& binding : std::as_const(m_switches)) {
        if (!binding.keepsMixed())
            p.set(binding.setting->preferenceKey, binding.box->isChecked() ? 1 : 0);
    }
    for (const auto& [field, row] : std::as_const(m_texts))
        p.set(row->preferenceKey, field->text());
    p.sync();
}

// ---- Paths ----

void SettingsPane::choosePath(const PathBinding& binding, const QString& path)
{
    prefs().set(binding.key, path);
    *binding.value = path;
    binding.field->setText(path);
    // A Windows program runs under Wine; the box stays the user's to change.
    if (binding.key == pref::TOOL_PATH) {
        const bool windows = path.endsWith(QLatin1String(".exe"), Qt::CaseInsensitive);
        m_ui->toolWineCB->setChecked(windows);
        prefs().set(pref::TOOL_WINE, windows ? 1 : 0);
    }
    prefs().sync();
    if (binding.key == pref::FILTERS_PATH)
        Q_EMIT filterPathChanged(path);
}

void SettingsPane::locate(const PathBinding& binding, const QString& prompt, const QString& message,
    bool files, bool directories, bool create)
{
    FileDialogRequest request;
    request.canChooseFiles = files;
    request.canChooseDirectories = directories;
    request.canCreateDirectories = create;
    request.prompt = prompt;
    request.message = message;
    request.directory = startDirectoryFor(*binding.value);
    FileDialogs::instance().open(
        window(), request, [this, binding](const QString& path) { choosePath(binding, path); });
    prefs().sync();
}

void SettingsPane::locateRenderToolWithSender(QObject* /*sender*/)
{
    locate(m_paths[0], tr("Locate it"), tr("Quillon needs you to locate to FilterForge Batch tool"), true,
        false, false);
}

void SettingsPane::locateFilterDirectoryWithSender(QObject* /*sender*/)
{
    locate(m_paths[1], tr("Locate it"), tr("Quillon needs you to locate the Filters directory"), false, true,
        false);
}

void SettingsPane::locateCreateOutputDirectoryWithSender(QObject* /*sender*/)
{
    locate(m_paths[2], tr("This one"), tr("Quillon needs you to locate or create the output directory"),
        false, true, true);
}

void SettingsPane::locateImagePathWithSender(QObject* /*sender*/)
{
    switch (static_cast<InputMode>(m_ui->sourceTypePopup->currentIndex())) {
    case InputMode::File:
        locate(
            m_paths[3], tr("This one"), tr("Quillon needs you to locate an input image"), true, false, false);
        break;
    case InputMode::Directory:
        locate(m_paths[3], tr("This one"), tr("Quillon needs you to locate an input directory"), false, true,
            false);
        break;
    default: {
        // No message, and the dialog's own choices.
        const FileDialogRequest defaults;
        locate(m_paths[3], tr("This one"), QString(), defaults.canChooseFiles, defaults.canChooseDirectories,
            false);
        break;
    }
    }
}

void SettingsPane::clearImagePathWithSender(QObject* /*sender*/)
{
    m_sourcePath.clear();
    m_ui->sourcePathField->clear();
    m_ui->sourcePathField->setPlaceholderText(QString());
}

void SettingsPane::selectSourceMode(int mode)
{
    if (mode < 0 || mode >= m_ui->sourceTypePopup->count())
        return;
    m_ui->sourceTypePopup->setCurrentIndex(mode);
    changeSourceModeWithSender();
}

void SettingsPane::setSource(const QString& path)
{
    selectSourceMode(static_cast<int>(QFileInfo(path).isDir() ? InputMode::Directory : InputMode::File));
    choosePath(m_paths[3], path);
}

// ---- Source type and frame suffix ----

void SettingsPane::changeSourceModeWithSender(QObject* /*sender*/)
{
    Ui::SettingsPane& s = *m_ui;
    const auto mode = static_cast<InputMode>(s.sourceTypePopup->currentIndex());
    const bool hasInput = mode != InputMode::None;
    s.imageWidthField->setEnabled(!hasInput);
    s.imageHeightField->setEnabled(!hasInput);
    s.sourcePathField->setVisible(hasInput);
    s.clearSourceButton->setVisible(hasInput);
    s.locateSourceButton->setVisible(hasInput);
    s.sourcePathLabel->setVisible(hasInput);
    if (mode == InputMode::File)
        prefs().set(pref::INPUT_MODE, QStringLiteral("IMAGE"));
    else if (mode == InputMode::Directory)
        prefs().set(pref::INPUT_MODE, QStringLiteral("DIR"));

    // "not set" is shown, never held as text a path could be typed onto.
    m_sourcePath.clear();
    s.sourcePathField->clear();
    s.sourcePathField->setPlaceholderText(tr("not set"));
    prefs().sync();
}

void SettingsPane::changeOutputSuffixWithSender(QObject* /*sender*/)
{
    Ui::SettingsPane& s = *m_ui;
    const int style = s.outputFilenameSuffixPopup->currentIndex();
    prefs().set(pref::OUTPUT_SUFFIX, QString::number(style));
    m_frameMaxValue = frameLimit(static_cast<FrameStyle>(std::clamp(style, 0, 2)));
    s.maxFramesField->setText(QString::number(m_frameMaxValue));
    if (leadingInteger(s.numberOfFramesField->text()).value_or(0) > m_frameMaxValue)
        s.numberOfFramesField->setText(QString::number(m_frameMaxValue));
    prefs().sync();
}

// ---- Output format ----

void SettingsPane::radioClick(QRadioButton* clicked, const RadioBinding& binding)
{
    *binding.code = toIntCode(clicked->property("tag").toLongLong());
    prefs().set(binding.setting->preferenceKey, *binding.code);
    for (QRadioButton* radio : binding.group)
        radio->setChecked(radio == clicked);
    prefs().sync();
}

void SettingsPane::switchClick(const SwitchBinding& binding)
{
    if (!binding.keepsMixed()) {
        settingsSaverWithSender(binding.box);
        return;
    }
    prefs().set(binding.setting->preferenceKey, stateOf(binding.box));
    prefs().sync();
}

void SettingsPane::jpegQualityChangeWithSender(QObject* /*sender*/)
{
    const int quality = m_ui->f_jpgQualitySlider->value();
    prefs().set(pref::JPEG_QUALITY, quality);
    m_ui->f_jpgQualityField->setText(QString::number(quality));
}

void SettingsPane::jpegQualityTextChangeWithSender(QObject* /*sender*/)
{
    // The field keeps what was typed; the slider shows it within its range.
    const qint64 quality = leadingInteger(m_ui->f_jpgQualityField->text()).value_or(0);
    prefs().set(pref::JPEG_QUALITY, quality);
    const QSignalBlocker blocker(m_ui->f_jpgQualitySlider);
    m_ui->f_jpgQualitySlider->setValue(toIntCode(quality));
}

QString SettingsPane::selectedFormatIdentifier() const
{
    const QWidget* page = m_ui->formatTabControl->currentWidget();
    return page ? page->property("identifier").toString() : QString();
}

void SettingsPane::formatTabDidSelectItem(int /*index*/)
{
    prefs().set(pref::EXPORT_FORMAT, selectedFormatIdentifier());
    showChosenFormat();
}

void SettingsPane::showChosenFormat()
{
    // The selected tab is the format written: it carries a check mark.
    QTabWidget* tabs = m_ui->formatTabControl;
    const QIcon chosen = style()->standardIcon(QStyle::SP_DialogApplyButton);
    for (int i = 0; i < tabs->count(); ++i)
        tabs->setTabIcon(i, i == tabs->currentIndex() ? chosen : QIcon());
    Q_EMIT formatChanged(selectedFormatIdentifier());
}

// ---- The run ----

// ---- The run ----

bool SettingsPane::SwitchBinding::keepsMixed() const
{
    return setting->kind == SettingKind::MixedSwitch;
}

void SettingsPane::bindRunValues()
{
    Ui::SettingsPane& s = *m_ui;
    for (const PathBinding& binding : std::as_const(m_paths)) {
        if (const SettingDefinition* row = findSettingByPreference(binding.key))
            m_runValues.append({ row, [value = binding.value] { return QVariant(*value); } });
    }
    for (const SwitchBinding& binding : std::as_const(m_switches))
        m_runValues.append({ binding.setting, [box = binding.box] { return QVariant(stateOf(box)); } });
    for (const RadioBinding& binding : std::as_const(m_radios))
        m_runValues.append({ binding.setting, [code = binding.code] { return QVariant(*code); } });
    for (const auto& text : std::as_const(m_texts)) {
        QLineEdit* field = text.first;
        if (text.second->kind != SettingKind::Integer) {
            m_runValues.append({ text.second, [field] { return QVariant(field->text()); } });
            continue;
        }
        // A number the run keeps: the field's, within the field's bounds.
        for (const auto& ruled : std::as_const(m_integerRules)) {
            if (ruled.first != field)
                continue;
            m_runValues.append({ text.second, [field, rule = ruled.second] {
                return QVariant(std::clamp(
                    leadingInteger(field->text()).value_or(rule.minimum), rule.minimum, rule.maximum()));
            } });
        }
    }
    // Pop-up indices are the settings' codes.
    m_runValues += { { setting("inputMode"),
                         [popup = s.sourceTypePopup] { return QVariant(popup->currentIndex()); } },
        { setting("nameStyle"), [popup = s.outputFilenameSuffixPopup] { return QVariant(popup->currentIndex()); } },
        { setting("format"), [this] { return QVariant(selectedFormatIdentifier()); } },
        { setting("jpegQualityText"), [field = s.f_jpgQualityField] { return QVariant(field->text()); } } };
}

RunSettings SettingsPane::runSettings() const
{
    RunSettings settings;
    for (const RunValue& value : m_runValues)
        value.setting->set(settings, value.read());
    return settings;
}

} // namespace quillon
