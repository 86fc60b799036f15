#include "timeline/jobs/segment_store.h"

#include <algorithm>
#include <system_error>
#include <vector>

#include "host/media/source.h"
#include "host/support/digest.h"
#include "host/support/error.h"

namespace aveffect {

namespace files = std::filesystem;

SegmentStore::SegmentStore(files::path directory, std::string extension, uint64_t limit)
    : m_directory(std::move(directory))
    , m_extension("." + std::move(extension))
    , m_limit(limit) {
    std::error_code wrong;
    files::create_directories(m_directory, wrong);
    if (wrong || !files::is_directory(m_directory))
        throw Error(ErrorKind::Output, "the directory " + m_directory.string() + " can't be made" +
                                           (wrong ? ": " + wrong.message() : ""));
}

std::string SegmentStore::KeyOf(const std::string& text) { return DigestOf(text); }

std::string SegmentStore::PathOf(const std::string& key) const {
    return (m_directory / (key + m_extension)).string();
}

bool SegmentStore::Holds(const std::string& key, int64_t pictures, const std::atomic<bool>& cancel) {
    const files::path path = PathOf(key);
    std::error_code wrong;
    if (!files::is_regular_file(path, wrong)) return false;
    int64_t found = 0;
    try {
        Source source({path.string()}, Source::Others::WithPictures, 1, cancel);
        while (const std::optional<SourceItem> item = source.Next())
            if (item->packet->stream_index == source.Pictures().index) ++found;
    } catch (const Error& error) {
        if (error.Kind() == ErrorKind::Interrupted) throw;
    }
    if (found == pictures) {
        files::last_write_time(path, files::file_time_type::clock::now(), wrong); // used just now
        return true;
    }
    Remove(key);
    return false;
}

void SegmentStore::Remove(const std::string& key) {
    std::error_code wrong;
    files::remove(PathOf(key), wrong);
}

void SegmentStore::MakeRoom(const std::set<std::string>& needed) {
    struct File {
        files::path path;
        uint64_t bytes;
        files::file_time_type used;
    };
    uint64_t all = 0;
    std::vector<File> others;
    std::error_code wrong;
    for (const files::directory_entry& entry : files::directory_iterator(m_directory, wrong)) {
        if (!entry.is_regular_file(wrong)) continue;
        const File file{entry.path(), entry.file_size(wrong), entry.last_write_time(wrong)};
        if (wrong) continue; // somebody else removed it
        all += file.bytes;
        const bool own = file.path.extension() == m_extension && needed.contains(file.path.stem().string());
        if (!own) others.push_back(file);
    }
    std::ranges::sort(others, {}, &File::used);
    for (auto file = others.begin(); all > m_limit && file != others.end(); ++file)
        if (files::remove(file->path, wrong)) all -= file->bytes;
    constexpr uint64_t kMega = 1'000'000;
    if (all > m_limit)
        throw Error(ErrorKind::Output, "the pieces in " + m_directory.string() + " take more than the " +
                                           std::to_string(m_limit / kMega) +
                                           " MB that they may; raise --work-limit");
}

} // namespace aveffect
