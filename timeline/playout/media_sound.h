#pragma once
/// The sound of a clip's file.
#include <map>
#include <optional>
#include <set>
#include <string>

#include "host/sound/decoded_sound.h"
#include "host/sound/sound_supply.h"
#include "host/support/reporter.h"
#include "timeline/film/film.h"
#include "timeline/playout/converted_sound.h"

namespace aveffect {

/// A file's sound, as it was found.
struct MediaSoundFile {
    SourceRequest source;
    SoundShape shape;
    AVCodecID codec = AV_CODEC_ID_NONE;
    int bits = 0;      ///< of its samples; 0: it does not tell
    int64_t start = 0; ///< where the media's own time is 0, in the file's times: samples
    /// Where reading begins: at any sample, which comes out the same whatever is read before it; where a clip
    /// does, for the coding or the times after a jump depend on it; or at the file's beginning.
    enum class Reading { Anywhere, FromClip, FromBeginning } reading = Reading::FromClip;
};

/// The files that a film's sound comes from. Used by one thread at a time.
class MediaSounds {
public:
    explicit MediaSounds(const std::atomic<bool>& cancel)
        : m_cancel(cancel) {}

    /// Null where the media has no sound. Opens each file once. Throws Error (Input, Interrupted).
    const MediaSoundFile* Find(const FilmMedia& media);

    /// What was found to be wrong with what was read.
    DamageReport Damage() const;

private:
    friend class MediaSound;

    const std::atomic<bool>& m_cancel;
    std::map<std::string, std::optional<MediaSoundFile>> m_found; ///< by URL
    std::set<const DecodedSound*> m_open;
    DamageReport m_damage; ///< of those that were closed
};

/// The part of it that a clip plays, in whole samples of the film's rate.
struct MediaSoundPart {
    int64_t begin = 0; ///< of the clip, in the media's own time; may lie before the media's
    int64_t at = 0;    ///< of the sound that is made; not before it
    int64_t end = 0;   ///< up to which there should be sound
};

/// One file's sound at the film's rate, silence before and behind it.
class MediaSound : public SampleSource {
public:
    /// The files outlive it, and the clip, which messages name. Throws Error (Input, Interrupted).
    MediaSound(MediaSounds& media, const MediaSoundFile& file, const MediaSoundPart& part,
               const SoundShape& shape, const FilmItem& clip, Reporter& reporter);
    ~MediaSound() override;

    int64_t Available(int64_t wanted) override { return m_last->Available(wanted); }
    mediabridge::AVFramePtr Pop(int64_t samples) override { return m_last->Pop(samples); }

private:
    /// The file's samples; says when they end too early.
    class Filled;

    MediaSounds& m_media;
    std::unique_ptr<DecodedSound> m_decoded;
    std::unique_ptr<SampleSource> m_filled, m_converted;
    SampleSource* m_last;
};

} // namespace aveffect
