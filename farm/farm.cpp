#include "farm/farm.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <system_error>

#include "farm/chunk_store.h"
#include "farm/picture_files.h"
#include "host/effects/random_seed.h"
#include "host/media/input.h"
#include "host/media/source_request.h"
#include "host/output/output_file.h"
#include "host/support/whole_file.h"
#include "timeline/jobs/segment_join.h"
#include "timeline/jobs/text_file.h"

namespace aveffect {

namespace files = std::filesystem;

namespace {

constexpr int64_t kMostParts = 1'000'000;

std::optional<int64_t> BytesBehind(const std::string& url) { return BytesOf(ParseSourceUrl(url).path); }

int64_t PicturesAChunk(const ChunkSize& size, int64_t all, AVRational rate) {
    const int64_t most =
        size.chunks ? (all + *size.chunks - 1) / *size.chunks : std::llround(*size.seconds * av_q2d(rate));
    const int64_t pictures = std::max<int64_t>(1, most);
    if (all / pictures >= kMostParts)
        throw Error(ErrorKind::Usage, "that makes more than " + std::to_string(kMostParts) +
                                          " chunks; give a larger --chunk-seconds");
    return pictures;
}

/// Everything a part's render is told the same way.
void SendTo(ChunkedJob& job, const FarmPlan& plan, const std::string& path) {
    g_randomSeed = plan.seed;
    job.Output().output = plan.numbered ? PicturePattern(path, plan.kind) : path;
    job.Output().overwrite = true;
}

PacketSum::Result SumOfPart(const FarmPlan& plan, const std::string& path, bool pictures,
                            const std::atomic<bool>& cancel) {
    return plan.numbered ? SealPictures(path, plan.kind, cancel) : SumOf(path, pictures, cancel);
}

/// The first picture alone, encoded and read again.
std::string ProbeOf(const FarmPlan& plan, ChunkedJob& job, const ChunkStore& store,
                    const std::atomic<bool>& cancel) {
    const std::string path = store.TemporaryPath(0);
    PlannedChunk first = plan.chunks.front();
    first.end = first.begin + 1;
    std::error_code wrong;
    try {
        SendTo(job, plan, path);
        job.Draw(plan, first);
        std::string sum = SumOfPart(plan, path, true, cancel).sum;
        files::remove_all(path, wrong);
        return sum;
    } catch (...) {
        files::remove_all(path, wrong);
        throw;
    }
}

void RequireMedia(const FarmPlan& plan) {
    for (const PlannedMedium& medium : plan.media) {
        const std::optional<int64_t> bytes = BytesBehind(medium.name);
        if (!bytes)
            throw Error(ErrorKind::Input, medium.name + " is not there; names count from --media-root");
        if (bytes != medium.bytes)
            throw Error(ErrorKind::Input, medium.name + " has " + std::to_string(*bytes) + " bytes, not " +
                                              std::to_string(medium.bytes) +
                                              " as when the plan was made; plan anew");
    }
}

int64_t PicturesOf(const PlannedChunk& chunk) { return chunk.end - chunk.begin; }

ChunkReceipt ReceiptOf(const std::string& path, int64_t part, const FarmPlan& plan,
                       const std::atomic<bool>& cancel) {
    ChunkReceipt receipt;
    std::error_code wrong;
    const bool written = files::exists(path, wrong);
    if (wrong) throw Error(ErrorKind::Output, path + " can't be read again: " + wrong.message());
    if (!written) return receipt; // nothing lies beside the pictures
    const bool pictures = part + 1 < plan.Parts();
    receipt.packets = SumOfPart(plan, path, pictures, cancel);
    receipt.bytes = BytesAt(path);
    if (!pictures) return receipt;
    if (!plan.numbered) receipt.delay = DelayOf(path, plan.rate, cancel);
    const int64_t expected = PicturesOf(plan.chunks[static_cast<size_t>(part)]);
    if (receipt.packets.packets != expected)
        throw Error(ErrorKind::Input, "chunk " + std::to_string(part) + " came to " +
                                          std::to_string(receipt.packets.packets) + " pictures, not " +
                                          std::to_string(expected) + "; the render can't be shared out");
    return receipt;
}

/// Holds the packets that are copied against the receipts.
class ReceiptCheck {
public:
    ReceiptCheck(const std::vector<ChunkReceipt>& receipts)
        : m_receipts(receipts) {}

    void operator()(size_t index, const AVPacket* packet) {
        if (packet) return m_sum.Add(*packet);
        if (m_sum.Finish() != m_receipts[index].packets)
            throw Error(ErrorKind::Input, m_receipts[index].file +
                                              " is not what was rendered; remove it, and work on chunk " +
                                              std::to_string(index) + " again");
        m_sum = PacketSum();
    }

private:
    const std::vector<ChunkReceipt>& m_receipts;
    PacketSum m_sum;
};

RenderResult DrawPart(const FarmPlan& plan, ChunkedJob& job, int64_t part, const std::string& path) {
    const bool beside = part + 1 == plan.Parts();
    if (beside && plan.numbered) return {};
    SendTo(job, plan, path);
    return beside ? job.DrawBeside() : job.Draw(plan, plan.chunks[static_cast<size_t>(part)]);
}

ChunkReceipt RequirePart(const ChunkStore& store, int64_t part) {
    std::optional<ChunkReceipt> receipt = store.Find(part);
    if (!receipt) throw Error(ErrorKind::Input, "part " + std::to_string(part) + " has gone");
    return std::move(*receipt);
}

RenderResult FinishPictures(const ChunkStore& store, const FarmPlan& plan, const OutputPlan& output,
                            bool overwrite, const std::atomic<bool>& cancel) {
    int64_t pictures = 0;
    for (size_t index = 0; index < plan.chunks.size(); ++index) {
        const ChunkReceipt receipt = RequirePart(store, static_cast<int64_t>(index));
        CopyPictures(store.FileOf(receipt), receipt.packets, output, pictures + 1, overwrite, cancel);
        pictures += receipt.packets.packets;
    }
    return {pictures, {}};
}

} // namespace

FarmPlan MakePlan(const files::path& folder, FarmCommand command, const ChunkSize& size,
                  const std::atomic<bool>& cancel) {
    ChunkedJob& job = *command.job;
    FarmPlan plan;
    plan.version = AVEFFECT_VERSION;
    plan.words = std::move(command.words);
    plan.output = job.Output().output;
    const OutputPlan output = PlanOutput(job.Output());
    plan.kind = output.Kind();
    plan.numbered = output.IsNumbered();
    plan.seed = g_randomSeed;
    job.Cut(plan, [&size](int64_t all, AVRational rate) { return PicturesAChunk(size, all, rate); });
    for (const std::string& name : job.Media())
        if (const std::optional<int64_t> bytes = BytesBehind(name)) plan.media.push_back({name, *bytes});
    const ChunkStore store(folder, plan.kind);
    if (files::exists(PlanPath(folder)))
        throw Error(ErrorKind::Output, PlanPath(folder).string() + " exists; a plan has a folder of its own");
    plan.probe = ProbeOf(plan, job, store, cancel);
    WriteTextFile(PlanPath(folder).string(), PlanText(plan), false, cancel);
    return plan;
}

FarmPlan ReadPlan(const files::path& folder) {
    const std::string path = PlanPath(folder).string();
    const std::optional<std::string> text = WholeFile(path);
    if (!text) throw Error(ErrorKind::Input, path + " is not there; `aveffect plan` writes it");
    FarmPlan plan = ParsePlan(*text, path);
    if (plan.version != AVEFFECT_VERSION)
        throw Error(ErrorKind::Input, path + " was made by version " + plan.version + ", this is " +
                                          AVEFFECT_VERSION + "; all machines need the same one");
    return plan;
}

RenderResult WorkOn(const files::path& folder, const FarmPlan& plan, ChunkedJob& job, int64_t part,
                    const std::atomic<bool>& cancel) {
    if (part < 0 || part >= plan.Parts())
        throw Error(ErrorKind::Usage, "the plan has parts 0 to " + std::to_string(plan.Parts() - 1) +
                                          ", not " + std::to_string(part));
    ChunkStore store(folder, plan.kind);
    if (const std::optional<ChunkReceipt> done = store.Find(part)) return {done->packets.packets, {}};
    const std::string path = store.TemporaryPath(part);
    std::error_code wrong;
    try {
        RequireMedia(plan);
        if (ProbeOf(plan, job, store, cancel) != plan.probe)
            throw Error(ErrorKind::Input,
                        "this machine makes another first picture than the one that made the plan; "
                        "its libraries or its media are others");
        RenderResult result = DrawPart(plan, job, part, path);
        ChunkReceipt receipt = ReceiptOf(path, part, plan, cancel);
        if (result.besideStartUs) receipt.shiftUs = FirstUs(path, cancel) - *result.besideStartUs;
        store.Keep(part, path, std::move(receipt));
        return result;
    } catch (const Error& error) {
        files::remove_all(path, wrong);
        if (error.Kind() != ErrorKind::Interrupted) store.SetFailure(part, error.what());
        throw;
    } catch (...) {
        files::remove_all(path, wrong);
        throw;
    }
}

RenderResult FinishFilm(const files::path& folder, const FarmPlan& plan, ChunkedJob& job,
                        const std::atomic<bool>& cancel) {
    const FarmStatus status = StatusOf(folder, plan);
    if (status.done != plan.Parts()) {
        std::vector<int64_t> lacking = status.missing;
        for (const auto& [part, message] : status.failed) lacking.push_back(part);
        std::ranges::sort(lacking);
        throw Error(ErrorKind::Input, "the film lacks " + std::to_string(lacking.size()) + " of " +
                                          std::to_string(plan.Parts()) + " parts: " + NumbersText(lacking));
    }
    const ChunkStore store(folder, plan.kind);
    const OutputPlan output = PlanOutput(job.Output());
    OutputFile::Check(output.FirstFile(), "", job.Output().overwrite);
    if (plan.numbered) return FinishPictures(store, plan, output, job.Output().overwrite, cancel);
    std::vector<ChunkReceipt> receipts;
    SegmentRow row{{}, plan.rate, {plan.firstTicks, plan.ticks}, {}, 0, {}};
    int64_t pictures = 0;
    for (int64_t part = 0; part < plan.Parts(); ++part) {
        ChunkReceipt receipt = RequirePart(store, part);
        if (part + 1 == plan.Parts()) {
            if (!receipt.file.empty()) row.beside = store.FileOf(receipt).string();
            row.besideShiftUs = receipt.shiftUs;
            break;
        }
        const PlannedChunk& chunk = plan.chunks[static_cast<size_t>(part)];
        Segment segment{store.FileOf(receipt).string(), PicturesOf(chunk), receipt.delay, {}};
        if (chunk.startTicks) segment.start = {*chunk.startTicks, plan.ticks};
        row.segments.push_back(std::move(segment));
        receipts.push_back(std::move(receipt));
        pictures += PicturesOf(chunk);
    }
    const auto check = std::make_shared<ReceiptCheck>(receipts);
    row.check = [check](size_t index, const AVPacket* packet) { (*check)(index, packet); };
    return {pictures, JoinSegments(row, output, job.Output().overwrite, {}, cancel).Text()};
}

FarmStatus StatusOf(const files::path& folder, const FarmPlan& plan) {
    const ChunkStore store(folder, plan.kind);
    FarmStatus status;
    for (int64_t part = 0; part < plan.Parts(); ++part) {
        if (store.Find(part))
            ++status.done;
        else if (const std::optional<std::string> failure = store.Failure(part))
            status.failed.emplace_back(part, *failure);
        else
            status.missing.push_back(part);
    }
    return status;
}

std::string NumbersText(const std::vector<int64_t>& numbers) {
    std::string text;
    for (size_t index = 0; index < numbers.size();) {
        size_t end = index + 1;
        while (end < numbers.size() && numbers[end] == numbers[end - 1] + 1) ++end;
        if (!text.empty()) text += ", ";
        text += std::to_string(numbers[index]);
        if (end - index > 1) text += "-" + std::to_string(numbers[end - 1]);
        index = end;
    }
    return text;
}

} // namespace aveffect
