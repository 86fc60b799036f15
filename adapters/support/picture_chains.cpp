#include "adapters/support/picture_chains.h"

#include <utility>

namespace aveffect::adapters {

namespace {

constexpr size_t kIdleChains = 16; // at most: as many threads work at a time

} // namespace

void PictureChains::Draw(const Plugin& plugin, const std::string& effect, std::optional<int64_t> lengthMs,
                         const HostPicture& picture, int timeMs) {
    // The process has one generator, which settings seed too.
    static std::mutex drawing;
    std::unique_lock drawn(drawing, std::defer_lock);
    if (m_effect.traits & AVBased::kDrawsRandom) drawn.lock();
    Terms terms{effect, lengthMs, picture.format, picture.width, picture.height};
    // What an effect does on its first frame alone belongs to the first picture.
    ChainPtr chain = timeMs > 0 ? Take(terms) : nullptr;
    if (!chain)
        chain = std::make_unique<EffectChain>(plugin, nullptr, std::vector{ParseEffect(effect, false)},
                                              TimeSpan{0, lengthMs});
    AVBased::MemoryFrame frame = picture.Frame();
    chain->Process(&frame, timeMs);
    Keep(std::move(terms), std::move(chain));
}

PictureChains::ChainPtr PictureChains::Take(const Terms& terms) {
    const std::scoped_lock lock(m_mutex);
    if (m_idle.empty() || terms != m_terms) return nullptr;
    ChainPtr chain = std::move(m_idle.back());
    m_idle.pop_back();
    return chain;
}

// Settings that were left don't come back as a rule, and maps take memory.
void PictureChains::Keep(Terms terms, ChainPtr chain) {
    const std::scoped_lock lock(m_mutex);
    if (terms != m_terms) m_idle.clear();
    m_terms = std::move(terms);
    if (m_idle.size() < kIdleChains) m_idle.push_back(std::move(chain));
}

} // namespace aveffect::adapters
