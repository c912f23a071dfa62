#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace VarnixBase::Core::PortSystem {

/// A hash index by name beside a list that keeps its own order: it maps each name to the position
/// of the first element of that name, so that a look-up costs the same for the first and the ten
/// thousandth element. Names compare exactly (same length, same bytes), as the lists' own walks
/// compare them. The index owns a copy of every name, so it does not depend on how long the
/// element's name lives.
template <class Position>
class NameIndex {
public:
    /// The position entered for `name`, or null.
    const Position* Find(std::string_view name) const
    {
        auto found = entries.find(name);
        return found != entries.end() ? &found->second : nullptr;
    }

    /// Enters `name` at `position` unless the name is entered already: the first entry of a name
    /// stays, as the first match of a walk from the front would. True if entered.
    bool Insert(std::string_view name, Position position)
    {
        return entries.emplace(std::string(name), std::move(position)).second;
    }

    /// Removes the entry of `name`, if any.
    void Erase(std::string_view name)
    {
        auto found = entries.find(name);
        if (found != entries.end()) {
            entries.erase(found);
        }
    }

    std::size_t Count() const noexcept { return entries.size(); }

private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>{}(text); }
    };
    std::unordered_map<std::string, Position, Hash, std::equal_to<>> entries;
};

} // namespace VarnixBase::Core::PortSystem
