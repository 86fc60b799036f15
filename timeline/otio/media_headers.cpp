#include "timeline/otio/media_headers.h"

#include <string_view>

extern "C" {
#include <libavformat/avformat.h>
}

#include "host/media/input.h"
#include "host/media/source_request.h"
#include "host/support/error.h"

namespace aveffect {

namespace {

/// A demuxer of single pictures, or of formats that hold one.
bool HoldsOnePicture(const AVFormatContext& input, const std::string& path) {
    const std::string_view name = input.iformat->name;
    return (name.starts_with("image2") && !IsNumbered(path)) || name.ends_with("_pipe");
}

std::optional<FilmTime> LengthOf(const AVFormatContext& input, const AVStream& stream) {
    if (stream.duration > 0) return FilmTime(stream.duration, av_inv_q(stream.time_base));
    if (input.duration > 0) return FilmTime(input.duration, {AV_TIME_BASE, 1});
    return {};
}

MediaHeader Read(const std::string& url) {
    const SourceRequest request = ParseSourceUrl(url);
    ReadInterrupt interrupt;
    const InputContextPtr input = OpenInput(request.path, interrupt, request.rate);
    MediaHeader header;
    AVStream* const pictures = FindPictures(*input, request);
    if (pictures) {
        header.pictures = true;
        header.still = HoldsOnePicture(*input, request.path);
        header.rate = av_guess_frame_rate(input.get(), pictures, nullptr);
        header.width = pictures->codecpar->width;
        header.height = pictures->codecpar->height;
        if (!header.still) header.seen = LengthOf(*input, *pictures);
    }
    if (const AVStream* const sound = FindSound(*input, request, pictures)) {
        header.sound = true;
        header.heard = LengthOf(*input, *sound);
    }
    return header;
}

} // namespace

const MediaHeader& MediaHeaders::Of(const std::string& url) {
    const auto [place, added] = m_headers.try_emplace(url);
    if (!added) return place->second;
    try {
        place->second = Read(url);
    } catch (const Error& wrong) {
        place->second.fault = wrong.what();
    }
    return place->second;
}

} // namespace aveffect
