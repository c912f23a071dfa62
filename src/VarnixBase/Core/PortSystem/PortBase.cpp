#include "VarnixBase/Core/PortSystem/PortBase.hpp"

namespace VarnixBase::Core::PortSystem {

template class PortBase<bool>;
template class PortBase<signed char>;
template class PortBase<unsigned char>;
template class PortBase<short>;
template class PortBase<unsigned short>;
template class PortBase<int>;
template class PortBase<unsigned int>;
template class PortBase<long>;
template class PortBase<unsigned long>;
template class PortBase<float>;
template class PortBase<double>;
template class PortBase<Zon::Plc::Commons::Gds::StaticString<80, char>>;
template class PortBase<Zon::Plc::Commons::Gds::StaticString<512, char>>;
template class PortBase<Zon::Plc::Commons::Gds::StaticString<80, char16_t>>;
template class PortBase<Zon::Plc::Commons::Gds::StaticString<512, char16_t>>;

} // namespace VarnixBase::Core::PortSystem
