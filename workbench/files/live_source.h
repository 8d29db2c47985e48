#ifndef IMGTUNE_WORKBENCH_FILES_LIVE_SOURCE_H
#define IMGTUNE_WORKBENCH_FILES_LIVE_SOURCE_H

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "workbench/camera/camera.h"
#include "workbench/files/event_loop.h"
#include "workbench/files/file_source.h"
#include "workbench/text/byte_source.h"

namespace imgtune::workbench {

/// The bytes of a log as they come, while a loop lets others work. The end of the input and Ctrl-C
/// are the end of it.
class LiveSource : public ByteSource {
  public:
    using Seen = std::function<void(std::string_view)>;

    /// "-" is standard input. `seen` is shown all bytes that are read; `ahead`
    /// was read before. Throws BadInput when the
    /// file cannot be opened.
    LiveSource(EventLoop& loop, const std::string& path, Seen seen, std::string ahead = {});

    std::size_t read(char* into, std::size_t room) override;
    bool comes_within(std::chrono::milliseconds time) override;

    const std::string& name() const { return file_.name(); }

  private:
    EventLoop& loop_;
    FileSource file_;
    Seen seen_;
    std::string ahead_;
};

/// A phone that is not there: frames of light go through the library in real time, and what it
/// traces comes as the lines of a log.
class DemoSource : public ByteSource {
  public:
    using Frames = std::function<bool(Frame&)>;  ///< the next one; false after the last

    DemoSource(EventLoop& loop, const Tuning& tuning, double frames_per_second, Frames frames,
               LiveSource::Seen seen);

    std::size_t read(char* into, std::size_t room) override;
    bool comes_within(std::chrono::milliseconds time) override;

  private:
    void trace(const Frame& frame);

    EventLoop& loop_;
    Camera camera_;
    Frames frames_;
    LiveSource::Seen seen_;
    LoopTime::duration between_;
    LoopTime next_;
    std::string text_;      ///< of the frame at hand
    std::size_t used_ = 0;  ///< of it
};

}  // namespace imgtune::workbench

#endif
