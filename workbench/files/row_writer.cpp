#include "workbench/files/row_writer.h"

#include <algorithm>
#include <cstdio>

namespace imgtune::workbench {

namespace {

constexpr std::size_t kBlockSize = 1 << 18;
constexpr std::size_t kRowsInBatch = 128;

}  // namespace

RowWriter::RowWriter(OutputFile& output, const RowColumns& columns, RowThread thread)
    : output_(output), text_(columns) {
    if (thread == RowThread::callers) return;
    background_.emplace([this](Batch& batch) {
        for (std::size_t i = 0; i < batch.used; ++i) {
            const Row& row = batch.rows[i];
            put(row.number, row.values, row.registers, row.more);
        }
        batch.used = 0;
    });
}

void RowWriter::write_header(std::string_view more) {
    const std::string header = text_.header(more);
    output_.write({header.data(), header.size()});
}

void RowWriter::write(std::uint64_t number, const FrameValues& values, const Registers& registers,
                      std::string_view more) {
    if (!background_) {
        put(number, values, registers, more);
        return;
    }
    if (batch_.used == kRowsInBatch) background_->give(batch_);
    if (batch_.used == batch_.rows.size()) batch_.rows.resize(kRowsInBatch);
    Row& row = batch_.rows[batch_.used++];
    row.number = number;
    row.values = values;
    row.registers = registers;
    row.more = more;
}

void RowWriter::finish() {
    if (background_) {
        background_->give(batch_);
        background_->finish();
    }
    output_.write({block_.data(), used_});
    used_ = 0;
}

void RowWriter::flush() {
    finish();
    std::fflush(output_.stream());
    output_.check();
}

/// Appends a row to the block, which is written when it is full.
void RowWriter::put(std::uint64_t number, const FrameValues& values, const Registers& registers,
                    std::string_view more) {
    block_.resize(std::max(block_.size(), used_ + text_.room() + more.size() + 1));
    char* at = text_.put(block_.data() + used_, number, values, registers);
    at = std::copy(more.begin(), more.end(), at);
    *at++ = '\n';
    used_ = static_cast<std::size_t>(at - block_.data());
    if (used_ < kBlockSize) return;
    output_.write({block_.data(), used_});
    used_ = 0;
}

}  // namespace imgtune::workbench
