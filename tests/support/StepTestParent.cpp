#include "support/StepTestParent.h"

namespace quillon {

StepTestParent::StepTestParent()
    : prefix(settings.outputPrefix)
{
}

void StepTestParent::setFilterInfoWithData(const QStringList& nameAndAuthor)
{
    filterInfos.append(nameAndAuthor);
}

void StepTestParent::setSourceInfoWithSource(const QString& source)
{
    sources.append(source);
}

void StepTestParent::setRenderInfoWithInfo(const QString& info)
{
    renderInfos.append(info);
}

void StepTestParent::collectForDeletionWithList(const QStringList& paths)
{
    deletionLists.append(paths);
}

void StepTestParent::writeLogFileWithMessage(const QString& message)
{
    logMessages.append(message);
}

} // namespace quillon
