#pragma once
/// Source URLs: a file, and which of its streams are meant.
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/support/av_owner.h"

namespace aveffect {

/// A stream by its place in the file or, with a kind, among those of its kind. From 0.
struct StreamChoice {
    AVMediaType kind = AVMEDIA_TYPE_UNKNOWN; ///< unknown: in the file
    int index = 0;
};

/// Which of an input's streams are taken.
struct StreamSelection {
    std::vector<StreamChoice> chosen; ///< of a kind of which none is chosen, those that are taken usually
    bool sound = true, subtitles = true;
};

/// What a source URL asks for: the file, and streams by their index in it.
struct SourceRequest {
    std::string path; ///< of a file, or a protocol URL
    std::optional<int> videoStream = {}, audioStream = {};
    StreamSelection selection = {};
    std::optional<AVRational> rate = {}; ///< of numbered pictures, a second; absent: 25
    std::string format =
        {}; ///< the library's name for the file's; empty: any but those that name other files

    /// Whether it says which streams are meant.
    bool NamesStreams() const { return videoStream || audioStream || !selection.chosen.empty(); }
    /// With a rate for what the URL leaves open.
    SourceRequest At(const std::optional<AVRational>& numberedRate) const;
};

/// Pictures a second, above 0 and up to 1000: "25", "29.97", "30000/1001". The usual rates that are 1000/1001
/// of a whole number may be rounded to hundredths. Absent for other texts.
std::optional<AVRational> ParsePictureRate(std::string_view text);

/// Takes a URL apart: a path or protocol URL, optionally followed by "?" and key=value pairs joined by "&",
/// of which "vstreamid" and "astreamid" select streams (bit 29 of the number is a flag and not part of the
/// index) and "fps" gives numbered pictures a rate, "format" a file's format. A '?' that belongs to an
/// existing file's name stays part of it. Throws Error (Input).
SourceRequest ParseSourceUrl(const std::string& url);

/// The same with a selection, for what the URL leaves open.
SourceRequest ParseSourceUrl(const std::string& url, const StreamSelection& selection);

/// Throws Error (Input) that tells what there is when a chosen stream is not in the input.
void RequireStreams(const AVFormatContext& input, const SourceRequest& request);

/// Whether a stream of sound or subtitles beside the pictures is one that is asked for.
bool IsWanted(const AVFormatContext& input, const SourceRequest& request, const AVStream& stream);

/// The input's pictures, or null when it has none: the stream that is asked for, else the one that a player
/// would show; cover art does not count then. Throws Error (Input) when the stream asked for holds no
/// pictures.
AVStream* FindPictures(AVFormatContext& input, const SourceRequest& request);

/// The same for its sound; without a wish the stream that goes with the pictures, which may be null. Null
/// where no sound is wanted.
AVStream* FindSound(AVFormatContext& input, const SourceRequest& request, const AVStream* pictures);

} // namespace aveffect
