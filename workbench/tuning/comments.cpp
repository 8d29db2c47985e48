#include "workbench/tuning/comments.h"

#include <algorithm>
#include <set>

namespace imgtune::workbench {

namespace {

constexpr std::string_view kBlanks = " \t\r";

/// The line without its end; `text` is left with what follows.
std::string_view next_line(std::string_view& text) {
    const std::size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
    return line;
}

/// Walks over a text and knows where it is quoted. A quote opens where a value may begin, so that
/// the apostrophe of a plain word opens none.
class Quotes {
  public:
    bool open() const { return quote_ != '\0'; }

    void take(char before, char c) {
        if (escaped_) {
            escaped_ = false;
        } else if (open()) {
            if (c == '\\' && quote_ == '"') escaped_ = true;
            if (c == quote_) quote_ = '\0';
        } else if ((c == '"' || c == '\'') && begins_value(before)) {
            quote_ = c;
        }
    }

  private:
    static bool begins_value(char before) {
        return std::string_view(" \t\n[{,:'").find(before) != std::string_view::npos;
    }

    char quote_ = '\0';
    bool escaped_ = false;
};

}  // namespace

std::vector<Comment> comments_of(std::string_view yaml) {
    std::vector<Comment> comments;
    Quotes quotes;
    for (int number = 1; !yaml.empty(); ++number) {
        std::string_view line = next_line(yaml);
        char before = '\n';
        for (std::size_t i = 0; i < line.size(); ++i) {
            const char c = line[i];
            const bool separated = before == '\n' || before == ' ' || before == '\t';
            if (c == '#' && separated && !quotes.open()) {
                const std::size_t end = line.find_last_not_of(kBlanks);
                comments.push_back({number, std::string(line.substr(i, end + 1 - i))});
                break;
            }
            quotes.take(before, c);
            before = c;
        }
    }
    return comments;
}

std::string head_comments(std::string_view yaml) {
    std::string head;
    while (!yaml.empty()) {
        const std::string_view line = next_line(yaml);
        const std::size_t start = line.find_first_not_of(kBlanks);
        if (start != line.npos && line[start] != '#') break;
        head.append(line.substr(0, line.find_last_not_of(kBlanks) + 1)) += '\n';
    }
    return head;
}

std::vector<Comment> lost_comments(std::string_view from, std::string_view to) {
    std::set<std::string> kept;
    for (Comment& comment : comments_of(to)) kept.insert(std::move(comment.text));
    std::vector<Comment> lost = comments_of(from);
    lost.erase(std::remove_if(lost.begin(), lost.end(),
                              [&](const Comment& c) { return kept.count(c.text) != 0; }),
               lost.end());
    return lost;
}

}  // namespace imgtune::workbench
