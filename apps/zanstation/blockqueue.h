#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <utility>
#include <vector>

/// Carries what a driver delivers from the driver's thread to another one, in order.
///
/// It is bounded, so that memory stays flat when the reader is slower than the driver: a full queue holds the
/// driver up, and nothing is dropped.
template <class T>
class BlockQueue {
public:
    explicit BlockQueue(std::size_t capacity)
        : m_capacity(capacity) {}

    /// Appends one item, after waiting while the queue is full. True when the queue was empty: the reader is
    /// to be woken.
    bool Push(T item) {
        std::unique_lock lock(m_mutex);
        m_hasRoom.wait(lock, [this] { return m_items.size() < m_capacity || m_isUnbounded; });
        m_items.push_back(std::move(item));
        return m_items.size() == 1;
    }

    /// Takes everything that is waiting.
    std::vector<T> TakeAll() {
        std::vector<T> items;
        {
            const std::lock_guard lock(m_mutex);
            items.swap(m_items);
            m_items.reserve(items.size()); // as much will come next, most likely
        }
        m_hasRoom.notify_all();
        return items;
    }

    /// From now on nobody is held up any more. For the end, when the driver's thread is to be joined.
    void StopBounding() {
        {
            const std::lock_guard lock(m_mutex);
            m_isUnbounded = true;
        }
        m_hasRoom.notify_all();
    }

private:
    const std::size_t m_capacity;
    std::mutex m_mutex;
    std::condition_variable m_hasRoom;
    std::vector<T> m_items;
    bool m_isUnbounded = false;
};
