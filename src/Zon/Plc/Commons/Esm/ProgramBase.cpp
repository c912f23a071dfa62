#include "Zon/Plc/Commons/Esm/ProgramBase.hpp"

namespace Zon::Plc::Commons::Esm {

ProgramBase::ProgramBase(const String& name) : name(name) {}

ProgramBase::~ProgramBase() = default;

} // namespace Zon::Plc::Commons::Esm
