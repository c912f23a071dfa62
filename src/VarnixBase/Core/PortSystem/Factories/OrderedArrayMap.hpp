#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace VarnixBase::Core::PortSystem {

/// A map kept as an array of entries in the order of `Key`'s `operator<`: a new entry goes where
/// a search by halving puts it, and `Find` searches by halving the same way.
///
/// It stays well defined whatever the order is like. With a strict weak order it behaves like an
/// ordinary ordered map. With an order that is not (such as `MapTypeInfo`'s, where two different
/// keys can each be before the other) every entry that is inserted is kept and is visited by a
/// walk from `begin` to `end`, but `Find` can miss an entry that is present; entries are never
/// lost or overwritten. Two keys count as the same when neither is before the other.
template <class Key, class Value>
class OrderedArrayMap {
public:
    using Entry = std::pair<Key, Value>;
    using const_iterator = typename std::vector<Entry>::const_iterator;

    /// The entry whose key is the same as `key`, as the search by halving finds it; `end()` if
    /// it finds none.
    const_iterator Find(const Key& key) const
    {
        std::size_t index = LowerBound(key);
        if (index < entries.size() && !(key < entries[index].first)) {
            return entries.begin() + static_cast<std::ptrdiff_t>(index);
        }
        return entries.end();
    }

    /// Inserts the entry where the search by halving puts it. False, and nothing inserted, when
    /// the entry found there has the same key.
    bool Insert(Key key, Value value)
    {
        std::size_t index = LowerBound(key);
        if (index < entries.size() && !(key < entries[index].first)) {
            return false;
        }
        entries.insert(entries.begin() + static_cast<std::ptrdiff_t>(index), Entry(std::move(key), std::move(value)));
        return true;
    }

    const_iterator begin() const noexcept { return entries.begin(); }
    const_iterator end() const noexcept { return entries.end(); }
    std::size_t Size() const noexcept { return entries.size(); }
    bool IsEmpty() const noexcept { return entries.empty(); }
    void Clear() noexcept { entries.clear(); }

private:
    /// The first position, by halving, whose key is not before `key`.
    std::size_t LowerBound(const Key& key) const
    {
        std::size_t low = 0;
        std::size_t high = entries.size();
        while (low < high) {
            std::size_t middle = low + (high - low) / 2;
            if (entries[middle].first < key) {
                low = middle + 1;
            } else {
                high = middle;
            }
        }
        return low;
    }

    std::vector<Entry> entries;
};

} // namespace VarnixBase::Core::PortSystem
