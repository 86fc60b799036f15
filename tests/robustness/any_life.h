#pragma once
/// Any life of a processor that a host could give it, as a run of bytes decides it: the level of the
/// processor, the files that it may read, then for each frame its settings, shape, time and samples. A sweep
/// brings random bytes, a fuzzer its own. What it asks: no crash, no endless call, no byte touched outside
/// the frame, the copy made from the frame as it was, the same bytes at every level, and nothing left behind.
///
/// Most low numbers are taken as they are, so that inputs can be written and read by people; high ones choose
/// what is awkward.
#include <optional>
#include <sstream>

#include "aveffect/catalogue.h"
#include "tests/robustness/trial.h"
#include "tests/support/contract_stops.h"
#include "tests/support/input_bytes.h"

namespace test {

/// Every format of the frame table, those that effects serve more often, and two that nobody knows.
inline unsigned TakeFormat(InputBytes& input) {
    const unsigned choice = input.Take<uint8_t>();
    if (choice % 2) return AVBased::kEffectFormats[choice / 2 % AVBased::kEffectFormats.size()];
    if (choice >= 252) return choice == 252 ? 17 : 4000000000u;
    unsigned format = choice / 2 % (AVBased::XYZ12LE + 1);
    while (mediabridge::TablePlaneCount(format) == 0) ++format;
    return format;
}

inline unsigned TakeSize(InputBytes& input, unsigned most) {
    static constexpr unsigned kAwkward[] = {1, 2, 3, 4, 5, 6, 7, 8, 15, 16, 17, 31, 32, 33, 47, 63, 64, 65};
    const unsigned choice = input.Take<uint16_t>();
    if (choice >= 0xFC00) return 257 + choice % 775;
    return choice >= 0x4000 ? kAwkward[choice % std::size(kAwkward)] : 1 + choice % most;
}

/// Either way up, cropped or not, at any address, with any pitch.
inline std::unique_ptr<HostFrame> TakePicture(InputBytes& input) {
    // Braces, for they are taken in this order.
    Shape shape{TakeFormat(input), TakeSize(input, 80), TakeSize(input, 50)};
    const unsigned stored = input.Take<uint8_t>(), loose = input.Take<uint8_t>();
    shape.bottomUp = stored % 4 == 0;
    shape.flush = stored & 4 ? Flush::Start : Flush::End;
    shape.tight = stored & 0x40;
    shape.roundUp = loose & 1;
    const bool overlaps = (stored >> 3 & 7) == 7, isWide = loose & 2;
    shape.extraPitch = overlaps ? Shape::kOverlapping : (isWide ? shape.width : 0) + (loose >> 2 & 7);
    shape.offset = loose >> 5 & 3;
    auto picture = std::make_unique<HostFrame>(shape);
    if (loose & 0x80) {
        const unsigned right = input.TakeWithin(0, 9), bottom = input.TakeWithin(0, 9);
        picture->CropRightAndBottom(right, bottom);
    }
    for (auto& plane : picture->planes) input.Spread(plane.bytes.data(), plane.bytes.size());
    return picture;
}

/// Rates that there are, and now and then one that nothing can play, or, if not from a file, a rare one:
/// filters from those to usual ones are so large that making them takes minutes.
inline unsigned TakeRate(InputBytes& input, bool inFile) {
    static constexpr unsigned kEdges[] = {0, 1, 199, 200, 201, 768000, 858993460, 2147483647};
    const unsigned choice = input.Take<uint8_t>();
    if (choice % 16 == 0) return input.Take<uint32_t>() | 0x80000000;
    if (choice % 16 == 1 && !inFile) return kEdges[choice / 16 % std::size(kEdges)];
    return input.TakeWithin(0, 0xFFFF) * (1 + choice % 3);
}

/// Buffers are as large as they say, whatever else the sound says of itself.
inline std::unique_ptr<HostSound> TakeSound(InputBytes& input, bool inFile = false) {
    const unsigned flags = input.Take<uint8_t>(), format = input.Take<uint16_t>();
    const bool plain = format >= 0x8000; // as "audio_volume" wants it
    SoundShape shape;
    shape.format = plain ? int{AVBased::sfSigned16} : static_cast<int>(format % 12);
    shape.rate = TakeRate(input, inFile);
    shape.channels = static_cast<int>(input.TakeWithin(0, 9)) + (flags & 1 ? 58 : -1);
    shape.interleaved = plain || flags & 2;
    shape.littleEndian = flags & 4;
    // Not much longer than a quarter of a second: lower rates would make many samples of few.
    shape.samples = input.TakeWithin(0, std::min(3000u, shape.rate / 4 + 1));
    const auto time = input.Take<uint32_t>();
    size_t bytes = HostSound::BytesOf(shape);
    if (flags & 8) bytes -= std::min<size_t>(bytes, input.Take<uint8_t>());
    if (flags & 16) bytes += input.TakeWithin(0, 999);
    auto sound = std::make_unique<HostSound>(shape, bytes, time < 0x80000000 ? time : time % 200);
    if (flags & 32) sound->buffers.resize(input.Take<uint8_t>());
    sound->hasBuffers = flags < 0xF0;
    for (auto& buffer : sound->buffers) input.Spread(buffer.data(), buffer.size());
    return sound;
}

/// What a property may be set to: far beyond its range, at its ends, inside, or no number at all.
inline std::string TakeText(const AVBased::PropertyInfo& property, InputBytes& input) {
    static const std::vector<std::string> odd = [] {
        std::istringstream words(
            "0 1 -1 2 -2 15 255 256 32767 -32768 65535 65536 2147483647 -2147483648 4294967295 "
            "9223372036854775807 -9223372036854775808 1.7976931348623157e308 -1.7976931348623157e308 5e-324 "
            "-0.0 0.5 nan inf -inf none 0x20");
        std::vector<std::string> all = {"", {"7\0 9", 4}};
        for (std::string word; words >> word;) all.push_back(word);
        return all;
    }();
    static constexpr const char* kPaths[] = {"a", "b", "sound", "broken", "missing", "a?vstreamid=1"};
    const auto number = [&](double x) {
        return property.type == AVBased::kDouble ? std::to_string(x)
                                                 : std::to_string(static_cast<long long>(x));
    };
    const unsigned choice = input.Take<uint8_t>();
    if (property.kind == AVBased::ValueKind::Path && choice % 8) return kPaths[choice % std::size(kPaths)];
    if (choice >= 252) return (choice % 2 ? "9" : "7x") + std::string(70000, '9');
    switch (choice % 4) {
    case 0:
        return odd[input.Take<uint8_t>() % odd.size()];
    case 1:
        return number(choice & 4 ? property.minimum : property.maximum);
    case 2: {
        const double share = input.Take<uint32_t>() / 4294967295.0;
        return number(property.minimum + share * (property.maximum - property.minimum));
    }
    default: // as large as the pictures are
        return number(static_cast<int>(input.TakeWithin(0, 75)) - 5);
    }
}

/// Keeps away from what is stated to stop the program, and from what works as long as its number is large.
inline std::string Tame(std::string_view property, std::string text) {
    const bool countsPasses = property == "blur_count" || property == "sharpen_count";
    if (countsPasses && (std::atoi(text.c_str()) & 0xFFFF) > 50) return "50";
    if (property == "render_3d_mode") return std::to_string(std::atoi(text.c_str()) & 7);
    return text;
}

/// A few properties, "duration" included, to any text, each "index, line"; or most of them to awkward ones.
template <class Set>
void TakeSettings(const AVBased::EffectInfo& effect, InputBytes& input, Set set) {
    const unsigned count = input.Take<uint8_t>();
    if (count < 64) {
        for (unsigned settings = count % 8; settings; --settings) {
            const unsigned index = input.Take<uint8_t>();
            set(index < effect.properties.size() ? effect.properties[index] : AVBased::kDurationProperty,
                input.TakeLine());
        }
        return;
    }
    if (count % 2) set(AVBased::kDurationProperty, TakeText(AVBased::kDurationProperty, input));
    for (const AVBased::PropertyInfo& property : effect.properties)
        if (input.Take<uint8_t>() % 4) set(property, TakeText(property, input));
}

/// What a processor gets to do at once.
template <class Media>
struct Step {
    std::unique_ptr<Media> media = {}, second = {};
    int time = 0;
    bool inPlace = false;
    std::optional<int64_t> seek = {};
};

inline void Take(Step<HostFrame>& step, const AVBased::EffectInfo& effect, InputBytes& input) {
    static constexpr int kTimes[] = {0, 1, 50, 99, 100, 2147483647};
    const auto time = input.Take<int32_t>();
    step.inPlace = time & 1;
    step.time = time >= 0x40000000    ? kTimes[static_cast<unsigned>(time) / 2 % std::size(kTimes)]
                : time <= -0x40000000 ? time / 2 & 127
                                      : time;
    step.media = TakePicture(input);
    if (effect.kind == AVBased::EffectKind::Stereo && input.Take<uint8_t>() % 2) {
        step.second = TakePicture(input);
        step.media->subset = step.second.get();
    }
}
inline void Take(Step<HostSound>& step, const AVBased::EffectInfo&, InputBytes& input) {
    const unsigned how = input.Take<uint8_t>();
    step.inPlace = how & 1;
    if (how & 2) step.seek = input.Take<int64_t>();
    step.media = TakeSound(input);
}

/// The files: two pictures for transitions, a few sounds for whatever path audio effects ask for.
inline std::vector<std::unique_ptr<HostFrame>> TakeFiles(const AVBased::EffectInfo& effect,
                                                         HostManager& manager, InputBytes& input) {
    std::vector<std::unique_ptr<HostFrame>> pictures;
    if (effect.kind == AVBased::EffectKind::Audio) {
        const unsigned duration = input.Take<uint16_t>();
        std::vector<std::unique_ptr<HostSound>> sounds;
        for (unsigned items = input.Take<uint8_t>() % 5; items; --items)
            sounds.push_back(input.Take<uint8_t>() % 8 ? TakeSound(input, true) : nullptr);
        manager.sources[""] = Playing(std::move(sounds), duration);
        return pictures;
    }
    if (effect.kind == AVBased::EffectKind::Transition) {
        for (const char* name : {"a", "b"}) {
            pictures.push_back(TakePicture(input));
            pictures.back()->fromSource = true;
            manager.sources[name] = {.picture = pictures.back().get(),
                                     .soundsBefore = input.Take<uint8_t>() % 40};
        }
    }
    manager.sources["sound"] = {};
    manager.sources["broken"] = {.throwsOnRead = true};
    return pictures;
}

inline void Seek(AVBased::IVideoProc&, int64_t) {}
inline void Seek(AVBased::IAudioProc& proc, int64_t time) { proc.Seek(time); }

/// Makes the processors by make(manager, name). What was found, "" where nothing was.
template <class Media, class Make>
std::string Live(const AVBased::EffectInfo& effect, InputBytes& input, Make make) {
    static constexpr unsigned kMasks[] = {~0u, 0x7, 0x1FF, 0x3FF, ~0u, 0x7, 0x1FF, 0x6};
    const unsigned mask = kMasks[input.Take<uint8_t>() % std::size(kMasks)];
    HostManager manager;
    const auto files = TakeFiles(effect, manager, input);
    {
        Trial<Media> trial([&] { return make(&manager, effect.name); }, mask);
        std::string settings;
        const auto set = [&](const AVBased::PropertyInfo& property, const std::string& text) {
            const std::string value = Tame(property.name, text);
            settings += " " + std::string(property.name) + "=" + value.substr(0, 30);
            underWay = std::string(effect.name) + ", setting" + settings;
            trial.Both([&](auto& proc) { proc.SetProperty(property.name, value.c_str()); });
        };
        if (!files.empty() && input.Take<uint8_t>() % 8)
            for (size_t i = 0; i < 2; ++i) set(effect.properties[i], i ? "b" : "a");
        for (int frames = 0; frames < 4; ++frames) {
            TakeSettings(effect, input, set);
            Step<Media> step;
            Take(step, effect, input);
            if (step.seek) trial.Both([&](auto& proc) { Seek(proc, *step.seek); });
            underWay = std::string(effect.name) + (step.inPlace ? ", in place, " : ", copied, ") +
                       Describe(step.media->shape) + ", mask " + std::to_string(mask) + ":" + settings;
            if (StopsByContract(effect, trial.Proc(), *step.media)) continue;
            // Where there is no MMX, some effects have other results by definition.
            const bool comparable = !(effect.traits & AVBased::kDrawsRandom) && mask & AVBased::kCpuMMX;
            std::string finding = trial.Run(*step.media, step.time, step.inPlace, comparable);
            if (!finding.empty()) return finding;
        }
    }
    return manager.readers ? "readers are left behind" : "";
}

} // namespace test
