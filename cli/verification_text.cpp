#include "cli/verification_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "workbench/text/counted.h"

namespace imgtune::cli {

using namespace workbench;

std::string cause_text(const LikelyCause& cause) {
    const std::string where = cause.field.empty() ? "" : " (" + cause.field + ")";
    switch (cause.cause) {
        case TraceCause::tuning:
            return "the phone has another tuning" + where;
        case TraceCause::caller:
            return "the phone's camera stack passes other settings" + where;
        case TraceCause::state:
            return "frames before it are missing in the log, or the phone's camera started anew";
        case TraceCause::version:
            return "the phone has another version of the library";
        case TraceCause::log:
            return "the line was damaged in the log: what is computed from the value agrees";
    }
    return "";
}

namespace {

std::string text_of(const TraceDifference& first) {
    return fmt::format(
        "first difference: frame {}{}{}, line {} of the log\n"
        "  {}\n"
        "    phone  {}\n"
        "    desk   {}\n"
        "  likely cause: {}\n",
        first.frame, first.time.empty() ? "" : ", ", first.time, first.line, first.value,
        first.phone, first.desk.empty() ? "(no such line)" : first.desk, cause_text(first.cause));
}

/// Of those that fit a screen; the JSON form has all.
std::string text_of(const std::vector<TracedField>& fields) {
    constexpr std::size_t kMost = 20;
    std::string text =
        fmt::format("{} of the tuning seen to differ:\n", counted(fields.size(), "field"));
    for (std::size_t i = 0; i < std::min(kMost, fields.size()); ++i) {
        const TracedField& one = fields[i];
        text += fmt::format("  {}: phone {}, desk {} (from frame {})\n", one.field, one.phone,
                            one.desk, one.frame);
    }
    if (fields.size() > kMost) {
        text += fmt::format("  and {} more; --json lists all\n", fields.size() - kMost);
    }
    return text;
}

}  // namespace

std::string verification_text(const Verification& result) {
    std::string text =
        fmt::format("{}, {} compared: {}\n", counted(result.frames, "frame"),
                    counted(result.lines, "trace line"), result.first ? "different" : "equal");
    if (result.first) {
        text += fmt::format("{} of the frames differ\n", result.differing_frames);
        text += text_of(*result.first);
    }
    if (!result.fields.empty()) text += text_of(result.fields);
    if (!result.unused.empty()) {
        text += fmt::format("not compared, as no frame of the log used it: {}\n",
                            fmt::join(result.unused, ", "));
    }
    if (result.without_tuning > 0) {
        text += fmt::format("{} not compared: the tuning lacks their part\n",
                            counted(result.without_tuning, "call"));
    }
    if (result.missing_lines > 0) {
        text +=
            fmt::format("{} missing in the phone's log\n", counted(result.missing_lines, "line"));
    }
    if (result.state_taken > 0) {
        text +=
            fmt::format("state taken anew from the log {}\n", counted(result.state_taken, "time"));
    }
    if (result.other_grid) {
        text += "the phone's grid of colour temperatures is not caller.ct_grid; its own was used\n";
    }
    return text;
}

}  // namespace imgtune::cli
