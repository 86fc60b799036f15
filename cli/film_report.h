#pragma once
/// What `timeline check` says.
#include <atomic>
#include <string>

#include "cli/timeline_arguments.h"
#include "timeline/jobs/film_check.h"

namespace aveffect {

/// A film with all that is wrong with it.
struct FilmReport {
    std::string path;
    ReadFilm read;
    FilmCheck check;
    std::vector<FilmFault> faults;

    bool Good() const { return faults.empty(); }
};

/// Exit code: the film's own faults count before those of media.
int ReportExitCode(const FilmReport& report);

/// For standard error: faults, warnings unless strict made them faults, and the first remarks, a line for
/// each.
std::string ReportMessages(const FilmReport& report, bool strict);

/// For standard output when nothing is wrong: "film.otio: nothing is wrong; 2 tracks, 14 clips, 0:42.500".
std::string ReportText(const FilmReport& report);
std::string ReportJson(const FilmReport& report);

/// The film that is to be rendered, told what there is to say of it. Throws Error where anything is wrong
/// with it.
Film FaultlessFilm(const FilmSourceArguments& source, const RenderObserver& observer,
                   const std::atomic<bool>& cancel);

} // namespace aveffect
