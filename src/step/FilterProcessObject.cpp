#include "step/FilterProcessObject.h"

#include "run/RunSettings.h"
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

const RunSettings& filterProcessObject::settings() const
{
    return parent->runSettings();
}

} // namespace quillon
