#pragma once
/// The boundary between the host's exceptions and the error record that the plug-in's side reads.
#include <new>

#include "aveffect/base_tools.h"
#include "host/support/error.h"

namespace aveffect {

/// Runs one operation of an interface; what it throws ends in the calling thread's error record and gives the
/// failure value instead.
template <typename Body>
auto Recorded(Body body) noexcept -> decltype(body()) {
    const auto record = [](int code, const char* message) {
        GetBaseException()->SetException(code, message, __LINE__, __FILE__);
    };
    try {
        return body();
    } catch (const Error& error) {
        record(AVBased::kDoesNotExist, error.what());
    } catch (const std::bad_alloc&) {
        record(AVBased::kNoMemory, "No enough memory");
    } catch (const std::exception& error) {
        record(AVBased::kStandardException, error.what());
    } catch (...) {
        record(AVBased::kUnknownException, "Unknown exception");
    }
    return {};
}

/// Throws Error of that kind with the record's reason behind the text, or NoMemory. Where there is no reason,
/// the other words stand in its place.
[[noreturn]] inline void ThrowRecorded(ErrorKind kind, const std::string& text, const char* without = "") {
    const IBaseException* const record = GetBaseException();
    const std::string reason = record->GetExceptionMsg();
    const std::string told = text + (reason.empty() ? without : reason);
    if (record->GetExceptionCode() == AVBased::kNoMemory) throw NoMemory(told);
    throw Error(kind, told);
}

} // namespace aveffect
