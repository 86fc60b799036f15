#pragma once
/// Texts in pages.
#include <string>
#include <string_view>

namespace aveffect {

/// The text with the characters replaced that mean something in HTML, in attributes between double quotes
/// too.
inline std::string HtmlEscaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '"':
            result += "&quot;";
            break;
        default:
            result += c;
        }
    }
    return result;
}

} // namespace aveffect
