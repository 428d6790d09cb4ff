#pragma once

#include "run/RunSettings.h"
#include "step/StepParent.h"

#include <QString>
#include <QStringList>

namespace quillon {

// A controller for step tests: hands out a settings snapshot and a prefix
// that the test sets; the reports go nowhere (the batch run tests check
// them). reportContext() is null, so reports are direct calls.
class StepTestParent final : public StepParent {
public:
    StepTestParent()
        : prefix(settings.outputPrefix)
    {
    }

    const RunSettings& runSettings() const override { return settings; }
    QString outputPrefix() const override { return prefix; }

    void setFilterInfoWithData(const QStringList&) override { }
    void setSourceInfoWithSource(const QString&) override { }
    void setRenderInfoWithInfo(const QString&) override { }
    void collectForDeletionWithList(const QStringList&) override { }
    void writeLogFileWithMessage(const QString&) override { }
    QObject* reportContext() override { return nullptr; }

    RunSettings settings;
    QString prefix; // starts as settings.outputPrefix
};

} // namespace quillon
