#include "ozmap.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <type_traits>
#include <vector>

// Compiled with the operands of instructions in the other order than elsewhere, where the compiler knows both.

namespace
{
template <class K>
class OzMapOfEitherAssembler : public testing::Test
{
};

typedef testing::Types<signed char, int, std::int64_t, unsigned char, std::uint64_t, char const*> Keys;
TYPED_TEST_SUITE(OzMapOfEitherAssembler, Keys, );

template <class K>
K key_from(int i)
{
  if constexpr (std::is_pointer_v<K>)
  {
    static char const memory[128] = {};
    return memory + i;
  }
  else
    return static_cast<K>(std::is_signed_v<K> ? i - 64 : i);
}

TYPED_TEST(OzMapOfEitherAssembler, HoldsItsKeysInOrderAndFindsEachOfThem)
{
  OzMap<TypeParam, int> map;
  for (int i = 0; i < 128; ++i)
    map[key_from<TypeParam>(i * 37 % 128)] = i * 37 % 128;
  map.remove(key_from<TypeParam>(64));

  std::vector<int> values;
  for (OzMapIterator<TypeParam, int> i(&map); !i.done(); i.next())
    values.push_back(i.current());
  ASSERT_EQ(values.size(), 127u);
  for (int i = 0; i < 128; ++i)
  {
    EXPECT_EQ(map.find(key_from<TypeParam>(i), nullptr), i == 64 ? 0 : 1) << i;
    if (i == 64)
      continue;
    EXPECT_EQ(values[static_cast<std::uint64_t>(i < 64 ? i : i - 1)], i);
  }
}
} // namespace
