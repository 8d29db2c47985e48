#ifndef IMGTUNE_WORKBENCH_TEXT_DIGITS_H
#define IMGTUNE_WORKBENCH_TEXT_DIGITS_H

#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>

namespace imgtune::workbench {

/// Room for any number that put_number, put_cell or put_hex writes with a comma, what they write
/// beyond its end included.
inline constexpr std::size_t kNumberRoom = 24;

namespace digits {

struct Text {
    char text[7];  ///< behind a comma
    std::uint8_t length;
};

/// Decimal texts of 0..4096, each behind a comma: every register field of up to 12 bits, every
/// coefficient.
inline constexpr std::array<Text, 4097> kSmall = [] {
    std::array<Text, 4097> all{};
    for (unsigned n = 0; n < all.size(); ++n) {
        std::uint8_t at = n > 999 ? 5 : (n > 99 ? 4 : (n > 9 ? 3 : 2));
        all[n].text[0] = ',';
        all[n].length = at;
        for (unsigned rest = n; at > 1; rest /= 10) {
            all[n].text[--at] = static_cast<char>('0' + rest % 10);
        }
    }
    return all;
}();

inline constexpr std::array<std::array<char, 2>, 256> kHex = [] {
    std::array<std::array<char, 2>, 256> all{};
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (unsigned n = 0; n < all.size(); ++n) all[n] = {kDigits[n >> 4], kDigits[n & 15]};
    return all;
}();

}  // namespace digits

/// Writes a whole number in decimal; the end of what was written.
inline char* put_number(char* at, std::int64_t value) {
    if (value < 0 && value >= -4096) {
        *at++ = '-';
        value = -value;
    }
    if (value >= 0 && value <= 4096) {
        const digits::Text& small = digits::kSmall[static_cast<std::size_t>(value)];
        std::memcpy(at, small.text + 1, 4);
        return at + small.length - 1;
    }
    return std::to_chars(at, at + 20, value).ptr;
}

/// Writes a comma and a number.
inline char* put_cell(char* at, std::int64_t value) {
    if (value >= 0 && value <= 4096) {
        const digits::Text& small = digits::kSmall[static_cast<std::size_t>(value)];
        std::memcpy(at, &small, sizeof(small));  // all at once; what follows covers the rest
        return at + small.length;
    }
    *at++ = ',';
    return put_number(at, value);
}

/// Writes a word as 0x and eight digits.
inline char* put_hex(char* at, std::uint32_t word) {
    *at++ = '0';
    *at++ = 'x';
    for (const int low : {24, 16, 8, 0}) {
        std::memcpy(at, digits::kHex[(word >> low) & 0xff].data(), 2);
        at += 2;
    }
    return at;
}

}  // namespace imgtune::workbench

#endif
