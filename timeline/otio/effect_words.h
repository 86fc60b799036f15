#pragma once
/// Effects as films' metadata write them.
#include <optional>
#include <string>

#include "timeline/film/film.h"
#include "timeline/otio/document.h"
#include "timeline/otio/findings.h"
#include "timeline/otio/media_places.h"

namespace aveffect {

/// "aveffect.bulge" is bulge; empty for effects of others.
std::string OwnEffectName(const std::string& effectName);

/// Whether metadata.aveffect of an effect has such a member beside its settings and keyframes: preset, from,
/// mix and so on.
bool IsEffectMember(const std::string& name);

/// The effect of that name (or NAME/PRESET, as a start) with what metadata.aveffect says; absent when
/// anything is wrong, all of which is among the findings. Written becomes what the command line would say.
std::optional<EffectSpec> ReadEffectWords(const std::string& name, const OtioJson& words,
                                          const MediaTerms& terms, const std::string& place,
                                          Findings& findings, EffectWording* written = nullptr);

/// The same for a transition: {"effect": "clock", "settings": {...}}.
std::optional<EffectSpec> ReadTransitionWords(const OtioJson& words, const MediaTerms& terms,
                                              const std::string& place, Findings& findings);

/// What the film's metadata.aveffect says of outputs.
FilmWishes ReadWishes(const OtioJson& words, const std::string& place, Findings& findings);

} // namespace aveffect
