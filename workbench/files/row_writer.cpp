#include "workbench/files/row_writer.h"

#include <cstring>
#include <string>

namespace imgtune::workbench {

namespace {

constexpr std::size_t kBlockSize = 1 << 18;

}  // namespace

RowWriter::RowWriter(OutputFile& output, const RowColumns& columns)
    : output_(output),
      text_(columns),
      block_{std::vector<char>(kBlockSize + text_.room() + kMostMore), 0} {}

void RowWriter::write_header(std::string_view more) {
    const std::string header = text_.header(more);
    BackgroundWriter::Block block{{header.begin(), header.end()}, header.size()};
    output_.write(block);
}

void RowWriter::write(std::uint64_t number, const FrameValues& values, const Registers& registers,
                      std::string_view more) {
    if (block_.used > kBlockSize) output_.write(block_);
    char* at = block_.bytes.data() + block_.used;
    at = text_.put(at, number, values, registers);
    if (!more.empty()) std::memcpy(at, more.data(), more.size());
    at += more.size();
    *at++ = '\n';
    block_.used = static_cast<std::size_t>(at - block_.bytes.data());
}

void RowWriter::finish() {
    output_.write(block_);
    output_.finish();
}

}  // namespace imgtune::workbench
