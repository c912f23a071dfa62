#include "VarnixBase/Sim/Outline.hpp"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>
#include <utility>

#include <fmt/format.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include "VarnixBase/Sim/Stimulus.hpp"

namespace VarnixBase::Sim {

namespace {

bool Is(const xmlNode* node, const char* name)
{
    return node->type == XML_ELEMENT_NODE && node->name != nullptr &&
           std::strcmp(reinterpret_cast<const char*>(node->name), name) == 0;
}

/// Attribute values as the library reads them: the text of the attribute's first child node.
std::map<std::string, std::string> Attributes(const xmlNode* node)
{
    std::map<std::string, std::string> result;
    for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
        std::string value;
        if (attribute->children != nullptr && attribute->children->content != nullptr) {
            value = reinterpret_cast<const char*>(attribute->children->content);
        }
        result.emplace(reinterpret_cast<const char*>(attribute->name), value);
    }
    return result;
}

std::string Get(const std::map<std::string, std::string>& attributes, const char* name, bool* present = nullptr)
{
    auto found = attributes.find(name);
    if (present != nullptr) {
        *present = found != attributes.end();
    }
    return found != attributes.end() ? found->second : std::string();
}

void Note(std::vector<OutlineElement>& elements, const xmlNode* node)
{
    OutlineElement element;
    element.kind = reinterpret_cast<const char*>(node->name);
    element.line = xmlGetLineNo(node);
    for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
        element.attributes.emplace_back(reinterpret_cast<const char*>(attribute->name));
    }
    elements.push_back(std::move(element));
}

template <class Owner>
void ReadChildren(const xmlNode* node, Owner& owner, std::vector<OutlineElement>& elements)
{
    for (const xmlNode* child = node->children; child != nullptr; child = child->next) {
        if (Is(child, "QualityProvider") || Is(child, "Parameter")) {
            Note(elements, child);
        }
        if (Is(child, "QualityProvider")) {
            owner.qualityProviders.push_back({Get(Attributes(child), "ref"), xmlGetLineNo(child)});
        } else if (Is(child, "Parameter")) {
            auto attributes = Attributes(child);
            OutlineParameter parameter;
            parameter.name = Get(attributes, "name");
            parameter.value = Get(attributes, "value", &parameter.hasValue);
            parameter.ref = Get(attributes, "ref", &parameter.hasRef);
            parameter.line = xmlGetLineNo(child);
            owner.parameters.push_back(std::move(parameter));
        }
    }
}

void ErrorSink(void*, const xmlError*) {}

} // namespace

DocumentOutline ReadOutline(const std::string& path)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        throw UsageError(fmt::format("{}: no such file", path));
    }
    xmlSetStructuredErrorFunc(nullptr, reinterpret_cast<xmlStructuredErrorFunc>(&ErrorSink));
    xmlDocPtr document = xmlReadFile(path.c_str(), nullptr, XML_PARSE_NONET);
    xmlSetStructuredErrorFunc(nullptr, nullptr);
    if (document == nullptr) {
        throw UsageError(fmt::format("{}: not well-formed XML", path));
    }
    DocumentOutline outline;
    outline.file = path;
    const xmlNode* root = xmlDocGetRootElement(document);
    for (const xmlNode* programNode = root != nullptr ? root->children : nullptr; programNode != nullptr;
         programNode = programNode->next) {
        if (!Is(programNode, "Program")) {
            continue;
        }
        Note(outline.elements, programNode);
        OutlineProgram program;
        program.type = Get(Attributes(programNode), "type");
        program.line = xmlGetLineNo(programNode);
        for (const xmlNode* section = programNode->children; section != nullptr; section = section->next) {
            if (Is(section, "Ports") || Is(section, "Connectors")) {
                Note(outline.elements, section);
            }
            if (Is(section, "Ports")) {
                for (const xmlNode* portNode = section->children; portNode != nullptr; portNode = portNode->next) {
                    if (!Is(portNode, "Port")) {
                        continue;
                    }
                    Note(outline.elements, portNode);
                    auto attributes = Attributes(portNode);
                    OutlinePort port;
                    port.name = Get(attributes, "name");
                    port.type = Get(attributes, "type");
                    port.dimensions = Get(attributes, "dimensions", &port.hasDimensions);
                    port.line = xmlGetLineNo(portNode);
                    ReadChildren(portNode, port, outline.elements);
                    program.ports.push_back(std::move(port));
                }
            } else if (Is(section, "Connectors")) {
                for (const xmlNode* node = section->children; node != nullptr; node = node->next) {
                    if (!Is(node, "Connector")) {
                        continue;
                    }
                    Note(outline.elements, node);
                    auto attributes = Attributes(node);
                    OutlineConnector connector;
                    connector.startPort = Get(attributes, "startPort");
                    connector.endPort = Get(attributes, "endPort");
                    connector.type = Get(attributes, "type");
                    connector.line = xmlGetLineNo(node);
                    ReadChildren(node, connector, outline.elements);
                    program.connectors.push_back(std::move(connector));
                }
            }
        }
        outline.programs.push_back(std::move(program));
    }
    xmlFreeDoc(document);
    return outline;
}

std::vector<std::string> DocumentOutline::ProgramTypes() const
{
    std::vector<std::string> types;
    for (const auto& program : programs) {
        if (std::find(types.begin(), types.end(), program.type) == types.end()) {
            types.push_back(program.type);
        }
    }
    return types;
}

OutlineProgram DocumentOutline::Merged(const std::string& type) const
{
    OutlineProgram merged;
    merged.type = type;
    for (const auto& program : programs) {
        if (program.type != type) {
            continue;
        }
        if (merged.line == 0) {
            merged.line = program.line;
        }
        merged.ports.insert(merged.ports.end(), program.ports.begin(), program.ports.end());
        merged.connectors.insert(merged.connectors.end(), program.connectors.begin(), program.connectors.end());
    }
    return merged;
}

std::string PortKind(const std::string& type)
{
    if (type == "AnalogIn" || type == "PnDeviceState") {
        return "device";
    }
    if (type.rfind("qualified.", 0) == 0) {
        return "qualified";
    }
    return "plain";
}

std::string PortValueType(const std::string& type)
{
    static const std::map<std::string, std::string> types = {
        {"boolean", "bool"},
        {"int8", "signed char"},
        {"uint8", "unsigned char"},
        {"int16", "short"},
        {"uint16", "unsigned short"},
        {"int32", "int"},
        {"uint32", "unsigned int"},
        {"int64", "long"},
        {"uint64", "unsigned long"},
        {"float32", "float"},
        {"float64", "double"},
        {"string80", "string(80)"},
        {"string512", "string(512)"},
        {"wstring80", "wstring(80)"},
        {"wstring512", "wstring(512)"},
        {"AnalogIn", "unsigned short"},
        {"PnDeviceState", "unsigned char"},
    };
    std::string plain = type.rfind("qualified.", 0) == 0 ? type.substr(10) : type;
    auto found = types.find(plain);
    return found != types.end() ? found->second : std::string();
}

} // namespace VarnixBase::Sim
