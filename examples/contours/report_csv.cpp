#include "report.h"

#include "number_text.h"

#include <limits>

namespace contours
{

namespace
{

constexpr char const* LINE_END = "\r\n";

std::string field(std::string const& text)
{
  if (text.find_first_of(",\"\r\n") == text.npos)
    return text;
  std::string quoted = "\"";
  for (char const c : text)
  {
    quoted += c;
    if (c == '"')
      quoted += '"';
  }
  return quoted + '"';
}

} // namespace

std::string csv(Report const& report)
{
  std::string text =
      std::string("contour,layer,state,edges,length_mm,area_mm2,max_gap_mm,entities") + LINE_END;
  for (std::size_t i = 0; i < report.outcome.contours.size(); ++i)
  {
    Contour const& contour = report.outcome.contours[i];
    text += std::to_string(i + 1) + ',' + field(contour.layer) + ',' + (contour.closed ? "closed" : "open") +
            ',' + std::to_string(contour.links.size()) + ',' + rounded(contour.length_mm, 3) + ',' +
            (contour.closed ? rounded(contour.area_mm2, 3) : "") + ',' + rounded(contour.max_gap_mm, 3) +
            ',' + field(entity_list(report, contour, std::numeric_limits<std::size_t>::max())) + LINE_END;
  }
  return text;
}

} // namespace contours
