#pragma once

#include <type_traits>

#include "Zon/BasicString.hpp"
#include "VarnixBase/Core/PortSystem/ConnectorBase.hpp"
#include "VarnixBase/Core/PortSystem/Parameter.hpp"
#include "VarnixBase/Core/PortSystem/ValueConversion.hpp"
#include "VarnixBase/Core/QualitySystem/Quality.hpp"
#include "VarnixBase/Core/QualitySystem/QualityState.hpp"

namespace VarnixBase::Core::PortSystem {

/// Applies a linear function to the value at its start and writes the result at its end, once
/// per cycle, computing in double precision; then raises `changed`.
///
/// Parameters, added in this order by the constructor: "offset" (0.0), "gain" (1.0),
/// "replacementValue" (0.0), "invert" (false). They are read anew in every `Execute`.
/// - forwards (`invert` false): `O(double(source) * gain + offset)`;
/// - backwards (`invert` true, `gain` not 0.0, NaN included): `O(double(O(double(source) -
///   offset)) / gain)`: the difference is forced through the output type before the division, so
///   an integer output truncates twice and a narrow one wraps first;
/// - backwards with `gain` 0.0: the largest value of `O` (positive infinity for `float`, the
///   largest finite value for `double`), and the connector's last seen quality becomes `Invalid`.
/// Conversions are those of `ConvertValue`.
///
/// The connector keeps the quality it saw last, but nothing reads it: its `GetQuality` stays the
/// aggregate of its providers, so the `Invalid` of a zero gain does not reach the end port. The
/// replacement branch (write "replacementValue" while the quality is not `Good`) is selected by a
/// flag that is false from construction on and that nothing sets, so a configured replacement
/// value has no effect.
///
/// Every pair of `signed char`, `unsigned char`, `short`, `unsigned short`, `int`,
/// `unsigned int`, `long`, `unsigned long`, `float` and `double` is instantiated in the library.
template <class I, class O>
class ScaleConnector : public ConnectorBase<I, O> {
    static_assert(std::is_arithmetic_v<I> && std::is_arithmetic_v<O> && !std::is_same_v<I, bool> &&
                      !std::is_same_v<O, bool>,
                  "a scale connector joins two numbers other than bool");

public:
    ScaleConnector(const String& name, const String& startPath, const String& endPath);
    ~ScaleConnector() override;

    /// Computes and writes the value, then raises `changed` with this connector.
    void Execute() override;

private:
    Parameter<double>& offset;
    Parameter<double>& gain;
    Parameter<double>& replacementValue;
    Parameter<bool>& invert;
    /// Selects the replacement branch; false, and never set.
    bool useReplacementValue = false;
    /// The quality seen in the last `Execute`; written, never read.
    QualitySystem::Quality quality{};
};

template <class I, class O>
ScaleConnector<I, O>::ScaleConnector(const String& name, const String& startPath, const String& endPath)
    : ConnectorBase<I, O>(name, startPath, endPath),
      offset(this->GetParameterProvider().template AddParameter<double>(String("offset"), 0.0)),
      gain(this->GetParameterProvider().template AddParameter<double>(String("gain"), 1.0)),
      replacementValue(this->GetParameterProvider().template AddParameter<double>(String("replacementValue"), 0.0)),
      invert(this->GetParameterProvider().template AddParameter<bool>(String("invert"), false))
{
}

template <class I, class O>
ScaleConnector<I, O>::~ScaleConnector() = default;

template <class I, class O>
void ScaleConnector<I, O>::Execute()
{
    quality = this->GetQuality();
    O* output = this->destination.GetDataPointer();
    if (quality.state != QualitySystem::QualityState::Good && useReplacementValue) {
        *output = ConvertValue<O>(replacementValue.GetValue());
    } else if (!invert.GetValue()) {
        const double factor = gain.GetValue();
        const double product = ConvertValue<double>(*this->source.GetDataPointer()) * factor;
        *output = ConvertValue<O>(product + offset.GetValue());
    } else if (gain.GetValue() == 0.0) {
        quality = QualitySystem::Quality{QualitySystem::QualityFlags::None, QualitySystem::QualityState::Invalid};
        *output = ScaleLimit<O>();
    } else {
        const double difference = ConvertValue<double>(*this->source.GetDataPointer()) - offset.GetValue();
        const double throughOutput = ConvertValue<double>(ConvertValue<O>(difference));
        *output = ConvertValue<O>(throughOutput / gain.GetValue());
    }
    this->changed(*this);
}

extern template class ScaleConnector<signed char, signed char>;
extern template class ScaleConnector<signed char, unsigned char>;
extern template class ScaleConnector<signed char, short>;
extern template class ScaleConnector<signed char, unsigned short>;
extern template class ScaleConnector<signed char, int>;
extern template class ScaleConnector<signed char, unsigned int>;
extern template class ScaleConnector<signed char, long>;
extern template class ScaleConnector<signed char, unsigned long>;
extern template class ScaleConnector<signed char, float>;
extern template class ScaleConnector<signed char, double>;
extern template class ScaleConnector<unsigned char, signed char>;
extern template class ScaleConnector<unsigned char, unsigned char>;
extern template class ScaleConnector<unsigned char, short>;
extern template class ScaleConnector<unsigned char, unsigned short>;
extern template class ScaleConnector<unsigned char, int>;
extern template class ScaleConnector<unsigned char, unsigned int>;
extern template class ScaleConnector<unsigned char, long>;
extern template class ScaleConnector<unsigned char, unsigned long>;
extern template class ScaleConnector<unsigned char, float>;
extern template class ScaleConnector<unsigned char, double>;
extern template class ScaleConnector<short, signed char>;
extern template class ScaleConnector<short, unsigned char>;
extern template class ScaleConnector<short, short>;
extern template class ScaleConnector<short, unsigned short>;
extern template class ScaleConnector<short, int>;
extern template class ScaleConnector<short, unsigned int>;
extern template class ScaleConnector<short, long>;
extern template class ScaleConnector<short, unsigned long>;
extern template class ScaleConnector<short, float>;
extern template class ScaleConnector<short, double>;
extern template class ScaleConnector<unsigned short, signed char>;
extern template class ScaleConnector<unsigned short, unsigned char>;
extern template class ScaleConnector<unsigned short, short>;
extern template class ScaleConnector<unsigned short, unsigned short>;
extern template class ScaleConnector<unsigned short, int>;
extern template class ScaleConnector<unsigned short, unsigned int>;
extern template class ScaleConnector<unsigned short, long>;
extern template class ScaleConnector<unsigned short, unsigned long>;
extern template class ScaleConnector<unsigned short, float>;
extern template class ScaleConnector<unsigned short, double>;
extern template class ScaleConnector<int, signed char>;
extern template class ScaleConnector<int, unsigned char>;
extern template class ScaleConnector<int, short>;
extern template class ScaleConnector<int, unsigned short>;
extern template class ScaleConnector<int, int>;
extern template class ScaleConnector<int, unsigned int>;
extern template class ScaleConnector<int, long>;
extern template class ScaleConnector<int, unsigned long>;
extern template class ScaleConnector<int, float>;
extern template class ScaleConnector<int, double>;
extern template class ScaleConnector<unsigned int, signed char>;
extern template class ScaleConnector<unsigned int, unsigned char>;
extern template class ScaleConnector<unsigned int, short>;
extern template class ScaleConnector<unsigned int, unsigned short>;
extern template class ScaleConnector<unsigned int, int>;
extern template class ScaleConnector<unsigned int, unsigned int>;
extern template class ScaleConnector<unsigned int, long>;
extern template class ScaleConnector<unsigned int, unsigned long>;
extern template class ScaleConnector<unsigned int, float>;
extern template class ScaleConnector<unsigned int, double>;
extern template class ScaleConnector<long, signed char>;
extern template class ScaleConnector<long, unsigned char>;
extern template class ScaleConnector<long, short>;
extern template class ScaleConnector<long, unsigned short>;
extern template class ScaleConnector<long, int>;
extern template class ScaleConnector<long, unsigned int>;
extern template class ScaleConnector<long, long>;
extern template class ScaleConnector<long, unsigned long>;
extern template class ScaleConnector<long, float>;
extern template class ScaleConnector<long, double>;
extern template class ScaleConnector<unsigned long, signed char>;
extern template class ScaleConnector<unsigned long, unsigned char>;
extern template class ScaleConnector<unsigned long, short>;
extern template class ScaleConnector<unsigned long, unsigned short>;
extern template class ScaleConnector<unsigned long, int>;
extern template class ScaleConnector<unsigned long, unsigned int>;
extern template class ScaleConnector<unsigned long, long>;
extern template class ScaleConnector<unsigned long, unsigned long>;
extern template class ScaleConnector<unsigned long, float>;
extern template class ScaleConnector<unsigned long, double>;
extern template class ScaleConnector<float, signed char>;
extern template class ScaleConnector<float, unsigned char>;
extern template class ScaleConnector<float, short>;
extern template class ScaleConnector<float, unsigned short>;
extern template class ScaleConnector<float, int>;
extern template class ScaleConnector<float, unsigned int>;
extern template class ScaleConnector<float, long>;
extern template class ScaleConnector<float, unsigned long>;
extern template class ScaleConnector<float, float>;
extern template class ScaleConnector<float, double>;
extern template class ScaleConnector<double, signed char>;
extern template class ScaleConnector<double, unsigned char>;
extern template class ScaleConnector<double, short>;
extern template class ScaleConnector<double, unsigned short>;
extern template class ScaleConnector<double, int>;
extern template class ScaleConnector<double, unsigned int>;
extern template class ScaleConnector<double, long>;
extern template class ScaleConnector<double, unsigned long>;
extern template class ScaleConnector<double, float>;
extern template class ScaleConnector<double, double>;

} // namespace VarnixBase::Core::PortSystem
