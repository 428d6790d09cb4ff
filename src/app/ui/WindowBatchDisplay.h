#pragma once

#include "batch/BatchDisplay.h"

#include <functional>

namespace quillon {

class ProgressSheet;

// The main window's side of a batch run: reports go to the progress sheet,
// failed checks to the window's error alert.
class WindowBatchDisplay final : public BatchDisplay {
public:
    WindowBatchDisplay(ProgressSheet* sheet, std::function<void(const QString&)> showAlert);

    // Called by the window before Start: the size of the bar of the next run.
    void setPlannedToolRuns(int runs) { m_planned = runs; }

    void showErrorAlert(const QString& message) override;
    void beginProgressSheet() override;
    void endProgressSheet() override;
    void showFilterInfo(const QString& name, const QString& author) override;
    void showSourceInfo(const QString& source) override;
    void showRenderInfo(const QString& info) override;
    void showAnimationFrame(int frame) override;
    void runFinished(bool aborted) override;
    void beep() override;

private:
    ProgressSheet* m_sheet;
    std::function<void(const QString&)> m_showAlert;
    int m_planned = 0;
};

} // namespace quillon
