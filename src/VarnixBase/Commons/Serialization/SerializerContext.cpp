#include "VarnixBase/Commons/Serialization/SerializerContext.hpp"

namespace VarnixBase::Commons::Serialization {

// The parameters are copied, not moved: the context shares the pointers with the caller's
// copies, and the parameters let go of theirs when the constructor returns.
SerializerContext::SerializerContext(std::shared_ptr<IReader> reader, std::shared_ptr<IWriter> writer)
    : reader(reader), writer(writer)
{
}

} // namespace VarnixBase::Commons::Serialization
