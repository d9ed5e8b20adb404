// Fields that one thread writes while another reads. They read and write like plain fields; each access is one
// ordinary load or store, without a data race.
#pragma once

#include <atomic>

template <typename T, std::memory_order LoadOrder, std::memory_order StoreOrder>
struct SharedField {
    std::atomic<T> cell{};

    constexpr SharedField() = default;
    constexpr SharedField(T value) : cell(value) {}
    SharedField(const SharedField& other) : cell(other.load()) {}
    SharedField& operator=(const SharedField& other) {
        *this = other.load();
        return *this;
    }
    T operator=(T value) {
        cell.store(value, StoreOrder);
        return value;
    }
    [[nodiscard]] T load() const { return cell.load(LoadOrder); }
    operator T() const { return load(); }
};

/// A field that stands for itself. It orders nothing else: ordering comes from thread start and join.
template <typename T>
using Relaxed = SharedField<T, std::memory_order_relaxed, std::memory_order_relaxed>;

/// A field that speaks for others: who reads a value sees all that its writer wrote before it.
template <typename T>
using Published = SharedField<T, std::memory_order_acquire, std::memory_order_release>;
