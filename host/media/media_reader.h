#pragma once
/// One opened source of the media manager.
#include <array>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "aveffect/media.h"
#include "host/media/input.h"
#include "host/media/source_request.h"
#include "host/picture/fitting.h"
#include "host/picture/framer.h"
#include "host/picture/orientation.h"
#include "host/picture/picture_intake.h"
#include "mediabridge/audio_frame.h"
#include "mediabridge/scaler.h"
#include "mediabridge/video_frame.h"

namespace aveffect {

/// Whether a local source's URL asks for the clip's last picture alone, by "picture=last" in its query, or by
/// "picture=first" for what is read without it; absent when it says nothing of that.
std::optional<bool> LastPictureWanted(const std::string& url);

class MediaReader;

/// How the pictures of a manager's sources are given out.
struct ReaderTerms {
    const Canvas& canvas;
    const Framing& framing;
    IntakeTerms* intake; ///< as for PictureIntake
};

/// The readers of one manager, and what those that are gone have found to be wrong. Safe from any thread.
class OpenReaders {
public:
    void Add(const MediaReader& reader);
    /// Where memory is short what was found is forgotten, of which Damage() tells.
    void Remove(const MediaReader& reader) noexcept;
    /// Call while nobody reads. Throws NoMemory.
    DamageReport Damage() const;

private:
    mutable std::mutex m_mutex;
    std::set<const MediaReader*> m_open;
    DamageReport m_found;
    bool m_forgotten = false;
};

/// Items in the order in which the file's pictures and sound come out of their decoders, pictures upright, of
/// the canvas's pixels, and in BGRA. On the heap; Release() frees it.
class MediaReader final : public AVBased::IAVReader {
public:
    /// The flag, if any, ends all waiting. Throws Error (Input, Interrupted).
    MediaReader(const std::string& url, const ReaderTerms& terms, const std::atomic<bool>* cancel,
                std::shared_ptr<OpenReaders> siblings);

    bool ReadItem(AVBased::AVItem* item, unsigned flags, unsigned timeout) override;
    bool Seek(unsigned milliseconds) override;
    unsigned GetDuration() override;
    void Release() override;

    unsigned Streams() const noexcept { return m_input->nb_streams; }
    /// Size of the pictures as they are stored, 0 when there are none.
    unsigned Width() const noexcept;
    unsigned Height() const noexcept;

    DamageReport Damage() const;

private:
    struct Stream {
        AVStream* stream = nullptr;
        std::unique_ptr<Decoder> decoder;
    };
    ~MediaReader() { m_siblings->Remove(*this); }

    void Open(Stream& target, AVStream* stream);
    bool Read(AVBased::AVItem& item, bool wantsVideo);
    bool TakeDecoded(AVBased::AVItem& item, Stream& from, bool video);
    bool ReadPacket(bool wantsVideo);
    void Drain();
    mediabridge::AVFramePtr LastPicture();
    mediabridge::AVFramePtr DecodeToEnd();
    bool SeekBack(int64_t milliseconds);
    bool FillVideo(AVBased::AVItem& item, mediabridge::AVFramePtr picture);
    mediabridge::AVFramePtr Shown(mediabridge::AVFramePtr picture);
    bool FillAudio(AVBased::AVItem& item, mediabridge::AVFramePtr sound);
    bool Locate(AVBased::AVItem& item, const AVFrame& frame, const AVStream& stream, int64_t lengthTicks,
                AVRational lengthBase);

    std::shared_ptr<OpenReaders> m_siblings;
    std::string m_path;
    Canvas m_canvas;
    PictureIntake m_intake;
    ColourMatch m_colours;
    ReadInterrupt m_interrupt;
    InputContextPtr m_input;
    Stream m_video, m_audio;
    mediabridge::AVPacketPtr m_packet;
    mediabridge::VideoFrame::Ptr m_picture;
    mediabridge::AudioFrame::Ptr m_sound;
    Upright m_upright;
    Framer m_framer;
    std::optional<mediabridge::Scaler> m_scaler;
    std::pair<int, int> m_scaled; ///< the size that the scaler makes
    mediabridge::SwrContextPtr m_resampler;
    int64_t m_skipBeforeMs = 0; ///< items that end by then lie before the last Seek()
    bool m_skippedVideo = false;
    bool m_wantsLast = false; ///< the next picture that is asked for is the clip's last
    bool m_awaitsKey = false; ///< pictures are left out until then
    bool m_atEnd = false;
};

} // namespace aveffect
