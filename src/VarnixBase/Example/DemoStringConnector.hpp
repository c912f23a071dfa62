#pragma once

#include "Zon/BasicString.hpp"
#include "VarnixBase/Commons/Gds/StaticStringAdapter.hpp"
#include "VarnixBase/Core/PortSystem/ConnectorBase.hpp"
#include "VarnixBase/Example/StringPort_s.hpp"

namespace VarnixBase::Example {

/// A worked example of a connector on a user-defined structure: copies the text of a
/// `StringPort_s` into a fixed string of any capacity, then raises `changed`.
///
/// Its `Execute` clears only the first eight bytes of the destination before copying, as the
/// example always has: a text shorter than the one before it, but at least eight long, is not
/// followed by a zero byte, and the tail of the old text stays in the buffer behind `length`.
/// Readers of the destination must honour `length`. (A destination whose buffer is shorter than
/// eight bytes is cleared up to its end and no further.)
///
/// Applications register it with the connector factory themselves, for example
/// `ConnectorFactory::GetInstance().AddFactoryMethod<DemoStringConnector>("demoString")`.
class DemoStringConnector
    : public Core::PortSystem::ConnectorBase<StringPort_s, Commons::Gds::StaticStringAdapter<char>> {
public:
    DemoStringConnector(const Zon::String& name, const Zon::String& startPath, const Zon::String& endPath);
    ~DemoStringConnector() override;

    void Execute() override;
};

} // namespace VarnixBase::Example
