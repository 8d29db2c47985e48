#include "workbench/capture/capture_tables.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>

#include "workbench/calibration/real_number.h"
#include "workbench/text/byte_source.h"
#include "workbench/text/characters.h"
#include "workbench/text/file_name.h"
#include "workbench/text/line_reader.h"

namespace imgtune::workbench {

namespace {

struct NumbersLine {
    std::string file;
    std::vector<double> numbers;
    int line = 0;
};

/// Lines of a file name and so many numbers. A file name may hold commas: the numbers stand last.
std::vector<NumbersLine> read_numbers(const std::string& text, const std::string& file,
                                      std::size_t count, const char* form, Faults& faults) {
    std::vector<NumbersLine> out;
    MemorySource source(text);
    LineReader lines(source);
    bool first = true;
    for (std::string_view line; lines.next(line);) {
        line = trimmed(line);
        if (line.empty() || line.front() == '#') continue;
        const bool is_header = first && line.starts_with("file,");
        first = false;
        if (is_header) continue;
        const auto number = static_cast<int>(lines.line());
        const auto refuse = [&](std::string what) {
            faults.add({.code = "P003",
                        .file = file,
                        .line = number,
                        .message = std::move(what),
                        .suggestion = fmt::format("write {}", form)});
        };
        NumbersLine read{{}, std::vector<double>(count), number};
        std::string_view rest = line;
        bool whole = true;
        for (std::size_t i = count; whole && i-- > 0;) {
            const std::size_t comma = rest.rfind(',');
            const auto value =
                comma == rest.npos ? std::nullopt : parse_real(trimmed(rest.substr(comma + 1)));
            whole = value.has_value();
            if (!whole) {
                refuse(comma == rest.npos
                           ? fmt::format("fewer than {} numbers", count)
                           : fmt::format("{} is no number", quoted_value(rest.substr(comma + 1))));
                break;
            }
            read.numbers[i] = *value;
            rest = rest.substr(0, comma);
        }
        if (!whole) return out;
        read.file = std::string(trimmed(rest));
        if (read.file.empty()) {
            refuse("a line without a file");
            return out;
        }
        if (out.size() == kMostCaptures) {
            refuse(fmt::format("more than {} lines", kMostCaptures));
            return out;
        }
        out.push_back(std::move(read));
    }
    return out;
}

bool is_letter_or_digit(char c) {
    return is_digit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

}  // namespace

std::vector<CornersLine> read_corners(const std::string& text, const std::string& file,
                                      Faults& faults) {
    std::vector<CornersLine> out;
    for (NumbersLine& read : read_numbers(text, file, 8, "file,x1,y1,x2,y2,x3,y3,x4,y4", faults)) {
        CornersLine& corners = out.emplace_back();
        corners.file = std::move(read.file);
        corners.line = read.line;
        for (std::size_t i = 0; i < 4; ++i) {
            corners.corners[i] = {read.numbers[2 * i], read.numbers[2 * i + 1]};
        }
    }
    return out;
}

std::vector<KelvinLine> read_kelvins(const std::string& text, const std::string& file,
                                     Faults& faults) {
    std::vector<KelvinLine> out;
    for (NumbersLine& read : read_numbers(text, file, 1, "file,kelvin", faults)) {
        out.push_back({std::move(read.file), read.numbers[0], read.line});
    }
    return out;
}

std::optional<double> kelvin_of_name(std::string_view path) {
    const std::string_view name = file_name(path);
    for (std::size_t end = name.size(); end-- > 1;) {
        if (name[end] != 'k' && name[end] != 'K') continue;
        if (end + 1 < name.size() && is_letter_or_digit(name[end + 1])) continue;
        std::size_t begin = end;
        while (begin > 0 && is_digit(name[begin - 1])) --begin;
        if (end - begin < 3 || end - begin > 6) continue;
        if (begin > 0 && is_letter_or_digit(name[begin - 1])) continue;
        int kelvin = 0;
        std::from_chars(name.data() + begin, name.data() + end, kelvin);
        return kelvin;
    }
    return std::nullopt;
}

bool names_file(std::string_view name, std::string_view path) {
    return name == path || name == file_name(path);
}

}  // namespace imgtune::workbench
