#pragma once

#include <memory>
#include <utility>

#include "Zon/BasicString.hpp"
#include "VarnixBase/Commons/Gds/StaticStringAdapter.hpp"
#include "VarnixBase/Example/StringPort_s.hpp"

namespace VarnixBase::Commons::Meta {

/// A typed handle on one memory location: either a controller variable named by a variable path,
/// or a heap cell that the handle owns (a parameter's own value). Readers and writers reach the
/// value through one raw pointer, so that the cycle never asks which of the two it is.
///
/// Resolving a path asks `MetaInfoProvider::GetInstance().GetDataBrowser().GetDataInfo(path)` and
/// keeps the record's address, nothing else: the variable's type is not compared with `T`, and a
/// path that the browser answers with an empty record gives a null address. Malformed paths and
/// failures of the walk leave the constructor as the browser's exceptions.
///
/// `Get` and `Set` through a null address throw `Zon::System::Commons::InvalidOperationException`
/// "Value access without a variable address" instead of touching memory; `GetDataPointer` shows
/// the null address as it is.
///
/// Instantiated for `bool`, `signed char`, `unsigned char`, `short`, `unsigned short`, `int`,
/// `unsigned int`, `long`, `unsigned long`, `float`, `double` (`Set` is one plain store), for
/// `StaticStringAdapter<char>` and `StaticStringAdapter<char16_t>` (`Set` copies text, see there),
/// and for `VarnixBase::Example::StringPort_s`.
template <class T>
class DataAccessValue {
public:
    /// A handle on nothing: no cell, null address.
    DataAccessValue() noexcept = default;
    /// A handle on the variable that `variablePath` names.
    explicit DataAccessValue(const Zon::String& variablePath);
    /// A handle on the heap cell `storage`, which it shares.
    explicit DataAccessValue(std::shared_ptr<T> storage) noexcept;

    DataAccessValue(const DataAccessValue&) = default;
    DataAccessValue(DataAccessValue&&) noexcept = default;
    DataAccessValue& operator=(const DataAccessValue&) = default;
    DataAccessValue& operator=(DataAccessValue&&) noexcept = default;
    ~DataAccessValue() = default;

    /// The value at the address.
    virtual const T& Get() const;
    /// Stores `value` at the address. For the string types this copies text into the fixed string
    /// at the address, within that string's own capacity.
    virtual void Set(T const& value);
    /// The address that is read and written; null when nothing was resolved.
    virtual T* GetDataPointer() const noexcept { return dataPointer; }

private:
    /// Throws when the address is null.
    void CheckAddress() const;

    std::shared_ptr<T> storage;
    T* dataPointer = nullptr;
};

template <class T>
DataAccessValue<T>::DataAccessValue(std::shared_ptr<T> storage) noexcept
    : storage(std::move(storage)), dataPointer(this->storage.get())
{
}

extern template class DataAccessValue<bool>;
extern template class DataAccessValue<signed char>;
extern template class DataAccessValue<unsigned char>;
extern template class DataAccessValue<short>;
extern template class DataAccessValue<unsigned short>;
extern template class DataAccessValue<int>;
extern template class DataAccessValue<unsigned int>;
extern template class DataAccessValue<long>;
extern template class DataAccessValue<unsigned long>;
extern template class DataAccessValue<float>;
extern template class DataAccessValue<double>;
extern template class DataAccessValue<Gds::StaticStringAdapter<char>>;
extern template class DataAccessValue<Gds::StaticStringAdapter<char16_t>>;
extern template class DataAccessValue<Example::StringPort_s>;

} // namespace VarnixBase::Commons::Meta
