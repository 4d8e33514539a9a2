#ifndef CONTOURS_LAYERS_H
#define CONTOURS_LAYERS_H

#include <string>
#include <string_view>
#include <vector>

namespace contours
{

/// Whether `pattern`, in which * stands for any run of characters, describes the whole of `name`. Letters A to Z
/// match in either case, as layer names do in drawing programs.
bool matches(std::string_view pattern, std::string_view name);

/// Which layers of a drawing are to be cut.
struct LayerChoice
{
  std::vector<std::string> only;    ///< patterns; all layers if there is none
  std::vector<std::string> exclude; ///< patterns; these win

  bool has(std::string_view layer) const;
};

} // namespace contours

#endif
