#include "python/core/transition.h"

#include <cmath>
#include <cstring>

#include "adapters/support/bytes_alike.h"
#include "host/effects/transition_frame.h"
#include "host/settings/catalogue_lookup.h"
#include "python/core/failures.h"
#include "python/core/the_plugin.h"
#include "python/core/unlocked.h"

namespace aveffect::python {

namespace py = pybind11;

namespace {

/// The length that progress is counted in. Fades count 256 levels of it in 32 bits.
constexpr int kSpan = 1 << 20;

ArrayPicture TakeSecond(const py::object& second, const std::string& order, const ArrayPicture& first) {
    ArrayPicture picture = TakePicture(second, order, "the second picture");
    if (!picture.GoesWith(first)) throw Wrong("the two pictures of a transition must have one shape");
    return picture;
}

bool TakesAnyOrder(const std::string& name) {
    RequireTransition(name);
    return adapters::TreatsBytesAlike(RequireEffect(name).shortName);
}

} // namespace

Transition::Transition(const std::string& name, const py::object& first, const py::object& second,
                       const std::string& order)
    : m_name(name)
    , m_order(order)
    , m_first(TakePicture(first, order, "the first picture"))
    , m_anyOrder(TakesAnyOrder(name))
    , m_from(m_first, NewLike(m_first), m_anyOrder)
    , m_to(TakeSecond(second, order, m_first), NewLike(m_first), m_anyOrder) {
    m_first = NewLike(m_first); // its shapes count, not the caller's memory
}

void Transition::DrawMiddle(const adapters::HostPicture& drawn, double progress) const {
    using adapters::ShownPictures;
    ShownPictures pictures(m_from.Picture(), m_to.Picture(), nullptr);
    // A transition reads its pictures once in its life, so each moment has its own.
    const EffectSpec spec =
        TransitionSpec(RequireEffect(m_name).name, ShownPictures::kFirst, ShownPictures::kSecond, 0, kSpan);
    EffectChain chain(ThePlugin(), &pictures, {spec}, {0, kSpan});
    AVBased::MemoryFrame frame = drawn.Frame();
    chain.Process(&frame, static_cast<int>(std::lround(progress * kSpan)));
}

py::object Transition::Draw(double progress, const py::object& out) const {
    if (!(progress >= 0 && progress <= 1))
        throw Wrong("progress must be from 0 to 1, not " + std::to_string(progress));
    const ArrayPicture target = out.is_none() ? NewLike(m_first) : TakePicture(out, m_order, "out");
    if (!target.GoesWith(m_first)) throw Wrong("out must have the shape of the two pictures");
    if (!target.IsWriteable()) throw Wrong("out can only be read");
    WorkPicture work(target, target, m_anyOrder);
    {
        const Unlocked unlocked;
        const adapters::HostPicture& drawn = work.Picture();
        // What it leaves is the first picture's; at the very end some would show that again.
        const bool ended = progress == 1;
        const adapters::HostPicture& left = (ended ? m_to : m_from).Picture();
        for (size_t i = 0; i < drawn.planes.size(); ++i)
            std::memcpy(drawn.planes[i].data, left.planes[i].data,
                        size_t{drawn.planes[i].pitch} * drawn.planes[i].rows);
        if (!ended) DrawMiddle(drawn, progress);
    }
    work.Finish(false);
    return out.is_none() ? AsObject(target) : out;
}

} // namespace aveffect::python
