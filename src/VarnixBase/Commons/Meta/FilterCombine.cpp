#include "VarnixBase/Commons/Meta/FilterCombine.hpp"

namespace VarnixBase::Commons::Meta {

const EnumDictionary<FilterCombine> FilterCombineDictionary("", {
                                                                    {FilterCombine::None, "None"},
                                                                    {FilterCombine::Or, "Or"},
                                                                    {FilterCombine::And, "And"},
                                                                    {FilterCombine::Not, "Not"},
                                                                });

} // namespace VarnixBase::Commons::Meta
