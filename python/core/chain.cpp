#include "python/core/chain.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "adapters/support/bytes_alike.h"
#include "aveffect/pixel_format.h"
#include "aveffect/video_frame.h"
#include "host/settings/catalogue_lookup.h"
#include "python/core/failures.h"
#include "python/core/the_plugin.h"
#include "python/core/unlocked.h"

namespace aveffect::python {

namespace py = pybind11;

namespace {

constexpr double kMsASecond = 1000;

int MillisecondsOf(double seconds) {
    if (!(std::abs(seconds) * kMsASecond <= INT_MAX))
        throw Wrong("time must be a number of seconds, not " + std::to_string(seconds));
    return static_cast<int>(std::lround(seconds * kMsASecond));
}

/// A frame with a second view.
class LeftView final : public AVBased::MemoryFrame {
public:
    LeftView(const adapters::HostPicture& picture, AVBased::MemoryFrame* right)
        : MemoryFrame(picture.Frame())
        , m_right(right) {}
    void* GetInterface(const char* name) override {
        return name && name == std::string_view(AVBased::kSubsetFrameInterface)
                   ? static_cast<AVBased::IRawVideoFrame*>(m_right)
                   : MemoryFrame::GetInterface(name);
    }

private:
    AVBased::MemoryFrame* m_right;
};

ArrayPicture TakeTarget(const py::object& out, const std::string& order, const ArrayPicture& source) {
    ArrayPicture target = TakePicture(out, order, "out");
    if (!target.GoesWith(source)) throw Wrong("out must have the shape of the frame");
    if (!target.IsWriteable()) throw Wrong("out can only be read");
    return target;
}

} // namespace

InUse::InUse(std::atomic<bool>& flag)
    : m_flag(flag) {
    if (flag.exchange(true))
        throw std::runtime_error("two threads use one object at a time; each thread takes one of its own");
}

Chain::Chain(std::vector<std::string> effects, std::optional<int64_t> lengthMs, std::string lacksLength)
    : m_texts(std::move(effects))
    , m_lengthMs(lengthMs)
    , m_lacksLength(std::move(lacksLength)) {
    for (const std::string& text : m_texts) {
        m_effects.push_back(ParseEffect(text, false));
        const AVBased::EffectInfo& effect = RequireEffect(m_effects.back().name);
        const std::string name(effect.shortName);
        if (effect.kind == AVBased::EffectKind::Transition)
            throw Wrong(name + " is a transition between two pictures: use Transition");
        if ((effect.traits & AVBased::kFollowsTime) && !lengthMs)
            m_lacksLength = name + " follows the time: give duration, the seconds that the whole lasts";
        m_traits |= effect.traits;
        m_anyOrder =
            m_anyOrder && adapters::TreatsBytesAlike(effect.shortName) && m_effects.back().reach.empty();
    }
    const auto isStereo = [](const EffectSpec& spec) {
        return RequireEffect(spec.name).kind == AVBased::EffectKind::Stereo;
    };
    m_stereo = static_cast<size_t>(std::ranges::find_if(m_effects, isStereo) - m_effects.begin());
    if (m_lacksLength.empty()) // what is wrong is said now
        EffectChain(ThePlugin(), &m_media, m_effects, {0, m_lengthMs});
}

void Chain::Require(const ArrayPicture& picture, bool twoViews) {
    if (twoViews && m_stereo == m_effects.size())
        throw Wrong("right is the second view of a stereo effect, and there is none among the effects");
    if ((m_traits & AVBased::kFewFormats) && !picture.IsPacked() && picture.format != AVBased::YUV420P)
        throw Wrong("an effect takes pixels and planes of 4:2:0 alone");
    const Terms terms = {picture.format, picture.width, picture.height};
    const bool renewed = m_terms != terms;
    m_terms = terms;
    if (renewed || !m_chain) {
        m_before.reset();
        m_chain = std::make_unique<EffectChain>(ThePlugin(), &m_media, m_effects, TimeSpan{0, m_lengthMs});
    }
    if (!twoViews || m_before) return;
    const std::vector<EffectSpec> before(m_effects.begin(),
                                         m_effects.begin() + static_cast<ptrdiff_t>(m_stereo));
    m_before = std::make_unique<EffectChain>(ThePlugin(), &m_media, before, TimeSpan{0, m_lengthMs});
}

void Chain::Run(const adapters::HostPicture& picture, const adapters::HostPicture* right, int timeMs) {
    // The process has one generator, which settings seed too.
    static std::mutex drawing;
    std::unique_lock drawn(drawing, std::defer_lock);
    if (m_traits & AVBased::kDrawsRandom) drawn.lock();
    if (!right) {
        AVBased::MemoryFrame frame = picture.Frame();
        m_chain->Process(&frame, timeMs);
        return;
    }
    AVBased::MemoryFrame second = right->Frame();
    m_before->Process(&second, timeMs);
    LeftView frame(picture, &second);
    m_chain->Process(&frame, timeMs);
}

py::object Chain::Process(const py::object& frame, double time, const std::string& order,
                          const py::object& out, bool inplace, const py::object& right) {
    if (!m_lacksLength.empty()) throw Wrong(m_lacksLength);
    const int timeMs = MillisecondsOf(time);
    const ArrayPicture source = TakePicture(frame, order, "the frame");
    if (inplace && !out.is_none()) throw Wrong("inplace and out exclude each other");
    if (inplace && !source.IsWriteable())
        throw Wrong("the frame can only be read; leave inplace out, and a copy is made");
    const ArrayPicture target = inplace         ? source
                                : out.is_none() ? NewLike(source)
                                                : TakeTarget(out, order, source);
    std::optional<WorkPicture> second;
    if (!right.is_none()) {
        const ArrayPicture view = TakePicture(right, order, "right");
        if (!view.GoesWith(source)) throw Wrong("right must have the shape of the frame");
        second.emplace(view, NewLike(view), m_anyOrder);
    }
    const InUse inUse(m_inUse);
    WorkPicture work(source, target, m_anyOrder);
    {
        const Unlocked unlocked;
        try {
            Require(source, second.has_value());
            Run(work.Picture(), second ? &second->Picture() : nullptr, timeMs);
        } catch (...) {
            m_chain.reset(); // effects may be half prepared
            m_before.reset();
            throw;
        }
    }
    work.Finish(m_traits & AVBased::kChangesAlpha);
    return inplace ? frame : out.is_none() ? AsObject(target) : out;
}

} // namespace aveffect::python
