#include "Schema.hpp"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <system_error>

#include <fmt/format.h>
#include <libxml/hash.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlschemas.h>

#include "VarnixBase/Sim/Stimulus.hpp"
#include "VarnixSimBuildInfo.hpp"

namespace VarnixSimCli {

using VarnixBase::Sim::UsageError;

namespace {

struct SchemaParserFree {
    void operator()(xmlSchemaParserCtxt* context) const { xmlSchemaFreeParserCtxt(context); }
};
struct SchemaFree {
    void operator()(xmlSchema* schema) const { xmlSchemaFree(schema); }
};
struct ValidFree {
    void operator()(xmlSchemaValidCtxt* context) const { xmlSchemaFreeValidCtxt(context); }
};
struct DocFree {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};

/// The text between the quotes that follow `marker` in `message` ("attribute '" gives the name of
/// the attribute in "Element 'Port', attribute 'size': ..."), or "".
std::string QuotedAfter(const std::string& message, const std::string& marker)
{
    std::size_t open = message.find(marker);
    if (open == std::string::npos) {
        return std::string();
    }
    open += marker.size();
    std::size_t close = message.find('\'', open);
    return close == std::string::npos ? std::string() : message.substr(open, close - open);
}

/// Collects the validator's findings; libxml2 calls it once for each.
void OnValidityError(void* data, xmlErrorPtr error)
{
    if (error == nullptr || error->message == nullptr) {
        return;
    }
    auto& deviations = *static_cast<std::vector<Deviation>*>(data);
    std::string message = error->message;
    while (!message.empty() && (message.back() == '\n' || message.back() == ' ')) {
        message.pop_back();
    }
    // A pattern is long and says little to a reader; the schema documents what the attribute takes.
    std::size_t pattern = message.find(" by the pattern '");
    if (pattern != std::string::npos) {
        message = message.substr(0, pattern) + " (prog-config.xsd documents the form the attribute takes)";
    }
    Deviation deviation;
    deviation.problem.severity = "warning";
    deviation.problem.line = error->line;
    deviation.problem.message = "schema: " + message;
    if (error->code == XML_SCHEMAV_CVC_COMPLEX_TYPE_3_2_1 || error->code == XML_SCHEMAV_CVC_COMPLEX_TYPE_3_2_2) {
        std::string attribute = QuotedAfter(message, "attribute '");
        if (!attribute.empty()) {
            deviation.subject = "`" + attribute + "`";
        }
    } else if (error->code == XML_SCHEMAV_CVC_IDC && message.rfind("Element 'Parameter'", 0) == 0) {
        deviation.subject = "`value` or `ref`";
    }
    deviations.push_back(std::move(deviation));
}

/// Keeps libxml2's messages about the schema file itself from going to standard error: a broken
/// schema is reported once, by the exception below.
void Ignore(void*, xmlErrorPtr) {}

} // namespace

std::string FindSchema()
{
    std::error_code error;
    auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (!error) {
        auto installed = program.parent_path() / BuildInfo::SchemaFromProgram;
        if (std::filesystem::is_regular_file(installed, error)) {
            return installed.lexically_normal().string();
        }
    }
    std::filesystem::path sources = BuildInfo::SchemaInSources;
    if (std::filesystem::is_regular_file(sources, error)) {
        return sources.string();
    }
    return std::string();
}

std::vector<Deviation> ValidateAgainstSchema(const std::string& document, const std::string& schema)
{
    std::unique_ptr<xmlSchemaParserCtxt, SchemaParserFree> parser(xmlSchemaNewParserCtxt(schema.c_str()));
    if (!parser) {
        throw UsageError(fmt::format("{}: cannot read the schema", schema));
    }
    xmlSchemaSetParserStructuredErrors(parser.get(), Ignore, nullptr);
    std::unique_ptr<xmlSchema, SchemaFree> compiled(xmlSchemaParse(parser.get()));
    if (!compiled) {
        throw UsageError(fmt::format("{}: not a valid schema (reinstall varnix-sim)", schema));
    }
    std::unique_ptr<xmlDoc, DocFree> tree(
        xmlReadFile(document.c_str(), nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_BIG_LINES));
    if (!tree) {
        throw UsageError(fmt::format("{}: not well-formed XML", document));
    }
    // The validator expands every entity reference it meets, each time anew: ten thousand
    // references to a long entity would make gigabytes of text. A document that declares entities
    // is therefore not checked against the schema, and the report says so once.
    const xmlDtd* subset = tree->intSubset;
    if (subset != nullptr && subset->entities != nullptr &&
        xmlHashSize(static_cast<xmlHashTablePtr>(subset->entities)) > 0) {
        Deviation skipped;
        skipped.problem.severity = "warning";
        skipped.problem.line = 1;
        skipped.problem.message =
            "schema: not checked: the document declares entities, and the check does not expand an entity reference";
        return {skipped};
    }
    std::unique_ptr<xmlSchemaValidCtxt, ValidFree> validator(xmlSchemaNewValidCtxt(compiled.get()));
    if (!validator) {
        throw UsageError(fmt::format("{}: cannot validate against {}", document, schema));
    }
    std::vector<Deviation> deviations;
    xmlSchemaSetValidStructuredErrors(validator.get(), OnValidityError, &deviations);
    xmlSchemaValidateDoc(validator.get(), tree.get());
    return deviations;
}

void MergeDeviations(std::vector<Problem>& problems, const std::vector<Deviation>& deviations)
{
    std::vector<Problem> added;
    for (const auto& deviation : deviations) {
        bool reported = !deviation.subject.empty() &&
                        std::any_of(problems.begin(), problems.end(), [&](const Problem& problem) {
                            return problem.line == deviation.problem.line &&
                                   problem.message.find(deviation.subject) != std::string::npos;
                        });
        if (!reported) {
            added.push_back(deviation.problem);
        }
    }
    problems.insert(problems.end(), added.begin(), added.end());
    std::stable_sort(problems.begin(), problems.end(),
                     [](const Problem& a, const Problem& b) { return a.line < b.line; });
}

} // namespace VarnixSimCli
