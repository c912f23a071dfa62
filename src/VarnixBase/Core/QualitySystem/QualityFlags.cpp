#include "VarnixBase/Core/QualitySystem/QualityFlags.hpp"

using VarnixBase::Core::QualitySystem::QualityFlags;

template <>
const std::map<QualityFlags, const char*> Zon::EnumStrings<QualityFlags>::Values = {
    {QualityFlags::None, "None"},
    {QualityFlags::DeviceDefect, "DeviceDefect"},
    {QualityFlags::PowerFailure, "PowerFailure"},
    {QualityFlags::WireBreak, "WireBreak"},
    {QualityFlags::Failure, "Failure"},
    {QualityFlags::Overrange, "Overrange"},
    {QualityFlags::Underrange, "Underrange"},
    {QualityFlags::OutOfRange, "OutOfRange"},
    {QualityFlags::Overflow, "Overflow"},
    {QualityFlags::BadReference, "BadReference"},
    {QualityFlags::Oscillatory, "Oscillatory"},
    {QualityFlags::Outdated, "Outdated"},
    {QualityFlags::Inconsistent, "Inconsistent"},
    {QualityFlags::Inaccurate, "Inaccurate"},
    {QualityFlags::Source, "Source"},
    {QualityFlags::Blocked, "Blocked"},
    {QualityFlags::Test, "Test"},
    {QualityFlags::Configuration, "Configuration"},
};
