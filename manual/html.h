#pragma once
/// What the manual's pages have in common.
#include <string>
#include <string_view>
#include <vector>

namespace aveffect::manual {

/// A page of words, made of one of the project's own texts.
struct TextPage {
    const char* name;  ///< of the text in docs/ without ".md", and of the page without ".html"
    const char* title; ///< in the menu
};

inline constexpr TextPage kTextPages[] = {
    {"cli", "The program"},           {"recipes", "Recipes"},
    {"timelines", "Timelines"},       {"in-other-programs", "Other programs"},
    {"host-library", "Host library"}, {"speed", "Speed"},
    {"reliability", "Reliability"}};

/// Where a page lies: what leads from it to the manual's own folder. "" or "../".
struct Root {
    std::string_view path;

    std::string To(std::string_view file) const { return std::string(path) + std::string(file); }
    std::string ToPicture(std::string_view name) const {
        return To("pictures/" + std::string(name) + ".webp");
    }
};

/// The text with the characters replaced that mean something in HTML, in attributes too.
std::string Escaped(std::string_view text);

/// "<p>TEXT</p>", and other names in the place of "p". The content is HTML already.
std::string Element(std::string_view name, const std::string& content);

/// A text that is typed somewhere.
std::string Code(std::string_view text);

/// Lines to copy into a shell.
std::string Command(std::string_view lines);

/// A picture that is fetched when it comes into view. The other text is for those who don't see it.
std::string Picture(const Root& root, std::string_view name, const std::string& instead);

/// An animation, which is a still picture, NAME-still, for those who don't want things to move.
std::string MovingPicture(const Root& root, const std::string& name, const std::string& instead);

/// Header and rows of cells, each of HTML. Wide ones scroll by themselves.
std::string Table(const std::vector<std::string>& header, const std::vector<std::vector<std::string>>& rows);

/// A whole page. The title is plain text, the content HTML.
std::string WholePage(const Root& root, const std::string& title, const std::string& content);

} // namespace aveffect::manual
