#include "timeline/jobs/film_words.h"

#include <array>
#include <cinttypes>
#include <cstdio>
#include <sstream>

#include "host/settings/catalogue_lookup.h"
#include "host/settings/value_text.h"

namespace aveffect {

namespace {

using Kind = FilmItem::Kind;

std::string Quoted(const std::string& name) { return name.empty() ? "" : " \"" + name + "\""; }

std::string ValueOf(const AVBased::EffectInfo& info, const PropertySetting& setting) {
    if (setting.keyframes) return setting.keyframes->text;
    if (setting.percentage) return NumberText(*setting.percentage) + "%";
    const AVBased::PropertyInfo* const property = AVBased::FindProperty(info, setting.name);
    return property ? SpokenValue(*property, setting.value) : setting.value;
}

std::string SecondsText(const FilmTime& time) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.4g s", time.Seconds());
    return text.data();
}

std::string RateText(AVRational rate) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.5g", av_q2d(rate));
    return text.data();
}

/// As a terminal shows it: bytes that continue a character take no room.
size_t ColumnsOf(const std::string& word) {
    size_t columns = 0;
    for (const char letter : word)
        if ((static_cast<unsigned char>(letter) & 0xC0U) != 0x80U) ++columns;
    return columns;
}

/// Names may hold what terminals would obey.
bool IsControl(char letter) {
    const auto code = static_cast<unsigned char>(letter);
    return code < 0x20 || code == 0x7f;
}

class FilmWriter {
public:
    std::string Write(const Film& film) {
        Line(0, SummaryText(film));
        WriteEffects(film.stack, 0);
        for (const FilmItem& track : film.stack.children) WriteItem(track, {}, 0);
        return m_text;
    }

private:
    static constexpr size_t kColumns = 80, kIndent = 2, kHanging = 4;

    /// Wrapped between words; what follows hangs.
    void Line(size_t depth, const std::string& text) {
        std::istringstream words(text);
        const size_t indent = kIndent * depth;
        size_t column = 0;
        for (std::string word; words >> word;) {
            const size_t columns = ColumnsOf(word);
            if (column > 0 && column + 1 + columns > kColumns) {
                m_text += "\n";
                m_text.append(indent + kHanging, ' ');
                column = indent + kHanging;
            } else if (column == 0) {
                m_text.append(indent, ' ');
                column = indent;
            } else {
                m_text += ' ';
                ++column;
            }
            for (const char letter : word) m_text += IsControl(letter) ? '?' : letter;
            column += columns;
        }
        m_text += '\n';
    }

    void WriteEffects(const FilmItem& item, size_t depth) {
        for (const FilmEffect& effect : item.effects)
            Line(depth + 1, LastStep(effect.place) + " " + EffectText(effect.spec));
    }

    static std::string Head(const FilmItem& item, const FilmTime& begin) {
        std::string text = LastStep(item.place) + " " + ClockText(begin) + " + " + ClockText(item.duration);
        text += Quoted(item.name);
        if (item.kind == Kind::Gap) text += " nothing";
        if (item.kind == Kind::Stack) text += " stack of " + Counted(item.children.size(), "item");
        if (item.kind == Kind::Track)
            text += item.carries == FilmItem::Carries::Sound ? " track of sound" : " track of pictures";
        if (item.kind == Kind::Clip) {
            const std::string media = MediaText(item.media);
            text += media.empty() ? " without media" : " " + media + " from " + ClockText(item.start);
        }
        if (item.speed.num == 0)
            text += ", held";
        else if (item.speed.num != item.speed.den)
            text += ", speed " + RateText(item.speed);
        if (!item.enabled) text += ", switched off";
        return text;
    }

    void WriteItem(const FilmItem& item, const FilmTime& begin, size_t depth) {
        Line(depth, Head(item, begin));
        WriteEffects(item, depth);
        FilmTime moment;
        size_t next = 0;
        for (size_t index = 0; index <= item.children.size(); ++index) {
            for (; next < item.transitions.size() && item.transitions[next].cut == index; ++next)
                Line(depth + 1,
                     LastStep(item.transitions[next].place) + " " + TransitionText(item.transitions[next]));
            if (index == item.children.size()) break;
            WriteItem(item.children[index], moment, depth + 1);
            if (item.kind == Kind::Track) moment = moment + item.children[index].duration;
        }
    }

    std::string m_text;
};

} // namespace

std::string ClockText(const FilmTime& time) {
    constexpr int64_t kMs = 1000, kMinute = 60 * kMs, kHour = 60 * kMinute;
    const int64_t total = time.Milliseconds(), size = total < 0 ? -total : total;
    std::array<char, 64> text{};
    if (size >= kHour)
        std::snprintf(text.data(), text.size(), "%" PRId64 ":%02" PRId64 ":%02" PRId64 ".%03" PRId64,
                      size / kHour, size % kHour / kMinute, size % kMinute / kMs, size % kMs);
    else
        std::snprintf(text.data(), text.size(), "%" PRId64 ":%02" PRId64 ".%03" PRId64, size / kMinute,
                      size % kMinute / kMs, size % kMs);
    return (total < 0 ? "-" : "") + std::string(text.data());
}

std::string Counted(size_t count, const char* one) {
    return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

std::string EffectText(const EffectSpec& effect) {
    const AVBased::EffectInfo& info = *FindNamed(effect.name);
    std::string text(info.shortName), settings;
    for (const auto* list : {&effect.properties, &effect.reach})
        for (const PropertySetting& setting : *list)
            settings.append(settings.empty() ? "" : ", ")
                .append(setting.name)
                .append("=")
                .append(ValueOf(info, setting));
    return settings.empty() ? text : text + ": " + settings;
}

std::string MediaText(const FilmMedia& media) {
    if (media.kind == FilmMedia::Kind::File) return media.url;
    if (media.kind == FilmMedia::Kind::Numbered) return media.numbered.File(media.numbered.first) + "...";
    return "";
}

std::string TransitionText(const FilmItem::Transition& transition) {
    const std::string effect = EffectText(transition.effect);
    const std::string name = transition.name == effect ? "" : Quoted(transition.name) + " ";
    return name + effect + ", " + SecondsText(transition.before) + " before the cut and " +
           SecondsText(transition.after) + " behind it";
}

std::string LastStep(const std::string& place) {
    const std::string path = place.substr(0, place.find(' '));
    const size_t point = path.rfind('.');
    return point == std::string::npos ? path : path.substr(point + 1);
}

std::string SummaryText(const Film& film) {
    std::string text = film.name.empty() ? "" : film.name + ": ";
    text += Counted(film.stack.children.size(), "track") + ", " +
            Counted(ClipsOf(film.stack).size(), "clip") + ", " + ClockText(film.stack.duration);
    if (film.wishes.width && film.wishes.height)
        text += ", " + std::to_string(*film.wishes.width) + "x" + std::to_string(*film.wishes.height);
    if (film.wishes.rate) text += ", " + RateText(*film.wishes.rate) + " pictures a second";
    return text;
}

std::string FilmText(const Film& film) { return FilmWriter().Write(film); }

} // namespace aveffect
