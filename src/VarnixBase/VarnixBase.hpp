#pragma once

// The VarnixBase library: every public header, so that an application can start with one include.
// Written by scripts/umbrella.

#include "VarnixBase/Core/Info/Info.hpp"
#include "VarnixBase/Core/Os/Command.hpp"
#include "VarnixBase/Core/Os/Process.hpp"
#include "VarnixBase/Core/Os/ShutdownFlags.hpp"
#include "VarnixBase/Core/Os/Threading/ThreadPool.hpp"
