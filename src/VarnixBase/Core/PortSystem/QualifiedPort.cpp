#include "VarnixBase/Core/PortSystem/QualifiedPort.hpp"

namespace VarnixBase::Core::PortSystem {

template class QualifiedPort<bool>;
template class QualifiedPort<signed char>;
template class QualifiedPort<unsigned char>;
template class QualifiedPort<short>;
template class QualifiedPort<unsigned short>;
template class QualifiedPort<int>;
template class QualifiedPort<unsigned int>;
template class QualifiedPort<long>;
template class QualifiedPort<unsigned long>;
template class QualifiedPort<float>;
template class QualifiedPort<double>;
template class QualifiedPort<Zon::Plc::Commons::Gds::StaticString<80, char>>;
template class QualifiedPort<Zon::Plc::Commons::Gds::StaticString<512, char>>;
template class QualifiedPort<Zon::Plc::Commons::Gds::StaticString<80, char16_t>>;
template class QualifiedPort<Zon::Plc::Commons::Gds::StaticString<512, char16_t>>;

} // namespace VarnixBase::Core::PortSystem
