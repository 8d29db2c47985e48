#include "cli/verb.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <type_traits>
#include <utility>

namespace imgtune::cli {

Option Option::required() const {
    option_->required();
    return *this;
}

Option Option::shows_default() const {
    option_->capture_default_str();
    return *this;
}

Option Option::type_name(const std::string& name) const {
    option_->type_name(name);
    return *this;
}

Option Option::one_of(const std::vector<std::string>& words) const {
    option_->check(CLI::IsMember(words));
    return *this;
}

template <typename Number>
Option Option::range(Number least, Number most) const {
    option_->check(
        [least, most](const std::string& text) -> std::string {
            Number value{};
            if (!CLI::detail::lexical_cast(text, value))
                return fmt::format("{}: a {}number is needed", text,
                                   std::is_integral_v<Number> ? "whole " : "");
            if (value >= least && value <= most) return {};
            return fmt::format("{}: allowed are {} to {}", text, least, most);
        },
        fmt::format("{}..{}", least, most));
    return *this;
}

Option Option::separated_by_commas() const {
    option_->delimiter(',');
    return *this;
}

Option Option::one_value_each() const {
    option_->allow_extra_args(false);
    return *this;
}

Option Option::exactly(int values) const {
    option_->expected(values);
    return *this;
}

Option Option::needs(const Option& other) const {
    option_->needs(other.option_);
    return *this;
}

Option Option::excludes(const Option& other) const {
    option_->excludes(other.option_);
    return *this;
}

template <typename Value>
Option Verb::option(const std::string& names, Value& value, const std::string& help) const {
    return Option(app_.add_option(names, value, help));
}

Option Verb::flag(const std::string& names, bool& value, const std::string& help) const {
    return Option(app_.add_flag(names, value, help));
}

void Verb::footer(const std::string& text) const {
    app_.footer(text);
}

void Verb::run(std::function<int()> action) const {
    app_.callback([&chosen = chosen_, action = std::move(action)] { chosen = action; });
}

Verb Verbs::add(const std::string& name, const std::string& summary) const {
    return {*app_.add_subcommand(name, summary), chosen_};
}

#define IMGTUNE_RANGE(...) \
    template Option Option::range<__VA_ARGS__>(__VA_ARGS__, __VA_ARGS__) const
IMGTUNE_RANGE(int);
IMGTUNE_RANGE(unsigned);
IMGTUNE_RANGE(std::int64_t);
IMGTUNE_RANGE(std::uint64_t);
IMGTUNE_RANGE(double);

#define IMGTUNE_OPTION(...)                                                     \
    template Option Verb::option<__VA_ARGS__>(const std::string&, __VA_ARGS__&, \
                                              const std::string&) const
IMGTUNE_OPTION(std::string);
IMGTUNE_OPTION(std::vector<std::string>);
IMGTUNE_OPTION(std::int32_t);
IMGTUNE_OPTION(std::uint32_t);
IMGTUNE_OPTION(std::int64_t);
IMGTUNE_OPTION(std::uint64_t);
IMGTUNE_OPTION(std::vector<std::int64_t>);
IMGTUNE_OPTION(double);
IMGTUNE_OPTION(std::vector<double>);

}  // namespace imgtune::cli
