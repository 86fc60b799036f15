#pragma once
/// Pages as man shows them (the macros of man(7)).
#include <string>
#include <string_view>

namespace aveffect::documents {

/// What stands in all pages.
struct Edition {
    std::string version;
    std::string date; ///< YYYY-MM-DD
};

/// Inline words, to stand in texts. The arguments are plain.
std::string Bold(std::string_view text);
std::string Italic(std::string_view text);
/// Plain words whose special characters are to stand for themselves.
std::string Plain(std::string_view text);

/// Texts that the functions take are made of the three above.
class ManPage {
public:
    /// name: "aveffect-render"; section: 1 or 7; summary: plain.
    ManPage(const std::string& name, int section, const Edition& edition, std::string_view summary);

    void Section(std::string_view plain);
    void Subsection(std::string_view plain);
    /// A paragraph with a line for each sentence, broken where it is long.
    void Paragraph(const std::string& text);
    /// A tag with a text beside or below it.
    void Item(const std::string& tag, const std::string& text);
    /// A further paragraph of the item before.
    void More(const std::string& text);
    /// Plain lines as they are, indented.
    void Lines(std::string_view plain);

    const std::string& Text() const { return m_text; }

private:
    void Macro(std::string_view name, std::string_view plain);
    void Part(); ///< begins a paragraph
    void Fill(const std::string& text);

    std::string m_text;
};

} // namespace aveffect::documents
