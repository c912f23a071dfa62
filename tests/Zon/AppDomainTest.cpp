#include <gtest/gtest.h>

#include "Zon/AppDomain.hpp"
#include "Zon/Host/Runtime.hpp"
#include "Zon/Plc/Commons/Domain/PlcDomainProxy.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/Loggable.hpp"
#include "Zon/System/Commons/InvalidOperationException.hpp"

using namespace Zon::System::Commons::Diagnostics::Logging;
using Zon::Plc::Commons::Domain::PlcDomainProxy;

namespace {

class Widget : public Loggable<Widget> {
public:
    Widget() = default;
};

std::string MessageOf(const std::function<void()>& action)
{
    try {
        action();
    } catch (const Zon::Exception& error) {
        return error.what();
    }
    return "no exception";
}

Zon::Host::RuntimeOptions Quiet()
{
    Zon::Host::RuntimeOptions options;
    options.consoleLevel.reset();
    return options;
}

} // namespace

TEST(AppDomain, WithoutADomainSingletonLookUpsFail)
{
    ASSERT_EQ(Zon::Singleton<Zon::AppDomain>::GetInstance(), nullptr);
    EXPECT_EQ(MessageOf([] { Widget widget; }),
              "Singleton instance of type 'Zon.AppDomain' was not created yet!");
    EXPECT_EQ(MessageOf([] { PlcDomainProxy::GetInstance(); }),
              "Singleton instance of type 'Zon.AppDomain' was not created yet!");
}

TEST(AppDomain, WithoutALogManagerClassLoggersFail)
{
    auto options = Quiet();
    options.createLogManager = false;
    Zon::Host::Runtime runtime(options);
    EXPECT_EQ(MessageOf([] { Widget widget; }),
              "AppDomain Singleton instance of type 'Zon.System.Commons.Diagnostics.Logging.LogManager' was not "
              "created yet!");
}

TEST(AppDomain, WithoutADomainProxyTheProxyLookUpFails)
{
    auto options = Quiet();
    options.createDomainProxy = false;
    Zon::Host::Runtime runtime(options);
    EXPECT_EQ(MessageOf([] { PlcDomainProxy::GetInstance(); }),
              "AppDomain Singleton instance of type 'Zon.Plc.Commons.Domain.PlcDomainProxy' was not created yet!");
    EXPECT_EQ(MessageOf([] { Widget widget; }), "no exception");
}

TEST(AppDomain, RuntimeCreatesAndTearsDownTheDomain)
{
    {
        Zon::Host::Runtime runtime(Quiet());
        EXPECT_NE(Zon::Singleton<Zon::AppDomain>::GetInstance(), nullptr);
        EXPECT_EQ(&PlcDomainProxy::GetInstance(), &runtime.GetDomainProxy());
        EXPECT_NE(Zon::AppDomainSingleton<LogManager>::TryGetInstance(), nullptr);
    }
    EXPECT_EQ(Zon::Singleton<Zon::AppDomain>::GetInstance(), nullptr);
    EXPECT_EQ(LogManager::GetCurrent(), nullptr);
}

TEST(AppDomain, OnlyOneRuntimeAtATime)
{
    Zon::Host::Runtime runtime(Quiet());
    EXPECT_THROW(Zon::Host::Runtime second(Quiet()), Zon::System::Commons::InvalidOperationException);
}

TEST(AppDomain, RegistryFindsObjectsByTypeName)
{
    Zon::AppDomain domain;
    EXPECT_EQ(domain.Find<int>(), nullptr);
    int& value = domain.Register(std::make_shared<int>(5));
    EXPECT_EQ(domain.Find<int>(), &value);
    EXPECT_EQ(domain.FindObject("int"), &value);
    domain.Unregister<int>();
    EXPECT_EQ(domain.Find<int>(), nullptr);
}

TEST(AppDomain, ProxyEventTakesMethodDelegatesAndRaises)
{
    Zon::Host::Runtime runtime(Quiet());
    struct Program {
        int phases = 0;
        void InitializeConnectors() { ++phases; }
    } program;
    runtime.GetDomainProxy().PortsPublished += Zon::make_delegate(&program, &Program::InitializeConnectors);
    runtime.RaisePortsPublished();
    EXPECT_EQ(program.phases, 1);
    runtime.GetDomainProxy().PortsPublished -= Zon::make_delegate(&program, &Program::InitializeConnectors);
    runtime.RaisePortsPublished();
    EXPECT_EQ(program.phases, 1);
}
