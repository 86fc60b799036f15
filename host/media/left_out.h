#pragma once
/// What an output does not take over from its input, in words.
#include <string>

#include "host/media/source_request.h"

namespace aveffect {

/// Whether the stream is what MOV and MP4 keep the file's chapters in.
bool IsChapters(const AVFormatContext& input, const AVStream& stream);

/// The pictures beside those that are chosen, covers and data, as one warning; empty where there are none,
/// or where the request chooses streams itself.
/// Without chosen pictures sound alone is taken: subtitles and attachments are named too, pictures other than
/// covers are not. Chapters that a file keeps as a stream are none of them.
std::string LeftOutText(const AVFormatContext& input, const SourceRequest& request, const AVStream* pictures);

} // namespace aveffect
