#include "timeline/playout/converted_sound.h"

#include <numeric>

#include "host/support/av_owner.h"
#include "host/support/error.h"

namespace aveffect {

namespace {

void Require(int code) {
    if (code < 0) ThrowFailure(ErrorKind::Output, "the film's sound can't be converted", code);
}

} // namespace

ConvertedSound::ConvertedSound(SampleSource& before, AVSampleFormat from, int rate, AVSampleFormat to,
                               const SoundShape& shape)
    : MadeSound(shape, to)
    , m_before(before)
    , m_from(rate)
    , m_to(shape.rate) {
    AVChannelLayout layout = {};
    Require(av_channel_layout_from_string(&layout, shape.layout.c_str()));
    SwrContext* converter = nullptr;
    const int code = swr_alloc_set_opts2(&converter, &layout, to, m_to, &layout, from, m_from,
                                         mediabridge::kSilent, nullptr);
    av_channel_layout_uninit(&layout);
    m_converter.reset(converter);
    Require(code);
    Require(swr_init(converter));
}

int64_t ConvertedSound::Period(int from, int to) { return to / std::gcd(from, to); }

void ConvertedSound::Make(int64_t missing) {
    constexpr int64_t kAtOnce = 1 << 14;
    const int64_t wanted = std::min(missing, kAtOnce);
    const auto sound = Take(m_before, av_rescale_rnd(wanted, m_from, m_to, AV_ROUND_UP));
    const auto converted = m_ready.Empty();
    Require(swr_convert_frame(m_converter.get(), converted.get(), sound.get()));
    if (converted->nb_samples > 0) m_ready.Push(*converted);
}

} // namespace aveffect
