#include "AVEffect/CAudioReplace.h"

#include <cassert>
#include <cstring>
#include <optional>

#include "BaseTools/guarded.h"
#include "aveffect/catalogue/sounds.h"

namespace AVBased {

using BaseTool::Raise;

namespace {

constexpr uint32_t kAudioItem = 2;
constexpr unsigned kNoTimeLimit = 0xFFFFFFFF;
constexpr long long kUnitsPerMillisecond = 10000; // of 100 ns
// A resampler gives nothing until its filter is full, which takes fewer samples than these at any rates that
// sound has.
constexpr uint64_t kMostHeldBack = 1u << 12;
constexpr unsigned kMostBarrenItems = 1u << 24;
// Each new kind of sound makes the resampler's filter anew, which can take a tenth of a second.
constexpr unsigned kMostBarrenChanges = 32;

} // namespace

CAudioReplace::Kind CAudioReplace::Kind::Of(IRawAudioFrame* sound) {
    return {static_cast<unsigned>(sound->GetSampleFormat()), static_cast<unsigned>(sound->GetChannels()),
            sound->GetSampleRate(), sound->IsInterleaved()};
}

CAudioReplace::CAudioReplace(IAVManager* manager)
    : CBasedAudioEffect(catalogue::kReplaceSound)
    , m_pManager(manager) {
    Bind("audio_replace_path", &m_strPath);
    Bind("audio_replace_loop", &m_nLoop);
}

CAudioReplace::~CAudioReplace() { m_pSource.reset(); } // before the resampler and the queue

void CAudioReplace::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedAudioEffect::OnSetProperty(name, node);
    if (name == "audio_replace_path") OpenSource(m_strPath);
}

void CAudioReplace::OpenSource(const std::string& path) {
    m_pSource.reset();
    unsigned streams = 0, width = 0, height = 0;
    if (m_pManager)
        m_pSource.reset(m_pManager->OpenSource(path.c_str(), "", &streams, &width, &height, nullptr));
    assert(m_pSource);
    m_nFileDuration = m_pSource->GetDuration();
    ExpectSound();
}

/// Of a file that was opened or sought: there may be sound before this place.
void CAudioReplace::ExpectSound() {
    m_bHeard = true;
    m_nHeldBack = 0;
    m_nBarrenItems = 0;
}

bool CAudioReplace::Seek(long long position) {
    return BaseTool::Guarded(false, [&] {
        if (!m_pSource) return false;
        auto milliseconds = static_cast<unsigned>(position / kUnitsPerMillisecond);
        // The duration in milliseconds against the position in its own units: nearly every position counts as
        // beyond the end, and those that are not stay what they are.
        if (m_nLoop != 0 && m_nFileDuration != 0 && m_nFileDuration < position)
            milliseconds %= m_nFileDuration;
        const bool sought = m_pSource->Seek(milliseconds);
        m_Queue.Clear();
        ExpectSound();
        return sought;
    });
}

void CAudioReplace::BuildAudioResampler(const Kind& target) {
    m_pResampler.reset();
    m_Target = target;
    m_pResampler.reset(CreateAudioResampler(static_cast<int>(target.format), target.rate,
                                            static_cast<int>(target.channels), 0, target.interleaved, 1, 0));
    if (!m_pResampler) throw CBaseException(GetBaseException());
}

bool CAudioReplace::ReadNext(AVItem& item) {
    item = {nullptr, -1, 0, 0xFFFFFFFF, 0};
    return m_pSource->ReadItem(&item, 0, kNoTimeLimit);
}

/// One without sound from its beginning to its end does not, nor one that no resampler makes sound of.
bool CAudioReplace::BeginsAgain() const { return m_nLoop != 0 && m_bHeard && m_nHeldBack < kMostHeldBack; }

/// False at the end, which a file that begins again does not have.
bool CAudioReplace::ReadNextOrStartAgain(AVItem& item) {
    if (ReadNext(item)) return true;
    if (!BeginsAgain()) return false;
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

/// What the resampler makes of the sound. When that is nothing, it has nothing yet, or it refuses the sound
/// and records why.
CAudioReplace::Conversion CAudioReplace::Convert(IRawAudioFrame* sound) {
    IBaseException* const record = GetBaseException();
    std::optional<CBaseException> older;
    if (record->GetExceptionCode() != kNoError) {
        older.emplace(record);
        record->Clear();
    }
    IRawAudioFrame* const converted = m_pResampler->Convert(sound);
    const bool refused = !converted && record->GetExceptionCode() != kNoError;
    if (!refused && older) record->Copy(&*older);
    return {converted, refused};
}

/// False when the converted sound has no bytes to take: for now the file counts as ended. A resampler that
/// has nothing yet is no such case.
bool CAudioReplace::QueueSound(IRawAudioFrame* sound) {
    if (const Kind kind = Kind::Of(sound); kind != m_SourceKind) {
        m_SourceKind = kind;
        m_nBarrenItems += kMostBarrenItems / kMostBarrenChanges;
    }
    const auto [converted, refused] = Convert(sound);
    if (!refused) {
        const unsigned samples = sound->GetSampleCount();
        if (samples != 0) m_bHeard = true;
        m_nHeldBack += samples;
    }
    if (!converted) return true;
    unsigned size = 0;
    const unsigned char* const bytes = converted->GetBuffer(0, &size);
    m_Queue.Push(bytes, size);
    if (bytes && size != 0) m_nHeldBack = m_nBarrenItems = 0;
    return bytes != nullptr;
}

/// A file that goes on without sound and without an end is given up, and silent from then on.
void CAudioReplace::FillQueue(unsigned size) {
    while (m_Queue.GetDataSize() < size) {
        AVItem item;
        bool ended = m_nBarrenItems >= kMostBarrenItems || !ReadNextOrStartAgain(item);
        if (!ended) {
            ++m_nBarrenItems;
            if (item.kind == kAudioItem && item.object)
                ended = !QueueSound(static_cast<IRawAudioFrame*>(item.object));
        }
        if (ended) QueueSilence(size);
    }
}

void CAudioReplace::InnerProcFrame(IRawAudioFrame* frame) {
    const Kind target = Kind::Of(frame);
    if (!m_pResampler || target != m_Target) BuildAudioResampler(target);
    unsigned size = 0;
    unsigned char* const buffer = frame->GetBuffer(0, &size);
    if (!buffer || size == 0) Raise(kUnknownException, "get audio buffer error.");
    if (!m_pSource) Raise(kUnknownException, "audio_replace_path names no file yet");
    FillQueue(size);
    m_Queue.Pop(buffer, size);
}

} // namespace AVBased
