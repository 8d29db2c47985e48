#include "workbench/camera/row_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>

#include "workbench/findings/faults.h"
#include "workbench/text/bad_input.h"
#include "workbench/text/digits.h"
#include "workbench/text/glob.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kMostInGroup = 8;
constexpr std::size_t kCoefficients = 9;
constexpr std::size_t kCcmWords = 6;

/// Which of all columns the patterns choose; no pattern chooses all.
std::vector<bool> chosen_columns(const std::vector<std::string>& names,
                                 const std::vector<std::string>& patterns) {
    std::vector<bool> chosen(names.size(), patterns.empty());
    for (const std::string& pattern : patterns) {
        bool found = false;
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (!matches_glob(pattern, names[i])) continue;
            found = chosen[i] = true;
        }
        if (found) continue;
        const std::string near = nearest_name(pattern, names);
        throw BadInput(
            fmt::format("no column fits '{}'{}; * stands for any characters", pattern,
                        near.empty() ? std::string() : fmt::format(", did you mean '{}'?", near)));
    }
    return chosen;
}

std::vector<bool> chosen_color_fields(const RowColumns& columns) {
    const std::vector<bool> all = chosen_columns(row_column_names(columns.jobs), columns.patterns);
    if (!columns.jobs.color) return std::vector<bool>(color_fields().size());
    return {all.end() - static_cast<std::ptrdiff_t>(color_fields().size()), all.end()};
}

/// Copies `length` bytes; may write up to the next multiple of 16.
char* copy_text(char* at, const char* text, std::size_t length) {
    for (std::size_t done = 0; done < length; done += 16) std::memcpy(at + done, text + done, 16);
    return at + length;
}

}  // namespace

std::vector<std::string> row_column_names(Jobs jobs) {
    std::vector<std::string> names;
    names.reserve(kFrameColumns.size());
    for (const FrameColumn& column : kFrameColumns) names.emplace_back(column.name);
    if (jobs.ccm) {
        for (std::size_t k = 0; k < kCoefficients; ++k) names.push_back(fmt::format("c{}", k));
        for (std::size_t k = 0; k < kCcmWords; ++k) names.push_back(fmt::format("ccm{}", k));
    }
    if (jobs.color) {
        for (const ColorField& field : color_fields()) names.push_back(field.name);
    }
    return names;
}

Jobs jobs_shown(const RowColumns& columns) {
    const std::vector<bool> chosen =
        chosen_columns(row_column_names(columns.jobs), columns.patterns);
    const auto any = [&](std::size_t first, std::size_t count) {
        const auto begin = chosen.begin() + static_cast<std::ptrdiff_t>(first);
        return std::find(begin, begin + static_cast<std::ptrdiff_t>(count), true) !=
               begin + static_cast<std::ptrdiff_t>(count);
    };
    const std::size_t first = kFrameColumns.size();
    const std::size_t ccm = columns.jobs.ccm ? kCoefficients + kCcmWords : 0;
    return {any(first, ccm), any(first + ccm, chosen.size() - first - ccm)};
}

ColorText::ColorText(const std::vector<bool>& chosen) {
    for (std::size_t i = 0; i < chosen.size(); ++i) {
        if (!chosen[i]) continue;
        const ColorField& field = color_fields()[i];
        if (groups_.empty() || groups_.back().word != field.word ||
            groups_.back().count == kMostInGroup) {
            groups_.push_back({});
            groups_.back().word = field.word;
            groups_.back().first = static_cast<std::uint16_t>(fields_.size());
        }
        ++groups_.back().count;
        fields_.push_back({field.lsb, BitField{field.word, field.lsb, field.width}.value_mask()});
    }
    if (!groups_.empty()) {
        const auto [first, last] =
            std::minmax_element(groups_.begin(), groups_.end(),
                                [](const Group& a, const Group& b) { return a.word < b.word; });
        first_word_ = first->word;
        word_bytes_ = (last->word + 1 - first->word) * sizeof(std::uint32_t);
    }
    last_text_.resize(room());
    for (Group& group : groups_) {
        make_text(group);
        std::memcpy(last_text_.data() + last_length_, group.text, group.length);
        last_length_ += group.length;
    }
}

std::size_t ColorText::room() const {
    return groups_.size() * sizeof(Group::text) + 16;
}

void ColorText::make_text(Group& group) const {
    char* at = group.text;
    for (std::size_t i = group.first; i < std::size_t{group.first} + group.count; ++i) {
        const std::uint32_t value = (group.value >> fields_[i].lsb) & fields_[i].mask;
        at = put_cell(at, value);
    }
    group.length = static_cast<std::uint32_t>(at - group.text);
}

char* ColorText::put(char* at, const NSIspTuning::ISP_NVRAM_COLOR_T& image) {
    const std::uint32_t* const words = image.u4Word + first_word_;
    std::uint32_t* const last_words = last_.u4Word + first_word_;
    if (std::memcmp(words, last_words, word_bytes_) != 0) {
        char* const begin = last_text_.data();
        char* end = begin;
        for (Group& group : groups_) {
            const std::uint32_t value = image.u4Word[group.word];
            if (value != group.value) {
                group.value = value;
                make_text(group);
            }
            end = copy_text(end, group.text, group.length);
        }
        last_length_ = static_cast<std::size_t>(end - begin);
        std::memcpy(last_words, words, word_bytes_);
    }
    std::memcpy(at, last_text_.data(), last_length_);
    return at + last_length_;
}

RowText::RowText(const RowColumns& columns)
    : caller_(columns.caller), color_(chosen_color_fields(columns)) {
    const std::vector<std::string> all = row_column_names(columns.jobs);
    const std::vector<bool> chosen = chosen_columns(all, columns.patterns);
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (!chosen[i]) continue;
        names_.push_back(all[i]);
        const std::size_t k = i - kFrameColumns.size();
        if (i < kFrameColumns.size()) {
            inputs_.push_back(i);
        } else if (columns.jobs.ccm && k < kCoefficients) {
            matrix_.push_back(k);
        } else if (columns.jobs.ccm && k < kCoefficients + kCcmWords) {
            words_.push_back(k - kCoefficients);
        } else {
            any_color_ = true;
        }
    }
    const std::size_t numbers = 2 + inputs_.size() + matrix_.size() + words_.size();
    room_ = numbers * kNumberRoom + color_.room();
}

std::string RowText::header(std::string_view more) const {
    std::string text = "frame";
    for (const std::string& name : names_) (text += ',') += name;
    text += more;
    return text += '\n';
}

char* RowText::put(char* at, std::uint64_t number, const FrameValues& values,
                   const Registers& registers) {
    at = put_number(at, static_cast<std::int64_t>(number));
    for (const std::size_t i : inputs_) {
        at = put_cell(at, values[i]);
    }
    if (!matrix_.empty()) {
        const std::array<std::int32_t, 9> coefficients = decode(registers.ccm, caller_);
        for (const std::size_t k : matrix_) {
            at = put_cell(at, coefficients[k]);
        }
    }
    for (const std::size_t k : words_) {
        *at++ = ',';
        at = put_hex(at, registers.ccm.u4Word[k]);
    }
    if (any_color_) at = color_.put(at, registers.color);
    return at;
}

}  // namespace imgtune::workbench
