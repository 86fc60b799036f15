#include "host/output/film.h"

#include <utility>

#include "host/picture/light_metadata.h"
#include "host/support/bounded_queue.h"
#include "host/support/error.h"
#include "host/support/progress_meter.h"
#include "host/support/stages.h"

namespace aveffect {

using mediabridge::AVFramePtr;

Film::Film(FilmSetup setup, const AVFrame& sample, const std::atomic<bool>& cancel)
    : m_setup(std::move(setup))
    , m_clock(av_inv_q(m_setup.rate), {m_setup.rate, true}, m_setup.plan.NeedsConstantRate(),
              m_setup.plan.LargestDenominator())
    , m_encoder(m_setup.plan, sample, {m_clock.Base(), m_setup.rate})
    , m_output(m_setup.plan) {
    m_pictureStream = m_output.AddStream(m_encoder.Context());
    MarkLight(*m_pictureStream, sample);
    if (m_setup.sound) m_soundStream = m_output.AddStream(m_setup.sound->encoder->Context());
    m_soundDone = !m_setup.sound;
    m_output.Start(m_setup.overwrite, cancel);
}

void Film::Encode(Encoder& encoder, AVFrame* frame, const AVStream& stream, int64_t usualDuration) {
    encoder.Encode(frame, [&](AVPacket& packet) {
        if (packet.duration <= 0) packet.duration = usualDuration;
        packet.stream_index = stream.index;
        av_packet_rescale_ts(&packet, encoder.Context().time_base, stream.time_base);
        m_output.Write(&packet);
    });
}

void Film::WritePicture(AVFramePtr picture) {
    // Sound first, so that no part of the file waits long for its neighbour.
    const AVRational soundBase =
        m_soundStream ? m_setup.sound->encoder->Context().time_base : AVRational{1, 1};
    while (!m_soundDone && av_compare_ts(m_soundEnd, soundBase, m_pictures, av_inv_q(m_setup.rate)) <= 0)
        WriteSound();
    picture->pts = m_clock.Convert(m_pictures);
    picture->pkt_duration = m_clock.ConvertDuration(m_pictures, 1);
    const int64_t duration = picture->pkt_duration;
    ++m_pictures;
    Encode(m_encoder, picture.get(), *m_pictureStream, duration);
}

void Film::WriteSound() {
    const AVFramePtr sound = m_setup.sound->track->Next();
    if (sound) m_soundEnd = sound->pts + sound->nb_samples;
    m_soundDone = !sound;
    Encode(*m_setup.sound->encoder, sound.get(), *m_soundStream, 0);
}

void Film::Complete() {
    while (!m_soundDone) WriteSound();
    Encode(m_encoder, nullptr, *m_pictureStream, m_clock.ConvertDuration(0, 1));
    m_output.Finish();
}

std::unique_ptr<Film> MakeFilm(FilmSetup setup, const FilmPictures& pictures, const AVFrame& look,
                               PictureOutput& output, Reporter& reporter, const std::atomic<bool>& cancel) {
    ProgressMeter progress(reporter, pictures.count);
    AVFramePtr first = output.Convert(pictures.draw(0));
    if (IsHighDynamicRange(*first)) KeepLight(look, *first);
    auto film = std::make_unique<Film>(std::move(setup), *first, cancel);
    film->WritePicture(std::move(first));

    BoundedQueue<AVFramePtr> drawn(kQueueWeight);
    StageGroup stages([&] { drawn.Stop(); });
    stages.Start([&] {
        for (int64_t index = 1; index < pictures.count; ++index) {
            CheckCancel(cancel);
            if (!drawn.Push(pictures.draw(index), kPictureWeight)) return;
        }
        drawn.Finish();
    });
    stages.Start([&] {
        while (std::optional<AVFramePtr> picture = drawn.Pop()) {
            CheckCancel(cancel);
            film->WritePicture(output.Convert(std::move(*picture)));
            progress.Report(film->Pictures(), false);
        }
        if (!drawn.Stopped()) film->Complete();
    });
    stages.Join();
    CheckCancel(cancel);
    progress.Report(film->Pictures(), true);
    return film;
}

} // namespace aveffect
