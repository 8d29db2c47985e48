#include "workbench/studies/story.h"

#include <fmt/format.h>

namespace imgtune::workbench {

void Story::section(const std::string& key, const std::string& title) {
    if (!text_.empty()) text_ += '\n';
    text_ += title + "\n";
    json_[key] = Json::object();
    section_ = &json_[key];
}

void Story::fact(const std::string& key, const std::string& label, const Json& value,
                 const std::string& text) {
    text_ += fmt::format("  {:<24}{}\n", label, text);
    (*section_)[key] = value;
}

void Story::matrix(const std::string& key, const std::string& label,
                   const std::vector<std::int64_t>& values) {
    for (std::size_t row = 0; row + 3 <= values.size(); row += 3) {
        text_ += fmt::format("  {:<24}{:>6} {:>6} {:>6}\n", row == 0 ? label : "", values[row],
                             values[row + 1], values[row + 2]);
    }
    (*section_)[key] = values;
}

void Story::list(const std::string& key, const std::string& label,
                 const std::vector<std::int64_t>& values) {
    constexpr std::size_t kInLine = 20;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i % kInLine == 0) text_ += fmt::format("  {:<24}", i == 0 ? label : "");
        const bool ends = i % kInLine == kInLine - 1 || i + 1 == values.size();
        text_ += fmt::format("{:>5}{}", values[i], ends ? "\n" : "");
    }
    (*section_)[key] = values;
}

void Story::line(const std::string& text) {
    text_ += text + "\n";
}

}  // namespace imgtune::workbench
