#pragma once

// Small hand-written ports, connectors, parameters and executables for the tests of the program
// core, the providers and the ports.

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "VarnixBase/Commons/IExecutable.hpp"
#include "VarnixBase/Core/PortSystem/IConnector.hpp"
#include "VarnixBase/Core/PortSystem/IParameter.hpp"
#include "VarnixBase/Core/PortSystem/Port.hpp"
#include "VarnixBase/Core/QualitySystem/CombineQuality.hpp"

namespace VarnixTest::Graph {

using VarnixBase::Core::PortSystem::IConnector;
using VarnixBase::Core::PortSystem::IParameter;
using VarnixBase::Core::PortSystem::ParameterProvider;
using VarnixBase::Core::QualitySystem::IQualityProvider;
using VarnixBase::Core::QualitySystem::Quality;
using VarnixBase::Core::QualitySystem::QualityFlags;
using VarnixBase::Core::QualitySystem::QualityProviderList;
using VarnixBase::Core::QualitySystem::QualityState;
using Zon::String;

inline Quality MakeQuality(QualityState state, QualityFlags flags = QualityFlags::None)
{
    Quality quality;
    quality.state = state;
    quality.flags = flags;
    return quality;
}

/// A quality provider with a fixed answer.
class FixedQualityProvider : public IQualityProvider {
public:
    explicit FixedQualityProvider(Quality quality) : quality(quality) {}
    Quality GetQuality() override { return quality; }
    Quality quality;
};

/// A connector whose quality is the combination of its providers with `ownQuality`, and whose
/// `Execute` counts its runs and raises `changed`.
class FakeConnector : public IConnector {
public:
    explicit FakeConnector(const String& name) : name(name) {}
    void Execute() override
    {
        ++runs;
        changed(*this);
    }
    const String& GetName() const override { return name; }
    ParameterProvider& GetParameterProvider() override { return parameters; }
    Quality GetQuality() override
    {
        return VarnixBase::Core::QualitySystem::CombineQuality(
            VarnixBase::Core::QualitySystem::CombineQuality(providers), ownQuality);
    }
    void AddQualityProvider(std::shared_ptr<IQualityProvider> provider) override
    {
        providers.push_back(std::move(provider));
    }
    const QualityProviderList& GetQualityProviders() const override { return providers; }

    String name;
    ParameterProvider parameters;
    QualityProviderList providers;
    Quality ownQuality;
    int runs = 0;
};

/// A port of `int` that is also executable: each run adds one to its value.
class CountingPort : public VarnixBase::Core::PortSystem::Port<int>, public VarnixBase::Commons::IExecutable {
public:
    CountingPort(const String& name, unsigned long dimension) : Port<int>(name, dimension) {}
    void Execute() override { SetValue(GetValue() + 1); }
};

/// An executable that records its name into a shared journal on every run.
class JournalExecutable : public VarnixBase::Commons::IExecutable {
public:
    JournalExecutable(std::string name, std::vector<std::string>& journal) : name(std::move(name)), journal(journal) {}
    void Execute() override { journal.push_back(name); }
    std::string name;
    std::vector<std::string>& journal;
};

/// An executable that throws while `failing` is set, and records its runs otherwise.
class FailingExecutable : public VarnixBase::Commons::IExecutable {
public:
    explicit FailingExecutable(std::vector<std::string>& journal) : journal(journal) {}
    void Execute() override
    {
        if (failing) {
            throw std::runtime_error("executable failed");
        }
        journal.push_back("failing");
    }
    bool failing = true;
    std::vector<std::string>& journal;
};

/// A parameter with a name only; counts how many of its kind are alive.
class FakeParameter : public IParameter {
public:
    explicit FakeParameter(const String& name) : name(name) { ++alive; }
    ~FakeParameter() { --alive; }
    const String& GetName() const override { return name; }
    void Bind(String const& reference) override { bound = reference; }
    bool TryBind(String const& reference) override
    {
        bound = reference;
        return true;
    }
    void SetValueByString(String const& value) override { text = value; }

    String name;
    String bound;
    String text;
    static inline int alive = 0;
};

} // namespace VarnixTest::Graph
