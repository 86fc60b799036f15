#include "host/sound_encoder.h"

#include "host/error.h"
#include "host/log_capture.h"

namespace aveffect {
namespace {

const AVCodec& FindSoundEncoder(const OutputPlan& plan, const std::string& name) {
    const AVCodec* codec = name.empty() ? avcodec_find_encoder(plan.muxer->audio_codec)
                                        : avcodec_find_encoder_by_name(name.c_str());
    if (!codec && !name.empty())
        if (const AVCodecDescriptor* descriptor = avcodec_descriptor_get_by_name(name.c_str()))
            codec = avcodec_find_encoder(descriptor->id);
    if (!codec || codec->type != AVMEDIA_TYPE_AUDIO)
        throw Error(ErrorKind::Usage,
                    name.empty()
                        ? std::string("no encoder for ") + avcodec_get_name(plan.muxer->audio_codec) +
                              " is installed; choose another sound codec"
                        : "no sound encoder is called \"" + name +
                              "\"; aac, libopus, libvorbis, flac and pcm_s16le are usual ones");
    if (!KeepsSound(plan, codec->id))
        throw Error(ErrorKind::Usage, "." + plan.Kind() + " files can't hold " + avcodec_get_name(codec->id) +
                                          " sound; these can: " + ContainersFor(codec->id));
    return *codec;
}

/// The rate itself, else the next higher one, else the highest.
int NearestRate(const AVCodec& codec, int wanted) {
    if (!codec.supported_samplerates) return wanted;
    int higher = 0, highest = 0;
    for (const int* rate = codec.supported_samplerates; *rate; ++rate) {
        if (*rate >= wanted && (higher == 0 || *rate < higher)) higher = *rate;
        if (*rate > highest) highest = *rate;
    }
    return higher ? higher : highest;
}

/// The layout itself, else stereo, else the encoder's first.
AVChannelLayout NearestLayout(const AVCodec& codec, const std::string& wanted) {
    AVChannelLayout layout = {};
    av_channel_layout_from_string(&layout, wanted.c_str());
    if (!codec.ch_layouts) return layout;
    const AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
    const AVChannelLayout* best = codec.ch_layouts;
    for (const AVChannelLayout* known = codec.ch_layouts; known->nb_channels > 0; ++known) {
        if (av_channel_layout_compare(known, &layout) == 0) return layout;
        if (av_channel_layout_compare(known, &stereo) == 0) best = known;
    }
    return *best;
}

/// The format itself, planar or not, else the first that is no narrower, else the encoder's first.
AVSampleFormat NearestFormat(const AVCodec& codec, AVSampleFormat wanted) {
    if (!codec.sample_fmts) return wanted == AV_SAMPLE_FMT_NONE ? AV_SAMPLE_FMT_FLTP : wanted;
    if (wanted == AV_SAMPLE_FMT_NONE) return codec.sample_fmts[0];
    AVSampleFormat wide = AV_SAMPLE_FMT_NONE;
    for (const AVSampleFormat* known = codec.sample_fmts; *known != AV_SAMPLE_FMT_NONE; ++known) {
        if (av_get_packed_sample_fmt(*known) == av_get_packed_sample_fmt(wanted)) return *known;
        if (wide == AV_SAMPLE_FMT_NONE && av_get_bytes_per_sample(*known) >= av_get_bytes_per_sample(wanted))
            wide = *known;
    }
    return wide == AV_SAMPLE_FMT_NONE ? codec.sample_fmts[0] : wide;
}

} // namespace

SoundEncoder::SoundEncoder(const OutputPlan& plan, const std::string& name, const SoundShape& wanted,
                           AVSampleFormat format) {
    constexpr int64_t kBitsASecond = 96000; // a channel
    const AVCodec& codec = FindSoundEncoder(plan, name);
    m_context.reset(avcodec_alloc_context3(&codec));
    if (!m_context) throw Error(ErrorKind::Output, "out of memory");
    m_context->sample_fmt = NearestFormat(codec, format);
    m_context->sample_rate = NearestRate(codec, wanted.rate);
    m_context->ch_layout = NearestLayout(codec, wanted.layout);
    m_context->bit_rate = kBitsASecond * m_context->ch_layout.nb_channels;
    m_context->time_base = {1, m_context->sample_rate};
    if (plan.muxer->flags & AVFMT_GLOBALHEADER) m_context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    TakeLibraryError();
    const int code = avcodec_open2(m_context.get(), &codec, nullptr);
    if (code < 0) Fail("can't start", code);
}

SoundForm SoundEncoder::Form() const {
    const bool any = m_context->codec->capabilities & AV_CODEC_CAP_VARIABLE_FRAME_SIZE;
    return {{m_context->sample_rate, LayoutText(m_context->ch_layout)},
            m_context->sample_fmt,
            any ? 0 : m_context->frame_size};
}

void SoundEncoder::Send(const AVFrame* sound) {
    const int code = avcodec_send_frame(m_context.get(), sound);
    if (code < 0 && code != AVERROR_EOF) Fail("failed", code);
}

bool SoundEncoder::Receive(AVPacket* packet) {
    const int code = avcodec_receive_packet(m_context.get(), packet);
    if (code == AVERROR(EAGAIN) || code == AVERROR_EOF) return false;
    if (code < 0) Fail("failed", code);
    return true;
}

void SoundEncoder::Fail(const char* doing, int code) const {
    const std::string detail = TakeLibraryError();
    throw Error(code == AVERROR(ENOMEM) ? ErrorKind::Output : ErrorKind::Usage,
                std::string("the encoder ") + m_context->codec->name + " " + doing + ": " +
                    (detail.empty() ? AvText(code) : detail));
}

std::string UsualSoundCodec(const OutputPlan& plan, AVCodecID input) {
    for (const AVCodecID codec : {input, AV_CODEC_ID_AAC})
        if (HoldsSurely(plan, codec) && avcodec_find_encoder(codec)) return avcodec_get_name(codec);
    return {};
}

} // namespace aveffect
