#pragma once

#include <cstddef>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zk {

// Key -> value, where the first value set for a key stays until it is taken, once. Keeps the
// nodes of taken entries for new ones, so that steady traffic does not allocate. One thread at a
// time.
template <typename Key, typename Value>
class TakeOnceMap {
public:
    void set(const Key& key, const Value& value) {
        if (mSpares.empty()) {
            mEntries.try_emplace(key, value);
        } else if (mEntries.find(key) == mEntries.end()) {
            auto node = std::move(mSpares.back());
            mSpares.pop_back();
            node.key() = key;
            node.mapped() = value;
            mEntries.insert(std::move(node));
        }
    }

    std::optional<Value> take(const Key& key) {
        auto node = mEntries.extract(key);
        if (node.empty()) {
            return std::nullopt;
        }
        const Value value = node.mapped();
        if (mSpares.size() < kMaxSpares) {
            mSpares.push_back(std::move(node));
        }
        return value;
    }

    void clear() { mEntries.clear(); }
    size_t size() const { return mEntries.size(); }

private:
    static constexpr size_t kMaxSpares = 64;

    std::unordered_map<Key, Value> mEntries;
    std::vector<typename std::unordered_map<Key, Value>::node_type> mSpares;
};

}  // namespace zk
