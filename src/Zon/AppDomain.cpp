#include "Zon/AppDomain.hpp"

#include <mutex>

namespace Zon {

AppDomain::AppDomain() = default;

AppDomain::~AppDomain()
{
    // Destroy the entries in the reverse order of their names, outside the lock.
    std::map<std::string, std::shared_ptr<void>, StrcmpLess> entries;
    {
        std::unique_lock guard(lock);
        entries.swap(registry);
    }
    while (!entries.empty()) {
        entries.erase(std::prev(entries.end()));
    }
}

void* AppDomain::FindObject(const String& typeName) const
{
    std::shared_lock guard(lock);
    auto found = registry.find(typeName.ToStdString());
    return found != registry.end() ? found->second.get() : nullptr;
}

void AppDomain::RegisterObject(const String& typeName, std::shared_ptr<void> object)
{
    std::shared_ptr<void> previous;
    std::unique_lock guard(lock);
    auto& slot = registry[typeName.ToStdString()];
    previous.swap(slot);
    slot = std::move(object);
}

void AppDomain::UnregisterObject(const String& typeName)
{
    std::shared_ptr<void> removed;
    {
        std::unique_lock guard(lock);
        auto found = registry.find(typeName.ToStdString());
        if (found == registry.end()) {
            return;
        }
        removed = std::move(found->second);
        registry.erase(found);
    }
}

} // namespace Zon
