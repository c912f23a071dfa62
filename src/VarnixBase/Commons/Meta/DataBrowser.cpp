#include "VarnixBase/Commons/Meta/DataBrowser.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <typeinfo>

#include "VarnixBase/Commons/Meta/MetaInfoProvider.hpp"
#include "VarnixBase/Commons/Meta/PathParserState.hpp"
#include "Zon/Enumerator.hpp"
#include "Zon/Plc/Commons/DataType.hpp"
#include "Zon/Plc/Commons/Meta/IMetaComponent.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Commons/IndexOutOfRangeException.hpp"
#include "Zon/System/Commons/InvalidOperationException.hpp"
#include "Zon/System/Commons/NotImplementedException.hpp"
#include "Zon/System/Commons/ParseException.hpp"

namespace VarnixBase::Commons::Meta {

using Zon::String;
using Zon::Plc::Commons::DataTypeBaseMask;
using Zon::Plc::Commons::DataTypeEnum;
using Zon::Plc::Commons::DataTypeIndirectMask;
using Zon::Plc::Commons::DataTypePointerBit;
using Zon::Plc::Commons::Meta::ArrayDimensions;
using Zon::Plc::Commons::Meta::ChildTypeInfo;
using Zon::Plc::Commons::Meta::DataInfo;
using Zon::Plc::Commons::Meta::DataTag;
using Zon::Plc::Commons::Meta::IMetaComponent;
using Zon::Plc::Commons::Meta::TypeIdentifier;
using Zon::Plc::Commons::Meta::TypeInfo;
using Zon::System::Commons::ArgumentException;
using Zon::System::Commons::IndexOutOfRangeException;
using Zon::System::Commons::InvalidOperationException;
using Zon::System::Commons::NotImplementedException;
using Zon::System::Commons::ParseException;
using Zon::System::Commons::Diagnostics::Logging::LoggerBase;
using Zon::System::Commons::Diagnostics::Logging::LogLevel;

namespace {

using DataInfoEnumerator = Zon::IEnumerator<const DataInfo&>;

/// The text of a parse failure. The position of the unexpected character is applied to it as
/// an offset: the message loses its first `position` characters, and is empty from the end of
/// the text on.
constexpr char ParseFailureText[] = "Invalid variable path: Unexpected character at position ";
constexpr std::size_t ParseFailureLength = sizeof(ParseFailureText) - 1;
static_assert(ParseFailureLength == 56);

/// The limit of an element's end, in element sizes from the start of its array.
constexpr unsigned long ElementLimitFactor = 10;

/// The character at `position` of `text`, or the end mark NUL at and past its end: the parser
/// reads the text as if one NUL were appended to it, without copying it for that.
char CharacterAt(std::string_view text, std::size_t position) noexcept
{
    return position < text.size() ? text[position] : '\0';
}

/// Whether trace lines are written at all: their arguments are formed only then.
bool Tracing() noexcept
{
    return LoggerBase::IsEnabled(LogLevel::Trace);
}

[[noreturn]] void ThrowParseFailure(std::size_t position)
{
    throw ParseException(ParseFailureText + std::min(position, ParseFailureLength));
}

/// `address` plus `offset`, counted as a number: walking below a null pointer gives addresses
/// counted from zero, without touching memory.
unsigned char* Advance(unsigned char* address, std::uint64_t offset) noexcept
{
    return reinterpret_cast<unsigned char*>(reinterpret_cast<std::uintptr_t>(address) + offset);
}

/// The pointer stored at `place`, which need not be aligned.
unsigned char* ReadPointer(const unsigned char* place) noexcept
{
    unsigned char* pointer = nullptr;
    std::memcpy(&pointer, place, sizeof(pointer));
    return pointer;
}

const void* Show(const void* address) noexcept
{
    return address;
}

[[noreturn]] void ThrowPointerOutsideMemory(const unsigned char* address, std::uint64_t offset)
{
    throw InvalidOperationException("Attempt to read a pointer member outside of described memory: address={0}+{1}",
                                    Show(address), offset);
}

/// Whether an element ending at `elementOffset + elementSize` lies inside the declared
/// dimensions (a member without dimensions has one element).
bool IsInsideDeclaredArray(const ArrayDimensions& dimensions, unsigned long elementOffset, unsigned long elementSize)
{
    std::uint64_t extent = elementSize;
    for (const auto& dimension : dimensions) {
        if (__builtin_mul_overflow(extent, std::uint64_t{dimension.elementCount}, &extent)) {
            extent = UINT64_MAX;
            break;
        }
    }
    std::uint64_t end = 0;
    if (__builtin_add_overflow(std::uint64_t{elementOffset}, std::uint64_t{elementSize}, &end)) {
        return false;
    }
    return end <= extent;
}

} // namespace

DataBrowser::DataBrowser() = default;

DataBrowser::~DataBrowser() = default;

Zon::IEnumerator<const DataInfo&>::Ptr DataBrowser::GetRoots()
{
    DataInfoEnumerator::Ptr result = std::make_shared<Zon::Enumerator<const DataInfo&>::Empty>();
    for (auto& [name, provider] : providers) {
        auto roots = provider.get().GetRootEnumerator();
        result = std::make_shared<Zon::Enumerator<const DataInfo&>::Composite>(std::move(result), std::move(roots));
    }
    return result;
}

Zon::IEnumerator<const DataInfo&>::Ptr DataBrowser::GetChildren(const DataTag& /*parent*/)
{
    throw NotImplementedException(NotImplementedException::defaultMessage,
                                  "virtual Zon::IEnumerator<const Zon::Plc::Commons::Meta::DataInfo&>::Ptr "
                                  "VarnixBase::Commons::Meta::DataBrowser::GetChildren(const "
                                  "Zon::Plc::Commons::Meta::DataTag&)");
}

Zon::IEnumerator<const DataInfo&>::Ptr DataBrowser::Find(const DataFilter& /*filter*/)
{
    throw NotImplementedException(NotImplementedException::defaultMessage,
                                  "virtual Zon::IEnumerator<const Zon::Plc::Commons::Meta::DataInfo&>::Ptr "
                                  "VarnixBase::Commons::Meta::DataBrowser::Find(const "
                                  "VarnixBase::Commons::Meta::DataFilter&)");
}

DataInfo DataBrowser::GetDataInfo(const String& variablePath)
{
    // Views into the path: the parser reads one NUL past the end as its end mark (CharacterAt).
    const std::string_view path = variablePath.View();
    std::string_view component;
    std::string_view root;
    std::string_view remainder = path;

    const std::size_t slash = path.find('/');
    if (slash != std::string_view::npos) {
        component = path.substr(0, slash);
        const std::size_t rootStart = slash + 1;
        std::size_t rootEnd = rootStart;
        while (CharacterAt(path, rootEnd) != '.' && CharacterAt(path, rootEnd) != '[' &&
               CharacterAt(path, rootEnd) != '\0') {
            ++rootEnd;
        }
        root = path.substr(rootStart, rootEnd - rootStart);
        if (CharacterAt(path, rootEnd) == '.') {
            remainder = path.substr(rootEnd + 1);
        } else if (CharacterAt(path, rootEnd) == '[') {
            remainder = path.substr(rootEnd);
        } else {
            remainder = std::string_view();
        }
    }

    GetLogger().Trace(" browse: component={}, root={}, variable={}", component, root, remainder);

    if (root.empty()) {
        GetLogger().Error("Variable name does not contain component information: {0}", variablePath);
        return DataInfo::Empty;
    }

    auto found = providers.find(component);
    if (found == providers.end()) {
        GetLogger().Error("Component is not available: {0}", component);
        return DataInfo::Empty;
    }

    auto roots = found->second.get().GetRootEnumerator();
    while (roots->MoveNext()) {
        // The root never holds a NUL, so this is the comparison with the root's text up to its end.
        if (roots->GetCurrent().name.View() == root) {
            break;
        }
    }
    // Found or not, the record is what the enumerator now gives: for a root that is not there,
    // the answer of an exhausted enumerator (the platform's enumerators throw).
    const DataInfo& current = roots->GetCurrent();
    if (remainder.empty()) {
        return current;
    }
    return Walk(current, remainder);
}

TypeInfo DataBrowser::GetTypeInfo(const String& variablePath)
{
    DataInfo info = GetDataInfo(variablePath);
    return MetaInfoProvider::GetInstance().GetTypeBrowser().GetTypeInfo(info.typeIdentifier);
}

DataInfo DataBrowser::GetDataInfo(const DataInfo& parent, const std::string& remainder)
{
    return Walk(parent, remainder);
}

DataInfo DataBrowser::Walk(const DataInfo& parent, std::string_view remainder)
{
    auto* variableAddress = static_cast<unsigned char*>(parent.address);
    if ((parent.dataType & DataTypeIndirectMask) != 0) {
        if (variableAddress == nullptr) {
            throw InvalidOperationException(
                "Attempt to dereference variableAddress == nullptr for DataTag: name={}, dataType={}", parent.name,
                parent.dataType);
        }
        variableAddress = ReadPointer(variableAddress);
    }

    // Whether trace lines are written, asked once for the whole walk: nothing in it sets the level.
    const bool tracing = Tracing();
    if (tracing) {
        GetLogger().Trace("  browse: path={0}, startAddress={1}", remainder, Show(variableAddress));
    }

    // Whether the memory at `variableAddress` (and at `memberAddress` plus `elementOffset`) is
    // known to hold the object that the walk describes there. Pointers are read only from such
    // memory: below a null pointer, an unknown member or an element past its array's declared
    // dimensions, addresses are still counted, but nothing is read.
    bool variableKnown = variableAddress != nullptr;
    bool memberKnown = variableKnown;
    bool elementKnown = variableKnown;

    // The remainder is read up to and including one NUL past its end, the end mark.
    const std::size_t textSize = remainder.size() + 1;
    // The current member's record: kept by its type library (or in `childStorage` when the
    // library answers by value only), read in place and never copied.
    ChildTypeInfo childStorage;
    const ChildTypeInfo* child = &ChildTypeInfo::Empty;
    unsigned char* memberAddress = variableAddress;
    unsigned long elementOffset = 0;
    std::string memberName;
    std::size_t memberStart = 0;
    std::size_t indexStart = 0;
    std::vector<unsigned long> indices;
    PathParserState state = PathParserState::ParseMembers;

    // The result so far, as its parts: its name is `memberName`, and the record is formed once, at
    // the end. Every step replaces all of them, and every walk that ends without an exception
    // has made at least one member step (the end mark in `ParseMembers` makes one, and the other
    // states are reached only after one).
    const TypeIdentifier* resultType = &parent.typeIdentifier;
    Zon::Plc::Commons::DataType resultDataType = parent.dataType;
    unsigned char* resultAddress = variableAddress;

    // The one type browser, reached once for the whole walk: it lives as long as this browser.
    auto& typeBrowser = MetaInfoProvider::GetInstance().GetTypeBrowser();

    auto memberStep = [&](std::size_t position, char end) {
        memberName.assign(remainder.substr(memberStart, position - memberStart));
        const bool endsMember = end == '.' || end == '\0';
        if (endsMember && tracing) {
            // Asked for the type browser's trace line only; without tracing it would show nothing.
            (void)typeBrowser.GetChildren(*resultType);
        }
        child = &typeBrowser.FindChildInfo(*resultType, memberName, childStorage);
        const bool isPointer = (child->dataType & DataTypePointerBit) != 0;
        if (isPointer && !variableKnown) {
            ThrowPointerOutsideMemory(variableAddress, child->offset);
        }
        memberAddress = ChildMemberAddress(variableAddress, *child, tracing);
        memberKnown = child->dataType != 0 && (isPointer ? memberAddress != nullptr : variableKnown);
        if (endsMember) {
            variableAddress = memberAddress;
            variableKnown = memberKnown;
        }
        resultType = &child->typeIdentifier;
        resultDataType = child->dataType;
        resultAddress = memberAddress;
        if (tracing) {
            GetLogger().Trace("  browse: name={0}, address: {1}", memberName, Show(memberAddress));
            GetLogger().Trace("   child: type={}, basetype={}, offset={}", child->typeIdentifier.GetFullName(),
                              DataTypeEnum(child->dataType & DataTypeBaseMask), child->offset);
        }
    };

    auto indexStep = [&](std::size_t position) {
        const std::string_view digits = remainder.substr(indexStart, position - indexStart);
        const long index = std::stol(std::string(digits), nullptr, 10);
        indices.push_back(static_cast<unsigned long>(index));
        memberName += '[';
        memberName += digits;
        memberName += ']';
        const unsigned long elementSize = child->size != 0 ? child->size : DataTypeEnum(child->dataType).GetSize();
        elementOffset = CalculateArrayElementOffset(indices, child->GetArrayDimensions(), elementSize);
        if (tracing) {
            GetLogger().Trace("  browse: name={}, address={}+{}", memberName, Show(memberAddress), elementOffset);
        }
        if (child->dataType == 0) {
            GetLogger().Error("Child type info is empty");
            throw ArgumentException("Invalid variable path: Child type info is empty");
        }
        // Behind a pointer member lies exactly what it declares (one value, or its dimensions'
        // elements), so an element past that end is refused as one past the limit is.
        const bool pastPointedTo = (child->dataType & DataTypePointerBit) != 0 &&
                                   !IsInsideDeclaredArray(child->GetArrayDimensions(), elementOffset, elementSize);
        if (elementOffset + elementSize > ElementLimitFactor * elementSize || pastPointedTo) {
            throw IndexOutOfRangeException("Port {0}/{1} out of range", parent.name,
                                           String(remainder.substr(0, digits.size() + 1)));
        }
        elementKnown = memberKnown && IsInsideDeclaredArray(child->GetArrayDimensions(), elementOffset, elementSize);
        // The element keeps the type that the member step set.
        resultDataType = child->dataType;
        resultAddress = Advance(memberAddress, elementOffset);
    };

    bool finished = false;
    for (std::size_t position = 0; !finished && position < textSize; ++position) {
        const char character = CharacterAt(remainder, position);
        switch (state) {
        case PathParserState::ParseMembers:
            if (character == '.') {
                memberStep(position, character);
                memberStart = position + 1;
            } else if (character == '\0') {
                memberStep(position, character);
                finished = true;
            } else if (character == '[') {
                memberStep(position, character);
                indexStart = position + 1;
                state = PathParserState::ParseIndex;
            } else if (character == ']') {
                ThrowParseFailure(memberStart);
            }
            break;
        case PathParserState::ParseIndex:
            if (character >= '0' && character <= '9') {
                // A digit of the index.
            } else if (character == ']') {
                indexStep(position);
                state = PathParserState::ParseChildSwitch;
            } else {
                ThrowParseFailure(indexStart);
            }
            break;
        case PathParserState::ParseChildSwitch:
            if (character == '[') {
                indexStart = position + 1;
                state = PathParserState::ParseIndex;
            } else if (character == '.') {
                variableAddress = Advance(memberAddress, elementOffset);
                variableKnown = elementKnown;
                elementOffset = 0;
                indices.clear();
                memberStart = position + 1;
                state = PathParserState::ParseMembers;
            } else if (character == '\0') {
                finished = true;
            } else {
                ThrowParseFailure(position);
            }
            break;
        }
    }

    // What `DataInfo(DataTag(memberName, resultAddress, resultDataType, *resultType, false))` gives.
    DataInfo result;
    result.name = String(std::move(memberName));
    result.dataType = resultDataType;
    result.typeIdentifier = *resultType;
    result.address = resultAddress;
    GetLogger().Debug("{0}.{1}: address={2}", parent.name, remainder, Show(result.address));
    return result;
}

void DataBrowser::Add(Zon::System::Acf::IComponent& component)
{
    const String& name = component.GetComponentName();
    if (providers.find(name) != providers.end()) {
        return;
    }
    IMetaComponent* metaComponent = nullptr;
    try {
        metaComponent = &dynamic_cast<IMetaComponent&>(component);
    } catch (const std::bad_cast&) {
        GetLogger().Warning("Unable to register component. Needs to be derived from IComponent");
        return;
    }
    GetLogger().Info("Add data info provider for {}", name);
    providers.emplace(name, std::ref(metaComponent->GetDataInfoProvider(false)));
}

void DataBrowser::Remove(Zon::System::Acf::IComponent& component)
{
    const String& name = component.GetComponentName();
    auto found = providers.find(name);
    if (found == providers.end()) {
        return;
    }
    GetLogger().Debug("Remove component {0}", name);
    providers.erase(found);
}

unsigned long DataBrowser::CalculateArrayElementOffset(const std::vector<unsigned long>& indices,
                                                       const ArrayDimensions& dimensions, unsigned long elementSize)
{
    unsigned long offset = 0;
    for (std::size_t position = 0; position < indices.size(); ++position) {
        unsigned long term = indices[position];
        for (std::size_t later = position + 1; later < dimensions.size(); ++later) {
            term *= dimensions[later].elementCount;
        }
        offset += term * elementSize;
    }
    return offset;
}

unsigned char* DataBrowser::CalculateChildMemberAddress(unsigned char* address, const ChildTypeInfo& child)
{
    return ChildMemberAddress(address, child, Tracing());
}

unsigned char* DataBrowser::ChildMemberAddress(unsigned char* address, const ChildTypeInfo& child, bool tracing)
{
    if ((child.dataType & DataTypePointerBit) != 0) {
        if (address == nullptr) {
            ThrowPointerOutsideMemory(address, child.offset);
        }
        unsigned char* pointer = ReadPointer(Advance(address, child.offset));
        if (tracing) {
            GetLogger().Trace("   browse: pointer={}+{}, address={}", Show(address), child.offset, Show(pointer));
        }
        return pointer;
    }
    if (tracing) {
        GetLogger().Trace("   browse: address={}+{}", Show(address), child.offset);
    }
    return Advance(address, child.offset);
}

} // namespace VarnixBase::Commons::Meta
