#include "AVEffect/CAudioReplace.h"

#include <cassert>
#include <cstring>
#include <utility>

#include "AVEffect/factory.h"

namespace AVBased {

using BaseTool::Raise;

namespace {

constexpr uint32_t kAudioItem = 2;
constexpr unsigned kNoTimeLimit = 0xFFFFFFFF;
constexpr long long kUnitsPerMillisecond = 10000; // of 100 ns
constexpr unsigned kMostBarrenItems = 1u << 16;

} // namespace

template <>
IAudioProc* ConstructAudio<CAudioReplace>(IAVManager* manager, const std::string&) {
    return new CAudioReplace(manager);
}

CAudioReplace::CAudioReplace(IAVManager* manager)
    : CBasedAudioEffect(effectNameAudioReplace)
    , m_pManager(manager) {
    Bind("audio_replace_loop", &m_nLoop);
}

void CAudioReplace::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedAudioEffect::OnSetProperty(name, node);
    if (name == "audio_replace_path") OpenSource(node.text);
}

void CAudioReplace::OpenSource(const std::string& path) {
    m_pSource.reset();
    unsigned streams = 0, width = 0, height = 0;
    if (m_pManager)
        m_pSource.reset(m_pManager->OpenSource(path.c_str(), "", &streams, &width, &height, nullptr));
    assert(m_pSource);
    m_nFileDuration = m_pSource->GetDuration();
    m_bHeard = false;
}

bool CAudioReplace::Seek(long long position) {
    return BaseTool::Guarded(false, [&] {
        if (!m_pSource) return false;
        auto milliseconds = static_cast<unsigned>(position / kUnitsPerMillisecond);
        // The duration in milliseconds against the position in its own units: nearly every position counts as
        // beyond the end, and those that are not stay what they are.
        if (m_nLoop && m_nFileDuration != 0 && m_nFileDuration < position) milliseconds %= m_nFileDuration;
        const bool sought = m_pSource->Seek(milliseconds);
        m_Queue.Clear();
        m_bHeard = true; // there may be sound before this position
        return sought;
    });
}

void CAudioReplace::BuildAudioResampler(const Target& target) {
    m_pResampler.reset();
    m_Target = target;
    m_pResampler.reset(CreateAudioResampler(target.format, target.rate, static_cast<int>(target.channels), 0,
                                            target.interleaved, 1, 0));
    if (!m_pResampler) throw CBaseException(GetBaseException());
}

bool CAudioReplace::ReadNext(AVItem& item) {
    item = {nullptr, -1, 0, 0xFFFFFFFF, 0};
    return m_pSource->ReadItem(&item, 0, kNoTimeLimit);
}

/// False at the end, which a file that loops and has sound does not have.
bool CAudioReplace::ReadNextOrStartAgain(AVItem& item) {
    if (ReadNext(item)) return true;
    if (!m_nLoop || !m_bHeard) return false;
    m_bHeard = false;
    m_pSource->Seek(0);
    ReadNext(item); // when it fails there is no sound in the item, and the next one is the end
    return true;
}

void CAudioReplace::QueueSilence(unsigned size) {
    if (m_Silence.Size() != size) m_Silence.Malloc(size);
    std::memset(m_Silence.Data(), 0, size);
    m_Queue.Push(m_Silence.Data(), size);
}

/// False when the converted sound has no bytes to take: for now the file counts as ended. A resampler that
/// has nothing yet is no such case.
bool CAudioReplace::QueueSound(IRawAudioFrame* sound) {
    IRawAudioFrame* const converted = m_pResampler->Convert(sound);
    if (!converted) return true;
    unsigned size = 0;
    const unsigned char* const bytes = converted->GetBuffer(0, &size);
    m_Queue.Push(bytes, size);
    if (bytes && size != 0) m_bHeard = true;
    return bytes != nullptr;
}

void CAudioReplace::FillQueue(unsigned size) {
    uint64_t queued = m_Queue.GetDataSize();
    for (unsigned barren = 0; queued < size;) {
        AVItem item;
        bool ended = !ReadNextOrStartAgain(item);
        if (!ended && item.kind == kAudioItem && item.object)
            ended = !QueueSound(static_cast<IRawAudioFrame*>(item.object));
        if (ended) QueueSilence(size);
        const uint64_t before = std::exchange(queued, m_Queue.GetDataSize());
        barren = queued == before ? barren + 1 : 0;
        if (barren == kMostBarrenItems)
            Raise(kUnknownException, "The file of audio_replace_path goes on without giving sound");
    }
}

void CAudioReplace::InnerProcFrame(IRawAudioFrame* frame) {
    const Target target = {frame->GetSampleFormat(), static_cast<unsigned>(frame->GetChannels()),
                           frame->GetSampleRate(), frame->IsInterleaved()};
    if (!m_pResampler || target != m_Target) BuildAudioResampler(target);
    unsigned size = 0;
    unsigned char* const buffer = frame->GetBuffer(0, &size);
    if (!buffer || size == 0) Raise(kUnknownException, "get audio buffer error.");
    if (!m_pSource) Raise(kUnknownException, "audio_replace_path names no file yet");
    FillQueue(size);
    m_Queue.Pop(buffer, size);
}

} // namespace AVBased
