#include "VarnixBase/Core/PortSystem/Configuration/ConfigurableProgramDocumentHelper.hpp"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <utility>

#include <fmt/format.h>

#include "Zon/System/Commons/InvalidConfigException.hpp"

namespace VarnixBase::Core::PortSystem::Configuration {

using Zon::Plc::Commons::Meta::StandardAttribute;
using Zon::System::Commons::InvalidConfigException;

namespace {

/// True for an element node with exactly this local name.
bool IsElement(const xmlNode* node, const char* name) noexcept
{
    return node != nullptr && node->type == XML_ELEMENT_NODE && node->name != nullptr &&
           std::strcmp(reinterpret_cast<const char*>(node->name), name) == 0;
}

/// True when the attribute has exactly this local name.
bool IsNamed(const xmlAttr* attribute, const char* name) noexcept
{
    return attribute->name != nullptr && std::strcmp(reinterpret_cast<const char*>(attribute->name), name) == 0;
}

Zon::String NameOf(const xmlAttr* attribute)
{
    return Zon::String(reinterpret_cast<const char*>(attribute->name));
}

/// The attribute's value: the text of its first child node as it stands, or empty when it has
/// none (the tree of an attribute with an empty value may have no child at all).
Zon::String ValueOf(const xmlAttr* attribute)
{
    const xmlNode* first = attribute->children;
    if (first == nullptr || first->content == nullptr) {
        return Zon::String();
    }
    return Zon::String(reinterpret_cast<const char*>(first->content));
}

/// The flags named in a blank-separated list. Each piece between two blanks (0x20 only) goes
/// through the platform's stream extraction on its own; a piece that the extraction refuses,
/// an empty one included, adds nothing and is not reported.
StandardAttribute ParseAttributes(const Zon::String& text)
{
    StandardAttribute result = StandardAttribute::None;
    const std::string& value = text.ToStdString();
    std::size_t start = 0;
    while (true) {
        std::size_t end = value.find(' ', start);
        std::istringstream stream(value.substr(start, end == std::string::npos ? std::string::npos : end - start));
        StandardAttribute flag = StandardAttribute::None;
        stream >> flag;
        if (!stream.fail()) {
            result |= flag;
        }
        if (end == std::string::npos) {
            break;
        }
        start = end + 1;
    }
    return result;
}

/// The `dimensions` value: a decimal number as `strtol` reads it (leading white space skipped,
/// reading stops at the first character that is no digit), where an empty text and 0 give 1.
/// A negative number is kept as its 64-bit pattern.
std::uint64_t ParseDimensions(const Zon::String& text)
{
    long number = std::strtol(text.CStr(), nullptr, 10);
    if (number == 0) {
        return 1;
    }
    return static_cast<std::uint64_t>(number);
}

} // namespace

bool ConfigurableProgramDocumentHelper::VerifyDocument()
{
    return true;
}

void ConfigurableProgramDocumentHelper::ParseDocument(xmlNode* root, std::vector<ConfigurableProgramSettings>& programs)
{
    programs.clear();
    if (root == nullptr) {
        return;
    }
    for (xmlNode* child = root->children; child != nullptr; child = child->next) {
        ParseProgram(child, programs);
    }
}

void ConfigurableProgramDocumentHelper::ParseProgram(xmlNode* node, std::vector<ConfigurableProgramSettings>& programs)
{
    if (!IsElement(node, "Program")) {
        return;
    }
    ConfigurableProgramSettings settings;
    for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
        if (IsNamed(attribute, "type")) {
            settings.type = ValueOf(attribute);
        } else {
            logger.Warning("Program attribute is unknown: `{0}`", NameOf(attribute));
        }
    }
    for (xmlNode* child = node->children; child != nullptr; child = child->next) {
        ParsePorts(child, settings);
        ParseConnectors(child, settings);
    }
    programs.push_back(std::move(settings));
}

void ConfigurableProgramDocumentHelper::ParsePorts(xmlNode* node, ConfigurableProgramSettings& settings)
{
    if (!IsElement(node, "Ports")) {
        return;
    }
    for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
        logger.Warning("Ports attribute is unknown: `{0}`", NameOf(attribute));
    }
    for (xmlNode* child = node->children; child != nullptr; child = child->next) {
        ParsePort(child, settings);
    }
}

void ConfigurableProgramDocumentHelper::ParsePort(xmlNode* node, ConfigurableProgramSettings& settings)
{
    if (!IsElement(node, "Port")) {
        return;
    }
    PortSettings port;
    for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
        if (IsNamed(attribute, "name")) {
            port.name = ValueOf(attribute);
        } else if (IsNamed(attribute, "type")) {
            port.type = ValueOf(attribute);
        } else if (IsNamed(attribute, "attributes")) {
            port.attributes = ParseAttributes(ValueOf(attribute));
        } else if (IsNamed(attribute, "dimensions")) {
            port.dimensions = ParseDimensions(ValueOf(attribute));
        } else {
            logger.Warning("Port attribute is unknown: `{0}`", NameOf(attribute));
        }
    }
    if (port.dimensions != 1) {
        // The value stays in the record; what it does is up to the port that is built from it.
        logger.Warning("Port dimension other than 1 is currently not supported");
    }
    for (xmlNode* child = node->children; child != nullptr; child = child->next) {
        ParseQualityProvider(child, port);
        ParseParameter(child, port);
    }
    settings.ports.push_back(std::move(port));
}

void ConfigurableProgramDocumentHelper::ParseConnectors(xmlNode* node, ConfigurableProgramSettings& settings)
{
    if (!IsElement(node, "Connectors")) {
        return;
    }
    for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
        logger.Warning("Connectors attribute is unknown: `{0}`", NameOf(attribute));
    }
    for (xmlNode* child = node->children; child != nullptr; child = child->next) {
        ParseConnector(child, settings);
    }
}

void ConfigurableProgramDocumentHelper::ParseConnector(xmlNode* node, ConfigurableProgramSettings& settings)
{
    if (!IsElement(node, "Connector")) {
        return;
    }
    ConnectorSettings connector;
    for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
        if (IsNamed(attribute, "startPort")) {
            connector.startPort = ValueOf(attribute);
        } else if (IsNamed(attribute, "endPort")) {
            connector.endPort = ValueOf(attribute);
        } else if (IsNamed(attribute, "type")) {
            connector.type = ValueOf(attribute);
        } else {
            logger.Warning("Connector attribute is unknown: `{0}`", NameOf(attribute));
        }
    }
    for (xmlNode* child = node->children; child != nullptr; child = child->next) {
        ParseQualityProvider(child, connector);
        ParseParameter(child, connector);
    }
    settings.connectors.push_back(std::move(connector));
}

void ConfigurableProgramDocumentHelper::ParseQualityProvider(xmlNode* node, QualityProviderSettingsBase& settings)
{
    if (!IsElement(node, "QualityProvider")) {
        return;
    }
    QualityProviderSettings provider;
    for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
        if (IsNamed(attribute, "ref")) {
            provider.ref = ValueOf(attribute);
        } else {
            logger.Warning("QualityProvider attribute is unknown: `{0}`", NameOf(attribute));
        }
    }
    settings.qualityProviders.push_back(std::move(provider));
}

void ConfigurableProgramDocumentHelper::ParseParameter(xmlNode* node, ParameterSettingsBase& settings)
{
    if (!IsElement(node, "Parameter")) {
        return;
    }
    static constexpr const char* exactlyOne = "Parameter must contain exactly one attribute of `value` or `ref`";
    bool hasValue = false;
    bool hasRef = false;
    if (node->properties == nullptr) {
        throw InvalidConfigException(exactlyOne);
    }
    ParameterSettings parameter;
    for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
        if (IsNamed(attribute, "name")) {
            parameter.name = ValueOf(attribute);
        } else if (IsNamed(attribute, "value")) {
            parameter.value = ValueOf(attribute);
            hasValue = true;
        } else if (IsNamed(attribute, "ref")) {
            parameter.ref = ValueOf(attribute);
            hasRef = true;
        } else {
            logger.Warning("Parameter attribute is unknown: `{0}`", NameOf(attribute));
        }
    }
    // Presence counts, not content: an empty `value` is a value.
    if (hasValue == hasRef) {
        throw InvalidConfigException(exactlyOne);
    }
    settings.parameters.push_back(std::move(parameter));
}

Zon::String ConfigurableProgramDocumentHelper::ConvertToString(StandardAttribute attributes, char separator)
{
    auto bits = static_cast<std::uint64_t>(attributes);
    if (bits == 0) {
        std::ostringstream zero;
        zero << StandardAttribute::None;
        return Zon::String(zero.str());
    }
    std::string result;
    bool first = true;
    for (unsigned bit = 0; bit < 64; ++bit) {
        auto flag = std::uint64_t{1} << bit;
        if ((bits & flag) == 0) {
            continue;
        }
        std::ostringstream text;
        text << static_cast<StandardAttribute>(flag);
        if (first) {
            result += fmt::format("{0}", text.str());
            first = false;
        } else {
            result += fmt::format("{0}{1}", separator, text.str());
        }
    }
    return Zon::String(std::move(result));
}

} // namespace VarnixBase::Core::PortSystem::Configuration
