#pragma once

#include "library/Record.h"
#include "run/RunSettings.h"

#include <QDialog>
#include <QList>
#include <QVariant>

#include <memory>

class QLabel;
class QPushButton;
class QTemporaryDir;

namespace quillon {

class QuietBatchDisplay;

class BatchController;
class LatestThumbnail;

// "Test Strip…" of the parameter editor: frame 1 of the first input (or of
// the size without input) rendered through the whole chain once per value
// of one parameter, the others held at their start values, each into a
// temporary folder of its own, and shown side by side. Choosing one sets
// that value. The renders run one after another like Preview (a run's
// worker, nothing in the output directory); Cancel stops them.
class TestStrip final : public QDialog {
    Q_OBJECT
public:
    explicit TestStrip(QWidget* parent = nullptr);
    ~TestStrip() override;

    // Renders `values` of parameter `index` of chain position `position`.
    void start(const RecordList& chain, const RunSettings& settings, int position, qsizetype index,
        const QString& name, QList<QVariant> values);
    bool isRunning() const;
    // Images rendered so far.
    int shown() const { return m_shown; }

Q_SIGNALS:
    // The user chose the image of this value.
    void valueChosen(const QVariant& value);
    // Every value has been rendered, or the strip stopped.
    void finished();

private:
    void renderNext();
    void runFinished(bool aborted);
    void stop(const QString& status);

    std::unique_ptr<QuietBatchDisplay> m_display;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<BatchController> m_batch;
    RecordList m_chain;
    RunSettings m_settings;
    int m_position = 0;
    qsizetype m_index = 0;
    QList<QVariant> m_values;
    int m_next = 0;
    int m_shown = 0;
    bool m_cancelled = false;
    bool m_listing = false;
    QList<LatestThumbnail*> m_images;
    QList<QPushButton*> m_choices;
    QWidget* m_strip = nullptr;
    QLabel* m_status = nullptr;
};

} // namespace quillon
