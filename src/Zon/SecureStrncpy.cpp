#include "Zon/SecureStrncpy.hpp"

namespace Zon {

std::size_t SecureStrncpy(char* destination, std::size_t destinationSize, const char* source, std::size_t count) noexcept
{
    if (destination == nullptr || destinationSize == 0) {
        return 0;
    }
    std::size_t copied = 0;
    if (source != nullptr) {
        while (copied < count && copied + 1 < destinationSize && source[copied] != '\0') {
            destination[copied] = source[copied];
            ++copied;
        }
    }
    destination[copied] = '\0';
    return copied;
}

} // namespace Zon
