#pragma once

#include <type_traits>

#include "Zon/BasicString.hpp"
#include "VarnixBase/Commons/Gds/StaticStringAdapter.hpp"
#include "VarnixBase/Core/PortSystem/ConnectorBase.hpp"
#include "VarnixBase/Core/PortSystem/ValueConversion.hpp"

namespace VarnixBase::Core::PortSystem {

/// Moves the value at its start to its end once per cycle, converting its type, and then raises
/// `changed`. It reads no quality and no parameter, and it always writes.
///
/// Numbers convert by plain value conversion (`ConvertValue`): nothing saturates and nothing
/// reports a value that does not fit. Texts (`StaticStringAdapter<char>` to itself,
/// `StaticStringAdapter<char16_t>` to itself) are copied as `DataAccessValue::Set` copies them:
/// the source is read through its 8-bit view into a `String`, which is stored into the
/// destination within its capacity. A copy of a short text (up to 15 bytes) allocates nothing.
///
/// Every pair of `bool`, `signed char`, `unsigned char`, `short`, `unsigned short`, `int`,
/// `unsigned int`, `long`, `unsigned long`, `float` and `double`, and the two text pairs, are
/// instantiated in the library.
template <class I, class O>
class CopyConnector : public ConnectorBase<I, O> {
    static_assert((std::is_arithmetic_v<I> && std::is_arithmetic_v<O>) ||
                      (std::is_same_v<I, O> && (std::is_same_v<I, Commons::Gds::StaticStringAdapter<char>> ||
                                                std::is_same_v<I, Commons::Gds::StaticStringAdapter<char16_t>>)),
                  "a copy connector joins two numbers or two texts of one width");

public:
    CopyConnector(const String& name, const String& startPath, const String& endPath);
    ~CopyConnector() override;

    /// Reads, converts, writes, then raises `changed` with this connector.
    void Execute() override;
};

template <class I, class O>
CopyConnector<I, O>::CopyConnector(const String& name, const String& startPath, const String& endPath)
    : ConnectorBase<I, O>(name, startPath, endPath)
{
}

template <class I, class O>
CopyConnector<I, O>::~CopyConnector() = default;

template <class I, class O>
void CopyConnector<I, O>::Execute()
{
    if constexpr (std::is_arithmetic_v<I>) {
        *this->destination.GetDataPointer() = ConvertValue<O>(*this->source.GetDataPointer());
    } else {
        this->destination.Set(*this->source.GetDataPointer());
    }
    this->changed(*this);
}

extern template class CopyConnector<bool, bool>;
extern template class CopyConnector<bool, signed char>;
extern template class CopyConnector<bool, unsigned char>;
extern template class CopyConnector<bool, short>;
extern template class CopyConnector<bool, unsigned short>;
extern template class CopyConnector<bool, int>;
extern template class CopyConnector<bool, unsigned int>;
extern template class CopyConnector<bool, long>;
extern template class CopyConnector<bool, unsigned long>;
extern template class CopyConnector<bool, float>;
extern template class CopyConnector<bool, double>;
extern template class CopyConnector<signed char, bool>;
extern template class CopyConnector<signed char, signed char>;
extern template class CopyConnector<signed char, unsigned char>;
extern template class CopyConnector<signed char, short>;
extern template class CopyConnector<signed char, unsigned short>;
extern template class CopyConnector<signed char, int>;
extern template class CopyConnector<signed char, unsigned int>;
extern template class CopyConnector<signed char, long>;
extern template class CopyConnector<signed char, unsigned long>;
extern template class CopyConnector<signed char, float>;
extern template class CopyConnector<signed char, double>;
extern template class CopyConnector<unsigned char, bool>;
extern template class CopyConnector<unsigned char, signed char>;
extern template class CopyConnector<unsigned char, unsigned char>;
extern template class CopyConnector<unsigned char, short>;
extern template class CopyConnector<unsigned char, unsigned short>;
extern template class CopyConnector<unsigned char, int>;
extern template class CopyConnector<unsigned char, unsigned int>;
extern template class CopyConnector<unsigned char, long>;
extern template class CopyConnector<unsigned char, unsigned long>;
extern template class CopyConnector<unsigned char, float>;
extern template class CopyConnector<unsigned char, double>;
extern template class CopyConnector<short, bool>;
extern template class CopyConnector<short, signed char>;
extern template class CopyConnector<short, unsigned char>;
extern template class CopyConnector<short, short>;
extern template class CopyConnector<short, unsigned short>;
extern template class CopyConnector<short, int>;
extern template class CopyConnector<short, unsigned int>;
extern template class CopyConnector<short, long>;
extern template class CopyConnector<short, unsigned long>;
extern template class CopyConnector<short, float>;
extern template class CopyConnector<short, double>;
extern template class CopyConnector<unsigned short, bool>;
extern template class CopyConnector<unsigned short, signed char>;
extern template class CopyConnector<unsigned short, unsigned char>;
extern template class CopyConnector<unsigned short, short>;
extern template class CopyConnector<unsigned short, unsigned short>;
extern template class CopyConnector<unsigned short, int>;
extern template class CopyConnector<unsigned short, unsigned int>;
extern template class CopyConnector<unsigned short, long>;
extern template class CopyConnector<unsigned short, unsigned long>;
extern template class CopyConnector<unsigned short, float>;
extern template class CopyConnector<unsigned short, double>;
extern template class CopyConnector<int, bool>;
extern template class CopyConnector<int, signed char>;
extern template class CopyConnector<int, unsigned char>;
extern template class CopyConnector<int, short>;
extern template class CopyConnector<int, unsigned short>;
extern template class CopyConnector<int, int>;
extern template class CopyConnector<int, unsigned int>;
extern template class CopyConnector<int, long>;
extern template class CopyConnector<int, unsigned long>;
extern template class CopyConnector<int, float>;
extern template class CopyConnector<int, double>;
extern template class CopyConnector<unsigned int, bool>;
extern template class CopyConnector<unsigned int, signed char>;
extern template class CopyConnector<unsigned int, unsigned char>;
extern template class CopyConnector<unsigned int, short>;
extern template class CopyConnector<unsigned int, unsigned short>;
extern template class CopyConnector<unsigned int, int>;
extern template class CopyConnector<unsigned int, unsigned int>;
extern template class CopyConnector<unsigned int, long>;
extern template class CopyConnector<unsigned int, unsigned long>;
extern template class CopyConnector<unsigned int, float>;
extern template class CopyConnector<unsigned int, double>;
extern template class CopyConnector<long, bool>;
extern template class CopyConnector<long, signed char>;
extern template class CopyConnector<long, unsigned char>;
extern template class CopyConnector<long, short>;
extern template class CopyConnector<long, unsigned short>;
extern template class CopyConnector<long, int>;
extern template class CopyConnector<long, unsigned int>;
extern template class CopyConnector<long, long>;
extern template class CopyConnector<long, unsigned long>;
extern template class CopyConnector<long, float>;
extern template class CopyConnector<long, double>;
extern template class CopyConnector<unsigned long, bool>;
extern template class CopyConnector<unsigned long, signed char>;
extern template class CopyConnector<unsigned long, unsigned char>;
extern template class CopyConnector<unsigned long, short>;
extern template class CopyConnector<unsigned long, unsigned short>;
extern template class CopyConnector<unsigned long, int>;
extern template class CopyConnector<unsigned long, unsigned int>;
extern template class CopyConnector<unsigned long, long>;
extern template class CopyConnector<unsigned long, unsigned long>;
extern template class CopyConnector<unsigned long, float>;
extern template class CopyConnector<unsigned long, double>;
extern template class CopyConnector<float, bool>;
extern template class CopyConnector<float, signed char>;
extern template class CopyConnector<float, unsigned char>;
extern template class CopyConnector<float, short>;
extern template class CopyConnector<float, unsigned short>;
extern template class CopyConnector<float, int>;
extern template class CopyConnector<float, unsigned int>;
extern template class CopyConnector<float, long>;
extern template class CopyConnector<float, unsigned long>;
extern template class CopyConnector<float, float>;
extern template class CopyConnector<float, double>;
extern template class CopyConnector<double, bool>;
extern template class CopyConnector<double, signed char>;
extern template class CopyConnector<double, unsigned char>;
extern template class CopyConnector<double, short>;
extern template class CopyConnector<double, unsigned short>;
extern template class CopyConnector<double, int>;
extern template class CopyConnector<double, unsigned int>;
extern template class CopyConnector<double, long>;
extern template class CopyConnector<double, unsigned long>;
extern template class CopyConnector<double, float>;
extern template class CopyConnector<double, double>;
extern template class CopyConnector<Commons::Gds::StaticStringAdapter<char>, Commons::Gds::StaticStringAdapter<char>>;
extern template class CopyConnector<Commons::Gds::StaticStringAdapter<char16_t>, Commons::Gds::StaticStringAdapter<char16_t>>;

} // namespace VarnixBase::Core::PortSystem
