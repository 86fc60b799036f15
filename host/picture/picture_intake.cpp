#include "host/picture/picture_intake.h"

#include <utility>

namespace aveffect {

using mediabridge::AVFramePtr;

IntakeTerms::IntakeTerms(bool sdr, Reporter& reporter)
    : m_sdr(sdr)
    , m_reporter(reporter) {
    if (sdr) ToneMapper::Require();
}

void IntakeTerms::SayReduced(int depth, const std::string& before, const std::string& after) {
    if (!m_saidReduced.exchange(true))
        m_reporter.Warn(before + "the pictures' " + std::to_string(depth) +
                        " bits are brought to 8 with dithering" + after);
}

void IntakeTerms::SayMapped() {
    if (!m_saidMapped.exchange(true))
        m_reporter.Warn("pictures in PQ or HLG are brought to the standard dynamic range of the others");
}

void IntakeTerms::SayChanged(int width, int height, const AVFrame& picture) {
    const auto text = [](int w, int h) { return std::to_string(w) + "x" + std::to_string(h); };
    if (!m_saidChanged.exchange(true))
        m_reporter.Warn("pictures change from " + text(width, height) + " to " +
                        text(picture.width, picture.height) + "; they are scaled to the first size");
}

void IntakeTerms::Conclude() {
    if (m_sdr && !m_mapped) m_reporter.Note("--sdr changes nothing: no picture is in PQ or HLG");
}

AVFramePtr PictureIntake::Map(AVFramePtr picture, bool standard) {
    const bool asked = m_terms && m_terms->Sdr();
    if (!IsHighDynamicRange(*picture) || !(asked || (standard && ToneMapper::Exists()))) return picture;
    if (asked) m_terms->NoteMapped();
    if (!asked && m_terms) m_terms->SayMapped();
    return m_toSdr.Apply(std::move(picture));
}

AVFramePtr PictureIntake::Reduce(AVFramePtr picture) {
    const int depth = BitDepth(static_cast<AVPixelFormat>(picture->format));
    if (depth > 8 && m_terms) m_terms->SayReduced(depth);
    return m_toEightBits.Apply(std::move(picture));
}

} // namespace aveffect
