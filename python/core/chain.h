#pragma once
/// Chains of effects on arrays.
#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <pybind11/pybind11.h>

#include "host/effects/effect_chain.h"
#include "host/media/media_manager.h"
#include "python/core/array_picture.h"
#include "python/core/work_picture.h"

namespace aveffect::python {

/// Whether an object is at work; a second thread that asks raises.
class InUse {
public:
    explicit InUse(std::atomic<bool>& flag);
    ~InUse() { m_flag = false; }
    InUse(const InUse&) = delete;
    InUse& operator=(const InUse&) = delete;

private:
    std::atomic<bool>& m_flag;
};

/// Effects that frames pass in order.
class Chain {
public:
    /// Effects as people write them. Length: of the clip, in milliseconds; absent while nobody knows, and
    /// then why it has to be known before a picture comes, if so. Throws Error (Usage).
    Chain(std::vector<std::string> effects, std::optional<int64_t> lengthMs, std::string lacksLength);

    /// Works on a picture and returns where the result is: out, the frame itself where it is in place, else
    /// new arrays. Time in seconds. Right: the second view, for stereo effects. Lets other threads of
    /// Python's run meanwhile. Throws Error, and py::error_already_set for types.
    pybind11::object Process(const pybind11::object& frame, double time, const std::string& order,
                             const pybind11::object& out, bool inplace, const pybind11::object& right);

    const std::vector<std::string>& Texts() const noexcept { return m_texts; }
    const std::optional<int64_t>& Length() const noexcept { return m_lengthMs; }

private:
    /// What chains are made for: those of one size.
    struct Terms {
        unsigned format, width, height;

        bool operator==(const Terms&) const = default;
    };

    void Require(const ArrayPicture& picture, bool twoViews);
    void Run(const adapters::HostPicture& picture, const adapters::HostPicture* right, int timeMs);

    std::vector<std::string> m_texts;
    std::optional<int64_t> m_lengthMs;
    std::string m_lacksLength; ///< why it can't work; empty where it can
    std::vector<EffectSpec> m_effects;
    unsigned m_traits = 0;  ///< AVBased::EffectTraits of all together
    bool m_anyOrder = true; ///< of a pixel's bytes
    size_t m_stereo;        ///< the first stereo effect; behind the last effect where there is none
    MediaManager m_media;
    std::optional<Terms> m_terms;
    std::unique_ptr<EffectChain> m_chain;
    std::unique_ptr<EffectChain> m_before; ///< for the right view: what stands before the stereo effect
    std::atomic<bool> m_inUse = false;
};

} // namespace aveffect::python
