#pragma once
/// What each command reads and writes: the one place that knows.
#include "cli/confinement/reach.h"
#include "cli/timeline_arguments.h"
#include "host/jobs/batch.h"
#include "host/jobs/compare.h"
#include "host/jobs/render.h"
#include "host/jobs/transition.h"

namespace aveffect {

/// Inputs by their names, numbered pictures by their folder; outputs by theirs, as symbolic links lead. Names
/// that are wrong have no place in it: the command itself refuses them.
Reach ReachOf(const RenderOptions& options);
Reach ReachOf(const FrameOptions& options);
Reach ReachOf(const TransitionOptions& options);
Reach ReachOf(const JoinOptions& options);
Reach ReachOf(const SheetOptions& options);
Reach ReachOf(const CompareOptions& options);
/// The directory is there: PrepareBatch().
Reach ReachOf(const BatchOptions& options);
/// As for render, with display and sound.
Reach ReachOfPlayer(const RenderOptions& options);
/// A film that is shown, as a page if it has a name, beside which pictures of clips come and go.
Reach ReachOfPage(const FilmSourceArguments& film, const std::string& page);
/// A film and all media that its text names, what is written of it, and a directory for its pieces, which is
/// made. Either may be empty.
Reach ReachOf(const FilmSourceArguments& film, const std::string& output = {}, const std::string& work = {});

} // namespace aveffect
