#pragma once
/// Source URLs: a file, and which of its streams are meant.
#include <optional>
#include <string>

#include "host/support/av_owner.h"

namespace aveffect {

/// What a source URL asks for: the file, and streams by their index in it.
struct SourceRequest {
    std::string path; ///< of a file, or a protocol URL
    std::optional<int> videoStream = {}, audioStream = {};
};

/// Takes a URL apart: a path or protocol URL, optionally followed by "?" and key=value pairs joined by "&",
/// of which "vstreamid" and "astreamid" select streams (bit 29 of the number is a flag and not part of the
/// index). A '?' that belongs to an existing file's name stays part of it. Throws Error (Input).
SourceRequest ParseSourceUrl(const std::string& url);

/// The input's pictures, or null when it has none: the stream that is asked for, else the one that a player
/// would show; cover art does not count then. Throws Error (Input) when the stream asked for holds no
/// pictures.
AVStream* FindPictures(AVFormatContext& input, const SourceRequest& request);

/// The same for its sound; without a wish the stream that goes with the pictures, which may be null.
AVStream* FindSound(AVFormatContext& input, const SourceRequest& request, const AVStream* pictures);

} // namespace aveffect
