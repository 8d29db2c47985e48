#ifndef IMGTUNE_WORKBENCH_FILES_BACKGROUND_WRITER_H
#define IMGTUNE_WORKBENCH_FILES_BACKGROUND_WRITER_H

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

#include "workbench/files/output_file.h"

namespace imgtune::workbench {

/// Writes blocks of text to an output file in a thread of its own, in order. At most a few blocks
/// wait; whoever fills them faster waits, too.
class BackgroundWriter {
  public:
    struct Block {
        std::vector<char> bytes;
        std::size_t used = 0;  ///< bytes to write; the rest is room
    };

    explicit BackgroundWriter(OutputFile& output);
    ~BackgroundWriter();  ///< blocks that still wait are dropped
    BackgroundWriter(const BackgroundWriter&) = delete;
    BackgroundWriter& operator=(const BackgroundWriter&) = delete;

    /// Takes a block over and leaves one of the same size to fill. Throws what writing threw.
    void write(Block& block);

    /// Waits until all is handed to the file. Throws what writing threw.
    void finish();

  private:
    void run();
    void rethrow();

    OutputFile& output_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Block> waiting_;
    std::vector<Block> spare_;
    bool busy_ = false;
    bool ending_ = false;
    std::exception_ptr failure_;
    std::thread thread_;
};

}  // namespace imgtune::workbench

#endif
