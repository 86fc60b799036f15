#include "host/jobs/transition.h"

#include <algorithm>
#include <cmath>
#include <utility>

extern "C" {
#include <libavutil/imgutils.h>
}

#include "host/effects/media_check.h"
#include "host/effects/transition_frame.h"
#include "host/media/media_manager.h"
#include "host/media/source_request.h"
#include "host/output/output_file.h"
#include "host/output/picture_output.h"
#include "host/output/still_picture.h"
#include "host/support/ordered_workers.h"
#include "mediabridge/picture_pool.h"

namespace aveffect {
namespace {

using mediabridge::AVFramePtr;

constexpr int kMoments = 8;
constexpr int kGap = 4; ///< pixels of white between samples

PictureSize TileSize(const Canvas& picture) {
    constexpr double kLargerSide = 160;
    const double scale = kLargerSide / std::max(picture.width, picture.height);
    return {std::max(1, static_cast<int>(std::lround(picture.width * scale))),
            std::max(1, static_cast<int>(std::lround(picture.height * scale)))};
}

AVFramePtr MakeSheet(const PictureSize& tile, int rows) {
    const int64_t width = int64_t{kMoments} * (tile.width + kGap) - kGap;
    const int64_t height = int64_t{rows} * (tile.height + kGap) - kGap;
    const std::string text =
        "a sheet of " + std::to_string(width) + "x" + std::to_string(height) + " pixels ";
    if (width > INT_MAX || height > INT_MAX ||
        av_image_check_size(static_cast<unsigned>(width), static_cast<unsigned>(height), 0, nullptr) < 0)
        throw Error(ErrorKind::Usage, text + "can't be made; choose a smaller --size");
    AVFramePtr sheet =
        mediabridge::AllocatePicture(AV_PIX_FMT_BGR0, static_cast<int>(width), static_cast<int>(height));
    if (!sheet) throw NoMemory(text + "takes more memory than there is; choose a smaller --size");
    for (int row = 0; row < sheet->height; ++row)
        std::fill_n(sheet->data[0] + ptrdiff_t{row} * sheet->linesize[0], ptrdiff_t{sheet->width} * 4, 255);
    return sheet;
}

void Place(const AVFrame& tile, AVFrame& sheet, int row, int column) {
    const ptrdiff_t top = ptrdiff_t{row} * (tile.height + kGap);
    const ptrdiff_t left = ptrdiff_t{column} * (tile.width + kGap);
    av_image_copy_plane(sheet.data[0] + top * sheet.linesize[0] + left * 4, sheet.linesize[0], tile.data[0],
                        tile.linesize[0], tile.width * 4, tile.height);
}

} // namespace

RenderResult RenderSheet(const Plugin& plugin, const SheetOptions& options, const RenderObserver& observer,
                         const std::atomic<bool>& cancel) {
    constexpr int kStepMs = 1000;
    Reporter reporter(observer);
    const OutputPlan plan = PlanStill(options.output);
    for (const std::string& input : {options.first, options.second})
        OutputFile::Check(options.output, ParseSourceUrl(input).path, options.overwrite);
    IntakeTerms terms(false, reporter);
    MediaManager manager(&cancel);
    manager.TakeOn(terms);
    const Canvas first = RequirePicture(manager, options.first);
    RequirePicture(manager, options.second);
    manager.Match(first);
    const PictureSize tile = options.tile.value_or(TileSize(first));
    const auto transitions = AllTransitions();

    const int rows = static_cast<int>(transitions.size());
    AVFramePtr sheet = MakeSheet(tile, rows);
    OrderedWorkers<int> workers(WorkerCount(options.threads), SIZE_MAX, [&](unsigned, int64_t, int& row) {
        const std::string name(transitions[static_cast<size_t>(row)]->shortName);
        constexpr int kEndMs = 2 * kMoments * kStepMs;
        EffectChain chain(plugin, &manager, {TransitionSpec(name, options.first, options.second, 0, kEndMs)},
                          {0, kEndMs});
        // In the middle of each eighth: the ends would show the two pictures alone.
        for (int column = 0; column < kMoments; ++column) {
            CheckCancel(cancel);
            Place(*DrawTransition(chain, {tile.width, tile.height}, (2 * column + 1) * kStepMs), *sheet, row,
                  column);
        }
    });
    for (int row = 0; row < rows; ++row) {
        reporter.Note("row " + std::to_string(row + 1) + ": " +
                      std::string(transitions[static_cast<size_t>(row)]->shortName));
        workers.Push(row, {0, 0});
    }
    workers.Finish();
    while (workers.Pop()) {
    }
    PictureOutput output(plan, OriginOf(*sheet), *sheet, terms, reporter);
    const auto file = WriteStill(plan, output.Convert(std::move(sheet)), {}, options.overwrite, cancel);
    RenderResult result{1, manager.Damage().Text()};
    file->Publish();
    return result;
}

} // namespace aveffect
