#pragma once

namespace VarnixBase::Commons::Meta {

/// The conditions of a search over variables (`IDataBrowser::Find`). The search is not offered
/// yet, so the record has no fields.
struct DataFilter {};

} // namespace VarnixBase::Commons::Meta
