#include "timeline/playout/media_sound.h"

#include <utility>

#include "host/support/error.h"

namespace aveffect {

using mediabridge::AVFramePtr;
using Reading = MediaSoundFile::Reading;

namespace {

Reading ReadingOf(const AVFormatContext& input, const AVStream& sound) {
    const AVCodecDescriptor* const codec = avcodec_descriptor_get(sound.codecpar->codec_id);
    const AVRational base = sound.time_base;
    if (!CanJump(input, sound)) return Reading::FromBeginning;
    const bool lossless =
        codec && (codec->props & (AV_CODEC_PROP_LOSSLESS | AV_CODEC_PROP_LOSSY)) == AV_CODEC_PROP_LOSSLESS;
    const bool fine = int64_t{base.num} * sound.codecpar->sample_rate <= base.den;
    return lossless && fine ? Reading::Anywhere : Reading::FromClip;
}

std::optional<MediaSoundFile> Open(const std::string& url, const std::atomic<bool>& cancel) {
    MediaSoundFile file{ParseSourceUrl(url), {}};
    ReadInterrupt interrupt{&cancel, std::nullopt};
    const InputContextPtr input = OpenInput(file.source, interrupt);
    const AVStream* const pictures = FindPictures(*input, file.source);
    const AVStream* const sound = FindSound(*input, file.source, pictures);
    if (!sound || sound->codecpar->sample_rate <= 0) return std::nullopt;
    file.source.audioStream = sound->index;
    file.shape = {sound->codecpar->sample_rate, LayoutText(sound->codecpar->ch_layout)};
    file.codec = sound->codecpar->codec_id;
    file.bits = std::max(sound->codecpar->bits_per_raw_sample, sound->codecpar->bits_per_coded_sample);
    file.start = SamplesBy(StartOf(*input, pictures, sound), file.shape.rate);
    file.reading = ReadingOf(*input, *sound);
    return file;
}

int64_t FloorTo(int64_t sample, int64_t step) {
    const int64_t rest = sample % step;
    return sample - rest - (rest < 0 ? step : 0);
}

} // namespace

const MediaSoundFile* MediaSounds::Find(const FilmMedia& media) {
    if (media.kind != FilmMedia::Kind::File) return nullptr;
    auto found = m_found.find(media.url);
    if (found == m_found.end()) found = m_found.emplace(media.url, Open(media.url, m_cancel)).first;
    return found->second ? &*found->second : nullptr;
}

DamageReport MediaSounds::Damage() const {
    DamageReport all = m_damage;
    for (const DecodedSound* sound : m_open) all.Add(sound->Damage());
    return all;
}

class MediaSound::Filled : public SampleSource {
public:
    /// In the file's samples: how many come before the clip's end, after which nothing is missed.
    Filled(DecodedSound& sound, int64_t wanted, int rate, std::string missing, Reporter& reporter)
        : m_sound(sound)
        , m_wanted(wanted)
        , m_rate(rate)
        , m_missing(std::move(missing))
        , m_reporter(reporter) {}

    int64_t Available(int64_t wanted) override {
        const int64_t there = m_sound.Available(wanted);
        if (there < wanted && m_wanted - there > m_rate / kUnheard && !std::exchange(m_said, true))
            m_reporter.Warn(m_missing);
        return wanted;
    }
    AVFramePtr Pop(int64_t samples) override {
        m_wanted -= samples;
        return m_sound.Pop(samples);
    }

private:
    static constexpr int kUnheard = 10; ///< part of a second by which sound may end before pictures do

    DecodedSound& m_sound;
    int64_t m_wanted;
    int m_rate;
    std::string m_missing;
    Reporter& m_reporter;
    bool m_said = false;
};

// Where a file is read from its beginning the start is asked for too: what times say after it is counted, and
// samples before it are none.
MediaSound::MediaSound(MediaSounds& media, const MediaSoundFile& file, const MediaSoundPart& part,
                       const SoundShape& shape, const FilmItem& clip, Reporter& reporter)
    : m_media(media) {
    constexpr int kReach = 4; // part of a second, more than resamplers reach back
    const int own = file.shape.rate, rate = shape.rate;
    int64_t from = file.reading == Reading::Anywhere ? part.at : part.begin;
    if (file.reading == Reading::FromBeginning) from = std::min<int64_t>(0, from);
    if (own != rate) from = FloorTo(from - rate / kReach, ConvertedSound::Period(own, rate));
    const int64_t first = av_rescale(from, own, rate);
    SoundRequest request{file.source, {file.start + first, {1, own}}, {own, shape.layout}, kFilmSamples};
    m_decoded = std::make_unique<DecodedSound>(std::move(request), false, false, media.m_cancel);
    m_filled = std::make_unique<Filled>(*m_decoded, av_rescale(part.end, own, rate) - first, own,
                                        clip.place + ": the sound of " + file.source.path +
                                            " ends before the clip does; silence follows",
                                        reporter);
    m_last = m_filled.get();
    if (own != rate) {
        m_converted = std::make_unique<ConvertedSound>(*m_filled, kFilmSamples, own, kFilmSamples, shape);
        m_last = m_converted.get();
    }
    Skip(*m_last, part.at - from);
    m_media.m_open.insert(m_decoded.get());
}

MediaSound::~MediaSound() {
    m_media.m_open.erase(m_decoded.get());
    try {
        m_media.m_damage.Add(m_decoded->Damage());
    } catch (const std::bad_alloc&) { // then it is not told
    }
}

} // namespace aveffect
