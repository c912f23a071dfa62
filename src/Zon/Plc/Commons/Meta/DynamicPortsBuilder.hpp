#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

#include "Zon/BasicString.hpp"
#include "Zon/CommonTypeName.hpp"
#include "Zon/Plc/Commons/Meta/PortDataType.hpp"
#include "Zon/Plc/Commons/Meta/StandardAttribute.hpp"

namespace Zon::Plc::Commons::Meta {

/// Collects the ports that a program instance publishes: one entry per port, with what the
/// controller needs to enter a variable at the port's memory. The firmware gives a program one
/// builder; on the host the runtime reads the entries back and turns them into variables.
class DynamicPortsBuilder {
public:
    /// One published port.
    struct Entry {
        /// Port name, as given to `AddPort`.
        String name;
        /// Controller data type code (see `PortDataType`).
        std::uint32_t dataType = 0;
        /// Common type name of the published type.
        String typeName;
        /// Size of the published type in bytes.
        std::size_t size = 0;
        /// Alignment of the published type in bytes.
        std::size_t alignment = 0;
        /// Extents of an array type, outermost first; empty for a scalar.
        std::vector<std::uint32_t> arrayDimensions;
        /// Attributes of the port at the moment it was published.
        StandardAttribute attributes = StandardAttribute::None;
        /// Address of the published memory.
        void* address = nullptr;
    };

    DynamicPortsBuilder() = default;
    DynamicPortsBuilder(const DynamicPortsBuilder&) = delete;
    DynamicPortsBuilder& operator=(const DynamicPortsBuilder&) = delete;

    /// Enters a variable of type `T` named `name` at the address of `value`.
    template <class T>
    void AddPort(const String& name, T& value, StandardAttribute attributes)
    {
        std::vector<std::uint32_t> dimensions;
        AppendExtents<T>(dimensions);
        AddPort(name, PortDataType<std::remove_cv_t<T>>::Code, CommonTypeName<std::remove_cv_t<T>>(), sizeof(T),
                alignof(T), std::move(dimensions), attributes,
                const_cast<void*>(static_cast<const volatile void*>(&value)));
    }

    /// Enters a variable described field by field. Every entry is kept, in the order of adding.
    void AddPort(const String& name, std::uint32_t dataType, const String& typeName, std::size_t size,
                 std::size_t alignment, std::vector<std::uint32_t> arrayDimensions, StandardAttribute attributes,
                 void* address);

    /// The entries so far, in the order of adding.
    const std::vector<Entry>& GetEntries() const noexcept { return entries; }

private:
    template <class T>
    static void AppendExtents(std::vector<std::uint32_t>& dimensions)
    {
        if constexpr (std::is_array_v<T>) {
            dimensions.push_back(static_cast<std::uint32_t>(std::extent_v<T>));
            AppendExtents<std::remove_extent_t<T>>(dimensions);
        }
    }

    std::vector<Entry> entries;
};

} // namespace Zon::Plc::Commons::Meta
