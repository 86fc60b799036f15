#include <algorithm>
#include <iterator>
#include <regex>
#include <set>

#include "manual/pages.h"

namespace aveffect::manual {

namespace {

/// The text with each match replaced by what the function says.
template <typename Function>
std::string Replaced(const std::string& text, const std::regex& pattern, Function function) {
    std::string result;
    auto place = text.cbegin();
    for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match) {
        result.append(place, (*match)[0].first).append(function(*match));
        place = (*match)[0].second;
    }
    return result.append(place, text.cend());
}

/// As the texts' own links have it: letters in lower case, digits and dashes, a dash for each blank.
std::string Anchor(const std::string& heading) {
    std::string anchor;
    for (const char c : std::regex_replace(heading, std::regex("<[^>]*>|&[a-z]+;"), "")) {
        if (c >= 'A' && c <= 'Z') anchor += static_cast<char>(c - 'A' + 'a');
        if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_') anchor += c;
        if (c == ' ') anchor += '-';
    }
    return anchor;
}

std::string WithAnchors(const std::string& body) {
    std::set<std::string> used;
    return Replaced(body, std::regex("<h([1-6])>(.*?)</h[1-6]>"), [&used](const std::smatch& heading) {
        const std::string plain = Anchor(heading.str(2));
        std::string anchor = plain;
        for (int count = 1; !used.insert(anchor).second; ++count)
            anchor = plain + "-" + std::to_string(count);
        return "<h" + heading.str(1) + " id=\"" + anchor + "\">" + heading.str(2) + "</h" + heading.str(1) +
               ">";
    });
}

std::string WithLinksBetweenPages(const std::string& body) {
    return Replaced(
        body, std::regex("<a href=\"([^\"#]*)(#[^\"]*)?\">([^]*?)</a>"), [](const std::smatch& link) {
            const std::string file = link.str(1);
            if (file.empty()) return link.str(0);
            const bool here =
                std::any_of(std::begin(kTextPages), std::end(kTextPages),
                            [&](const TextPage& page) { return file == std::string(page.name) + ".md"; });
            if (!here) return link.str(3);
            return "<a href=\"" + file.substr(0, file.size() - 3) + ".html" + link.str(2) + "\">" +
                   link.str(3) + "</a>";
        });
}

} // namespace

std::string PageOfText(const TextPage& page, std::string body) {
    body = WithLinksBetweenPages(WithAnchors(body));
    body = std::regex_replace(body, std::regex("<table>"), "<div class=\"wide\" tabindex=\"0\"><table>");
    body = std::regex_replace(body, std::regex("</table>"), "</table></div>");
    return WholePage(Root{""}, std::string(page.title) + ": AVEffect", body);
}

} // namespace aveffect::manual
