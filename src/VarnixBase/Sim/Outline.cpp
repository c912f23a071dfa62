#include "VarnixBase/Sim/Outline.hpp"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>
#include <new>
#include <string_view>
#include <utility>

#include <fmt/format.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
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

DocumentOutline ReadOutlineFromTree(const std::string& path)
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

namespace {

/// A run of text this long (a tenth of the parser's limit for one text node) is left to the tree.
constexpr std::size_t LongText = 1000000;

/// What an element is to the outline, by its place in the document.
enum class Role : unsigned char { Root, Program, Ports, Connectors, Port, Connector, Other };

/// The state of a streamed read: the records under construction and the path of roles.
struct StreamReader {
    xmlParserCtxtPtr context = nullptr;
    DocumentOutline outline;
    std::vector<Role> roles;
    OutlineProgram program;
    OutlinePort port;
    OutlineConnector connector;
    /// Set when the document holds something whose reading the tree decides (a document type
    /// declaration, a reference in an attribute value, an undeclared prefix, a line past 65534).
    bool needsTree = false;
    /// Text since the last tag. The tree stops at a text node beyond the parser's limit; a long
    /// enough run of text is left to it.
    std::size_t textSinceTag = 0;

    void GiveUp()
    {
        needsTree = true;
        xmlStopParser(context);
    }
};

bool NameIs(const xmlChar* name, const char* expected)
{
    return std::strcmp(reinterpret_cast<const char*>(name), expected) == 0;
}

/// A SAX attribute: local name, prefix, namespace, value start and value end.
struct StreamAttribute {
    std::string_view name;
    std::string_view value;
};

/// Notes the element and hands its attributes to `take`; false when the tree must decide.
template <class Take>
bool NoteStreamed(StreamReader& reader, const char* kind, long line, int count, const xmlChar** attributes,
                  Take&& take)
{
    OutlineElement element;
    element.kind = kind;
    element.line = line;
    element.attributes.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        const xmlChar** attribute = attributes + 5 * i;
        if (attribute[1] != nullptr && attribute[2] == nullptr) {
            return false; // an undeclared prefix: the tree names the attribute its own way
        }
        std::string_view value(reinterpret_cast<const char*>(attribute[3]),
                               static_cast<std::size_t>(attribute[4] - attribute[3]));
        if (value.find('&') != std::string_view::npos) {
            return false; // a reference: the tree splits the value into nodes
        }
        element.attributes.emplace_back(reinterpret_cast<const char*>(attribute[0]));
    }
    for (int i = 0; i < count; ++i) {
        const xmlChar** attribute = attributes + 5 * i;
        take(StreamAttribute{
            reinterpret_cast<const char*>(attribute[0]),
            std::string_view(reinterpret_cast<const char*>(attribute[3]),
                             static_cast<std::size_t>(attribute[4] - attribute[3]))});
    }
    reader.outline.elements.push_back(std::move(element));
    return true;
}

/// Sets `target` from the first attribute of its name, as the tree's attribute map does.
struct FirstOf {
    std::string_view name;
    std::string* target;
    bool* present;
    bool seen = false;

    void Offer(const StreamAttribute& attribute)
    {
        if (!seen && attribute.name == name) {
            seen = true;
            target->assign(attribute.value);
            if (present != nullptr) {
                *present = true;
            }
        }
    }
};

template <class Owner>
bool ReadStreamedChild(StreamReader& reader, Owner& owner, const xmlChar* name, long line, int count,
                       const xmlChar** attributes)
{
    if (NameIs(name, "QualityProvider")) {
        OutlineReference reference;
        reference.line = line;
        FirstOf ref{"ref", &reference.text, nullptr};
        if (!NoteStreamed(reader, "QualityProvider", line, count, attributes,
                          [&](const StreamAttribute& attribute) { ref.Offer(attribute); })) {
            return false;
        }
        owner.qualityProviders.push_back(std::move(reference));
    } else if (NameIs(name, "Parameter")) {
        OutlineParameter parameter;
        parameter.line = line;
        FirstOf parameterName{"name", &parameter.name, nullptr};
        FirstOf value{"value", &parameter.value, &parameter.hasValue};
        FirstOf ref{"ref", &parameter.ref, &parameter.hasRef};
        if (!NoteStreamed(reader, "Parameter", line, count, attributes, [&](const StreamAttribute& attribute) {
                parameterName.Offer(attribute);
                value.Offer(attribute);
                ref.Offer(attribute);
            })) {
            return false;
        }
        owner.parameters.push_back(std::move(parameter));
    }
    return true;
}

void StartStreamed(void* context, const xmlChar* localName, const xmlChar* prefix, const xmlChar* uri, int,
                   const xmlChar**, int attributeCount, int, const xmlChar** attributes)
{
    auto parser = static_cast<xmlParserCtxtPtr>(context);
    auto& reader = *static_cast<StreamReader*>(parser->_private);
    if (reader.needsTree) {
        return;
    }
    reader.textSinceTag = 0;
    if (prefix != nullptr && uri == nullptr) {
        reader.GiveUp(); // the tree names such an element "prefix:name"
        return;
    }
    long line = parser->input != nullptr ? parser->input->line : 0;
    Role parent = reader.roles.empty() ? Role::Other : reader.roles.back();
    Role role = Role::Other;
    bool noted = true;
    auto atLine = [&] {
        // The tree keeps lines up to 65534 exactly and finds larger ones another way.
        return line < 65535;
    };
    if (reader.roles.empty()) {
        role = Role::Root;
    } else if (parent == Role::Root && NameIs(localName, "Program")) {
        role = Role::Program;
        reader.program = OutlineProgram();
        reader.program.line = line;
        FirstOf type{"type", &reader.program.type, nullptr};
        noted = atLine() && NoteStreamed(reader, "Program", line, attributeCount, attributes,
                                         [&](const StreamAttribute& attribute) { type.Offer(attribute); });
    } else if (parent == Role::Program && (NameIs(localName, "Ports") || NameIs(localName, "Connectors"))) {
        bool ports = NameIs(localName, "Ports");
        role = ports ? Role::Ports : Role::Connectors;
        noted = atLine() && NoteStreamed(reader, ports ? "Ports" : "Connectors", line, attributeCount, attributes,
                                         [](const StreamAttribute&) {});
    } else if (parent == Role::Ports && NameIs(localName, "Port")) {
        role = Role::Port;
        reader.port = OutlinePort();
        reader.port.line = line;
        FirstOf name{"name", &reader.port.name, nullptr};
        FirstOf type{"type", &reader.port.type, nullptr};
        FirstOf dimensions{"dimensions", &reader.port.dimensions, &reader.port.hasDimensions};
        noted = atLine() && NoteStreamed(reader, "Port", line, attributeCount, attributes,
                                         [&](const StreamAttribute& attribute) {
                                             name.Offer(attribute);
                                             type.Offer(attribute);
                                             dimensions.Offer(attribute);
                                         });
    } else if (parent == Role::Connectors && NameIs(localName, "Connector")) {
        role = Role::Connector;
        reader.connector = OutlineConnector();
        reader.connector.line = line;
        FirstOf start{"startPort", &reader.connector.startPort, nullptr};
        FirstOf end{"endPort", &reader.connector.endPort, nullptr};
        FirstOf type{"type", &reader.connector.type, nullptr};
        noted = atLine() && NoteStreamed(reader, "Connector", line, attributeCount, attributes,
                                         [&](const StreamAttribute& attribute) {
                                             start.Offer(attribute);
                                             end.Offer(attribute);
                                             type.Offer(attribute);
                                         });
    } else if (parent == Role::Port) {
        noted = (!NameIs(localName, "QualityProvider") && !NameIs(localName, "Parameter")) ||
                (atLine() && ReadStreamedChild(reader, reader.port, localName, line, attributeCount, attributes));
    } else if (parent == Role::Connector) {
        noted = (!NameIs(localName, "QualityProvider") && !NameIs(localName, "Parameter")) ||
                (atLine() &&
                 ReadStreamedChild(reader, reader.connector, localName, line, attributeCount, attributes));
    }
    if (!noted) {
        reader.GiveUp();
        return;
    }
    reader.roles.push_back(role);
}

void EndStreamed(void* context, const xmlChar*, const xmlChar*, const xmlChar*)
{
    auto& reader = *static_cast<StreamReader*>(static_cast<xmlParserCtxtPtr>(context)->_private);
    reader.textSinceTag = 0;
    if (reader.needsTree || reader.roles.empty()) {
        return;
    }
    switch (reader.roles.back()) {
    case Role::Program:
        reader.outline.programs.push_back(std::move(reader.program));
        break;
    case Role::Port:
        reader.program.ports.push_back(std::move(reader.port));
        break;
    case Role::Connector:
        reader.program.connectors.push_back(std::move(reader.connector));
        break;
    default:
        break;
    }
    reader.roles.pop_back();
}

void TextStreamed(void* context, const xmlChar*, int length)
{
    auto& reader = *static_cast<StreamReader*>(static_cast<xmlParserCtxtPtr>(context)->_private);
    reader.textSinceTag += static_cast<std::size_t>(length > 0 ? length : 0);
    if (!reader.needsTree && reader.textSinceTag > LongText) {
        reader.GiveUp();
    }
}

void DocumentTypeStreamed(void* context, const xmlChar*, const xmlChar*, const xmlChar*)
{
    // Declarations may define entities and default attributes that the tree applies.
    static_cast<StreamReader*>(static_cast<xmlParserCtxtPtr>(context)->_private)->GiveUp();
}

void StreamErrorSink(void*, const xmlError*) {}

} // namespace

DocumentOutline ReadOutline(const std::string& path)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        throw UsageError(fmt::format("{}: no such file", path));
    }
    // Read the records straight from the parser's events, without building the document's tree.
    // The parser and its options are the tree reader's, so the same documents are well-formed.
    xmlSetStructuredErrorFunc(nullptr, reinterpret_cast<xmlStructuredErrorFunc>(&StreamErrorSink));
    xmlParserCtxtPtr context = xmlCreateURLParserCtxt(path.c_str(), XML_PARSE_NONET);
    if (context == nullptr) {
        xmlSetStructuredErrorFunc(nullptr, nullptr);
        throw UsageError(fmt::format("{}: not well-formed XML", path));
    }
    auto* handler = static_cast<xmlSAXHandler*>(xmlMalloc(sizeof(xmlSAXHandler)));
    if (handler == nullptr) {
        xmlFreeParserCtxt(context);
        xmlSetStructuredErrorFunc(nullptr, nullptr);
        throw std::bad_alloc();
    }
    std::memset(handler, 0, sizeof(xmlSAXHandler));
    handler->initialized = XML_SAX2_MAGIC;
    handler->startElementNs = &StartStreamed;
    handler->endElementNs = &EndStreamed;
    handler->characters = &TextStreamed;
    handler->cdataBlock = &TextStreamed;
    handler->ignorableWhitespace = &TextStreamed;
    handler->internalSubset = &DocumentTypeStreamed;
    handler->serror = reinterpret_cast<xmlStructuredErrorFunc>(&StreamErrorSink);
    xmlFree(context->sax); // the context owns its handler and frees it with itself
    context->sax = handler;
    xmlCtxtUseOptions(context, XML_PARSE_NONET);
    StreamReader reader;
    reader.context = context;
    reader.outline.file = path;
    context->_private = &reader;
    xmlParseDocument(context);
    bool wellFormed = context->wellFormed != 0;
    xmlFreeParserCtxt(context);
    xmlSetStructuredErrorFunc(nullptr, nullptr);
    if (reader.needsTree) {
        return ReadOutlineFromTree(path);
    }
    if (!wellFormed) {
        throw UsageError(fmt::format("{}: not well-formed XML", path));
    }
    return std::move(reader.outline);
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
