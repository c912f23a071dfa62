#pragma once

// The VarnixBase library: every public header, so that an application can start with one include.
// Written by scripts/umbrella.

#include "VarnixBase/Commons/IExecutable.hpp"
#include "VarnixBase/Core/Info/Info.hpp"
#include "VarnixBase/Core/Os/ShutdownFlags.hpp"
#include "VarnixBase/Core/PortSystem/ConfigurableProgramBaseImpl.hpp"
#include "VarnixBase/Core/PortSystem/ConnectorProvider.hpp"
#include "VarnixBase/Core/PortSystem/IConfigurableProgram.hpp"
#include "VarnixBase/Core/PortSystem/IConnector.hpp"
#include "VarnixBase/Core/PortSystem/IParameter.hpp"
#include "VarnixBase/Core/PortSystem/IPort.hpp"
#include "VarnixBase/Core/PortSystem/ParameterProvider.hpp"
#include "VarnixBase/Core/PortSystem/Port.hpp"
#include "VarnixBase/Core/PortSystem/PortBase.hpp"
#include "VarnixBase/Core/PortSystem/PortBaseImpl.hpp"
#include "VarnixBase/Core/PortSystem/PortProvider.hpp"
#include "VarnixBase/Core/PortSystem/PortValueTraits.hpp"
#include "VarnixBase/Core/PortSystem/QualifiedPort.hpp"
#include "VarnixBase/Core/QualitySystem/CombineQuality.hpp"
#include "VarnixBase/Core/QualitySystem/IQualityConsumer.hpp"
#include "VarnixBase/Core/QualitySystem/IQualityProvider.hpp"
#include "VarnixBase/Core/QualitySystem/QualifiedValue.hpp"
#include "VarnixBase/Core/QualitySystem/Quality.hpp"
#include "VarnixBase/Core/QualitySystem/QualityFlags.hpp"
#include "VarnixBase/Core/QualitySystem/QualityState.hpp"
