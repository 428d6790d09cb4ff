#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QList>
#include <QPixmap>

#include <algorithm>
#include <memory>

class QLabel;
class QTimer;

namespace Ui {
class ProgressSheet;
} // namespace Ui

namespace quillon {

class LatestThumbnail;

// The window-modal sheet shown while a batch runs: the running filter and its
// author, the current source, the render tool's latest output, the animation,
// a bar of tool runs done against tool runs planned, the elapsed time, the
// newest output as a thumbnail and the Abort button. Closing it by Escape or the title bar asks for an abort.
class ProgressSheet final : public QDialog {
    Q_OBJECT
public:
    explicit ProgressSheet(QWidget* parent = nullptr);
    ~ProgressSheet() override;

    Ui::ProgressSheet* ui() const { return m_ui.get(); }

    // The six animation frames wobble00..wobble05 from the resources, in order.
    static QList<QPixmap> loadAnimationFrames();
    // An estimate of the tool runs of a chain: the first step runs once per
    // input (or once without input) and renders `frames` images each; every
    // later step runs once per image of the step before.
    static int plannedToolRuns(int inputCount, int steps, qint64 frames);

    // The number of filters in the chain of the next run; the sheet counts
    // the filters reported against it ("Step 2 of 3").
    void setPlannedSteps(int steps) { m_plannedSteps = std::max(0, steps); }
    // The size of the bar, once the run knows its inputs.
    void setPlannedToolRuns(int runs);

    // Shows the sheet window-modal over its parent with the bar at 0 of
    // `plannedRuns`, the clock at 0:00 and the step count empty. The other
    // text fields keep what the previous run left until new reports arrive.
    void beginRun(int plannedRuns);
    // Hides the sheet and stops the clock; harmless when already hidden.
    void endRun();
    // The run is over: the bar shows every counted tool run as done.
    void finishRun();

    void showFilterInfo(const QString& name, const QString& author);
    // A source marks the start of one tool run (of `started` when the
    // reports between two redraws were merged).
    void showSourceInfo(const QString& source, int started = 1);
    void showRenderInfo(const QString& info);
    void showAnimationFrame(int frame);
    // Progress in images: from the first one on, the bar counts images and
    // a line says about how long is left (once the rate is known).
    void showImageProgress(qint64 done, qint64 total, qint64 leftMs);
    int imagesShown() const { return static_cast<int>(m_imagesDone); }
    // The newest written output, shown as a thumbnail (`prThumbnail`).
    void showLatestOutput(const QString& path);
    LatestThumbnail* thumbnail() const { return m_thumbnail; }

    int toolRunsStarted() const { return m_started; }
    int toolRunsPlanned() const { return m_planned; }
    // Filters reported in the current run.
    int stepsStarted() const { return m_steps; }
    // The frame last shown, -1 before the first tick of a run.
    int shownFrame() const { return m_shownFrame; }

Q_SIGNALS:
    void abortRequested();
    // Each animation frame as it is put on the sheet.
    void animationFrameShown(int frame);

public Q_SLOTS:
    void reject() override;

private:
    void updateBar();
    void updateClock();
    void animationTimerLoopWithTimer();

    std::unique_ptr<Ui::ProgressSheet> m_ui;
    QList<QPixmap> animArray;
    QTimer* m_clockTimer = nullptr;
    QTimer* m_animTimer = nullptr;
    int m_animState = 0;
    int m_animDirection = 1;
    QElapsedTimer m_clock;
    int m_planned = 0;
    int m_started = 0;
    int m_plannedSteps = 0;
    int m_steps = 0;
    bool m_finished = false;
    int m_shownFrame = -1;
    qint64 m_imagesDone = 0;
    qint64 m_imagesTotal = 0;
    QLabel* m_timeLeft = nullptr;
    LatestThumbnail* m_thumbnail = nullptr;
};

} // namespace quillon
