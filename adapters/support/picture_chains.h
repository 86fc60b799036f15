#pragma once
/// One effect on a host's pictures.
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "adapters/support/shown_pictures.h"
#include "host/effects/effect_chain.h"

namespace aveffect::adapters {

/// Chains of an effect for as many threads as draw at a time. What a picture becomes follows from it, its
/// time and the settings alone. Safe from any thread.
class PictureChains {
public:
    explicit PictureChains(const AVBased::EffectInfo& effect)
        : m_effect(effect) {}

    /// Changes the picture in place: the effect as people write it, what the whole lasts if that is known,
    /// and the picture's time in it, in milliseconds. Throws Error, std::bad_alloc.
    void Draw(const Plugin& plugin, const std::string& effect, std::optional<int64_t> lengthMs,
              const HostPicture& picture, int timeMs);

private:
    using ChainPtr = std::unique_ptr<EffectChain>;

    /// What a chain was made for.
    struct Terms {
        std::string effect;
        std::optional<int64_t> lengthMs;
        unsigned format, width, height;

        bool operator==(const Terms&) const = default;
    };

    ChainPtr Take(const Terms& terms);
    void Keep(Terms terms, ChainPtr chain);

    const AVBased::EffectInfo& m_effect;
    std::mutex m_mutex;
    Terms m_terms{}; ///< of the chains that no thread has now
    std::vector<ChainPtr> m_idle;
};

} // namespace aveffect::adapters
