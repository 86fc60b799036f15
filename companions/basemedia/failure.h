#pragma once
/// How the library fails inside, and the boundary where failures become entries of the error record.
#include <cerrno>
#include <new>
#include <stdexcept>
#include <string>

extern "C" {
#include <libavutil/error.h>
}

#include "mediabridge/record_error.h"

namespace basemedia {

/// What went wrong, and where it was found.
class Failure : public std::runtime_error {
public:
    Failure(AVBased::ErrorCode code, const std::string& message, int line = __builtin_LINE(),
            const char* file = __builtin_FILE())
        : std::runtime_error(message)
        , m_code(code)
        , m_line(line)
        , m_file(file) {}

    void Record() const { mediabridge::RecordError(m_code, what(), m_line, m_file); }

private:
    AVBased::ErrorCode m_code;
    int m_line;
    const char* m_file;
};

inline void RequirePointer(const void* pointer, int line = __builtin_LINE(),
                           const char* file = __builtin_FILE()) {
    if (!pointer) throw Failure(AVBased::kBadPointer, "Bad pointer", line, file);
}

/// Throws std::bad_alloc where the media libraries' code says that memory was short.
inline void RequireMemory(int code) {
    if (code == AVERROR(ENOMEM)) throw std::bad_alloc();
}

/// Runs the body; on failure records it and returns null.
template <typename Body>
auto Guarded(Body body) noexcept -> decltype(body()) {
    try {
        return body();
    } catch (const Failure& failure) {
        failure.Record();
    } catch (const std::bad_alloc&) {
        mediabridge::RecordNoMemory();
    } catch (const std::exception& error) {
        mediabridge::RecordError(AVBased::kStandardException, error.what());
    } catch (...) { // a host's frame may throw anything
        mediabridge::RecordError(AVBased::kUnknownException, "Unknown exception");
    }
    return nullptr;
}

} // namespace basemedia
