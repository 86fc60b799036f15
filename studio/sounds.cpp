#include "studio/sounds.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "host/jobs/playback.h"

namespace aveffect {

namespace {

constexpr int kBlock = Playback::kSoundRate / 200; // frames that become one pair at first

using Peak = std::pair<int16_t, int16_t>;

/// Pairs of blocks, whatever pieces the sound comes in.
class Blocks {
public:
    void Add(const AVFrame& sound) {
        const auto* samples = reinterpret_cast<const int16_t*>(sound.data[0]);
        for (int frame = 0; frame < sound.nb_samples; ++frame) {
            for (int channel = 0; channel < 2; ++channel) {
                const int16_t sample = samples[2 * frame + channel];
                m_peak = {std::min(m_peak.first, sample), std::max(m_peak.second, sample)};
            }
            if (++m_filled == kBlock) End();
        }
    }
    void End() {
        if (m_filled > 0) m_peaks.push_back(m_peak);
        m_peak = kNone;
        m_filled = 0;
    }
    const std::vector<Peak>& Peaks() const noexcept { return m_peaks; }

private:
    static constexpr Peak kNone{std::numeric_limits<int16_t>::max(), std::numeric_limits<int16_t>::min()};
    std::vector<Peak> m_peaks;
    Peak m_peak = kNone;
    int m_filled = 0;
};

} // namespace

std::vector<std::pair<float, float>> FindPeaks(const Plugin& plugin, const RenderOptions& options,
                                               int columns, const std::atomic<bool>& cancel) {
    constexpr int64_t kTenDays = 864'000'000;
    constexpr float kFull = 32768;
    const RenderObserver nobody;
    Reporter reporter(nobody);
    Playback playback(plugin, options, 0, reporter, cancel);
    std::vector<std::pair<float, float>> peaks;
    if (!playback.HasSound()) return peaks;
    Blocks blocks;
    while (const mediabridge::AVFramePtr sound = playback.NextSound(kTenDays)) blocks.Add(*sound);
    blocks.End();
    const std::vector<Peak>& all = blocks.Peaks();
    const size_t count = std::min(static_cast<size_t>(columns), all.size());
    for (size_t column = 0; column < count; ++column) {
        const auto begin = all.begin() + static_cast<ptrdiff_t>(column * all.size() / count);
        const auto end = all.begin() + static_cast<ptrdiff_t>((column + 1) * all.size() / count);
        const int16_t low = std::ranges::min_element(begin, end, {}, &Peak::first)->first;
        const int16_t high = std::ranges::max_element(begin, end, {}, &Peak::second)->second;
        peaks.emplace_back(static_cast<float>(low) / kFull, static_cast<float>(high) / kFull);
    }
    return peaks;
}

} // namespace aveffect
