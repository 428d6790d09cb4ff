#pragma once

#include "run/RunSettings.h"
#include "step/StepParent.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace quillon {

// A controller for step tests: hands out a settings snapshot and a prefix
// that the test sets, and records every report in order. reportContext() is
// null, so reports arrive as direct calls on the step's thread.
class StepTestParent final : public StepParent {
public:
    StepTestParent()
        : prefix(settings.outputPrefix)
    {
    }

    const RunSettings& runSettings() const override { return settings; }
    QString outputPrefix() const override { return prefix; }

    void setFilterInfoWithData(const QStringList& nameAndAuthor) override
    {
        filterInfos.append(nameAndAuthor);
    }
    void setSourceInfoWithSource(const QString& source) override { sources.append(source); }
    void setRenderInfoWithInfo(const QString& info) override { renderInfos.append(info); }
    void collectForDeletionWithList(const QStringList& paths) override { deletionLists.append(paths); }
    void writeLogFileWithMessage(const QString& message) override { logMessages.append(message); }
    QObject* reportContext() override { return nullptr; }

    RunSettings settings;
    QString prefix; // starts as settings.outputPrefix

    QList<QStringList> filterInfos;
    QStringList sources;
    QStringList renderInfos;
    QList<QStringList> deletionLists;
    QStringList logMessages;
};

} // namespace quillon
