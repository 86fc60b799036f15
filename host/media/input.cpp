#include "host/media/input.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "host/media/device.h"
#include "host/media/input_access.h"
#include "host/media/limits.h"
#include "host/media/photo_orientation.h"
#include "host/support/error.h"
#include "host/support/log_capture.h"

namespace aveffect {
namespace {

// Gives the plain reasons (missing, a directory, empty) their plain words before the container library is
// asked.
void CheckFile(const std::string& path) {
    struct stat info = {};
    if (stat(path.c_str(), &info) != 0)
        throw Error(ErrorKind::Input, errno == ENOENT ? path + ": no such file"
                                                      : path + " can't be read: " + std::strerror(errno));
    if (S_ISDIR(info.st_mode)) throw Error(ErrorKind::Input, path + " is a directory, not a clip");
    if (access(path.c_str(), R_OK) != 0)
        throw Error(ErrorKind::Input, path + " can't be read: " + std::strerror(errno));
    if (S_ISREG(info.st_mode) && info.st_size == 0)
        throw Error(ErrorKind::Input, path + " is empty (0 bytes)");
}

[[noreturn]] void ThrowNoMedia(const std::string& path, int code, const std::string& detail) {
    if (detail.starts_with("Number of streams exceeds"))
        throw Error(ErrorKind::Input, path + " claims more than 1000 streams, the most that are believed");
    if (code != AVERROR_INVALIDDATA) ThrowFailure(ErrorKind::Input, path + " can't be read", code);
    throw Error(ErrorKind::Input, path + " is no clip or picture that can be read: " +
                                      (detail.empty() ? AvText(code) : detail));
}

/// The number that makes a pattern this name; absent when none does.
std::optional<int> NumberIn(const std::string& name, const std::string& pattern) {
    const size_t mark = pattern.find('%'), behind = pattern.find('d', mark) + 1;
    const std::string head = pattern.substr(0, mark), tail = pattern.substr(behind);
    if (name.size() <= head.size() + tail.size() || !name.starts_with(head) || !name.ends_with(tail))
        return std::nullopt;
    const char* const digits = name.data() + head.size();
    const char* const digitsEnd = name.data() + name.size() - tail.size();
    int number = 0;
    const auto [end, error] = std::from_chars(digits, digitsEnd, number);
    const bool right = error == std::errc() && end == digitsEnd && number >= 0;
    return right && NumberedName(pattern, number) == name ? std::optional(number) : std::nullopt;
}

/// Tells each file that a pattern names, with its number, in no order.
template <typename Tell>
void EachNumbered(const std::string& path, Tell tell) {
    const std::filesystem::path begin(path.substr(0, path.find('%')));
    const std::filesystem::path directory = begin.has_parent_path() ? begin.parent_path() : ".";
    std::error_code failed;
    for (const auto& entry : std::filesystem::directory_iterator(directory, failed))
        if (const auto number = NumberIn((begin.parent_path() / entry.path().filename()).string(), path))
            tell(entry, *number);
}

/// The smallest number for which a pattern names a file.
std::optional<int64_t> FirstNumber(const std::string& path) {
    if (path.find('/', path.find('%')) != std::string::npos) return 0; // of directories: the library's search
    std::optional<int64_t> first;
    EachNumbered(path, [&first](const std::filesystem::directory_entry&, int number) {
        first = std::min<int64_t>(first.value_or(number), number);
    });
    return first;
}

/// Of what is opened.
struct OpenOptions {
    AVDictionary* set = nullptr;
    const std::string& path;
    ~OpenOptions() { av_dict_free(&set); }
    void Set(const char* name, const std::string& value) {
        RequireMemory(av_dict_set(&set, name, value.c_str(), 0), path);
    }
};

// The library looks for the first number among the lowest few only.
void SetPattern(const std::string& path, const std::optional<AVRational>& rate, OpenOptions& options) {
    if (!IsNumbered(path)) {
        if (path.find('%') != std::string::npos) options.Set("pattern_type", "none");
        return;
    }
    const std::optional<int64_t> first = FirstNumber(path);
    if (!first) throw Error(ErrorKind::Input, path + ": no such files");
    options.Set("start_number", std::to_string(*first));
    if (rate) options.Set("framerate", std::to_string(rate->num) + "/" + std::to_string(rate->den));
}

// Of the streams that are known when the file is opened; decoders that come later know it by themselves.
class StreamOptions {
public:
    explicit StreamOptions(const AVFormatContext& input)
        : m_each(input.nb_streams, nullptr) {
        for (AVDictionary*& options : m_each) av_dict_set_int(&options, "max_pixels", g_mostPixels, 0);
    }
    ~StreamOptions() {
        for (AVDictionary*& options : m_each) av_dict_free(&options);
    }
    StreamOptions(const StreamOptions&) = delete;
    StreamOptions& operator=(const StreamOptions&) = delete;
    AVDictionary** Data() noexcept { return m_each.empty() ? nullptr : m_each.data(); }

private:
    std::vector<AVDictionary*> m_each;
};

[[noreturn]] void ThrowTooLarge(const std::string& path, const std::string& size) {
    throw Error(ErrorKind::Input, path + " claims pictures of " + size + " pixels, more than " +
                                      std::to_string(g_mostPixels) + " in all; --max-pixels sets the limit");
}

// Decoders' own check leaves a line and no size behind, containers' word a size.
void RequireBelievable(const std::string& path, const AVFormatContext& input, const std::string& line) {
    unsigned width = 0, height = 0;
    if (std::sscanf(line.c_str(), "Picture size %ux%u is invalid", &width, &height) == 2)
        ThrowTooLarge(path, std::to_string(width) + "x" + std::to_string(height));
    for (unsigned index = 0; index < input.nb_streams; ++index) {
        const AVCodecParameters& codec = *input.streams[index]->codecpar;
        if (int64_t{codec.width} * codec.height > g_mostPixels)
            ThrowTooLarge(path, std::to_string(codec.width) + "x" + std::to_string(codec.height));
    }
}

// MP4 and its like may have their index behind the pictures, which a pipe has handed out by then.
void RequireWithinReach(const std::string& path, const AVFormatContext& input) {
    const AVIOContext& pipe = *input.pb;
    const int64_t kept = avio_tell(input.pb) - (pipe.buf_ptr - pipe.buffer); // the first byte that is
    for (unsigned index = 0; index < input.nb_streams; ++index) {
        const AVIndexEntry* first = avformat_index_get_entry(input.streams[index], 0);
        if (first && first->pos < kept)
            throw Error(ErrorKind::Input,
                        path + " is a pipe, but the index stands at the clip's end, too late to go "
                               "back; name the file itself, or write it with its index first "
                               "(faststart) or as Matroska");
    }
}

// VP8 and VP9 keep their alpha beside the picture, where only the decoders of libvpx look.
const AVCodec* FindDecoder(const AVStream& stream) {
    const AVCodecID id = stream.codecpar->codec_id;
    const AVDictionaryEntry* alpha = av_dict_get(stream.metadata, "alpha_mode", nullptr, 0);
    if (alpha && std::string_view(alpha->value) == "1") {
        const char* name = id == AV_CODEC_ID_VP9 ? "libvpx-vp9" : id == AV_CODEC_ID_VP8 ? "libvpx" : nullptr;
        if (name)
            if (const AVCodec* decoder = avcodec_find_decoder_by_name(name)) return decoder;
    }
    return avcodec_find_decoder(id);
}

// Whether pictures or sound are not known well enough to be told of.
bool LacksKinds(const AVFormatContext& context) {
    return std::any_of(context.streams, context.streams + context.nb_streams, [](const AVStream* stream) {
        const AVCodecParameters& kind = *stream->codecpar;
        return (kind.codec_type == AVMEDIA_TYPE_VIDEO && kind.width == 0) ||
               (kind.codec_type == AVMEDIA_TYPE_AUDIO && kind.sample_rate == 0);
    });
}

} // namespace

bool ReadInterrupt::Due() const noexcept {
    return (cancel && cancel->load(std::memory_order_relaxed)) ||
           (deadline && std::chrono::steady_clock::now() >= *deadline);
}

AVIOInterruptCB ReadInterrupt::Callback() noexcept {
    return {[](void* self) { return static_cast<const ReadInterrupt*>(self)->Due() ? 1 : 0; }, this};
}

std::string NumberedName(const std::string& pattern, int number) {
    char name[4096];
    return av_get_frame_filename(name, sizeof name, pattern.c_str(), number) >= 0 ? name : pattern;
}

bool IsLocalPath(const std::string& path) {
    if (access(path.c_str(), F_OK) == 0) return true;
    return path.find("://") == std::string::npos;
}

void RequireRereadable(const std::string& path) {
    if (IsDevice(path))
        throw Error(ErrorKind::Input, path + " is no ordinary file; clips are read more than once here");
}

bool StandsFor(const std::string& pattern, const std::string& path) {
    std::error_code failed; // leaves a path empty
    const std::string whole = std::filesystem::weakly_canonical(pattern, failed);
    const std::string name = std::filesystem::weakly_canonical(path, failed);
    return !whole.empty() && (whole == name || NumberIn(name, whole));
}

bool IsNumbered(const std::string& path) {
    return av_filename_number_test(path.c_str()) && access(path.c_str(), F_OK) != 0;
}

std::optional<int64_t> BytesOf(const std::string& path) {
    std::error_code failed;
    std::optional<int64_t> bytes;
    if (IsNumbered(path)) {
        EachNumbered(path, [&](const std::filesystem::directory_entry& file, int) {
            const uintmax_t size = file.file_size(failed);
            if (!failed) bytes = bytes.value_or(0) + static_cast<int64_t>(size);
        });
    } else {
        const uintmax_t size = std::filesystem::file_size(path, failed);
        if (!failed) bytes = static_cast<int64_t>(size);
        if (failed == std::errc::io_error)
            throw Error(ErrorKind::Input, path + " can't be looked at: " + failed.message());
    }
    return bytes;
}

InputContextPtr OpenInput(const SourceRequest& request, ReadInterrupt& interrupt) {
    const std::string& path = request.path;
    CaptureLibraryLog();
    TakeLibraryError();
    const bool local = IsLocalPath(path);
    if (local && !IsNumbered(path)) CheckFile(path);

    DeviceInputPtr device = local && IsDevice(path) ? OpenDeviceInput(path, interrupt) : nullptr;
    OpenOptions options{nullptr, path};
    const AVInputFormat* const format = FormatAskedFor(request);
    if (local) SetPattern(path, request.rate, options);
    SetAccess(request, &options.set);
    options.Set("export_path_metadata", "1"); // of each file that a pattern stands for
    auto damage = std::make_unique<InputDamage>(path);
    // The prefix keeps a name like "a:b.mp4" from being taken for a protocol.
    const std::string url = local ? "file:" + path : path;
    AVFormatContext* context = avformat_alloc_context();
    if (!context) throw NoMemory(path + ": out of memory");
    context->interrupt_callback = interrupt.Callback();
    context->pb = device.get();
    int code =
        avformat_open_input(&context, url.c_str(), format, &options.set); // frees the context on failure
    if (code < 0) {
        if (interrupt.Due()) throw Error(ErrorKind::Interrupted, "interrupted; nothing was written");
        const std::string line = TakeLibraryError();
        SayRefusedFormat(request, code, line);
        ThrowNoMedia(path, code, line);
    }
    context->opaque = &damage->Lines();
    InputContextPtr input(context, InputContextDeleter{std::move(device), std::move(damage)});
    if (input.get_deleter().device) RequireWithinReach(path, *context);
    // Plain text opens as a terminal recording, which nobody means.
    if (std::string_view(context->iformat->name) == "tty")
        ThrowNoMedia(path, AVERROR_INVALIDDATA, TakeLibraryError());
    StreamOptions streams(*context);
    code = avformat_find_stream_info(context, streams.Data());
    if (interrupt.Due()) throw Error(ErrorKind::Interrupted, "interrupted; nothing was written");
    const std::string line = TakeLibraryError();
    RequireBelievable(path, *context, line);
    if (code < 0) ThrowNoMedia(path, code, line);
    // What it could not read it takes for the file's end.
    if (context->pb && context->pb->error < 0 && LacksKinds(*context))
        ThrowNoMedia(path, context->pb->error, line);
    if (local) SayPhotoOrientation(path, *context);
    return input;
}

int ReadPacket(const InputContextPtr& input, AVPacket& packet) {
    int code = av_read_frame(input.get(), &packet);
    // Some demuxers' word for a file's end, though nothing went wrong in reading it.
    if (code == AVERROR(EIO) && input->pb && input->pb->error >= 0 && avio_feof(input->pb))
        code = AVERROR_EOF;
    InputDamage& damage = *input.get_deleter().damage;
    RequireMemory(code, damage.Path());
    if (code >= 0) {
        damage.Note(packet, *input->streams[packet.stream_index]);
        SayPhotoOrientation(*input->streams[packet.stream_index], packet);
    } else if (code != AVERROR_EOF) {
        damage.NoteEnd(code);
    }
    return code;
}

bool NextPacket(const InputContextPtr& input, AVPacket& packet) {
    const int code = ReadPacket(input, packet);
    if (code < 0 && code != AVERROR_EOF)
        ThrowFailure(ErrorKind::Input, input.get_deleter().damage->Path() + " can't be read to its end",
                     code);
    return code >= 0;
}

Decoder::Decoder(const InputContextPtr& input, const AVStream& stream, unsigned threads)
    : m_path(input.get_deleter().damage->Path()) {
    const std::string& path = m_path;
    const AVCodec* codec = FindDecoder(stream);
    if (!codec)
        throw Error(ErrorKind::Input,
                    path + ": no decoder for " + avcodec_get_name(stream.codecpar->codec_id));
    m_context.reset(avcodec_alloc_context3(codec));
    if (!m_context) throw NoMemory(path + ": out of memory");
    int code = avcodec_parameters_to_context(m_context.get(), stream.codecpar);
    if (code >= 0) {
        m_context->pkt_timebase = stream.time_base;
        m_context->opaque = &m_lines;
        m_context->err_recognition = AV_EF_CRCCHECK;
        m_context->max_pixels = g_mostPixels;
        m_context->thread_count = static_cast<int>(std::min(threads, 64u));
        TakeLibraryError();
        code = avcodec_open2(m_context.get(), codec, nullptr);
    }
    if (code < 0)
        ThrowFailure(ErrorKind::Input, path + ": the " + std::string(codec->name) + " decoder can't start",
                     code);
}

void Decoder::Send(const AVPacket* packet) {
    const int code = avcodec_send_packet(m_context.get(), packet);
    RequireMemory(code, m_path);
    if (code < 0 && code != AVERROR_EOF) ++m_failures;
}

mediabridge::AVFramePtr Decoder::Receive() {
    mediabridge::AVFramePtr frame(av_frame_alloc());
    if (!frame) throw NoMemory("out of memory");
    // A damaged picture makes one call fail and the next one go on; a decoder that never recovers is given
    // up.
    for (int attempt = 0; attempt < 64; ++attempt) {
        const int code = avcodec_receive_frame(m_context.get(), frame.get());
        if (code >= 0) {
            Note(*frame);
            return frame;
        }
        if (code == AVERROR(EAGAIN) || code == AVERROR_EOF) return nullptr;
        RequireMemory(code, m_path);
        ++m_failures;
    }
    return nullptr;
}

void Decoder::Note(const AVFrame& frame) {
    if (frame.decode_error_flags || (frame.flags & AV_FRAME_FLAG_CORRUPT)) ++m_hidden;
}

void Decoder::ForgetDamageBefore(const AVFrame& frame) {
    const AVCodecDescriptor* const about = avcodec_descriptor_get(m_context->codec_id);
    if (about && (about->props & AV_CODEC_PROP_INTRA_ONLY)) return;
    m_lines.Forget();
    m_failures = m_hidden = 0;
    Note(frame);
}

DamageReport Decoder::Damage() const {
    DamageReport report;
    const std::string subject = m_path + ": the " + m_context->codec->name + " decoder";
    const int64_t errors = std::max(m_failures, m_lines.Count());
    if (errors > 0)
        report.Add(subject, std::to_string(errors) + (errors == 1 ? " error" : " errors") +
                                (m_lines.Count() > 0 ? ", \"" + m_lines.First() + "\"" : ""));
    if (m_hidden > 0) {
        const bool pictures = m_context->codec_type == AVMEDIA_TYPE_VIDEO;
        report.Add(subject, "damage in " + std::to_string(m_hidden) + (pictures ? " picture" : " piece") +
                                (m_hidden == 1 ? "" : "s") + (pictures ? "" : " of sound"));
    }
    return report;
}

void Decoder::Flush() { avcodec_flush_buffers(m_context.get()); }

} // namespace aveffect
