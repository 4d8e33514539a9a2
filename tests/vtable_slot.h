#ifndef VTABLE_SLOT_H
#define VTABLE_SLOT_H

#include <cstddef>
#include <cstring>

/// The place of a virtual function in the table of the class that a pointer to member names; the
/// destructor, which has two entries, comes first in nearly all classes. That order is part of the binary
/// interface. Works for the C++ ABI of 64-bit x86, where a pointer to a virtual member is one more than the
/// offset of its entry.
template <class Member>
int vtable_slot(Member member)
{
  std::ptrdiff_t representation[2];
  static_assert(sizeof representation == sizeof member, "not the ABI that this reads");
  std::memcpy(representation, &member, sizeof member);
  return static_cast<int>((representation[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)));
}

#endif
