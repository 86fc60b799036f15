#pragma once
/// What is found wrong with inputs while they are read.
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/support/log_capture.h"

struct AVPacket;
struct AVStream;

namespace aveffect {

/// A line for each file, and for each decoder, that something is wrong with. Used by one thread at a time.
class DamageReport {
public:
    /// The subject begins the line; what is said of it twice counts once.
    void Add(const std::string& subject, const std::string& clause);
    void Add(const DamageReport& other);

    bool Empty() const noexcept { return m_lines.empty(); }
    /// The lines, with line breaks between them; absent when all is well.
    std::optional<std::string> Text() const;

private:
    std::vector<std::pair<std::string, std::vector<std::string>>> m_lines; ///< subjects with their clauses
};

/// Of one input's container. Its error lines come from any thread, everything else is used by one at a time.
class InputDamage {
public:
    explicit InputDamage(std::string path)
        : m_path(std::move(path)) {}

    const std::string& Path() const noexcept { return m_path; }
    ErrorLines& Lines() noexcept { return m_lines; }
    void Note(const AVPacket& packet, const AVStream& stream);
    /// What reading ended with, if not with the input's end.
    void NoteEnd(int code) noexcept { m_readError = code; }
    /// Packets that were read so far count no more.
    void ForgetPackets() noexcept { m_cutPackets = 0; }

    DamageReport Report() const;

private:
    std::string m_path;
    ErrorLines m_lines;
    DamageReport m_parts; ///< of the files that a pattern stands for
    int64_t m_cutPackets = 0;
    int m_readError = 0;
};

} // namespace aveffect
