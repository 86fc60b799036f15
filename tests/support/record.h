#pragma once
/// The calling thread's record of errors.
#include <string>
#include <utility>

#include "aveffect/base_tools.h"

namespace test {

inline int Code() { return GetBaseException()->GetExceptionCode(); }
inline std::string Message() { return GetBaseException()->GetExceptionMsg(); }

/// The code, or code and message, of the record, which is cleared.
inline std::pair<int, std::string> TakeRecord() {
    std::pair taken(Code(), Message());
    GetBaseException()->Clear();
    return taken;
}
inline int TakeCode() { return TakeRecord().first; }

} // namespace test
