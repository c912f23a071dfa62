// Bad and oversized input for the `.prog.config` loader: each gets its defined outcome (the
// document's exception or the parsed result), within bounded memory, without touching the network.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <libxml/xmlmemory.h>

#include "VarnixBase/Core/PortSystem/Configuration/ConfigurableProgramDocument.hpp"
#include "Zon/System/Commons/InvalidConfigException.hpp"
#include "Zon/System/Commons/Io/NotExistException.hpp"
#include "support/HostFixture.hpp"

using namespace VarnixBase::Core::PortSystem::Configuration;
using Zon::System::Commons::InvalidConfigException;
using Zon::System::Commons::Io::NotExistException;

namespace {

constexpr std::size_t MiB = 1024 * 1024;

/// Measures the heap that libxml2 holds while the meter lives: its allocator is routed through
/// counting functions (which hand on to malloc and free, so blocks may cross the meter's lifetime
/// in both directions), and the highest total of the blocks allocated meanwhile is kept.
class XmlHeapMeter {
public:
    XmlHeapMeter()
    {
        xmlMemGet(&previousFree, &previousMalloc, &previousRealloc, &previousStrdup);
        current = 0;
        peak = 0;
        xmlMemSetup(&Free, &Malloc, &Realloc, &Strdup);
    }
    ~XmlHeapMeter() { xmlMemSetup(previousFree, previousMalloc, previousRealloc, previousStrdup); }
    XmlHeapMeter(const XmlHeapMeter&) = delete;
    XmlHeapMeter& operator=(const XmlHeapMeter&) = delete;

    /// The most bytes that libxml2 held at one time, counted from the meter's start.
    std::size_t Peak() const { return static_cast<std::size_t>(std::max<long long>(peak, 0)); }

private:
    static void Add(long long bytes)
    {
        current += bytes;
        peak = std::max(peak, current);
    }
    static void* Malloc(std::size_t size)
    {
        void* block = std::malloc(size);
        if (block != nullptr) {
            Add(static_cast<long long>(::malloc_usable_size(block)));
        }
        return block;
    }
    static void* Realloc(void* block, std::size_t size)
    {
        long long before = block != nullptr ? static_cast<long long>(::malloc_usable_size(block)) : 0;
        void* moved = std::realloc(block, size);
        if (moved != nullptr) {
            Add(static_cast<long long>(::malloc_usable_size(moved)) - before);
        } else if (size == 0) {
            Add(-before);
        }
        return moved;
    }
    static void Free(void* block)
    {
        if (block != nullptr) {
            Add(-static_cast<long long>(::malloc_usable_size(block)));
        }
        std::free(block);
    }
    static char* Strdup(const char* text)
    {
        std::size_t size = std::strlen(text) + 1;
        auto* copy = static_cast<char*>(Malloc(size));
        if (copy != nullptr) {
            std::memcpy(copy, text, size);
        }
        return copy;
    }

    static inline long long current = 0;
    static inline long long peak = 0;
    xmlFreeFunc previousFree = nullptr;
    xmlMallocFunc previousMalloc = nullptr;
    xmlReallocFunc previousRealloc = nullptr;
    xmlStrdupFunc previousStrdup = nullptr;
};

class DocumentRobustnessTest : public VarnixTest::HostTest {
protected:
    static constexpr const char* path = "/opt/varnix/data/VarnixBase/Core/PortSystem/Bad.prog.config";

    void SetUp() override
    {
        HostTest::SetUp();
        doc.emplace();
    }
    void TearDown() override
    {
        doc.reset();
        HostTest::TearDown();
    }

    /// Loads a document whose only program has the type "Kept", so that a failing load can be
    /// seen to leave it in place.
    void LoadKeptProgram()
    {
        WritePlatformFile("/opt/varnix/data/Kept.prog.config", R"(<C><Program type="Kept"/></C>)");
        doc->Load("/opt/varnix/data/Kept.prog.config");
        ASSERT_EQ(doc->GetPrograms().size(), 1u);
    }

    void ExpectKeptProgram()
    {
        ASSERT_EQ(doc->GetPrograms().size(), 1u);
        EXPECT_EQ(doc->GetPrograms()[0].type, "Kept");
    }

    /// Loads the platform path and expects the "Invalid XML" failure, naming that path.
    void ExpectInvalidXml(const std::string& platformPath = path)
    {
        try {
            doc->Load(platformPath);
            FAIL() << "Load did not throw";
        } catch (const InvalidConfigException& e) {
            EXPECT_EQ(e.GetMessage(), "Invalid XML `" + platformPath + "`");
        }
    }

    /// Loads the platform path and expects the "not found" failure, naming that path.
    void ExpectNotFound(const std::string& platformPath)
    {
        try {
            doc->Load(platformPath);
            FAIL() << "Load did not throw";
        } catch (const NotExistException& e) {
            EXPECT_EQ(e.GetMessage(), "File `" + platformPath + "` not found.");
        }
    }

    std::optional<ConfigurableProgramDocument> doc;
};

/// A "billion laughs" entity: e10 expands to 10^10 times "lol" (30 GB).
std::string LaughsDeclarations()
{
    std::string xml = "<!ENTITY e0 \"lol\">\n";
    for (int i = 1; i <= 10; ++i) {
        xml += "<!ENTITY e" + std::to_string(i) + " \"";
        for (int j = 0; j < 10; ++j) {
            xml += "&e" + std::to_string(i - 1) + ";";
        }
        xml += "\">\n";
    }
    return xml;
}

} // namespace

// --- encodings --------------------------------------------------------------------------------

TEST_F(DocumentRobustnessTest, OnlyAByteOrderMarkIsInvalidXmlAndKeepsThePrograms)
{
    LoadKeptProgram();
    WritePlatformFile(path, "\xEF\xBB\xBF");
    ExpectInvalidXml();
    ExpectKeptProgram();
}

TEST_F(DocumentRobustnessTest, OnlyWhiteSpaceIsInvalidXml)
{
    WritePlatformFile(path, " \n\t\r\n ");
    ExpectInvalidXml();
    EXPECT_TRUE(doc->GetPrograms().empty());
}

TEST_F(DocumentRobustnessTest, AByteOrderMarkBeforeTheRootIsPassedOver)
{
    WritePlatformFile(path, "\xEF\xBB\xBF<C><Program type=\"Bom\"/></C>");
    doc->Load(path);
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    EXPECT_EQ(doc->GetPrograms()[0].type, "Bom");
}

TEST_F(DocumentRobustnessTest, BytesThatAreNotUtf8AreInvalidXmlAndKeepThePrograms)
{
    LoadKeptProgram();
    WritePlatformFile(path, "<C><Program type=\"\xFF\xFE\"/></C>");
    ExpectInvalidXml();
    ExpectKeptProgram();
}

TEST_F(DocumentRobustnessTest, AUtf8SequenceCutShortIsInvalidXml)
{
    WritePlatformFile(path, "<C><Program type=\"Caf\xC3\"/></C>");
    ExpectInvalidXml();
}

TEST_F(DocumentRobustnessTest, ANulByteInTheDocumentIsInvalidXml)
{
    static constexpr char text[] = "<C><Program type=\"A\0B\"/></C>";
    WritePlatformFile(path, std::string(text, sizeof(text) - 1));
    ExpectInvalidXml();
}

TEST_F(DocumentRobustnessTest, LatinOneDeclaredByTheDocumentIsReadAsUtf8)
{
    WritePlatformFile(path, "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><C><Program type=\"Caf\xE9\"/></C>");
    doc->Load(path);
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    EXPECT_EQ(doc->GetPrograms()[0].type, "Caf\xC3\xA9");
}

TEST_F(DocumentRobustnessTest, Utf16WithAByteOrderMarkIsReadAsUtf8)
{
    std::string utf16 = "\xFF\xFE";
    for (char unit : std::string("<C><Program type=\"Caf\xE9\"/></C>")) {
        utf16 += unit;
        utf16 += '\0';
    }
    WritePlatformFile(path, utf16);
    doc->Load(path);
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    EXPECT_EQ(doc->GetPrograms()[0].type, "Caf\xC3\xA9");
}

// --- entities and external resources -----------------------------------------------------------

TEST_F(DocumentRobustnessTest, ExternalParameterEntityOfALocalFileIsNotRead)
{
    // Were the file read, its declaration would give the program a default type.
    WritePlatformFile("/secret.dtd", "<!ATTLIST Program type CDATA \"TOP-SECRET\">");
    WritePlatformFile(path, R"(<?xml version="1.0"?>
<!DOCTYPE C [<!ENTITY % ext SYSTEM "file://)" + MachinePath("/secret.dtd").string() + R"("> %ext;]>
<C><Program/></C>)");
    doc->Load(path);
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    EXPECT_TRUE(doc->GetPrograms()[0].type.IsEmpty());
}

TEST_F(DocumentRobustnessTest, EntityDeclaredOnlyInAnUnreadLocalFileMakesTheDocumentInvalid)
{
    WritePlatformFile("/secret.dtd", "<!ENTITY inner \"TOP-SECRET\">");
    WritePlatformFile(path, R"(<?xml version="1.0"?>
<!DOCTYPE C [<!ENTITY % ext SYSTEM ")" + MachinePath("/secret.dtd").string() + R"("> %ext;]>
<C><Program type="A"><Ports><Port name="&inner;"/></Ports></Program></C>)");
    LoadKeptProgram();
    ExpectInvalidXml();
    ExpectKeptProgram();
}

TEST_F(DocumentRobustnessTest, ExternalResourcesOnTheNetworkAreNotFetched)
{
    // 192.0.2.1 is an address reserved for documentation: a connection attempt would hang until
    // the test's time limit, or fail; neither happens, the load does not try.
    WritePlatformFile(path, R"(<?xml version="1.0"?>
<!DOCTYPE C SYSTEM "http://192.0.2.1/defaults.dtd" [<!ENTITY net SYSTEM "http://192.0.2.1/ports.xml">]>
<C><Program type="A"><Ports>&net;<Port name="p"/></Ports></Program></C>)");
    doc->Load(path);
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    EXPECT_EQ(doc->GetPrograms()[0].type, "A");
    ASSERT_EQ(doc->GetPrograms()[0].ports.size(), 1u);
    EXPECT_EQ(doc->GetPrograms()[0].ports[0].name, "p");
}

TEST_F(DocumentRobustnessTest, NestedEntityExpansionInContentIsRefusedInBoundedMemory)
{
    WritePlatformFile(path, "<?xml version=\"1.0\"?>\n<!DOCTYPE C [\n" + LaughsDeclarations() +
                                "]>\n<C><Program type=\"A\"><Ports>&e10;</Ports></Program></C>");
    LoadKeptProgram();
    XmlHeapMeter meter;
    ExpectInvalidXml();
    EXPECT_LT(meter.Peak(), 16 * MiB);
    ExpectKeptProgram();
}

TEST_F(DocumentRobustnessTest, NestedEntityExpansionInAnAttributeStaysInBoundedMemory)
{
    WritePlatformFile(path, "<?xml version=\"1.0\"?>\n<!DOCTYPE C [\n" + LaughsDeclarations() +
                                "]>\n<C><Program type=\"&e10;\"/></C>");
    XmlHeapMeter meter;
    ExpectInvalidXml();
    EXPECT_LT(meter.Peak(), 16 * MiB);
}

TEST_F(DocumentRobustnessTest, ManyReferencesToALargeEntityAreNotExpanded)
{
    // 10,000 references to an entity of 100,000 characters would make a gigabyte. An attribute
    // value is the text of its first node, which here is the first reference: the entity's text
    // once.
    std::string references;
    for (int i = 0; i < 10000; ++i) {
        references += "&big;";
    }
    WritePlatformFile(path, "<?xml version=\"1.0\"?>\n<!DOCTYPE C [<!ENTITY big \"" + std::string(100000, 'x') +
                                "\">]>\n<C><Program type=\"" + references + "\"/></C>");
    XmlHeapMeter meter;
    doc->Load(path);
    EXPECT_LT(meter.Peak(), 64 * MiB);
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    EXPECT_EQ(doc->GetPrograms()[0].type, std::string(100000, 'x'));
}

// --- size -------------------------------------------------------------------------------------

TEST_F(DocumentRobustnessTest, HundredThousandNestedElementsAreInvalidXmlInBoundedMemory)
{
    // The parser refuses elements nested deeper than 256 levels.
    std::string xml = "<C><Program type=\"Deep\">";
    for (int i = 0; i < 100000; ++i) {
        xml += "<x>";
    }
    for (int i = 0; i < 100000; ++i) {
        xml += "</x>";
    }
    WritePlatformFile(path, xml + "</Program></C>");
    LoadKeptProgram();
    XmlHeapMeter meter;
    ExpectInvalidXml();
    EXPECT_LT(meter.Peak(), 64 * MiB);
    ExpectKeptProgram();
}

TEST_F(DocumentRobustnessTest, DeepUnknownElementsWithinTheParsersLimitAreSkippedWithTheirSubtree)
{
    std::string xml = "<C><Program type=\"Deep\">";
    for (int i = 0; i < 250; ++i) {
        xml += "<x>";
    }
    xml += "<Ports><Port name=\"buried\"/></Ports>";
    for (int i = 0; i < 250; ++i) {
        xml += "</x>";
    }
    WritePlatformFile(path, xml + "<Ports><Port name=\"p\"/></Ports></Program></C>");
    doc->Load(path);
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    ASSERT_EQ(doc->GetPrograms()[0].ports.size(), 1u);
    EXPECT_EQ(doc->GetPrograms()[0].ports[0].name, "p");
}

TEST_F(DocumentRobustnessTest, AttributeValueOfTenMebibytesIsInvalidXmlInBoundedMemory)
{
    // The parser refuses an attribute value of more than 10,000,000 characters.
    WritePlatformFile(path, "<C><Program type=\"P\"><Ports><Port name=\"" + std::string(10 * MiB, 'v') +
                                "\"/></Ports></Program></C>");
    LoadKeptProgram();
    XmlHeapMeter meter;
    ExpectInvalidXml();
    EXPECT_LT(meter.Peak(), 128 * MiB);
    ExpectKeptProgram();
}

TEST_F(DocumentRobustnessTest, AttributeValueBelowTheParsersLimitIsKeptWhole)
{
    std::string name(9 * MiB, 'v');
    name.back() = 'w';
    WritePlatformFile(path, "<C><Program type=\"P\"><Ports><Port name=\"" + name + "\"/></Ports></Program></C>");
    XmlHeapMeter meter;
    doc->Load(path);
    // The parser held the value at least once: the meter sees what libxml2 allocates.
    EXPECT_GT(meter.Peak(), 9 * MiB);
    EXPECT_LT(meter.Peak(), 128 * MiB);
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    ASSERT_EQ(doc->GetPrograms()[0].ports.size(), 1u);
    EXPECT_TRUE(doc->GetPrograms()[0].ports[0].name == name);
}

TEST_F(DocumentRobustnessTest, TenThousandPortsAreReadInDocumentOrder)
{
    std::string xml = "<C><Program type=\"Many\"><Ports>";
    for (int i = 0; i < 10000; ++i) {
        std::string n = std::to_string(i);
        xml += "<Port name=\"p" + n + "\" type=\"int16\"><Parameter name=\"v\" value=\"" + n +
               "\"/><QualityProvider ref=\"q" + n + "\"/></Port>";
    }
    WritePlatformFile(path, xml + "</Ports></Program></C>");
    XmlHeapMeter meter;
    doc->Load(path);
    EXPECT_LT(meter.Peak(), 64 * MiB);
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    const auto& ports = doc->GetPrograms()[0].ports;
    ASSERT_EQ(ports.size(), 10000u);
    for (int i = 0; i < 10000; ++i) {
        std::string n = std::to_string(i);
        ASSERT_EQ(ports[i].name, "p" + n);
        ASSERT_EQ(ports[i].parameters.size(), 1u);
        ASSERT_EQ(ports[i].parameters[0].value, n);
        ASSERT_EQ(ports[i].qualityProviders.size(), 1u);
        ASSERT_EQ(ports[i].qualityProviders[0].ref, "q" + n);
    }
    EXPECT_TRUE(Capture().GetEntries().empty());
}

// --- what stands at the path ------------------------------------------------------------------

TEST_F(DocumentRobustnessTest, DirectoryInsteadOfAFileKeepsTheProgramsAndTryLoadAnswersFalse)
{
    LoadKeptProgram();
    std::filesystem::create_directories(MachinePath(path));
    auto before = Capture().Size();
    EXPECT_FALSE(doc->TryLoad(path));
    EXPECT_EQ(Capture().Size(), before);
    ExpectKeptProgram();
}

TEST_F(DocumentRobustnessTest, NamedPipeInsteadOfAFileIsNoFileAndDoesNotBlock)
{
    // Opening a pipe without a writer would wait for ever; the load does not open it.
    std::filesystem::create_directories(MachinePath(path).parent_path());
    ASSERT_EQ(::mkfifo(MachinePath(path).c_str(), 0600), 0);
    LoadKeptProgram();
    ExpectNotFound(path);
    ExpectKeptProgram();
}

TEST_F(DocumentRobustnessTest, SymbolicLinkToADocumentIsFollowed)
{
    WritePlatformFile("/opt/varnix/data/Target.prog.config", R"(<C><Program type="Linked"/></C>)");
    std::filesystem::create_directories(MachinePath(path).parent_path());
    std::filesystem::create_symlink(MachinePath("/opt/varnix/data/Target.prog.config"), MachinePath(path));
    doc->Load(path);
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    EXPECT_EQ(doc->GetPrograms()[0].type, "Linked");
}

TEST_F(DocumentRobustnessTest, SymbolicLinkToADirectoryOrToNothingIsNoFile)
{
    std::filesystem::create_directories(MachinePath("/opt/varnix/data/dir"));
    std::filesystem::create_directories(MachinePath(path).parent_path());
    std::filesystem::create_directory_symlink(MachinePath("/opt/varnix/data/dir"), MachinePath(path));
    ExpectNotFound(path);
    std::filesystem::create_symlink(MachinePath("/opt/varnix/data/gone"), MachinePath("/opt/varnix/data/dangling"));
    ExpectNotFound("/opt/varnix/data/dangling");
}

TEST_F(DocumentRobustnessTest, FileWithoutReadPermissionIsInvalidXmlUnlessPermissionsDoNotApply)
{
    WritePlatformFile(path, R"(<C><Program type="Unreadable"/></C>)");
    std::filesystem::permissions(MachinePath(path), std::filesystem::perms::none);
    LoadKeptProgram();
    // A privileged process (such as root) reads the file whatever its mode says; whether this
    // one can is found out by trying.
    int descriptor = ::open(MachinePath(path).c_str(), O_RDONLY);
    bool permissionsApply = descriptor < 0;
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    if (permissionsApply) {
        // The file exists, so it is not "not found"; the parser cannot read it.
        ExpectInvalidXml();
        ExpectKeptProgram();
    } else {
        // The mode is no obstacle here: the file loads like any other.
        doc->Load(path);
        ASSERT_EQ(doc->GetPrograms().size(), 1u);
        EXPECT_EQ(doc->GetPrograms()[0].type, "Unreadable");
    }
    std::filesystem::permissions(MachinePath(path), std::filesystem::perms::owner_all);
}
