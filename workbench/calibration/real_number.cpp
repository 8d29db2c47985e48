#include "workbench/calibration/real_number.h"

#include <fmt/format.h>

#include <cmath>
#include <locale>
#include <sstream>

#include "workbench/text/shown_text.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kLongestReal = 64;
constexpr std::size_t kLongestShown = 40;

}  // namespace

std::optional<double> parse_real(std::string_view text) {
    while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
    if (text.empty() || text.size() > kLongestReal) return std::nullopt;
    if (text.find_first_not_of("0123456789+-.eE") != text.npos) return std::nullopt;
    std::istringstream in{std::string(text)};
    in.imbue(std::locale::classic());
    double value = 0.0;
    if (!(in >> value) || in.peek() != std::istringstream::traits_type::eof()) return std::nullopt;
    return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::string quoted_value(std::string_view text) {
    return fmt::format("'{}'", shown_text(text, kLongestShown));
}

}  // namespace imgtune::workbench
