#pragma once

#include <cstdint>

#include "Zon/BasicString.hpp"
#include "Zon/Plc/Commons/Gds/StaticString.hpp"
#include "Zon/Plc/Commons/Meta/DynamicPortsBuilder.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/Loggable.hpp"
#include "VarnixBase/Core/PortSystem/PortBase.hpp"

namespace VarnixBase::Core::PortSystem {

/// A port that holds a bare `T`, zero or empty at the start. Its quality is always `Good` with no
/// flags: quality providers added to it are kept and listed, but do not change what it reports.
/// `Publish` enters the value's own memory as a variable of type `T`.
template <class T>
class Port : public PortBase<T>, public Zon::System::Commons::Diagnostics::Logging::Loggable<Port<T>> {
public:
    using ArgumentType = typename PortBase<T>::ArgumentType;

    Port(const String& name, unsigned long dimension) : PortBase<T>(name, dimension) {}
    ~Port() override = default;

    QualitySystem::Quality GetQuality() override { return QualitySystem::Quality{}; }

    /// Logs "Publish {name}: address={address}, attributes={attributes}" at level 7, then enters
    /// the value as a variable of type `T` with the port's current attributes.
    void Publish(Zon::Plc::Commons::Meta::DynamicPortsBuilder& builder) override
    {
        this->GetLogger().Debug("Publish {}: address={}, attributes={}", this->GetName(),
                                static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(&value)),
                                this->GetAttributes());
        String name(this->GetName().CStr());
        builder.template AddPort<T>(name, value, this->GetAttributes());
    }

    void SetValue(ArgumentType newValue) override { PortValueTraits<T>::Store(value, newValue); }
    T GetValue() const override { return PortValueTraits<T>::Load(value); }

private:
    T value{};
};

extern template class Port<bool>;
extern template class Port<signed char>;
extern template class Port<unsigned char>;
extern template class Port<short>;
extern template class Port<unsigned short>;
extern template class Port<int>;
extern template class Port<unsigned int>;
extern template class Port<long>;
extern template class Port<unsigned long>;
extern template class Port<float>;
extern template class Port<double>;
extern template class Port<Zon::Plc::Commons::Gds::StaticString<80, char>>;
extern template class Port<Zon::Plc::Commons::Gds::StaticString<512, char>>;
extern template class Port<Zon::Plc::Commons::Gds::StaticString<80, char16_t>>;
extern template class Port<Zon::Plc::Commons::Gds::StaticString<512, char16_t>>;

} // namespace VarnixBase::Core::PortSystem
