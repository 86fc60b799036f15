#include "host/jobs/compare.h"

#include "host/media/upright_clip.h"
#include "host/output/output_file.h"
#include "host/output/picture_output.h"
#include "host/output/still_picture.h"
#include "host/picture/picture_comparison.h"
#include "host/support/stages.h"

namespace aveffect {
namespace {

using mediabridge::AVFramePtr;

constexpr unsigned kAllProcessors = 0;

void RequirePictures(const UprightClip& clip) {
    if (clip.Count() == 0)
        throw Error(ErrorKind::Input, clip.Clip().Path() + " holds no picture that can be decoded");
}

int64_t CountRest(UprightClip& clip, bool first, const std::atomic<bool>& cancel) {
    int64_t rest = first ? 1 : 0;
    while (first && clip.Next()) {
        CheckCancel(cancel);
        ++rest;
    }
    return rest;
}

/// Pairs of pictures, and what is found out about them.
class Comparer {
public:
    Comparer(const CompareOptions& options, const std::atomic<bool>& cancel)
        : m_first(ParseSourceUrl(options.first).At(options.rate), kAllProcessors, cancel)
        , m_second(ParseSourceUrl(options.second).At(options.rate), kAllProcessors, cancel)
        , m_cancel(cancel) {}

    void Run() {
        AVFramePtr a = m_first.Next(), b = m_second.Next();
        RequirePictures(m_first);
        RequirePictures(m_second);
        for (; a && b; a = m_first.Next(), b = m_second.Next()) {
            CheckCancel(m_cancel);
            Take(std::move(a), std::move(b));
        }
        m_found.restOfFirst = CountRest(m_first, a != nullptr, m_cancel);
        m_found.restOfSecond = CountRest(m_second, b != nullptr, m_cancel);
        const auto pairs = static_cast<double>(m_found.pairs);
        m_found.psnr = PeakSignalToNoise(m_noise / pairs, 1);
        m_found.ssim = m_similarity / pairs;
        DamageReport damage = m_first.Damage(true);
        damage.Add(m_second.Damage(true));
        m_found.inputDamage = damage.Text();
    }

    Comparison& Found() { return m_found; }

    /// Of the pair that differs most; null when none does.
    AVFramePtr Draw() {
        return m_worst[0] ? PictureComparison::Draw(*m_worst[0], *m_worst[1], m_found.brightened) : nullptr;
    }

private:
    void Take(AVFramePtr a, AVFramePtr b) {
        const PictureDifference difference = m_comparison.Compare(*a, *b);
        const ComparedPair pair = {m_found.pairs++,
                                   av_rescale_q(a->pts, m_first.Clip().Pictures().time_base, {1, 1000})};
        const double noise = difference.meanSquare / (difference.peak * difference.peak);
        m_noise += noise;
        m_similarity += difference.similarity;
        if (noise == 0) return;
        ++m_found.differing;
        if (!m_found.firstDifference) m_found.firstDifference = pair;
        if (noise <= m_largestNoise) return;
        m_largestNoise = noise;
        m_found.lowestPsnr = PeakSignalToNoise(noise, 1);
        m_found.largestDifference = pair;
        m_worst[0] = std::move(a);
        m_worst[1] = std::move(b);
    }

    UprightClip m_first, m_second;
    const std::atomic<bool>& m_cancel;
    PictureComparison m_comparison;
    Comparison m_found;
    double m_noise = 0, m_largestNoise = 0; ///< mean squares, samples from 0 to 1
    double m_similarity = 0;
    AVFramePtr m_worst[2];
};

} // namespace

Comparison Compare(const CompareOptions& options, const RenderObserver& observer,
                   const std::function<void(const Comparison&)>& tell, const std::atomic<bool>& cancel) {
    Reporter reporter(observer);
    std::optional<OutputPlan> plan;
    if (!options.difference.empty()) {
        plan = PlanStill(options.difference);
        for (const std::string& input : {options.first, options.second})
            OutputFile::Check(options.difference, ParseSourceUrl(input).path, options.overwrite);
    }
    Comparer comparer(options, cancel);
    comparer.Run();
    AVFramePtr drawn = plan ? comparer.Draw() : nullptr;
    if (!drawn) {
        tell(comparer.Found());
        return comparer.Found();
    }
    IntakeTerms terms(false, reporter);
    PictureOutput output(*plan, OriginOf(*drawn), *drawn, terms, reporter);
    const auto file = WriteStill(*plan, output.Convert(std::move(drawn)), {}, options.overwrite, cancel);
    tell(comparer.Found());
    Comparison found = comparer.Found();
    file->Publish();
    return found;
}

} // namespace aveffect
