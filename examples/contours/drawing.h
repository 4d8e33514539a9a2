#ifndef CONTOURS_DRAWING_H
#define CONTOURS_DRAWING_H

#include "curve.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace contours
{

/// Whether an entity goes into contours, and if not, why.
enum class Use
{
  CUT,          ///< its curves are edges
  NOT_A_CURVE,  ///< text, dimensions, points: nothing that is ever cut
  NO_LENGTH,    ///< a curve by its type, but a point by its numbers
  NOT_SUPPORTED ///< it could be cut, but this program does not know how
};

/// One entity of a drawing: what it is, where it stands, and the curves it consists of, in its own direction.
struct Entity
{
  std::size_t number = 0; ///< its place among the entities of the drawing, from 1
  std::size_t line = 0;   ///< where it begins in the file
  std::string handle;     ///< hexadecimal, in capitals; empty where the drawing gives none
  std::string type;
  std::string layer;
  Use use = Use::CUT;
  std::string reason; ///< for NOT_SUPPORTED, what hinders
  std::vector<Curve> curves;

  /// What messages and results call it: the handle, or its place as "#12".
  std::string name() const { return handle.empty() ? "#" + std::to_string(number) : handle; }
};

struct Remark
{
  std::size_t line = 0; ///< 0: the file as a whole
  std::string text;
};

/// What a drawing file holds in its model space.
struct Drawing
{
  std::vector<Entity> entities;
  std::optional<int> unit_code;         ///< $INSUNITS, where the header has it
  std::size_t paper_space_entities = 0; ///< left out of `entities`
  std::vector<Remark> remarks;          ///< what was odd but could be read
};

/// Puts the entities in the order in which results name them: those with a handle first, by its value, then the
/// others by their place in the file. Handles stay when a drawing is saved in another order, and results with them.
void order_entities(Drawing& drawing);

/// Whether a user who writes `name`, a handle or "#12", means this entity.
bool is_named(Entity const& entity, std::string const& name);

} // namespace contours

#endif
