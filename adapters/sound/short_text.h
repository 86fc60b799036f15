#pragma once
/// Texts that are put together while compiling.
#include <initializer_list>
#include <string_view>

namespace AVBased::sound {

/// Ends with a zero.
struct ShortText {
    char text[64] = {};
};

/// Not a constant where it is too long.
constexpr ShortText Joined(std::initializer_list<std::string_view> parts) {
    ShortText joined;
    char* end = joined.text;
    for (const std::string_view part : parts)
        for (const char letter : part) *end++ = letter;
    *end = '\0';
    return joined;
}

} // namespace AVBased::sound
