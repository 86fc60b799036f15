#pragma once
/// A source's way onto a canvas, for one of the threads that finish pictures.
#include <utility>

#include "host/picture/fitting.h"
#include "host/support/error.h"

namespace aveffect {

/// Fits pictures, one that stands still only once. Used by one thread at a time.
class CanvasFitting {
public:
    CanvasFitting() = default;
    explicit CanvasFitting(Fitter fitter)
        : m_fitter(std::move(fitter)) {}

    /// As Fitter has it.
    bool Fills(const AVFrame& picture) const { return m_fitter.Fills(picture); }

    /// In BGRA, as Fitter does it.
    mediabridge::AVFramePtr Fit(mediabridge::AVFramePtr picture) {
        if (!m_read || m_read->data[0] != picture->data[0]) {
            m_fitted = m_fitter.Fit(*picture);
            m_read = std::move(picture); // held, so that no other picture comes to lie there
        }
        mediabridge::AVFramePtr shown(av_frame_clone(m_fitted.get()));
        if (!shown) throw NoMemory("no memory for a picture");
        return shown;
    }
    /// As it is where it fits.
    mediabridge::AVFramePtr Show(mediabridge::AVFramePtr picture) {
        return m_fitter.Fits(*picture) ? std::move(picture) : Fit(std::move(picture));
    }

private:
    Fitter m_fitter;
    mediabridge::AVFramePtr m_read, m_fitted; ///< the picture fitted last, and what it became
};

} // namespace aveffect
