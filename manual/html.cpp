#include "manual/html.h"

#include "host/support/html_text.h"
#include "manual/scene.h"

namespace aveffect::manual {

namespace {

std::string SizedPicture(const std::string& file, const std::string& instead) {
    return "<img src=\"" + file + "\" alt=\"" + Escaped(instead) + "\" width=\"" +
           std::to_string(kSceneWidth) + "\" height=\"" + std::to_string(kSceneHeight) +
           "\" loading=\"lazy\" decoding=\"async\">";
}

std::string Menu(const Root& root) {
    std::string items = "<li><a href=\"" + root.To("index.html") + "\">Effects</a></li>";
    for (const TextPage& page : kTextPages)
        items += "<li><a href=\"" + root.To(page.name) + ".html\">" + page.title + "</a></li>";
    return "<nav aria-label=\"Manual\"><ul>" + items + "</ul></nav>";
}

std::string Row(const char* cell, const std::vector<std::string>& cells) {
    std::string row;
    for (const std::string& content : cells) row += Element(cell, content);
    return Element("tr", row);
}

} // namespace

std::string Escaped(std::string_view text) { return HtmlEscaped(text); }

std::string Element(std::string_view name, const std::string& content) {
    const std::string tag(name);
    return "<" + tag + ">" + content + "</" + tag + ">\n";
}

std::string Code(std::string_view text) { return "<code>" + Escaped(text) + "</code>"; }

std::string Command(std::string_view lines) {
    return "<pre><code class=\"language-sh\">" + Escaped(lines) + "</code></pre>\n";
}

std::string Picture(const Root& root, std::string_view name, const std::string& instead) {
    return SizedPicture(root.ToPicture(name), instead);
}

std::string MovingPicture(const Root& root, const std::string& name, const std::string& instead) {
    return "<picture class=\"moving\"><source media=\"(prefers-reduced-motion: reduce)\" srcset=\"" +
           root.ToPicture(name + "-still") + "\">" + Picture(root, name, instead) + "</picture>";
}

std::string Table(const std::vector<std::string>& header, const std::vector<std::vector<std::string>>& rows) {
    std::string body;
    for (const auto& row : rows) body += Row("td", row);
    return "<div class=\"wide\" tabindex=\"0\">" +
           Element("table", Element("thead", Row("th", header)) + Element("tbody", body)) + "</div>\n";
}

std::string WholePage(const Root& root, const std::string& title, const std::string& content) {
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
           "<meta name=\"color-scheme\" content=\"light dark\">\n" +
           Element("title", Escaped(title)) + "<link rel=\"stylesheet\" href=\"" + root.To("style.css") +
           "\">\n<link rel=\"icon\" href=\"" + root.To("icon.svg") + "\">\n<script defer src=\"" +
           root.To("script.js") +
           "\"></script>\n</head>\n<body>\n<a class=\"skip\" href=\"#content\">To the content</a>\n<header>"
           "<a class=\"name\" href=\"" +
           root.To("index.html") + "\">AVEffect</a>" + Menu(root) + "</header>\n<main id=\"content\">\n" +
           content +
           "</main>\n<footer><p>Pictures and sounds are drawn by the manual's own program. MIT "
           "licence.</p></footer>\n</body>\n</html>\n";
}

} // namespace aveffect::manual
