#pragma once
/// What effects say when a tool or a host gives them nothing.
#include "BaseTools/CBaseException.h"
#include "aveffect/base_tools.h"

namespace AVBased {

/// Throws CBaseException: 10021007 where whoever gave nothing has just said that memory is short, so that
/// this isn't lost, else 10021003 "Bad pointer".
[[noreturn]] inline void RaiseMissing(BaseTool::SourceLocation where = BaseTool::SourceLocation::Current()) {
    if (GetBaseException()->GetExceptionCode() == kNoMemory)
        BaseTool::Raise(kNoMemory, "No enough memory", where);
    BaseTool::Raise(kBadPointer, "Bad pointer", where);
}

} // namespace AVBased
