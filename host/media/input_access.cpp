#include "host/media/input_access.h"

#include <algorithm>
#include <string_view>

#include "host/media/input.h"
#include "host/support/error.h"

namespace aveffect {
namespace {

/// Formats that are lists of other files or hosts, programs, or half of a pair of files.
constexpr std::string_view kNamesOthers[] = {"concat",   "dash",        "hls",    "imf",
                                             "rtp",      "rtsp",        "sap",    "sdp",
                                             "avisynth", "vapoursynth", "vobsub", "webm_dash_manifest"};

/// A list, as the library wants it.
std::string SelfContained() {
    std::string names;
    void* place = nullptr;
    while (const AVInputFormat* const format = av_demuxer_iterate(&place))
        if (std::ranges::find(kNamesOthers, format->name) == std::end(kNamesOthers))
            names += (names.empty() ? "" : ",") + std::string(format->name);
    return names;
}

bool ReachesFiles(const std::string& path) {
    return IsLocalPath(path) || path.find("file:") != std::string::npos;
}

/// "http" in "http://...", "subfile" in "subfile,,start,...".
std::string SchemeOf(const std::string& url) { return url.substr(0, url.find_first_of(":,")); }

std::string Protocols(const SourceRequest& request) {
    if (IsLocalPath(request.path)) return request.format.empty() ? "file" : "file,crypto,data";
    const std::string scheme = SchemeOf(request.path);
    if (ReachesFiles(request.path)) return scheme + ",file";
    return scheme + (scheme.starts_with("http") ? ",http,https" : "") +
           ",tcp,udp,tls,rtp,srtp,httpproxy,crypto,data";
}

/// What the library takes a file for; empty for what can't be asked again.
std::string FormatFound(const std::string& path) {
    AVIOContext* file = nullptr;
    if (avio_open(&file, ("file:" + path).c_str(), AVIO_FLAG_READ) < 0) return {};
    const AVInputFormat* format = nullptr;
    av_probe_input_buffer2(file, &format, path.c_str(), nullptr, 0, 0);
    avio_closep(&file);
    return format ? format->name : "";
}

} // namespace

void SetAccess(const SourceRequest& request, AVDictionary** options) {
    static const std::string kSelfContained = SelfContained();
    av_dict_set(options, "protocol_whitelist", Protocols(request).c_str(), 0);
    if (request.format.empty() && ReachesFiles(request.path))
        av_dict_set(options, "format_whitelist", kSelfContained.c_str(), 0);
}

const AVInputFormat* FormatAskedFor(const SourceRequest& request) {
    if (request.format.empty()) return nullptr;
    const AVInputFormat* const format = av_find_input_format(request.format.c_str());
    if (!format)
        throw Error(ErrorKind::Input, request.path + "?format=" + request.format +
                                          ": there is no such format; `ffmpeg -demuxers` lists them");
    return format;
}

void SayRefusedFormat(const SourceRequest& request, int code, const std::string& line) {
    const bool file = IsLocalPath(request.path);
    if (code != AVERROR(EINVAL) || !line.starts_with("Format not on whitelist")) return;
    const std::string found = file ? FormatFound(request.path) : "";
    throw Error(ErrorKind::Input,
                request.path + " names other files" + (found.empty() ? "" : " (" + found + ")") +
                    ", which are opened only when its format is asked for: " + request.path +
                    "?format=" + (found.empty() ? "NAME" : found));
}

} // namespace aveffect
