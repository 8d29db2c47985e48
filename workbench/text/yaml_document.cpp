#include "workbench/text/yaml_document.h"

#include <yaml-cpp/eventhandler.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <sstream>
#include <string_view>

namespace imgtune::workbench {

namespace {

/// Takes a document's events and keeps none.
class IgnoreEvents : public YAML::EventHandler {
  public:
    void OnDocumentStart(const YAML::Mark&) override {}
    void OnDocumentEnd() override {}
    void OnNull(const YAML::Mark&, YAML::anchor_t) override {}
    void OnAlias(const YAML::Mark&, YAML::anchor_t) override {}
    void OnScalar(const YAML::Mark&, const std::string&, YAML::anchor_t,
                  const std::string&) override {}
    void OnSequenceStart(const YAML::Mark&, const std::string&, YAML::anchor_t,
                         YAML::EmitterStyle::value) override {}
    void OnSequenceEnd() override {}
    void OnMapStart(const YAML::Mark&, const std::string&, YAML::anchor_t,
                    YAML::EmitterStyle::value) override {}
    void OnMapEnd() override {}
};

/// A map whose keys all stand at the left margin, where nothing else does, ends with the text.
bool is_one_map(std::string_view text) {
    bool has_key = false;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        if (line.substr(0, line.size() - 1).find('\r') != line.npos) return false;
        if (line.empty() || line == "\r" || line[0] == '#' || (has_key && line[0] == ' ')) continue;
        const std::size_t key = line.find_first_not_of("abcdefghijklmnopqrstuvwxyz_");
        if (key == 0 || key == line.npos || line[key] != ':') return false;
        if (key + 1 < line.size() && line[key + 1] != ' ' && line[key + 1] != '\r') return false;
        has_key = true;
    }
    return has_key;
}

}  // namespace

const char* documents_if_not_one(const std::string& text) {
    if (is_one_map(text)) return nullptr;  // told without reading it twice
    std::istringstream in(text);
    YAML::Parser parser(in);
    IgnoreEvents ignore;
    if (!parser.HandleNextDocument(ignore)) return "no YAML document";
    return parser.HandleNextDocument(ignore) ? "2 or more YAML documents" : nullptr;
}

int line_of(const YAML::Node& node) {
    return node.Mark().line + 1;
}

}  // namespace imgtune::workbench
