#pragma once
/// The sound of one of a film's items.
#include <memory>
#include <optional>
#include <vector>

#include "host/effects/plugin.h"
#include "timeline/playout/media_sound.h"

namespace aveffect {

/// What the sounds of all items share; outlives them.
struct FilmSoundTerms {
    const Plugin& plugin;
    AVBased::IAVManager* manager; ///< opens what effects read
    SoundShape shape;             ///< of the film
    AVRational pictureRate{0, 1}; ///< for times that are counted in pictures; 0: it is not known
    Reporter& reporter;
    MediaSounds media;
};

/// An item's place on a clock: the film's, or the own time of something that plays at another speed.
struct ItemPlace {
    FilmTime begin;       ///< of the item
    FilmTime head = {};   ///< how much of it a transition wants before that
    bool inTrack = false; ///< it lies in a track of sound
};

/// Its sound from a sample of the clock on, which may lie in its head; it has no end and is the same wherever
/// it is begun. The item outlives it. Throws Error.
std::unique_ptr<SampleSource> ItemSound(FilmSoundTerms& terms, const FilmItem& item, const ItemPlace& place,
                                        int64_t from);

/// What is heard of a stack, its own sound and that in it, parents before their children: what is in tracks
/// of sound, and not switched off.
std::vector<const FilmItem*> HeardItems(const FilmItem& stack);

/// The item's effects on sound.
std::vector<EffectSpec> SoundEffects(const FilmItem& item);

} // namespace aveffect
