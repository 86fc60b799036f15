#include "host/jobs/picture_pipeline.h"

#include <algorithm>
#include <climits>
#include <utility>

#include "host/effects/media_check.h"
#include "host/media/span.h"
#include "host/picture/orientation.h"
#include "host/support/error.h"

namespace aveffect {

using mediabridge::AVFramePtr;

namespace {

int ToMs(int64_t ticks, AVRational base) {
    return static_cast<int>(std::clamp<int64_t>(av_rescale_q(ticks, base, kMilliseconds), 0, INT_MAX));
}

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

uint32_t EffectLength(std::optional<int64_t> lengthMs, const Source& source, Reporter& reporter) {
    if (!lengthMs) {
        // A picture in a file lasts as long as its one packet says.
        const bool still =
            source.Format().duration == AV_NOPTS_VALUE && source.Pictures().nb_frames <= 1 &&
            (avcodec_descriptor_get(source.Pictures().codecpar->codec_id)->props & AV_CODEC_PROP_INTRA_ONLY);
        const AVRational rate = source.FrameRate();
        lengthMs = still ? av_rescale(1000, rate.den, rate.num) : kUnknownLengthMs;
        if (!still) reporter.Note("the clip does not tell its length; effects take it for one hour");
    }
    return static_cast<uint32_t>(std::clamp<int64_t>(*lengthMs, 0, INT_MAX));
}

std::unique_ptr<ViewPairs> PairsFor(const Plugin& plugin, MediaManager* manager,
                                    const std::vector<EffectSpec>& effects, uint32_t lengthMs,
                                    const StereoOptions& options) {
    if (!options.TwoViews()) return nullptr;
    return std::make_unique<ViewPairs>(plugin, manager, effects, lengthMs, options);
}

} // namespace

PicturePipeline::PicturePipeline(const Plugin& plugin, const PictureTask& task, const Source& source,
                                 std::optional<int64_t> lengthMs, const OutputPlan& plan, Reporter& reporter,
                                 const std::atomic<bool>& cancel)
    : m_task(task)
    , m_plan(plan)
    , m_reporter(reporter)
    , m_base(task.rate ? av_inv_q(*task.rate) : source.Pictures().time_base)
    , m_terms(task.sdr, reporter)
    , m_media(&cancel)
    , m_length(EffectLength(lengthMs, source, reporter))
    , m_chain(plugin, &m_media, task.effects, m_length)
    , m_pairs(PairsFor(plugin, &m_media, task.effects, m_length, task.stereo))
    , m_stage(m_chain, m_media, task.pixelFormat,
              UprightBy(source, plan, !task.effects.empty() || !task.framing.Empty(), reporter), m_terms,
              reporter, m_pairs.get()) {
    m_media.TakeOn(m_terms);
    RequireFraming(task.framing, task.stereo.TwoViews());
    if (task.framing.afterEffects)
        m_framer = Framer(task.framing);
    else
        m_stage.Frame(task.framing);
}

std::optional<Presentation> PicturePipeline::Views() const {
    const std::optional<Presentation> views = m_chain.Views();
    return !views && Framer(m_task.framing).Reshapes() ? Presentation{} : views;
}

void PicturePipeline::RequireMedia() { RequirePictures(m_media, m_task.effects); }

AVFramePtr PicturePipeline::ApplyEffects(AVFramePtr picture, const AVFrame* second) {
    const int time = ToMs(picture->pts, m_base);
    const int duration = ToMs(picture->pkt_duration, m_base);
    return m_stage.ApplyEffects(std::move(picture), time, static_cast<unsigned>(duration), second);
}

AVFramePtr PicturePipeline::ForEncoder(AVFramePtr picture) {
    picture = m_framer.Apply(std::move(picture));
    if (!m_output) m_output.emplace(m_plan, m_stage.Origin(), *picture, m_terms, m_reporter);
    return m_output->Convert(std::move(picture));
}

} // namespace aveffect
