#include "host/output/encoder_settings.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>
#include <vector>

extern "C" {
#include <libavutil/opt.h>
}

#include "host/settings/catalogue_lookup.h"
#include "host/settings/value_text.h"
#include "host/support/error.h"
#include "host/support/log_capture.h"

namespace aveffect {
namespace {

using mediabridge::AVCodecContextPtr;

std::string Named(const AVCodec& codec) { return std::string("the encoder ") + codec.name; }

bool IsLossless(const AVCodec& codec) {
    const AVCodecDescriptor* about = avcodec_descriptor_get(codec.id);
    return about && (about->props & AV_CODEC_PROP_LOSSLESS) && !(about->props & AV_CODEC_PROP_LOSSY);
}

const AVOption* Find(const AVClass* owner, const std::string& name) {
    return owner ? av_opt_find(static_cast<void*>(&owner), name.c_str(), nullptr, 0, AV_OPT_SEARCH_FAKE_OBJ)
                 : nullptr;
}

/// Of the encoder itself, or one that all encoders of its medium have.
const AVOption* FindOption(const AVCodec& codec, const std::string& name) {
    if (const AVOption* own = Find(codec.priv_class, name)) return own;
    const AVOption* const option = Find(avcodec_get_class(), name);
    const int medium = codec.type == AVMEDIA_TYPE_VIDEO ? AV_OPT_FLAG_VIDEO_PARAM : AV_OPT_FLAG_AUDIO_PARAM;
    const bool serves = option && (option->flags & AV_OPT_FLAG_ENCODING_PARAM) && (option->flags & medium);
    return serves ? option : nullptr;
}

/// The names nearest to one that there is not, of the encoder's own options and the usual ones; all of its
/// own where these are few.
std::string NearOptions(const AVCodec& codec, const std::string& wanted) {
    constexpr size_t kFew = 8, kGuesses = 3;
    std::vector<std::string_view> names, guesses;
    const auto collect = [&names, &codec](const AVClass* owner) {
        const AVOption* option = nullptr;
        while (owner && (option = av_opt_next(&owner, option)))
            if (option->type != AV_OPT_TYPE_CONST && FindOption(codec, option->name))
                names.emplace_back(option->name);
    };
    collect(codec.priv_class);
    const std::vector<std::string_view> own = names;
    collect(avcodec_get_class());
    while (guesses.size() < kGuesses) {
        const std::string_view nearest = NearestName(wanted, names);
        if (nearest.empty()) break;
        guesses.push_back(nearest);
        std::erase(names, nearest);
    }
    if (!guesses.empty()) return DidYouMean(guesses);
    if (own.empty()) return "b, g, qmin and qmax are usual ones";
    if (own.size() > kFew)
        return std::string("`ffmpeg -h encoder=") + codec.name + "` lists its " + std::to_string(own.size());
    std::string all;
    for (const std::string_view name : own) all += (all.empty() ? "its own are " : ", ") + std::string(name);
    return all;
}

/// "from 0 to 8", "one of fast, slow"; empty for any text.
std::string ValuesOf(const AVCodec& codec, const AVOption& wanted) {
    constexpr double kAnything = 1e30;
    std::string names;
    const AVClass* const general = avcodec_get_class();
    for (const AVClass* owner : {codec.priv_class, general}) {
        const AVOption* option = nullptr;
        while (owner && wanted.unit && (option = av_opt_next(&owner, option)))
            if (option->type == AV_OPT_TYPE_CONST && option->unit &&
                std::strcmp(option->unit, wanted.unit) == 0)
                names += (names.empty() ? "" : ", ") + std::string(option->name);
    }
    switch (wanted.type) {
    case AV_OPT_TYPE_BOOL:
        return "0 or 1";
    case AV_OPT_TYPE_FLAGS:
        return names.empty() ? "flags" : "flags of " + names;
    case AV_OPT_TYPE_INT:
    case AV_OPT_TYPE_INT64:
    case AV_OPT_TYPE_UINT64:
    case AV_OPT_TYPE_FLOAT:
    case AV_OPT_TYPE_DOUBLE:
        if (wanted.max > kAnything) return names.empty() ? "a number" : "a number, or " + names;
        return "numbers from " + NumberText(wanted.min) + " to " + NumberText(wanted.max) +
               (names.empty() ? "" : ", or " + names);
    default:
        return "another kind of text";
    }
}

int Set(AVCodecContext& context, const std::string& name, const std::string& value) {
    return av_opt_set(&context, name.c_str(), value.c_str(), AV_OPT_SEARCH_CHILDREN);
}

[[noreturn]] void RefuseOption(const AVCodec& codec, const std::string& name) {
    throw Error(ErrorKind::Usage,
                Named(codec) + " has no option \"" + name + "\"; " + NearOptions(codec, name));
}

[[noreturn]] void RefuseValue(const AVCodec& codec, const AVOption& option, const std::string& value) {
    throw Error(ErrorKind::Usage, Named(codec) + " takes for " + option.name + " " + ValuesOf(codec, option) +
                                      ", not '" + value + "'");
}

} // namespace

void CheckSettings(const AVCodec& codec, const EncoderSettings& settings) {
    const AVCodecContextPtr trial(avcodec_alloc_context3(&codec));
    if (!trial) throw NoMemory("out of memory");
    for (const auto& [name, value] : settings) {
        const AVOption* const option = FindOption(codec, name);
        if (!option) RefuseOption(codec, name);
        if (Set(*trial, name, value) < 0) RefuseValue(codec, *option, value);
        TakeLibraryError();
    }
}

void RequireBitRate(const AVCodec& codec) {
    if (IsLossless(codec))
        throw Error(ErrorKind::Usage, Named(codec) + " loses nothing and so has no bit rate to choose");
}

void RequireQuality(const AVCodec& codec) {
    const bool scaled =
        codec.id == AV_CODEC_ID_MJPEG || codec.id == AV_CODEC_ID_WEBP || codec.id == AV_CODEC_ID_AV1;
    if (!scaled)
        throw Error(ErrorKind::Usage,
                    Named(codec) + " has no quality from 1 to 100; JPEG, WebP and AVIF have" +
                        (IsLossless(codec) ? "" : ", and other encoders --crf or --bitrate"));
}

void ApplySettings(AVCodecContext& context, const EncoderSettings& settings) {
    for (const auto& [name, value] : settings) {
        std::string whole = value;
        uint8_t* before = nullptr;
        if (name.ends_with("-params") &&
            av_opt_get(&context, name.c_str(), AV_OPT_SEARCH_CHILDREN | AV_OPT_ALLOW_NULL, &before) >= 0 &&
            before && *before)
            whole = std::string(reinterpret_cast<const char*>(before)) + ":" + value;
        av_free(before);
        Set(context, name, whole);
    }
}

// JPEG has tables of divisors, which by custom are those of quality 50 times 50 / q below it and 2 - q / 50
// above; the encoder takes eighths of them. WebP has the scale itself, AV1 a factor from 0, best, to 63.
void ApplyQuality(AVCodecContext& context, int quality) {
    if (context.codec_id == AV_CODEC_ID_MJPEG) {
        constexpr double kEighths = 8;
        const double factor = quality < 50 ? 50.0 / quality : 2 - quality / 50.0;
        const int scale = std::clamp(static_cast<int>(std::lround(kEighths * factor)), 1, 31);
        context.qmin = 1;
        context.flags |= AV_CODEC_FLAG_QSCALE;
        context.global_quality = FF_QP2LAMBDA * scale;
    } else if (context.codec_id == AV_CODEC_ID_WEBP) {
        av_opt_set_double(context.priv_data, "quality", quality, 0);
    } else {
        constexpr int kWorst = 63;
        context.bit_rate = 0;
        av_opt_set_double(context.priv_data, "crf", std::round(kWorst * (100 - quality) / 100.0), 0);
    }
}

} // namespace aveffect
