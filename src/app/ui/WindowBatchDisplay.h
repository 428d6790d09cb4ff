#pragma once

#include "app/ui/ResultsModel.h"
#include "batch/BatchDisplay.h"

#include <QCoreApplication>

#include <functional>

namespace quillon {

class ProgressSheet;

// The main window's side of a batch run: reports go to the progress sheet,
// failed checks to the window's error alert, and how the run ended to the
// window's status line. Abort closes the sheet at once, so what the run still
// reports while it winds down (a tool that had to be killed) is kept for the
// status line.
class WindowBatchDisplay final : public BatchDisplay {
    Q_DECLARE_TR_FUNCTIONS(WindowBatchDisplay)
public:
    WindowBatchDisplay(ProgressSheet* sheet, std::function<void(const QString&)> showAlert,
        std::function<void(const QString&)> showStatus = {});

    void showErrorAlert(const QString& message) override;
    void beginProgressSheet() override;
    void endProgressSheet() override;
    void planRun(int inputCount, int steps, qint64 frames) override;
    void showFilterInfo(const QString& name, const QString& author) override;
    void showSourceInfo(const QString& source) override;
    // The sheet is redrawn at most once a frame: reports come merged.
    int reportIntervalMs() const override { return 16; }
    void showSourcesInfo(const QString& latest, int count) override;
    // Shows the tail of the output (its last lines, at most a few hundred
    // characters): a label laid out anew with a whole pipe-full of lines
    // would hold the window up for a quarter of a second per report.
    void showRenderInfo(const QString& info) override;
    // Shown on the progress sheet's output line until the tool says more.
    void showNotice(const QString& message) override;
    void runFinished(bool aborted) override;
    ExistingOutputs askExistingOutputs(const QStringList& paths) override;
    bool confirmWarning(const QString& message) override;
    void showImageProgress(
        qint64 done, qint64 total, qint64 elapsedMs, qint64 leftMs, const QString& latest) override;

    // What the run made, for the results shown when it ends: the closing
    // count, the output folder, every final output in plan order with its
    // status, and the lines saying why outputs are missing or tool runs failed.
    struct Results {
        QString summary;
        QString folder;
        QList<ResultItem> outputs;
        QStringList details;
    };
    void setResultsSource(std::function<Results()> source) { m_results = std::move(source); }
    // Where the results go when a run ends (the window's results sheet).
    void setResultsSink(std::function<void(const Results&)> sink) { m_showResults = std::move(sink); }
    void beep() override;

    // What showRenderInfo puts on the sheet.
    static constexpr qsizetype kShownLines = 4;
    static constexpr qsizetype kShownCharacters = 800;
    static QString tailForDisplay(const QString& info);

private:
    ProgressSheet* m_sheet;
    std::function<void(const QString&)> m_showAlert;
    std::function<void(const QString&)> m_showStatus;
    std::function<Results()> m_results;
    std::function<void(const Results&)> m_showResults;
    bool m_sheetOpen = false;
    QString m_reportedAfterClose;
};

} // namespace quillon
