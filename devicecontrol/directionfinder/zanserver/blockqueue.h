#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <utility>
#include <vector>

namespace ZANServer {

/// Carries what a driver delivers from the driver's thread to another one, in order.
///
/// It is bounded in bytes, so that memory does not grow when the reader is slower than the driver: the driver
/// waits while the queue is full, and nothing is dropped. The reader takes everything at once, so up to twice
/// the bound is in memory.
template <class T>
class BlockQueue {
public:
    /// \param capacity bytes
    explicit BlockQueue(std::size_t capacity)
        : m_capacity(capacity) {}

    /// Appends one item, after waiting until there is room for it; an item larger than the whole queue waits
    /// until that is empty. True when the queue was empty: the caller then wakes the reader.
    /// \param size    bytes of the item, including everything that it owns
    /// \param mayWait false when called in the reader's thread, which would wait for itself
    bool Push(T item, std::size_t size, bool mayWait = true) {
        std::unique_lock lock(m_mutex);
        if (mayWait) {
            m_hasRoom.wait(lock, [&] {
                const bool hasRoom = m_size < m_capacity && size <= m_capacity - m_size;
                return hasRoom || m_items.empty() || m_isUnbounded;
            });
        }
        m_items.push_back(std::move(item));
        m_size += size;
        return m_items.size() == 1;
    }

    /// Takes all items that are waiting.
    std::vector<T> TakeAll() {
        std::vector<T> items;
        {
            const std::lock_guard lock(m_mutex);
            items.swap(m_items);
            m_items.reserve(items.size()); // probably the next items will be as many
            m_size = 0;
        }
        m_hasRoom.notify_all();
        return items;
    }

    /// From now on `Push` does not wait. Call it at the end, before the driver's thread is joined.
    void StopBounding() {
        {
            const std::lock_guard lock(m_mutex);
            m_isUnbounded = true;
        }
        m_hasRoom.notify_all();
    }

private:
    const std::size_t m_capacity; // bytes
    std::mutex m_mutex;
    std::condition_variable m_hasRoom;
    std::vector<T> m_items;
    std::size_t m_size = 0; // bytes of the items
    bool m_isUnbounded = false;
};

} // namespace ZANServer
