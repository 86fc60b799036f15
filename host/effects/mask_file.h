#pragma once
/// Masks from files: where in a picture an effect works, drawn by somebody else.
#include <atomic>
#include <optional>
#include <string>
#include <utility>

#include "host/media/upright_clip.h"
#include "host/picture/picture_filter.h"
#include "mediabridge/scaler.h"

namespace aveffect {

/// A picture or clip as a mask: its alpha where that is not full throughout, else how bright it is, in full
/// range. Used by one thread at a time.
class MaskFile {
public:
    /// Opens a source URL. Feather blurs the mask, as much as a border that rises evenly over so many pixels,
    /// unless it is less than 4 wide or high. The flag, which may be null, ends all waiting and outlives the
    /// mask. Throws Error (Input, Interrupted), which names the file, as all that follow.
    MaskFile(const std::string& url, bool inverted, double featherPixels, const std::atomic<bool>* cancel);

    /// The picture that is shown at a time from the clip's start, in grey of that size; the first one before
    /// it has begun, and the last one for as long as it takes. It stays as it is till the next call. Times
    /// may fall, which opens the clip again. Throws Error (Input, Interrupted).
    const AVFrame& At(int64_t milliseconds, int width, int height);

private:
    void Open();
    bool Begins(const AVFrame& picture, int64_t milliseconds) const;
    mediabridge::AVFramePtr Grey(int width, int height);

    SourceRequest m_request;
    bool m_inverted;
    double m_feather; ///< pixels
    const std::atomic<bool>& m_cancel;
    std::optional<UprightClip> m_clip;
    mediabridge::AVFramePtr m_shown, m_next; ///< null: nothing read yet, nothing follows
    mediabridge::AVFramePtr m_mask;          ///< of the picture that is shown
    PictureFilter m_alpha{"alphaextract", "taken for their transparency"};
    std::optional<PictureFilter> m_finish; ///< what is done to the mask at last
    std::optional<mediabridge::Scaler> m_scaler;
    std::pair<int, int> m_size; ///< that the scaler makes
    int64_t m_time = 0;         ///< that was asked for last
};

} // namespace aveffect
