#pragma once

#include <memory>

namespace Zon {

/// Steps through a sequence: `MoveNext()` advances and tells whether an element is there,
/// `GetCurrent()` gives that element. The first `MoveNext()` moves to the first element.
/// Handed out as a shared pointer, `IEnumerator<T>::Ptr`. `T` may be a reference type
/// (`IEnumerator<const DataInfo&>`), in which case the element lives in the enumerated container.
template <class T>
class IEnumerator {
public:
    using Ptr = std::shared_ptr<IEnumerator<T>>;

    virtual ~IEnumerator() = default;

    virtual bool MoveNext() = 0;
    virtual T GetCurrent() = 0;
};

} // namespace Zon
