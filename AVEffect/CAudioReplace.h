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
    ~CAudioReplace() override;

    void OnSetProperty(const std::string& name, PropertyNode& node) override;

    /// The position in the file, in units of 100 ns. Discards what is queued; false without a file or when it
    /// can't be sought.
    bool Seek(long long position) override;

    /// Fills buffer 0 of the frame: all of the sound when it is interleaved.
    void InnerProcFrame(IRawAudioFrame* frame) override;

private:
    /// What sound is converted from and to.
    struct Kind {
        static Kind Of(IRawAudioFrame* sound);

        unsigned format = 0;
        unsigned channels = 0;
        unsigned rate = 0;
        bool interleaved = false;

        bool operator==(const Kind&) const = default;
    };
    void OpenSource(const std::string& path);
    void BuildAudioResampler(const Kind& target);
    bool ReadNext(AVItem& item);
    bool ReadNextOrStartAgain(AVItem& item);
    bool BeginsAgain() const;
    void ExpectSound();
    void FillQueue(unsigned size);
    struct Conversion {
        IRawAudioFrame* sound; // the resampler's
        bool refused;
    };
    Conversion Convert(IRawAudioFrame* sound);
    bool QueueSound(IRawAudioFrame* sound);
    void QueueSilence(unsigned size);

    int m_nLoop = 0; // not 0: at its end the file begins again
    std::string m_strPath;
    IAVManager* m_pManager;
    Owned<IAVReader> m_pSource;
    BaseTool::CDataBuffer2 m_Queue{true}; // converted sound that no frame has had yet
    BaseTool::MallocAllocator m_Silence;
    unsigned m_nFileDuration = 0; // milliseconds, 0 when not known
    Owned<IAudioResampler> m_pResampler;
    Kind m_Target;               // that of the frames
    Kind m_SourceKind;           // that of the file's last sound
    bool m_bHeard = false;       // the file gave samples since its beginning, or may have
    uint64_t m_nHeldBack = 0;    // samples of the file since the resampler last gave any
    unsigned m_nBarrenItems = 0; // items since then; a new kind of sound counts as many
};

} // namespace AVBased
