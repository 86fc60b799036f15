#include "host/output/stream_copy.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "host/support/error.h"

namespace aveffect {
namespace {

// Tags that describe the input file rather than the work.
constexpr std::array<std::string_view, 9> kFileTags = {"encoder",           "major_brand", "minor_version",
                                                       "compatible_brands", "rotate",      "BPS",
                                                       "alpha_mode",        "vendor_id",   "timecode"};

bool IsFileTag(std::string_view key) {
    return std::ranges::find(kFileTags, key) != kFileTags.end() || key.starts_with("DURATION") ||
           key.starts_with("NUMBER_OF_") || key.starts_with("_STATISTICS") || key.starts_with("BPS-");
}

} // namespace

void CopyTags(AVDictionary** to, const AVDictionary* from) {
    const AVDictionaryEntry* tag = nullptr;
    while ((tag = av_dict_get(from, "", tag, AV_DICT_IGNORE_SUFFIX)))
        if (!IsFileTag(tag->key)) RequireMemory(av_dict_set(to, tag->key, tag->value, 0), tag->key);
}

AVStream* AddCopiedStream(Container& output, const AVStream& stream) {
    AVStream* copy = output.AddStream();
    if (avcodec_parameters_copy(copy->codecpar, stream.codecpar) < 0) throw NoMemory("out of memory");
    // The tag is the container's name for the codec; another container has its own.
    const AVCodecTag* const* tags = output.Format().oformat->codec_tag;
    unsigned tag = 0;
    if (tags && av_codec_get_id(tags, stream.codecpar->codec_tag) != stream.codecpar->codec_id &&
        av_codec_get_tag2(tags, stream.codecpar->codec_id, &tag))
        copy->codecpar->codec_tag = 0;
    copy->time_base = stream.time_base;
    copy->disposition = stream.disposition;
    CopyTags(&copy->metadata, stream.metadata);
    return copy;
}

AVStream* AddCopiedPictures(Container& output, const AVStream& stream) {
    AVStream* copy = AddCopiedStream(output, stream);
    copy->sample_aspect_ratio = stream.sample_aspect_ratio;
    copy->avg_frame_rate = stream.avg_frame_rate;
    copy->r_frame_rate = stream.r_frame_rate;
    if (const AVDictionaryEntry* alpha = av_dict_get(stream.metadata, "alpha_mode", nullptr, 0))
        RequireMemory(av_dict_set(&copy->metadata, alpha->key, alpha->value, 0), alpha->key);
    return copy;
}

void CopyChapters(Container& output, const AVFormatContext& input, const SpanLimits& limits) {
    if (input.nb_chapters == 0 || limits.frameLimit) return;
    auto** chapters = static_cast<AVChapter**>(av_calloc(input.nb_chapters, sizeof(AVChapter*)));
    if (!chapters) throw NoMemory("no memory for chapters");
    output.Format().chapters = chapters;
    const int64_t start =
        input.start_time == AV_NOPTS_VALUE ? 0 : av_rescale_q(input.start_time, kMicroseconds, kMilliseconds);
    for (unsigned index = 0; index < input.nb_chapters; ++index) {
        const AVChapter& source = *input.chapters[index];
        const int64_t from = limits.fromMs.value_or(0);
        const int64_t to = limits.toMs.value_or(INT64_MAX);
        const int64_t begin = av_rescale_q(source.start, source.time_base, kMilliseconds) - start;
        const int64_t end = std::min(to, av_rescale_q(source.end, source.time_base, kMilliseconds) - start);
        if (begin >= to || end <= from) continue;
        auto* chapter = static_cast<AVChapter*>(av_mallocz(sizeof(AVChapter)));
        if (!chapter) throw NoMemory("no memory for a chapter");
        chapters[output.Format().nb_chapters++] = chapter; // which frees it, whatever comes
        chapter->id = source.id;
        chapter->time_base = kMilliseconds;
        chapter->start = std::max<int64_t>(0, begin - from);
        chapter->end = end - from;
        CopyTags(&chapter->metadata, source.metadata);
    }
}

DamageReport CopyDamage(const std::string& path, int64_t refused) {
    DamageReport report;
    if (refused > 0)
        report.Add(path, std::to_string(refused) + (refused == 1 ? " packet" : " packets") +
                             " could not be copied");
    return report;
}

} // namespace aveffect
