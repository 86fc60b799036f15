#include "host/effects/mask_file.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/picture/transparency.h"
#include "host/support/error.h"
#include "mediabridge/picture_blend.h"

namespace aveffect {
namespace {

const std::atomic<bool> kNeverCancelled{false};

/// libavfilter's words; empty when nothing is to be done.
std::string FinishWords(bool inverted, double featherPixels, int width, int height) {
    constexpr int kLeastSide = 4; // of less the library's blur makes nonsense, or breaks its memory
    std::string words;
    if (featherPixels > 0 && std::min(width, height) >= kLeastSide) {
        // An even ramp's deviation is its length by the root of 12. The filter blurs no further than 1024.
        const double deviation = std::min(featherPixels / std::sqrt(12.0), 1024.0);
        words = "gblur=sigma=" + std::to_string(deviation) + ":steps=3";
    }
    if (inverted) words += words.empty() ? "negate" : ",negate";
    return words;
}

} // namespace

MaskFile::MaskFile(const std::string& url, bool inverted, double featherPixels,
                   const std::atomic<bool>* cancel)
    : m_request(ParseSourceUrl(url))
    , m_inverted(inverted)
    , m_feather(featherPixels)
    , m_cancel(cancel ? *cancel : kNeverCancelled) {
    Open();
}

void MaskFile::Open() {
    m_shown.reset();
    m_next.reset();
    m_mask.reset();
    m_clip.emplace(m_request, 1, m_cancel);
}

// Callers' milliseconds may be rounded either way.
bool MaskFile::Begins(const AVFrame& picture, int64_t milliseconds) const {
    const AVRational base = m_clip->Clip().Pictures().time_base;
    return av_rescale_q_rnd(picture.pts, base, kMilliseconds, AV_ROUND_DOWN) <= milliseconds;
}

const AVFrame& MaskFile::At(int64_t milliseconds, int width, int height) {
    const bool falls = milliseconds < std::exchange(m_time, milliseconds);
    if (m_shown && falls && !Begins(*m_shown, milliseconds)) Open();
    if (!m_shown) {
        if (milliseconds > 0) m_clip->SeekBefore(milliseconds);
        m_shown = m_clip->Next();
        if (!m_shown) throw Error(ErrorKind::Input, m_request.path + " holds no picture that can be decoded");
        m_next = m_clip->Next();
    }
    while (m_next && Begins(*m_next, milliseconds)) {
        m_shown = std::exchange(m_next, m_clip->Next());
        m_mask.reset();
    }
    if (!m_mask || m_size != std::pair(width, height)) {
        m_mask = Grey(width, height);
        m_mask->pts = mediabridge::NextMaskNumber();
    }
    return *m_mask;
}

mediabridge::AVFramePtr MaskFile::Grey(int width, int height) try {
    mediabridge::AVFramePtr picture(av_frame_clone(m_shown.get()));
    if (!picture) throw NoMemory("out of memory");
    if (!IsOpaque(*picture)) {
        picture = m_alpha.Apply(std::move(picture));
        picture->color_range = AVCOL_RANGE_JPEG;
    }
    if (const std::pair size(width, height); std::exchange(m_size, size) != size) {
        m_scaler.emplace(AV_PIX_FMT_GRAY8, width, height, mediabridge::ScaleQuality::Bicubic,
                         AVCOL_RANGE_JPEG);
        const std::string finish = FinishWords(m_inverted, m_feather, width, height);
        m_finish.reset();
        if (!finish.empty()) m_finish.emplace(finish, "used as a mask");
    }
    mediabridge::AVFramePtr grey = m_scaler->Convert(picture.get());
    if (!grey) throw Error(ErrorKind::Input, m_scaler->Error());
    return m_finish ? m_finish->Apply(std::move(grey)) : std::move(grey);
} catch (const Error& error) {
    throw Error(ErrorKind::Input, m_request.path + " can't be used as a mask: " + error.what());
}

} // namespace aveffect
