#pragma once

// The VarnixBase library: every public header, so that an application can start with one include.
// Written by scripts/umbrella.

#include "VarnixBase/Commons/Iec61131/Convert.hpp"
#include "VarnixBase/Commons/Nm/VersionInformationPayload.hpp"
#include "VarnixBase/Commons/Serialization/IReader.hpp"
#include "VarnixBase/Commons/Serialization/IWriter.hpp"
#include "VarnixBase/Commons/Serialization/Json/JsonWriter.hpp"
#include "VarnixBase/Commons/Serialization/Serializer.hpp"
#include "VarnixBase/Commons/Serialization/SerializerContext.hpp"
#include "VarnixBase/Core/Info/Info.hpp"
#include "VarnixBase/Core/Os/ShutdownFlags.hpp"
#include "VarnixBase/Core/PortSystem/Configuration/ConfigurableProgramDocument.hpp"
#include "VarnixBase/Core/PortSystem/Configuration/ConfigurableProgramDocumentHelper.hpp"
#include "VarnixBase/Core/PortSystem/Configuration/ConfigurableProgramSettings.hpp"
#include "VarnixBase/Core/PortSystem/Configuration/ConnectorSettings.hpp"
#include "VarnixBase/Core/PortSystem/Configuration/ParameterSettings.hpp"
#include "VarnixBase/Core/PortSystem/Configuration/ParameterSettingsBase.hpp"
#include "VarnixBase/Core/PortSystem/Configuration/PortSettings.hpp"
#include "VarnixBase/Core/PortSystem/Configuration/QualityProviderSettings.hpp"
#include "VarnixBase/Core/PortSystem/Configuration/QualityProviderSettingsBase.hpp"
#include "VarnixBase/Core/PortSystem/ValueConversion.hpp"
