#pragma once
/// Where a call stands in the source. Stands in for std::source_location, which clang 14 does not offer with
/// the standard library it is used with here.

namespace BaseTool {

struct SourceLocation {
    const char* file;
    int line;

    /// As a default argument it gives the place of the call whose argument it is.
    static constexpr SourceLocation Current(const char* file = __builtin_FILE(),
                                            int line = __builtin_LINE()) noexcept {
        return {file, line};
    }
};

} // namespace BaseTool
