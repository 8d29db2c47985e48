#include "workbench/judging/junit.h"

#include <fmt/format.h>

#include "workbench/text/shown_text.h"

namespace imgtune::workbench {

namespace {

/// For an attribute or a text: what markup is made of is written out; control characters, which no
/// XML may hold, are shown.
std::string escaped(const std::string& text) {
    std::string out;
    for (const char c : shown_text(text)) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

std::string suite_of(const Verdict& verdict, const std::string& name, const Command& command) {
    const bool failed = !verdict.error.empty();
    std::size_t skipped = 0;
    std::string cases;
    const auto begin = [&](const char* of) {
        return fmt::format("    <testcase classname=\"{}\" name=\"{}\"", escaped(name), of);
    };
    if (failed) {
        cases += fmt::format("{}><error message=\"{}\"/></testcase>\n", begin("log"),
                             escaped(verdict.error));
    }
    for (const LimitVerdict& limit : verdict.limits) {
        cases += begin(kind_of(limit.measured).name);
        if (!limit.value || !limit.is_known) {
            ++skipped;
            cases += "><skipped/></testcase>\n";
        } else if (!limit.is_broken()) {
            cases += "/>\n";
        } else {
            cases += fmt::format("><failure message=\"{}\">{}</failure></testcase>\n",
                                 escaped(sentence_of(limit)), escaped(command(verdict, limit)));
        }
    }
    return fmt::format(
               "  <testsuite name=\"{}\" tests=\"{}\" failures=\"{}\" errors=\"{}\" "
               "skipped=\"{}\">\n",
               escaped(name), verdict.limits.size() + (failed ? 1U : 0U), verdict.broken(),
               failed ? 1 : 0, skipped) +
           cases + "  </testsuite>\n";
}

}  // namespace

std::string sentence_of(const LimitVerdict& verdict) {
    const LimitKind& kind = kind_of(verdict.measured);
    std::string text = fmt::format("{:.4g} {}", verdict.value->value, kind.unit);
    if (verdict.value->frame != 0) text += fmt::format(" at frame {}", verdict.value->frame);
    if (!verdict.value->where.empty()) text += ", " + verdict.value->where;
    text += fmt::format("; allowed is {:.4g}", verdict.limit);
    if (verdict.is_relative)
        text += fmt::format(", as it was {:.4g} before", verdict.old.value_or(0.0));
    return text;
}

std::string junit_of(const Judgement& judgement, const std::string& tuning,
                     const Command& command) {
    std::string suites;
    if (!judgement.tuning.limits.empty()) suites += suite_of(judgement.tuning, tuning, command);
    for (const Verdict& verdict : judgement.logs) suites += suite_of(verdict, verdict.log, command);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<testsuites name=\"imgtune judge\">\n" +
           suites + "</testsuites>\n";
}

}  // namespace imgtune::workbench
