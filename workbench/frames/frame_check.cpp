#include "workbench/frames/frame_check.h"

#include <fmt/format.h>

namespace imgtune::workbench {

namespace {

/// What may be odd about a frame.
struct Oddity {
    const char* code;
    const char* column;
    const char* message;  ///< the value stands in place of {}
    const char* effect;
    const char* suggestion;
};

enum KindIndex : std::size_t {
    kLvHigh,
    kLvNegative,
    kCctZero,
    kCctNegative,
    kCctFar,
    kGainZero,
    kGainNegative,
    kGreenZero,
};

constexpr Oddity kKindTable[] = {
    {"F101", "lv", "is {}, beyond 255",
     "the saturation ratio and the outdoor ramp see its low byte only", "check the unit of lv"},
    {"F102", "lv", "is {}, negative",
     "the library takes it as a very large one: no low-light matrix, no LSP", "use 0 for the dark"},
    {"F103", "cct", "is {}", "every block takes the lower-CT image",
     "write the temperature in kelvin"},
    {"F104", "cct", "is {}, negative", "the library takes it as a very large one, 0 mired",
     "write the temperature in kelvin"},
    {"F105", "cct", "is {}, no kelvin value of a light",
     "the images of one end of the CT grid are taken", "is it mired? write kelvin"},
    {"F106", "", "a gain of {} for red or blue", "it is clipped to an end of the tuned gains",
     "gains are fixed point, 512 = 1.0"},
    {"F107", "", "a negative gain, {}", "it is clipped to an end of the tuned gains",
     "gains are fixed point, 512 = 1.0"},
    {"F108", "", "a green gain of {}", "", "write 512, which is 1.0"},
};

constexpr std::int64_t kFewestKelvin = 1000;  // what is below is more likely mired

}  // namespace

void FrameCheck::add(const FrameValues& values, std::uint64_t line) {
    ++frames_;
    const auto note = [&](KindIndex kind, std::int64_t value) {
        Seen& seen = seen_[kind];
        if (seen.last_frame == frames_) return;
        seen.last_frame = frames_;
        if (seen.count++ != 0) return;
        seen.line = line;
        seen.value = value;
    };
    const std::int64_t lv = values[kLv];
    if (lv > 255) note(kLvHigh, lv);
    if (lv < 0) note(kLvNegative, lv);
    const std::int64_t cct = values[kCct];
    if (cct == 0) note(kCctZero, cct);
    if (cct < 0) note(kCctNegative, cct);
    if (cct > 0 && cct < kFewestKelvin) note(kCctFar, cct);
    for (const std::size_t first : {kFullGain, kAwbGain}) {
        for (const std::size_t color : {first, first + 2}) {
            if (values[color] == 0) note(kGainZero, 0);
            if (values[color] < 0) note(kGainNegative, values[color]);
        }
        if (values[first + 1] <= 0) note(kGreenZero, values[first + 1]);
    }
}

void FrameCheck::report(const std::string& log, Faults& faults) const {
    if (frames_ == 0) {
        Fault fault;
        fault.code = "F100";
        fault.file = log;
        fault.message = "the log has no frames, only a header";
        fault.suggestion = "add one line a frame below the header";
        faults.add(std::move(fault));
    }
    report_odd(log, faults);
}

void FrameCheck::report_odd(const std::string& log, Faults& faults) const {
    static_assert(std::size(kKindTable) == kKinds);
    for (std::size_t i = 0; i < kKinds; ++i) {
        const Seen& seen = seen_[i];
        if (seen.count == 0) continue;
        const Oddity& kind = kKindTable[i];
        Fault fault;
        fault.code = kind.code;
        fault.file = log;
        fault.line = static_cast<int>(seen.line);
        fault.path = kind.column;
        fault.message = fmt::format(fmt::runtime(kind.message), seen.value);
        if (seen.count > 1) {
            fault.message += fmt::format(", and {} more such frame{}", seen.count - 1,
                                         seen.count == 2 ? "" : "s");
        }
        fault.effect = kind.effect;
        fault.suggestion = kind.suggestion;
        faults.add(std::move(fault));
    }
}

void check_frames(const std::string& log, ByteSource& source, Faults& faults) {
    FrameCheck check;
    try {
        FrameLog frames(log, source);
        for (Frame frame; frames.next(frame);) check.add(frames.values(), frames.line());
        check.report(log, faults);
    } catch (const BadFrames& bad) {
        check.report_odd(log, faults);
        Fault fault;
        fault.code = "F001";
        fault.file = log;
        fault.line = static_cast<int>(bad.place().line);
        fault.message = bad.message;
        faults.add(std::move(fault));
    }
}

}  // namespace imgtune::workbench
