#pragma once

#include <cstdint>

#include "Zon/BasicString.hpp"
#include "Zon/DateTime.hpp"
#include "Zon/Plc/Commons/Gds/StaticString.hpp"
#include "Zon/Plc/Commons/Meta/DynamicPortsBuilder.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/Loggable.hpp"
#include "VarnixBase/Core/PortSystem/IConnector.hpp"
#include "VarnixBase/Core/PortSystem/PortBase.hpp"
#include "VarnixBase/Core/QualitySystem/QualifiedValue.hpp"

namespace VarnixBase::Core::PortSystem {

/// A port that holds a `QualifiedValue<T>`: the value with the time of its last change and its
/// quality, published to the controller as one structure. A variable path to the port ends at
/// that structure, so the payload lies one step deeper, at "Value".
///
/// Its quality is the stored one: `SetValue` makes it `Good` with no flags, and `OnChange` takes
/// the quality of the connector that has just written the value. Quality providers added to it
/// are kept and listed, but do not change what it reports.
template <class T>
class QualifiedPort : public PortBase<T>,
                      public Zon::System::Commons::Diagnostics::Logging::Loggable<QualifiedPort<T>> {
public:
    using ArgumentType = typename PortBase<T>::ArgumentType;

    QualifiedPort(const String& name, unsigned long dimension) : PortBase<T>(name, dimension) {}
    ~QualifiedPort() override = default;

    QualitySystem::Quality GetQuality() override { return value.quality; }

    String GetRelativeDataPath() const override { return String("Value"); }

    /// Logs "Publish {name}: address={address}, attributes={attributes}" at level 7, then enters
    /// the whole qualified value as a variable of type `QualifiedValue<T>`.
    void Publish(Zon::Plc::Commons::Meta::DynamicPortsBuilder& builder) override
    {
        this->GetLogger().Debug("Publish {}: address={}, attributes={}", this->GetName(),
                                static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(&value)),
                                this->GetAttributes());
        String name(this->GetName().CStr());
        builder.template AddPort<QualitySystem::QualifiedValue<T>>(name, value, this->GetAttributes());
    }

    /// Runs right after `connector` has written the value through the published address, so the
    /// value is left as it is: takes the time stamp and the connector's quality.
    void OnChange(IConnector& connector) override
    {
        value.timestamp = Zon::DateTime::Now().ToUnixTimeMicroseconds();
        value.quality = static_cast<QualitySystem::IQualityProvider&>(connector).GetQuality();
    }

    /// Stores the value, sets the quality to `Good` with no flags and takes the time stamp.
    void SetValue(ArgumentType newValue) override
    {
        PortValueTraits<T>::Store(value.value, newValue);
        value.quality = QualitySystem::Quality{};
        value.timestamp = Zon::DateTime::Now().ToUnixTimeMicroseconds();
    }

    T GetValue() const override { return PortValueTraits<T>::Load(value.value); }

private:
    QualitySystem::QualifiedValue<T> value;
};

extern template class QualifiedPort<bool>;
extern template class QualifiedPort<signed char>;
extern template class QualifiedPort<unsigned char>;
extern template class QualifiedPort<short>;
extern template class QualifiedPort<unsigned short>;
extern template class QualifiedPort<int>;
extern template class QualifiedPort<unsigned int>;
extern template class QualifiedPort<long>;
extern template class QualifiedPort<unsigned long>;
extern template class QualifiedPort<float>;
extern template class QualifiedPort<double>;
extern template class QualifiedPort<Zon::Plc::Commons::Gds::StaticString<80, char>>;
extern template class QualifiedPort<Zon::Plc::Commons::Gds::StaticString<512, char>>;
extern template class QualifiedPort<Zon::Plc::Commons::Gds::StaticString<80, char16_t>>;
extern template class QualifiedPort<Zon::Plc::Commons::Gds::StaticString<512, char16_t>>;

} // namespace VarnixBase::Core::PortSystem
