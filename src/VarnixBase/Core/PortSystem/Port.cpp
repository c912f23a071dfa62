#include "VarnixBase/Core/PortSystem/Port.hpp"

namespace VarnixBase::Core::PortSystem {

template class Port<bool>;
template class Port<signed char>;
template class Port<unsigned char>;
template class Port<short>;
template class Port<unsigned short>;
template class Port<int>;
template class Port<unsigned int>;
template class Port<long>;
template class Port<unsigned long>;
template class Port<float>;
template class Port<double>;
template class Port<Zon::Plc::Commons::Gds::StaticString<80, char>>;
template class Port<Zon::Plc::Commons::Gds::StaticString<512, char>>;
template class Port<Zon::Plc::Commons::Gds::StaticString<80, char16_t>>;
template class Port<Zon::Plc::Commons::Gds::StaticString<512, char16_t>>;

} // namespace VarnixBase::Core::PortSystem
