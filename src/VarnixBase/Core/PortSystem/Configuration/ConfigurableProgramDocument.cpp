#include "VarnixBase/Core/PortSystem/Configuration/ConfigurableProgramDocument.hpp"

#include <memory>
#include <string>

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include "VarnixBase/Core/PortSystem/Configuration/ConfigurableProgramDocumentHelper.hpp"
#include "Zon/Host/FileSystemRoot.hpp"
#include "Zon/System/Commons/InvalidConfigException.hpp"
#include "Zon/System/Commons/Io/File.hpp"
#include "Zon/System/Commons/Io/NotExistException.hpp"
#include "Zon/System/Commons/NotImplementedException.hpp"

namespace VarnixBase::Core::PortSystem::Configuration {

using Zon::System::Commons::InvalidConfigException;
using Zon::System::Commons::NotImplementedException;
using Zon::System::Commons::Io::File;
using Zon::System::Commons::Io::NotExistException;

namespace {

/// libxml2 reports parse errors through the calling thread's structured error handler, and
/// without one it writes them to standard error. The document turns a parse failure into its own
/// exception, so during a parse the handler swallows the report; the handler that was installed
/// before comes back afterwards.
class QuietXmlErrors {
public:
    QuietXmlErrors() noexcept : previous(xmlStructuredError), previousContext(xmlStructuredErrorContext)
    {
        // A generic lambda fits the handler type of every libxml2 version, whether the error
        // record comes as a pointer to const or not.
        xmlStructuredErrorFunc discard = [](void*, auto) {};
        xmlSetStructuredErrorFunc(nullptr, discard);
    }
    ~QuietXmlErrors() { xmlSetStructuredErrorFunc(previousContext, previous); }
    QuietXmlErrors(const QuietXmlErrors&) = delete;
    QuietXmlErrors& operator=(const QuietXmlErrors&) = delete;

private:
    xmlStructuredErrorFunc previous;
    void* previousContext;
};

/// Parses the file at a machine path, or gives null when it is no well-formed XML, with the
/// options of the helper that reads the tree.
xmlDoc* ReadXml(const std::string& machinePath)
{
    xmlInitParser();
    QuietXmlErrors quiet;
    return xmlReadFile(machinePath.c_str(), nullptr, ConfigurableProgramDocumentHelper::ReadOptions);
}

} // namespace

ConfigurableProgramDocument::~ConfigurableProgramDocument() = default;

void ConfigurableProgramDocument::Load(const Zon::String& path)
{
    if (!File::Exists(path)) {
        throw NotExistException("File `{0}` not found.", path);
    }
    // The tree goes on every way out of the load, also when a parser throws.
    std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> document(ReadXml(Zon::Host::FileSystemRoot::Map(path)), &xmlFreeDoc);
    if (document == nullptr) {
        throw InvalidConfigException("Invalid XML `{0}`", path);
    }
    ConfigurableProgramDocumentHelper helper(GetLogger());
    if (!helper.VerifyDocument()) {
        // The failure is made but not raised: a document that fails validation leaves the
        // programs as they were and the load returns normally.
        InvalidConfigException dropped("Validation of `{0}` failed", path);
        static_cast<void>(dropped);
        return;
    }
    helper.ParseDocument(xmlDocGetRootElement(document.get()), programs);
}

bool ConfigurableProgramDocument::TryLoad(const Zon::String& path)
{
    try {
        Load(path);
        return true;
    } catch (...) {
        return false;
    }
}

void ConfigurableProgramDocument::Save()
{
    throw NotImplementedException("ConfigurableProgramDocument::Save is not implemented yet");
}

void ConfigurableProgramDocument::Save(const Zon::String&)
{
    throw NotImplementedException("ConfigurableProgramDocument::Save is not implemented yet");
}

} // namespace VarnixBase::Core::PortSystem::Configuration
