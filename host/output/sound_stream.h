#pragma once
/// An output's stream of sound.
#include <memory>
#include <optional>

#include "host/output/container.h"
#include "host/output/sound_encoder.h"
#include "host/sound/sound_supply.h"

namespace aveffect {

/// Where a stream's sound comes from, and what encodes it.
struct SoundFeed {
    std::unique_ptr<SoundEncoder> encoder;
    std::unique_ptr<SoundSupply> supply; ///< in the encoder's form
};

/// Writes sound from its supply through its encoder. Used by one thread at a time. Everything throws Error.
class SoundStream {
public:
    /// Adds the stream to the output, which outlives it.
    SoundStream(SoundFeed feed, Container& output);

    AVStream& Stream() noexcept { return *m_stream; }

    /// Writes what the supply gives up to a moment.
    void WriteUntil(const Moment& moment);
    /// Writes the rest up to the end, as SoundSupply::EndAt, and what the encoder still holds.
    void Complete(const std::optional<Moment>& end);

    const SoundSupply& Supply() const noexcept { return *m_feed.supply; }

private:
    void Encode(AVFrame* sound);

    SoundFeed m_feed;
    Container& m_output;
    AVStream* m_stream;
};

} // namespace aveffect
