#pragma once

#include "run/RunSettings.h"
#include "step/StepParent.h"

#include <utility>

namespace quillon {

// A controller that only supplies the settings and ignores every report:
// for running the task writers on their own (benchmarks, fuzzing), where
// nobody watches the run and nothing is deleted afterwards.
class SilentStepParent final : public StepParent {
public:
    SilentStepParent() = default;
    explicit SilentStepParent(RunSettings runSettings)
        : settings(std::move(runSettings))
    {
    }

    const RunSettings& runSettings() const override { return settings; }
    QString outputPrefix() const override { return settings.outputPrefix; }
    void setFilterInfoWithData(const QStringList&) override { }
    void setSourceInfoWithSource(const QString&) override { }
    void setRenderInfoWithInfo(const QString&) override { }
    void collectForDeletionWithList(const QStringList&) override { }
    void writeLogFileWithMessage(const QString&) override { }
    QObject* reportContext() override { return nullptr; }

    RunSettings settings;
};

} // namespace quillon
