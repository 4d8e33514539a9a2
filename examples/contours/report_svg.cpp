#include "report.h"

#include "number_text.h"
#include "text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>

namespace contours
{

namespace
{

double const PI = std::acos(-1.0);

/// One for each layer, in turn. None is like the red of open contours.
constexpr std::array<char const*, 6> LAYER_COLORS = {"#202020", "#1f5fa8", "#2a7f3f",
                                                     "#8a4fa8", "#a8761f", "#1f8a8a"};
constexpr char const* OPEN_COLOR = "#d00000";

/// The picture around the contours, as parts of its larger side.
constexpr double MARGIN = 0.02;
constexpr double LINE_WIDTH = 0.002;

struct Box
{
  double left = std::numeric_limits<double>::infinity();
  double bottom = std::numeric_limits<double>::infinity();
  double right = -std::numeric_limits<double>::infinity();
  double top = -std::numeric_limits<double>::infinity();

  void add(Point point)
  {
    left = std::min(left, point.x);
    right = std::max(right, point.x);
    bottom = std::min(bottom, point.y);
    top = std::max(top, point.y);
  }
  double larger_side() const { return std::max(right - left, top - bottom); }
};

/// Adds the ends of a curve and, of an arc, its outermost points on the way.
void add(Box& box, Curve const& curve)
{
  box.add(curve.start);
  box.add(curve.end);
  if (!curve.is_arc())
    return;
  double const start = std::atan2(curve.start.y - curve.center.y, curve.start.x - curve.center.x);
  double const low = std::min(start, start + curve.sweep);
  double const high = std::max(start, start + curve.sweep);
  for (double quarter = std::ceil(low / (PI / 2.0)); quarter * PI / 2.0 < high; quarter += 1.0)
    box.add({curve.center.x + curve.radius * std::cos(quarter * PI / 2.0),
             curve.center.y + curve.radius * std::sin(quarter * PI / 2.0)});
}

Box box_of(Outcome const& outcome)
{
  Box box;
  for (Contour const& contour : outcome.contours)
    for (Link const link : contour.links)
      add(box, outcome.edges[link.edge].curve);
  if (outcome.contours.empty())
    box.add({0.0, 0.0});
  return box;
}

std::string number(double value)
{
  return compact(value, 4);
}

/// The y axis of SVG points down.
std::string at(Point point)
{
  return number(point.x) + " " + number(-point.y);
}

std::string escaped(std::string const& text)
{
  std::string result;
  for (char const c : text)
  {
    switch (c)
    {
    case '&':
      result += "&amp;";
      break;
    case '<':
      result += "&lt;";
      break;
    case '>':
      result += "&gt;";
      break;
    case '"':
      result += "&quot;";
      break;
    default:
      result += c;
    }
  }
  return result;
}

/// To `end` from the current point. An arc is at most half a circle here, so that its ends say which one it is.
std::string step(Curve const& curve, Point end)
{
  if (!curve.is_arc())
    return " L " + at(end);
  std::string const radius = number(curve.radius);
  return " A " + radius + " " + radius + " 0 0 " + (curve.sweep > 0.0 ? "0 " : "1 ") + at(end);
}

std::string path_data(Outcome const& outcome, Contour const& contour)
{
  std::string pen = at(contour.start);
  std::string data = "M " + pen;
  for (Link const link : contour.links)
  {
    Curve const curve = outcome.edges[link.edge].directed(link.reversed);
    if (at(curve.start) != pen) // across a gap
      data += " L " + at(curve.start);
    if (std::abs(curve.sweep) > PI * 0.999)
      data += step(curve, curve.middle());
    data += step(curve, curve.end);
    pen = at(curve.end);
  }
  return contour.closed ? data + " Z" : data;
}

std::string path(Outcome const& outcome, std::size_t index, double dash)
{
  Contour const& contour = outcome.contours[index];
  std::string const id = std::to_string(index + 1);
  std::string const open =
      " stroke=\"" + std::string(OPEN_COLOR) + "\" stroke-dasharray=\"" + number(dash) + "\"";
  return "    <path id=\"contour-" + id + "\"" + (contour.closed ? "" : open) + " d=\"" +
         path_data(outcome, contour) + "\"><title>contour " + id + ", " +
         (contour.closed ? "closed" : "open") + "</title></path>\n";
}

} // namespace

std::string svg(Report const& report)
{
  Outcome const& outcome = report.outcome;
  Box const box = box_of(outcome);
  double const side = std::max(box.larger_side(), 1e-3);
  double const margin = MARGIN * side;
  double const line = std::max(LINE_WIDTH * side, 1e-4);
  std::string const width_text = number(box.right - box.left + 2.0 * margin);
  std::string const height_text = number(box.top - box.bottom + 2.0 * margin);

  std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
      width_text + "mm\" height=\"" + height_text + "mm\" viewBox=\"" + number(box.left - margin) + " " +
      number(-box.top - margin) + " " + width_text + " " + height_text + "\">\n  <title>" +
      escaped(printable(report.drawing_name)) + "</title>\n";

  std::map<std::string, std::vector<std::size_t>> layers;
  for (std::size_t i = 0; i < outcome.contours.size(); ++i)
    layers[outcome.contours[i].layer].push_back(i);
  std::size_t layer_number = 0;
  for (auto const& [layer, contours] : layers)
  {
    text += "  <g id=\"layer-" + std::to_string(layer_number + 1) + "\" fill=\"none\" stroke=\"" +
            LAYER_COLORS[layer_number % LAYER_COLORS.size()] + "\" stroke-width=\"" + number(line) +
            "\">\n    <title>" + escaped(layer) + "</title>\n";
    for (std::size_t const contour : contours)
      text += path(outcome, contour, 4.0 * line);
    text += "  </g>\n";
    ++layer_number;
  }
  return text + "</svg>\n";
}

} // namespace contours
