#include "host/effects/strength.h"

#include "host/support/error.h"

namespace aveffect {

using AVBased::IRawVideoFrame;

namespace {

Area ToArea(const AreaShape& shape) {
    const bool ellipse = shape.kind == AreaShape::Kind::Ellipse;
    return {ellipse ? Area::Shape::Ellipse : Area::Shape::Rectangle, shape.left / 100, shape.top / 100,
            shape.width / 100, shape.height / 100};
}

} // namespace

FramePtr CopyOf(IRawVideoFrame& frame) {
    FramePtr copy(frame.Clone());
    if (!copy) throw NoMemory("no memory for a picture");
    return copy;
}

Strength::Strength(const SettingsAtTime& settings)
    : m_settings(settings) {}

bool Strength::HasPlace() const { return !m_settings.Mask().empty() || m_settings.Area(); }

// A feather in percent is known once the picture is.
MaskFile& Strength::File() {
    if (!m_file)
        m_file = std::make_unique<MaskFile>(m_settings.Mask(), m_settings.MaskInverted(),
                                            m_settings.FeatherAt(0), nullptr);
    return *m_file;
}

bool Strength::Begin(IRawVideoFrame& frame, int ms) {
    m_strength = m_settings.StrengthAt(ms);
    m_before.reset();
    if (m_strength <= 0) return false;
    if (m_strength < 1 || HasPlace()) m_before = CopyOf(frame);
    return true;
}

const AVFrame& Strength::MaskAt(int ms, int width, int height) {
    if (!m_settings.Mask().empty()) return File().At(ms - m_settings.Span().beginMs, width, height);
    return m_area.Draw(ToArea(m_settings.Area()->At(ms)), m_settings.FeatherAt(ms), m_settings.MaskInverted(),
                       width, height);
}

void Strength::End(IRawVideoFrame& frame, int ms) {
    if (!m_before) return;
    bool blended = false;
    if (HasPlace()) {
        unsigned width = 0, height = 0;
        frame.GetDimension(&width, &height);
        blended = m_blend.Mask(frame, *m_before,
                               MaskAt(ms, static_cast<int>(width), static_cast<int>(height)), m_strength);
    } else {
        blended = m_blend.Mix(frame, *m_before, m_strength);
    }
    m_before.reset();
    if (!blended) throw Error(ErrorKind::Effect, "a picture can't be blended with what an effect made of it");
}

} // namespace aveffect
