#include "workbench/text/yaml_document.h"

#include <yaml-cpp/eventhandler.h>
#include <yaml-cpp/yaml.h>

#include <sstream>

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

}  // namespace

const char* documents_if_not_one(const std::string& text) {
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
