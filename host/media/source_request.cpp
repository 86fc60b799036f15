#include "host/media/source_request.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <map>
#include <numeric>
#include <string_view>
#include <unistd.h>

#include "host/media/input.h"
#include "host/support/error.h"

namespace aveffect {
namespace {

/// Set by hosts in stream numbers; not part of the index.
constexpr unsigned kStreamFlag = 1u << 29;

template <typename Number>
std::optional<Number> Parse(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

std::optional<int> StreamIndex(std::string_view text) {
    const auto number = Parse<unsigned>(text);
    if (!number || (*number & ~kStreamFlag) > INT_MAX) return std::nullopt;
    return static_cast<int>(*number & ~kStreamFlag);
}

std::string LetterOf(AVMediaType kind) {
    const char* const name = av_get_media_type_string(kind);
    return std::string(1, name ? name[0] : '?');
}

/// "0 is v:0 (h264), 1 is a:0 (aac)"
std::string ListStreams(const AVFormatContext& input) {
    std::string text;
    std::map<AVMediaType, int> counts;
    for (unsigned index = 0; index < input.nb_streams; ++index) {
        const AVCodecParameters& codec = *input.streams[index]->codecpar;
        text += (text.empty() ? "" : ", ") + std::to_string(index) + " is " + LetterOf(codec.codec_type) +
                ":" + std::to_string(counts[codec.codec_type]++) + " (" + avcodec_get_name(codec.codec_id) +
                ")";
    }
    return text;
}

AVStream* RequireStream(AVFormatContext& input, const std::string& path, int index, AVMediaType type) {
    AVStream* stream = index < static_cast<int>(input.nb_streams) ? input.streams[index] : nullptr;
    if (stream && stream->codecpar->codec_type == type) return stream;
    throw Error(ErrorKind::Input, path + ": stream " + std::to_string(index) + " is no " +
                                      av_get_media_type_string(type) + " stream; " + ListStreams(input));
}

/// The stream's place in the file; absent when there is none.
std::optional<unsigned> Find(const AVFormatContext& input, const StreamChoice& choice) {
    int before = 0;
    for (unsigned index = 0; index < input.nb_streams; ++index) {
        const bool counts =
            choice.kind == AVMEDIA_TYPE_UNKNOWN || input.streams[index]->codecpar->codec_type == choice.kind;
        if (counts && before++ == choice.index) return index;
    }
    return std::nullopt;
}

std::vector<AVStream*> Chosen(const AVFormatContext& input, const SourceRequest& request, AVMediaType kind) {
    std::vector<AVStream*> streams;
    for (const StreamChoice& choice : request.selection.chosen) {
        const std::optional<unsigned> index = Find(input, choice);
        if (index && input.streams[*index]->codecpar->codec_type == kind)
            streams.push_back(input.streams[*index]);
    }
    return streams;
}

} // namespace

SourceRequest ParseSourceUrl(const std::string& url) {
    SourceRequest request{url};
    const size_t mark = url.rfind('?');
    if (mark == std::string::npos || access(url.c_str(), F_OK) == 0) return request;
    std::string_view query = std::string_view(url).substr(mark + 1);
    while (!query.empty()) {
        const std::string_view pair = query.substr(0, query.find('&'));
        query.remove_prefix(std::min(query.size(), pair.size() + 1));
        const size_t equals = pair.find('=');
        if (equals == std::string_view::npos) continue;
        const std::string_view key = pair.substr(0, equals), value = pair.substr(equals + 1);
        if (key == "fps" && IsLocalPath(url)) {
            request.rate = ParsePictureRate(value);
            if (!request.rate)
                throw Error(ErrorKind::Input,
                            url + ": fps=" + std::string(value) + " is no rate; 25, 29.97 or 30000/1001 are");
        }
        if (key == "format" && IsLocalPath(url)) request.format = value;
        if (key != "vstreamid" && key != "astreamid") continue;
        const std::optional<int> index = StreamIndex(value);
        if (!index) throw Error(ErrorKind::Input, url + ": " + std::string(pair) + " names no stream");
        (key == "vstreamid" ? request.videoStream : request.audioStream) = index;
    }
    // Other keys of a protocol's own URL are the server's.
    if (IsLocalPath(url) || request.videoStream || request.audioStream) request.path = url.substr(0, mark);
    if (request.rate && !IsNumbered(request.path))
        throw Error(ErrorKind::Input, url + ": fps is for numbered pictures such as shots/%04d.png");
    return request;
}

SourceRequest SourceRequest::At(const std::optional<AVRational>& numberedRate) const {
    SourceRequest request = *this;
    if (!request.rate) request.rate = numberedRate;
    return request;
}

std::optional<AVRational> ParsePictureRate(std::string_view text) {
    constexpr double kFastest = 1000, kThousandths = 1000, kHundredth = 0.01;
    constexpr int64_t kLongest = 1'000'000; // numbers of a fraction
    const size_t slash = text.find('/');
    int64_t pictures = 0, seconds = 0;
    if (slash != std::string_view::npos) {
        pictures = Parse<int64_t>(text.substr(0, slash)).value_or(0);
        seconds = Parse<int64_t>(text.substr(slash + 1)).value_or(0);
    } else if (const auto rate = Parse<double>(text); rate && *rate > 0 && *rate <= kFastest) {
        const double whole = std::ceil(*rate);
        const bool broadcast = whole != *rate && std::abs(whole * 1000 / 1001 - *rate) < kHundredth / 2;
        pictures = broadcast ? std::llround(whole) * 1000 : std::llround(*rate * kThousandths);
        seconds = broadcast ? 1001 : 1000;
    }
    const bool right = pictures >= 1 && seconds >= 1 && pictures <= kLongest && seconds <= kLongest &&
                       static_cast<double>(pictures) <= kFastest * static_cast<double>(seconds);
    if (!right) return std::nullopt;
    const int64_t divisor = std::gcd(pictures, seconds);
    return AVRational{static_cast<int>(pictures / divisor), static_cast<int>(seconds / divisor)};
}

SourceRequest ParseSourceUrl(const std::string& url, const StreamSelection& selection) {
    SourceRequest request = ParseSourceUrl(url);
    request.selection = selection;
    return request;
}

void RequireStreams(const AVFormatContext& input, const SourceRequest& request) {
    for (const StreamChoice& choice : request.selection.chosen) {
        if (Find(input, choice)) continue;
        const std::string kind = choice.kind == AVMEDIA_TYPE_UNKNOWN ? "" : LetterOf(choice.kind) + ":";
        throw Error(ErrorKind::Usage, request.path + " has no stream " + kind + std::to_string(choice.index) +
                                          "; " + ListStreams(input));
    }
}

bool IsWanted(const AVFormatContext& input, const SourceRequest& request, const AVStream& stream) {
    const AVMediaType kind = stream.codecpar->codec_type;
    if (kind == AVMEDIA_TYPE_AUDIO && !request.selection.sound) return false;
    if (kind == AVMEDIA_TYPE_SUBTITLE && !request.selection.subtitles) return false;
    if (kind == AVMEDIA_TYPE_AUDIO && request.audioStream) return stream.index == *request.audioStream;
    const std::vector<AVStream*> chosen = Chosen(input, request, kind);
    return chosen.empty() || std::ranges::find(chosen, &stream) != chosen.end();
}

AVStream* FindPictures(AVFormatContext& input, const SourceRequest& request) {
    if (request.videoStream)
        return RequireStream(input, request.path, *request.videoStream, AVMEDIA_TYPE_VIDEO);
    const std::vector<AVStream*> chosen = Chosen(input, request, AVMEDIA_TYPE_VIDEO);
    if (!chosen.empty()) return chosen.front();
    const int index = av_find_best_stream(&input, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (index < 0 || (input.streams[index]->disposition & AV_DISPOSITION_ATTACHED_PIC)) return nullptr;
    return input.streams[index];
}

AVStream* FindSound(AVFormatContext& input, const SourceRequest& request, const AVStream* pictures) {
    if (request.audioStream)
        return RequireStream(input, request.path, *request.audioStream, AVMEDIA_TYPE_AUDIO);
    if (!request.selection.sound) return nullptr;
    const std::vector<AVStream*> chosen = Chosen(input, request, AVMEDIA_TYPE_AUDIO);
    if (!chosen.empty()) return chosen.front();
    const int index =
        av_find_best_stream(&input, AVMEDIA_TYPE_AUDIO, -1, pictures ? pictures->index : -1, nullptr, 0);
    return index < 0 ? nullptr : input.streams[index];
}

} // namespace aveffect
