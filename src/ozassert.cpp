#include "ozassert.h"

#include <cstdio>
#include <cstdlib>

namespace
{
void report_pure_virtual_call(char const* class_name, char const* method_name)
{
  std::fprintf(stderr, "Pure virtual method called: %s::%s.\n", class_name, method_name);
  std::abort();
}
} // namespace

OzAssertionHandler dkb_assertion_handler = nullptr;

void (*dkb_pure_virtual_called)(char const* class_name, char const* method_name) = &report_pure_virtual_call;

int Oz_ASSERT_FALSE = 0;

void Oz_assert(char* file, int line)
{
  OzAssertionHandler const handler = dkb_assertion_handler;
  if (handler != nullptr)
    handler(file, line);
}

OzAssertionHandler set_dkb_assertion_handler(OzAssertionHandler const& handler, bool enable)
{
  dkb_assertion_handler = enable ? handler : nullptr;
  return dkb_assertion_handler;
}
