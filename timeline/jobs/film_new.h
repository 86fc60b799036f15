#pragma once
/// Films to start from.
#include "host/jobs/transition.h"
#include "timeline/otio/document.h"
#include "timeline/otio/media_headers.h"

namespace aveffect {

/// A film that shows what RenderJoin() would: a track of the clips' pictures with the transitions, one of
/// their sound, and one of the music. Of the film's options its output (the film's file), size and rate
/// count. One clip is enough. Throws Error.
OtioJson NewFilm(const JoinOptions& options, MediaHeaders& headers);

/// The same as a file.
void WriteNewFilm(const JoinOptions& options, const std::atomic<bool>& cancel);

} // namespace aveffect
