#include "cli/film_report.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>

#include <nlohmann/json.hpp>

#include "cli/exit_code.h"
#include "cli/messages.h"

namespace aveffect {

namespace {

std::string Counted(size_t count, const char* one) {
    return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

nlohmann::ordered_json FaultJson(const FilmFault& fault) {
    return {{"place", fault.place},
            {"message", fault.message},
            {"kind", fault.kind == ErrorKind::Usage ? "film" : "media"}};
}

} // namespace

int ReportExitCode(const FilmReport& report) {
    if (report.Good()) return kDone;
    return std::ranges::any_of(report.faults,
                               [](const FilmFault& fault) { return fault.kind == ErrorKind::Usage; })
               ? kUsage
               : kInput;
}

std::string ClockText(const FilmTime& time) {
    constexpr int64_t kMs = 1000, kMinute = 60 * kMs, kHour = 60 * kMinute;
    const int64_t total = time.Milliseconds(), size = total < 0 ? -total : total;
    std::array<char, 64> text{};
    if (size >= kHour)
        std::snprintf(text.data(), text.size(), "%" PRId64 ":%02" PRId64 ":%02" PRId64 ".%03" PRId64,
                      size / kHour, size % kHour / kMinute, size % kMinute / kMs, size % kMs);
    else
        std::snprintf(text.data(), text.size(), "%" PRId64 ":%02" PRId64 ".%03" PRId64, size / kMinute,
                      size % kMinute / kMs, size % kMs);
    return (total < 0 ? "-" : "") + std::string(text.data());
}

std::string ReportMessages(const FilmReport& report, bool strict) {
    constexpr size_t kRemarks = 20; // a film of thousands of clips has thousands
    std::string lines;
    for (const FilmFault& fault : report.faults) lines += OneLine(fault.Text()) + "\n";
    if (!strict)
        for (const std::string& unknown : report.read.unknown)
            lines += "warning: not used: " + OneLine(unknown) + "\n";
    const auto& remarks = report.check.remarks;
    const size_t shown = std::min(remarks.size(), kRemarks);
    for (size_t index = 0; index < shown; ++index) lines += OneLine(remarks[index]) + "\n";
    if (shown < remarks.size())
        lines += "and " + Counted(remarks.size() - shown, "remark") + " more, which --json tells\n";
    return lines;
}

std::string ReportText(const FilmReport& report) {
    const FilmItem& stack = report.read.film.stack;
    return OneLine(report.path) + ": nothing is wrong; " + Counted(stack.children.size(), "track") + ", " +
           Counted(ClipsOf(stack).size(), "clip") + ", " + ClockText(stack.duration) + "\n";
}

std::string ReportJson(const FilmReport& report) {
    nlohmann::ordered_json faults = nlohmann::ordered_json::array();
    for (const FilmFault& fault : report.faults) faults.push_back(FaultJson(fault));
    const FilmItem& stack = report.read.film.stack;
    const nlohmann::ordered_json json = {{"film", report.path},
                                         {"good", report.Good()},
                                         {"exitCode", ReportExitCode(report)},
                                         {"tracks", stack.children.size()},
                                         {"clips", ClipsOf(stack).size()},
                                         {"seconds", stack.duration.Seconds()},
                                         {"faults", faults},
                                         {"remarks", report.check.remarks},
                                         {"unknown", report.read.unknown}};
    constexpr int kIndent = 2;
    return json.dump(kIndent, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

} // namespace aveffect
