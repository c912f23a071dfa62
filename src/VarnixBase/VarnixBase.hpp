#pragma once

// The VarnixBase library: every public header, so that an application can start with one include.
// Written by scripts/umbrella.

#include "VarnixBase/Commons/EnumDictionary.hpp"
#include "VarnixBase/Commons/Gds/StaticStringAdapter.hpp"
#include "VarnixBase/Commons/Meta/DataBrowser.hpp"
#include "VarnixBase/Commons/Meta/DataFilter.hpp"
#include "VarnixBase/Commons/Meta/FilterCombine.hpp"
#include "VarnixBase/Commons/Meta/IDataBrowser.hpp"
#include "VarnixBase/Commons/Meta/ITypeBrowser.hpp"
#include "VarnixBase/Commons/Meta/MetaInfoProvider.hpp"
#include "VarnixBase/Commons/Meta/PathParserState.hpp"
#include "VarnixBase/Commons/Meta/Type.hpp"
#include "VarnixBase/Commons/Meta/TypeBrowser.hpp"
#include "VarnixBase/Core/Info/Info.hpp"
#include "VarnixBase/Core/Os/ShutdownFlags.hpp"
#include "VarnixBase/Core/PortSystem/GetCommonTypeName.hpp"
