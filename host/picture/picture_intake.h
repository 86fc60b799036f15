#pragma once
/// What pictures from files pass on their way in, whichever part of the program reads them.
#include <atomic>
#include <optional>

#include "host/picture/bit_depth.h"
#include "host/picture/light_metadata.h"
#include "host/support/reporter.h"

namespace aveffect {

/// How all pictures of one render are taken in, and what is said of it. Safe from any thread.
class IntakeTerms {
public:
    /// sdr: PQ and HLG are brought to standard dynamic range. The reporter outlives the terms. Throws Error
    /// (Usage) when the library lacks what that takes.
    IntakeTerms(bool sdr, Reporter& reporter);

    bool Sdr() const noexcept { return m_sdr; }
    void NoteMapped() noexcept { m_mapped = true; }
    /// Says once that pictures are mapped though nobody asked for it.
    void SayMapped();
    /// Says once that pictures lose bits: "the pictures' 10 bits are brought to 8 with dithering" between
    /// what is to be said before and after.
    void SayReduced(int depth, const std::string& before = {}, const std::string& after = {});
    /// Says once that pictures have another size than the first, to which they are scaled.
    void SayChanged(int width, int height, const AVFrame& picture);
    /// Says what was asked for in vain. Call after the last picture.
    void Conclude();

private:
    bool m_sdr;
    Reporter& m_reporter;
    std::atomic<bool> m_mapped{false}, m_saidMapped{false}, m_saidReduced{false}, m_saidChanged{false};
};

/// One source's pictures. Used by one thread at a time.
class PictureIntake {
public:
    /// Without terms no range is mapped and nothing is said. They outlive the intake.
    explicit PictureIntake(IntakeTerms* terms = nullptr)
        : m_terms(terms) {}

    /// In the range that was asked for, or that the pictures which it is to be among have (standard), as far
    /// as the library can do that. Throws Error (Output).
    mediabridge::AVFramePtr Map(mediabridge::AVFramePtr picture, bool standard = false);
    /// In 8 bits, with dithering, which is said. Throws Error (Output).
    mediabridge::AVFramePtr Reduce(mediabridge::AVFramePtr picture);

private:
    IntakeTerms* m_terms;
    ToneMapper m_toSdr;
    DepthReducer m_toEightBits;
};

} // namespace aveffect
