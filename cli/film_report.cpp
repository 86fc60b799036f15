#include "cli/film_report.h"

#include <algorithm>

#include <nlohmann/json.hpp>

#include "cli/exit_code.h"
#include "cli/messages.h"
#include "timeline/jobs/film_words.h"

namespace aveffect {

namespace {

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
    return OneLine(report.path + ": nothing is wrong; " + SummaryText(report.read.film)) + "\n";
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

Film FaultlessFilm(const FilmSourceArguments& source, const RenderObserver& observer,
                   const std::atomic<bool>& cancel) {
    MediaHeaders headers(&cancel);
    ReadFilm read = ReadOtioFile(source.film, {MakeMediaTerms(source), &headers});
    const FilmCheck check = CheckFilm(read.film, headers);
    RequireFaultless(AllFaults(read, check, source.strict));
    for (const std::string& text : read.unknown) observer.warning("not used: " + text);
    for (const std::string& text : check.remarks) observer.remark(text);
    return std::move(read.film);
}

} // namespace aveffect
