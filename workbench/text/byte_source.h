#ifndef IMGTUNE_WORKBENCH_TEXT_BYTE_SOURCE_H
#define IMGTUNE_WORKBENCH_TEXT_BYTE_SOURCE_H

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace imgtune::workbench {

/// Where a reader's bytes come from: a file, a pipe, memory.
class ByteSource {
  public:
    ByteSource() = default;
    virtual ~ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;

    /// Up to `room` bytes; 0 at the end. Throws BadInput when they cannot be read.
    virtual std::size_t read(char* into, std::size_t room) = 0;

    /// Whether read() would return now or after waiting so long: false where the bytes to come are
    /// still being waited for, as of a live pipe.
    virtual bool comes_within(std::chrono::milliseconds) { return true; }

    /// All bytes that there are; 0 when not known.
    virtual std::uint64_t size() const { return 0; }
};

/// Bytes in memory, which stay the caller's.
class MemorySource : public ByteSource {
  public:
    explicit MemorySource(std::string_view bytes) : rest_(bytes), size_(bytes.size()) {}

    std::size_t read(char* into, std::size_t room) override {
        const std::size_t count = std::min(room, rest_.size());
        std::copy_n(rest_.data(), count, into);
        rest_.remove_prefix(count);
        return count;
    }
    std::uint64_t size() const override { return size_; }

  private:
    std::string_view rest_;
    std::uint64_t size_;
};

}  // namespace imgtune::workbench

#endif
