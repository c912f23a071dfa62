#pragma once

#include <cstring>
#include <map>
#include <memory>
#include <shared_mutex>
#include <string>

#include "Zon/BasicString.hpp"
#include "Zon/CommonTypeName.hpp"
#include "Zon/Exception.hpp"
#include "Zon/Singleton.hpp"

namespace Zon {

/// The application domain: the registry of the process's domain singletons (the log manager, the
/// domain proxy, ...). It maps a type's name (its common type name) to the object, ordered by the
/// text of the name compared with `strcmp`. Look-ups take the domain's read lock, registration
/// its write lock.
class AppDomain {
public:
    AppDomain();
    ~AppDomain();
    AppDomain(const AppDomain&) = delete;
    AppDomain& operator=(const AppDomain&) = delete;

    /// Registers `object` under the common type name of `T`, owned by the domain. An existing
    /// entry of that name is replaced.
    template <class T>
    T& Register(std::shared_ptr<T> object)
    {
        T& reference = *object;
        RegisterObject(CommonTypeName<T>(), std::shared_ptr<void>(std::move(object)));
        return reference;
    }

    /// Removes the entry of `T`, if any, and destroys the object when nobody else holds it.
    template <class T>
    void Unregister()
    {
        UnregisterObject(CommonTypeName<T>());
    }

    /// The object registered under the common type name of `T`, or null. Takes the read lock
    /// for the look-up alone.
    template <class T>
    T* Find() const
    {
        // The remembered name of `T`, fetched once per type: a look-up costs the read lock and
        // the registry's search, not a demangling.
        static const String& name = CommonTypeNameRefOf(typeid(T));
        return static_cast<T*>(FindObject(name));
    }

    void* FindObject(const String& typeName) const;

private:
    struct StrcmpLess {
        bool operator()(const std::string& a, const std::string& b) const noexcept
        {
            return std::strcmp(a.c_str(), b.c_str()) < 0;
        }
    };

    void RegisterObject(const String& typeName, std::shared_ptr<void> object);
    void UnregisterObject(const String& typeName);

    mutable std::shared_mutex lock;
    std::map<std::string, std::shared_ptr<void>, StrcmpLess> registry;
};

/// Look-up of a domain singleton with the platform's failures:
/// - no application domain: `Zon::Exception` "Singleton instance of type '{0}' was not created yet!"
///   with the common type name of `Zon::AppDomain`;
/// - a domain without the object: `Zon::Exception`
///   "AppDomain Singleton instance of type '{0}' was not created yet!" with the name of `T`.
template <class T>
class AppDomainSingleton {
public:
    static T& GetInstance()
    {
        AppDomain* domain = Singleton<AppDomain>::GetInstance();
        if (domain == nullptr) {
            throw Exception("Singleton instance of type '{0}' was not created yet!", CommonTypeName<AppDomain>());
        }
        T* object = domain->Find<T>();
        if (object == nullptr) {
            throw Exception("AppDomain Singleton instance of type '{0}' was not created yet!", CommonTypeName<T>());
        }
        return *object;
    }

    /// The object, or null when there is no domain or no such object.
    static T* TryGetInstance() noexcept
    {
        AppDomain* domain = Singleton<AppDomain>::GetInstance();
        return domain != nullptr ? domain->Find<T>() : nullptr;
    }
};

} // namespace Zon
