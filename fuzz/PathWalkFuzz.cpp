// Fuzz target: every input is a variable path, resolved through the data browser against a fixed
// host component "Fuzz" with one root variable "Root" (structures, a two-dimensional array, an
// array of structures and pointer members).
//
// The path walk answers a malformed path with an empty record or one of its exceptions: the
// accepted outcomes below. Anything else escaping, and anything the sanitizers report, is a
// finding. The walk reads only the pointers it follows; every pointer member of the fixture points
// at a real `Inner` (the chain through `next` ends in itself), and every array has room for the ten
// elements the walk's bound check lets through, so no input can lead the walk out of the fixture's
// memory without the walk noticing.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

#include "VarnixBase/Commons/Meta/MetaInfoProvider.hpp"
#include "Zon/Exception.hpp"
#include "Zon/Host/Component.hpp"
#include "Zon/Host/Runtime.hpp"
#include "Zon/Host/TypeLibrary.hpp"

namespace {

struct Inner {
    std::int32_t x = 0;
    Inner* next = nullptr;
    unsigned char bytes[10] = {};
};

struct Root {
    std::int16_t a = 0;
    double b[2][3] = {};
    Inner* p = nullptr;
    Inner s[4];
};

/// The root variable followed by room for ten roots' worth of elements, so that an element the
/// bound check lets through still lies in this object.
struct Memory {
    Root root;
    unsigned char padding[10 * sizeof(Root)] = {};
    Inner pointed;
};

struct Fixture {
    Fixture()
    {
        Zon::Host::RuntimeOptions options;
        options.consoleLevel.reset();
        options.captureLevel.reset();
        runtime = std::make_unique<Zon::Host::Runtime>(options);
        library = std::make_unique<Zon::Host::TypeLibrary>("Fuzz", "Fuzz");
        library->AddStruct<Inner>("Inner")
            .Member("x", &Inner::x)
            .Pointer("next", &Inner::next)
            .Member("bytes", &Inner::bytes);
        library->AddStruct<Root>("Root")
            .Member("a", &Root::a)
            .Member("b", &Root::b)
            .Pointer("p", &Root::p)
            .Member("s", &Root::s);
        memory = std::make_unique<Memory>();
        memory->pointed.next = &memory->pointed;
        memory->root.p = &memory->pointed;
        for (auto& element : memory->root.s) {
            element.next = &memory->pointed;
        }
        component = std::make_unique<Zon::Host::Component>("Fuzz", *library);
        component->AddVariable("Root", memory->root);
        VarnixBase::Commons::Meta::MetaInfoProvider::GetInstance().Add(*component);
    }

    std::unique_ptr<Zon::Host::Runtime> runtime;
    std::unique_ptr<Zon::Host::TypeLibrary> library;
    std::unique_ptr<Memory> memory;
    std::unique_ptr<Zon::Host::Component> component;
};

Fixture& TheFixture()
{
    // Lives to the end of the process, like the meta data it registers with.
    static Fixture* fixture = new Fixture();
    return *fixture;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    TheFixture();
    Zon::String path(reinterpret_cast<const char*>(data), size);
    try {
        auto info = VarnixBase::Commons::Meta::MetaInfoProvider::GetInstance().GetDataBrowser().GetDataInfo(path);
        (void)info;
    } catch (const Zon::Exception&) {
        // ParseException, ArgumentException, IndexOutOfRangeException, InvalidOperationException
        // and the enumerator's own failure for an unknown root: the walk's defined answers.
    } catch (const std::invalid_argument&) {
        // "stol": an index without digits.
    } catch (const std::out_of_range&) {
        // "stol": an index beyond 64 bits.
    }
    return 0;
}
