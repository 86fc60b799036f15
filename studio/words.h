#pragma once
/// What the page shows and what the command line does are one: everything that is rendered goes by the words
/// that are told.
#include <string>
#include <vector>

#include "studio/requests.h"

namespace aveffect {

/// Behind `aveffect frame`.
std::vector<std::string> FrameWords(const std::string& input, const std::string& output, int64_t atMs,
                                    const StudioChain& chain);
/// Behind `aveffect render`.
std::vector<std::string> RenderWordsOf(const std::string& input, const std::string& output,
                                       const StudioChain& chain, const RenderWords& options);

/// A command for a POSIX shell: what is more than a plain word is quoted.
std::string ShellText(const std::string& command, const std::vector<std::string>& words);

} // namespace aveffect
