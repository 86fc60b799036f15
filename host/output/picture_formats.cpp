#include "host/output/picture_formats.h"

#include <algorithm>
#include <initializer_list>
#include <span>
#include <string_view>

namespace aveffect {
namespace {

struct PictureHolding {
    std::initializer_list<std::string_view> muxers;
    std::initializer_list<AVCodecID> codecs;
};

/// All that containers hold which do not tell the library. What it has no word on it writes all the same, as
/// data of some private kind that nobody reads.
const PictureHolding kHolds[] = {
    {{"mpegts"},
     {AV_CODEC_ID_MPEG1VIDEO, AV_CODEC_ID_MPEG2VIDEO, AV_CODEC_ID_MPEG4, AV_CODEC_ID_H264, AV_CODEC_ID_HEVC,
      AV_CODEC_ID_DIRAC, AV_CODEC_ID_CAVS}},
    // What the standard numbers beside these is written without the map that has the numbers: readers guess,
    // and fail with small clips.
    {{"mpeg", "vcd", "svcd", "dvd", "vob"}, {AV_CODEC_ID_MPEG1VIDEO, AV_CODEC_ID_MPEG2VIDEO}},
    {{"ogg", "ogv"}, {AV_CODEC_ID_THEORA, AV_CODEC_ID_VP8}},
    {{"mxf", "mxf_opatom"},
     {AV_CODEC_ID_MPEG2VIDEO, AV_CODEC_ID_H264, AV_CODEC_ID_JPEG2000, AV_CODEC_ID_DNXHD, AV_CODEC_ID_DVVIDEO,
      AV_CODEC_ID_PRORES}},
    {{"gxf"}, {AV_CODEC_ID_MPEG1VIDEO, AV_CODEC_ID_MPEG2VIDEO, AV_CODEC_ID_DVVIDEO, AV_CODEC_ID_MJPEG}},
    {{"swf"}, {AV_CODEC_ID_FLV1, AV_CODEC_ID_MJPEG, AV_CODEC_ID_FLASHSV}},
    {{"flv"},
     {AV_CODEC_ID_FLV1, AV_CODEC_ID_H264, AV_CODEC_ID_FLASHSV, AV_CODEC_ID_FLASHSV2, AV_CODEC_ID_VP6F,
      AV_CODEC_ID_VP6A}},
    // Pictures one after the other: those that tell where they end.
    {{"image2pipe"},
     {AV_CODEC_ID_BMP, AV_CODEC_ID_DPX, AV_CODEC_ID_JPEG2000, AV_CODEC_ID_JPEGLS, AV_CODEC_ID_LJPEG,
      AV_CODEC_ID_MJPEG, AV_CODEC_ID_MPEG1VIDEO, AV_CODEC_ID_MPEG2VIDEO, AV_CODEC_ID_MPEG4, AV_CODEC_ID_PBM,
      AV_CODEC_ID_PFM, AV_CODEC_ID_PGM, AV_CODEC_ID_PGMYUV, AV_CODEC_ID_PHM, AV_CODEC_ID_PNG, AV_CODEC_ID_PPM,
      AV_CODEC_ID_QOI, AV_CODEC_ID_XBM}},
};

/// What stands in a container's table, but is refused in the end, or can't be read from it again.
const PictureHolding kSpoils[] = {
    {{"mov"}, {AV_CODEC_ID_AV1, AV_CODEC_ID_VP9, AV_CODEC_ID_VP8}},
    {{"ismv", "psp"}, {AV_CODEC_ID_AV1, AV_CODEC_ID_VP9}},
    {{"matroska"}, {AV_CODEC_ID_RV10, AV_CODEC_ID_RV20}},
    {{"filmstrip"}, {AV_CODEC_ID_RAWVIDEO}},
    {{"wtv"},
     {AV_CODEC_ID_FFV1, AV_CODEC_ID_FFVHUFF, AV_CODEC_ID_MJPEG, AV_CODEC_ID_THEORA, AV_CODEC_ID_UTVIDEO,
      AV_CODEC_ID_ZLIB, AV_CODEC_ID_RAWVIDEO}},
};

const PictureHolding* Find(std::span<const PictureHolding> table, const OutputPlan& plan) {
    const auto found = std::ranges::find_if(table, [&](const PictureHolding& holding) {
        return std::ranges::find(holding.muxers, std::string_view(plan.muxer->name)) != holding.muxers.end();
    });
    return found == table.end() ? nullptr : &*found;
}

bool Lists(const PictureHolding& holding, AVCodecID codec) {
    return std::ranges::find(holding.codecs, codec) != holding.codecs.end();
}

} // namespace

bool Takes(const OutputPlan& plan, AVCodecID codec) {
    if (const PictureHolding* holds = Find(kHolds, plan)) return Lists(*holds, codec);
    const PictureHolding* spoils = Find(kSpoils, plan);
    return !(spoils && Lists(*spoils, codec)) &&
           avformat_query_codec(plan.muxer, codec, FF_COMPLIANCE_NORMAL) == 1;
}

} // namespace aveffect
