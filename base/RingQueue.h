#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>
#include <type_traits>
#include <utility>

namespace zk {

// Double-ended queue in one block of memory that doubles when full, so that a queue which has
// reached its working size never allocates again. Move-only, empty once moved from; one thread at
// a time.
template <typename T>
class RingQueue {
    static_assert(std::is_nothrow_move_constructible_v<T>, "elements move to larger memory");
    static_assert(alignof(T) <= alignof(std::max_align_t), "what malloc gives");

public:
    RingQueue() = default;
    ~RingQueue() {
        reset();
        std::free(mItems);
    }
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
    template <typename Item>
    bool push_back(Item&& item) {
        if (mSize == mCapacity && !reserve(mCapacity == 0 ? kFirstCapacity : mCapacity * 2)) {
            return false;
        }
        new (&mItems[slot(mSize)]) T(std::forward<Item>(item));
        ++mSize;
        return true;
    }

    void pop_front() {
        mItems[mFront].~T();
        mFront = slot(1);
        --mSize;
    }
    T takeFront() {
        T item(std::move(mItems[mFront]));
        pop_front();
        return item;
    }

    // Copies of the oldest `count` elements of `other`; there must be room for them.
    void append(const RingQueue& other, size_t count) {
        for (size_t i = 0; i < count; ++i) {
            push_back(other.mItems[other.slot(i)]);
        }
    }
    // Takes the newest `count` elements of `other` over; there must be room for them.
    void takeNewest(RingQueue& other, size_t count) {
        for (size_t i = other.mSize - count; i < other.mSize; ++i) {
            push_back(std::move(other.mItems[other.slot(i)]));
        }
        for (; count > 0; --count) {
            other.mItems[other.slot(--other.mSize)].~T();
        }
    }

    // Empties the queue and keeps its memory.
    void reset() {
        while (mSize > 0) {
            pop_front();
        }
        mFront = 0;
    }
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
        const size_t size = mSize;
        for (size_t i = 0; i < size; ++i) {
            new (&items[i]) T(std::move(mItems[slot(i)]));
        }
        reset();
        std::free(mItems);
        mItems = items;
        mCapacity = capacity;
        mSize = size;
        return true;
    }

private:
    static constexpr size_t kFirstCapacity = 32;

    size_t slot(size_t index) const {
        const size_t place = mFront + index;
        return place < mCapacity ? place : place - mCapacity;
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
