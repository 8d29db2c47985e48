#ifndef IMGTUNE_WORKBENCH_FILES_BACKGROUND_H
#define IMGTUNE_WORKBENCH_FILES_BACKGROUND_H

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace imgtune::workbench {

/// Works on items in a thread of its own, in order. At most a few wait; whoever fills them faster
/// waits, too.
template <class Item>
class Background {
  public:
    explicit Background(std::function<void(Item&)> work)
        : work_(std::move(work)), thread_([this] { run(); }) {}

    /// Items that still wait are dropped.
    ~Background() {
        {
            const std::lock_guard lock(mutex_);
            ending_ = true;
            waiting_.clear();
        }
        changed_.notify_all();
        thread_.join();
    }
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;

    /// Takes an item over and leaves a new one, or one that was worked on. Throws what work threw.
    void give(Item& item) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return waiting_.size() < kMostWaiting || failure_; });
        rethrow();
        Item next;
        if (!spare_.empty()) {
            next = std::move(spare_.back());
            spare_.pop_back();
        }
        waiting_.push_back(std::exchange(item, std::move(next)));
        lock.unlock();
        changed_.notify_all();
    }

    /// Waits until all is done. Throws what work threw.
    void finish() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return (waiting_.empty() && !busy_) || failure_; });
        rethrow();
    }

  private:
    static constexpr std::size_t kMostWaiting = 3;

    void rethrow() {
        if (failure_) std::rethrow_exception(failure_);
    }

    void run() {
        std::unique_lock lock(mutex_);
        for (;;) {
            changed_.wait(lock, [&] { return !waiting_.empty() || ending_; });
            if (ending_) return;
            Item item = std::move(waiting_.front());
            waiting_.pop_front();
            busy_ = true;
            lock.unlock();
            std::exception_ptr failure;
            try {
                work_(item);
            } catch (...) {
                failure = std::current_exception();
            }
            lock.lock();
            busy_ = false;
            spare_.push_back(std::move(item));
            if (failure) failure_ = failure;
            changed_.notify_all();
            if (failure) return;
        }
    }

    std::function<void(Item&)> work_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Item> waiting_;
    std::vector<Item> spare_;
    bool busy_ = false;
    bool ending_ = false;
    std::exception_ptr failure_;
    std::thread thread_;
};

}  // namespace imgtune::workbench

#endif
