#ifndef CONTOURS_DXF_READER_H
#define CONTOURS_DXF_READER_H

#include "drawing.h"

#include <string_view>

namespace contours
{

/// Reads the text of an ASCII DXF file: its unit, and the entities of its model space.
///
/// Tables, blocks and objects are passed over, the header may be missing. Coordinates stay in the units of the
/// drawing. A text that is not ASCII DXF, or is damaged, throws an InputError; damage in an entity names it.
Drawing read_drawing(std::string_view text);

} // namespace contours

#endif
