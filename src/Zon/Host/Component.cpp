#include "Zon/Host/Component.hpp"

#include <list>
#include <utility>

#include "Zon/IEnumerator.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"

namespace Zon::Host {

using Plc::Commons::Meta::DataInfo;
using Plc::Commons::Meta::DataTag;
using Plc::Commons::Meta::TypeInfo;

namespace {

/// The root variables in order of declaration. Past the end, the current element is the empty
/// record, as every meta data browser answers a name it does not know.
class RootEnumerator : public IEnumerator<const DataInfo&> {
public:
    using Iterator = std::list<DataInfo>::const_iterator;

    RootEnumerator(Iterator begin, Iterator end) : current(begin), end(end) {}

    bool MoveNext() override
    {
        if (beforeFirst) {
            beforeFirst = false;
        } else if (current != end) {
            ++current;
        }
        return current != end;
    }

    const DataInfo& GetCurrent() override { return current != end ? *current : DataInfo::Empty; }

private:
    Iterator current;
    Iterator end;
    bool beforeFirst = true;
};

} // namespace

struct Component::Impl {
    Impl(String name, TypeLibrary& library) : name(std::move(name)), library(library) {}

    String name;
    TypeLibrary& library;
    // A list, so that records keep their place while others are declared or removed.
    std::list<DataInfo> variables;
};

Component::Component(String name, TypeLibrary& library) : impl(std::make_unique<Impl>(std::move(name), library)) {}

Component::~Component() = default;

Component& Component::AddVariable(const String& name, const void* address, const TypeInfo& type)
{
    if (type.dataType == 0) {
        throw System::Commons::ArgumentException("Variable '{0}' of component '{1}' has no type", name, impl->name);
    }
    if (FindVariable(name) != nullptr) {
        throw System::Commons::ArgumentException("Variable '{0}' is already declared in component '{1}'", name,
                                                 impl->name);
    }
    impl->variables.emplace_back(DataTag(name, address, type.dataType, type.typeIdentifier, false),
                                 type.arrayDimensions);
    return *this;
}

bool Component::RemoveVariable(const String& name)
{
    for (auto position = impl->variables.begin(); position != impl->variables.end(); ++position) {
        if (position->name == name) {
            impl->variables.erase(position);
            return true;
        }
    }
    return false;
}

const DataInfo* Component::FindVariable(const String& name) const
{
    for (const auto& variable : impl->variables) {
        if (variable.name == name) {
            return &variable;
        }
    }
    return nullptr;
}

const String& Component::GetComponentName() const
{
    return impl->name;
}

System::Acf::ILibrary& Component::GetLibrary() const
{
    return impl->library;
}

Plc::Commons::Meta::IDataInfoProvider& Component::GetDataInfoProvider(bool /*reload*/)
{
    return *this;
}

IEnumerator<const DataInfo&>::Ptr Component::GetRootEnumerator()
{
    return std::make_shared<RootEnumerator>(impl->variables.cbegin(), impl->variables.cend());
}

TypeLibrary& Component::GetTypeLibrary() const
{
    return impl->library;
}

} // namespace Zon::Host
