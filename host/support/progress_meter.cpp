#include "host/support/progress_meter.h"

#include <algorithm>

namespace aveffect {

void ProgressMeter::Report(int64_t done, bool last) {
    constexpr auto kInterval = std::chrono::milliseconds(200);
    const Clock::time_point now = Clock::now();
    if (!last && now - m_told < kInterval) return;
    m_told = now;
    RenderProgress progress;
    progress.framesDone = done;
    progress.framesExpected = m_expected;
    progress.secondsElapsed = std::chrono::duration<double>(now - m_started).count();
    if (progress.secondsElapsed > 0)
        progress.framesPerSecond = static_cast<double>(done) / progress.secondsElapsed;
    if (progress.framesExpected && progress.framesPerSecond > 0)
        progress.secondsLeft = static_cast<double>(std::max<int64_t>(0, *progress.framesExpected - done)) /
                               progress.framesPerSecond;
    m_reporter.Progress(progress);
}

} // namespace aveffect
