#include "host/jobs/picture_pipeline.h"

#include <algorithm>
#include <utility>

#include "host/effects/media_check.h"
#include "host/media/span.h"
#include "host/picture/framer.h"
#include "host/picture/orientation.h"
#include "host/support/error.h"

namespace aveffect {

using mediabridge::AVFramePtr;

namespace {

// Whose word pictures are turned upright by. Null: they stay as they are, and the output hands the word on,
// which it does where it can and nothing looks at the pictures.
const AVStream* UprightBy(const Source& source, const OutputPlan& plan, bool changes, Reporter& reporter) {
    const AVStream& stream = source.Pictures();
    const int32_t* matrix = DisplayMatrix(stream);
    if (matrix && !changes && plan.CarriesRotation()) return nullptr;
    if (matrix && !TurnFilter(matrix) && !plan.CarriesRotation())
        reporter.Warn("the clip is shown at an angle, which ." + plan.Kind() +
                      " files can't say; it is lost");
    return &stream;
}

const TimeSpan& Noted(const TimeSpan& clip, Reporter& reporter) {
    if (!clip.endMs) reporter.Note("the clip does not tell its length; effects take it for one hour");
    return clip;
}

AVFramePtr Another(const AVFrame& picture) {
    AVFramePtr other(av_frame_clone(&picture));
    if (!other) throw NoMemory("no memory for a picture");
    return other;
}

} // namespace

PicturePipeline::PicturePipeline(const Plugin& plugin, const PictureTask& task, const Source& source,
                                 const TimeSpan& clip, const OutputPlan& plan, Reporter& reporter,
                                 const std::atomic<bool>& cancel, unsigned workers)
    : m_terms(task.sdr, reporter)
    , m_media(&cancel)
    , m_setup{plugin,
              task,
              plan,
              UprightBy(source, plan, !task.effects.empty() || !task.framing.Empty(), reporter),
              {Noted(clip, reporter), {}},
              task.rate ? av_inv_q(*task.rate) : source.Pictures().time_base,
              m_media,
              m_terms,
              reporter}
    , m_lines(workers) {
    m_lines.front() = std::make_unique<PictureLine>(m_setup);
    m_media.TakeOn(m_terms);
    RequireFraming(task.framing, task.stereo.TwoViews());
}

std::optional<Presentation> PicturePipeline::Views() const {
    const std::optional<Presentation> views = m_lines.front()->Views();
    const Framing& framing = m_setup.task.framing;
    const bool kept = views && !framing.afterEffects;
    return !kept && Framer(framing).Reshapes() ? Presentation{} : views;
}

void PicturePipeline::Conclude() {
    m_terms.Conclude();
    EffectChain::Times spent;
    for (const auto& line : m_lines) {
        if (!line) continue;
        spent.all += line->Spent().all;
        spent.preparing += line->Spent().preparing;
    }
    if (spent.all.count() > 0 && spent.preparing.count() > 0)
        m_setup.reporter.Note("effects prepared themselves anew for settings that moved in " +
                              std::to_string(100 * spent.preparing / spent.all) + " % of their time");
}

void PicturePipeline::RequireMedia() { RequirePictures(m_media, m_setup.task.effects); }

// A further line sees the first picture before its own: all that is learnt from it, and said, is what the
// first line has learnt and said.
PictureLine& PicturePipeline::LineOf(unsigned worker) {
    std::unique_ptr<PictureLine>& line = m_lines[worker];
    if (line) return *line;
    auto further = std::make_unique<PictureLine>(m_setup, m_lines.front().get());
    AVFramePtr sample = Another(*m_sample);
    further->Make(std::move(sample), m_secondSample.get(), {});
    line = std::move(further);
    return *line;
}

AVFramePtr PicturePipeline::Make(AVFramePtr picture, const AVFrame* second, const LinePlace& place) {
    if (place.number == 0 && m_lines.size() > 1) {
        m_sample = Another(*picture);
        if (second) m_secondSample = Another(*second);
    }
    return LineOf(place.worker).Make(std::move(picture), second, place.number);
}

} // namespace aveffect
