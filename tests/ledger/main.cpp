/// picture_ledger check|write FILE, picture_ledger inputs FOLDER: holds what the plug-in makes against the
/// stored hashes.
#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdio>
#include <exception>
#include <fstream>
#include <mutex>
#include <thread>

#include "aveffect/base_media.h"
#include "tests/ledger/ledger.h"

namespace {

using namespace ledger;

constexpr char kUsage[] =
    "usage: picture_ledger check|write FILE [--level sse2|avx2|avx512|avx512vbmi] [--threads "
    "N], picture_ledger inputs FOLDER";
constexpr int kDiffers = 1, kWrongWords = 2, kNoSuchLevel = 77;

struct Words {
    std::string task, place, level;
    unsigned threads = 1;
};

bool Parse(int count, char** words, Words& parsed) {
    if (count < 3 || count % 2 == 0) return false;
    parsed.task = words[1];
    parsed.place = words[2];
    for (int i = 3; i < count; i += 2) {
        const std::string option = words[i], value = words[i + 1];
        const char* const end = value.data() + value.size();
        if (option == "--level")
            parsed.level = value;
        else if (option != "--threads" || std::from_chars(value.data(), end, parsed.threads).ptr != end ||
                 parsed.threads < 1 || parsed.threads > 256)
            return false;
    }
    return parsed.task == "check" || parsed.task == "write" || parsed.task == "inputs";
}

// No more than that level; whether the processor has it.
bool Limit(const std::string& level) {
    using namespace AVBased;
    struct Level {
        const char* name;
        CPUFeature feature;
    };
    for (const Level& known : {Level{"sse2", kCpuSSE2},
                               {"avx2", kCpuAVX2},
                               {"avx512", kCpuAVX512},
                               {"avx512vbmi", kCpuAVX512VBMI}}) {
        if (level != known.name) continue;
        AVBasedSetCPUFeatureMask((known.feature << 1) - 1u);
        return AVBasedGetCPUFeatures() & known.feature;
    }
    throw std::runtime_error("--level is sse2, avx2, avx512 or avx512vbmi, not '" + level + "'");
}

// Both kinds of cases, worked out by some threads.
std::map<std::string, std::string> MakeAll(unsigned threadCount) {
    const std::vector<PictureCase> pictures = PictureCases();
    const std::vector<SoundCase> sounds = SoundCases();
    std::vector<std::pair<std::string, std::string>> made(pictures.size() + sounds.size());
    std::atomic<size_t> next = 0;
    std::exception_ptr failure;
    std::mutex mutex;
    const auto work = [&] {
        try {
            for (size_t i; (i = next++) < made.size();)
                made[i] = i < pictures.size() ? std::pair{pictures[i].Key(), Made(pictures[i])}
                                              : std::pair{sounds[i - pictures.size()].Key(),
                                                          Made(sounds[i - pictures.size()])};
        } catch (...) {
            const std::scoped_lock lock(mutex);
            failure = std::current_exception();
        }
    };
    {
        std::vector<std::jthread> threads;
        for (unsigned i = 1; i < threadCount; ++i) threads.emplace_back(work);
        work();
    }
    if (failure) std::rethrow_exception(failure);
    std::map<std::string, std::string> all(made.begin(), made.end());
    if (all.size() != made.size()) throw std::logic_error("two cases have one key");
    return all;
}

int Check(const std::string& path, const std::map<std::string, std::string>& made) {
    const auto stored = Read(path);
    size_t wrong = 0;
    const auto tell = [&](const std::string& key, const std::string& is, const std::string& should) {
        ++wrong;
        std::printf("%s is %s, not %s\n", key.c_str(), is.c_str(), should.c_str());
    };
    for (const auto& [key, hash] : made)
        if (const auto found = stored.find(key); found == stored.end())
            tell(key, hash, "in the ledger");
        else if (found->second != hash)
            tell(key, hash, found->second);
    for (const auto& [key, hash] : stored)
        if (!made.contains(key)) tell(key, "no longer made", hash);
    std::printf("%zu hashes, %zu differ\n", made.size(), wrong);
    return wrong ? kDiffers : 0;
}

void Write(const std::string& path, const std::map<std::string, std::string>& made) {
    std::ofstream file(path);
    for (const auto& [key, hash] : made) file << key << ' ' << hash << '\n';
    if (!file.flush()) throw std::runtime_error(path + ": cannot be written");
}

// Both pictures of every format and size, as raw bytes, for other programs.
void WriteInputs(const std::string& folder) {
    std::map<std::string, PictureCase> shapes;
    for (const PictureCase& of : PictureCases()) {
        const std::string key = of.Key();
        shapes.emplace(key.substr(key.find(' ') + 1), of);
    }
    for (const auto& [shape, of] : shapes)
        for (const unsigned number : {1u, 2u}) {
            std::string name = shape;
            std::ranges::replace(name, ' ', '-');
            std::ofstream file(folder + "/" + name + (number == 1 ? ".raw" : "-second.raw"),
                               std::ios::binary);
            const auto picture = MakePicture(of.format, of.width, of.height, number);
            for (auto& plane : picture->planes)
                file.write(reinterpret_cast<const char*>(plane.Data()),
                           static_cast<std::streamsize>(plane.bytes.size()));
            if (!file.flush()) throw std::runtime_error(folder + ": cannot be written to");
        }
}

} // namespace

int main(int count, char** arguments) {
    Words words;
    if (!Parse(count, arguments, words)) {
        std::fprintf(stderr, "%s\n", kUsage);
        return kWrongWords;
    }
    try {
        if (!words.level.empty() && !Limit(words.level)) {
            std::printf("this processor has no %s\n", words.level.c_str());
            return kNoSuchLevel;
        }
        if (words.task == "inputs") {
            WriteInputs(words.place);
            return 0;
        }
        const auto made = MakeAll(words.threads);
        if (words.task == "check") return Check(words.place, made);
        Write(words.place, made);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "picture_ledger: %s\n", error.what());
        return kWrongWords;
    }
}
