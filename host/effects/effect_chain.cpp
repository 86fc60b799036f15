#include "host/effects/effect_chain.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <mutex>
#include <utility>

#include "aveffect/base_tools.h"
#include "host/effects/random_seed.h"
#include "host/effects/strength.h"
#include "host/media/span.h"
#include "host/settings/catalogue_lookup.h"
#include "host/settings/settings_at_time.h"
#include "host/support/error.h"
#include "host/support/error_record.h"

namespace aveffect {

using AVBased::EffectInfo;
using AVBased::FrameOrder;
using AVBased::IRawVideoFrame;

namespace {

bool NeedsOrder(const EffectSpec& effect) {
    return AVBased::OrderOf(RequireEffect(effect.name).traits) == FrameOrder::InOrder;
}

// The process has one generator of random numbers, and some effects seed it by the clock. Whoever draws has
// it alone, and begins at the same place each time.
class RandomTurn {
public:
    explicit RandomTurn(const EffectInfo& effect)
        : m_lock(Mutex(), std::defer_lock) {
        if (!(effect.traits & AVBased::kDrawsRandom)) return;
        m_lock.lock();
        std::srand(g_randomSeed);
    }

private:
    static std::mutex& Mutex() {
        static std::mutex mutex;
        return mutex;
    }
    std::unique_lock<std::mutex> m_lock;
};

// Whether its first frame can come out otherwise than later ones. Transitions read their pictures then, no
// more.
bool PreparesItself(const EffectInfo& effect) {
    return AVBased::OrderOf(effect.traits) == FrameOrder::AfterFirst &&
           effect.kind != AVBased::EffectKind::Transition;
}

// Setting these back does not undo them, so settings that moved go to a new processor.
bool RemembersSettings(const EffectInfo& effect) { return effect.kind == AVBased::EffectKind::Stereo; }

} // namespace

/// One effect: its processor, its settings at each time, and how much of it is seen where.
struct EffectChain::Stage {
    Stage(const EffectSpec& spec, const TimeSpan& clip)
        : info(RequireEffect(spec.name))
        , settings(spec, clip)
        , strength(settings)
        , waits(settings.NeedPictureSize()) {}

    const EffectInfo& info;
    SettingsAtTime settings;
    Strength strength;
    VideoProcPtr proc;
    std::vector<std::string> texts; ///< that the processor has
    bool waits;                     ///< for the pictures' size
    bool prepared = false;          ///< has had a frame with these texts
};

void SetProperty(AVBased::IAVProc& proc, const std::string& name, const std::string& value) {
    GetBaseException()->Clear();
    if (proc.SetProperty(name.c_str(), value.c_str())) return;
    const std::string message = std::string(proc.GetName()) + " does not take " + name + "='" + value + "'";
    // What the host threw for a file that it had opened before comes back with this code.
    const bool thrown = GetBaseException()->GetExceptionCode() == AVBased::kStandardException;
    ThrowRecorded(thrown ? ErrorKind::Input : ErrorKind::Usage, message + ": ", "no reason given");
}

void SetDuration(AVBased::IAVProc& proc, uint32_t durationMs) {
    const uint32_t longest = std::numeric_limits<int32_t>::max();
    SetProperty(proc, AVBased::PROP_NAME_DURATION, std::to_string(std::min(durationMs, longest)));
}

void RequireNoRecord(AVBased::IAVProc& proc) {
    if (GetBaseException()->GetExceptionCode() != AVBased::kNoError)
        ThrowRecorded(ErrorKind::Effect, "effect " + std::string(proc.GetName()) + " failed: ");
}

EffectChain::EffectChain(const Plugin& plugin, AVBased::IAVManager* manager,
                         const std::vector<EffectSpec>& effects, const TimeSpan& clip)
    : m_plugin(plugin)
    , m_manager(manager)
    , m_clip(clip)
    , m_first(*this)
    , m_effects(effects) {
    for (const EffectSpec& effect : m_effects) {
        Make(effect);
        const bool inOrder = NeedsOrder(effect);
        if (m_segments.empty() || inOrder != (m_segments.back().gate != nullptr))
            m_segments.push_back({0, inOrder ? std::make_unique<Turnstile>() : nullptr});
        m_segments.back().end = m_stages.size();
    }
}

EffectChain::EffectChain(EffectChain* first)
    : m_plugin(first->m_plugin)
    , m_manager(first->m_manager)
    , m_clip(first->m_clip)
    , m_first(*first)
    , m_effects(first->m_effects) {
    for (const EffectSpec& effect : m_effects) {
        if (NeedsOrder(effect))
            m_stages.emplace_back();
        else
            Make(effect);
    }
}

EffectChain::~EffectChain() = default;

void EffectChain::Make(const EffectSpec& effect) {
    m_stages.push_back(std::make_unique<Stage>(effect, m_clip));
    Stage& stage = *m_stages.back();
    Renew(stage);
    m_traits |= stage.info.traits;
    m_moves = m_moves || stage.settings.Move();
    if (stage.info.kind == AVBased::EffectKind::Transition) m_transitions = true;
    if (IsStereoEffect(*stage.proc)) {
        m_stereo = &stage;
        m_mixesViews = false;
    } else if (stage.info.traits & AVBased::kMovesPixels) {
        m_mixesViews = true;
    }
    if (!stage.waits) SetProperties(stage, static_cast<int>(stage.settings.Span().beginMs));
}

void EffectChain::Renew(Stage& stage) {
    stage.proc = m_plugin.MakeVideo(m_manager, stage.info.name);
    stage.texts.clear();
    SetDuration(*stage.proc, static_cast<uint32_t>(stage.settings.LengthMs().value_or(kUnknownLengthMs)));
}

// Those whose text is another one than the processor has; whether there was one.
bool EffectChain::SetProperties(Stage& stage, int timeMs) {
    const std::vector<SettingAtTime>& properties = stage.settings.Properties();
    const bool first = stage.texts.empty();
    if (!first && !stage.settings.Move()) return false;
    std::vector<std::string> texts;
    texts.reserve(properties.size());
    for (const SettingAtTime& property : properties) texts.push_back(property.TextAt(timeMs));
    if (texts == stage.texts) return false;
    if (!first && RemembersSettings(stage.info)) Renew(stage);
    for (size_t index = 0; index < texts.size(); ++index)
        if (stage.texts.empty() || stage.texts[index] != texts[index])
            SetProperty(*stage.proc, properties[index].Property().name, texts[index]);
    stage.texts = std::move(texts);
    return true;
}

void EffectChain::Draw(Stage& stage, IRawVideoFrame& frame, int timeMs) {
    AVBased::IVideoProc& proc = *stage.proc;
    const RandomTurn turn(stage.info);
    AVBased::ImagePostion position{};
    GetBaseException()->Clear();
    proc.ProcFrameInPlace(&position, timeMs, &frame);
    RequireNoRecord(proc);
}

// What effects do on the first frame that they have with some settings happens on a copy that is thrown away:
// which frame that is depends on how frames are shared between threads, and where rendering begins.
void EffectChain::Prepare(Stage& stage, IRawVideoFrame& frame, int timeMs) {
    const auto begin = std::chrono::steady_clock::now();
    Draw(stage, *CopyOf(frame), timeMs);
    m_spent.preparing += std::chrono::steady_clock::now() - begin;
}

void EffectChain::Work(Stage& stage, IRawVideoFrame& frame, int timeMs) {
    if (!stage.settings.Cover(timeMs)) return;
    if (stage.waits) {
        unsigned width = 0, height = 0;
        frame.GetDimension(&width, &height);
        stage.settings.FitTo(width, height);
        stage.waits = false;
    }
    if (!stage.strength.Begin(frame, timeMs)) return;
    const bool changed = SetProperties(stage, timeMs);
    const int effectMs = timeMs - static_cast<int>(stage.settings.Span().beginMs);
    const bool draws = !DrawInPlaceOf(*stage.proc, frame);
    const bool fresh = changed || !stage.prepared;
    stage.prepared = true;
    if (draws && fresh && timeMs > 0 && PreparesItself(stage.info)) Prepare(stage, frame, effectMs);
    if (draws) Draw(stage, frame, effectMs);
    stage.strength.End(frame, timeMs);
}

void EffectChain::Run(size_t begin, size_t end, IRawVideoFrame& frame, int timeMs) {
    for (size_t index = begin; index < end; ++index) Work(*m_stages[index], frame, timeMs);
}

void EffectChain::Process(IRawVideoFrame* frame, int timeMs, std::optional<int64_t> number) {
    const auto start = m_moves ? std::chrono::steady_clock::now() : std::chrono::steady_clock::time_point();
    const bool further = &m_first != this;
    size_t begin = 0;
    for (const Segment& segment : m_first.m_segments) {
        if (segment.gate && number)
            segment.gate->Pass(*number, [&] { m_first.Run(begin, segment.end, *frame, timeMs); });
        else if (!segment.gate || !further)
            Run(begin, segment.end, *frame, timeMs);
        begin = segment.end;
    }
    if (m_moves) m_spent.all += std::chrono::steady_clock::now() - start;
}

std::optional<Presentation> EffectChain::Stereo() const {
    return m_stereo ? std::optional(PresentationOf(*m_stereo->proc)) : std::nullopt;
}

void EffectChain::Stop() {
    for (const Segment& segment : m_segments)
        if (segment.gate) segment.gate->Stop();
}

} // namespace aveffect
