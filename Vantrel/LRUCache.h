#pragma once

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

/// A map that keeps at most `capacity` entries and drops the least recently used first. Reading counts as use.
/// Main thread.
///
/// Recency is a plain list that every use scans: at the capacities in use (15 and 2000) that costs microseconds, and
/// nothing simpler is right.
template <typename Key, typename Value>
class LRUCache {
public:
    explicit LRUCache(int capacity) : m_capacity(capacity) {}
    LRUCache(const LRUCache&) = delete;
    LRUCache& operator=(const LRUCache&) = delete;

    int capacity() const { return m_capacity; }
    const std::unordered_map<Key, Value>& storage() const { return m_storage; }

    /// Keys, least recently used first.
    const std::vector<Key>& order() const { return m_order; }

    /// The value under the key, which becomes the most recently used; nothing on a miss, which changes nothing.
    std::optional<Value> read(const Key& key) {
        const auto entry = m_storage.find(key);
        if (entry == m_storage.end()) {
            return std::nullopt;
        }
        const auto position = std::ranges::find(m_order, key);
        std::rotate(position, std::next(position), m_order.end());
        return entry->second;
    }

    /// Inserts or replaces the value under the key, which becomes the most recently used; nothing removes the entry.
    void write(const Key& key, std::optional<Value> value) {
        if (const auto position = std::ranges::find(m_order, key); position != m_order.end()) {
            m_order.erase(position);
        }
        if (!value) {
            m_storage.erase(key);
            return;
        }
        m_storage.insert_or_assign(key, std::move(*value));
        m_order.push_back(key);
        while (std::ssize(m_order) > m_capacity) {
            m_storage.erase(m_order.front());
            m_order.erase(m_order.begin());
        }
    }

    void removeAll() {
        m_storage.clear();
        m_order.clear();
    }

private:
    const int m_capacity;
    std::unordered_map<Key, Value> m_storage;
    std::vector<Key> m_order; // each key of m_storage exactly once
};
