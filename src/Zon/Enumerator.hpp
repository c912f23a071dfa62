#pragma once

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

#include "Zon/Exception.hpp"
#include "Zon/IEnumerator.hpp"

namespace Zon {

/// The enumerators of the platform, for elements of type `T`.
template <class T>
class Enumerator {
public:
    /// A sequence without elements: `MoveNext()` is false, `GetCurrent()` throws `Zon::Exception`
    /// "IEnumerator::GetCurrent() is not supported by empty enumerators".
    class Empty : public IEnumerator<T> {
    public:
        bool MoveNext() override { return false; }
        T GetCurrent() override
        {
            throw Zon::Exception("IEnumerator::GetCurrent() is not supported by empty enumerators");
        }
    };

    /// Two sequences one after the other. `MoveNext()` asks `first` while it is there; when it
    /// answers false, `first` is released for good and `second` answers from then on.
    /// `GetCurrent()` comes from `first` while it is there, else from `second`.
    class Composite : public IEnumerator<T> {
    public:
        Composite(typename IEnumerator<T>::Ptr first, typename IEnumerator<T>::Ptr second)
            : first(std::move(first)), second(std::move(second))
        {
        }

        bool MoveNext() override
        {
            if (first) {
                if (first->MoveNext()) {
                    return true;
                }
                first.reset();
            }
            return second ? second->MoveNext() : false;
        }

        T GetCurrent() override
        {
            if (first) {
                return first->GetCurrent();
            }
            if (second) {
                return second->GetCurrent();
            }
            throw Zon::Exception("IEnumerator::GetCurrent() is not supported by empty enumerators");
        }

    private:
        typename IEnumerator<T>::Ptr first;
        typename IEnumerator<T>::Ptr second;
    };

    /// Runs over a range of standard iterators, giving `projection(*position)` as each element
    /// (the element itself by default, or for example the key of a map entry). It keeps the
    /// current position, the end and a flag that stays set until the first step: the first
    /// `MoveNext()` clears the flag, later ones advance; each answers whether the position
    /// differs from the end. The range must stay valid while the enumerator is used; `owner`
    /// may keep the container alive. `GetCurrent()` at the end throws `Zon::Exception`
    /// "IEnumerator::GetCurrent() has no current element" instead of reading past the range.
    template <class Iterator, class Projection = std::identity>
    class StlAdapter : public IEnumerator<T> {
    public:
        StlAdapter(Iterator begin, Iterator end, Projection projection = {}, std::shared_ptr<const void> owner = {})
            : current(std::move(begin)),
              end(std::move(end)),
              projection(std::move(projection)),
              owner(std::move(owner))
        {
        }

        bool MoveNext() override
        {
            if (beforeFirst) {
                beforeFirst = false;
                return current != end;
            }
            if (current != end) {
                ++current;
            }
            return current != end;
        }

        T GetCurrent() override
        {
            if (current == end) {
                throw Zon::Exception("IEnumerator::GetCurrent() has no current element");
            }
            return std::invoke(projection, *current);
        }

    private:
        Iterator current;
        Iterator end;
        Projection projection;
        std::shared_ptr<const void> owner;
        bool beforeFirst = true;
    };

    /// An enumerator over a whole container, kept alive by the enumerator.
    template <class Container>
    static typename IEnumerator<T>::Ptr Over(std::shared_ptr<const Container> container)
    {
        using Iterator = typename Container::const_iterator;
        auto begin = container->begin();
        auto end = container->end();
        return std::make_shared<StlAdapter<Iterator>>(begin, end, std::identity{}, std::move(container));
    }
};

} // namespace Zon
