#include "workbench/files/background_writer.h"

#include <utility>

namespace imgtune::workbench {

namespace {
constexpr std::size_t kMostWaiting = 3;
}

BackgroundWriter::BackgroundWriter(OutputFile& output)
    : output_(output), thread_([this] { run(); }) {}

BackgroundWriter::~BackgroundWriter() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
        waiting_.clear();
    }
    changed_.notify_all();
    thread_.join();
}

void BackgroundWriter::rethrow() {
    if (failure_) std::rethrow_exception(failure_);
}

void BackgroundWriter::write(Block& block) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return waiting_.size() < kMostWaiting || failure_; });
    rethrow();
    Block next;
    if (!spare_.empty()) {
        next = std::move(spare_.back());
        spare_.pop_back();
    }
    next.bytes.resize(block.bytes.size());
    next.used = 0;
    waiting_.push_back(std::exchange(block, std::move(next)));
    lock.unlock();
    changed_.notify_all();
}

void BackgroundWriter::finish() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return (waiting_.empty() && !busy_) || failure_; });
    rethrow();
}

void BackgroundWriter::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [&] { return !waiting_.empty() || ending_; });
        if (ending_) return;
        Block block = std::move(waiting_.front());
        waiting_.pop_front();
        busy_ = true;
        lock.unlock();
        std::exception_ptr failure;
        try {
            output_.write({block.bytes.data(), block.used});
        } catch (...) {
            failure = std::current_exception();
        }
        lock.lock();
        busy_ = false;
        spare_.push_back(std::move(block));
        if (failure) failure_ = failure;
        changed_.notify_all();
        if (failure) return;
    }
}

}  // namespace imgtune::workbench
