#include "dxf_entities.h"

#include "input_error.h"
#include "plane.h"

#include <algorithm>
#include <string_view>

namespace contours
{

namespace
{

/// Bits of group 70 of polylines and vertices.
constexpr int CLOSED = 1;
constexpr int SPACE_POLYLINE = 8;
constexpr int MESH = 16;
constexpr int POLYFACE_MESH = 64;
constexpr int SPLINE_FRAME_VERTEX = 16;

struct Vertex
{
  Point at;
  double bulge = 0.0;
};

Plane plane_of(EntityGroups const& groups)
{
  Direction const upright;
  Plane const plane(Direction{groups.number_or(210, upright.x), groups.number_or(220, upright.y),
                              groups.number_or(230, upright.z)});
  if (!plane.is_valid())
    throw InputError(groups.line(), "the extrusion direction (group 210) has no length");
  return plane;
}

void not_supported(Entity& entity, char const* reason)
{
  entity.use = Use::NOT_SUPPORTED;
  entity.reason = reason;
}

/// Takes over curves that were drawn in `plane`.
void add_from_plane(Entity& entity, Plane const& plane, std::vector<Curve> const& own)
{
  if (!plane.is_level())
  {
    not_supported(entity, "its plane is tilted against that of the drawing");
    return;
  }
  for (Curve const& curve : own)
    entity.curves.push_back(plane.to_drawing(curve));
}

std::vector<Curve> pieces(std::vector<Vertex> const& vertices, bool closed)
{
  std::vector<Curve> curves;
  for (std::size_t i = 0; i + 1 < vertices.size(); ++i)
    curves.push_back(Curve::bulged(vertices[i].at, vertices[i + 1].at, vertices[i].bulge));
  if (closed && vertices.size() > 1)
    curves.push_back(Curve::bulged(vertices.back().at, vertices.front().at, vertices.back().bulge));
  return curves;
}

double radius_of(EntityGroups const& groups)
{
  double const radius = groups.number(40, "radius");
  if (radius < 0.0)
    throw InputError(groups.find(40)->line + 1, "the radius is below zero");
  return radius;
}

void read_line(Entity& entity, EntityGroups const& groups, std::vector<EntityGroups> const&)
{
  // Coordinates of lines are those of the drawing, whatever their extrusion direction.
  Point const start = {groups.number(10, "start x"), groups.number(20, "start y")};
  Point const end = {groups.number(11, "end x"), groups.number(21, "end y")};
  entity.curves.push_back(Curve::line(start, end));
}

void read_circle(Entity& entity, EntityGroups const& groups, std::vector<EntityGroups> const&)
{
  Point const center = {groups.number(10, "centre x"), groups.number(20, "centre y")};
  double const radius = radius_of(groups);
  add_from_plane(entity, plane_of(groups), {Curve::circle(center, radius)});
}

void read_arc(Entity& entity, EntityGroups const& groups, std::vector<EntityGroups> const&)
{
  Point const center = {groups.number(10, "centre x"), groups.number(20, "centre y")};
  double const radius = radius_of(groups);
  double const from = groups.number(50, "start angle");
  double const to = groups.number(51, "end angle");
  add_from_plane(entity, plane_of(groups), {Curve::arc(center, radius, from, to)});
}

void read_light_polyline(Entity& entity, EntityGroups const& groups, std::vector<EntityGroups> const&)
{
  // A vertex is a run of groups that begins with its x.
  std::vector<Vertex> vertices;
  bool has_y = true;
  for (Group const& group : groups)
  {
    if (group.code == 10)
    {
      if (!has_y)
        break;
      vertices.push_back({{number_of(group), 0.0}, 0.0});
      has_y = false;
    }
    else if (group.code == 20 && !vertices.empty())
    {
      vertices.back().at.y = number_of(group);
      has_y = true;
    }
    else if (group.code == 42 && !vertices.empty())
    {
      vertices.back().bulge = number_of(group);
    }
  }
  if (!has_y)
    throw InputError(groups.line(), "vertex " + std::to_string(vertices.size()) + " has no y (group 20)");

  bool const closed = (groups.integer_or(70, 0) & CLOSED) != 0;
  add_from_plane(entity, plane_of(groups), pieces(vertices, closed));
}

void read_polyline(Entity& entity, EntityGroups const& groups, std::vector<EntityGroups> const& vertex_groups)
{
  int const flags = groups.integer_or(70, 0);
  if ((flags & (MESH | POLYFACE_MESH)) != 0)
  {
    entity.use = Use::NOT_A_CURVE;
    return;
  }

  std::vector<Vertex> vertices;
  for (EntityGroups const& vertex : vertex_groups)
  {
    // The frame of a spline steers the curve; the vertices of the curve itself are there too.
    if ((vertex.integer_or(70, 0) & SPLINE_FRAME_VERTEX) != 0)
      continue;
    vertices.push_back({{vertex.number(10, "x of a vertex"), vertex.number(20, "y of a vertex")},
                        vertex.number_or(42, 0.0)});
  }

  // Vertices of a polyline in space are in coordinates of the drawing and have no bulges.
  bool const in_space = (flags & SPACE_POLYLINE) != 0;
  Plane const plane = in_space ? Plane() : plane_of(groups);
  add_from_plane(entity, plane, pieces(vertices, (flags & CLOSED) != 0));
}

/// What this program knows to cut, and what it knows that could be cut. All else is taken for annotation.
struct Reader
{
  std::string_view type;
  void (*read)(Entity&, EntityGroups const&, std::vector<EntityGroups> const&); // null: not yet
};

constexpr Reader READERS[] = {
    {"LINE", read_line},         {"ARC", read_arc},
    {"CIRCLE", read_circle},     {"LWPOLYLINE", read_light_polyline},
    {"POLYLINE", read_polyline}, {"ELLIPSE", nullptr},
    {"SPLINE", nullptr},         {"INSERT", nullptr},
};

} // namespace

void read_curves(Entity& entity, EntityGroups const& groups, std::vector<EntityGroups> const& vertices)
{
  auto const reader = std::find_if(std::begin(READERS), std::end(READERS),
                                   [&entity](Reader const& r) { return r.type == entity.type; });
  if (reader == std::end(READERS))
    entity.use = Use::NOT_A_CURVE;
  else if (reader->read == nullptr)
    not_supported(entity, "this version cannot cut it");
  else
    reader->read(entity, groups, vertices);
}

} // namespace contours
