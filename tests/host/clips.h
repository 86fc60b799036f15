#pragma once
/// Clips made at test time with the installed programs, and what those programs see in a file.
#include <atomic>
#include <filesystem>
#include <string>
#include <vector>

#include "host/jobs/render.h"

namespace clips {

using Bytes = std::vector<unsigned char>;

/// Cancels nothing.
inline const std::atomic<bool> kGoOn{false};

/// A directory that goes with the object.
class TemporaryDirectory {
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    std::string operator/(const std::string& name) const { return (m_path / name).string(); }
    /// Names of all entries, hidden ones too, sorted.
    std::vector<std::string> Entries() const;

private:
    std::filesystem::path m_path;
};

/// Standard output of a shell command; throws when it fails.
Bytes Run(const std::string& command);
std::string RunText(const std::string& command);

/// Makes a clip from a moving test picture: "testsrc2" of that size, rate and length with these encoding
/// options.
std::string Make(const std::string& path, const std::string& size, int rate, double seconds,
                 const std::string& options, bool sound = false);

/// Makes 0.7 s of two tones that move against each other, 48 kHz stereo unless the options say otherwise.
std::string MakeSound(const std::string& path, const std::string& options);
/// A file's decoded sound, interleaved, as these options of the ffmpeg program have it.
Bytes DecodeSound(const std::string& path, const std::string& form = "-f s16le -ac 2 -ar 48000");

/// All decoded pictures of a clip, in the stored format, one after the other.
Bytes Decode(const std::string& path, const std::string& inputOptions = "");
/// ffprobe's value of a picture stream's entry ("pix_fmt", "color_range").
std::string Probe(const std::string& path, const std::string& entry);
/// One line a packet of the stream ("v:0"): these packet entries, comma-separated.
std::vector<std::string> Packets(const std::string& path, const std::string& stream,
                                 const std::string& entries);
/// Checksum of a stream's packets as they are stored.
std::string PacketSum(const std::string& path, const std::string& stream);

/// What invert makes of decoded YUV pictures whose chroma is rounded up: 255 - x in the planes 0 to 2.
Bytes InvertYuv(Bytes pictures, int width, int height, int chromaShiftX, int chromaShiftY, bool alpha);

/// Renders with the plug-in that was built; errors come through.
aveffect::RenderResult Render(const aveffect::RenderOptions& options, const std::atomic<bool>& cancel);
aveffect::RenderResult Render(const std::string& input, const std::string& output,
                              const std::string& codec = "",
                              const std::vector<std::string>& effects = {"invert"});
const aveffect::Plugin& ThePlugin();

/// The kind and text of the error that a call ends with; kind and text of no error when there is none.
struct Failure {
    bool failed = false;
    aveffect::ErrorKind kind{};
    std::string text;
};
template <typename Call>
Failure FailureOf(Call call) {
    try {
        call();
    } catch (const aveffect::Error& error) {
        return {true, error.Kind(), error.what()};
    }
    return {};
}

/// The call ends with an error of that kind, in one line with that word.
void ExpectFailure(const Failure& failure, aveffect::ErrorKind kind, const std::string& word);

} // namespace clips
