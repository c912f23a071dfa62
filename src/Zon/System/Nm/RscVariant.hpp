#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

#include "Zon/SecureStrncpy.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Nm/RscType.hpp"

namespace Zon::System::Nm {

/// The platform's variant: `N` bytes of value storage followed by a one-byte `RscType` tag, with
/// no padding in between or after. A new variant has zeroed storage and the tag `None`.
/// The variant only holds bytes; what they mean is the tag's business and the reader's.
template <std::size_t N>
class RscVariant {
    static_assert(N >= 2, "an RscVariant holds at least a 16-bit value");

public:
    static constexpr std::size_t StorageSize = N;

    RscVariant() noexcept = default;

    RscType GetType() const noexcept { return type; }
    void SetType(RscType value) noexcept { type = value; }

    /// The storage: `StorageSize` bytes.
    unsigned char* GetData() noexcept { return storage; }
    const unsigned char* GetData() const noexcept { return storage; }
    char* GetChars() noexcept { return reinterpret_cast<char*>(storage); }
    const char* GetChars() const noexcept { return reinterpret_cast<const char*>(storage); }

    /// Copies a trivially copyable value into the first bytes of the storage and sets the tag.
    template <class T>
    void SetValue(const T& value, RscType tag) noexcept
    {
        static_assert(std::is_trivially_copyable_v<T> && sizeof(T) <= N);
        std::memcpy(storage, &value, sizeof(T));
        type = tag;
    }

    /// The value in the first bytes of the storage, whatever the tag says.
    template <class T>
    T GetValue() const noexcept
    {
        static_assert(std::is_trivially_copyable_v<T> && std::is_default_constructible_v<T> && sizeof(T) <= N);
        T value{};
        std::memcpy(&value, storage, sizeof(T));
        return value;
    }

    /// Stores `text` zero-terminated and sets the tag. A text longer than `N - 1` characters
    /// does not fit with its terminator: `ArgumentException` "Cannot copy string: argument string
    /// length {} exceeds MaxStringSize {}" with the length and `N`, and the variant is unchanged.
    /// A text with a zero inside reads back only up to that zero.
    void SetText(std::string_view text, RscType tag)
    {
        if (text.size() > N - 1) {
            throw Commons::ArgumentException("Cannot copy string: argument string length {} exceeds MaxStringSize {}",
                                             text.size(), N);
        }
        std::memset(storage, 0, N);
        SecureStrncpy(GetChars(), N, text.data(), text.size());
        storage[text.size()] = 0;
        type = tag;
    }

    /// The text in the storage up to its first zero. A storage without a zero gives all `N`
    /// bytes: the reader never goes past the storage.
    std::string GetText() const
    {
        const void* end = std::memchr(storage, 0, N);
        std::size_t length = end != nullptr ? static_cast<std::size_t>(static_cast<const unsigned char*>(end) - storage) : N;
        return std::string(GetChars(), length);
    }

private:
    unsigned char storage[N] = {};
    RscType type = RscType::None;
};

static_assert(sizeof(RscVariant<512>) == 513, "512 bytes of storage and a one-byte tag");

} // namespace Zon::System::Nm
