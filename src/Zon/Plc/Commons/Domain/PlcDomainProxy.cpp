#include "Zon/Plc/Commons/Domain/PlcDomainProxy.hpp"

#include "Zon/AppDomain.hpp"

namespace Zon::Plc::Commons::Domain {

PlcDomainProxy& PlcDomainProxy::GetInstance()
{
    return AppDomainSingleton<PlcDomainProxy>::GetInstance();
}

} // namespace Zon::Plc::Commons::Domain
