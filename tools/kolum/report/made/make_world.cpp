// make_world SHAPEFILE OUT: the lines of a shapefile as JSON, [[[longitude, latitude], ...], ...],
// in tenths of a degree.
#include <shapefil.h>

#include <cmath>
#include <cstdio>
#include <exception>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using Point = std::pair<double, double>;

// So small that they would be dots.
constexpr std::size_t kFewestPoints = 4;

double tenths(double degrees) {
  return std::round(degrees * 10) / 10 + 0.0;  // no "-0"
}

std::vector<Point> lineOf(const SHPObject& shape, int part) {
  const int first = shape.nParts > 0 ? shape.panPartStart[part] : 0;
  const int end = part + 1 < shape.nParts ? shape.panPartStart[part + 1] : shape.nVertices;
  std::vector<Point> line;
  for (int i = first; i < end; ++i) {
    const Point point = {tenths(shape.padfX[i]), tenths(shape.padfY[i])};
    if (line.empty() || line.back() != point) line.push_back(point);
  }
  return line;
}

std::vector<std::vector<Point>> linesOf(const std::string& file) {
  const std::unique_ptr<SHPInfo, decltype(&SHPClose)> shapes(SHPOpen(file.c_str(), "rb"), SHPClose);
  if (shapes == nullptr) throw std::runtime_error(file + " is not a shapefile");
  int count = 0;
  SHPGetInfo(shapes.get(), &count, nullptr, nullptr, nullptr);
  std::vector<std::vector<Point>> lines;
  for (int i = 0; i < count; ++i) {
    const std::unique_ptr<SHPObject, decltype(&SHPDestroyObject)> shape(
        SHPReadObject(shapes.get(), i), SHPDestroyObject);
    if (shape == nullptr) throw std::runtime_error(file + " is damaged");
    for (int part = 0; part < shape->nParts; ++part) {
      auto line = lineOf(*shape, part);
      if (line.size() >= kFewestPoints) lines.push_back(std::move(line));
    }
  }
  if (lines.empty()) throw std::runtime_error(file + " holds no lines");
  return lines;
}

void write(const std::vector<std::vector<Point>>& lines, const std::string& file) {
  std::ofstream out(file);
  const char* nextLine = "[";
  for (const auto& line : lines) {
    out << nextLine;
    const char* nextPoint = "[";
    for (const auto& [x, y] : line) {
      out << nextPoint << '[' << x << ',' << y << ']';
      nextPoint = ",";
    }
    out << ']';
    nextLine = ",\n";
  }
  out << "]\n";
  if (!out.flush()) throw std::runtime_error(file + " cannot be written");
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 3) throw std::runtime_error("usage: make_world SHAPEFILE OUT");
  write(linesOf(argv[1]), argv[2]);
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "make_world: %s\n", error.what());
  return 1;
}
