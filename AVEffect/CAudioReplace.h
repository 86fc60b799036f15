#pragma once
/// "audio_replace": another file's sound in place of the frames'.
#include "AVEffect/CBasedAudioEffect.h"
#include "BaseTools/data_buffer.h"
#include "BaseTools/res_keeper.h"
#include "avbase/avbase_srcutils/holders.h"

namespace AVBased {

class CAudioReplace final : public CBasedAudioEffect {
public:
    /// The manager opens the file; it stays the host's and lives longer.
    explicit CAudioReplace(IAVManager* manager);

    void OnSetProperty(const std::string& name, PropertyNode& node) override;

    /// The position in the file, in units of 100 ns. Discards what is queued; false without a file or when it
    /// can't be sought.
    bool Seek(long long position) override;

    /// Fills buffer 0 of the frame: all of the sound when it is interleaved.
    void InnerProcFrame(IRawAudioFrame* frame) override;

private:
    /// What the sound is converted to: that of the frames.
    struct Target {
        int format = 0;
        unsigned channels = 0;
        unsigned rate = 0;
        bool interleaved = false;

        bool operator==(const Target&) const = default;
    };
    void OpenSource(const std::string& path);
    void BuildAudioResampler(const Target& target);
    bool ReadNext(AVItem& item);
    bool ReadNextOrStartAgain(AVItem& item);
    void FillQueue(unsigned size);
    bool QueueSound(IRawAudioFrame* sound);
    void QueueSilence(unsigned size);

    int m_nLoop = 0; // not 0: at its end the file begins again
    IAVManager* m_pManager;
    Owned<IAVReader> m_pSource;
    BaseTool::CDataBuffer2 m_Queue{true}; // converted sound that no frame has had yet
    BaseTool::MallocAllocator m_Silence;
    unsigned m_nFileDuration = 0; // milliseconds, 0 when not known
    Owned<IAudioResampler> m_pResampler;
    Target m_Target;
    // Whether the file gave sound since its beginning: one that does not is not begun again.
    bool m_bHeard = false;
};

} // namespace AVBased
