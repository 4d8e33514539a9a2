#ifndef OZARRAY_I_H
#define OZARRAY_I_H

#include "ozarray.h"

#include <type_traits>

// Element access and appending: what must be inlined into every client.

template <class T, class A>
inline T& OzArray<T, A>::operator[](std::uint64_t index)
{
  OZ_ASSERT(index < size_);
  return data[index];
}

template <class T, class A>
inline T const& OzArray<T, A>::operator[](std::uint64_t index) const
{
  OZ_ASSERT(index < size_);
  return data[index];
}

template <class T, class A>
inline T& OzArray<T, A>::first()
{
  OZ_ASSERT(data != nullptr);
  return data[0];
}

template <class T, class A>
inline T const& OzArray<T, A>::first() const
{
  OZ_ASSERT(data != nullptr);
  return data[0];
}

template <class T, class A>
inline T& OzArray<T, A>::last()
{
  OZ_ASSERT(data != nullptr);
  return data[size_ - 1];
}

template <class T, class A>
inline T const& OzArray<T, A>::last() const
{
  OZ_ASSERT(data != nullptr);
  return data[size_ - 1];
}

template <class T, class A>
inline void OzArray<T, A>::append(T const& value)
{
  if (size_ == capacity)
  {
    // A copy goes to the function that is not inlined, so that a caller's variable can stay in its register.
    if constexpr (std::is_trivially_copyable_v<T>)
      grow_and_append(T(value));
    else
      grow_and_append(value);
    return;
  }
  data[size_] = value;
  ++size_;
}

#endif
