#pragma once

#include "batch/BatchController.h"
#include "batch/BatchDisplay.h"

#include <QFileInfo>
#include <QString>

namespace quillon {

// The display of a run made aside (a preview, a test strip): it shows
// nothing while the run goes; a refused start leaves its message for the
// status line.
class QuietBatchDisplay final : public BatchDisplay {
public:
    void showErrorAlert(const QString& message) override { lastError = message; }
    void beginProgressSheet() override { }
    void endProgressSheet() override { }
    void showFilterInfo(const QString&, const QString&) override { }
    void showSourceInfo(const QString&) override { }
    void showRenderInfo(const QString&) override { }

    QString lastError;
};

// The first file among the inputs of a directory. It lists the directory:
// run it in the background.
inline QString firstInputFileIn(const QString& directory)
{
    for (const QString& entry : BatchController::loadImagesFromSourceFolder(directory)) {
        if (QFileInfo(entry).isFile())
            return entry;
    }
    return {};
}

} // namespace quillon
