#pragma once
/// Words to the person at the host, who has nothing but standard error.
#include <string_view>

namespace aveffect::frei0r {

/// Writes the line "aveffect: SUBJECT: TEXT" unless it was written before in this process, and nothing more
/// after very many different ones. Allocates nothing. Safe from any thread.
void SayOnce(std::string_view subject, std::string_view text) noexcept;

} // namespace aveffect::frei0r
