#include "workbench/judging/judgement.h"

#include <algorithm>
#include <utility>

namespace imgtune::workbench {

namespace {

/// A limit of 0 is strained by the value itself.
double strain_of(const LimitVerdict& verdict) {
    if (!verdict.value || !verdict.is_known) return 0.0;
    if (verdict.limit > 0.0) return verdict.value->value / verdict.limit;
    return verdict.value->value > verdict.limit ? 1.0 + verdict.value->value : 0.0;
}

}  // namespace

Measures measures_of(const Faults& findings) {
    Measures measures;
    Measure errors;
    Measure warnings;
    for (const Fault& fault : findings.list()) {
        Measure& measure = fault.severity == Severity::error ? errors : warnings;
        measure.value += 1.0;
        if (measure.where.empty()) measure.where = fault.code + ' ' + fault.sentence();
    }
    measures[static_cast<std::size_t>(Measured::check_errors)] = errors;
    measures[static_cast<std::size_t>(Measured::check_warnings)] = warnings;
    return measures;
}

bool Verdict::is_accepted() const {
    return error.empty() && broken() == 0;
}

std::size_t Verdict::broken() const {
    return static_cast<std::size_t>(
        std::count_if(limits.begin(), limits.end(),
                      [](const LimitVerdict& verdict) { return verdict.is_broken(); }));
}

double Verdict::strain() const {
    double most = 0.0;
    for (const LimitVerdict& verdict : limits) most = std::max(most, strain_of(verdict));
    return most;
}

Verdict judge(const LimitSet& limits, LimitScope scope, const Measures& measures,
              const Measures* old) {
    Verdict verdict;
    for (const LimitKind& kind : limit_kinds()) {
        const auto i = static_cast<std::size_t>(kind.measured);
        const Limit& limit = limits[i];
        if (kind.scope != scope || limit.is_none()) continue;
        LimitVerdict made;
        made.measured = kind.measured;
        made.value = measures[i];
        if (old != nullptr && (*old)[i]) made.old = (*old)[i]->value;
        if (limit.at_most) {
            made.limit = *limit.at_most;
            made.is_known = true;
        }
        if (limit.no_worse_by && made.old) {
            const double compared = *made.old + *limit.no_worse_by;
            if (!made.is_known || compared < made.limit) {
                made.limit = compared;
                made.is_relative = true;
            }
            made.is_known = true;
        }
        verdict.limits.push_back(std::move(made));
    }
    return verdict;
}

bool Judgement::is_accepted() const {
    return tuning.is_accepted() && refused_logs() == 0;
}

std::size_t Judgement::refused_logs() const {
    return static_cast<std::size_t>(std::count_if(
        logs.begin(), logs.end(), [](const Verdict& verdict) { return !verdict.is_accepted(); }));
}

std::size_t Judgement::broken(Measured measured) const {
    const auto breaks = [measured](const Verdict& verdict) {
        return std::any_of(verdict.limits.begin(), verdict.limits.end(),
                           [measured](const LimitVerdict& limit) {
                               return limit.measured == measured && limit.is_broken();
                           });
    };
    return static_cast<std::size_t>(std::count_if(logs.begin(), logs.end(), breaks)) +
           (breaks(tuning) ? 1U : 0U);
}

std::uint64_t Judgement::frames() const {
    std::uint64_t sum = 0;
    for (const Verdict& verdict : logs) sum += verdict.frames;
    return sum;
}

Judgement judgement_of(Verdict tuning, std::vector<Verdict> logs) {
    // By value: the strain of each is worked out once.
    std::vector<std::pair<double, std::size_t>> order;
    for (std::size_t i = 0; i < logs.size(); ++i) order.emplace_back(logs[i].strain(), i);
    std::stable_sort(order.begin(), order.end(), [&](const auto& a, const auto& b) {
        const bool a_failed = !logs[a.second].error.empty();
        const bool b_failed = !logs[b.second].error.empty();
        return a_failed != b_failed ? a_failed : a.first > b.first;
    });
    Judgement judgement{std::move(tuning), {}};
    for (const auto& each : order) judgement.logs.push_back(std::move(logs[each.second]));
    return judgement;
}

}  // namespace imgtune::workbench
