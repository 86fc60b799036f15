#include "timeline/playout/tempo_sound.h"

#include <string>

#include "host/settings/value_text.h"

namespace aveffect {

namespace {

/// One step of the filter takes this much.
constexpr double kSlowest = 0.5, kFastest = 100;

std::string WordsFor(AVRational speed) {
    double rest = av_q2d(speed);
    std::string words;
    const auto step = [&](double factor) {
        words += "atempo=" + NumberText(factor) + ",";
        rest /= factor;
    };
    while (rest < kSlowest) step(kSlowest);
    while (rest > kFastest) step(kFastest);
    return words + "atempo=" + NumberText(rest);
}

} // namespace

TempoSound::TempoSound(SampleSource& before, AVRational speed, const SoundShape& shape)
    : MadeSound(shape, kFilmSamples)
    , m_before(before)
    , m_filter(WordsFor(speed), "played at another speed", shape) {}

void TempoSound::Make(int64_t) {
    constexpr int kAtOnce = 1024;
    if (const auto sound = m_filter.Take()) return m_ready.Push(*sound);
    const auto sound = Take(m_before, kAtOnce);
    sound->pts = m_taken;
    m_taken += kAtOnce;
    m_filter.Give(*sound);
}

} // namespace aveffect
