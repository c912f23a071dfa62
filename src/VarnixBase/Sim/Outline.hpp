#pragma once

#include <string>
#include <vector>

namespace VarnixBase::Sim {

/// A reference in the document (`QualityProvider ref` or `Parameter`) with its line.
struct OutlineReference {
    std::string text;
    long line = 0;
};

struct OutlineParameter {
    std::string name;
    std::string value;
    std::string ref;
    bool hasValue = false;
    bool hasRef = false;
    long line = 0;
};

struct OutlinePort {
    std::string name;
    std::string type;
    std::string dimensions; ///< as written; empty when absent
    bool hasDimensions = false;
    long line = 0;
    std::vector<OutlineReference> qualityProviders;
    std::vector<OutlineParameter> parameters;
};

struct OutlineConnector {
    std::string startPort;
    std::string endPort;
    std::string type;
    long line = 0;
    std::vector<OutlineReference> qualityProviders;
    std::vector<OutlineParameter> parameters;

    /// The name the library gives the connector: start port, ":", end port, as written.
    std::string Name() const { return startPort + ":" + endPort; }
};

struct OutlineProgram {
    std::string type;
    long line = 0;
    std::vector<OutlinePort> ports;
    std::vector<OutlineConnector> connectors;
};

/// Any element the library reads, with the names of all its attributes.
struct OutlineElement {
    std::string kind; ///< "Program", "Ports", "Port", "Connectors", "Connector", "QualityProvider", "Parameter"
    long line = 0;
    std::vector<std::string> attributes;
};

/// What a `.prog.config` holds, element by element with line numbers, read by the same rules as the
/// library reads it (only `Program` children of the root, `Ports`/`Connectors` inside, and so on).
/// The simulator uses it to point at the lines that problems concern and to draw the program.
struct DocumentOutline {
    std::string file;
    std::vector<OutlineProgram> programs;
    /// Every element the library reads, in document order.
    std::vector<OutlineElement> elements;

    /// The distinct program types, in document order.
    std::vector<std::string> ProgramTypes() const;
    /// All `Program` entries of `type` merged into one (the library builds all of them).
    OutlineProgram Merged(const std::string& type) const;
};

/// Reads the outline of the file at `path` (a machine path). The parser does not use the network
/// and loads no external entity or DTD. Throws `UsageError` for a missing file or a document that is
/// not well-formed XML.
DocumentOutline ReadOutline(const std::string& path);

/// Reads the outline as `ReadOutline` does, through the parsed document's tree. `ReadOutline` reads
/// the parser's events instead and turns to this for what the tree alone decides: documents with a
/// document type declaration, an undeclared namespace prefix or a reference in an attribute value,
/// and elements past line 65534.
DocumentOutline ReadOutlineFromTree(const std::string& path);

/// The kind of a port by its type name: "device" for "AnalogIn" and "PnDeviceState", "qualified" for
/// "qualified.*", "plain" otherwise.
std::string PortKind(const std::string& type);

/// The C++ value type of a built-in port type name ("float64" -> "double"), or "" if unknown.
std::string PortValueType(const std::string& type);

} // namespace VarnixBase::Sim
