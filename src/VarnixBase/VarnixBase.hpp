#pragma once

// The VarnixBase library: every public header, so that an application can start with one include.
// Written by scripts/umbrella.

#include "VarnixBase/Commons/Nm/VersionInformationPayload.hpp"
#include "VarnixBase/Commons/Serialization/IReader.hpp"
#include "VarnixBase/Commons/Serialization/IWriter.hpp"
#include "VarnixBase/Commons/Serialization/Json/JsonWriter.hpp"
#include "VarnixBase/Commons/Serialization/Serializer.hpp"
#include "VarnixBase/Commons/Serialization/SerializerContext.hpp"
#include "VarnixBase/Core/Info/Info.hpp"
#include "VarnixBase/Core/Os/ShutdownFlags.hpp"
