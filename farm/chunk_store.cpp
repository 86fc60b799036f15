#include "farm/chunk_store.h"

#include <unistd.h>

#include <random>
#include <system_error>

#include <nlohmann/json.hpp>

#include "farm/picture_files.h"
#include "host/support/error.h"
#include "host/support/whole_file.h"
#include "timeline/jobs/text_file.h"

namespace aveffect {

namespace files = std::filesystem;
using Json = nlohmann::ordered_json;

namespace {

const std::atomic<bool> kNever = false;

} // namespace

std::string ChunkReceipt::Text() const {
    const Json json = {{"file", file},       {"bytes", bytes}, {"packets", packets.packets},
                       {"sum", packets.sum}, {"delay", delay}, {"shift_us", shiftUs}};
    return json.dump() + "\n";
}

ChunkStore::ChunkStore(files::path folder, std::string extension)
    : m_folder(std::move(folder))
    , m_extension("." + std::move(extension)) {}

files::path ChunkStore::NameOf(int64_t part, const std::string& ending) const {
    constexpr size_t kDigits = 6;
    std::string number = std::to_string(part);
    number.insert(0, number.size() < kDigits ? kDigits - number.size() : 0, '0');
    return Chunks() / (number + ending);
}

std::string ChunkStore::TemporaryPath(int64_t part) const {
    std::error_code wrong;
    files::create_directories(Chunks(), wrong);
    if (wrong)
        throw Error(ErrorKind::Output,
                    "the directory " + Chunks().string() + " can't be made: " + wrong.message());
    std::random_device random; // process numbers are not enough where there are many machines
    return NameOf(part,
                  "." + std::to_string(getpid()) + "-" + std::to_string(random()) + ".part" + m_extension)
        .string();
}

std::optional<ChunkReceipt> ChunkStore::Find(int64_t part) const {
    const std::optional<std::string> text = WholeFile(NameOf(part, ".json"));
    if (!text) return std::nullopt;
    const Json json = Json::parse(*text, nullptr, false);
    if (!json.is_object()) return std::nullopt;
    try {
        ChunkReceipt receipt{json.at("file").get<std::string>(),
                             json.at("bytes").get<int64_t>(),
                             {json.at("packets").get<int64_t>(), json.at("sum").get<std::string>()},
                             json.at("delay").get<int64_t>(),
                             json.at("shift_us").get<int64_t>()};
        if (receipt.file.find('/') != std::string::npos) return std::nullopt;
        if (!receipt.file.empty() && BytesAt(FileOf(receipt)) != receipt.bytes) return std::nullopt;
        return receipt;
    } catch (const Json::exception&) {
        return std::nullopt;
    }
}

std::optional<std::string> ChunkStore::Failure(int64_t part) const {
    std::optional<std::string> text = WholeFile(NameOf(part, ".failed"));
    if (text && text->ends_with('\n')) text->pop_back();
    return text;
}

void ChunkStore::Keep(int64_t part, const std::string& temporary, ChunkReceipt receipt) {
    std::error_code wrong;
    if (Find(part)) {
        files::remove_all(temporary, wrong);
        return;
    }
    if (receipt.bytes > 0) {
        constexpr size_t kDigits = 16;
        receipt.file = NameOf(part, "." + receipt.packets.sum.substr(0, kDigits) + m_extension).filename();
        // A directory does not replace another one, which is spoilt or another worker's of this moment.
        if (files::is_directory(temporary, wrong)) files::remove_all(FileOf(receipt), wrong);
        files::rename(temporary, FileOf(receipt), wrong);
        if (wrong)
            throw Error(ErrorKind::Output,
                        temporary + " can't be named " + receipt.file + ": " + wrong.message());
    }
    const files::path own = FileOf(receipt), failure = NameOf(part, ".failed");
    // A receipt whose file is gone or cut off counts for nothing. Once there is one, nothing may fail.
    if (const std::optional<ChunkReceipt> kept = Find(part); !kept)
        WriteTextFile(NameOf(part, ".json").string(), receipt.Text(), true, kNever);
    else if (kept->file != receipt.file)
        files::remove_all(own, wrong);
    files::remove(failure, wrong);
}

void ChunkStore::SetFailure(int64_t part, const std::string& message) const {
    try {
        WriteTextFile(NameOf(part, ".failed").string(), message + "\n", true, kNever);
    } catch (const Error&) {
        // The failure itself is what is told.
    }
}

} // namespace aveffect
