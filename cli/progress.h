#pragma once
/// How the program shows that a render goes on.
#include <memory>
#include <string>

#include "host/jobs/render.h"

namespace aveffect {

enum class ProgressStyle { Auto, Bar, Json, None };

/// Shows one render. Used by one thread at a time; exactly one of Done and Failed is called, at the end.
class Progress {
public:
    Progress() = default;
    virtual ~Progress() = default;
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    virtual void Update(const RenderProgress& /*progress*/) {}
    /// Makes room for a message on standard error.
    virtual void Clear() {}
    virtual void Done(const RenderResult& /*result*/, int /*exitCode*/) {}
    virtual void Failed(const std::string& /*error*/, int /*exitCode*/) {}
};

/// Auto is a bar when standard error is a terminal, else nothing.
std::unique_ptr<Progress> MakeProgress(ProgressStyle style);

/// Refuses JSON on standard output where that is the output too: the same file, pipe or device. Throws Error
/// (Usage).
void RequireOwnOutput(ProgressStyle style, const std::string& output);

/// A bar of this many characters at most: percentage, frames, speed and time left, what does not fit is left
/// out.
std::string BarText(const RenderProgress& progress, size_t columns);

/// Share of the work done, 0 to 100; nothing when the end is not known.
std::optional<double> Percent(const RenderProgress& progress);

} // namespace aveffect
