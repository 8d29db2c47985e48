#include "workbench/trace/trace_capture.h"

#include <android/log.h>
#include <cutils/properties.h>

#include <map>
#include <mutex>
#include <utility>

#include "workbench/trace/debug_properties.h"

namespace imgtune::workbench {

namespace {

thread_local std::vector<std::string>* kept_lines = nullptr;

void keep_line(const __android_log_message* message) {
    if (kept_lines == nullptr) return;
    std::string text = message->message;
    while (!text.empty() && text.back() == '\n') text.pop_back();
    kept_lines->push_back(std::move(text));
}

/// The switches that captures have set, and what they were before.
struct HeldSwitch {
    int captures = 0;
    std::string before;
};
struct HeldSwitches {
    std::mutex mutex;
    int captures = 0;
    std::map<std::string, HeldSwitch> by_name;
};

HeldSwitches& held_switches() {
    static HeldSwitches held;
    return held;
}

void hold(HeldSwitches& held, const std::string& name) {
    HeldSwitch& one = held.by_name[name];
    if (one.captures == 0) {
        char value[PROPERTY_VALUE_MAX] = {};
        property_get(name.c_str(), value, "");
        one.before = value;
        set_debug_property(name, "1");
    }
    ++one.captures;
}

void release(HeldSwitches& held, const std::string& name) {
    const auto found = held.by_name.find(name);
    if (--found->second.captures > 0) return;
    property_set(name.c_str(), found->second.before.c_str());
    held.by_name.erase(found);
}

}  // namespace

TraceCapture::TraceCapture(const std::vector<std::string>& switches)
    : switches_(switches), outer_(kept_lines) {
    HeldSwitches& held = held_switches();
    const std::lock_guard lock(held.mutex);
    for (const std::string& name : switches_) hold(held, name);
    if (held.captures++ == 0) __android_log_set_logger(keep_line);
    kept_lines = &lines_;
}

TraceCapture::~TraceCapture() {
    HeldSwitches& held = held_switches();
    const std::lock_guard lock(held.mutex);
    kept_lines = outer_;
    if (--held.captures == 0) __android_log_set_logger(nullptr);
    for (const std::string& name : switches_) release(held, name);
}

std::vector<std::string> trace_switches(bool inputs_alone) {
    if (inputs_alone) return {kCcmSwitches[0], "debug.smooth_color.dump"};
    std::vector<std::string> names = kCcmSwitches;
    for (const std::string& name : debug_properties()) {
        if (name.find("dump") != std::string::npos) names.push_back(name);
    }
    return names;
}

}  // namespace imgtune::workbench
