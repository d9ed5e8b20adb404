// A field that one thread writes while another reads.
#pragma once

#include <atomic>

/// Reads and writes like the plain field; each access is one ordinary load or store, without a data race.
/// It orders nothing else: ordering comes from thread start and join.
template <typename T>
struct Relaxed {
    std::atomic<T> cell{};

    constexpr Relaxed() = default;
    constexpr Relaxed(T value) : cell(value) {}
    Relaxed(const Relaxed& other) : cell(other.load()) {}
    Relaxed& operator=(const Relaxed& other) {
        cell.store(other.load(), std::memory_order_relaxed);
        return *this;
    }
    T operator=(T value) {
        cell.store(value, std::memory_order_relaxed);
        return value;
    }
    [[nodiscard]] T load() const { return cell.load(std::memory_order_relaxed); }
    operator T() const { return load(); }
};
