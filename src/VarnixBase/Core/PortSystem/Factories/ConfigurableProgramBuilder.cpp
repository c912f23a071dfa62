#include "VarnixBase/Core/PortSystem/Factories/ConfigurableProgramBuilder.hpp"

#include <list>
#include <utility>

#include <fmt/format.h>

#include "Zon/Delegate.hpp"
#include "Zon/Exception.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Commons/InvalidConfigException.hpp"
#include "Zon/System/Commons/InvalidOperationException.hpp"
#include "Zon/System/Commons/Io/File.hpp"
#include "Zon/System/Commons/Io/Path.hpp"
#include "VarnixBase/Core/Info/Info.hpp"
#include "VarnixBase/Core/PortSystem/ConfigurableProgramBaseImpl.hpp"
#include "VarnixBase/Core/PortSystem/Configuration/ConfigurableProgramDocument.hpp"
#include "VarnixBase/Core/PortSystem/Configuration/ConfigurableProgramDocumentHelper.hpp"
#include "VarnixBase/Core/PortSystem/Factories/ConnectorFactory.hpp"
#include "VarnixBase/Core/PortSystem/Factories/PortFactory.hpp"

namespace VarnixBase::Core::PortSystem {

using Configuration::ConfigurableProgramDocumentHelper;
using Configuration::ParameterSettings;
using Zon::System::Commons::Io::File;
using Zon::System::Commons::Io::Path;
using Zon::System::Commons::Diagnostics::Logging::LoggerBase;
using Zon::System::Commons::Diagnostics::Logging::LogLevel;

namespace {

/// Where the older delivery place keeps the configuration files of program types.
constexpr const char* LegacyConfigurationDirectory = "/opt/varnix/projects/VarnixBase/Config/Types";

/// The position of the first "." or "[" of a reference, or its length if it has neither: the
/// port's name is the text in front of it.
std::size_t CutPosition(const String& reference)
{
    std::size_t cut = reference.FindFirstOf(".[");
    return cut == String::NPos ? reference.Length() : cut;
}

/// Appends "." and the port's relative data path to `path`, if the port has one.
void AppendRelativeDataPath(String& path, const IPort& port)
{
    String relative = port.GetRelativeDataPath();
    if (!relative.IsEmpty()) {
        path += '.';
        path += relative;
    }
}

} // namespace

struct ConfigurableProgramBuilder::Impl {
    explicit Impl(ConfigurableProgramBaseImpl& program) : program(program) {}

    ConfigurableProgramBaseImpl& program;
    bool hasErrors = false;
    Configuration::ConfigurableProgramDocument document;
    std::list<QualityBinding> qualityBindings;
    std::list<ParameterBinding> parameterBindings;

    /// What every guard does with a failure: remember it and log its message as it stands.
    void Report(const Zon::Exception& failure)
    {
        hasErrors = true;
        GetLogger().Error(failure.GetMessage().View());
    }

    /// The parameters of one port or connector, as it is being built: those given by `ref` wait
    /// for the second phase; those given by `value` are set now, each inside a guard of its own.
    void AddParameterSettings(const std::vector<ParameterSettings>& parameters, ParameterProvider& provider,
                              const std::shared_ptr<void>& owner)
    {
        for (const ParameterSettings& settings : parameters) {
            if (!settings.ref.IsEmpty()) {
                parameterBindings.push_back(ParameterBinding{&provider, settings, owner});
                continue;
            }
            try {
                provider.GetParameter(settings.name)->SetValueByString(settings.value);
            } catch (const Zon::Exception& failure) {
                Report(failure);
            }
        }
    }

    static Zon::System::Commons::Diagnostics::Logging::LoggerBase& GetLogger()
    {
        return ConfigurableProgramBuilder::GetLogger();
    }
};

ConfigurableProgramBuilder::ConfigurableProgramBuilder(ConfigurableProgramBaseImpl& program)
    : impl(std::make_shared<Impl>(program))
{
}

ConfigurableProgramBuilder::~ConfigurableProgramBuilder() = default;

void ConfigurableProgramBuilder::LoadConfiguration()
{
    String fileName = impl->program.GetTypeName() + ".prog.config";
    try {
        String path = Path::Combine(LegacyConfigurationDirectory, fileName);
        if (File::Exists(path)) {
            GetLogger().Warning("Loading program configuration from legacy path `{}`.", path);
        } else {
            path = Path::Combine(Path::Combine(Info::GetDataDirectory(), "Core/PortSystem"), fileName);
            GetLogger().Info("Loading program configuration `{}`", path);
        }
        impl->document.Load(path);
    } catch (const Zon::Exception& failure) {
        GetLogger().Error("Load configuration for `{}` failed: {}", fileName, failure.GetMessage());
    }
}

void ConfigurableProgramBuilder::AddPorts()
{
    ConfigurableProgramBaseImpl& program = impl->program;
    for (const auto& settings : impl->document.GetPrograms()) {
        if (!(settings.type == program.GetTypeName())) {
            continue;
        }
        if (!settings.ports.empty()) {
            GetLogger().Info("Add {} ports to `{}`", settings.ports.size(), program.GetInstancePath());
        }
        for (const auto& portSettings : settings.ports) {
            try {
                std::shared_ptr<IPort> port =
                    PortFactory::GetInstance().Create(portSettings.type, portSettings.name, portSettings.dimensions);
                if (!port) {
                    // A creator of the application's own may answer with no port at all.
                    throw Zon::System::Commons::InvalidOperationException(
                        "Port `{}` of type `{}` was not created", portSettings.name, portSettings.type);
                }
                port->AddAttributes(portSettings.attributes);
                impl->AddParameterSettings(portSettings.parameters, port->GetParameterProvider(), port);
                for (const auto& quality : portSettings.qualityProviders) {
                    impl->qualityBindings.push_back(QualityBinding{port, quality.ref});
                }
                // The attributes' text is made only for a log that shows this line.
                if (LoggerBase::IsEnabled(LogLevel::Debug)) {
                    GetLogger().Debug("Add port `{}`, type: `{}`, attributes: `{}` to `{}`", portSettings.name,
                                      portSettings.type,
                                      ConfigurableProgramDocumentHelper::ConvertToString(port->GetAttributes(), '|'),
                                      program.GetTypeName());
                }
                program.GetPortProvider().AddPort(port);
            } catch (const Zon::Exception& failure) {
                impl->Report(failure);
            }
        }
    }
}

void ConfigurableProgramBuilder::AddConnectors()
{
    ConfigurableProgramBaseImpl& program = impl->program;
    PortProvider& ports = program.GetPortProvider();
    for (const auto& settings : impl->document.GetPrograms()) {
        if (!(settings.type == program.GetTypeName())) {
            continue;
        }
        if (!settings.connectors.empty()) {
            GetLogger().Info("Add {} connectors inside `{}`", settings.connectors.size(), program.GetInstancePath());
        }
        for (const auto& connectorSettings : settings.connectors) {
            try {
                const String& startPort = connectorSettings.startPort;
                const String& endPort = connectorSettings.endPort;
                std::size_t startCut = CutPosition(startPort);
                std::size_t endCut = CutPosition(endPort);
                String startPortName = startPort.Substr(0, startCut);
                String endPortName = endPort.Substr(0, endCut);
                String startPath(fmt::format("{}.{}", program.GetInstancePath(), startPortName));
                String endPath(fmt::format("{}.{}", program.GetInstancePath(), endPortName));
                // Both ports are looked up before either path goes on, so that a missing port
                // fails here, by the look-up's own message.
                std::shared_ptr<IPort> startPortObject = ports.GetPort(startPortName);
                std::shared_ptr<IPort> endPortObject = ports.GetPort(endPortName);
                AppendRelativeDataPath(startPath, *startPortObject);
                startPath += startPort.Substr(startCut);
                AppendRelativeDataPath(endPath, *endPortObject);
                endPath += endPort.Substr(endCut);

                GetLogger().Debug("{} from {} to {}", connectorSettings.type, startPath, endPath);
                String name(fmt::format("{}:{}", startPort, endPort));
                std::shared_ptr<IConnector> connector =
                    ConnectorFactory::GetInstance().Create(connectorSettings.type, name, startPath, endPath);
                connector->AddQualityProvider(startPortObject);
                connector->changed += Zon::make_delegate(endPortObject.get(), &IPort::OnChange);
                endPortObject->AddQualityProvider(connector);
                impl->AddParameterSettings(connectorSettings.parameters, connector->GetParameterProvider(), connector);
                for (const auto& quality : connectorSettings.qualityProviders) {
                    impl->qualityBindings.push_back(QualityBinding{connector, quality.ref});
                }
                GetLogger().Debug("Add `{}` connector `{}` to `{}`", connectorSettings.type, connector->GetName(),
                                  program.GetTypeName());
                program.GetConnectorProvider().AddConnector(connector);
            } catch (const Zon::Exception& failure) {
                impl->Report(failure);
            }
        }
    }
}

void ConfigurableProgramBuilder::AddParameters()
{
    ConfigurableProgramBaseImpl& program = impl->program;
    if (!impl->parameterBindings.empty()) {
        GetLogger().Info("Bind {} parameters in `{}`", impl->parameterBindings.size(), program.GetTypeName());
    }
    for (const ParameterBinding& binding : impl->parameterBindings) {
        const ParameterSettings& settings = binding.settings;
        try {
            std::shared_ptr<IParameter> parameter;
            if (!binding.parameterProvider->TryGetParameter(settings.name, parameter)) {
                impl->hasErrors = true;
                GetLogger().Error("Parameter `{}` does not exist in `{}`.", settings.name, program.GetTypeName());
                continue;
            }
            if (settings.ref.IsEmpty()) {
                if (settings.value.IsEmpty()) {
                    impl->hasErrors = true;
                    GetLogger().Error("Parameter `{}` has invalid configuration in `{}`", settings.name,
                                      program.GetTypeName());
                } else {
                    parameter->SetValueByString(settings.value);
                }
                continue;
            }
            String portName = settings.ref.Substr(0, CutPosition(settings.ref));
            std::shared_ptr<IPort> portObject = program.GetPortProvider().GetPort(portName);
            String path(fmt::format("{}.{}", program.GetInstancePath(), settings.ref));
            AppendRelativeDataPath(path, *portObject);
            GetLogger().Debug("Bind parameter `{}` to reference `{}` in `{}`.", settings.name, path,
                              program.GetTypeName());
            if (!parameter->TryBind(path)) {
                GetLogger().Error("Unable to bind parameter `{}` to reference `{}` in `{}`.", settings.name,
                                  settings.ref, program.GetTypeName());
            }
        } catch (const Zon::Exception& failure) {
            impl->Report(failure);
        }
    }
}

void ConfigurableProgramBuilder::AddQualityProviders()
{
    ConfigurableProgramBaseImpl& program = impl->program;
    if (!impl->qualityBindings.empty()) {
        GetLogger().Info("Bind {} quality providers in `{}`", impl->qualityBindings.size(), program.GetTypeName());
    }
    for (const QualityBinding& binding : impl->qualityBindings) {
        try {
            std::shared_ptr<IPort> port;
            if (program.GetPortProvider().TryGetPort(binding.ref, port)) {
                GetLogger().Debug("Add quality provider {} to `{}`", binding.ref, program.GetTypeName());
                binding.consumer->AddQualityProvider(port);
                continue;
            }
            std::shared_ptr<IConnector> connector;
            if (program.GetConnectorProvider().TryGetConnector(binding.ref, connector)) {
                GetLogger().Debug("Add quality provider {} to `{}`", binding.ref, program.GetTypeName());
                binding.consumer->AddQualityProvider(connector);
                continue;
            }
            impl->hasErrors = true;
            GetLogger().Error("Quality provider reference `{}` does not exist in `{}`", binding.ref,
                              program.GetTypeName());
        } catch (const Zon::Exception& failure) {
            impl->Report(failure);
        }
    }
}

void ConfigurableProgramBuilder::Complete()
{
    ConfigurableProgramBaseImpl& program = impl->program;
    if (impl->hasErrors) {
        throw Zon::System::Commons::InvalidConfigException("Configuration of configurable program type `{}` is invalid.",
                                                           program.GetTypeName());
    }
    GetLogger().Info("Total {} ports and {} connections in `{}`.", program.GetPortProvider().Count(),
                     program.GetConnectorProvider().Count(), program.GetTypeName());
}

void ConfigurableProgramBuilder::ClearConfiguration()
{
    impl->document.GetPrograms().clear();
    impl->qualityBindings.clear();
    impl->parameterBindings.clear();
}

void ConfigurableProgramBuilder::AddParameterBinding(ParameterBinding binding)
{
    if (binding.parameterProvider == nullptr) {
        throw Zon::System::Commons::ArgumentException("A parameter binding needs a parameter provider");
    }
    impl->parameterBindings.push_back(std::move(binding));
}

void ConfigurableProgramBuilder::AddQualityBinding(QualityBinding binding)
{
    if (!binding.consumer) {
        throw Zon::System::Commons::ArgumentException("A quality binding needs a consumer");
    }
    impl->qualityBindings.push_back(std::move(binding));
}

} // namespace VarnixBase::Core::PortSystem
