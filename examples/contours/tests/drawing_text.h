#ifndef CONTOURS_TESTS_DRAWING_TEXT_H
#define CONTOURS_TESTS_DRAWING_TEXT_H

#include <string>

// Texts of small drawings. Each value stands behind its code and a blank, one group in a line: "10 1.5\n".

/// The groups of `lines` as a DXF file has them: code and value in lines of their own.
inline std::string dxf_groups(std::string const& lines)
{
  std::string text;
  std::size_t begin = 0;
  while (begin < lines.size())
  {
    std::size_t const end = lines.find('\n', begin);
    std::string const group = lines.substr(begin, end - begin);
    std::size_t const blank = group.find(' ');
    text += group.substr(0, blank) + "\n" + (blank == group.npos ? "" : group.substr(blank + 1)) + "\n";
    begin = end + 1;
  }
  return text;
}

/// A whole drawing with these entities.
inline std::string dxf_drawing(std::string const& entities)
{
  return dxf_groups("0 SECTION\n2 ENTITIES\n" + entities + "0 ENDSEC\n0 EOF\n");
}

inline std::string line_entity(std::string const& layer, double x1, double y1, double x2, double y2)
{
  return "0 LINE\n8 " + layer + "\n10 " + std::to_string(x1) + "\n20 " + std::to_string(y1) + "\n11 " +
         std::to_string(x2) + "\n21 " + std::to_string(y2) + "\n";
}

#endif
