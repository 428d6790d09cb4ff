#include "step/FilterProcessObject.h"

#include "run/RunSettings.h"
#include "run/WineTool.h"
#include "step/StepParent.h"

#include "step/ToolRun.h"

#include <utility>

namespace quillon {

filterProcessObject::filterProcessObject(RecordPtr filterData_, QStringList inFiles_, QStringList outFiles_,
    bool isFirst_, bool isLast_, qint64 chainid_, StepParent* parent_, QStringList filenames)
    : filterData(std::move(filterData_))
    , inFiles(std::move(inFiles_))
    , outFiles(std::move(outFiles_))
    , isFirst(isFirst_)
    , isLast(isLast_)
    , parent(parent_)
    , chainid(chainid_)
    , originalFileNames(std::move(filenames))
{
}

// Out of line: ToolRun is only forward-declared in the header.
filterProcessObject::~filterProcessObject() = default;

ToolLaunch filterProcessObject::toolLaunch(const QString& controlFile) const
{
    return m_wine ? m_wine->launch(toolPath, controlFile) : ToolLaunch { toolPath, { controlFile }, {} };
}

QString filterProcessObject::pathForTool(const QString& path) const
{
    return m_wine ? m_wine->windowsPath(path) : path;
}

const RunSettings& filterProcessObject::settings() const
{
    return parent->runSettings();
}

} // namespace quillon
