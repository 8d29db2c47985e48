#include "workbench/frames/frame_log.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <utility>

#include "workbench/findings/faults.h"
#include "workbench/text/characters.h"
#include "workbench/text/shown_text.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kLongestQuote = 40;  ///< of a value in a message

/// Without blanks around it and without a pair of double quotes.
std::string_view bare(std::string_view text) {
    text = trimmed(text);
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') {
        text = trimmed(text.substr(1, text.size() - 2));
    }
    return text;
}

/// The text in quotes, printable and not too long.
std::string value_text(std::string_view text) {
    return fmt::format("'{}'", shown_text(text, kLongestQuote));
}

/// Cuts the next value off the front of a line.
std::string_view take_value(std::string_view& rest) {
    const std::size_t comma = rest.find(',');
    const std::string_view value = rest.substr(0, comma);
    rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
    return value;
}

/// What to say to a name that is no column.
std::string hint_for(std::string_view name) {
    std::vector<std::string> known;
    std::string names;
    for (const FrameColumn& column : kFrameColumns) {
        known.emplace_back(column.name);
        names += fmt::format(" {}", column.name);
    }
    const std::string near = nearest_name(name, known);
    if (!near.empty()) return fmt::format("did you mean '{}'?", near);
    return fmt::format("columns are{}; begin a name with x_ to have its column skipped", names);
}

bool is_skipped(std::string_view name) {
    return name == "frame" || name.starts_with("x_");
}

}  // namespace

Frame to_frame(const FrameValues& values) {
    const auto value = [&](std::size_t i) { return static_cast<std::int32_t>(values[i]); };
    const auto gain = [&](std::size_t i) {
        return AWB_GAIN_T{value(i), value(i + 1), value(i + 2)};
    };
    Frame frame;
    frame.state.u4RealLV = static_cast<std::uint32_t>(values[0]);
    frame.state.u4CCT = static_cast<std::uint32_t>(values[1]);
    frame.state.rAWBFullGain = gain(kFullGain);
    frame.state.rAWBGain = gain(kAwbGain);
    frame.state.u4FlashMode = value(kFlash);
    frame.state.u4SceneFlag = value(kFlash + 1);
    frame.state.profile = value(kFlash + 2);
    frame.capture = value(kFlash + 3);
    return frame;
}

FrameValues to_values(const Frame& frame) {
    const NSIspTuning::RAWIspCamInfo& state = frame.state;
    const AWB_GAIN_T& full = state.rAWBFullGain;
    const AWB_GAIN_T& awb = state.rAWBGain;
    return {state.u4RealLV,    state.u4CCT,       full.i4R,      full.i4G,
            full.i4B,          awb.i4R,           awb.i4G,       awb.i4B,
            state.u4FlashMode, state.u4SceneFlag, state.profile, frame.capture};
}

BadFrames::BadFrames(const std::string& log, std::uint64_t line, std::string_view column,
                     std::string what_is_wrong)
    : BadInput(fmt::format("{}:{}: {}", log, line, what_is_wrong),
               {log, line, std::string(column)}),
      message(std::move(what_is_wrong)) {}

bool begins_frame_log(std::string_view start) {
    MemorySource source(start);
    LineReader lines(source);
    for (std::string_view text; lines.next(text);) {
        if (trimmed(text).empty() || trimmed(text).front() == '#') continue;
        while (!text.empty()) {
            const std::string_view name = bare(take_value(text));
            if (std::any_of(kFrameColumns.begin(), kFrameColumns.end(),
                            [&](const FrameColumn& column) { return column.name == name; })) {
                return true;
            }
        }
        return false;
    }
    return false;
}

FrameLog::FrameLog(std::string name, ByteSource& source) : name_(std::move(name)), lines_(source) {
    read_header();
}

void FrameLog::fail(std::string_view what, std::string_view column) const {
    throw BadFrames(name_, std::max<std::uint64_t>(lines_.line(), 1), column, std::string(what));
}

/// The next line that is neither blank nor a comment.
bool FrameLog::next_line(std::string_view& text) {
    while (lines_.next(text)) {
        if (lines_.too_long()) {
            fail(fmt::format("the line is longer than {} bytes; is this a frame log?",
                             LineReader::kLongestLine));
        }
        if (text.empty() || text.front() == '#') continue;
        if ((text.front() == ' ' || text.front() == '\t') &&
            (trimmed(text).empty() || trimmed(text).front() == '#')) {
            continue;
        }
        return true;
    }
    return false;
}

void FrameLog::read_header() {
    std::string_view rest;
    if (!next_line(rest)) {
        fail(
            "the header line that names the columns is missing (such as lv,cct,awb_r,awb_g,awb_b)");
    }
    std::array<bool, kFrameColumns.size()> present{};
    for (bool more = true; more;) {
        more = rest.find(',') != std::string_view::npos;
        const std::string_view name = bare(take_value(rest));
        const auto column = std::find_if(kFrameColumns.begin(), kFrameColumns.end(),
                                         [&](const FrameColumn& c) { return c.name == name; });
        if (column == kFrameColumns.end()) {
            if (name.empty()) {
                fail(fmt::format("column {} has no name: is there a comma too many{}?",
                                 targets_.size() + 1, more ? "" : " at the end of the line"));
            }
            if (!is_skipped(name)) {
                fail(fmt::format("column {}: unknown name {}; {}", targets_.size() + 1,
                                 value_text(name), hint_for(name)),
                     name);
            }
            targets_.push_back(-1);
            continue;
        }
        const auto index = static_cast<std::size_t>(column - kFrameColumns.begin());
        if (std::exchange(present[index], true)) {
            fail(fmt::format("column '{}' is named twice; remove one", name), name);
        }
        targets_.push_back(static_cast<int>(index));
    }
    require_columns(present);
}

void FrameLog::require_columns(const std::array<bool, kFrameColumns.size()>& present) {
    const auto triple = [&](std::size_t first) {
        const auto count =
            std::count(present.begin() + static_cast<std::ptrdiff_t>(first),
                       present.begin() + static_cast<std::ptrdiff_t>(first) + 3, true);
        if (count != 0 && count != 3) {
            fail(fmt::format("a gain needs its three columns '{}', '{}' and '{}'; {} missing",
                             kFrameColumns[first].name, kFrameColumns[first + 1].name,
                             kFrameColumns[first + 2].name, count == 2 ? "one is" : "two are"),
                 kFrameColumns[first].name);
        }
        return count == 3;
    };
    const bool full = triple(kFullGain);
    const bool awb = triple(kAwbGain);
    for (std::size_t i = 0; i < kFullGain; ++i) {
        const std::string_view name = kFrameColumns[i].name;
        if (!present[i]) fail(fmt::format("column '{}' is missing", name), name);
    }
    if (!full && !awb) {
        fail(
            "the gain is missing: columns 'awb_r', 'awb_g', 'awb_b' or 'full_r', 'full_g', "
            "'full_b'",
            kFrameColumns[kAwbGain].name);
    }
    copy_full_to_awb_ = !awb;
    copy_awb_to_full_ = !full;
}

std::int64_t FrameLog::read_number(std::string_view text, const FrameColumn& column) const {
    const auto complain = [&](std::string_view what) {
        fail(fmt::format("column '{}': {}; allowed are whole numbers {}..{}", column.name, what,
                         column.least, column.most),
             column.name);
    };
    std::string_view digits = bare(text);
    if (digits.empty()) complain("the value is missing");
    if (digits.size() > 1 && digits.front() == '+' && digits[1] != '-') digits.remove_prefix(1);
    std::int64_t value = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (result.ptr != digits.data() + digits.size() || result.ec == std::errc::invalid_argument) {
        complain(value_text(text) + " is not a whole number");
    }
    if (result.ec != std::errc() || value < column.least || value > column.most) {
        complain(value_text(text) + " is out of range");
    }
    return value;
}

/// A value in any other form than a few digits; an empty one keeps what the line before said, or
/// stands for 0.
void FrameLog::read_value(std::string_view text, std::size_t column) {
    if (column == kLv || !bare(text).empty()) {
        values_[column] = read_number(text, kFrameColumns[column]);
        return;
    }
    empty_[column] = true;
    any_empty_ = true;
    if (column >= kFlash) values_[column] = 0;
}

/// A gain is told whole or not at all; the other one stands for it.
void FrameLog::fill_empty_gains() {
    const auto empties = [&](std::size_t first) {
        const std::ptrdiff_t count = std::count(&empty_[first], &empty_[first] + 3, true);
        if (count % 3 != 0) {
            fail(fmt::format("columns '{}', '{}' and '{}': give all three values or none",
                             kFrameColumns[first].name, kFrameColumns[first + 1].name,
                             kFrameColumns[first + 2].name),
                 kFrameColumns[first].name);
        }
        return count == 3;
    };
    const bool full = empties(kFullGain);
    const bool awb = empties(kAwbGain);
    if (full && !awb && !copy_full_to_awb_) std::copy_n(&values_[kAwbGain], 3, &values_[kFullGain]);
    if (awb && !full && !copy_awb_to_full_) std::copy_n(&values_[kFullGain], 3, &values_[kAwbGain]);
    empty_ = {};
    any_empty_ = false;
}

void FrameLog::read_values(std::string_view text) {
    const char* at = text.data();
    const char* const end = at + text.size();
    for (std::size_t i = 0; i < targets_.size(); ++i) {
        if (at > end) {
            fail(fmt::format("the line has {} value{}, the header names {} columns", i,
                             i == 1 ? "" : "s", targets_.size()));
        }
        const char* const begin = at;
        const bool negative = at != end && *at == '-';
        if (negative) ++at;
        std::uint32_t value = 0;
        const char* const digits = at;
        for (; at != end; ++at) {
            const auto digit = static_cast<unsigned>(*at) - unsigned{'0'};
            if (digit > 9) break;
            value = value * 10 + digit;
        }
        // Up to nine digits fit every column; whatever else is there takes the long way.
        const bool plain = at != digits && at - digits <= 9 && (at == end || *at == ',');
        if (!plain) at = std::find(at, end, ',');
        const int target = targets_[i];
        if (target >= 0) {
            const auto index = static_cast<std::size_t>(target);
            const auto magnitude = static_cast<std::int64_t>(value);
            if (plain) {
                values_[index] = negative ? -magnitude : magnitude;
            } else {
                read_value(std::string_view(begin, static_cast<std::size_t>(at - begin)), index);
            }
        }
        ++at;  // the comma; past the end after the last value
    }
    if (at <= end) {
        fail(fmt::format("the line has {} values, the header names {} columns",
                         targets_.size() + 1 + static_cast<std::size_t>(std::count(at, end, ',')),
                         targets_.size()));
    }
}

bool FrameLog::next(Frame& frame) {
    std::string_view text;
    if (!next_line(text)) return false;
    read_values(text);
    if (any_empty_) fill_empty_gains();
    if (copy_full_to_awb_) std::copy_n(&values_[kFullGain], 3, &values_[kAwbGain]);
    if (copy_awb_to_full_) std::copy_n(&values_[kAwbGain], 3, &values_[kFullGain]);
    frame = to_frame(values_);
    return true;
}

}  // namespace imgtune::workbench
