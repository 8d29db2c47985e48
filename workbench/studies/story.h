#ifndef IMGTUNE_WORKBENCH_STUDIES_STORY_H
#define IMGTUNE_WORKBENCH_STUDIES_STORY_H

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace imgtune::workbench {

/// What is told to a person and to a script at once: titled sections of facts.
class Story {
  public:
    using Json = nlohmann::ordered_json;

    void section(const std::string& key, const std::string& title);
    /// A line of text "label  text" and a member of the section's JSON.
    void fact(const std::string& key, const std::string& label, const Json& value,
              const std::string& text);
    /// Nine values as three lines.
    void matrix(const std::string& key, const std::string& label,
                const std::vector<std::int64_t>& values);
    /// Any number of values, a few a line.
    void list(const std::string& key, const std::string& label,
              const std::vector<std::int64_t>& values);
    void line(const std::string& text);  ///< text alone

    Json& json() { return *section_; }  ///< of the section
    const std::string& text() const { return text_; }
    std::string json_text() const { return json_.dump(2) + "\n"; }

  private:
    std::string text_;
    Json json_ = Json::object();
    Json* section_ = &json_;
};

}  // namespace imgtune::workbench

#endif
