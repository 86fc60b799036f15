#include "farm/picture_files.h"

#include <array>
#include <fstream>
#include <functional>
#include <sstream>
#include <system_error>

#include "host/media/input.h"
#include "host/output/output_file.h"
#include "host/support/error.h"
#include "host/support/whole_file.h"
#include "timeline/jobs/text_file.h"

namespace aveffect {

namespace files = std::filesystem;

namespace {

constexpr char kList[] = "SHA256SUMS";

using TakeBytes = std::function<void(const char*, size_t)>;

/// The checksum of a file, whose bytes may be taken along.
std::string SumOfFile(const files::path& path, const std::atomic<bool>& cancel, const TakeBytes& take) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw Error(ErrorKind::Input, path.string() + " can't be read");
    Digest digest;
    std::array<char, 1 << 16> bytes;
    while (file) {
        if (cancel) throw Error(ErrorKind::Interrupted, "interrupted");
        file.read(bytes.data(), bytes.size());
        const auto count = static_cast<size_t>(file.gcount());
        digest.Add(bytes.data(), count);
        if (take) take(bytes.data(), count);
    }
    if (file.bad()) throw Error(ErrorKind::Input, path.string() + " can't be read to its end");
    return digest.Text();
}

[[noreturn]] void ThrowSpoilt(const files::path& path) {
    throw Error(ErrorKind::Input,
                path.string() +
                    " is not what was rendered; remove its directory, and work on that chunk again");
}

} // namespace

std::string PicturePattern(const files::path& directory, const std::string& extension) {
    std::error_code wrong;
    files::create_directory(directory, wrong);
    if (wrong)
        throw Error(ErrorKind::Output,
                    "the directory " + directory.string() + " can't be made: " + wrong.message());
    return (directory / ("%d." + extension)).string();
}

PacketSum::Result SealPictures(const files::path& directory, const std::string& extension,
                               const std::atomic<bool>& cancel) {
    PacketSum::Result result;
    std::string list;
    for (;; ++result.packets) {
        const std::string name = std::to_string(result.packets + 1) + "." + extension;
        if (!files::exists(directory / name)) break;
        list.append(SumOfFile(directory / name, cancel, {})).append("  ").append(name).append("\n");
    }
    WriteTextFile((directory / kList).string(), list, true, cancel);
    result.sum = DigestOf(list);
    return result;
}

int64_t BytesAt(const files::path& path) {
    std::error_code wrong;
    int64_t bytes = 0;
    if (files::is_directory(path, wrong)) {
        for (const auto& file : files::directory_iterator(path, wrong)) bytes += BytesAt(file.path());
    } else if (!wrong) {
        bytes = static_cast<int64_t>(files::file_size(path, wrong));
    }
    if (wrong == std::errc::no_such_file_or_directory) return 0;
    if (wrong) throw Error(ErrorKind::Input, path.string() + " can't be looked at: " + wrong.message());
    return bytes;
}

void CopyPictures(const files::path& directory, const PacketSum::Result& expected, const OutputPlan& output,
                  int64_t first, bool overwrite, const std::atomic<bool>& cancel) {
    const std::string list = WholeFile(directory / kList).value_or("");
    if (DigestOf(list) != expected.sum) ThrowSpoilt(directory / kList);
    std::istringstream lines(list);
    std::string sum, name;
    for (int64_t number = first; lines >> sum >> name; ++number) {
        const std::string target = NumberedName(output.target, static_cast<int>(number));
        OutputFile::Check(target, {}, overwrite);
        OutputFile picture(target, overwrite, cancel);
        const auto copy = [&picture](const char* bytes, size_t count) {
            avio_write(picture.Io(), reinterpret_cast<const uint8_t*>(bytes), static_cast<int>(count));
        };
        if (SumOfFile(directory / name, cancel, copy) != sum) ThrowSpoilt(directory / name);
        picture.Require(0, "writing");
        picture.Publish();
    }
}

} // namespace aveffect
