#pragma once

#include "batch/BatchDisplay.h"

#include <QElapsedTimer>
#include <QTimer>

namespace quillon {

// Between the controller and a display that shows only the latest report of
// each kind (reportIntervalMs() > 0, the window): the sources, the tool's
// output and the image progress of a run come at most once per interval, the
// latest of each, in the order of their last arrival; the reports between
// are merged (the sources counted). Every other call first hands on what is
// pending, so the display sees the reports in the run's order.
class DisplayRelay final : public BatchDisplay {
public:
    DisplayRelay();

    void setTarget(BatchDisplay* target);
    BatchDisplay* target() const { return m_target; }
    // The display the controller talks to: this relay when the target
    // merges reports, the target itself otherwise.
    BatchDisplay* entry() { return m_target && m_target->reportIntervalMs() > 0 ? this : m_target; }
    // Hands on what is pending now.
    void flush();

    void showErrorAlert(const QString& message) override;
    void beginProgressSheet() override;
    void endProgressSheet() override;
    void showFilterInfo(const QString& name, const QString& author) override;
    void showSourceInfo(const QString& source) override;
    void showRenderInfo(const QString& info) override;
    void planRun(int inputCount, int steps, qint64 frames) override;
    ExistingOutputs askExistingOutputs(const QStringList& paths) override;
    void showNotice(const QString& message) override;
    bool confirmWarning(const QString& message) override;
    void showImageProgress(
        qint64 done, qint64 total, qint64 elapsedMs, qint64 leftMs, const QString& latest) override;
    void runFinished(bool aborted) override;
    void beep() override;

private:
    enum Kind { Source, Render, Progress, KindCount };
    void schedule(Kind kind);

    BatchDisplay* m_target = nullptr;
    QTimer m_timer;
    QElapsedTimer m_sinceFlush;
    quint64 m_arrival = 0;
    quint64 m_pending[KindCount] = {}; // arrival of each kind's latest report; 0: none
    QString m_source;
    int m_sources = 0;
    QString m_render;
    qint64 m_done = 0, m_total = 0, m_elapsedMs = 0, m_leftMs = 0;
    QString m_latest;
};

} // namespace quillon
