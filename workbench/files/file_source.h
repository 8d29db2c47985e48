#ifndef IMGTUNE_WORKBENCH_FILES_FILE_SOURCE_H
#define IMGTUNE_WORKBENCH_FILES_FILE_SOURCE_H

#include <functional>
#include <string>
#include <utility>

#include "workbench/frames/frame_log.h"
#include "workbench/text/byte_source.h"

namespace imgtune::workbench {

/// The bytes of a file; "-" is standard input. Throws BadInput when it cannot be opened or read.
class FileSource : public ByteSource {
  public:
    explicit FileSource(const std::string& path);
    ~FileSource() override;

    std::size_t read(char* into, std::size_t room) override;
    bool comes_within(std::chrono::milliseconds time) override;
    std::uint64_t size() const override { return size_; }

    /// Is called whenever the bytes to come are still being waited for, as of a live pipe: time to
    /// hand on what the bytes so far gave.
    void before_waiting(std::function<void()> action) { before_waiting_ = std::move(action); }

    int file() const { return file_; }  ///< to be waited for

    /// What messages call it: the path, or "standard input".
    const std::string& name() const { return name_; }

  private:
    std::string name_;
    int file_;
    bool owned_;
    std::uint64_t size_ = 0;
    std::function<void()> before_waiting_;
};

/// Whether a file, by its name or its first line, holds a frame log. Only regular files are looked
/// into: a pipe would lose what is read.
bool holds_frame_log(const std::string& path);

/// A frame log in a file.
class FrameFile {
  public:
    explicit FrameFile(const std::string& path) : source_(path), log_(source_.name(), source_) {}

    FrameLog& log() { return log_; }
    FileSource& source() { return source_; }

  private:
    FileSource source_;
    FrameLog log_;
};

}  // namespace imgtune::workbench

#endif
