// Writes hostile `.prog.config` documents for the simulator's command-line tests, and runs a
// command while measuring it.
//
//   hostile-documents write KIND FILE
//       writes the document KIND to FILE (and, for the external entities, the file it names beside
//       it); `hostile-documents kinds` lists the kinds
//   hostile-documents measure OUT ERR COMMAND [ARGUMENTS...]
//       runs COMMAND with standard output into OUT and standard error into ERR, waits for it and
//       prints one line "status S seconds T cpu C peak_kib K": its exit status (128 + the signal
//       when a signal ended it), its wall-clock time, the processor time it used (user and
//       system) and its peak resident memory as the kernel counts it
//
// The documents are made at test time so that no megabyte file is kept in the repository. Every
// large or secret part of a document carries the word `Hostile` (a file's text `SECRET-...`), so
// that a test can tell whether any of it came back in the simulator's output.
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <string>
#include <sys/resource.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr const char* secretText = "SECRET-d41d8cd98f00b204";

std::string Repeat(const std::string& piece, std::size_t count)
{
    std::string result;
    result.reserve(piece.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        result += piece;
    }
    return result;
}

std::string Wrap(const std::string& programBody, const std::string& type = "Target")
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<ConfigurableProgram>\n  <Program type=\"" + type +
           "\">\n" + programBody + "  </Program>\n</ConfigurableProgram>\n";
}

const std::string plainDocument = Wrap("    <Ports>\n"
                                       "      <Port name=\"in\" type=\"int32\"/>\n"
                                       "      <Port name=\"out\" type=\"float64\"/>\n"
                                       "    </Ports>\n"
                                       "    <Connectors>\n"
                                       "      <Connector startPort=\"in\" endPort=\"out\" type=\"copy\"/>\n"
                                       "    </Connectors>\n");

/// The directory part of a path, with its final slash ("" for a bare name).
std::string DirectoryOf(const std::string& path)
{
    auto slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

std::string Absolute(const std::string& path)
{
    if (!path.empty() && path[0] == '/') {
        return path;
    }
    char buffer[4096];
    if (::getcwd(buffer, sizeof buffer) == nullptr) {
        std::perror("getcwd");
        std::exit(2);
    }
    return std::string(buffer) + "/" + path;
}

void WriteFile(const std::string& path, const std::string& content)
{
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    stream.write(content.data(), static_cast<std::streamsize>(content.size()));
    if (!stream) {
        std::cerr << "hostile-documents: cannot write " << path << '\n';
        std::exit(2);
    }
}

/// The prolog that declares the entity `secret` as a local file beside `file`, which it writes: a
/// secret text that must never reach the output.
std::string SecretProlog(const std::string& file)
{
    std::string secret = Absolute(DirectoryOf(file)) + "hostile-secret.txt";
    WriteFile(secret, std::string(secretText) + "\n");
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<!DOCTYPE ConfigurableProgram [\n"
           "  <!ENTITY secret SYSTEM \"file://" + secret + "\">\n"
           "]>\n";
}

/// The local file's entity referenced in content, where the parser leaves it unexpanded.
std::string ExternalEntityFile(const std::string& file)
{
    std::string document = Wrap("    <Ports>\n"
                                "      <Port name=\"in\" type=\"int32\">&secret;</Port>\n"
                                "      <Port name=\"out\" type=\"float64\"/>\n"
                                "    </Ports>\n"
                                "    <Connectors>\n"
                                "      <Connector startPort=\"in\" endPort=\"out\" type=\"copy\"/>\n"
                                "    </Connectors>\n");
    // The prolog replaces the XML declaration.
    return SecretProlog(file) + document.substr(document.find('\n') + 1);
}

/// The same entity in an attribute value, where the parser must either read it or refuse the
/// document.
std::string ExternalEntityFileInAttribute(const std::string& file)
{
    std::string document = Wrap("    <Ports>\n      <Port name=\"&secret;\" type=\"int32\"/>\n    </Ports>\n");
    return SecretProlog(file) + document.substr(document.find('\n') + 1);
}

/// An external DTD, an external parameter entity and an external entity on the network, at an
/// address reserved for documentation (a connection attempt would hang, so it must not happen).
std::string ExternalEntityNetwork(const std::string&)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<!DOCTYPE ConfigurableProgram SYSTEM \"http://192.0.2.1/Hostile.dtd\" [\n"
           "  <!ENTITY % remote SYSTEM \"http://192.0.2.1/Hostile.ent\">\n"
           "  %remote;\n"
           "  <!ENTITY fetched SYSTEM \"http://192.0.2.1/Hostile.txt\">\n"
           "]>\n"
           "<ConfigurableProgram>&fetched;\n"
           "  <Program type=\"Target\">\n"
           "    <Ports>\n"
           "      <Port name=\"in\" type=\"int32\">&fetched;</Port>\n"
           "      <Port name=\"out\" type=\"float64\"/>\n"
           "    </Ports>\n"
           "    <Connectors>\n"
           "      <Connector startPort=\"in\" endPort=\"out\" type=\"copy\"/>\n"
           "    </Connectors>\n"
           "  </Program>\n"
           "</ConfigurableProgram>\n";
}

/// Ten levels of entities, each ten references to the one below: 10^9 copies of "Hostile" if
/// expanded, in an attribute value (where the parser expands entities) and in content.
std::string BillionLaughs(const std::string&)
{
    std::string declarations = "  <!ENTITY l0 \"Hostile\">\n";
    for (int level = 1; level <= 9; ++level) {
        declarations += "  <!ENTITY l" + std::to_string(level) + " \"" +
                        Repeat("&l" + std::to_string(level - 1) + ";", 10) + "\">\n";
    }
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<!DOCTYPE ConfigurableProgram [\n" + declarations + "]>\n"
           "<ConfigurableProgram>\n"
           "  <Program type=\"Target\" note=\"&l9;\">\n"
           "    <Ports>\n"
           "      <Port name=\"in\" type=\"int32\">&l9;</Port>\n"
           "    </Ports>\n"
           "  </Program>\n"
           "</ConfigurableProgram>\n";
}

/// One entity of 100,000 characters referenced 10,000 times in one attribute value: a gigabyte
/// if every reference were expanded.
std::string QuadraticBlowUp(const std::string&)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<!DOCTYPE ConfigurableProgram [\n"
           "  <!ENTITY big \"" + Repeat("Hostile ", 12500) + "\">\n"
           "]>\n"
           "<ConfigurableProgram>\n"
           "  <Program type=\"Target\" note=\"" + Repeat("&big;", 10000) + "\">\n"
           "    <Ports>\n"
           "      <Port name=\"in\" type=\"int32\"/>\n"
           "    </Ports>\n"
           "  </Program>\n"
           "</ConfigurableProgram>\n";
}

std::string NestedElements(const std::string&)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<ConfigurableProgram>" + Repeat("<Hostile>", 100000) +
           Repeat("</Hostile>", 100000) + "</ConfigurableProgram>\n";
}

std::string TenMebibyteAttribute(const std::string&)
{
    std::string value = Repeat("Hostile ", 10 * 1024 * 1024 / 8);
    return Wrap("    <Ports>\n      <Port name=\"in\" type=\"int32\" note=\"" + value + "\"/>\n    </Ports>\n");
}

/// A document that declares UTF-8 and holds a lone continuation byte, a lead byte without its
/// continuation and bytes that UTF-8 never uses.
std::string NonUtf8(const std::string&)
{
    std::string bad = "Hostile\x80\xC3(\xFE\xFF";
    return Wrap("    <Ports>\n      <Port name=\"" + bad + "\" type=\"int32\"/>\n    </Ports>\n");
}

/// 64 KiB of bytes from a fixed linear congruential sequence.
std::string BinaryGarbage(const std::string&)
{
    std::string bytes(64 * 1024, '\0');
    std::uint32_t state = 0x2545F491U;
    for (char& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

std::string Empty(const std::string&)
{
    return {};
}

std::string BomOnly(const std::string&)
{
    return "\xEF\xBB\xBF";
}

/// A good document cut in the middle of a tag.
std::string Truncated(const std::string&)
{
    return plainDocument.substr(0, plainDocument.find("endPort") + 4);
}

std::string ManyPorts(const std::string&)
{
    std::string ports = "    <Ports>\n";
    for (int i = 0; i < 10000; ++i) {
        ports += "      <Port name=\"p" + std::to_string(i) + "\" type=\"int32\"/>\n";
    }
    ports += "    </Ports>\n";
    return Wrap(ports);
}

/// 5,000 copy connectors from one port to each of 5,000 others, or, as a `chain`, from each port
/// to the next: p0 -> p1 -> ... -> p5000.
std::string ManyConnectors(bool chain)
{
    std::string ports = "    <Ports>\n";
    std::string connectors = "    <Connectors>\n";
    for (int i = 0; i <= 5000; ++i) {
        ports += "      <Port name=\"p" + std::to_string(i) + "\" type=\"int32\"/>\n";
        if (i > 0) {
            connectors += "      <Connector startPort=\"p" + std::to_string(chain ? i - 1 : 0) + "\" endPort=\"p" +
                          std::to_string(i) + "\" type=\"copy\"/>\n";
        }
    }
    return Wrap(ports + "    </Ports>\n" + connectors + "    </Connectors>\n");
}

/// A scale connector from a `uint16` to a `float64` port whose gain parameter has `gain` as its
/// value or reference attribute.
std::string ScaleWithGain(const std::string& gain)
{
    return Wrap("    <Ports>\n"
                "      <Port name=\"in\" type=\"uint16\"/>\n"
                "      <Port name=\"out\" type=\"float64\"/>\n"
                "    </Ports>\n"
                "    <Connectors>\n"
                "      <Connector startPort=\"in\" endPort=\"out\" type=\"scale\">\n"
                "        <Parameter name=\"gain\" " + gain + "/>\n"
                "      </Connector>\n"
                "    </Connectors>\n");
}

/// The gain as a literal of 100,000 digits.
std::string LongLiteral(const std::string&)
{
    return ScaleWithGain("value=\"1" + std::string(99999, '7') + "\"");
}

/// The gain as a reference to a variable path with 10,000 indices.
std::string LongReference(const std::string&)
{
    return ScaleWithGain("ref=\"out" + Repeat("[7]", 10000) + "\"");
}

const std::map<std::string, std::function<std::string(const std::string&)>>& Kinds()
{
    static const std::map<std::string, std::function<std::string(const std::string&)>> kinds = {
        {"external-entity-file", ExternalEntityFile},
        {"external-entity-file-attribute", ExternalEntityFileInAttribute},
        {"external-entity-network", ExternalEntityNetwork},
        {"billion-laughs", BillionLaughs},
        {"quadratic-blow-up", QuadraticBlowUp},
        {"nested-elements", NestedElements},
        {"ten-mebibyte-attribute", TenMebibyteAttribute},
        {"non-utf8", NonUtf8},
        {"binary-garbage", BinaryGarbage},
        {"empty", Empty},
        {"bom-only", BomOnly},
        {"truncated", Truncated},
        {"many-ports", ManyPorts},
        {"many-connectors", [](const std::string&) { return ManyConnectors(false); }},
        {"connector-chain", [](const std::string&) { return ManyConnectors(true); }},
        {"long-literal", LongLiteral},
        {"long-reference", LongReference},
    };
    return kinds;
}

int Write(const std::string& kind, const std::string& file)
{
    auto found = Kinds().find(kind);
    if (found == Kinds().end()) {
        std::cerr << "hostile-documents: no document kind '" << kind << "' (hostile-documents kinds lists them)\n";
        return 2;
    }
    WriteFile(file, found->second(file));
    return 0;
}

int Measure(const char* out, const char* err, char** command)
{
    auto start = std::chrono::steady_clock::now();
    pid_t child = ::fork();
    if (child < 0) {
        std::perror("fork");
        return 2;
    }
    if (child == 0) {
        int outFd = ::open(out, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        int errFd = ::open(err, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        if (outFd < 0 || errFd < 0 || ::dup2(outFd, 1) < 0 || ::dup2(errFd, 2) < 0) {
            _exit(126);
        }
        ::execv(command[0], command);
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    while (::wait4(child, &status, 0, &usage) < 0) {
        if (errno != EINTR) {
            std::perror("wait4");
            return 2;
        }
    }
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    double cpu = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                 static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
    // ru_maxrss is in kibibytes on Linux.
    std::printf("status %d seconds %.3f cpu %.3f peak_kib %ld\n", code, seconds, cpu, usage.ru_maxrss);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    std::string command = argc > 1 ? argv[1] : "";
    if (command == "write" && argc == 4) {
        return Write(argv[2], argv[3]);
    }
    if (command == "kinds" && argc == 2) {
        for (const auto& kind : Kinds()) {
            std::cout << kind.first << '\n';
        }
        return 0;
    }
    if (command == "measure" && argc >= 5) {
        return Measure(argv[2], argv[3], argv + 4);
    }
    std::cerr << "usage: hostile-documents write KIND FILE | kinds | measure OUT ERR COMMAND [ARGUMENTS...]\n";
    return 2;
}
