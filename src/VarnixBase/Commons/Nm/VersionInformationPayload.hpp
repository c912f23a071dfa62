#pragma once

#include <memory>
#include <string>

#include "Zon/BasicVersion.hpp"
#include "Zon/System/Nm/SpecializedPayload.hpp"

namespace VarnixBase::Commons::Nm {

/// A version as a notification payload: four 16-bit numbers and a state text, held as fields of
/// the platform's generic payload so that any receiver can read and print it without this class.
///
/// Fields in payload order, which numbers them in the format string
/// "Version: {0}.{1}.{2}.{3}-{4}": Major, Minor, Patch, Build (each declared `Uint16`) and State
/// (declared `String`).
///
/// How the state travels: it is handed to the generic payload as a `std::string`, in a variant
/// tagged `StdString` that holds the text zero-terminated. The state field is declared `String`,
/// and the generic payload stores such text under the field's declared tag, so the field holds a
/// `String` variant and `GetVersionState` reads back what was set. A state longer than 511
/// characters does not fit the variant and gives `ArgumentException` "Cannot copy string:
/// argument string length {} exceeds MaxStringSize {}".
///
/// Failures of the getters: a number field whose tag is neither `Uint16` nor `None` gives
/// `InvalidCastException` "Cannot copy value to argument: RscVariant contains data type {0} but arg
/// is of type {1}" (the field's tag, `Uint16`); a state field whose tag is none of `String`,
/// `AnsiString`, `Utf8String`, `None` gives `InvalidCastException` "Cannot convert to string:
/// RscVariant is of type {0}".
class VersionInformationPayload : public Zon::System::Nm::SpecializedPayload<VersionInformationPayload> {
public:
    /// Major, Minor, Patch, Build, State.
    VersionInformationPayload(const unsigned short& major, const unsigned short& minor, const unsigned short& patch,
                              const unsigned short& build, const std::string& state);
    /// Major, Minor and Patch widened from 8 bits, Build cut to its low 16 bits, State copied.
    /// The version's name is not carried over.
    explicit VersionInformationPayload(const Zon::BasicVersion& version);
    ~VersionInformationPayload() override;
    VersionInformationPayload(const VersionInformationPayload& other);
    VersionInformationPayload& operator=(const VersionInformationPayload& other);

    /// The number in its field; 0 when the field holds no value.
    unsigned short GetVersionMajor() const;
    unsigned short GetVersionMinor() const;
    unsigned short GetVersionPatch() const;
    unsigned short GetVersionBuild() const;
    /// The state text; empty when the field holds no value.
    std::string GetVersionState() const;

private:
    struct Impl;
    unsigned short GetNumber(std::size_t index) const;

    std::unique_ptr<Impl> impl;
};

} // namespace VarnixBase::Commons::Nm
