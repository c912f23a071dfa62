#pragma once

#include <cstddef>

namespace Zon {

/// Copies at most `count` characters of `source` (stopping at its terminator) into `destination`,
/// which holds `destinationSize` characters, and always terminates it. It never writes past
/// `destinationSize`: a longer text is cut to `destinationSize - 1` characters.
/// Returns the number of characters copied; 0 and nothing written when `destination` is null or
/// `destinationSize` is 0.
std::size_t SecureStrncpy(char* destination, std::size_t destinationSize, const char* source, std::size_t count) noexcept;

} // namespace Zon
