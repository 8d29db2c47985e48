#include "workbench/tuning/number.h"

#include <fmt/format.h>

#include <charconv>

namespace imgtune::workbench {

namespace {

constexpr std::size_t kMostDigits = 14;
constexpr std::size_t kMostDecimals = 9;
constexpr std::size_t kMostDigitsOfFraction = 9;

bool are_digits(std::string_view text) {
    for (const char c : text) {
        if (c < '0' || c > '9') return false;
    }
    return !text.empty();
}

std::optional<std::int64_t> digits_value(std::string_view text, int base) {
    if (text.empty() || text[0] == '-') return std::nullopt;
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

bool looks_octal(std::string_view digits) {
    if (digits.starts_with("0o")) return are_digits(digits.substr(2));
    return digits.size() > 1 && digits[0] == '0' && are_digits(digits);
}

std::optional<Number> parse_decimal(std::string_view text, std::size_t point, std::string& reason) {
    const std::string_view whole = text.substr(0, point);
    const std::string_view decimals = text.substr(point + 1);
    if ((!whole.empty() && !are_digits(whole)) || !are_digits(decimals)) return std::nullopt;
    if (whole.size() + decimals.size() > kMostDigits || decimals.size() > kMostDecimals) {
        reason = fmt::format("has too many digits; at most {}, {} of them behind the point",
                             kMostDigits, kMostDecimals);
        return std::nullopt;
    }
    Number number{Number::Kind::scaled,
                  *digits_value(std::string(whole) + std::string(decimals), 10), 1};
    for (std::size_t i = 0; i < decimals.size(); ++i) number.denominator *= 10;
    return number;
}

std::optional<Number> parse_fraction(std::string_view text, std::size_t slash,
                                     std::string& reason) {
    const std::string_view above = text.substr(0, slash);
    const std::string_view below = text.substr(slash + 1);
    if (!are_digits(above) || !are_digits(below)) return std::nullopt;
    if (above.size() > kMostDigitsOfFraction || below.size() > kMostDigitsOfFraction) {
        reason = fmt::format("has too many digits; at most {} on each side of the stroke",
                             kMostDigitsOfFraction);
        return std::nullopt;
    }
    const Number number{Number::Kind::scaled, *digits_value(above, 10), *digits_value(below, 10)};
    if (number.denominator == 0) {
        reason = "divides by 0";
        return std::nullopt;
    }
    return number;
}

std::optional<Number> parse_unsigned(std::string_view text, std::string& reason) {
    if (text.starts_with("0x") || text.starts_with("0X")) {
        const auto value = digits_value(text.substr(2), 16);
        if (!value) return std::nullopt;
        return Number{Number::Kind::hex, *value, 1};
    }
    if (looks_octal(text)) {
        reason =
            "looks octal, and octal numbers are not read; write it without the leading 0, "
            "or as 0x hex";
        return std::nullopt;
    }
    if (const std::size_t slash = text.find('/'); slash != text.npos) {
        return parse_fraction(text, slash, reason);
    }
    if (const std::size_t point = text.find('.'); point != text.npos) {
        return parse_decimal(text, point, reason);
    }
    const auto value = digits_value(text, 10);
    if (!value) return std::nullopt;
    return Number{Number::Kind::integer, *value, 1};
}

}  // namespace

std::int64_t Number::times(std::int64_t scale) const {
    if (kind != Kind::scaled) return numerator;
    const std::int64_t magnitude = numerator < 0 ? -numerator : numerator;
    const std::int64_t product = magnitude * scale;
    const std::int64_t rounded =
        product / denominator + (2 * (product % denominator) >= denominator ? 1 : 0);
    return numerator < 0 ? -rounded : rounded;
}

std::optional<Number> parse_number(std::string_view text, std::string& reason) {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    std::optional<Number> number = parse_unsigned(text, reason);
    if (number && negative) number->numerator = -number->numerator;
    return number;
}

std::optional<std::int64_t> parse_integer(std::string_view text) {
    std::string reason;
    const auto number = parse_number(text, reason);
    if (!number || number->kind == Number::Kind::scaled) return std::nullopt;
    return number->numerator;
}

}  // namespace imgtune::workbench
