#pragma once

#include "library/Record.h"
#include "run/RunSettings.h"

#include <QElapsedTimer>
#include <QWidget>

#include <memory>

class QLabel;
class QPushButton;
class QTemporaryDir;

namespace quillon {

class QuietBatchDisplay;

class BatchController;
class LatestThumbnail;

// "Preview" beside the chain: renders frame 1 of the first input (or of the
// size without input) through the whole chain with the current settings into
// a temporary directory of its own, then shows the image with the seconds it
// took. It runs on copies of the chain's records, so their values do not
// advance, and writes nothing into the output directory. Cancel stops it;
// the window is never held up (the run has its own worker, the input
// listing and the decoding run in the background).
class ChainPreview final : public QWidget {
    Q_OBJECT
public:
    explicit ChainPreview(QWidget* parent = nullptr);
    ~ChainPreview() override;

    // Starts a preview of `chain` with `settings`; ignored while one runs.
    void start(const RecordList& chain, const RunSettings& settings);
    void cancel();
    bool isRunning() const;

    // A deep copy: every filter record and its parameter records; a record
    // at two positions stays one (copied) record.
    static RecordList copyChain(const RecordList& chain);

    LatestThumbnail* image() const { return m_image; }
    QLabel* statusLine() const { return m_status; }

Q_SIGNALS:
    // Emitted when the preview button is pressed; the owner calls start().
    void previewRequested();
    // A preview ended: shown (an image), failed or cancelled.
    void previewFinished(bool shown);

private:
    void startWithInput(const RecordList& chain, RunSettings settings, const QString& input);
    void runFinished(bool aborted);
    void finish(const QString& status, bool shown);

    // In this order: the run goes first, then its folder, then its display.
    std::unique_ptr<QuietBatchDisplay> m_display;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<BatchController> m_batch;
    QElapsedTimer m_clock;
    QPushButton* m_previewButton = nullptr;
    QPushButton* m_cancelButton = nullptr;
    LatestThumbnail* m_image = nullptr;
    QLabel* m_status = nullptr;
    bool m_listing = false;
    bool m_cancelled = false;
};

} // namespace quillon
