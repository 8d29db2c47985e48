#include <fmt/format.h>

#include <cmath>
#include <utility>

#include "workbench/judging/limits.h"
#include "workbench/text/yaml_document.h"
#include "workbench/tuning/yaml_nodes.h"

namespace imgtune::workbench {

namespace {

constexpr const char* kLimitsFormat = "imgtune-limits/1";
constexpr std::size_t kLargestLimits = 1U << 20U;
constexpr std::size_t kMostOverrides = 1000;

std::vector<std::string> limit_names(bool of_logs_alone) {
    std::vector<std::string> names;
    for (const LimitKind& kind : limit_kinds()) {
        if (!of_logs_alone || kind.scope == LimitScope::log) names.emplace_back(kind.name);
    }
    return names;
}

class LimitsReader {
  public:
    LimitsReader(const std::string& file, Faults& faults) : faults_(file, faults), maps_(faults_) {}

    Limits read(const std::string& text) {
        try {
            if (text.size() > kLargestLimits || text.find('\0') != text.npos) {
                faults_.add(1, {.code = "T001", .message = "too large for limits, or no text"});
            } else if (const char* const count = documents_if_not_one(text)) {
                faults_.add(
                    1, {.code = "T001", .message = fmt::format("holds {}; it must be one", count)});
            } else {
                read_root(YAML::Load(text));
            }
        } catch (const YAML::Exception& error) {
            faults_.add(error.mark.is_null() ? 1 : error.mark.line + 1,
                        {.code = "T001", .message = "not readable as YAML: " + error.msg});
        }
        return std::move(limits_);
    }

  private:
    bool is_map(const YAML::Node& node, const std::string& path) {
        if (node.IsMap()) return true;
        wrong_kind(node, path, "a map");
        return false;
    }

    void wrong_kind(const YAML::Node& node, const std::string& path, const std::string& allowed) {
        faults_.add(line_of(node),
                    {.code = "T005",
                     .path = path,
                     .message = fmt::format("is {}; it must be {}", shown(node), allowed),
                     .value = shown(node),
                     .allowed = allowed});
    }

    void read_root(const YAML::Node& root) {
        if (!is_map(root, "")) return;
        const std::vector<Entry> entries =
            maps_.open(root, "",
                       {"format", "fps", "noise", "settled", "flicker_patch", "flicker_mean",
                        "calibration", "limits", "overrides"});
        read_format(find_entry(entries, "format"));
        if (const Entry* const entry = find_entry(entries, "fps")) {
            read_number(entry->value, "fps", SummaryOptions::kLeastFramesPerSecond,
                        SummaryOptions::kMostFramesPerSecond, limits_.options.frames_per_second);
        }
        if (const Entry* const entry = find_entry(entries, "noise")) {
            read_number(entry->value, "noise", 0.0, SummaryOptions::kMostNoisePercent,
                        limits_.options.noise_percent);
        }
        VisibleLimits& seen = limits_.options.visible;
        for (const auto& [key, into] :
             {std::pair("settled", &seen.settled), std::pair("flicker_patch", &seen.flicker_patch),
              std::pair("flicker_mean", &seen.flicker_mean)}) {
            if (const Entry* const entry = find_entry(entries, key)) {
                read_number(entry->value, key, VisibleLimits::kLeast, VisibleLimits::kMost, *into);
            }
        }
        if (const Entry* const entry = find_entry(entries, "calibration")) {
            if (entry->value.IsScalar() && !entry->value.Scalar().empty()) {
                limits_.calibration = entry->value.Scalar();
            } else {
                wrong_kind(entry->value, "calibration", "the path of a calibration");
            }
        }
        if (const Entry* const entry = find_entry(entries, "limits")) {
            read_limit_map(entry->value, "limits", false,
                           [&](std::size_t i, const Limit& limit) { limits_.limits[i] = limit; });
        }
        if (const Entry* const entry = find_entry(entries, "overrides"))
            read_overrides(entry->value);
    }

    void read_format(const Entry* entry) {
        if (entry != nullptr && shown(entry->value) == kLimitsFormat) return;
        faults_.add(entry == nullptr ? 1 : entry->line,
                    {.code = "T002",
                     .path = "format",
                     .message = entry == nullptr ? "is missing"
                                                 : fmt::format("is {}; allowed is {}",
                                                               shown(entry->value), kLimitsFormat),
                     .allowed = kLimitsFormat,
                     .suggestion = fmt::format("'format: {}'; 'imgtune judge --starter' writes "
                                               "limits to start from",
                                               kLimitsFormat)});
    }

    bool read_number(const YAML::Node& node, const std::string& path, double least, double most,
                     double& into) {
        double value = 0.0;
        if (!node.IsScalar() || !YAML::convert<double>::decode(node, value) ||
            !std::isfinite(value)) {
            wrong_kind(node, path, "a number");
            return false;
        }
        if (value < least || value > most) {
            const std::string allowed = fmt::format("{}..{}", least, most);
            faults_.add(line_of(node),
                        {.code = "T101",
                         .path = path,
                         .message = fmt::format("is {}; allowed are {}", shown(node), allowed),
                         .value = shown(node),
                         .allowed = allowed});
            return false;
        }
        into = value;
        return true;
    }

    template <class Take>
    void read_limit_map(const YAML::Node& node, const std::string& path, bool of_logs_alone,
                        const Take& take) {
        if (!is_map(node, path)) return;
        for (const Entry& entry : maps_.open(node, path, limit_names(of_logs_alone))) {
            for (const LimitKind& kind : limit_kinds()) {
                if (entry.key != kind.name) continue;
                const std::optional<Limit> limit = read_limit(entry.value, kind, path);
                if (limit) take(static_cast<std::size_t>(kind.measured), *limit);
            }
        }
    }

    std::optional<Limit> read_limit(const YAML::Node& node, const LimitKind& kind,
                                    const std::string& above) {
        const std::string path = joined(above, kind.name);
        Limit limit;
        if (node.IsScalar() && node.Scalar() == "none") return limit;
        if (!node.IsMap()) {
            if (!node.IsScalar()) {
                wrong_kind(node, path, "a number, a map of at_most and no_worse_by, or none");
                return std::nullopt;
            }
            double value = 0.0;
            if (!read_number(node, path, 0.0, kind.most, value)) return std::nullopt;
            limit.at_most = value;
            return limit;
        }
        const std::vector<Entry> entries = maps_.open(node, path, {"at_most", "no_worse_by"});
        const auto read = [&](const char* key, std::optional<double>& into) {
            const Entry* const entry = find_entry(entries, key);
            double value = 0.0;
            if (entry != nullptr &&
                read_number(entry->value, joined(path, key), 0.0, kind.most, value)) {
                into = value;
            }
        };
        read("at_most", limit.at_most);
        read("no_worse_by", limit.no_worse_by);
        if (node.size() == 0) wrong_kind(node, path, "a map of at_most and no_worse_by");
        return limit;
    }

    void read_overrides(const YAML::Node& node) {
        if (!node.IsSequence() || node.size() > kMostOverrides) {
            wrong_kind(node, "overrides", fmt::format("a list of up to {}", kMostOverrides));
            return;
        }
        std::size_t i = 0;
        for (const auto& each : node) {
            const std::string path = fmt::format("overrides[{}]", i++);
            if (!is_map(each, path)) continue;
            const std::vector<Entry> entries = maps_.open(each, path, {"logs", "limits"});
            const Entry* const logs = find_entry(entries, "logs");
            if (logs == nullptr || !logs->value.IsScalar()) {
                faults_.add(line_of(each), {.code = "T004",
                                            .path = joined(path, "logs"),
                                            .message = "is missing; it is a pattern of names"});
                continue;
            }
            LimitOverride made{logs->value.Scalar(), {}};
            if (const Entry* const limits = find_entry(entries, "limits")) {
                read_limit_map(limits->value, joined(path, "limits"), true,
                               [&](std::size_t k, const Limit& limit) { made.limits[k] = limit; });
            }
            limits_.overrides.push_back(std::move(made));
        }
    }

    TextFaults faults_;
    MapOpener maps_;
    Limits limits_;
};

}  // namespace

Limits read_limits(const std::string& text, const std::string& file, Faults& faults) {
    return LimitsReader(file, faults).read(text);
}

}  // namespace imgtune::workbench
