#pragma once

#include <vector>

#include <libxml/parser.h>
#include <libxml/tree.h>

#include "VarnixBase/Core/PortSystem/Configuration/ConfigurableProgramSettings.hpp"
#include "VarnixBase/Core/PortSystem/Configuration/ParameterSettingsBase.hpp"
#include "VarnixBase/Core/PortSystem/Configuration/QualityProviderSettingsBase.hpp"
#include "Zon/BasicString.hpp"
#include "Zon/Plc/Commons/Meta/StandardAttribute.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LoggerBase.hpp"

namespace VarnixBase::Core::PortSystem::Configuration {

/// Turns the node tree of a `.prog.config` into settings records. A short-lived object on the
/// caller's stack: it owns nothing and only remembers the logger into which its warnings go.
///
/// Every `Parse...` operation accepts any node. It acts only on an element whose local name is
/// the one it is responsible for and returns at once without effect for anything else, so that a
/// caller can hand each child to all parsers of the children it allows and only the matching one
/// acts. Unknown elements are skipped silently with their subtree; unknown attributes are warned
/// about and otherwise ignored. The one failure is a `Parameter` without exactly one of `value`
/// and `ref`, which throws `Zon::System::Commons::InvalidConfigException` through all parsers.
///
/// An attribute's value is the text of its first child node, untrimmed; an attribute without one
/// reads as empty.
class ConfigurableProgramDocumentHelper {
public:
    using LoggerBase = Zon::System::Commons::Diagnostics::Logging::LoggerBase;

    explicit ConfigurableProgramDocumentHelper(LoggerBase& logger) noexcept : logger(logger) {}
    ConfigurableProgramDocumentHelper(const ConfigurableProgramDocumentHelper&) = delete;
    ConfigurableProgramDocumentHelper& operator=(const ConfigurableProgramDocumentHelper&) = delete;

    /// The libxml2 options with which a document is read into the tree these parsers take. No
    /// network access, no external DTD, no entity substitution, no DTD default attributes (an
    /// external entity stays an unexpanded reference, and one inside an attribute value makes the
    /// document invalid). The tree leaves out blank text between elements and keeps short texts
    /// inside their nodes: the parsers read elements and attributes only, never text nodes, so they
    /// see the same tree as with all blanks kept, in less memory and time.
    static constexpr int ReadOptions = XML_PARSE_NONET | XML_PARSE_NOBLANKS | XML_PARSE_COMPACT;

    /// No schema is applied to the document: this always answers true.
    bool VerifyDocument();

    /// Empties `programs`, then reads every `Program` child of `root` into it, in order. The
    /// name of `root` is never looked at, nor are its attributes.
    void ParseDocument(xmlNode* root, std::vector<ConfigurableProgramSettings>& programs);
    /// A `Program` element: its `type` and the content of its `Ports` and `Connectors` children.
    /// The record is appended to `programs` only when it is complete.
    void ParseProgram(xmlNode* node, std::vector<ConfigurableProgramSettings>& programs);
    /// A `Ports` element: each of its `Port` children is appended to `settings.ports`.
    void ParsePorts(xmlNode* node, ConfigurableProgramSettings& settings);
    /// A `Port` element, appended to `settings.ports`.
    void ParsePort(xmlNode* node, ConfigurableProgramSettings& settings);
    /// A `Connectors` element: each of its `Connector` children is appended to
    /// `settings.connectors`.
    void ParseConnectors(xmlNode* node, ConfigurableProgramSettings& settings);
    /// A `Connector` element, appended to `settings.connectors`.
    void ParseConnector(xmlNode* node, ConfigurableProgramSettings& settings);
    /// A `QualityProvider` element, appended to `settings.qualityProviders` (also without `ref`).
    void ParseQualityProvider(xmlNode* node, QualityProviderSettingsBase& settings);
    /// A `Parameter` element, appended to `settings.parameters`. Throws
    /// `InvalidConfigException` "Parameter must contain exactly one attribute of `value` or `ref`"
    /// when neither or both of the two attributes are present.
    void ParseParameter(xmlNode* node, ParameterSettingsBase& settings);

    /// The flag set in printable form: the platform's text for 0 when no bit is set, otherwise
    /// each set bit printed on its own, lowest bit first, joined by `separator`. A combination
    /// is always printed bit by bit, even where the platform has a name for it.
    static Zon::String ConvertToString(Zon::Plc::Commons::Meta::StandardAttribute attributes, char separator);

private:
    LoggerBase& logger;
};

} // namespace VarnixBase::Core::PortSystem::Configuration
