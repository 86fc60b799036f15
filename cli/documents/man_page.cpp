#include "cli/documents/man_page.h"

#include <algorithm>
#include <cctype>

namespace aveffect::documents {

namespace {

constexpr size_t kLineLength = 78; // bytes of the source, which people read as well

bool EndsSentence(std::string_view word) {
    return (word.size() > 1 && word.ends_with('.')) || word.ends_with('!') || word.ends_with('?');
}

} // namespace

std::string Plain(std::string_view text) {
    std::string escaped;
    for (const char letter : text) {
        switch (letter) {
        case '\\':
            escaped += "\\e";
            break;
        case '-': // not a hyphen, which can't be copied to a command line
            escaped += "\\-";
            break;
        case '\'':
            escaped += "\\(aq";
            break;
        case '`':
            escaped += "\\(ga";
            break;
        case '^':
            escaped += "\\(ha";
            break;
        case '~':
            escaped += "\\(ti";
            break;
        case '"':
            escaped += "\\(dq";
            break;
        default:
            escaped += letter;
        }
    }
    return escaped;
}

std::string Bold(std::string_view text) { return "\\fB" + Plain(text) + "\\fR"; }

std::string Italic(std::string_view text) { return "\\fI" + Plain(text) + "\\fR"; }

ManPage::ManPage(const std::string& name, int section, const Edition& edition, std::string_view summary) {
    std::string title = name;
    std::ranges::transform(title, title.begin(), [](unsigned char c) { return std::toupper(c); });
    m_text = ".TH " + title + " " + std::to_string(section) + " " + edition.date + " \"aveffect " +
             edition.version + "\" \"" + (section == 1 ? "User Commands" : "Effects") +
             // Long settings leave lines that can't be stretched to the margin.
             "\"\n.ad l\n";
    Section("Name");
    Fill(Plain(name) + " \\- " + Plain(summary));
}

void ManPage::Macro(std::string_view name, std::string_view plain) {
    m_text += "." + std::string(name) + " \"" + Plain(plain) + "\"\n";
}

void ManPage::Section(std::string_view plain) {
    std::string title(plain);
    std::ranges::transform(title, title.begin(), [](unsigned char c) { return std::toupper(c); });
    Macro("SH", title);
}

void ManPage::Subsection(std::string_view plain) { Macro("SS", plain); }

void ManPage::Part() {
    // Headings begin a paragraph themselves.
    const size_t line = m_text.rfind('\n', m_text.size() - 2) + 1;
    if (m_text.compare(line, 2, ".S") != 0) m_text += ".PP\n";
}

void ManPage::Paragraph(const std::string& text) {
    Part();
    Fill(text);
}

void ManPage::Item(const std::string& tag, const std::string& text) {
    m_text += ".TP\n" + tag + "\n";
    Fill(text);
}

void ManPage::More(const std::string& text) {
    m_text += ".IP\n";
    Fill(text);
}

void ManPage::Lines(std::string_view plain) {
    Part();
    m_text += ".RS 4\n.nf\n";
    for (size_t start = 0; start < plain.size();) {
        const size_t end = std::min(plain.find('\n', start), plain.size());
        m_text += "\\&" + Plain(plain.substr(start, end - start)) + "\n";
        start = end + 1;
    }
    m_text += ".fi\n.RE\n";
}

void ManPage::Fill(const std::string& text) {
    std::string line;
    const auto flush = [this, &line] {
        if (line.empty()) return;
        // A control line would begin so.
        m_text += (line.front() == '.' ? "\\&" : "") + line + "\n";
        line.clear();
    };
    for (size_t start = 0; start < text.size();) {
        const size_t end = std::min(text.find(' ', start), text.size());
        const std::string word = text.substr(start, end - start);
        start = end + 1;
        if (word.empty()) continue;
        if (!line.empty() && line.size() + 1 + word.size() > kLineLength) flush();
        line += (line.empty() ? "" : " ") + word;
        if (EndsSentence(word)) flush();
    }
    flush();
}

} // namespace aveffect::documents
