#include "studio/requests.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "timeline/otio/document.h"

namespace aveffect {

using nlohmann::json;

namespace {

constexpr size_t kMostEffects = 64, kLongestEffect = 16384, kLongestText = 4096;
constexpr int kDeepest = 8;

std::string BodyText(const json& body, const char* name, size_t longest = kLongestText) {
    const auto found = body.find(name);
    if (found == body.end()) return {};
    if (!found->is_string()) Refuse(std::string(name) + " should be a text");
    auto text = found->get<std::string>();
    if (text.size() > longest)
        Refuse(std::string(name) + " is longer than " + std::to_string(longest) + " bytes");
    if (text.find('\0') != std::string::npos) Refuse(std::string(name) + " holds a zero byte");
    return text;
}

double BodyNumber(const json& body, const char* name, double otherwise) {
    const auto found = body.find(name);
    if (found == body.end()) return otherwise;
    if (!found->is_number()) Refuse(std::string(name) + " should be a number");
    return found->get<double>();
}

int BodyWhole(const json& body, const char* name, int otherwise, int most) {
    const double number = BodyNumber(body, name, otherwise);
    if (number != std::floor(number) || number < 0 || number > most)
        Refuse(std::string(name) + " is " + json(number).dump() +
               ", but should be a whole number from 0 to " + std::to_string(most));
    return static_cast<int>(number);
}

bool BodySwitch(const json& body, const char* name, bool otherwise) {
    const auto found = body.find(name);
    if (found == body.end()) return otherwise;
    if (!found->is_boolean()) Refuse(std::string(name) + " should be true or false");
    return found->get<bool>();
}

StudioEffect ReadEffect(const json& effect) {
    if (effect.is_string()) return ReadEffect({{"text", effect}});
    if (!effect.is_object()) Refuse("an effect should be a text, or an object with text and on");
    StudioEffect read{BodyText(effect, "text", kLongestEffect), BodySwitch(effect, "on", true)};
    if (read.text.empty()) Refuse("an effect has no text");
    return read;
}

std::vector<StudioEffect> ReadEffects(const json& chain, const char* name) {
    std::vector<StudioEffect> effects;
    const auto found = chain.find(name);
    if (found == chain.end()) return effects;
    if (!found->is_array() || found->size() > kMostEffects)
        Refuse(std::string(name) + " of a chain should be a list of at most " + std::to_string(kMostEffects) +
               " effects");
    for (const json& effect : *found) effects.push_back(ReadEffect(effect));
    return effects;
}

StudioChain ReadChain(const json& body) {
    const auto found = body.find("chain");
    if (found == body.end()) return {};
    if (!found->is_object()) Refuse("chain should be an object with the lists e and a");
    return {ReadEffects(*found, "e"), ReadEffects(*found, "a")};
}

/// What may be asked of an output besides its name.
constexpr std::array kOptions = {"audio-bitrate", "audio-codec", "bitrate", "codec", "crf",
                                 "fit",           "format",      "fps",     "from",  "output-format",
                                 "preset",        "quality",     "size",    "to"};

RenderWords ReadOptions(const json& body) {
    RenderWords words;
    const auto found = body.find("options");
    if (found == body.end()) return words;
    if (!found->is_object()) Refuse("options should be an object");
    for (const auto& [name, value] : found->items()) {
        if (std::ranges::find(kOptions, name) == kOptions.end()) {
            std::string known;
            for (const char* const one : kOptions) known.append(known.empty() ? "" : ", ").append(one);
            Refuse("there is no option '" + name + "' here, but " + known);
        }
        words[name] = BodyText(*found, name.c_str(), 256);
    }
    return words;
}

} // namespace

int64_t ReadMoment(double seconds) {
    constexpr double kTenDays = 864'000, kMs = 1000;
    if (!(seconds >= 0 && seconds <= kTenDays))
        Refuse("a moment is " + json(seconds).dump() + " s, but should be from 0 to 864000");
    return std::llround(seconds * kMs);
}

json ParseBody(const std::string& body) {
    const auto depth = [](int level, json::parse_event_t event, json&) {
        if (event == json::parse_event_t::object_start || event == json::parse_event_t::array_start)
            if (level > kDeepest) Refuse("what was sent is nested too deeply");
        return true;
    };
    json parsed;
    try {
        parsed = json::parse(body, depth);
    } catch (const json::exception&) {
        Refuse("what was sent is no JSON");
    }
    if (!parsed.is_object()) Refuse("what was sent is no JSON object");
    return parsed;
}

FrameWish ReadFrameWish(const json& body) {
    constexpr int kWidest = 8192;
    return {BodyText(body, "clip"), ReadMoment(BodyNumber(body, "at", 0)), ReadChain(body),
            BodyWhole(body, "width", 0, kWidest), BodyText(body, "lane", 64)};
}

SoundWish ReadSoundWish(const json& body) {
    constexpr int kMostColumns = 8192;
    constexpr int64_t kLongestMs = 30'000;
    SoundWish wish{BodyText(body, "clip"), ReadMoment(BodyNumber(body, "from", 0)),
                   ReadMoment(BodyNumber(body, "length", 10)), BodyWhole(body, "columns", 0, kMostColumns),
                   ReadChain(body)};
    if (wish.lengthMs < 1 || wish.lengthMs > kLongestMs)
        Refuse("length should be above 0 s and at most 30 s");
    return wish;
}

OutputWish ReadOutputWish(const json& body) {
    return {BodyText(body, "clip"),   ReadChain(body),   ReadMoment(BodyNumber(body, "at", 0)),
            BodyText(body, "output"), ReadOptions(body), BodySwitch(body, "overwrite", false)};
}

std::string ReadPath(const json& body) {
    std::string path = BodyText(body, "path");
    if (path.empty()) Refuse("no path is named");
    return path;
}

} // namespace aveffect
