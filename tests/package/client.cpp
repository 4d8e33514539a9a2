// A program that knows the library only from outside: it uses a class with bodies in the library and a
// template that is compiled here, and prints what they say.

#include <ozarray.h>
#include <ozstring.h>

#include <cstdio>

int main()
{
  OzArray<int> lengths;
  OzString text;
  for (char const* word : {"slot", "hole", "plate"})
  {
    text.append(OzString(word));
    lengths.append(static_cast<int>(text.length()));
  }

  std::printf("%s", text.as_const_c_string());
  for (int const length : lengths)
    std::printf(" %d", length);
  std::printf("\n");
}
