#include "cli/progress.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

namespace aveffect {

namespace {

using Clock = std::chrono::steady_clock;

double RoundTo(double number, double steps) { return std::round(number * steps) / steps; }

std::string Formatted(const char* format, double number) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, number);
    return text.data();
}

/// Minutes and seconds, with hours in front where there are some.
std::string ClockText(double seconds) {
    constexpr long long kMinute = 60;
    constexpr long long kHour = 3600;
    constexpr double kLongest = 360000; // a hundred hours say enough
    const long long total = std::llround(std::clamp(seconds, 0.0, kLongest));
    std::array<char, 64> text{};
    if (total >= kHour)
        std::snprintf(text.data(), text.size(), "%lld:%02lld:%02lld", total / kHour, total % kHour / kMinute,
                      total % kMinute);
    else
        std::snprintf(text.data(), text.size(), "%lld:%02lld", total / kMinute, total % kMinute);
    return text.data();
}

size_t TerminalColumns() {
    constexpr size_t kUsual = 80;
    winsize size{};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsual;
    return size.ws_col;
}

/// One line of standard error, drawn over and over.
class BarProgress final : public Progress {
public:
    void Update(const RenderProgress& progress) override {
        m_last = progress;
        Draw();
    }

    void Clear() override {
        if (m_drawn == 0) return;
        Write("\r" + std::string(m_drawn, ' ') + "\r");
        m_drawn = 0;
    }

    void Done(const RenderResult& result, int /*exitCode*/) override {
        m_last.framesDone = result.frames;
        // What was expected at first may have been an estimate.
        if (!result.inputDamage) m_last.framesExpected = result.frames;
        m_last.secondsLeft = 0;
        Draw();
        Write("\n");
        m_drawn = 0;
    }

    void Failed(const std::string& /*error*/, int /*exitCode*/) override { Clear(); }

private:
    void Draw() {
        // The last column stays free: some terminals go to the next line when it is filled.
        const std::string text = BarText(m_last, TerminalColumns() - 1);
        const size_t rest = m_drawn > text.size() ? m_drawn - text.size() : 0;
        Write("\r" + text + std::string(rest, ' '));
        m_drawn = text.size();
    }

    static void Write(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stderr); }

    RenderProgress m_last;
    size_t m_drawn = 0; // characters of the line that are on the screen
};

/// One JSON object a line on standard output: the first at once, then one a second, and one at the end.
class JsonProgress final : public Progress {
public:
    void Update(const RenderProgress& progress) override {
        constexpr auto kInterval = std::chrono::seconds(1);
        m_last = progress;
        const auto now = Clock::now();
        if (m_written && now - *m_written < kInterval) return;
        m_written = now;
        Write(Fields("running", BelowAll(Percent(progress)), progress.secondsLeft));
    }

    void Done(const RenderResult& result, int exitCode) override {
        m_last.framesDone = result.frames;
        auto fields = Fields("done", result.inputDamage ? BelowAll(Percent(m_last)) : 100, 0);
        fields["exitCode"] = exitCode;
        if (result.inputDamage) fields["warning"] = *result.inputDamage;
        Write(fields);
    }

    void Failed(const std::string& error, int exitCode) override {
        Write({{"state", "failed"}, {"error", error}, {"exitCode", exitCode}});
    }

private:
    using Json = nlohmann::ordered_json;

    /// All that was expected is no more than nearly all of what there is to do.
    static std::optional<double> BelowAll(std::optional<double> percent) {
        constexpr double kNearly = 99.9;
        return percent ? std::optional(std::min(*percent, kNearly)) : percent;
    }

    static Json Rounded(std::optional<double> number) {
        constexpr double kTenths = 10;
        return number ? Json(RoundTo(*number, kTenths)) : Json(nullptr);
    }

    Json Fields(const char* state, std::optional<double> percent, std::optional<double> secondsLeft) const {
        return {{"frames", m_last.framesDone},
                {"percent", Rounded(percent)},
                {"fps", Rounded(m_last.framesPerSecond)},
                {"secondsLeft", Rounded(secondsLeft)},
                {"state", state}};
    }

    static void Write(const Json& fields) {
        // File names in messages need not be UTF-8.
        const std::string line = fields.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
        std::fwrite(line.data(), 1, line.size(), stdout);
        std::fflush(stdout);
    }

    RenderProgress m_last;
    std::optional<Clock::time_point> m_written;
};

} // namespace

std::optional<double> Percent(const RenderProgress& progress) {
    if (!progress.framesExpected) return std::nullopt;
    if (*progress.framesExpected <= 0) return 100;
    const double share =
        static_cast<double>(progress.framesDone) / static_cast<double>(*progress.framesExpected);
    return std::clamp(share, 0.0, 1.0) * 100;
}

std::string BarText(const RenderProgress& progress, size_t columns) {
    constexpr size_t kSmallestBar = 8;
    constexpr size_t kLargestBar = 40;
    constexpr size_t kBrackets = 2;
    const auto percent = Percent(progress);

    std::string frames = std::to_string(progress.framesDone);
    if (progress.framesExpected) frames += "/" + std::to_string(*progress.framesExpected);
    std::vector<std::string> fields;
    if (percent) fields.push_back(Formatted("%3.0f %%", std::floor(*percent)));
    fields.push_back(frames + " frames");
    fields.push_back(Formatted("%.1f fps", progress.framesPerSecond));
    if (progress.secondsLeft) fields.push_back(ClockText(*progress.secondsLeft) + " left");

    std::string text;
    for (const std::string& field : fields)
        if (text.size() + kBrackets + field.size() <= columns) text += (text.empty() ? "" : "  ") + field;
    if (!percent || columns < text.size() + kSmallestBar + kBrackets + 1) return text;
    const size_t length = std::min(kLargestBar, columns - text.size() - kBrackets - 1);
    const auto filled = static_cast<size_t>(*percent / 100 * static_cast<double>(length));
    return "[" + std::string(filled, '#') + std::string(length - filled, '-') + "] " + text;
}

void RequireOwnOutput(ProgressStyle style, const std::string& output) {
    struct stat file {
    }, standard{};
    if (style != ProgressStyle::Json) return;
    const bool named = output == "-";
    if (!named && (stat(output.c_str(), &file) != 0 || fstat(STDOUT_FILENO, &standard) != 0)) return;
    if (named || (file.st_dev == standard.st_dev && file.st_ino == standard.st_ino))
        throw Error(ErrorKind::Usage, output + " is standard output, which --progress json writes to; choose "
                                               "another output, or --progress bar or none");
}

std::unique_ptr<Progress> MakeProgress(ProgressStyle style) {
    const bool isTerminal = isatty(STDERR_FILENO) == 1;
    switch (style) {
    case ProgressStyle::Auto:
        return isTerminal ? MakeProgress(ProgressStyle::Bar) : std::make_unique<Progress>();
    case ProgressStyle::Bar:
        return std::make_unique<BarProgress>();
    case ProgressStyle::Json:
        return std::make_unique<JsonProgress>();
    case ProgressStyle::None:
        break;
    }
    return std::make_unique<Progress>();
}

} // namespace aveffect
