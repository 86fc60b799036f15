#pragma once
/// Clips that the program composes itself, picture by picture at a constant rate, with sound beside them.
#include <functional>
#include <memory>
#include <optional>

#include "host/output/container.h"
#include "host/output/output_clock.h"
#include "host/output/picture_encoder.h"
#include "host/output/picture_output.h"
#include "host/output/sound_encoder.h"

namespace aveffect {

/// The sound that goes with a film.
struct FilmSound {
    std::unique_ptr<SoundEncoder> encoder;
    std::unique_ptr<JoinedSound> track;
};

/// How a film is written.
struct FilmSetup {
    OutputPlan plan;
    AVRational rate{25, 1}; ///< pictures a second
    bool overwrite = false;
    std::optional<FilmSound> sound = {}; ///< absent: no sound stream
};

/// A container file in the making. Used by one thread at a time.
class Film {
public:
    /// Opens the encoder for pictures like the sample, which has its format, creates the file and writes its
    /// header. Throws Error (Usage, Output, Interrupted).
    Film(FilmSetup setup, const AVFrame& sample, const std::atomic<bool>& cancel);

    /// Encodes the next picture and the sound that lies beside it.
    void WritePicture(mediabridge::AVFramePtr picture);
    /// Writes the rest of the sound, what the encoders still hold, and the container's end.
    void Complete();
    /// Gives the file its name.
    void Publish() { m_output.Publish(); }

    int64_t Pictures() const noexcept { return m_pictures; }
    /// What was found to be wrong with the sound that was read.
    DamageReport Damage() const { return m_setup.sound ? m_setup.sound->track->Damage() : DamageReport(); }

private:
    void WriteSound();
    void Encode(Encoder& encoder, AVFrame* frame, const AVStream& stream, int64_t usualDuration);

    FilmSetup m_setup;
    OutputClock m_clock;
    PictureEncoder m_encoder;
    Container m_output;
    AVStream* m_pictureStream = nullptr;
    AVStream* m_soundStream = nullptr;
    int64_t m_pictures = 0;
    int64_t m_soundEnd = 0; ///< in samples
    bool m_soundDone = false;
};

/// What a film shows.
struct FilmPictures {
    int64_t count = 0;
    /// The picture of an index, of the canvas's size; called in order, from one thread.
    std::function<mediabridge::AVFramePtr(int64_t)> draw;
    /// What was found to be wrong with the files that are drawn from; called at the end.
    std::function<DamageReport()> damage;
};

/// Draws and encodes a film, each on its own thread. The look is
/// a picture like those of the film; the film says of the light what it says. The film that is returned is
/// whole but not published. Throws Error.
std::unique_ptr<Film> MakeFilm(FilmSetup setup, const FilmPictures& pictures, const AVFrame& look,
                               PictureOutput& output, Reporter& reporter, const std::atomic<bool>& cancel);

} // namespace aveffect
