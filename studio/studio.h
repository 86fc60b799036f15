#pragma once
/// A page for the browser of the same machine, on which settings of effects are found by looking.
#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "host/jobs/render.h"

namespace aveffect {

/// What the command line makes of its words; both throw Error (Usage).
struct StudioCommands {
    std::function<RenderOptions(const std::vector<std::string>&)> render; ///< words behind `aveffect render`
    std::function<FrameOptions(const std::vector<std::string>&)> frame;   ///< likewise
};

struct StudioOptions {
    std::vector<std::string> files;   ///< clips, pictures, sound and at most one film, opened at the start
    std::vector<std::string> folders; ///< files are read and written below these and those of the files
    std::string scratch;              ///< an existing folder for what is made to be shown, emptied meanwhile
    std::string catalogue;            ///< all effects as JSON
    std::string version;
    StudioCommands commands;
    int port = 0;              ///< 0: any that is free
    bool endsWithPage = false; ///< a while after the last page was closed
};

/// A server that listens already, so that a browser may be sent to it.
class Studio {
public:
    /// Throws Error (Usage, Input, Output).
    explicit Studio(StudioOptions options);
    ~Studio();
    Studio(const Studio&) = delete;
    Studio& operator=(const Studio&) = delete;

    /// With the token without which nobody is answered.
    std::string Address() const;
    /// Folders, links followed, that are read and written.
    const std::vector<std::string>& Roots() const;

    /// Answers until the flag is set or, where that is asked for, no page is left. Throws Error.
    void Serve(const Plugin& plugin, const std::atomic<bool>& cancel);

private:
    class Work;
    std::unique_ptr<Work> m_work;
};

} // namespace aveffect
