#include "host/sound/music.h"

#include <utility>

#include "host/support/error.h"

namespace aveffect {

using mediabridge::AVFramePtr;

MusicFile FindMusic(const std::string& url, const std::atomic<bool>& cancel) {
    MusicFile music{ParseSourceUrl(url), {}, {}};
    RequireRereadable(music.source.path);
    ReadInterrupt interrupt{&cancel, std::nullopt};
    const InputContextPtr input = OpenInput(music.source, interrupt);
    const AVStream* sound = FindSound(*input, music.source, FindPictures(*input, music.source));
    if (!sound || sound->codecpar->sample_rate <= 0)
        throw Error(ErrorKind::Input, music.source.path + " has no sound that could be music");
    music.shape = {sound->codecpar->sample_rate, LayoutText(sound->codecpar->ch_layout)};
    if (sound->start_time != AV_NOPTS_VALUE) music.start = {sound->start_time, sound->time_base};
    return music;
}

AVFramePtr EndlessSound::Next() {
    for (;;) {
        if (!m_reader)
            m_reader =
                std::make_unique<SoundReader>(SoundRequest{m_file.source, m_file.start, m_shape}, m_cancel);
        if (AVFramePtr sound = m_reader->Next()) {
            m_heard = true;
            sound->pts = m_next;
            m_next += sound->nb_samples;
            return sound;
        }
        if (!std::exchange(m_heard, false))
            throw Error(ErrorKind::Input, m_file.source.path + " holds no sound that can be decoded");
        m_damage.Add(m_reader->Damage());
        m_reader.reset();
    }
}

DamageReport EndlessSound::Damage() const {
    DamageReport all = m_damage;
    if (m_reader) all.Add(m_reader->Damage());
    return all;
}

} // namespace aveffect
