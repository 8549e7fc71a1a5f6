// SPDX-License-Identifier: MIT
#pragma once

/// Stage: a work on one item after another, in their order, by a thread of its own while the next items are made.
///
///     Stage<Statement> printing([&](const Statement& each) { print(each, out); });
///     for (const Letting& letting : lettings) printing.put(statementOf(letting));
///     printing.finish();
///
/// It holds a few items: who makes them faster than the work takes them waits. Where no thread can be had the work is done
/// at once. What the work raises ends it, and leaves each later call of `put` or `finish`; what was put behind that is
/// dropped. Items end where they were made. The trap: the work is done on another thread, so it must not ask model objects.

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace estatebook {

template <class Item>
class Stage {
public:
    /// How many items wait at most.
    static constexpr std::size_t Room = 4;

    explicit Stage(std::function<void(const Item&)> work) : work_(std::move(work)) {
        done_.reserve(Room + 2);
        try {
            thread_ = std::thread([this] { run(); });
        } catch (const std::system_error&) {
            // The system has no more threads for this process.
        }
    }
    /// Does the rest of the work; what that raises is lost.
    ~Stage() { close(); }
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    /// Waits for room.
    void put(Item item) {
        if (!thread_.joinable()) return work_(item);
        std::vector<Item> done;
        done.reserve(Room + 2);
        std::unique_lock lock(mutex_);
        hasRoom_.wait(lock, [&] { return items_.size() < Room || failure_; });
        if (failure_) std::rethrow_exception(failure_);
        items_.push_back(std::move(item));
        done.swap(done_);
        hasItem_.notify_one();
    }

    /// Waits for the end of the work. Nothing can be put any more.
    void finish() {
        close();
        if (failure_) std::rethrow_exception(failure_);
    }

private:
    void close() noexcept {
        if (!thread_.joinable()) return;
        {
            const std::lock_guard lock(mutex_);
            isClosed_ = true;
        }
        hasItem_.notify_one();
        thread_.join();
    }

    void run() noexcept {
        std::unique_lock lock(mutex_);
        for (;;) {
            hasItem_.wait(lock, [&] { return !items_.empty() || isClosed_; });
            if (items_.empty()) return;
            Item item = std::move(items_.front());
            items_.pop_front();
            hasRoom_.notify_one();
            lock.unlock();
            std::exception_ptr failure;
            try {
                work_(item);
            } catch (...) {
                failure = std::current_exception();
            }
            lock.lock();
            done_.push_back(std::move(item));
            if (!failure) continue;
            failure_ = std::move(failure);
            hasRoom_.notify_one();
            return;
        }
    }

    const std::function<void(const Item&)> work_;
    std::mutex mutex_;
    std::condition_variable hasItem_;
    std::condition_variable hasRoom_;
    // Of both threads, under the lock.
    std::deque<Item> items_;
    /// Memory is had and given back by one thread, which spares both of them to wait for each other. Has room for all that is
    /// done between two calls of `put`.
    std::vector<Item> done_;
    bool isClosed_ = false;
    std::exception_ptr failure_;
    std::thread thread_;
};

} // namespace estatebook
