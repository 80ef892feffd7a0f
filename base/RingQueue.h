#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <type_traits>
#include <utility>

namespace zk {

// Double-ended queue in one block of memory that doubles when full, so that a queue which has
// reached its working size never allocates again. Move-only, empty once moved from; one thread at
// a time.
template <typename T>
class RingQueue {
    static_assert(std::is_trivially_copyable_v<T>, "elements move by copying bytes");

public:
    RingQueue() = default;
    ~RingQueue() { std::free(mItems); }
    RingQueue(RingQueue&& other) noexcept { swap(other); }
    RingQueue& operator=(RingQueue&& other) noexcept {
        RingQueue taken(std::move(other));
        swap(taken);
        return *this;
    }
    RingQueue(const RingQueue&) = delete;
    RingQueue& operator=(const RingQueue&) = delete;

    size_t size() const { return mSize; }
    bool empty() const { return mSize == 0; }
    size_t capacity() const { return mCapacity; }
    const T& front() const { return mItems[mFront]; }

    // False, with nothing changed, where memory is refused.
    bool push_back(const T& item) {
        T* const place = extend();
        if (place != nullptr) {
            std::memcpy(static_cast<void*>(place), &item, sizeof(T));
        }
        return place != nullptr;
    }
    // A place behind the last element, for the caller to fill. Null, with nothing changed, where
    // memory is refused.
    T* extend() {
        if (mSize == mCapacity && !reserve(mCapacity == 0 ? kFirstCapacity : mCapacity * 2)) {
            return nullptr;
        }
        return &mItems[slot(mSize++)];
    }

    void pop_front() {
        mFront = slot(1);
        --mSize;
    }

    // `count` is at most size().
    void dropNewest(size_t count) { mSize -= count; }
    // Copies of `count` elements of `other` from its place `first` on; there must be room for them.
    void append(const RingQueue& other, size_t first, size_t count) {
        for (size_t i = first; i < first + count; ++i) {
            push_back(other.mItems[other.slot(i)]);
        }
    }

    // Empties the queue and keeps its memory.
    void reset() { mFront = mSize = 0; }
    // Empties the queue and gives its memory back.
    void clear() { *this = RingQueue(); }

    // Room for `capacity` elements. False where memory is refused.
    bool reserve(size_t capacity) {
        if (capacity <= mCapacity) {
            return true;
        }
        T* items = static_cast<T*>(std::malloc(capacity * sizeof(T)));
        if (items == nullptr) {
            return false;
        }
        copyTo(items);
        std::free(mItems);
        mItems = items;
        mCapacity = capacity;
        mFront = 0;
        return true;
    }

private:
    static constexpr size_t kFirstCapacity = 32;

    size_t slot(size_t index) const {
        const size_t place = mFront + index;
        return place < mCapacity ? place : place - mCapacity;
    }

    void copyTo(T* items) const {
        const size_t untilWrap = mSize < mCapacity - mFront ? mSize : mCapacity - mFront;
        if (mSize > 0) {
            std::memcpy(static_cast<void*>(items), mItems + mFront, untilWrap * sizeof(T));
            std::memcpy(static_cast<void*>(items + untilWrap), mItems,
                        (mSize - untilWrap) * sizeof(T));
        }
    }

    void swap(RingQueue& other) noexcept {
        std::swap(mItems, other.mItems);
        std::swap(mCapacity, other.mCapacity);
        std::swap(mFront, other.mFront);
        std::swap(mSize, other.mSize);
    }

    T* mItems = nullptr;
    size_t mCapacity = 0;
    size_t mFront = 0;
    size_t mSize = 0;
};

}  // namespace zk
