#pragma once

#include "app/ui/FieldCorrection.h"

#include <QList>
#include <QString>
#include <QVariant>
#include <QWidget>

#include <functional>
#include <memory>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QRadioButton;

namespace Ui {
class SettingsPane;
} // namespace Ui

namespace quillon {

class Preferences;
struct RunSettings;
struct SettingDefinition;

// The Settings page: render tool, Filters and output paths, the source,
// output naming and frame count, the rendering switches and the output format.
// Each control is bound to its row of the setting table, which gives its
// preference key: restore() fills the controls from the store, and every
// change is written back at once. runSettings() gives the values of a run.
class SettingsPane final : public QWidget {
    Q_OBJECT
public:
    explicit SettingsPane(QWidget* parent = nullptr);
    ~SettingsPane() override;

    // Where the preferences come from (asked on each use).
    void setPreferencesSource(std::function<Preferences&()> source) { m_prefs = std::move(source); }

    Ui::SettingsPane* ui() const { return m_ui.get(); }
    const QString& toolPath() const { return m_toolPath; }
    const QString& filterPath() const { return m_filterPath; }
    const QString& outputPath() const { return m_outputPath; }
    const QString& sourcePath() const { return m_sourcePath; }
    qint64 frameMaxValue() const { return m_frameMaxValue; }

    // The values of a run, as the controls show them now (without the
    // chain's preset and maps).
    RunSettings runSettings() const;

    // Chooses a source type as the user would (0 image, 1 directory, 2 none).
    void selectSourceMode(int mode);
    // Takes a dropped image or folder as the source.
    void setSource(const QString& path);

public Q_SLOTS:
    // Fills every control from the preferences (start-up and reset).
    void restore();
    void settingsSaverWithSender(QObject* sender = nullptr);

    void locateRenderToolWithSender(QObject* sender = nullptr);
    void locateFilterDirectoryWithSender(QObject* sender = nullptr);
    void locateCreateOutputDirectoryWithSender(QObject* sender = nullptr);
    void locateImagePathWithSender(QObject* sender = nullptr);
    void clearImagePathWithSender(QObject* sender = nullptr);

    void changeSourceModeWithSender(QObject* sender = nullptr);
    void changeOutputSuffixWithSender(QObject* sender = nullptr);
    void jpegQualityChangeWithSender(QObject* sender = nullptr);
    void jpegQualityTextChangeWithSender(QObject* sender = nullptr);
    // Format tab view: stores the selected tab's identifier.
    void formatTabDidSelectItem(int index);

Q_SIGNALS:
    // A new Filters directory was chosen or typed: the library is read again.
    void filterPathChanged(const QString& path);
    // The output format of a run is now this one (the selected tab's identifier).
    void formatChanged(const QString& identifier);

private:
    // A path control: its field, the controller's copy and its key.
    struct PathBinding {
        QLineEdit* field;
        QString* value;
        QString key;
    };
    // A radio group stores the tag of its checked button.
    struct RadioBinding {
        QList<QRadioButton*> group;
        int* code;
        const SettingDefinition* setting;
    };
    // A switch: 1 or 0; a MixedSwitch setting also keeps a mixed state (-1).
    struct SwitchBinding {
        QCheckBox* box;
        const SettingDefinition* setting;
        bool keepsMixed() const;
    };
    // A control's value as the run takes it.
    struct RunValue {
        const SettingDefinition* setting;
        std::function<QVariant()> read;
    };

    Preferences& prefs() const;
    void choosePath(const PathBinding& binding, const QString& path);
    void locate(const PathBinding& binding, const QString& prompt, const QString& message, bool files,
        bool directories, bool create);
    void radioClick(QRadioButton* clicked, const RadioBinding& binding);
    void switchClick(const SwitchBinding& binding);
    QString selectedFormatIdentifier() const;
    void bindRunValues();
    void showChosenFormat();

    std::unique_ptr<Ui::SettingsPane> m_ui;
    std::function<Preferences&()> m_prefs;
    QString m_toolPath;
    QString m_filterPath;
    QString m_outputPath;
    QString m_sourcePath;
    qint64 m_frameMaxValue = 999;
    int m_pngBitDepth = 0;
    int m_pngCompression = 0;
    int m_tiffBitDepth = 0;
    int m_tiffCompression = 0;
    int m_tgaBitDepth = 0;
    QList<PathBinding> m_paths;
    QList<RadioBinding> m_radios;
    QList<SwitchBinding> m_switches;
    QList<std::pair<QLineEdit*, const SettingDefinition*>> m_texts;
    QList<std::pair<QLineEdit*, IntegerFieldRule>> m_integerRules;
    QList<RunValue> m_runValues;
};

} // namespace quillon
