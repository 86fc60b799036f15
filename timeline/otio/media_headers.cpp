#include "timeline/otio/media_headers.h"

#include <algorithm>
#include <atomic>
#include <string_view>
#include <thread>
#include <utility>

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

MediaHeader Open(const std::string& url, const std::atomic<bool>* cancel) {
    const SourceRequest request = ParseSourceUrl(url);
    ReadInterrupt interrupt{cancel, std::nullopt};
    const InputContextPtr input = OpenInput(request, interrupt);
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

MediaHeader Read(const std::string& url, const std::atomic<bool>* cancel) {
    try {
        return Open(url, cancel);
    } catch (const Error& wrong) {
        MediaHeader header;
        header.fault = wrong.what();
        return header;
    }
}

} // namespace

const MediaHeader& MediaHeaders::Of(const std::string& url) {
    const auto [place, added] = m_headers.try_emplace(url);
    if (added) place->second = Read(url, m_cancel);
    return place->second;
}

void MediaHeaders::Prepare(const std::vector<std::string>& urls) {
    std::vector<std::pair<const std::string, MediaHeader>*> wanted;
    for (const std::string& url : urls)
        if (const auto [place, added] = m_headers.try_emplace(url); added) wanted.push_back(&*place);
    std::atomic<size_t> next = 0;
    const auto work = [&] {
        for (size_t index = next++; index < wanted.size(); index = next++)
            wanted[index]->second = Read(wanted[index]->first, m_cancel);
    };
    std::vector<std::jthread> others;
    const size_t threads = std::min<size_t>(wanted.size(), std::thread::hardware_concurrency());
    for (size_t count = 1; count < threads; ++count) others.emplace_back(work);
    work();
}

} // namespace aveffect
