#include "host/output/sound_formats.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

namespace aveffect {
namespace {

using Muxers = std::initializer_list<std::string_view>;
using Codecs = std::initializer_list<AVCodecID>;

bool IsAmong(const OutputPlan& plan, Muxers muxers) {
    return std::ranges::find(muxers, std::string_view(plan.muxer->name)) != muxers.end();
}
bool IsAmong(AVCodecID codec, Codecs codecs) { return std::ranges::find(codecs, codec) != codecs.end(); }

/// What containers hold and what they ask of it, where they don't tell the library, or tell it when it is too
/// late; files without a word on rate and channels are read with these.
struct Holding {
    Muxers muxers;
    Codecs codecs; ///< empty: of all that the container holds
    std::initializer_list<int> rates = {};
    int fewest = 1, most = 64;
};
const Holding kHoldings[] = {
    {{"mpegts"},
     {AV_CODEC_ID_MP2, AV_CODEC_ID_MP3, AV_CODEC_ID_AAC, AV_CODEC_ID_AC3, AV_CODEC_ID_EAC3, AV_CODEC_ID_DTS,
      AV_CODEC_ID_OPUS, AV_CODEC_ID_S302M}},
    {{"mpeg", "vcd", "svcd", "dvd", "vob"},
     {AV_CODEC_ID_MP2, AV_CODEC_ID_MP3, AV_CODEC_ID_AC3, AV_CODEC_ID_DTS, AV_CODEC_ID_PCM_DVD}},
    {{"ogg", "ogv", "oga"}, {AV_CODEC_ID_VORBIS, AV_CODEC_ID_OPUS, AV_CODEC_ID_FLAC, AV_CODEC_ID_SPEEX}},
    {{"mxf"}, {AV_CODEC_ID_PCM_S16LE, AV_CODEC_ID_PCM_S24LE}, {48000}},
    {{"gxf"}, {}, {48000}, 1, 1},
    {{"dv"}, {}, {48000}, 2, 2},
    {{"daud"}, {}, {96000}, 6, 6},
    {{"flv"}, {AV_CODEC_ID_PCM_ALAW, AV_CODEC_ID_PCM_MULAW}, {8000}, 1, 1},
    {{"flv"}, {AV_CODEC_ID_SPEEX}, {16000}, 1, 1},
    {{"flv"},
     {AV_CODEC_ID_MP3, AV_CODEC_ID_ADPCM_SWF, AV_CODEC_ID_PCM_U8, AV_CODEC_ID_PCM_S16LE,
      AV_CODEC_ID_PCM_S16BE},
     {11025, 22050, 44100},
     1,
     2},
    {{"swf", "avm2"}, {}, {11025, 22050, 44100}, 1, 2},
    {{"amv"}, {}, {22050}, 1, 1},
    {{"g722"}, {}, {16000}, 1, 1},
    {{"aptx", "aptx_hd"}, {}, {48000}, 2, 2},
    {{"dfpwm"}, {}, {48000}, 1, 1},
    {{"alaw", "mulaw", "s8", "u8", "s16le", "u16le"}, {}, {44100}, 1, 1},
    {{"mmf", "alp"}, {}, {8000, 11025, 22050, 44100}, 1, 2},
    {{"wsaud"}, {}, {8000, 11025, 16000, 22050, 44100, 48000}, 1, 2},
    {{"smjpeg"}, {}, {8000, 11025, 16000, 22050, 32000, 44100, 48000}}, // in 16 bits
    {{"oma"}, {}, {32000, 44100, 48000, 96000}, 1, 2},
    {{"rso"}, {}, {}, 1, 1},
    {{"voc"}, {}, {}, 1, 2},
};

/// What containers take, but refuse in the end, or what can't be read from them again.
const struct {
    Muxers muxers;
    Codecs codecs;
} kSpoiled[] = {
    {{"mov", "psp"}, {AV_CODEC_ID_OPUS, AV_CODEC_ID_FLAC, AV_CODEC_ID_TRUEHD}},
    {{"ismv"}, {AV_CODEC_ID_OPUS, AV_CODEC_ID_FLAC, AV_CODEC_ID_TRUEHD, AV_CODEC_ID_AC3, AV_CODEC_ID_EAC3}},
    {{"nut"}, {AV_CODEC_ID_FLAC, AV_CODEC_ID_WMAV1, AV_CODEC_ID_WMAV2, AV_CODEC_ID_ADPCM_G726}},
    {{"rm", "wtv"}, {AV_CODEC_ID_AAC}},
    {{"oma"}, {AV_CODEC_ID_MP3}},
};

const Holding* Find(const OutputPlan& plan, AVCodecID codec) {
    const auto* found = std::ranges::find_if(kHoldings, [&](const Holding& holding) {
        return IsAmong(plan, holding.muxers) &&
               (holding.codecs.size() == 0 || IsAmong(codec, holding.codecs));
    });
    return found == std::end(kHoldings) ? nullptr : found;
}

/// Noise between words is no sound to keep; a codec without an id of its own is only read from its own files.
bool IsSpoiled(const OutputPlan& plan, AVCodecID codec) {
    if (IsAmong(codec, {AV_CODEC_ID_COMFORT_NOISE, AV_CODEC_ID_DFPWM})) return true;
    return std::ranges::any_of(kSpoiled, [&](const auto& spoiled) {
        return IsAmong(plan, spoiled.muxers) && IsAmong(codec, spoiled.codecs);
    });
}

std::string_view NameOf(AVCodecID codec) { return avcodec_get_name(codec); }

bool IsPcm(AVCodecID codec) { return NameOf(codec).starts_with("pcm_"); }

/// Encoders that are still tried out serve only who asks for them.
const AVCodec* MatureEncoder(AVCodecID codec) {
    const AVCodec* encoder = avcodec_find_encoder(codec);
    return encoder && !(encoder->capabilities & AV_CODEC_CAP_EXPERIMENTAL) ? encoder : nullptr;
}

/// AAC is played by nearly everything, but where these files are played it is not.
bool PrefersItsOwn(const OutputPlan& plan) {
    return IsAmong(plan, {"avi", "asf", "asf_stream", "wtv", "rm"});
}

/// PCM as wide as the sound that is to be kept in it.
AVCodecID WideEnough(const OutputPlan& plan, AVCodecID usual, AVCodecID input, int bits) {
    const AVCodecDescriptor* about = avcodec_descriptor_get(input);
    if (bits <= 16 || !about || !(about->props & AV_CODEC_PROP_LOSSLESS)) return usual;
    const AVCodecID wide = usual == AV_CODEC_ID_PCM_S16LE   ? AV_CODEC_ID_PCM_S24LE
                           : usual == AV_CODEC_ID_PCM_S16BE ? AV_CODEC_ID_PCM_S24BE
                                                            : usual;
    return HoldsSound(plan, wide) ? wide : usual;
}

} // namespace

bool SoundLimits::Allow(int rate) const {
    return rates.empty() || std::ranges::find(rates, rate) != rates.end();
}

bool SoundLimits::Allow(const AVChannelLayout& layout) const {
    return layout.nb_channels >= fewest && layout.nb_channels <= most;
}

bool HoldsSound(const OutputPlan& plan, AVCodecID codec) {
    const AVCodecID usual = plan.muxer->audio_codec;
    if (usual == AV_CODEC_ID_NONE) return false;
    if (codec == usual) return true;
    if (IsSpoiled(plan, codec)) return false;
    if (const Holding* holding = Find(plan, codec); holding && holding->codecs.size() > 0) return true;
    if (plan.IsSound() && IsPcm(usual) && !IsPcm(codec)) return false;
    return avformat_query_codec(plan.muxer, codec, FF_COMPLIANCE_NORMAL) == 1;
}

SoundLimits LimitsOf(const OutputPlan& plan, AVCodecID codec) {
    const Holding* holding = Find(plan, codec);
    return holding ? SoundLimits{holding->rates, holding->fewest, holding->most} : SoundLimits{};
}

bool HoldsAsIs(const OutputPlan& plan, const AVCodecParameters& sound) {
    const SoundLimits limits = LimitsOf(plan, sound.codec_id);
    return HoldsSound(plan, sound.codec_id) && limits.Allow(sound.sample_rate) &&
           limits.Allow(sound.ch_layout);
}

// The library itself puts those that are still tried out behind the others.
const AVCodec* FindSoundEncoder(const std::string& name) {
    const AVCodecDescriptor* about = avcodec_descriptor_get_by_name(name.c_str());
    const AVCodec* encoder = about ? avcodec_find_encoder(about->id) : nullptr;
    if (!encoder) encoder = avcodec_find_encoder_by_name(name.c_str());
    return encoder && encoder->type == AVMEDIA_TYPE_AUDIO ? encoder : nullptr;
}

std::string UsualSoundCodec(const OutputPlan& plan, AVCodecID input, int bits) {
    const AVCodecID own = WideEnough(plan, plan.muxer->audio_codec, input, bits);
    const AVCodecID general = PrefersItsOwn(plan) ? own : AV_CODEC_ID_AAC;
    for (const AVCodecID codec : {input, general, own, AV_CODEC_ID_AAC})
        if (codec != AV_CODEC_ID_NONE && HoldsSound(plan, codec) && MatureEncoder(codec))
            return avcodec_get_name(codec);
    return {};
}

} // namespace aveffect
