#pragma once
/// Rendering films.
#include "host/jobs/transition.h"
#include "timeline/film/film.h"

namespace aveffect {

inline constexpr uint64_t kUsualWorkLimit = uint64_t{50} << 30;

struct FilmRenderOptions : FilmOptions {
    std::optional<bool> limiter; ///< of sound that would be too loud; absent: as the film wishes, else on
    std::string work;            ///< directory that keeps finished pieces of the film; empty: none are kept
    uint64_t workLimit = kUsualWorkLimit; ///< bytes that it may hold
};

/// Renders a film. What the options leave open of size, rate, colours and codecs is as the film wishes, else
/// as its first clip has it. Throws Error; as for Render(), the output appears under its name only when it is
/// whole, cancelling ends soon, and memory use does not grow with the length. With a directory for pieces,
/// those that it holds are not rendered again, whether their film is the same or only they are.
RenderResult RenderFilm(const Plugin& plugin, const Film& film, const FilmRenderOptions& options,
                        const RenderObserver& observer, const std::atomic<bool>& cancel);

/// Of the film that RenderFilm() makes. Throws Error.
FilmShape ShapeOfFilm(const Plugin& plugin, const Film& film, const FilmRenderOptions& options,
                      const RenderObserver& observer, const std::atomic<bool>& cancel);

} // namespace aveffect
