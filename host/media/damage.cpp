#include "host/media/damage.h"

#include <algorithm>
#include <string_view>

#include "host/media/file_end.h"
#include "host/support/av_owner.h"

namespace aveffect {
namespace {

/// The file that a numbered picture comes from; empty for everything else.
std::string FileOf(const AVPacket& packet) {
    size_t size = 0;
    const uint8_t* words = av_packet_get_side_data(&packet, AV_PKT_DATA_STRINGS_METADATA, &size);
    AVDictionary* said = nullptr;
    if (!words || av_packet_unpack_dictionary(words, size, &said) < 0) return {};
    const AVDictionaryEntry* path = av_dict_get(said, "lavf.image2dec.source_path", nullptr, 0);
    std::string file = path ? path->value : "";
    av_dict_free(&said);
    constexpr std::string_view kLocal = "file:";
    return file.starts_with(kLocal) ? file.substr(kLocal.size()) : file;
}

/// Bytes of a block of sound in files that are nothing but blocks; 0 for others. The last packet of these
/// files is shorter than the others, and whole as long as its last block is.
int BlockBytes(const AVCodecParameters& sound) {
    switch (sound.codec_id) {
    case AV_CODEC_ID_ADPCM_ADX:
        return 18 * sound.ch_layout.nb_channels;
    case AV_CODEC_ID_APTX:
        return 4;
    case AV_CODEC_ID_APTX_HD:
        return 6;
    default:
        return 0;
    }
}

bool IsCut(const AVPacket& packet, const AVStream& stream) {
    const int block = BlockBytes(*stream.codecpar);
    return (packet.flags & AV_PKT_FLAG_CORRUPT) && !(block > 0 && packet.size % block == 0);
}

} // namespace

void DamageReport::Add(const std::string& subject, const std::string& clause) {
    auto line = std::ranges::find(m_lines, subject, [](const auto& each) { return each.first; });
    if (line == m_lines.end()) line = m_lines.insert(line, {subject, {}});
    std::vector<std::string>& clauses = line->second;
    if (std::ranges::find(clauses, clause) == clauses.end()) clauses.push_back(clause);
}

void DamageReport::Add(const DamageReport& other) {
    for (const auto& [subject, clauses] : other.m_lines)
        for (const std::string& clause : clauses) Add(subject, clause);
}

std::optional<std::string> DamageReport::Text() const {
    if (Empty()) return std::nullopt;
    std::string text;
    for (const auto& [subject, clauses] : m_lines) {
        if (!text.empty()) text += '\n';
        for (const char letter : subject) text += letter == '\n' ? ' ' : letter; // of a file's name
        for (const std::string& clause : clauses)
            text += (&clause == &clauses.front() ? ": " : "; ") + clause;
    }
    return text;
}

void InputDamage::Note(const AVPacket& packet, const AVStream& stream) {
    if (IsCut(packet, stream)) ++m_cutPackets;
    const std::string file = FileOf(packet);
    if (file.empty() || file == m_path) return;
    if (const auto missing = MissingEnd(file)) m_parts.Add(file, *missing);
}

DamageReport InputDamage::Report() const {
    DamageReport report;
    if (const auto missing = MissingEnd(m_path)) report.Add(m_path, *missing);
    report.Add(m_parts);
    if (m_lines.Count() > 0) report.Add(m_path, "reading it reports \"" + m_lines.First() + "\"");
    if (m_readError) report.Add(m_path, "it can't be read to its end: " + AvText(m_readError));
    if (m_cutPackets > 0)
        report.Add(m_path, std::to_string(m_cutPackets) +
                               (m_cutPackets == 1 ? " part of it is" : " parts of it are") +
                               " damaged or cut off");
    return report;
}

} // namespace aveffect
