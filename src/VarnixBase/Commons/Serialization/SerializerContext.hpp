#pragma once

#include <memory>

#include "VarnixBase/Commons/Serialization/IReader.hpp"
#include "VarnixBase/Commons/Serialization/IWriter.hpp"

namespace VarnixBase::Commons::Serialization {

/// A reader and a writer that belong together, shared with whoever else holds them.
class SerializerContext {
public:
    /// Copies both pointers: each one's use count goes up by one.
    SerializerContext(std::shared_ptr<IReader> reader, std::shared_ptr<IWriter> writer);

    const std::shared_ptr<IReader>& GetReader() const noexcept { return reader; }
    const std::shared_ptr<IWriter>& GetWriter() const noexcept { return writer; }

private:
    std::shared_ptr<IReader> reader;
    std::shared_ptr<IWriter> writer;
};

} // namespace VarnixBase::Commons::Serialization
