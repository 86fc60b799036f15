#include "host/media/left_out.h"

#include <map>

namespace aveffect {

bool IsChapters(const AVFormatContext& input, const AVStream& stream) {
    return input.nb_chapters > 0 && stream.codecpar->codec_id == AV_CODEC_ID_BIN_DATA &&
           stream.codecpar->codec_tag == MKTAG('t', 'e', 'x', 't');
}

namespace {

std::string DataName(const AVCodecParameters& data) {
    if (data.codec_tag == MKTAG('t', 'm', 'c', 'd')) return "timecode";
    return data.codec_id == AV_CODEC_ID_NONE || data.codec_id == AV_CODEC_ID_BIN_DATA
               ? "unknown"
               : avcodec_get_name(data.codec_id);
}

// Empty for what is not spoken of here.
std::string NameOf(const AVFormatContext& input, const AVStream& stream, bool takesPictures) {
    const AVCodecParameters& codec = *stream.codecpar;
    switch (codec.codec_type) {
    case AVMEDIA_TYPE_VIDEO:
        if (stream.disposition & AV_DISPOSITION_ATTACHED_PIC)
            return std::string("a cover picture (") + avcodec_get_name(codec.codec_id) + ")";
        return takesPictures
                   ? std::string("another picture stream (") + avcodec_get_name(codec.codec_id) + ")"
                   : std::string();
    case AVMEDIA_TYPE_DATA:
    case AVMEDIA_TYPE_UNKNOWN:
        return IsChapters(input, stream) ? std::string() : "a data stream (" + DataName(codec) + ")";
    default:
        if (takesPictures) return {};
        return (codec.codec_type == AVMEDIA_TYPE_SUBTITLE ? std::string("subtitles (") : "an attachment (") +
               avcodec_get_name(codec.codec_id) + ")";
    }
}

} // namespace

std::string LeftOutText(const AVFormatContext& input, const SourceRequest& request,
                        const AVStream* pictures) {
    if (request.NamesStreams()) return {};
    std::map<std::string, int> counts;
    for (unsigned index = 0; index < input.nb_streams; ++index) {
        const AVStream& stream = *input.streams[index];
        if (&stream == pictures || stream.codecpar->codec_type == AVMEDIA_TYPE_AUDIO) continue;
        const std::string name = NameOf(input, stream, pictures != nullptr);
        if (!name.empty()) ++counts[name];
    }
    std::string text;
    for (const auto& [name, count] : counts)
        text +=
            (text.empty() ? "" : ", ") + name + (count > 1 ? " (" + std::to_string(count) + " times)" : "");
    return text.empty() ? text : "left out of the output: " + text;
}

} // namespace aveffect
