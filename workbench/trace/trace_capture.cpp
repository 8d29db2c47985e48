#include "workbench/trace/trace_capture.h"

#include <android/log.h>
#include <cutils/properties.h>

#include "workbench/text/bad_input.h"

namespace imgtune::workbench {

namespace {

std::vector<std::string> captured;

void keep_line(const __android_log_message* message) {
    std::string text = message->message;
    while (!text.empty() && text.back() == '\n') text.pop_back();
    captured.push_back(std::move(text));
}

}  // namespace

TraceCapture::TraceCapture(const std::vector<std::string>& switches) {
    captured.clear();
    for (const std::string& name : switches) {
        char value[PROPERTY_VALUE_MAX] = {};
        property_get(name.c_str(), value, "");
        before_.emplace_back(name, value);
        set_property(name, "1");
    }
    __android_log_set_logger(keep_line);
}

TraceCapture::~TraceCapture() {
    __android_log_set_logger(nullptr);
    for (const auto& [name, value] : before_) property_set(name.c_str(), value.c_str());
}

std::vector<std::string>& TraceCapture::lines() {
    return captured;
}

std::vector<std::string> color_switches() {
    std::vector<std::string> names{"debug.smooth_color.dump", "debug.smooth_color.dump.cm"};
    for (const char* block : {"global", "lum", "hue", "sat", "sgy", "lsp"}) {
        names.push_back(std::string("debug.smooth_color.lvdump.") + block);
        names.push_back(std::string("debug.smooth_color.dump.") + block);
    }
    return names;
}

std::vector<std::string> trace_switches(bool inputs_alone) {
    std::vector<std::string> names = kCcmSwitches;
    const std::vector<std::string> color = color_switches();
    names.insert(names.end(), color.begin(), inputs_alone ? color.begin() + 1 : color.end());
    return names;
}

void set_property(const std::string& name, const std::string& value) {
    if (name.empty()) throw BadInput("a property needs a name");
    if (value.size() >= PROPERTY_VALUE_MAX) {
        throw BadInput("property '" + name + "': the value has " + std::to_string(value.size()) +
                       " characters, allowed are " + std::to_string(PROPERTY_VALUE_MAX - 1));
    }
    if (property_set(name.c_str(), value.c_str()) != 0) {
        throw BadInput("property '" + name + "' cannot be set to '" + value + "'");
    }
}

}  // namespace imgtune::workbench
