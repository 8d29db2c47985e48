#ifndef IMGTUNE_WORKBENCH_FILES_OUTPUT_FILE_H
#define IMGTUNE_WORKBENCH_FILES_OUTPUT_FILE_H

#include <cstddef>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <string_view>

namespace imgtune::workbench {

/// Nobody reads any more what is written into a pipe. Not an error of the input: whoever is asked
/// for rows decides what it means.
struct ClosedPipe : std::runtime_error {
    explicit ClosedPipe(const std::string& name)
        : std::runtime_error(name + ": nobody reads it any more") {}
};

/// An output file that is either written whole or not at all.
///
/// Written beside the target and renamed over it by commit(); a file that is not committed is
/// removed, also when a signal (SIGINT, SIGTERM, SIGHUP, SIGPIPE) ends the program. "-" is standard
/// output. Targets that are no regular files (a device, a pipe) are written directly. Failures
/// throw BadInput, but ClosedPipe where the reader of a pipe has gone.
class OutputFile {
  public:
    explicit OutputFile(std::string path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    std::FILE* stream() { return stream_; }

    void write(std::string_view text);

    /// Throws if anything written so far was lost.
    void check();

    /// Writes out what is buffered and puts the file in its place.
    void commit();

  private:
    [[noreturn]] void fail(int error);
    void discard();

    std::string path_;       ///< as the user named it
    std::string target_;     ///< after following links; empty: nothing to rename
    std::string temporary_;  ///< empty: written directly
    std::FILE* stream_ = nullptr;
    int slot_ = -1;  ///< place in the list of files to remove on a signal
};

/// The whole text to a file (or "-"), or nothing.
void write_file(const std::string& path, std::string_view text);

}  // namespace imgtune::workbench

#endif
