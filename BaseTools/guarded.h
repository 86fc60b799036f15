#pragma once
/// The one error boundary: nothing that a host calls lets an exception out.
#include <exception>
#include <new>
#include <utility>

#include "BaseTools/CBaseException.h"
#include "aveffect/base_tools.h"

namespace BaseTool {

/// Runs body and returns its result. What it throws goes into the calling thread's record, and the failure
/// value comes back instead: a CBaseException whole, short memory as 10021007 "No enough memory" whoever
/// found it, another standard exception with its own text, anything else as "Unknown exception". A success
/// leaves the record as it was.
template <class Failure, class Body>
auto Guarded(Failure failureValue, Body&& body, SourceLocation where = SourceLocation::Current())
    -> decltype(body()) {
    try {
        return std::forward<Body>(body)();
    } catch (CBaseException& error) {
        GetBaseException()->Copy(&error);
    } catch (const std::bad_alloc&) {
        GetBaseException()->SetException(AVBased::kNoMemory, "No enough memory", where.line, where.file);
    } catch (const std::exception& error) {
        GetBaseException()->SetException(AVBased::kStandardException, error.what(), where.line, where.file);
    } catch (...) {
        GetBaseException()->SetException(AVBased::kUnknownException, "Unknown exception", where.line,
                                         where.file);
    }
    return failureValue;
}

/// The same for operations without a result.
template <class Body>
void Guarded(Body&& body, SourceLocation where = SourceLocation::Current()) {
    Guarded(
        false,
        [&] {
            std::forward<Body>(body)();
            return true;
        },
        where);
}

} // namespace BaseTool
