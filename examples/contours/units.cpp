#include "units.h"

#include "input_error.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace contours
{

namespace
{

/// A curve below this is a point, in millimetres: drawings repeat vertices, and rounding moves them apart.
constexpr double NO_LENGTH = 1e-6;

/// The greatest coordinate and radius, in millimetres. Within it a double still tells a tenth of a micrometre apart
/// and no later computation overflows.
constexpr double FARTHEST = 1e9;

Point scaled(Point point, double factor)
{
  return {point.x * factor, point.y * factor};
}

/// False for NaN too, which products of huge numbers can be.
bool within_reach(Point point)
{
  return std::abs(point.x) <= FARTHEST && std::abs(point.y) <= FARTHEST;
}

bool within_reach(Curve const& curve)
{
  return within_reach(curve.start) && within_reach(curve.end) && within_reach(curve.center) &&
         curve.radius <= FARTHEST;
}

} // namespace

std::optional<double> unit_by_name(std::string_view name)
{
  constexpr std::array<std::pair<std::string_view, double>, 4> UNITS = {
      {{"mm", 1.0}, {"cm", 10.0}, {"m", 1000.0}, {"in", 25.4}}};
  for (auto const& [unit, mm] : UNITS)
    if (unit == name)
      return mm;
  return std::nullopt;
}

std::optional<double> unit_by_code(int code)
{
  constexpr std::array<std::pair<int, double>, 17> UNITS = {{{0, 1.0}, // none given
                                                             {1, 25.4},
                                                             {2, 304.8},
                                                             {3, 1609344.0},
                                                             {4, 1.0},
                                                             {5, 10.0},
                                                             {6, 1000.0},
                                                             {7, 1e6},
                                                             {8, 25.4e-6},
                                                             {9, 25.4e-3},
                                                             {10, 914.4},
                                                             {11, 1e-7},
                                                             {12, 1e-6},
                                                             {13, 1e-3},
                                                             {14, 100.0},
                                                             {15, 1e4},
                                                             {16, 1e5}}};
  for (auto const& [unit, mm] : UNITS)
    if (unit == code)
      return mm;
  return std::nullopt;
}

void scale_to_millimetres(Drawing& drawing, double unit_mm)
{
  for (Entity& entity : drawing.entities)
  {
    for (Curve& curve : entity.curves)
    {
      curve.start = scaled(curve.start, unit_mm);
      curve.end = scaled(curve.end, unit_mm);
      curve.center = scaled(curve.center, unit_mm);
      curve.radius *= unit_mm;
      if (!within_reach(curve))
        throw InputError(entity.line,
                         entity.type + " " + entity.name() +
                             ": it reaches farther out than 1000 km, the most that can be handled");
    }
    auto const points = std::remove_if(entity.curves.begin(), entity.curves.end(),
                                       [](Curve const& curve) { return curve.length() < NO_LENGTH; });
    entity.curves.erase(points, entity.curves.end());
    if (entity.use == Use::CUT && entity.curves.empty())
      entity.use = Use::NO_LENGTH;
  }
}

} // namespace contours
