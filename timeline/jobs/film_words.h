#pragma once
/// Films in words.
#include <string>

#include "timeline/film/film.h"

namespace aveffect {

/// Minutes and seconds, to milliseconds: "1:02.500"; hours where there are any.
std::string ClockText(const FilmTime& time);

/// "2 clips"; one is the word for a single one.
std::string Counted(size_t count, const char* one);

/// "spherize: spherize_x=30%, @mix=50".
std::string EffectText(const EffectSpec& effect);

/// What a clip shows: its file or its numbered files, as the film names it; empty for none.
std::string MediaText(const FilmMedia& media);

/// "crossfade, 0.48 s before the cut and 0.52 s behind it".
std::string TransitionText(const FilmItem::Transition& transition);

/// The last step of a place: "children[3]" of tracks[1].children[3] "sunset".
std::string LastStep(const std::string& place);

/// "3 tracks, 12 clips, 1:02.500, 1920x1080, 25 pictures a second".
std::string SummaryText(const Film& film);

/// The whole film: its tracks, their items with times, effects and transitions, in lines of 80 columns.
std::string FilmText(const Film& film);

} // namespace aveffect
