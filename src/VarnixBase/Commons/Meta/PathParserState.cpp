#include "VarnixBase/Commons/Meta/PathParserState.hpp"

namespace VarnixBase::Commons::Meta {

const EnumDictionary<PathParserState> PathParserStateDictionary("", {
                                                                        {PathParserState::ParseMembers, "ParseMembers"},
                                                                        {PathParserState::ParseIndex, "ParseIndex"},
                                                                        {PathParserState::ParseChildSwitch,
                                                                         "ParseChildSwitch"},
                                                                    });

} // namespace VarnixBase::Commons::Meta
