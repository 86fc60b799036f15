#pragma once
/// A clip's pictures on their way from the decoder to an output.
#include <memory>
#include <vector>

#include "host/jobs/picture_line.h"
#include "host/media/source.h"

namespace aveffect {

/// Which thread makes a picture, and which picture it is; both count from 0.
struct LinePlace {
    unsigned worker = 0;
    int64_t number = 0;
};

/// Several lines of the same settings, one for each of the threads that make pictures side by side. The bytes
/// are those of one line.
class PicturePipeline {
public:
    /// Makes the effects, for such a clip. All arguments but clip and number outlive the pipeline. Throws
    /// Error (Effect, Usage, Interrupted).
    PicturePipeline(const Plugin& plugin, const PictureTask& task, const Source& source, const TimeSpan& clip,
                    const OutputPlan& plan, Reporter& reporter, const std::atomic<bool>& cancel,
                    unsigned workers = 1);

    /// Where in the clip the pictures' times count from, 0 if it is not said. Before the first picture.
    void BeginAt(const Moment& start) { m_setup.times.start = start; }

    /// Refuses what the effects name and can't be read as pictures. Throws Error.
    void RequireMedia();

    /// A picture as the encoder takes it; pts and pkt_duration are in the source's base, or in ticks of the
    /// rate, from the span's start. The second picture is the other view's, where there is one. The first
    /// picture, whose place is the first of each, decides for all and is made before any other; then each
    /// worker is used by one thread at a time. Throws Error.
    mediabridge::AVFramePtr Make(mediabridge::AVFramePtr picture, const AVFrame* second,
                                 const LinePlace& place = {});

    /// Of a picture on its way, at its largest. After the first one.
    size_t BytesOnTheWay() const { return m_lines.front()->BytesOnTheWay(); }

    /// Ends the waiting of pictures for each other, which Make() then throws of. From any thread.
    void Stop() { m_lines.front()->Stop(); }

    /// Says in the end what is said once for all pictures.
    void Conclude();

    /// What effects read files through.
    MediaManager& Media() noexcept { return m_media; }
    const EffectTimes& Times() const noexcept { return m_setup.times; }
    /// Whether the first picture was turned.
    bool Turned() const noexcept { return m_lines.front()->Turned(); }
    /// How the pictures hold two views, where effects made them so.
    std::optional<Presentation> Views() const;

private:
    PictureLine& LineOf(unsigned worker);

    IntakeTerms m_terms;
    MediaManager m_media;
    LineSetup m_setup;
    std::vector<std::unique_ptr<PictureLine>> m_lines; ///< by workers; further ones once they are needed
    mediabridge::AVFramePtr m_sample, m_secondSample; ///< the first picture, where there may be further lines
};

} // namespace aveffect
