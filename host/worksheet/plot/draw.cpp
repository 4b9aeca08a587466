#include "host/worksheet/plot/draw.hpp"

#include <cmath>
#include <numeric>
#include <string_view>

#include "fmt/format.h"
#include "host/text/text.hpp"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/plot/gnuplot.hpp"
#include "host/worksheet/plot/plot_script.hpp"

namespace worksheet {

namespace {

std::string description_of(const Picture& picture) {
  switch (picture.kind) {
    case Picture::Kind::heat_map:
      return fmt::format("heat map of {} x {} elements", picture.rows, picture.cols);
    case Picture::Kind::complex_plane:
      return "eigenvalues in the complex plane";
    case Picture::Kind::log_points:
      return "singular values over a logarithmic axis";
    default:
      return counted(picture.curves.size(), "curve");
  }
}

void write_picture(Machine& machine, const PlotRequest& request, const std::string& content) {
  try {
    machine.files.write(request.file, content);
  } catch (const FileError& error) {
    throw PlotArgumentError(request.file_span, error.what());
  }
}

// Whether nothing is missing at the end. gnuplot may stop early and say that all is well.
bool is_whole(std::string_view content, PictureFormat format) {
  if (format == PictureFormat::png)
    return content.starts_with("\x89PNG") && content.ends_with("IEND\xAE\x42\x60\x82");
  return content.starts_with("<?xml") &&
         content.substr(0, content.find_last_not_of(" \n") + 1).ends_with("</svg>");
}

// gnuplot leaves ">" in texts as it is, but XML knows no "]]>" there. It writes no sections that
// end so.
void mend_texts(std::string& svg) {
  constexpr std::string_view kEnd = "]]>";
  for (std::size_t at = svg.find(kEnd); at != std::string::npos; at = svg.find(kEnd, at))
    svg.replace(at, kEnd.size(), "]]&gt;");
}

std::string drawn_by_gnuplot(const Machine& machine, const Picture& picture, PictureFormat format) {
  std::string content = run_gnuplot(gnuplot_script(picture, format), &machine.interrupted);
  if (!is_whole(content, format)) throw PlotError("gnuplot ended without a whole picture");
  if (format != PictureFormat::png) mend_texts(content);
  return content;
}

// Draws into the file that was asked for, and for a report.
Drawn drawn(Machine& machine, const PlotRequest& request, const Picture& picture) {
  Drawn result = {request.file, "", description_of(picture)};
  if (!request.file.empty())
    write_picture(machine, request, drawn_by_gnuplot(machine, picture, request.format));
  using Keep = Machine::Keep;
  const Keep keep = machine.keeps_pictures;
  if (keep == Keep::all || (keep == Keep::without_file && request.file.empty()))
    result.svg = drawn_by_gnuplot(machine, picture, PictureFormat::page);
  return result;
}

void name_curves(Picture& picture) {
  if (picture.curves.size() < 2) return;
  for (std::size_t k = 0; k < picture.curves.size(); ++k)
    if (picture.curves[k].name.empty()) picture.curves[k].name = fmt::format("curve {}", k + 1);
}

}  // namespace

Value draw(Machine& machine, const Call& call, const Fill& fill) {
  if (machine.pictures.size() == kPictureLimit.most)
    return machine.fail(call.span, kPictureLimit.message);
  try {
    PlotRequest request = read_plot_request(machine, call);
    Picture picture;
    picture.title = request.title;
    picture.x_label = request.x_label;
    picture.y_label = request.y_label;
    if (const Value failure = fill(request, picture); is_error(failure)) return failure;
    name_curves(picture);
    machine.pictures.push_back(drawn(machine, request, picture));
    return object_value(&kNoValue);
  } catch (const PlotArgumentError& error) {
    return machine.fail(error.span, error.what());
  } catch (const PlotError& error) {
    if (machine.interrupted) return machine.stopped(call.span);
    return machine.fail(call.span, error.what());
  }
}

bool is_vector(const Value& v) {
  return !is_matrix(v) || matrix(v)->rows == 1 || matrix(v)->cols == 1;
}

double origin_of(const Machine& machine) {
  const Variable* const origin = machine.find_variable("ORIGIN");
  return origin != nullptr && is_plain_real(origin->value) ? origin->value.re : 0.0;
}

std::vector<double> indices(double origin, std::size_t count) {
  std::vector<double> result(count);
  std::iota(result.begin(), result.end(), origin);
  return result;
}

void require_point(const Picture::Curve& curve, const PlotRequest::Data& data) {
  for (std::size_t k = 0; k < curve.x.size(); ++k)
    if (std::isfinite(curve.x[k]) && std::isfinite(curve.y[k])) return;
  throw PlotArgumentError(data.span, "has no point that can be drawn");
}

}  // namespace worksheet
